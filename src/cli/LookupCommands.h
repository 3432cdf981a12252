// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTextStream>

namespace marvik::cli {

/// html2text FILE: the decoded text of a saved page exactly as the readers
/// see it (CR LF line breaks, no line break added).
int html2text(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// read SOURCE CALLSIGN FILE: the main window's reading of a saved page, as
/// one JSON object.
int readPage(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// lookup [--source SOURCE] CALLSIGN: the same JSON from a live lookup with
/// the configured hosts.
int lookup(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

} // namespace marvik::cli
