// SPDX-License-Identifier: GPL-3.0-or-later
// marvik-cli: Marvik's files and calculations for scripts and batch work.
#include "cli/CliCommands.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
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
