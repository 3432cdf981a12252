// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestFiles.h"
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Number.h"
#include "core/app/Placement.h"
#include "core/app/Session.h"
#include "core/app/TextCodec.h"
#include "core/app/TextFile.h"

#include <QDir>
#include <QFile>
#include <QCoreApplication>
#include <QSysInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik::app;
using marvik::test::readBytes;
using marvik::test::writeBytes;

namespace {

QByteArray crlf(const QStringList &lines)
{
    QByteArray out;
    for (const QString &l : lines)
        out += l.toLatin1() + "\r\n";
    return out;
}

Settings withMaps(const QStringList &names)
{
    Settings s;
    for (const QString &n : names)
        s.maps.append({n, {}, {}});
    return s;
}

} // namespace

class TestApp : public QObject
{
    Q_OBJECT

private slots:
    void val_data();
    void val();
    void printedNumbers();
    void signedDecimal_data();
    void signedDecimal();
    void windows1252RoundTripsEveryByte();
    void textFallsBackToUtf8();
    void leftLocks_data();
    void leftLocks();
    void noSilentReEncoding_data();
    void noSilentReEncoding();
    void splitLines_data();
    void splitLines();

    void readConfig_data();
    void readConfig();
    void configMapSection_data();
    void configMapSection();
    void missingConfigKeepsDefaults();
    void writtenConfigIsByteExact();
    void configRoundTrip();

    void mapScan();
    void seedingNeverOverwrites();
    void iniRotation();
    void folderRemoval();
    void folderRemovalSparesDevelopmentBuild();
    void placementDefaultsAndTwips();
};

void TestApp::val_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("empty") << QString() << 0.0;
    QTest::newRow("leading blanks") << QStringLiteral("   38.8977") << 38.8977;
    QTest::newRow("printed number") << QStringLiteral(" 9 ") << 9.0;
    QTest::newRow("negative") << QStringLiteral("-12.5") << -12.5;
    QTest::newRow("stops at a letter") << QStringLiteral("41.7 S") << 41.7;
    QTest::newRow("blanks inside are skipped") << QStringLiteral("1 2 3") << 123.0;
    QTest::newRow("comma ends the number") << QStringLiteral("52,5") << 52.0;
    QTest::newRow("second point ends it") << QStringLiteral("1.2.3") << 1.2;
    QTest::newRow("no number") << QStringLiteral("abc") << 0.0;
    QTest::newRow("sign alone") << QStringLiteral("-") << 0.0;
    QTest::newRow("exponent") << QStringLiteral("1.5E3") << 1500.0;
    QTest::newRow("D exponent") << QStringLiteral("2D2") << 200.0;
    QTest::newRow("exponent without digits") << QStringLiteral("7e") << 7.0;
    QTest::newRow("hexadecimal") << QStringLiteral("&H1F") << 31.0;
    QTest::newRow("octal") << QStringLiteral("&O17") << 15.0;
    QTest::newRow("leading point") << QStringLiteral(".5") << 0.5;
    QTest::newRow("degree sign stops") << QStringLiteral("123\u00B0") << 123.0;
    QTest::newRow("overflow gives 0") << QStringLiteral("1e999") << 0.0;
    QTest::newRow("hexadecimal overflow gives 0") << QStringLiteral("&H") + QString(300, u'F') << 0.0;
    QTest::newRow("tab and line feed skipped") << QStringLiteral("\t\n-3") << -3.0;
    QTest::newRow("carriage return stops") << QStringLiteral("4\r5") << 4.0;
}

void TestApp::val()
{
    QFETCH(QString, text);
    QFETCH(double, value);
    QCOMPARE(marvik::app::val(text), value);
}

void TestApp::printedNumbers()
{
    QCOMPARE(printedNumber(0), QStringLiteral(" 0 "));
    QCOMPARE(printedNumber(9), QStringLiteral(" 9 "));
    QCOMPARE(printedNumber(-3), QStringLiteral("-3 "));
    QCOMPARE(valCoordinate(u"52,5"), 52.5);
    QCOMPARE(toInt16(2.5), std::optional<qint16>(2));
    QCOMPARE(toInt16(3.5), std::optional<qint16>(4));
    QCOMPARE(toInt16(40000), std::nullopt);
}

