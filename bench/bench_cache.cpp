// SPDX-License-Identifier: GPL-3.0-or-later
// A lookup answered from the cache and written into a list of 10,000 rows,
// from the request to the saved row, against saving the same list alone.
#include "BenchUtil.h"

#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/lookup/LookupResult.h"
#include "core/lookup/services/CallbookLookup.h"
#include "core/lookup/services/LookupCache.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace marvik;

namespace {

constexpr int kRows = 10000;

lookup::LookupResult sampleResult(int i)
{
    lookup::LookupResult r;
    r.name = QStringLiteral("Operator number %1").arg(i);
    r.address1 = QStringLiteral("%1 Main St").arg(i);
    r.address2 = QStringLiteral("Newington, CT 06111");
    r.country = QStringLiteral("USA");
    r.latitude = 41.714775;
    r.longitude = -72.72726;
    r.locator = QStringLiteral("FN31pr");
    return r;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString listPath = dir.filePath(QStringLiteral("List1.dat"));

    lists::CallListModel model;
    QList<lists::CallRecord> rows;
    const maps::Position me{48.1, 11.6};
    const QDateTime now = QDateTime::currentDateTime();
    for (int i = 0; i < kRows; ++i) {
        lists::CallRecord r;
        lookup::writeLookupResult(r, false, QStringLiteral("K%1AB").arg(i), sampleResult(i), me, now);
        rows.append(r);
    }
    model.setRecords(rows);
    qint16 byCallsign = 0;
    model.sortList(byCallsign);
    lists::saveList(model, listPath);

    // The cache holds every call of the list and a thousand more.
    lookup::LookupCache cache(dir.filePath(lookup::LookupCache::fileName()));
    for (int i = 0; i < kRows + 1000; ++i)
        cache.store(QStringLiteral("K%1AB").arg(i), lookup::Source::Qrz, lookup::Via::Service, sampleResult(i));
    QNetworkAccessManager network;
    lookup::CallbookLookup callbooks(&network, nullptr, &cache);
    lookup::LookupOptions offline;
    offline.offline = true;

    int call = 0;
    const auto lookUpAndWrite = [&](bool newRow) {
        const QString callsign = QStringLiteral("K%1AB").arg(newRow ? kRows + call % 1000 : (call * 7919) % kRows);
        ++call;
        QEventLoop loop;
        lookup::CallbookAnswer answer;
        const auto c = QObject::connect(&callbooks, &lookup::CallbookLookup::answered, &loop,
                                        [&](const lookup::CallbookAnswer &a) {
                                            answer = a;
                                            loop.quit();
                                        });
        callbooks.lookUp(callsign, lookup::Source::Qrz, offline);
        loop.exec();
        QObject::disconnect(c);
        const int row = model.findCallsign(callsign);
        lists::CallRecord record = row >= 0 ? model.record(row) : lists::CallRecord();
        lookup::writeLookupResult(record, row >= 0, callsign, answer.result, me, QDateTime::currentDateTime());
        if (row >= 0)
            model.replaceRecord(row, record);
        else
            model.appendRecord(record);
        qint16 selector = 0;
        model.sortList(selector);
        lists::saveList(model, listPath);
    };

    // The three are taken in turn, so a busy disk or a neighbour's build
    // weighs on each alike; each figure is the median of its runs.
    constexpr int runs = 41;
    std::vector<double> save, update, added;
    const auto timed = [](std::vector<double> &into, const std::function<void()> &work) {
        QElapsedTimer t;
        t.start();
        work();
        into.push_back(double(t.nsecsElapsed()) / 1e6);
    };
    lookUpAndWrite(false); // warm up
    for (int i = 0; i < runs; ++i) {
        timed(save, [&] { lists::saveList(model, listPath); });
        timed(update, [&] { lookUpAndWrite(false); });
        timed(added, [&] { lookUpAndWrite(true); });
    }
    const auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    const double baseline = median(save);
    const double updateMs = median(update);
    const double addedMs = median(added);
    const double findOnly = bench::medianMs(runs, [&] { cache.find(QStringLiteral("K%1AB").arg(call++ % kRows)); });

    std::printf("cached answer into a list of %d rows (cache of %d results)\n", kRows, cache.count());
    std::printf("  save the list alone      : %8.3f ms\n", baseline);
    std::printf("  cache read alone         : %8.3f ms  ratio %.3fx\n", findOnly, findOnly / baseline);
    std::printf("  request to saved row, update : %8.3f ms  ratio %.2fx\n", updateMs, updateMs / baseline);
    std::printf("  request to saved row, new row: %8.3f ms  ratio %.2fx\n", addedMs, addedMs / baseline);
    return 0;
}
