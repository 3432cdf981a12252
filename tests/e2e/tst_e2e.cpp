// SPDX-License-Identifier: GPL-3.0-or-later
// Starts the real program on an X server with prepared data and settings
// folders, closes its window the way a user does, and compares the files it
// leaves behind byte for byte.
#include "core/maps/Geometry.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace marvik;

namespace {

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

/// Runs xdotool and returns its output; empty when it failed.
QByteArray xdotool(const QStringList &args, int timeoutMs = 20000)
{
    QProcess p;
    p.start(QStringLiteral("xdotool"), args);
    if (!p.waitForFinished(timeoutMs) || p.exitCode() != 0)
        return {};
    return p.readAllStandardOutput().trimmed();
}

/// Starts Marvik on `data` with `env` added, answers every box it shows at
/// start with Escape (each question's safe answer), then closes the main
/// window with Alt+F4 as a user does. Fails the test when it does not end well.
void runAndClose(const QString &data, const QString &config, const QStringList &env, int boxes,
                 const std::function<void(qint64 pid)> &whileOpen = {})
{
    QProcess marvik;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    e.insert(QStringLiteral("XDG_DATA_HOME"), config + QStringLiteral("/xdg-data"));
    for (const QString &pair : env)
        e.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));
    marvik.setProcessEnvironment(e);
    marvik.setProcessChannelMode(QProcess::ForwardedChannels);
    marvik.start(QStringLiteral(MARVIK_BIN_DIR "/marvik"), {QStringLiteral("--data-dir"), data});
    QVERIFY(marvik.waitForStarted());
    const QByteArray window = xdotool({QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                                       QStringLiteral("--name"), QStringLiteral("^Marvik  3\\.12$")})
                                  .split('\n')
                                  .value(0);
    QVERIFY2(!window.isEmpty(), "the main window did not appear");
    if (whileOpen)
        whileOpen(marvik.processId());
    for (int box = 0; box < boxes; ++box) {
        const QByteArray dialog = xdotool({QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                                           QStringLiteral("--name"), QStringLiteral("^Marvik$")})
                                      .split('\n')
                                      .value(0);
        QVERIFY2(!dialog.isEmpty(), "the expected box did not appear");
        xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::fromLatin1(dialog)}, 3000);
        xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Escape")});
        QTest::qWait(300);
    }
    QTest::qWait(300);
    for (int attempt = 0; attempt < 10 && marvik.state() != QProcess::NotRunning; ++attempt) {
        xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::fromLatin1(window)}, 3000);
        xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("alt+F4")});
        marvik.waitForFinished(2000);
    }
    if (marvik.state() != QProcess::NotRunning) {
        marvik.kill();
        QFAIL("Marvik did not close on Alt+F4");
    }
    QCOMPARE(marvik.exitStatus(), QProcess::NormalExit);
    QCOMPARE(marvik.exitCode(), 0);
}