void TestApp::signedDecimal_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("positive gets a blank") << 38.8977 << QStringLiteral(" 38.8977");
    QTest::newRow("negative as it stands") << -12.5 << QStringLiteral("-12.5");
    QTest::newRow("zero") << 0.0 << QStringLiteral(" 0");
    QTest::newRow("whole") << 52.0 << QStringLiteral(" 52");
    QTest::newRow("fifteen digits") << 41.714775123456789 << QStringLiteral(" 41.7147751234568");
    QTest::newRow("tiny, no exponent") << 0.00001 << QStringLiteral(" 0.00001");
}

void TestApp::signedDecimal()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(marvik::app::signedDecimal(value), text);
}

void TestApp::windows1252RoundTripsEveryByte()
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    const QString text = fromWindows1252(all);
    QCOMPARE(text.at(0xB0), QChar(0xB0));
    QCOMPARE(text.at(0xD8), QChar(0xD8));
    QCOMPARE(text.at(0x80), QChar(0x20AC));
    QByteArray back;
    QVERIFY(toWindows1252(text, back));
    QCOMPARE(back, all);

    // The 32 odd bytes anywhere in a long text: first, last, at the edges
    // of the blocks it is looked at in, and far apart.
    for (const qsizetype at : {0, 255, 256, 511, 700, 1990}) {
        QByteArray bytes(2000, 'a');
        bytes[at] = char(0x80 + at % 32);
        QString expected(2000, u'a');
        expected[at] = text.at(0x80 + at % 32);
        QCOMPARE(fromWindows1252(bytes), expected);
    }
}

void TestApp::textFallsBackToUtf8()
{
    // A character the code page lacks must not turn into a "?" on disk.
    const QString text = QStringLiteral("SP5\u0141 \u0141ukasz");
    QByteArray bytes;
    QVERIFY(!toWindows1252(text, bytes));
    const QByteArray file = encodeTextFile(text);
    QVERIFY(file.startsWith("\xEF\xBB\xBF"));
    QCOMPARE(decodeTextFile(file), text);
    QCOMPARE(encodeTextFile(u"\u00D8\u00B0"), QByteArray("\xD8\xB0"));
}

// What a crash, a power cut or a shared network folder leave in Marvik.lock.
void TestApp::leftLocks_data()
{
    using State = marvik::app::LockOutcome::State;
    const QByteArray here = QSysInfo::machineHostName().toUtf8();
    const QByteArray me = QByteArray::number(QCoreApplication::applicationPid());
    const QByteArray myName = QCoreApplication::applicationName().toUtf8();
    QTest::addColumn<QByteArray>("lock");
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("staleRemoved");
    QTest::newRow("empty (a crash while it was written)") << QByteArray() << int(State::Acquired) << true;
    QTest::newRow("garbage") << QByteArray("\x01\xFFnot a lock\n") << int(State::Acquired) << true;
    QTest::newRow("process number zero") << QByteArray("0\nmarvik\n" + here + "\n") << int(State::Acquired) << true;
    QTest::newRow("a process of this host that is gone")
        << QByteArray("2147480000\nmarvik\n" + here + "\n") << int(State::Acquired) << false;
    QTest::newRow("a running Marvik on this host")
        << QByteArray(me + "\n" + myName + "\n" + here + "\n") << int(State::OtherInstance) << false;
    QTest::newRow("another computer sharing the folder")
        << QByteArray("4242\nmarvik\nshack-pc-2\n") << int(State::OtherHost) << false;
}

