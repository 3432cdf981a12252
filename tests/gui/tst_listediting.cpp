// SPDX-License-Identifier: GPL-3.0-or-later
// The list-editing rules that need no window: texts with placeholders,
// callsign clean-up, copying, wheel scrolling, the thumbnail click zone.
#include "core/i18n/Texts.h"
#include "core/lists/ListEditing.h"
#include "core/maps/Geometry.h"

#include <QTest>

using namespace marvik;
using namespace marvik::lists;

namespace {

CallRecord record(const QString &call, const QString &first, const QString &full, const QString &lat = {},
                  const QString &lon = {}, const QString &azimuth = {})
{
    CallRecord r;
    r[Column::Callsign] = call;
    r[Column::FirstName] = first;
    r[Column::FullName] = full;
    r[Column::Latitude] = lat;
    r[Column::Longitude] = lon;
    r[Column::Azimuth] = azimuth;
    r[Column::TimeStamp] = QStringLiteral("20240101000000");
    return r;
}

} // namespace

class TestListEditing : public QObject
{
    Q_OBJECT

private slots:

    void fillIn_data()
    {
        QTest::addColumn<QString>("templ");
        QTest::addColumn<QString>("xxx");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("result");
        QTest::newRow("every xxx") << u"xxx and xxx"_qs << u"W1AW"_qs << QString() << u"W1AW and W1AW"_qs;
        QTest::newRow("name holds xxx") << u"Delete all entries in xxx?"_qs << u" xxx  "_qs << QString()
                                        << u"Delete all entries in  xxx  ?"_qs;
        QTest::newRow("source") << u"Update xxx from ???"_qs << u"G4XYZ"_qs << u"QRZ.com"_qs
                                << u"Update G4XYZ from QRZ.com"_qs;
        QTest::newRow("callsign with ???") << u"Update xxx from ???"_qs << u"???"_qs << u"QRZ.com"_qs
                                           << u"Update ??? from QRZ.com"_qs;
    }
    void fillIn()
    {
        QFETCH(QString, templ);
        QFETCH(QString, xxx);
        QFETCH(QString, source);
        QFETCH(QString, result);
        QCOMPARE(i18n::fillIn(templ, xxx, source), result);
    }

    void copiedRecord_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("lat");
        QTest::addColumn<QString>("lon");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<bool>("azimuth");
        // The editors' rule is case-sensitive, unlike the loader's.
        QTest::newRow("same word") << u"Hans"_qs << u"52.5"_qs << u"13.4"_qs << false << true;
        QTest::newRow("upper case") << u"HANS"_qs << u"52.5"_qs << u"13.4"_qs << true << true;
        QTest::newRow("latitude 0") << u"Hans"_qs << u"0"_qs << u"13.4"_qs << false << false;
        QTest::newRow("longitude empty") << u"Hansi"_qs << u"52.5"_qs << QString() << true << false;
    }
    void copiedRecord()
    {
        QFETCH(QString, first);
        QFETCH(QString, lat);
        QFETCH(QString, lon);
        QFETCH(bool, marked);
        QFETCH(bool, azimuth);
        LoadContext ctx;
        ctx.me = {51.5, -0.12};
        const CallRecord copy = lists::copiedRecord(record(u"DL1ABC"_qs, first, u"Hans Meyer"_qs, lat, lon), ctx);
        QCOMPARE(copy.firstNameBack.isValid(), marked);
        QCOMPARE(copy[Column::Azimuth],
                 azimuth ? maps::azimuthText(maps::bearingFrom(ctx.me, 52.5, 13.4).degrees) : QString());
        QCOMPARE(copy[Column::TimeStamp], QStringLiteral("20240101000000"));
    }

    void duplicatesAreExact()
    {
        // Exact comparison: a trailing blank makes another callsign; and a
        // callsign twice in the source is copied once.
        CallListModel target;
        target.appendRecord(record(u"DL1ABC"_qs, u"Hans"_qs, u"Hans Meyer"_qs));
        QVERIFY(copyRecordTo(record(u"DL1ABC "_qs, u"X"_qs, u"Y"_qs), target, {}));
        CallListModel source;
        for (const char16_t *call : {u"A1A", u"DL1ABC", u"A1A", u"B2B"})
            source.appendRecord(record(QString::fromUtf16(call), u"N"_qs, u"N"_qs));
        QCOMPARE(copyAllTo(source, target, {}), 2);
        QCOMPARE(target.rowCount(), 4);
    }



    void wheel_data()
    {
        QTest::addColumn<int>("top");
        QTest::addColumn<int>("delta");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("visible");
        QTest::addColumn<int>("result");
        QTest::newRow("down") << 0 << -120 << 100 << 20 << 5;
        QTest::newRow("down to the end") << 78 << -120 << 100 << 20 << 80;
        QTest::newRow("up") << 20 << 120 << 100 << 20 << 15;
        QTest::newRow("up to 9 lands on 0") << 9 << 120 << 100 << 20 << 0;
        QTest::newRow("up from 10 stays at 5") << 10 << 120 << 100 << 20 << 5;
        QTest::newRow("any other delta is up") << 20 << -60 << 100 << 20 << 15;
        QTest::newRow("short list") << 0 << -120 << 5 << 20 << -15;
    }
    void wheel()
    {
        QFETCH(int, top);
        QFETCH(int, delta);
        QFETCH(int, rows);
        QFETCH(int, visible);
        QFETCH(int, result);
        QCOMPARE(wheelTopRow(top, delta, rows, visible), result);
    }

    void thumbnailZone_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<bool>("inside");
        QTest::newRow("2200") << 2200 << false;
        QTest::newRow("2201") << 2201 << true;
        QTest::newRow("2499") << 2499 << true;
        QTest::newRow("2500") << 2500 << false;
    }
    void thumbnailZone()
    {
        QFETCH(int, x);
        QFETCH(bool, inside);
        QCOMPARE(inThumbnailZone(x), inside);
    }
};

QTEST_GUILESS_MAIN(TestListEditing)
#include "tst_listediting.moc"
