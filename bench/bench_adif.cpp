// SPDX-License-Identifier: GPL-3.0-or-later
// Importing a 50,000-contact ADIF log into a list, against merely reading
// the file and decoding its text; the ADX form of the same log beside it.
#include "BenchUtil.h"

#include "core/app/TextFile.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/logs/AdifImport.h"
#include "core/logs/AdifReader.h"
#include "core/logs/AdifWriter.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>

using namespace marvik;

namespace {

constexpr int kContacts = 50000;
constexpr int kStations = 30000; ///< a busy station works many calls more than once

/// A log as a Qt logger writes it: a dozen fields a contact, some names
/// beyond ASCII, the calls again and again over the years.
logs::AdifLog sampleLog()
{
    QRandomGenerator rng(1234);
    logs::AdifLog log;
    log.preamble = QStringLiteral("ADIF export");
    log.header = {{QStringLiteral("ADIF_VER"), QStringLiteral("3.1.4"), {}},
                  {QStringLiteral("PROGRAMID"), QStringLiteral("Logger"), {}}};
    const QStringList names = {QStringLiteral("Hans Meyer"), QStringLiteral("J\u00F6rg M\u00FCller"),
                               QStringLiteral("John Smith"), QStringLiteral("\u0418\u0432\u0430\u043D"),
                               QStringLiteral("Fran\u00E7ois L\u00E9ger")};
    for (int i = 0; i < kContacts; ++i) {
        const int station = int(rng.bounded(kStations));
        const auto f = [](const char *name, const QString &value) {
            return logs::AdifField{QString::fromLatin1(name), value, {}};
        };
        logs::AdifRecord r;
        r.fields = {
            f("CALL", QStringLiteral("DL%1AB").arg(station)),
            f("QSO_DATE", QStringLiteral("20%1%2%3")
                              .arg(10 + rng.bounded(15))
                              .arg(1 + rng.bounded(12), 2, 10, QLatin1Char('0'))
                              .arg(1 + rng.bounded(28), 2, 10, QLatin1Char('0'))),
            f("TIME_ON", QStringLiteral("%1%2").arg(rng.bounded(24), 2, 10, QLatin1Char('0')).arg(rng.bounded(60), 2, 10, QLatin1Char('0'))),
            f("BAND", QStringLiteral("20m")),
            f("MODE", QStringLiteral("SSTV")),
            f("FREQ", QStringLiteral("14.230")),
            f("RST_SENT", QStringLiteral("595")),
            f("RST_RCVD", QStringLiteral("595")),
            f("NAME", names[station % names.size()]),
            f("QTH", QStringLiteral("Town %1").arg(station)),
            f("GRIDSQUARE", QStringLiteral("JO%1%2").arg(station % 10).arg((station / 10) % 10)),
            f("COUNTRY", QStringLiteral("Germany")),
            f("APP_LOGGER_RIG", QStringLiteral("IC-7300")),
        };
        log.records.append(r);
    }
    return log;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const logs::AdifLog sample = sampleLog();
    const QString adi = dir.filePath(QStringLiteral("log.adi"));
    const QString adx = dir.filePath(QStringLiteral("log.adx"));
    writeFile(adi, logs::writeAdi(sample));
    writeFile(adx, logs::writeAdx(sample));
    const QString list = dir.filePath(QStringLiteral("List1.dat"));
    const logs::ImportContext context{{48.1, 11.6}, {}, {}};

    const int runs = 7;
    qsizetype characters = 0;
    const double baseline = bench::medianMs(runs, [&] {
        QFile f(adi);
        f.open(QIODevice::ReadOnly);
        characters += QString::fromUtf8(f.readAll()).size();
    });
    const auto readOnly = [&](const QString &path) {
        return bench::medianMs(runs, [&] {
            logs::AdifLog log;
            logs::readAdifFile(path, log);
        });
    };
    const double parseAdi = readOnly(adi);
    const double parseAdx = readOnly(adx);
    logs::ImportSummary summary;
    const auto importInto = [&](const QString &path, bool emptyFirst, lists::CallListModel &model) {
        return bench::medianMs(runs, [&] {
            if (emptyFirst)
                model.clear();
            qint16 sortMode = 0;
            logs::importAdifFile(path, model, list, sortMode, context, summary);
        });
    };
    lists::CallListModel model;
    const double importAdi = importInto(adi, true, model);
    const int rows = model.rowCount();
    const double importAdx = importInto(adx, true, model);
    const double again = importInto(adi, false, model);
    // The parts of an import: the merge alone (the log already read) and the save.
    logs::AdifLog log;
    logs::readAdifFile(adi, log);
    const double merge = bench::medianMs(runs, [&] {
        lists::CallListModel fresh;
        logs::importLog(log, fresh, context);
    });
    const double save = bench::medianMs(runs, [&] { lists::saveList(model, list); });

    std::printf("ADIF log of %d contacts, %d calls (%lld characters, %lld bytes)\n", kContacts, rows,
                qlonglong(characters / (runs + 1)), qlonglong(QFile(adi).size()));
    std::printf("  read and decode only      : %8.2f ms\n", baseline);
    std::printf("  read ADI                  : %8.2f ms  ratio %.2fx\n", parseAdi, parseAdi / baseline);
    std::printf("  import ADI into a list    : %8.2f ms  ratio %.2fx  (read, merge, sort, save)\n", importAdi,
                importAdi / baseline);
    std::printf("    of which the merge      : %8.2f ms  ratio %.2fx\n", merge, merge / baseline);
    std::printf("    of which the save       : %8.2f ms  ratio %.2fx\n", save, save / baseline);
    std::printf("  read ADX                  : %8.2f ms  ratio %.2fx\n", parseAdx, parseAdx / baseline);
    std::printf("  import ADX into a list    : %8.2f ms  ratio %.2fx\n", importAdx, importAdx / baseline);
    std::printf("  import ADI again (all in) : %8.2f ms  ratio %.2fx  (%s)\n", again, again / baseline,
                qPrintable(logs::summaryText(summary)));
    return 0;
}
