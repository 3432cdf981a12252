// SPDX-License-Identifier: GPL-3.0-or-later
// Every clean-up a callsign goes through: typed, pasted, looked up, filed.
#include "core/app/Callsign.h"
#include "core/app/DataFolder.h"

#include <QFileInfo>
#include <QSet>
#include <QTest>

using namespace marvik;

class TestCallsign : public QObject
{
    Q_OBJECT

private slots:
    void forLookup_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("asTyped");
        QTest::newRow("lower case") << u"w1aw"_qs << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("DE prefix") << u"de w1aw"_qs << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("SSID") << u"W1AW-5"_qs << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("portable after a blank") << u"W1AW /P"_qs << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("slash stays") << u"VE3/W1AW"_qs << u"VE3/W1AW"_qs << u"VE3/W1AW"_qs;
        QTest::newRow("slashed zero") << u"G\u00D8ABC"_qs << u"G0ABC"_qs << u"G\u00D8ABC"_qs;
        // Replaced before upper-casing, so a lower-case slashed zero survives.
        QTest::newRow("lower-case slashed zero") << u"w\u00f8aw"_qs << u"W\u00d8AW"_qs << u"W\u00d8AW"_qs;
        QTest::newRow("leading blank") << u" W1AW"_qs << QString() << QString();
        QTest::newRow("DE without blank") << u"DEW1AW"_qs << u"DEW1AW"_qs << u"DEW1AW"_qs;
    }
    void forLookup()
    {
        QFETCH(QString, typed);
        QFETCH(QString, call);
        QFETCH(QString, asTyped);
        QCOMPARE(callsign::forLookup(typed), call);
        QCOMPARE(callsign::asTyped(typed), asTyped);
    }

    void fromClipboard_data()
    {
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<QString>("call");
        QTest::newRow("de w1abc 599") << u"de w1abc 599"_qs << u"W1ABC"_qs;
        QTest::newRow("DE:W1ABC") << u"DE:W1ABC"_qs << u"DE:W1ABC"_qs;
        QTest::newRow("slashed zero first") << u"\u00D8Z1ABC"_qs << u"0Z1ABC"_qs;
        QTest::newRow("W1ABC/P") << u"W1ABC/P"_qs << u"W1ABC"_qs;
        QTest::newRow("leading blank") << u" W1ABC"_qs << QString();
        QTest::newRow("above z") << u"W1ABC{"_qs << u"W1ABC"_qs;
        QTest::newRow("line break") << u"K1ABC\r\nmore"_qs << u"K1ABC"_qs;
        QTest::newRow("empty") << QString() << QString();
    }
    void fromClipboard()
    {
        QFETCH(QString, clipboard);
        QFETCH(QString, call);
        QCOMPARE(callsign::fromClipboard(clipboard), call);
    }

    void filterTyped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("dl0abc") << u"dl0abc"_qs << u"DL\u00D8ABC"_qs;
        QTest::newRow("digits other than zero") << u"w1aw/9"_qs << u"W1AW/9"_qs;
        QTest::newRow("accented letters stay") << u"\u00e9a"_qs << u"\u00e9A"_qs;
    }
    void filterTyped()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QCOMPARE(callsign::filterTyped(typed), shown);
    }

    void fileName_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("slashed zero kept") << u"PA\u00D8ABC"_qs << u"PA\u00D8ABC"_qs;
        QTest::newRow("lower case kept") << u"dl1abc"_qs << u"dl1abc"_qs;
        QTest::newRow("portable") << u"DL/W1AW/P"_qs << u"DL%2FW1AW%2FP"_qs;
        QTest::newRow("climbing out") << u"../../etc"_qs << u"..%2F..%2Fetc"_qs;
        QTest::newRow("dots alone") << u".."_qs << u".%2E"_qs;
        QTest::newRow("one dot") << u"."_qs << u"%2E"_qs;
        QTest::newRow("trailing blank") << u"W1AW "_qs << u"W1AW%20"_qs;
        QTest::newRow("windows characters") << u"a\\b:c*d?e\"f<g>h|i"_qs << u"a%5Cb%3Ac%2Ad%3Fe%22f%3Cg%3Eh%7Ci"_qs;
        QTest::newRow("control character") << u"W1\nAW"_qs << u"W1%0AAW"_qs;
        QTest::newRow("percent escapes itself") << u"W1%2FAW"_qs << u"W1%252FAW"_qs;
        QTest::newRow("device CON") << u"CON"_qs << u"CO%4E"_qs;
        QTest::newRow("device nul, any case") << u"nul"_qs << u"nu%6C"_qs;
        QTest::newRow("device COM1") << u"COM1"_qs << u"COM%31"_qs;
        QTest::newRow("COM10 is no device") << u"COM10"_qs << u"COM10"_qs;
        QTest::newRow("empty") << QString() << u"%"_qs;
    }
    void fileName()
    {
        QFETCH(QString, call);
        QFETCH(QString, name);
        QCOMPARE(callsign::fileName(call), name);
        app::DataFolder data(u"/tmp/marvik-data"_qs);
        QCOMPARE(QFileInfo(data.thumbnailPath(call)).absolutePath(), u"/tmp/marvik-data/Images/Thumbs"_qs);
        QCOMPARE(QFileInfo(data.picturePath(call)).absolutePath(), u"/tmp/marvik-data/Images"_qs);
    }

    // Calls that the old rule folded onto one name keep one file each.
    void fileNamesAreOneToOne()
    {
        const QStringList calls{u"a/b"_qs, u"a\\b"_qs, u"a:b"_qs, u"a\u0001b"_qs, u"a_b"_qs, u"a%2Fb"_qs,
                                u"a%2fb"_qs, u"CON"_qs, u"CO%4E"_qs, u"."_qs, u"%2E"_qs, u".."_qs, u"W1AW"_qs,
                                u"W1AW."_qs, u"W1AW%2E"_qs, QString(), u"%"_qs};
        QSet<QString> names;
        for (const QString &call : calls)
            names.insert(callsign::fileName(call));
        QCOMPARE(names.size(), calls.size());
    }

    void forAddress_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("plain") << u"W1AW"_qs << u"W1AW"_qs;
        QTest::newRow("climbing out") << u"../../x"_qs << u"..%2F..%2Fx"_qs;
        QTest::newRow("portable") << u"W1AW/P"_qs << u"W1AW%2FP"_qs;
        QTest::newRow("query and fragment") << u"A?b=1#c"_qs << u"A%3Fb%3D1%23c"_qs;
        QTest::newRow("slashed zero left to the request") << u"\u00F8/"_qs << u"\u00F8%2F"_qs;
        QTest::newRow("blank and percent") << u"A B%"_qs << u"A%20B%25"_qs;
    }
    void forAddress()
    {
        QFETCH(QString, call);
        QFETCH(QString, encoded);
        QCOMPARE(callsign::forAddress(call), encoded);
    }
};

QTEST_GUILESS_MAIN(TestCallsign)
#include "tst_callsign.moc"
