// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace marvik::i18n {
class Texts;
}
namespace marvik::logs {
struct AdifProblem;
struct ImportSummary;
struct RefreshSummary;
}

namespace marvik::gui {

/// How many skipped records and malformed places an import's summary lists
/// one by one; the rest are counted.
inline constexpr int kListedInSummary = 5;

/// One malformed place of a log, in the user's words: "line 12: the length
/// of NAME is not a number".
QString problemLine(const logs::AdifProblem &problem, const i18n::Texts &texts);

/// The box after an import: what was added, what the list had already, what
/// was skipped and why, and where the file is malformed.
QString importSummaryText(const logs::ImportSummary &summary, const i18n::Texts &texts, const QString &fileName,
                          const QString &listName);

/// The box after a whole-list update: how it ended and what it did to each
/// call. `skipDays` is the setting the recent rows were skipped by.
QString refreshSummaryText(const logs::RefreshSummary &summary, const i18n::Texts &texts, const QString &listName,
                           const QString &sourceName, int skipDays);

/// A time left as a clock shows it: "0:42", "12:05", "1:02:03" (seconds
/// rounded up, so the last call never shows "0:00").
QString durationText(qint64 msecs);

} // namespace marvik::gui
