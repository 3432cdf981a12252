// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/MainCommands.h"

#include "core/lookup/Sources.h"
#include "core/app/Number.h"
#include "gui/app/Commands.h"
#include "gui/app/Selection.h"

#include <QAction>
#include <QActionGroup>

namespace marvik::gui {

using i18n::TextId;

QString indexed(const char *name, int index)
{
    return QLatin1String(name) + QString::number(index);
}

namespace {

/// One-of-many items: a radio mark, never two checked.
void addGroup(Commands &commands, const char *name, int from, int to, auto caption)
{
    auto *group = new QActionGroup(&commands);
    group->setExclusive(true);
    for (int i = from; i <= to; ++i) {
        QAction *a = commands.add(indexed(name, i), caption(i), true);
        group->addAction(a);
    }
}

} // namespace

bool rowHasLongitude(const Selection &selection)
{
    const std::optional<lists::CallRecord> record = selection.record();
    return record && app::val((*record)[lists::Column::Longitude]) != 0;
}

void addMainWindowCommands(Commands &commands)
{
    // Database menu: the sources by their service names; the CD callbooks
    // keep their fixed names.
    const auto noText = [](int) { return std::optional<TextId>(); };
    addGroup(commands, "mnuSource", 0, lookup::kSourceCount - 1, noText);
    commands.add(QStringLiteral("mnuLogin"), std::nullopt);

    commands.add(QStringLiteral("mnuExpand"), std::nullopt);

    commands.add(QStringLiteral("mnuAdd"), TextId::MenuAdd);
    commands.add(QStringLiteral("mnuLatLon"), TextId::MenuLatLon);
    addGroup(commands, "mnuDefaultDB", 0, lookup::kSourceCount - 1, noText);
    commands.add(QStringLiteral("mnuNames"), TextId::MenuNames);
    commands.add(QStringLiteral("mnuOnTop"), TextId::MenuOnTop, true);
    addGroup(commands, "mnuLang", 0, 4, [](int i) { return std::optional<TextId>(TextId(int(TextId::LanguageEnglish) + i)); });
    // Callbook services: the accounts dialog and the cache.
    commands.add(QStringLiteral("mnuAccounts"), TextId::MenuAccounts);
    commands.add(QStringLiteral("mnuClearCache"), TextId::MenuClearCache);
    commands.add(QStringLiteral("mnuHelp"), TextId::MenuHelp);
    commands.add(QStringLiteral("mnuAbout"), TextId::MenuAbout);

    // The row menu; captions with a callsign in them are set when it opens.
    commands.add(QStringLiteral("mnuShowPic"), TextId::MenuShowPicture);
    commands.add(QStringLiteral("mnuName"), std::nullopt);
    commands.add(QStringLiteral("mnuStView0"), std::nullopt);
    commands.add(QStringLiteral("mnuStView1"), std::nullopt);
    commands.add(QStringLiteral("mnuAddNew"), TextId::MenuAddNew);
    commands.add(QStringLiteral("mnuManUpdate"), std::nullopt);
    commands.add(QStringLiteral("mnuUpdate"), std::nullopt);
    commands.add(QStringLiteral("mnu3"), TextId::MenuDelete);
    commands.add(QStringLiteral("mnuClear"), TextId::MenuClear);
    for (int k = 1; k <= 5; ++k)
        commands.add(indexed("mnuAddTo", k), std::nullopt);
    for (int k = 1; k <= 5; ++k)
        commands.add(indexed("mnuAddAllTo", k), std::nullopt);
    // Sharing: the row's mark for the paste text, shown checked on a marked row.
    commands.add(kMarkCommand, TextId::MenuMarkForPaste, true);
    commands.add(QStringLiteral("mnu4"), TextId::MenuPasteList);
    commands.add(QStringLiteral("mnu5"), TextId::MenuCopyList);
    commands.add(QStringLiteral("mnu6"), TextId::MenuPrintList);

    // The menu of an empty grid.
    commands.add(QStringLiteral("mnuAddNew2"), TextId::MenuAddNew);

    // Lists and logs: the row menu's ADIF items (import also in the empty
    // grid's menu) and the whole-list update, whose caption names the
    // source when the menu opens.
    commands.add(QStringLiteral("mnuUpdateAll"), std::nullopt);
    commands.add(QStringLiteral("mnuImportAdif"), TextId::MenuImportAdif);
    commands.add(QStringLiteral("mnuExportAdif"), TextId::MenuExportAdif);

    commands.add(kMapCommand, TextId::ButtonMap);
}

} // namespace marvik::gui
