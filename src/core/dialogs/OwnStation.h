// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/TextId.h"
#include "core/lookup/Sources.h"

#include <QString>

#include <optional>

namespace marvik::i18n {
class Texts;
}

/// The setup dialog's rules that need no window.
namespace marvik::dialogs {

/// The grid locator line: the word for grid locator, ":   " and the six-
/// character locator. Nothing outside -90..90 / -180..180 (both ends
/// included): the dialog then leaves the line as it was.
std::optional<QString> gridLine(const QString &word, double latitude, double longitude);

/// The suffix that tells a source's log-in state: Callook needs none and
/// says so; the others say whether a log-in was seen.
i18n::TextId loginSuffix(lookup::Source source, bool loggedIn);

/// The status after a position came from a source: its name and whether a
/// log-in was seen ("QRZ  (Logged in)").
QString lookupStatus(const i18n::Texts &texts, lookup::Source source, bool loggedIn);

} // namespace marvik::dialogs