void TestApp::leftLocks()
{
    QFETCH(QByteArray, lock);
    QFETCH(int, state);
    QFETCH(bool, staleRemoved);
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    QVERIFY(marvik::test::writeBytes(dir.filePath(QStringLiteral("Marvik.lock")), lock));
    marvik::app::Session session(dir.path(), &store);
    marvik::app::LockOutcome out = session.lock();
    QCOMPARE(int(out.state), state);
    QCOMPARE(out.staleRemoved, staleRemoved);
    if (out.state == marvik::app::LockOutcome::State::OtherHost) {
        QCOMPARE(out.host, QStringLiteral("shack-pc-2"));
        QCOMPARE(out.pid, 4242);
        // The user agreed to take it over.
        out = session.takeOverLock();
        QCOMPARE(out.state, marvik::app::LockOutcome::State::Acquired);
    }
    if (out.state == marvik::app::LockOutcome::State::Acquired) {
        // Ours now: a second session on the folder is refused.
        marvik::app::Session second(dir.path(), &store);
        QCOMPARE(second.lock().state, marvik::app::LockOutcome::State::OtherInstance);
    } else {
        QCOMPARE(marvik::test::readBytes(dir.filePath(QStringLiteral("Marvik.lock"))), lock);
    }
}

// The list-file fuzz target's find: a Windows-1252 list whose first row
// begins with "ï»¿" was written as bytes beginning EF BB BF, and the next
// start read the whole file as UTF-8, every "ü" lost for good.
void TestApp::noSilentReEncoding_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("utf8");
    QTest::newRow("row beginning with the mark's letters")
        << QStringLiteral("\u00EF\u00BB\u00BFDL1ABC*J\u00FCrgen*\u00DF*\u00D8\r\n") << true;
    QTest::newRow("two of its letters stay Windows-1252") << QStringLiteral("\u00EF\u00BBK1ABC\r\n") << false;
    QTest::newRow("the letters later in the file") << QStringLiteral("K1ABC\r\n\u00EF\u00BB\u00BF\u00FC\r\n") << false;
}

void TestApp::noSilentReEncoding()
{
    QFETCH(QString, text);
    QFETCH(bool, utf8);
    const QByteArray bytes = encodeTextFile(text);
    QCOMPARE(bytes.startsWith("\xEF\xBB\xBF"), utf8);
    QCOMPARE(decodeTextFile(bytes), text);
    // Written by the Windows program: the mark's bytes before Windows-1252
    // text that is no UTF-8 are read as the letters they are.
    QByteArray windows;
    QVERIFY(toWindows1252(text, windows));
    QCOMPARE(decodeTextFile(windows), text);
    QVERIFY(!decodeTextFile(windows).contains(QChar::ReplacementCharacter));
}

void TestApp::splitLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("empty") << QString() << QStringList();
    QTest::newRow("CR LF") << QStringLiteral("a\r\nb\r\n") << QStringList{u"a"_qs, u"b"_qs};
    QTest::newRow("no final break") << QStringLiteral("a\r\nb") << QStringList{u"a"_qs, u"b"_qs};
    QTest::newRow("empty line kept") << QStringLiteral("a\r\n\r\n") << QStringList{u"a"_qs, QString()};
    QTest::newRow("Linux line ends") << QStringLiteral("a\nb\n") << QStringList{u"a"_qs, u"b"_qs};
    QTest::newRow("lone CR") << QStringLiteral("a\rb") << QStringList{u"a"_qs, u"b"_qs};
    QTest::newRow("lone CR at the end") << QStringLiteral("a\r") << QStringList{u"a"_qs};
    QTest::newRow("lone CR before CR LF") << QStringLiteral("a\r\r\nb") << QStringList{u"a"_qs, QString(), u"b"_qs};
    QTest::newRow("LF CR") << QStringLiteral("a\n\rb\n") << QStringList{u"a"_qs, QString(), u"b"_qs};
    QTest::newRow("a break alone") << QStringLiteral("\r\n") << QStringList{QString()};
    QTest::newRow("one byte") << QStringLiteral("a") << QStringList{u"a"_qs};
}

void TestApp::splitLines()
{
    QFETCH(QString, text);
    QFETCH(QStringList, lines);
    QCOMPARE(marvik::app::splitLines(text), lines);
    // The quick count of a file's lines agrees with the split.
    QCOMPARE(countLines(text.toLatin1()), lines.size());
}

