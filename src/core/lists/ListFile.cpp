// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/ListFile.h"

#include "core/app/Log.h"
#include "core/app/TextFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace marvik::lists {

bool saveList(const CallListModel &model, const QString &path, QString *errorString)
{
    return app::writeTextLines(path, model.lines(), errorString);
}

LoadReport loadList(CallListModel &model, const QString &path, const LoadContext &context, qint16 &sortMode,
                    bool sorting)
{
    LoadReport report = model.load(path, context);
    // A damaged file stops the load where the Windows program stopped, before its sort.
    if (report.complete() && sorting)
        model.sortList(sortMode);
    return report;
}

} // namespace marvik::lists
