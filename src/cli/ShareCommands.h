// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTextStream>

namespace marvik::cli {

/// list-text LIST: the paste text of list 1..5 from the data folder, as it
/// goes on the clipboard (UTF-8, CR LF). Needs a QGuiApplication for the fonts.
int listText(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// Whether a command measures text and so needs a QGuiApplication.
bool needsFonts(const QString &command);

} // namespace marvik::cli