void TestApp::readConfig_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<int>("sortMode");
    QTest::addColumn<int>("sortMode2");
    QTest::addColumn<int>("onTop");
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("database");
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("name3");
    QTest::addColumn<int>("currentList");
    QTest::addColumn<int>("currentMap");

    const auto cfg = [](const QString &sort, const QString &sort2, const QString &top, const QString &db,
                        const QString &lang, const QString &list, const QString &map = u" 2 "_qs) {
        return crlf({u"LatLon:"_qs, u" 38.8977"_qs, u"-77.0365"_qs, u"Sort:"_qs, sort, sort2, u"Startup:"_qs, top,
                     u"K1ABC"_qs, QString(), QString(), db, lang, u"DX"_qs, u"Locals"_qs, u"Nets"_qs, QString(),
                     u"List 5"_qs, list, u"Maps:"_qs, map});
    };
    QTest::newRow("plain") << cfg(u" 0 "_qs, u" 0 "_qs, u"1"_qs, u" 1 "_qs, u" 2 "_qs, u"3"_qs)
                           << 38.8977 << -77.0365 << 0 << 0 << 1 << u"K1ABC"_qs << 1 << 2 << u"Nets"_qs << 3 << 2;
    QTest::newRow("sort 9 written by the sort reads as 1")
        << cfg(u" 9 "_qs, u" 0 "_qs, u"0"_qs, u" 0 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 1 << 0 << 0
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("sort 7, second 5")
        << cfg(u" 7 "_qs, u" 5 "_qs, u"0"_qs, u" 0 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 1 << 1 << 0
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("always on top -3 is 0")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"-3"_qs, u" 0 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 0 << 0 << 0
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("always on top 5 is 1")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"5"_qs, u" 0 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 0 << 0 << 1
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("current list 0 shows list 1")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"0"_qs, u" 0 "_qs, u" 0 "_qs, u"0"_qs) << 38.8977 << -77.0365 << 0 << 0 << 0
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("default database -1 is eHam")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"0"_qs, u"-1 "_qs, u" 4 "_qs, u"5"_qs) << 38.8977 << -77.0365 << 0 << 0 << 0
        << u"K1ABC"_qs << 0 << 4 << u"Nets"_qs << 5 << 2;
    QTest::newRow("default database 7 is HamQTH")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"0"_qs, u" 7 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 0 << 0 << 0
        << u"K1ABC"_qs << 7 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("default database 8 is eHam")
        << cfg(u" 0 "_qs, u" 0 "_qs, u"0"_qs, u" 8 "_qs, u" 0 "_qs, u"1"_qs) << 38.8977 << -77.0365 << 0 << 0 << 0
        << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 1 << 2;
    QTest::newRow("numbers that do not fit keep the defaults")
        << cfg(u" 99999 "_qs, u" 0 "_qs, u"0"_qs, u" 70000 "_qs, u" 9 "_qs, u"4"_qs, u" 99999 "_qs) << 38.8977
        << -77.0365 << 0 << 0 << 0 << u"K1ABC"_qs << 0 << 0 << u"Nets"_qs << 4 << 0;
    // A short file leaves everything after it at the defaults.
    QTest::newRow("short file") << crlf({u"LatLon:"_qs, u" 52.5"_qs, u" 13.4"_qs, u"Sort:"_qs, u" 1 "_qs})
                                << 52.5 << 13.4 << 1 << 0 << 0 << QString() << 0 << 0 << QString() << 1 << 0;
    // Line 1 is one item: a comma ends it, and the rest of the line is read
    // as the latitude line, shifting the rest, as the Windows program did.
    QTest::newRow("comma in the first line")
        << crlf({u"LatLon:, 1.5"_qs, u" 38.8977"_qs, u"-77.0365"_qs}) << 1.5 << 38.8977 << 0 << 0 << 0 << QString()
        << 0 << 0 << QString() << 1 << 0;
    QTest::newRow("Linux line ends") << QByteArray("LatLon:\n 10.5\n-20\nSort:\n 1 \n") << 10.5 << -20.0 << 1 << 0
                                     << 0 << QString() << 0 << 0 << QString() << 1 << 0;
    QTest::newRow("empty file") << QByteArray() << 0.0 << 0.0 << 0 << 0 << 0 << QString() << 0 << 0 << QString()
                                << 1 << 0;
}

