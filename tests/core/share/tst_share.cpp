// SPDX-License-Identifier: GPL-3.0-or-later
// Sharing with EasyPal without a window system: the list text, the map-view
// addresses and requests, the paste sequence's steps and waits, and
// marvik-cli list-text.
#include "core/app/Config.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lookup/SourceSettings.h"
#include "core/share/ListText.h"
#include "core/share/PasteToEasyPal.h"
#include "core/share/StationView.h"
#include "support/TestFiles.h"

#include <QElapsedTimer>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <clocale>

using namespace marvik;
using share::ListTextRow;
using share::PasteToEasyPal;
using share::ViewKind;

namespace {

/// Rows written as "call|first name|azimuth|city", a leading "»" marking the row.
QList<ListTextRow> rowsFrom(const QStringList &lines)
{
    QList<ListTextRow> rows;
    for (QString line : lines) {
        ListTextRow row;
        row.marked = line.startsWith(u'\u00BB');
        if (row.marked)
            line.remove(0, 1);
        const QStringList cells = line.split(u'|');
        row.callsign = cells.value(0);
        row.firstName = cells.value(1);
        row.azimuth = cells.value(2);
        row.city = cells.value(3);
        rows.append(row);
    }
    return rows;
}

/// Every advance 12 pixels: Liberation Mono's 1229/2048 em at 20 pixels,
/// unhinted. The stops 100, 200 and 270 then fall after 9, 17 and 23 characters.
QFont monoFont()
{
    QFont font(QStringLiteral("Liberation Mono"));
    font.setPixelSize(20);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

/// A recording transmitter window: what was asked of it and when.
class RecordingWindow : public share::TransmitterWindow
{
public:
    bool present = true;
    bool seesAll = true;
    bool minimised = false;
    bool keyWorks = true;
    QStringList calls;
    QList<qint64> times;
    QElapsedTimer clock;

    share::WindowId find(const QString &title) override
    {
        note(u"find "_qs + title);
        return present ? 42 : 0;
    }
    bool isMinimised(share::WindowId window) override
    {
        note(u"isMinimised "_qs + QString::number(window));
        return minimised;
    }
    void bringToFront(share::WindowId window) override { note(u"bringToFront "_qs + QString::number(window)); }
    void restore(share::WindowId window) override { note(u"restore "_qs + QString::number(window)); }
    bool seesEveryWindow() const override { return seesAll; }
    bool sendKey(Qt::Key key) override
    {
        note(key == Qt::Key_F7 ? u"sendKey F7"_qs : u"sendKey ?"_qs);
        return keyWorks;
    }

private:
    void note(const QString &call)
    {
        calls.append(call);
        times.append(clock.elapsed());
    }
};

} // namespace

class TestShare : public QObject
{
    Q_OBJECT

private slots:
    void listText_data();
    void listText();
    void listTextReachesEachStopWithFewestBlanks();
    void rowsComeFromTheModel();
    void viewAddress_data();
    void viewAddress();
    void addressUnderCommaLocale();
    void stationView();
    void splitViewRequest_data();
    void splitViewRequest();
    void pasteSequence_data();
    void pasteSequence();
    void pasteKeepsTheWindowAlive();
    void cliListText_data();
    void cliListText();
};

void TestShare::listText_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty list") << QStringList {} << u"\r\n"_qs;
    QTest::newRow("unmarked row") << QStringList {u"W1AW|Hiram|291\u00B0|Newington"_qs}
                                  << u"\r\n   W1AW  Hiram   291\u00B0  Newington\r\n"_qs;
    // The marker is one character shorter; the stop still falls at 9.
    QTest::newRow("marked row") << QStringList {u"\u00BBW1AW|Hiram|291\u00B0|Newington"_qs}
                                << u"\r\n\u00BB W1AW   Hiram   291\u00B0  Newington\r\n"_qs;
    QTest::newRow("cells past their stops")
        << QStringList {u"VERYLONGCALL|Al|5\u00B0|Paris"_qs} << u"\r\n   VERYLONGCALL Al 5\u00B0  Paris\r\n"_qs;
    QTest::newRow("cell just past its stop")
        << QStringList {u"ABCDEF|x|y|z"_qs} << u"\r\n   ABCDEF x      y     z\r\n"_qs;
    QTest::newRow("empty cells") << QStringList {u"|||"_qs} << u"\r\n" + QString(23, u' ') + u"\r\n"_qs;
    QTest::newRow("rows in order, every one")
        << QStringList {u"\u00BBB|b|1\u00B0|x"_qs, u"A|a|2\u00B0|y"_qs, u"\u00BBC|c|3\u00B0|"_qs}
        << u"\r\n\u00BB B      b       1\u00B0    x\r\n   A     a       2\u00B0    y\r\n\u00BB C      c       3\u00B0    \r\n"_qs;
}

