// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up of the main window with five lists of 10,000 rows, from process
// start to the first painted window, against a bare Qt window started the
// same way in the same run; and a switch to a 10,000-row list.
#include "BenchUtil.h"

#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int kRows = 10000;
constexpr int kRuns = 7;

qint64 monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

/// Once the watched window has painted, prints the moment on the system-wide
/// monotonic clock and ends the process: tearing down is not start-up.
class FirstPaint : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_seen) {
            m_seen = true;
            QMetaObject::invokeMethod(
                qApp,
                [] {
                    std::printf("%lld\n", static_cast<long long>(monotonicNs()));
                    std::fflush(stdout);
                    std::_Exit(0);
                },
                Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_seen = false;
};

void writeData(const QString &dir)
{
    QDir().mkpath(dir + QStringLiteral("/Images/Thumbs"));
    QDir().mkpath(dir + QStringLiteral("/Maps"));
    QFile cfg(dir + QStringLiteral("/Marvik.cfg"));
    cfg.open(QIODevice::WriteOnly);
    cfg.write("LatLon:\r\n 51.5\r\n-0.12\r\nSort:\r\n 1 \r\n 0 \r\nStartup:\r\n0\r\nG0XYZ\r\n\r\n\r\n 1 \r\n 0 \r\n"
              "DX\r\nEurope\r\nSkeds\r\nOld\r\nNew\r\n1\r\nMaps:\r\n 0 \r\n");
    QImage thumb(24, 16, QImage::Format_RGB32);
    thumb.fill(Qt::darkCyan);
    for (int n = 1; n <= 5; ++n) {
        QFile f(dir + QStringLiteral("/List%1.dat").arg(n));
        f.open(QIODevice::WriteOnly);
        QByteArray all;
        for (int r = 0; r < kRows; ++r) {
            const QByteArray call = "K" + QByteArray::number(n) + "A" + QByteArray::number(r * 7919 % kRows);
            all += call + "*Bob*123\xB0*Robert Smith*12 High Street*Leeds*England*" + QByteArray::number(40 + r % 20) +
                   "." + QByteArray::number(r % 97) + "*-" + QByteArray::number(r % 120) + ".5*2024" +
                   QByteArray::number(10000000 + r * 37 % 9999999) + "*\r\n";
            if (n == 1 && r % 100 == 0)
                thumb.save(dir + QStringLiteral("/Images/Thumbs/") + QString::fromLatin1(call) + QStringLiteral(".jpg"),
                           "BMP");
        }
        f.write(all);
    }
}

int child(int argc, char *argv[], bool bare, const QString &dir)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    FirstPaint watcher;
    if (bare) {
        QWidget window;
        window.resize(400, 466);
        window.installEventFilter(&watcher);
        window.show();
        return QApplication::exec();
    }
    QSettings store(dir + QStringLiteral("/settings.ini"), QSettings::IniFormat);
    marvik::gui::CompositionRoot root(dir, &store);
    marvik::gui::MainWindow &window = *root.mainWindow();
    window.installEventFilter(&watcher);
    if (!root.startUp())
        return 1;
    window.show();
    return QApplication::exec();
}

/// From starting the process to its first painted window.
double processMs(const QString &program, const QStringList &args)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const qint64 start = monotonicNs();
    p.start(program, args);
    p.waitForFinished(120000);
    bool ok = false;
    const qint64 painted = p.readAllStandardOutput().trimmed().toLongLong(&ok);
    if (!ok || p.exitCode() != 0) {
        std::fprintf(stderr, "child %s failed\n", qPrintable(args.join(u' ')));
        return 0;
    }
    return double(painted - start) / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc >= 2 && qstrcmp(argv[1], "--child-bare") == 0)
        return child(argc, argv, true, {});
    if (argc >= 3 && qstrcmp(argv[1], "--child-marvik") == 0)
        return child(argc, argv, false, QString::fromLocal8Bit(argv[2]));

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir tmp;
    qputenv("XDG_CONFIG_HOME", tmp.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", tmp.filePath(QStringLiteral("xdg")).toLocal8Bit());
    const QString dir = tmp.filePath(QStringLiteral("data"));
    writeData(dir);

    QApplication app(argc, argv);
    const QString self = QApplication::applicationFilePath();
    // The same program with no list files: what the window itself costs.
    const QString empty = tmp.filePath(QStringLiteral("empty"));
    QDir().mkpath(empty);
    std::vector<double> bare;
    std::vector<double> marvik;
    std::vector<double> noLists;
    // Alternate the two so that disk and CPU conditions affect both alike;
    // the first pair only warms the caches.
    for (int i = 0; i <= kRuns; ++i) {
        const double b = processMs(self, {QStringLiteral("--child-bare")});
        const double m = processMs(self, {QStringLiteral("--child-marvik"), dir});
        const double e = processMs(self, {QStringLiteral("--child-marvik"), empty});
        if (i > 0) {
            bare.push_back(b);
            marvik.push_back(m);
            noLists.push_back(e);
        }
    }
    const auto median = [](std::vector<double> &v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    const double bareMs = median(bare);
    const double marvikMs = median(marvik);
    const double emptyMs = median(noLists);
    std::printf("start-up to first paint, median of %d processes\n", kRuns);
    std::printf("  bare Qt window:                  %8.1f ms\n", bareMs);
    std::printf("  Marvik, 5 lists x %d rows:   %8.1f ms\n", kRows, marvikMs);
    std::printf("  Marvik, no list files:           %8.1f ms\n", emptyMs);
    std::printf("  ratio:                           %8.2fx (target at most 1.5x)\n", marvikMs / bareMs);

    QSettings store(dir + QStringLiteral("/settings.ini"), QSettings::IniFormat);
    marvik::gui::CompositionRoot root(dir, &store);
    marvik::gui::MainWindow &window = *root.mainWindow();
    root.startUp();
    window.show();
    QApplication::processEvents();
    auto *chooser = window.findChild<QComboBox *>(QStringLiteral("cboList"));
    int next = 1;
    const double switchMs = marvik::bench::medianMs(kRuns, [&] {
        chooser->setCurrentIndex(next);
        emit chooser->activated(next);
        QApplication::processEvents();
        next = next % 4 + 1;
    });
    std::printf("list switch (reload and sort of %d rows), median: %8.1f ms\n", kRows, switchMs);
    return 0;
}
