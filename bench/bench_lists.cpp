// SPDX-License-Identifier: GPL-3.0-or-later
// How fast a large list loads and saves, against merely reading and splitting
// the same file, and how many distance and azimuth figures a second we get.
#include "BenchUtil.h"

#include "core/app/TextFile.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/maps/Geometry.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <vector>

using namespace marvik;

namespace {

constexpr int kRows = 20000;

void writeSampleList(const QString &path, const QString &thumbs)
{
    QRandomGenerator rng(1234);
    lists::CallListModel model;
    QList<lists::CallRecord> rows;
    for (int i = 0; i < kRows; ++i) {
        lists::CallRecord r;
        r[lists::Column::Callsign] = QStringLiteral("DL%1ABC").arg(i);
        r[lists::Column::FirstName] = i % 7 ? QStringLiteral("Hans") : QStringLiteral("Hansi");
        r[lists::Column::Azimuth] = QStringLiteral("47\u00B0");
        r[lists::Column::FullName] = QStringLiteral("Hans Meyer");
        r[lists::Column::Address] = QStringLiteral("Hauptstra\u00DFe %1").arg(i);
        r[lists::Column::City] = QStringLiteral("M\u00FCnchen");
        r[lists::Column::Country] = QStringLiteral("Germany");
        r[lists::Column::Latitude] = QString::number(rng.bounded(160.0) - 80, 'f', 4);
        r[lists::Column::Longitude] = QString::number(rng.bounded(358.0) - 179, 'f', 4);
        r[lists::Column::TimeStamp] = QStringLiteral("2024%1").arg(i, 10, 10, QLatin1Char('0'));
        rows.append(r);
        if (i % 50 == 0)
            app::writeFileAtomically(thumbs + QStringLiteral("/DL%1ABC.jpg").arg(i), QByteArray("BM"));
    }
    model.setRecords(rows);
    // Marvik saves a list sorted, so that is how a list file looks.
    qint16 byCallsign = 0;
    model.sortList(byCallsign);
    lists::saveList(model, path);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString thumbs = dir.filePath(QStringLiteral("Images/Thumbs"));
    QDir().mkpath(thumbs);
    const QString path = dir.filePath(QStringLiteral("List1.dat"));
    writeSampleList(path, thumbs);

    const int runs = 15;
    qsizetype fields = 0;
    const double baseline = bench::medianMs(runs, [&] {
        const QStringList lines = app::splitLines(app::readTextFile(path).text);
        for (const QString &line : lines)
            fields += line.split(u'*').size();
    });

    // Start-up loads into empty lists; a list switch reloads over the rows
    // already shown, and those have to go first.
    lists::LoadContext context{{48.1, 11.6}, thumbs, {}};
    std::vector<std::unique_ptr<lists::CallListModel>> loaded;
    const double load = bench::medianMs(runs, [&] {
        qint16 sortMode = 0;
        loaded.push_back(std::make_unique<lists::CallListModel>());
        lists::loadList(*loaded.back(), path, context, sortMode);
    });
    lists::CallListModel &model = *loaded.back();
    const double reload = bench::medianMs(runs, [&] {
        qint16 sortMode = 0;
        lists::loadList(model, path, context, sortMode);
    });
    const QString out = dir.filePath(QStringLiteral("List2.dat"));
    const double save = bench::medianMs(runs, [&] { lists::saveList(model, out); });

    constexpr int kCalls = 2000000;
    double sink = 0;
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < kCalls; ++i) {
        double d = 0;
        double a = 0;
        maps::getDistanceAndAzimuth({48.1, 11.6}, -60 + (i % 1200) * 0.1, -170 + (i % 3400) * 0.1, d, a);
        sink += d + a;
    }
    const double callsPerSecond = kCalls / (double(t.nsecsElapsed()) / 1e9);
    const maps::DistanceFromMe fromMe({48.1, 11.6});
    t.restart();
    for (int i = 0; i < kCalls; ++i) {
        double d = 0;
        double a = 0;
        fromMe.compute(-60 + (i % 1200) * 0.1, -170 + (i % 3400) * 0.1, d, a);
        sink += d + a;
    }
    const double reusedPerSecond = kCalls / (double(t.nsecsElapsed()) / 1e9);

    std::printf("list of %d rows (%d fields read by the baseline)\n", kRows, int(fields / (runs + 1)));
    std::printf("  read and split only : %8.2f ms\n", baseline);
    std::printf("  load (rows built)   : %8.2f ms  ratio %.2fx\n", load, load / baseline);
    std::printf("  reload over itself  : %8.2f ms  ratio %.2fx\n", reload, reload / baseline);
    std::printf("  save                : %8.2f ms  ratio %.2fx\n", save, save / baseline);
    std::printf("GetDistanceAndAzimuth : %.2f million calls/s, %.2f million/s from one own position"
                " (checksum %.0f)\n",
                callsPerSecond / 1e6, reusedPerSecond / 1e6, sink);
    return 0;
}