void TestShare::listText()
{
    QFETCH(QStringList, rows);
    QFETCH(QString, text);
    const QFont font = monoFont();
    QVERIFY2(QFontMetricsF(font).horizontalAdvance(u"MMMMMMMMMM"_qs) > 119.9
            && QFontMetricsF(font).horizontalAdvance(u"MMMMMMMMMM"_qs) < 120.1,
        "Liberation Mono (fonts-liberation) is needed for this test");
    QCOMPARE(share::composeListText(rowsFrom(rows), font), text);
}

void TestShare::listTextReachesEachStopWithFewestBlanks()
{
    // With the proportional font the lists are measured in: every cell is
    // followed by the fewest blanks (at least one) that take the line from
    // its start to the stop.
    const QFont font = share::listTextFont();
    const QFontMetricsF metrics(font);
    const QList<ListTextRow> rows = rowsFrom({u"\u00BBPA0ABC|Jan|264\u00B0|Utrecht"_qs,
        u"W1AW|Hiram|291\u00B0|Newington"_qs, u"VK2ABCDEFGHIJKLMN|Bartholomew-Maximilian|7\u00B0|Sydney"_qs,
        u"\u00BBIIII|lll|1\u00B0|i"_qs, u"WWWWWW|MMMMMMMM|359\u00B0|Wien"_qs});
    const QStringList lines = share::composeListText(rows, font).split(u"\r\n"_qs);
    QCOMPARE(lines.size(), rows.size() + 2); // the leading line break and the last one
    for (int r = 0; r < rows.size(); ++r) {
        const ListTextRow &row = rows[r];
        const QString &line = lines[r + 1];
        QString prefix = row.marked ? u"\u00BB "_qs : u"   "_qs;
        QVERIFY(line.startsWith(prefix));
        const QStringList cells {row.callsign, row.firstName, row.azimuth};
        const qreal stops[] = {100, 200, 270};
        for (int c = 0; c < 3; ++c) {
            prefix += cells[c];
            QVERIFY2(line.startsWith(prefix), qPrintable(line));
            qsizetype blanks = 0;
            while (line.size() > prefix.size() + blanks && line[prefix.size() + blanks] == u' ')
                ++blanks;
            QVERIFY2(blanks >= 1, qPrintable(line));
            const QString padded = line.left(prefix.size() + blanks);
            QVERIFY2(metrics.horizontalAdvance(padded) >= stops[c], qPrintable(line));
            if (blanks > 1)
                QVERIFY2(metrics.horizontalAdvance(padded.chopped(1)) < stops[c], qPrintable(line));
            prefix = padded;
        }
        QCOMPARE(line, prefix + row.city);
    }
}

void TestShare::rowsComeFromTheModel()
{
    lists::CallListModel model;
    lists::CallRecord a;
    a[lists::Column::Callsign] = u"PA0ABC"_qs;
    a[lists::Column::FirstName] = u"Jan"_qs;
    a[lists::Column::Azimuth] = u"264\u00B0"_qs;
    a[lists::Column::City] = u"Utrecht"_qs;
    a[lists::Column::Country] = u"Netherlands"_qs;
    lists::CallRecord b = a;
    b[lists::Column::Callsign] = u"W1AW"_qs;
    model.setRecords({a, b});
    model.setCellBackground(0, lists::Column::Callsign, lists::kMarkColour);
    // The nickname colour of the first-name cell is not a paste mark.
    model.setCellBackground(1, lists::Column::FirstName, lists::kNicknameColour);

    const QList<ListTextRow> rows = share::listTextRows(model);
    QCOMPARE(rows.size(), 2);
    QVERIFY(rows[0].marked);
    QVERIFY(!rows[1].marked);
    QCOMPARE(rows[0].callsign, u"PA0ABC"_qs);
    QCOMPARE(rows[0].firstName, u"Jan"_qs);
    QCOMPARE(rows[0].azimuth, u"264\u00B0"_qs);
    QCOMPARE(rows[0].city, u"Utrecht"_qs);
}