void TestApp::readConfig()
{
    QFETCH(QByteArray, file);
    Settings s;
    parseConfig(decodeTextFile(file), s);
    QTEST(s.me.latitude, "lat");
    QTEST(s.me.longitude, "lon");
    QTEST(int(s.sortMode), "sortMode");
    QTEST(int(s.sortMode2), "sortMode2");
    QTEST(int(s.alwaysOnTop), "onTop");
    QTEST(s.ownCallsign, "call");
    QTEST(int(s.defaultDatabase), "database");
    QTEST(int(s.language), "language");
    QTEST(s.listNames[2], "name3");
    QTEST(int(s.currentList), "currentList");
    QTEST(int(s.currentMap), "currentMap");
}

void TestApp::configMapSection_data()
{
    QTest::addColumn<QStringList>("mapLines");
    QTest::addColumn<QStringList>("expected"); // value1/value2 of "Europe Map" and "World Map"
    QTest::newRow("exact names") << QStringList{u"Europe Map*1*2"_qs, u"World Map*3*4"_qs}
                                 << QStringList{u"1/2"_qs, u"3/4"_qs};
    QTest::newRow("names match whatever the case") << QStringList{u"WORLD MAP*3*4"_qs}
                                                   << QStringList{u"/"_qs, u"3/4"_qs};
    QTest::newRow("unknown map dropped") << QStringList{u"Mars Map*7*8"_qs, u"Europe Map*5*6"_qs}
                                         << QStringList{u"5/6"_qs, u"/"_qs};
    QTest::newRow("a line without both numbers is dropped") << QStringList{u"Europe Map*5"_qs}
                                                            << QStringList{u"/"_qs, u"/"_qs};
    QTest::newRow("NickNames: ends the section")
        << QStringList{u"Europe Map*1*2"_qs, u"NickNames:"_qs, u"World Map*3*4"_qs}
        << QStringList{u"1/2"_qs, u"/"_qs};
    QTest::newRow("a comma ends an item") << QStringList{u"Europe Map*1*2,World Map*3*4"_qs}
                                          << QStringList{u"1/2"_qs, u"3/4"_qs};
}

void TestApp::configMapSection()
{
    QFETCH(QStringList, mapLines);
    QFETCH(QStringList, expected);
    Settings s = withMaps({u"Europe Map"_qs, u"World Map"_qs});
    QStringList lines = configLines(Settings{});
    lines = lines.mid(0, 21);
    lines += mapLines;
    parseConfig(decodeTextFile(crlf(lines)), s);
    QCOMPARE(s.maps.size(), 2);
    QCOMPARE(s.maps[0].value1 + u'/' + s.maps[0].value2, expected[0]);
    QCOMPARE(s.maps[1].value1 + u'/' + s.maps[1].value2, expected[1]);
    QCOMPARE(s.maps[1].name, u"World Map"_qs);
}

void TestApp::missingConfigKeepsDefaults()
{
    QTemporaryDir dir;
    Settings s;
    QCOMPARE(marvik::app::readConfig(dir.filePath(u"Marvik.cfg"_qs), s), ConfigReadStatus::Missing);
    QCOMPARE(s.currentList, qint16(1));
    QVERIFY(!s.me.isSet());
}

