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

/// lookup [--source SOURCE] [--via page|service] [--fallback] [--offline]
/// [--user USER --password-file FILE] CALLSIGN: the same JSON from a live
/// lookup with the configured hosts, plus where the answer came from.
int lookup(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// read-service SERVICE CALLSIGN FILE: a saved data-service answer as the
/// JSON of read; exit 1 when the answer is an error.
int readService(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

/// clear-cache: empties the lookup cache; prints how many results went.
int clearCache(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

} // namespace marvik::cli