void TestShare::viewAddress_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<QString>("address");

    QTest::newRow("street") << 0 << 40.5 << -75.25
                            << u"http://maps.google.com/maps?q=&layer=c&cbll=40.5,-75.25&cbp=12,0,0,0,0"_qs;
    QTest::newRow("satellite") << 1 << 40.5 << -75.25
                               << u"https://www.google.com/maps/place/40.5+-75.25/@40.5,-75.25,19z/data=!3m1!1e3"_qs;
    QTest::newRow("street, no latitude") << 0 << 0.0 << 5.3
                                         << u"http://maps.google.com/maps?q=&layer=c&cbll=,&cbp=12,0,0,0,0"_qs;
    QTest::newRow("satellite, no longitude")
        << 7 << 52.1 << 0.0 << u"https://www.google.com/maps/place/+/@,,19z/data=!3m1!1e3"_qs;
    QTest::newRow("shortest digits") << 1 << 52.09999999999999 << 0.1 + 0.2
                                     << u"https://www.google.com/maps/place/52.09999999999999+0.30000000000000004/"
                                        u"@52.09999999999999,0.30000000000000004,19z/data=!3m1!1e3"_qs;
    QTest::newRow("near the equator, no exponent")
        << 0 << 0.00001 << -0.000025
        << u"http://maps.google.com/maps?q=&layer=c&cbll=0.00001,-0.000025&cbp=12,0,0,0,0"_qs;
}

void TestShare::viewAddress()
{
    QFETCH(int, kind);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(QString, address);
    const lookup::SourceSettings hosts;
    const ViewKind view = share::viewKindForMenu(kind);
    QCOMPARE(share::viewAddress(view, hosts, latitude, longitude), address);
    QCOMPARE(share::viewKindOf(address), view);
}

void TestShare::addressUnderCommaLocale()
{
    // A user whose locale writes 52,1: both Qt's default locale and the C
    // library's, as a desktop session sets them.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QByteArray cBefore = std::setlocale(LC_ALL, nullptr);
    const bool cLocale = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    lookup::SourceSettings hosts;
    hosts.setStreetViewHost(u"http://127.0.0.1:8080"_qs);
    const QString street = share::viewAddress(ViewKind::Street, hosts, 52.1, 5.3);
    const QString satellite = share::viewAddress(ViewKind::Satellite, hosts, 52.1, -1234.5);
    std::setlocale(LC_ALL, cBefore.constData());
    QLocale::setDefault(before);
    QCOMPARE(street, u"http://127.0.0.1:8080/maps?q=&layer=c&cbll=52.1,5.3&cbp=12,0,0,0,0"_qs);
    // No group separator either, even for a number no map has.
    QCOMPARE(satellite, u"https://www.google.com/maps/place/52.1+-1234.5/@52.1,-1234.5,19z/data=!3m1!1e3"_qs);
    if (!cLocale)
        qInfo("the C library has no de_DE.UTF-8 here; Qt's default locale was changed only");
}

void TestShare::stationView()
{
    lists::CallRecord row;
    row[lists::Column::Callsign] = u"PA\u00D8ABC"_qs;
    row[lists::Column::Latitude] = u"52.1"_qs;
    row[lists::Column::Longitude] = u" 5.3 "_qs;
    const share::StationView view = share::stationView(row, ViewKind::Street, lookup::SourceSettings());
    QCOMPARE(view.position.latitude, 52.1);
    QCOMPARE(view.position.longitude, 5.3);
    QCOMPARE(view.request, u"PA0ABC*http://maps.google.com/maps?q=&layer=c&cbll=52.1,5.3&cbp=12,0,0,0,0"_qs);
    const share::ViewRequestParts parts = share::splitViewRequest(view.request);
    QCOMPARE(share::captureCaption(i18n::Texts::english(), parts), u"Marvik Calls   Street view of PA0ABC"_qs);

    // A station without a position keeps 0, 0 and still gets its view.
    row[lists::Column::Latitude] = u"0"_qs;
    const share::StationView none = share::stationView(row, ViewKind::Satellite, lookup::SourceSettings());
    QCOMPARE(none.position.latitude, 0.0);
    QCOMPARE(none.request, u"PA0ABC*https://www.google.com/maps/place/+/@,,19z/data=!3m1!1e3"_qs);
    QCOMPARE(share::captureCaption(i18n::Texts::english(), share::splitViewRequest(none.request)),
        u"Marvik Calls   Satellite view of PA0ABC"_qs);
}

