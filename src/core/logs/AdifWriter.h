// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/AdifLog.h"

#include <QByteArray>

namespace marvik::logs {

/// Tagged ADIF text in UTF-8: the preamble line, the header fields one per
/// line, <EOH>, then one record per line ended by <EOR>, lines ended by
/// CR LF. Lengths count characters (UTF-16 units), as the loggers built on
/// Qt and .NET count them; for plain ASCII this is the byte count as well.
QByteArray writeAdi(const AdifLog &log);

/// The XML form in UTF-8. "APP_<PROGRAMID>_<FIELDNAME>" fields become APP
/// elements. A field whose name is no XML name is left out, and so are
/// characters XML cannot carry.
QByteArray writeAdx(const AdifLog &log);

} // namespace marvik::logs