void TestApp::writtenConfigIsByteExact()
{
    QTemporaryDir dir;
    Settings s = withMaps({u"Europe Map"_qs, u"World Map"_qs});
    s.me = {38.8977, -77.0365};
    s.sortMode = 9; // as the sort leaves it
    s.alwaysOnTop = 1;
    s.ownCallsign = u"PA\u00D8ABC"_qs;
    s.defaultDatabase = 2;
    s.language = 4;
    s.listNames = {u"DX"_qs, u"List 2"_qs, u"Nets \u00B0"_qs, QString(), u"List 5"_qs};
    s.currentList = 3;
    s.currentMap = 1;
    s.maps[1].value1 = u"120"_qs;
    s.maps[1].value2 = u"-40"_qs;
    const QString path = dir.filePath(u"Marvik.cfg"_qs);
    QVERIFY(writeConfig(path, s));
    const QByteArray expected = "LatLon:\r\n 38.8977\r\n-77.0365\r\nSort:\r\n 9 \r\n 0 \r\nStartup:\r\n1\r\n"
                                "PA\xD8" "ABC\r\n\r\n\r\n 2 \r\n 4 \r\nDX\r\nList 2\r\nNets \xB0\r\n\r\nList 5\r\n"
                                "3\r\nMaps:\r\n 1 \r\nEurope Map**\r\nWorld Map*120*-40\r\n";
    QCOMPARE(readBytes(path), expected);
    QCOMPARE(readBytes(path).count("\r\n"), 21 + 2);
}

void TestApp::configRoundTrip()
{
    QTemporaryDir dir;
    Settings s = withMaps({u"Asia Map"_qs});
    s.me = {-33.86, 151.2094};
    s.sortMode = 9;
    s.ownCallsign = u"VK2XYZ"_qs;
    s.listNames = {u"a"_qs, u"b"_qs, u"c"_qs, u"d"_qs, u"e"_qs};
    s.maps[0].value1 = u"5"_qs;
    s.maps[0].value2 = u"6"_qs;
    const QString path = dir.filePath(u"Marvik.cfg"_qs);
    QVERIFY(writeConfig(path, s));
    Settings back = withMaps({u"Asia Map"_qs});
    QCOMPARE(marvik::app::readConfig(path, back), ConfigReadStatus::Read);
    QCOMPARE(back.me.latitude, -33.86);
    QCOMPARE(back.me.longitude, 151.2094);
    QCOMPARE(back.sortMode, qint16(1));
    QCOMPARE(back.listNames, s.listNames);
    QCOMPARE(back.maps[0].value2, u"6"_qs);
    // Written again, the file only differs by the sort mode's 9 turned to 1.
    QVERIFY(writeConfig(path, back));
    s.sortMode = 1;
    QCOMPARE(readBytes(path), encodeTextFile(QString(configLines(s).join(u"\r\n"_qs) + u"\r\n"_qs)));
}

void TestApp::mapScan()
{
    QTemporaryDir dir;
    DataFolder data(dir.path());
    QVERIFY(QDir().mkpath(data.mapsDir()));
    for (const char *name : {"WorldMap.bmp", "Worldmap.bmp", "Map.txt.bak", "UK Map.bmp", "Europe Map.jpg",
                             "N-Nederland Map.bmp", "New Zealand Map.bmp", "Map.bmp", "AB"})
        QVERIFY(writeBytes(data.mapsDir() + u'/' + QString::fromLatin1(name), "x"));
    QVERIFY(QDir().mkpath(data.mapsDir() + u"/Folder Map.d"_qs)); // folders are not maps
    QCOMPARE(data.scanMaps(), (QStringList{u"Europe Map"_qs, u"Map"_qs, u"N-Nederland Map"_qs,
                                           u"New Zealand Map"_qs, u"UK Map"_qs, u"WorldMap"_qs}));
}

