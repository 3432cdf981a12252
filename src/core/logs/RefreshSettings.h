// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSettings;

namespace marvik::logs {

/// How a whole list is refreshed, kept in group "Refresh" of the settings
/// store: "IntervalMs", the least time between two lookups (2000 unless
/// set: the callbooks take a quick run of requests for a robot), and
/// "SkipDays", rows stamped within that many days are not looked up again
/// (0: none skipped).
struct RefreshSettings
{
    int intervalMs = 2000;
    int skipDays = 0;

    /// Reads group "Refresh"; a missing, non-numeric or negative value keeps its default.
    static RefreshSettings load(QSettings &store);
    /// Reads the per-user settings store QSettings("Marvik", "Marvik").
    static RefreshSettings load();
    void save(QSettings &store) const;
};

} // namespace marvik::logs
