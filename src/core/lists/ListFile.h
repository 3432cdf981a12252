// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallListModel.h"

namespace marvik::lists {

/// Writes a list file whole (atomically): one line per row, the eleven fields
/// joined by "*", CR LF after each; an empty list gives an empty file.
bool saveList(const CallListModel &model, const QString &path, QString *errorString = nullptr);

/// Loads a list file into `model` and, when the whole file was read, sorts it
/// with the program's sort mode (which the sort may turn from 1 into 9).
/// `sorting` false (start-up) skips the sort.
LoadReport loadList(CallListModel &model, const QString &path, const LoadContext &context, qint16 &sortMode,
                    bool sorting = true);

} // namespace marvik::lists
