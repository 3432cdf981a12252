// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTextStream>

namespace marvik::cli {

/// Exit codes of marvik-cli.
enum ExitCode { Success = 0, WorkFailed = 1, BadArguments = 2 };

/// Runs one command of marvik-cli; `args` holds the command and its
/// arguments (without the global options). Writes the result to `out` and a
/// one-line message to `err`.
int run(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err);

} // namespace marvik::cli
