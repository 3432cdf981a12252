// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ShareCommands.h"

#include "cli/CliCommands.h"
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/lists/ListFile.h"
#include "core/share/ListText.h"

#include <QFileInfo>

namespace marvik::cli {

bool needsFonts(const QString &command)
{
    return command == QLatin1String("list-text");
}

int listText(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    bool ok = false;
    const int list = args[0].toInt(&ok);
    if (!ok || list < 1 || list > 5) {
        err << "marvik-cli: not a list number 1..5: " << args[0] << '\n';
        return BadArguments;
    }
    const app::DataFolder folder(dataDir);
    app::Settings settings;
    app::readConfig(folder.configFile(), settings);

    // The list as the window shows it after a switch to it: loaded with the
    // azimuths from Me and sorted by the sort mode. Marks for paste live in
    // the running program only, so none are set here.
    lists::CallListModel model;
    lists::LoadContext context;
    context.me = settings.me;
    const QString path = folder.listFile(list);
    if (QFileInfo::exists(path)) {
        const lists::LoadReport report = lists::loadList(model, path, context, settings.sortMode);
        if (!report.opened) {
            err << "marvik-cli: " << path << " could not be read: " << report.errorString << '\n';
            return WorkFailed;
        }
        if (report.badLine != 0) {
            err << "marvik-cli: " << path << ", line " << report.badLine
                << ": fewer than eleven fields; the rest of the file was not read\n";
            return WorkFailed;
        }
    }
    out << share::composeListText(share::listTextRows(model), share::listTextFont());
    return Success;
}

} // namespace marvik::cli
