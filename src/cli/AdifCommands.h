// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTextStream>

namespace marvik::cli {

/// import-adif FILE LIST: the contacts of an ADIF log (.adi or .adx) into
/// list 1..5 of the data folder; the summary line on stdout, the places
/// where the log is malformed and the records skipped on stderr.
int importAdif(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// export-adif LIST FILE [--adx] [--band BAND] [--mode MODE]: a list as an
/// ADIF log (ADX with --adx or a FILE ending in ".adx").
int exportAdif(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// refresh LIST [--source SOURCE]: every call of a list looked up again on
/// the callbook pages; progress on stderr, the summary line on stdout. Exit
/// 1 when calls were asked for and none could be refreshed.
int refresh(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

} // namespace marvik::cli