QByteArray bearing(double lat, double lon)
{
    // The list files hold "°" as the single Windows-1252 byte 0xB0.
    return QByteArray::number(maps::bearingFrom({48.2, 16.37}, lat, lon).degrees) + '\xB0';
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void closeWritesEverythingBack()
    {
        QTemporaryDir tmp;
        QVERIFY(tmp.isValid());
        const QString data = tmp.filePath(QStringLiteral("data"));
        const QString config = tmp.filePath(QStringLiteral("config"));
        QVERIFY(QDir().mkpath(data + QStringLiteral("/Maps")));
        QVERIFY(QDir().mkpath(config + QStringLiteral("/Marvik")));
        writeAll(data + QStringLiteral("/Maps/WorldMap.bmp"), "BM");
        writeAll(data + QStringLiteral("/Maps/EuropeMap.bmp"), "BM");
        writeAll(data + QStringLiteral("/Maps/Notes.txt"), "not a map");
        // Sort mode 1, an always-on-top of 5 (read as 1), an empty third list name.
        writeAll(data + QStringLiteral("/Marvik.cfg"),
                 "LatLon:\r\n48.2\r\n16.37\r\nSort:\r\n 1 \r\n 0 \r\nStartup:\r\n5\r\nOE1XYZ\r\n\r\n\r\n"
                 " 3 \r\n 0 \r\nDX\r\nEurope\r\n\r\nSkeds\r\nOld\r\n1\r\nMaps:\r\n 1 \r\nWORLDMAP*3*4\r\n");
        // A stale bearing, a slashed zero in a callsign, rows out of order.
        writeAll(data + QStringLiteral("/List1.dat"),
                 "G4XYZ*Bob*123\xB0*Robert Smith*12 High Street*Leeds*England*53.8*-1.55*20231231220000*\r\n"
                 "DL\xD8" "ABC*Hansi**Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*x\r\n"
                 "F5ABC*Jean**Jean Dupont*3 Rue*Paris*France*0*2.35*20240112154500*\r\n");
        const QByteArray list2 = "K1ABC*Jim**James Taylor*45 Elm Rd*Boston, MA*USA*42.36*-71.06*20240105093000*\r\n";
        writeAll(data + QStringLiteral("/List2.dat"), list2);
        // The callbooks at a local port nobody listens on: the start-up
        // log-in check must not reach the internet.
        writeAll(config + QStringLiteral("/Marvik/Marvik.conf"),
                 "[Me]\nLeft=1500\nTop=1200\nWidth=6000\nHeight=7000\n"
                 "[Sources]\neHam/Host=http://127.0.0.1:9\nQRZ/Host=http://127.0.0.1:9\n"
                 "QRZCQ/Host=http://127.0.0.1:9\nCallook/Host=http://127.0.0.1:9\nHamCall/Host=http://127.0.0.1:9\n"
                 "Pictures/Host=http://127.0.0.1:9/\n");

        // Nothing at start-up draws through OpenGL: the graphics driver,
        // tens of MiB, is mapped only once a web window opens.
        QByteArray mapped;
        runAndClose(data, config, {}, 0, [&mapped](qint64 pid) {
            mapped = readAll(QStringLiteral("/proc/%1/maps").arg(pid));
        });
        if (QTest::currentTestFailed())
            return;
        QVERIFY(mapped.contains("libQt6Gui"));
        for (const char *driver : {"_dri.so", "libGLX_mesa", "libEGL_mesa", "libLLVM", "libgallium", "libQt6WebEngine"})
            QVERIFY2(!mapped.contains(driver), driver);

        // The loader's sort turned sort mode 1 into 9, and 9 is written as it stands.
        const QByteArray cfg = readAll(data + QStringLiteral("/Marvik.cfg"));
        QCOMPARE(cfg, QByteArray("LatLon:\r\n 48.2\r\n 16.37\r\nSort:\r\n 9 \r\n 0 \r\nStartup:\r\n1\r\nOE1XYZ\r\n"
                                 "\r\n\r\n 3 \r\n 0 \r\nDX\r\nEurope\r\nList 3\r\nSkeds\r\nOld\r\n1\r\nMaps:\r\n 1 \r\n"
                                 "EuropeMap**\r\nWorldMap*3*4\r\n"));
        const QList<QByteArray> lines = cfg.split('\n');
        QCOMPARE(lines.size() - 1, 21 + 2);
        QCOMPARE(lines[9], QByteArray("\r"));
        QCOMPARE(lines[10], QByteArray("\r"));

        QCOMPARE(readAll(data + QStringLiteral("/List1.dat")),
                 "F5ABC*Jean**Jean Dupont*3 Rue*Paris*France*0*2.35*20240112154500*\r\n"
                 "DL0ABC*Hansi*" + bearing(52.52, 13.405) +
                     "*Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*x\r\n"
                     "G4XYZ*Bob*" + bearing(53.8, -1.55) +
                     "*Robert Smith*12 High Street*Leeds*England*53.8*-1.55*20231231220000*\r\n");
        // A list loaded in the background is not sorted, only rewritten.
        QCOMPARE(readAll(data + QStringLiteral("/List2.dat")),
                 "K1ABC*Jim*" + bearing(42.36, -71.06) +
                     "*James Taylor*45 Elm Rd*Boston, MA*USA*42.36*-71.06*20240105093000*\r\n");
        for (int n = 3; n <= 5; ++n)
            QCOMPARE(readAll(data + QStringLiteral("/List%1.dat").arg(n)), QByteArray());

        QSettings store(config + QStringLiteral("/Marvik/Marvik.conf"), QSettings::IniFormat);
        QCOMPARE(store.value(QStringLiteral("Me/Width")).toString(), QStringLiteral("6000"));
        // 7000 twips is 466 whole pixels, which is 6990 twips.
        QCOMPARE(store.value(QStringLiteral("Me/Height")).toString(), QStringLiteral("6990"));
        for (const QString &key : {QStringLiteral("Me/Left"), QStringLiteral("Me/Top")}) {
            bool ok = false;
            const int twips = store.value(key).toString().toInt(&ok);
            QVERIFY2(ok && twips % 15 == 0, qPrintable(key));
        }
    }

    // A damaged list on a full disk (no copy of it can be kept) and a
    // Windows-1252 list whose first row begins with the letters of a UTF-8
    // byte-order mark, through two runs of the real program.
    void nothingIsLostOrReEncoded()
    {
        QTemporaryDir tmp;
        QVERIFY(tmp.isValid());
        const QString data = tmp.filePath(QStringLiteral("data"));
        const QString config = tmp.filePath(QStringLiteral("config"));
        QVERIFY(QDir().mkpath(data + QStringLiteral("/Maps")));
        QVERIFY(QDir().mkpath(config + QStringLiteral("/Marvik")));
        writeAll(data + QStringLiteral("/Maps/WorldMap.bmp"), "BM");
        writeAll(config + QStringLiteral("/Marvik/Marvik.conf"),
                 "[Sources]\neHam/Host=http://127.0.0.1:9\nQRZ/Host=http://127.0.0.1:9\n"
                 "QRZCQ/Host=http://127.0.0.1:9\nCallook/Host=http://127.0.0.1:9\nHamCall/Host=http://127.0.0.1:9\n"
                 "HamQTH/Host=http://127.0.0.1:9\nPictures/Host=http://127.0.0.1:9/\n");
        const QByteArray marked = "\xEF\xBB\xBF" "DL1ABC*J\xFCrgen**J\xFCrgen Stra\xDF" "e*Hauptstr. 1*K\xF6ln*Germany*0*0*20240101000000*\r\n";
        writeAll(data + QStringLiteral("/List1.dat"), marked);
        QByteArray damaged;
        for (int i = 0; i < 5; ++i)
            damaged += "G" + QByteArray::number(i) + "AAA*Bob**Bob Smith*1 Road*Leeds*England*53.8*-1.55*20231231220000*\r\n";
        damaged += "BROKEN*line\r\n";
        for (int i = 0; i < 300; ++i)
            damaged += "K" + QByteArray::number(i) + "ZZ*Jim**Jim Taylor*2 Elm*Boston*USA*42.36*-71.06*20240105093000*\r\n";
        writeAll(data + QStringLiteral("/List2.dat"), damaged);

        // The damaged list's question is answered with Escape: leave the file.
        runAndClose(data, config, {QStringLiteral("MARVIK_TEST_FULL_DISK=damaged")}, 1);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(readAll(data + QStringLiteral("/List2.dat")), damaged);
        const QByteArray first = readAll(data + QStringLiteral("/List1.dat"));
        // Not Windows-1252 behind a mark: UTF-8 with a mark of its own.
        QVERIFY(first.startsWith("\xEF\xBB\xBF\xC3\xAF\xC2\xBB\xC2\xBF" "DL1ABC*J\xC3\xBCrgen*"));

        // The next run reads it back as it was and writes the same bytes.
        runAndClose(data, config, {QStringLiteral("MARVIK_TEST_FULL_DISK=damaged")}, 1);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(readAll(data + QStringLiteral("/List1.dat")), first);
        QVERIFY(!first.contains("\xEF\xBF\xBD")); // no replacement character
        QCOMPARE(readAll(data + QStringLiteral("/List2.dat")), damaged);
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_e2e.moc"
