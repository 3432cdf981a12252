// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int g_signalPipe[2] = {-1, -1};

void onTerminate(int)
{
    const char byte = 1;
    // Only write() is safe in a signal handler; the event loop does the rest.
    [[maybe_unused]] const auto written = ::write(g_signalPipe[0], &byte, 1);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    QApplication::setApplicationVersion(QStringLiteral(MARVIK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("marvik"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Callsign lists for slow-scan TV picture exchange"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption dataDir(QStringLiteral("data-dir"), QStringLiteral("Use DIR as the data folder."),
                                     QStringLiteral("DIR"));
    parser.addOption(dataDir);
    parser.process(app);

    marvik::gui::CompositionRoot root(parser.value(dataDir));
    if (!root.startUp())
        return 0;
    marvik::gui::MainWindow &window = *root.mainWindow();

    // SIGTERM and SIGINT close the window the normal way, so the lists and
    // the configuration are written as at any other exit.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalPipe) == 0) {
        auto *notifier = new QSocketNotifier(g_signalPipe[1], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window, notifier] {
            char byte;
            [[maybe_unused]] const auto got = ::read(g_signalPipe[1], &byte, 1);
            notifier->setEnabled(false);
            window.close();
        });
        struct sigaction action = {};
        action.sa_handler = onTerminate;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        sigaction(SIGTERM, &action, nullptr);
        sigaction(SIGINT, &action, nullptr);
    }

    window.show();
    return QApplication::exec();
}
