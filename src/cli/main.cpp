// SPDX-License-Identifier: GPL-3.0-or-later
// marvik-cli: Marvik's files and calculations for scripts and batch work.
#include "cli/CliCommands.h"
#include "cli/ShareCommands.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

/// The command word of the raw arguments, past the global options.
QString commandWord(int argc, char *argv[])
{
    int i = 1;
    if (i < argc && std::strcmp(argv[i], "--data-dir") == 0)
        i += 2;
    else if (i < argc && std::strncmp(argv[i], "--data-dir=", 11) == 0)
        i += 1;
    return i < argc ? QString::fromLocal8Bit(argv[i]) : QString();
}

} // namespace

int main(int argc, char *argv[])
{
    // Text measured in pixels needs the font system, which comes with a GUI
    // application; the offscreen platform gives it without a display, so a
    // script gets the same text on a server as on a desktop.
    std::unique_ptr<QCoreApplication> application;
    if (marvik::cli::needsFonts(commandWord(argc, argv))) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("Marvik"));

    QTextStream out(stdout);
    QTextStream err(stderr);
    out.setEncoding(QStringConverter::Utf8);
    err.setEncoding(QStringConverter::Utf8);

    QStringList args = QCoreApplication::arguments().mid(1);
    QString dataDir;
    if (args.size() >= 1 && args.first() == QLatin1String("--data-dir")) {
        if (args.size() < 2) {
            err << "marvik-cli: --data-dir needs a folder\n";
            return marvik::cli::BadArguments;
        }
        dataDir = args.at(1);
        args = args.mid(2);
    } else if (!args.isEmpty() && args.first().startsWith(QLatin1String("--data-dir="))) {
        dataDir = args.first().mid(11);
        args = args.mid(1);
    }
    return marvik::cli::run(args, dataDir, out, err);
}
