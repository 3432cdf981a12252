// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to the list loader and saves the result again: no
// input may crash it, and what is saved must load back to the same rows.
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    static const QString in = dir.filePath(QStringLiteral("List1.dat"));
    static const QString out = dir.filePath(QStringLiteral("List2.dat"));
    {
        QFile f(in);
        if (!f.open(QIODevice::WriteOnly))
            std::abort();
        f.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    const marvik::lists::LoadContext context{{40, -75}, dir.path(), QStringLiteral("20250101000000")};
    marvik::lists::CallListModel model;
    const auto report = model.load(in, context);
    qint16 mode = 1;
    model.sortList(mode);
    if (!marvik::lists::saveList(model, out))
        std::abort();
    marvik::lists::CallListModel back;
    const auto again = back.load(out, context);
    // A list read whole and saved loads back the same, unless a field held a "*" or a line break
    // that the file format cannot carry.
    bool carriable = true;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (const QString &f : model.record(row).fields)
            carriable = carriable && !f.contains(u'*') && !f.contains(u'\r') && !f.contains(u'\n');
    }
    if (report.complete() && carriable && (!again.complete() || back.lines() != model.lines()))
        std::abort();
    return 0;
}
