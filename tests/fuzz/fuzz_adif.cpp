// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to both ADIF readers: no input may crash or hang
// them. What the tagged reader reads must come back the same through the
// tagged writer; whatever either reads, both writers must give a log that
// reads without a problem. The import into a list takes whatever they read.
#include "core/lists/CallListModel.h"
#include "core/logs/AdifImport.h"
#include "core/logs/AdifReader.h"
#include "core/logs/AdifWriter.h"

#include <cstdlib>

using namespace marvik::logs;

namespace {

bool same(const QList<AdifField> &a, const QList<AdifField> &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a[i].name != b[i].name || a[i].value != b[i].value || a[i].type != b[i].type)
            return false;
    }
    return true;
}

} // namespace

static void check(const AdifLog &log, bool comesBackWhole)
{
    const AdifLog again = readAdi(writeAdi(log));
    if (again.problemCount != 0)
        std::abort();
    // XML names and values may hold what a tag cannot; tagged ones come back whole.
    if (comesBackWhole) {
        if (!same(again.header, log.header) || again.records.size() != log.records.size())
            std::abort();
        for (qsizetype i = 0; i < log.records.size(); ++i) {
            if (!same(again.records[i].fields, log.records[i].fields))
                std::abort();
        }
    }
    if (readAdx(writeAdx(log)).problemCount != 0)
        std::abort();
    static const QDateTime now(QDate(2025, 1, 1), QTime(12, 0), Qt::UTC);
    marvik::lists::CallListModel model;
    importLog(log, model, {{40, -75}, {}, now});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    check(readAdi(bytes), true);
    check(readAdx(bytes), false);
    return 0;
}
