// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVersionNumber>

#include <optional>

/// The update check's reading of the maker's update page.
namespace marvik::dialogs {

/// The version the update page reports. The page (plain text or HTML, as
/// the page readers see it) names the current release as "Marvik", white
/// space and a version number of two or more parts ("Marvik  3.13",
/// "Marvik 4.0.1"); the first such mention counts. Nothing when the page
/// has none.
std::optional<QVersionNumber> reportedVersion(const QString &pageText);

/// This program's version, from the build.
QVersionNumber ownVersion();

/// The version the page reports when it is newer than `own` (trailing zero
/// parts do not count: 3.12.0 is 3.12); nothing otherwise.
std::optional<QVersionNumber> newerVersion(const QString &pageText, const QVersionNumber &own = ownVersion());

} // namespace marvik::dialogs