void TestShare::splitViewRequest_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("callsign");
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("street");

    QTest::newRow("street") << u"W1AW*http://h/maps?q=&layer=c&cbll=1,2&cbp=12,0,0,0,0"_qs << u"W1AW"_qs
                            << u"http://h/maps?q=&layer=c&cbll=1,2&cbp=12,0,0,0,0"_qs << true;
    QTest::newRow("satellite") << u"W1AW*https://h/maps/place/1+2/@1,2,19z/data=!3m1!1e3"_qs << u"W1AW"_qs
                               << u"https://h/maps/place/1+2/@1,2,19z/data=!3m1!1e3"_qs << false;
    QTest::newRow("no separator") << u"https://h/maps/place/1+2"_qs << QString() << u"https://h/maps/place/1+2"_qs
                                  << false;
    QTest::newRow("split at the first") << u"A*b*c layer"_qs << u"A"_qs << u"b*c layer"_qs << true;
    QTest::newRow("no callsign") << u"*x"_qs << QString() << u"x"_qs << false;
}

void TestShare::splitViewRequest()
{
    QFETCH(QString, request);
    QFETCH(QString, callsign);
    QFETCH(QString, address);
    QFETCH(bool, street);
    const share::ViewRequestParts parts = share::splitViewRequest(request);
    QCOMPARE(parts.callsign, callsign);
    QCOMPARE(parts.address, address);
    QCOMPARE(parts.kind, street ? ViewKind::Street : ViewKind::Satellite);
}

void TestShare::pasteSequence_data()
{
    QTest::addColumn<bool>("backend");
    QTest::addColumn<bool>("present");
    QTest::addColumn<bool>("seesAll");
    QTest::addColumn<bool>("keyWorks");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QList<int>>("waits"); // least milliseconds from each call to the next, then to the end
    QTest::addColumn<PasteToEasyPal::Outcome>("outcome");
    QTest::addColumn<bool>("hint");

    const QStringList all {
        u"find EasyPal"_qs, u"isMinimised 42"_qs, u"bringToFront 42"_qs, u"restore 42"_qs, u"sendKey F7"_qs};
    QTest::newRow("EasyPal running") << true << true << true << true << all << QList<int> {0, 0, 200, 1000, 500}
                                     << PasteToEasyPal::Outcome::KeySent << false;
    QTest::newRow("key refused") << true << true << true << false << all << QList<int> {0, 0, 200, 1000, 500}
                                 << PasteToEasyPal::Outcome::KeyFailed << true;
    QTest::newRow("EasyPal absent") << true << false << true << true << QStringList {u"find EasyPal"_qs}
                                    << QList<int> {500} << PasteToEasyPal::Outcome::NotFound << false;
    // EasyPal may be a Wayland window the X11 backend cannot see.
    QTest::newRow("absent from sight") << true << false << false << true << QStringList {u"find EasyPal"_qs}
                                       << QList<int> {500} << PasteToEasyPal::Outcome::OutOfSight << true;
    QTest::newRow("no backend") << false << false << false << false << QStringList {} << QList<int> {}
                                << PasteToEasyPal::Outcome::NoBackend << true;
}

void TestShare::pasteSequence()
{
    QFETCH(bool, backend);
    QFETCH(bool, present);
    QFETCH(bool, seesAll);
    QFETCH(bool, keyWorks);
    QFETCH(QStringList, calls);
    QFETCH(QList<int>, waits);
    QFETCH(PasteToEasyPal::Outcome, outcome);
    QFETCH(bool, hint);

    RecordingWindow window;
    window.present = present;
    window.seesAll = seesAll;
    window.keyWorks = keyWorks;
    PasteToEasyPal paste(backend ? &window : nullptr);
    QSignalSpy finished(&paste, &PasteToEasyPal::finished);
    window.clock.start();
    QVERIFY(paste.start());
    QVERIFY(paste.isRunning() || outcome == PasteToEasyPal::Outcome::NoBackend);
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 10000);
    const qint64 end = window.clock.elapsed();
    QCOMPARE(finished.first().first().value<PasteToEasyPal::Outcome>(), outcome);
    QVERIFY(!paste.isRunning());
    QCOMPARE(window.calls, calls);
    window.times.append(end);
    for (int i = 0; i < waits.size(); ++i) {
        const qint64 gap = window.times[i + 1] - window.times[i];
        QVERIFY2(gap >= waits[i], qPrintable(u"step %1 after %2 ms"_qs.arg(i).arg(gap)));
    }
    const QString sentence = PasteToEasyPal::hint(outcome, i18n::Texts::english());
    QCOMPARE(!sentence.isEmpty(), hint);
    if (hint)
        QVERIFY(sentence.contains(u"F7"_qs));
}

