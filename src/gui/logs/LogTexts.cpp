// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/logs/LogTexts.h"

#include "core/i18n/Texts.h"
#include "core/logs/AdifImport.h"
#include "core/logs/ListRefresh.h"

#include <QStringList>

#include <algorithm>

namespace marvik::gui {

using i18n::TextId;

namespace {

const QString kIndent = QStringLiteral("    ");

QString number(int n)
{
    return QString::number(n);
}

/// The first few of `items` indented under their heading, and how many more.
void listSome(QStringList &lines, const QStringList &items, int total, const i18n::Texts &texts)
{
    const qsizetype shown = std::min<qsizetype>(items.size(), kListedInSummary);
    for (qsizetype i = 0; i < shown; ++i)
        lines << kIndent + items[i];
    if (total > shown)
        lines << kIndent + texts.fill(TextId::ImportMore, number(total - int(shown)));
}

} // namespace

QString problemLine(const logs::AdifProblem &p, const i18n::Texts &texts)
{
    TextId id = TextId::AdifBadName;
    switch (p.kind) {
    case logs::AdifProblemKind::BadLength: id = TextId::AdifBadLength; break;
    case logs::AdifProblemKind::BadName: id = TextId::AdifBadName; break;
    case logs::AdifProblemKind::CutShort: id = TextId::AdifCutShort; break;
    case logs::AdifProblemKind::UnclearLength: id = TextId::AdifUnclearLength; break;
    case logs::AdifProblemKind::MissingEndOfRecord: id = TextId::AdifMissingEndOfRecord; break;
    case logs::AdifProblemKind::LateHeaderEnd: id = TextId::AdifLateHeaderEnd; break;
    case logs::AdifProblemKind::NotAdx: id = TextId::AdifNotAdx; break;
    case logs::AdifProblemKind::XmlError: id = TextId::AdifXmlError; break;
    }
    return texts.fill(id, number(p.line), p.detail);
}

QString importSummaryText(const logs::ImportSummary &s, const i18n::Texts &texts, const QString &fileName,
                          const QString &listName)
{
    QStringList lines;
    lines << texts.fill(TextId::ImportDone, fileName, listName);
    lines << texts.fill(TextId::ImportContacts, number(s.records), number(s.calls));
    lines << QString();
    lines << texts.fill(TextId::ImportAdded, number(s.added));
    if (s.alreadyThere > 0)
        lines << texts.fill(TextId::ImportAlreadyThere, number(s.alreadyThere), number(s.filled));
    if (s.skipped() > 0) {
        lines << texts.fill(TextId::ImportSkipped, number(s.skipped()));
        QStringList why;
        for (const logs::SkippedRecord &r : s.skippedRecords) {
            why << (r.reason == logs::SkipReason::NoCall ? texts.fill(TextId::ImportSkippedNoCall, number(r.line))
                                                         : texts.fill(TextId::ImportSkippedBadCall, number(r.line), r.call));
        }
        listSome(lines, why, s.skipped(), texts);
    }
    if (s.problemCount > 0) {
        lines << QString() << texts.fill(TextId::ImportProblems, number(s.problemCount));
        QStringList where;
        for (const logs::AdifProblem &p : s.problems)
            where << problemLine(p, texts);
        listSome(lines, where, s.problemCount, texts);
    }
    return lines.join(u'\n');
}

QString refreshSummaryText(const logs::RefreshSummary &s, const i18n::Texts &texts, const QString &listName,
                           const QString &sourceName, int skipDays)
{
    QStringList lines;
    switch (s.end) {
    case logs::RefreshEnd::Completed: lines << texts.fill(TextId::RefreshDone, listName, sourceName); break;
    case logs::RefreshEnd::Cancelled:
        lines << texts.fill(TextId::RefreshCancelled, listName, number(s.notReached));
        break;
    case logs::RefreshEnd::QuotaUsedUp:
        lines << texts.fill(TextId::RefreshQuota, listName, sourceName);
        if (!s.message.isEmpty())
            lines << s.message;
        break;
    case logs::RefreshEnd::Failing: lines << texts.fill(TextId::RefreshFailing, listName, s.message); break;
    case logs::RefreshEnd::WriteFailed: lines << texts.fill(TextId::RefreshWriteFailed, listName); break;
    }
    lines << QString();
    lines << texts.fill(TextId::RefreshUpdated, number(s.updated));
    lines << texts.fill(TextId::RefreshNotFound, number(s.notFound));
    if (s.failed > 0) {
        lines << texts.fill(TextId::RefreshFailed, number(s.failed));
        listSome(lines, s.failures, s.failed, texts);
    }
    if (s.gone > 0)
        lines << texts.fill(TextId::RefreshGone, number(s.gone));
    if (s.skippedRecent > 0)
        lines << texts.fill(TextId::RefreshSkipped, number(s.skippedRecent), number(skipDays));
    if (s.notReached > 0 && s.end != logs::RefreshEnd::Cancelled)
        lines << texts.fill(TextId::RefreshNotReached, number(s.notReached));
    if (s.resumed)
        lines << QString() << texts[TextId::RefreshResumed];
    return lines.join(u'\n');
}

QString durationText(qint64 msecs)
{
    const qint64 secs = (std::max<qint64>(msecs, 0) + 999) / 1000;
    const auto two = [](qint64 n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    if (secs >= 3600)
        return QString::number(secs / 3600) + u':' + two(secs / 60 % 60) + u':' + two(secs % 60);
    return QString::number(secs / 60) + u':' + two(secs % 60);
}

} // namespace marvik::gui