void TestApp::seedingNeverOverwrites()
{
    QTemporaryDir share;
    QTemporaryDir home;
    QVERIFY(writeBytes(share.filePath(u"Marvik.cfg"_qs), "shipped"));
    QVERIFY(QDir(share.path()).mkpath(u"Maps"_qs));
    QVERIFY(writeBytes(share.filePath(u"Maps/World Map.bmp"_qs), "map"));
    QVERIFY(QDir(share.path()).mkpath(u"Languages"_qs));

    DataFolder fresh(home.filePath(u"new/Marvik"_qs));
    QVERIFY(fresh.ensureCreated(share.path()));
    QCOMPARE(readBytes(fresh.configFile()), QByteArray("shipped"));
    QCOMPARE(readBytes(fresh.mapsDir() + u"/World Map.bmp"_qs), QByteArray("map"));

    // A user's own configuration and maps stay as they are.
    QVERIFY(writeBytes(fresh.configFile(), "mine"));
    QVERIFY(QFile::remove(fresh.mapsDir() + u"/World Map.bmp"_qs));
    QVERIFY(fresh.ensureCreated(share.path()));
    QCOMPARE(readBytes(fresh.configFile()), QByteArray("mine"));
    QVERIFY(!QFile::exists(fresh.mapsDir() + u"/World Map.bmp"_qs));

    fresh.ensureImageFolders();
    QVERIFY(QFileInfo(fresh.thumbsDir()).isDir());
}

void TestApp::iniRotation()
{
    QTemporaryDir dir;
    DataFolder data(dir.path());
    data.rotateIni(); // nothing there: nothing happens
    QVERIFY(!QFile::exists(data.filePath(u"MarvikOld.ini"_qs)));
    QVERIFY(writeBytes(data.filePath(u"Marvik.ini"_qs), "new"));
    QVERIFY(writeBytes(data.filePath(u"MarvikOld.ini"_qs), "old"));
    data.rotateIni();
    QVERIFY(!QFile::exists(data.filePath(u"Marvik.ini"_qs)));
    QCOMPARE(readBytes(data.filePath(u"MarvikOld.ini"_qs)), QByteArray("new"));
}

void TestApp::folderRemoval()
{
    QTemporaryDir install;
    QTemporaryDir outside;
    const QString maps = install.filePath(u"Maps"_qs);
    QVERIFY(QDir().mkpath(maps + u"/deep/er"_qs));
    QVERIFY(writeBytes(maps + u"/deep/er/a.bmp"_qs, "a"));
    QVERIFY(writeBytes(maps + u"/.hidden"_qs, "h"));
    QVERIFY(writeBytes(maps + u"/readonly.bmp"_qs, "r"));
    QFile::setPermissions(maps + u"/readonly.bmp"_qs, QFile::ReadOwner);
    // A link to a folder outside is removed, and what it points to is kept.
    QVERIFY(writeBytes(outside.filePath(u"keep.txt"_qs), "keep"));
    QVERIFY(QFile::link(outside.path(), maps + u"/link"_qs));

    removeFolder(maps, install.path());
    QVERIFY(!QFileInfo::exists(maps));
    QVERIFY(QFile::exists(outside.filePath(u"keep.txt"_qs)));
    removeFolder(maps, install.path()); // a missing folder is no error
}

void TestApp::folderRemovalSparesDevelopmentBuild()
{
    QTemporaryDir install;
    const QString maps = install.filePath(u"Maps"_qs);
    QVERIFY(QDir().mkpath(maps));
    QVERIFY(writeBytes(install.filePath(u"Marvik.vbp"_qs), ""));
    removeFolder(maps, install.path());
    QVERIFY(QFileInfo(maps).isDir());
}


void TestApp::placementDefaultsAndTwips()
{
    QTemporaryDir dir;
    QSettings store(dir.filePath(u"Marvik.conf"_qs), QSettings::IniFormat);
    Placement p = Placement::load(store);
    QCOMPARE(p.left, 4000);
    QCOMPARE(p.top, 3000);
    QCOMPARE(p.width, 6000);
    QCOMPARE(p.height, 7000);
    store.setValue(u"Me/Left"_qs, u"1500"_qs);
    store.setValue(u"Me/Width"_qs, u"junk"_qs);
    p = Placement::load(store);
    QCOMPARE(p.left, 1500);
    QCOMPARE(p.width, 6000);
    p = {150, 300, 9210, 7500};
    p.save(store);
    QCOMPARE(store.value(u"Me/Height"_qs).toString(), u"7500"_qs);
    QCOMPARE(Placement::load(store).width, 9210);
}

QTEST_GUILESS_MAIN(TestApp)
#include "tst_app.moc"
