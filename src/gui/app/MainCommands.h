// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace marvik::gui {

class Commands;
class Selection;

/// Registers every command of the main window, its menus and context menus
/// in design order, each under its objectName with its text id.
void addMainWindowCommands(Commands &commands);

/// The objectName of an indexed command ("mnuSource3", "mnuAddTo2").
QString indexed(const char *name, int index);

/// The street and satellite views' enable rule: the current row's
/// longitude is not 0 (only the longitude decides, as it always has).
bool rowHasLongitude(const Selection &selection);

/// The command behind the Map button.
inline const QString kMapCommand = QStringLiteral("actMap");
/// "Mark for paste" in the row menu, and Space on a row.
inline const QString kMarkCommand = QStringLiteral("mnuMark");

} // namespace marvik::gui