void TestShare::pasteKeepsTheWindowAlive()
{
    // The waits run on timers: the program keeps handling events meanwhile,
    // and a second paste cannot start in the middle of one.
    RecordingWindow window;
    window.clock.start();
    PasteToEasyPal paste(&window);
    QSignalSpy finished(&paste, &PasteToEasyPal::finished);
    int ticks = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, this, [&ticks] { ++ticks; });
    ticker.start(50);
    QVERIFY(paste.start());
    QVERIFY(!paste.start());
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 10000);
    QVERIFY2(ticks >= 10, qPrintable(QString::number(ticks)));
    QCOMPARE(window.calls.count(u"sendKey F7"_qs), 1);
    QVERIFY(paste.start());
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 10000);
}

void TestShare::cliListText_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QByteArray>("file"); // empty: no list file
    QTest::addColumn<int>("sortMode");
    QTest::addColumn<QStringList>("rows"); // the rows as the window shows them
    QTest::addColumn<int>("exitCode");

    // Windows-1252 as the Windows program wrote it. The loader works the
    // azimuths out again from Me (40 N, 75 W) and writes the slashed zero as 0.
    const QByteArray file = "W1AW*Hiram*9\xB0*Hiram Maxim*Main St*Newington*USA*41*-75*20240102000000*\r\n"
                            "PA\xD8"
                            "ABC*Jan*9\xB0*Jan Jansen*Street 1*Utrecht*Netherlands*51.5*-0.12*20240101000000*\r\n"
                            "G4ABC*Mike*9\xB0*Mike Smith**Leeds*England*40*-80*20240103000000*\r\n";
    QTest::newRow("by callsign") << u"3"_qs << file << 0
                                 << QStringList {u"G4ABC|Mike|271\u00B0|Leeds"_qs, u"PA0ABC|Jan|50\u00B0|Utrecht"_qs,
                                        u"W1AW|Hiram|0\u00B0|Newington"_qs}
                                 << 0;
    QTest::newRow("newest first") << u"3"_qs << file << 1
                                  << QStringList {u"G4ABC|Mike|271\u00B0|Leeds"_qs, u"W1AW|Hiram|0\u00B0|Newington"_qs,
                                         u"PA0ABC|Jan|50\u00B0|Utrecht"_qs}
                                  << 0;
    QTest::newRow("no list file") << u"5"_qs << QByteArray() << 0 << QStringList {} << 0;
    QTest::newRow("empty list file") << u"1"_qs << QByteArray("") << 0 << QStringList {} << 0;
    QTest::newRow("damaged list file") << u"2"_qs << QByteArray("W1AW*Hiram*0\r\n") << 0 << QStringList {} << 1;
    QTest::newRow("list 0") << u"0"_qs << QByteArray() << 0 << QStringList {} << 2;
    QTest::newRow("list 6") << u"6"_qs << QByteArray() << 0 << QStringList {} << 2;
    QTest::newRow("not a number") << u"one"_qs << QByteArray() << 0 << QStringList {} << 2;
}

void TestShare::cliListText()
{
    QFETCH(QString, list);
    QFETCH(QByteArray, file);
    QFETCH(int, sortMode);
    QFETCH(QStringList, rows);
    QFETCH(int, exitCode);

    QTemporaryDir data;
    app::Settings settings;
    settings.sortMode = qint16(sortMode);
    settings.me = {40, -75};
    QVERIFY(app::writeConfig(data.filePath(u"Marvik.cfg"_qs), settings));
    if (!file.isNull())
        QVERIFY(test::writeBytes(data.filePath(u"List"_qs + list + u".dat"_qs), file));

    QProcess cli;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_RUNTIME_DIR"_qs, data.path()); // as a desktop session has it
    cli.setProcessEnvironment(env);
    cli.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), {u"--data-dir"_qs, data.path(), u"list-text"_qs, list});
    QVERIFY(cli.waitForFinished(20000));
    QCOMPARE(cli.exitStatus(), QProcess::NormalExit);
    QCOMPARE(cli.exitCode(), exitCode);
    const QByteArray out = cli.readAllStandardOutput();
    const QString err = QString::fromUtf8(cli.readAllStandardError()).trimmed();
    if (exitCode != 0) {
        QVERIFY(out.isEmpty());
        QVERIFY(err.startsWith(u"marvik-cli: "_qs));
        QVERIFY(!err.contains(u'\n'));
        return;
    }
    QVERIFY2(err.isEmpty(), qPrintable(err));
    // UTF-8 as the clipboard gets it, and no mark: marks live in the running program.
    QCOMPARE(out, share::composeListText(rowsFrom(rows), share::listTextFont()).toUtf8());
}

QTEST_MAIN(TestShare)
#include "tst_share.moc"
