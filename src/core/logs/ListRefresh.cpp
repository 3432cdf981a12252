// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/ListRefresh.h"

#include "core/app/Log.h"
#include "core/app/Number.h"
#include "core/app/TextFile.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/lookup/LookupResult.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace marvik::logs {

using lists::CallRecord;
using lists::Column;

namespace {

constexpr int kStateVersion = 1;
constexpr int kMaxListedFailures = 20;
const QString kStampFormat = QStringLiteral("yyyyMMddHHmmss");

} // namespace

QString refreshStateFile(const QString &listPath)
{
    QString base = listPath;
    if (base.endsWith(QLatin1StringView(".dat"), Qt::CaseInsensitive))
        base.chop(4);
    return base + QStringLiteral(".refresh");
}

CallRecord refreshedRecord(const CallRecord &row, const lookup::LookupResult &result, const maps::Position &me,
                           const QDateTime &now)
{
    CallRecord out = row;
    lookup::writeLookupResult(out, true, row[Column::Callsign], result, me, now);
    return out;
}

QString summaryText(const RefreshSummary &s)
{
    QString text = QStringLiteral("%1 calls: %2 updated, %3 not found, %4 failed")
                       .arg(s.total)
                       .arg(s.updated)
                       .arg(s.notFound)
                       .arg(s.failed);
    if (s.gone > 0)
        text += QStringLiteral(", %1 no longer in the list").arg(s.gone);
    if (s.notReached > 0)
        text += QStringLiteral(", %1 not reached").arg(s.notReached);
    if (s.skippedRecent > 0)
        text += QStringLiteral(", %1 skipped as recent").arg(s.skippedRecent);
    const QString why = s.message.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(s.message);
    switch (s.end) {
    case RefreshEnd::Completed: break;
    case RefreshEnd::Cancelled: text += QStringLiteral("; cancelled"); break;
    case RefreshEnd::QuotaUsedUp: text += QStringLiteral("; stopped: the daily quota is used up") + why; break;
    case RefreshEnd::Failing: text += QStringLiteral("; stopped after failures in a row") + why; break;
    case RefreshEnd::WriteFailed: text += QStringLiteral("; stopped: the list could not be saved") + why; break;
    }
    if (s.resumed)
        text += QStringLiteral("; resumed");
    return text;
}

ListRefresh::ListRefresh(lists::CallListModel *model, const QString &listPath, StartLookup startLookup, Commit commit,
                         QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_listPath(listPath)
    , m_stateFile(refreshStateFile(listPath))
    , m_startLookup(std::move(startLookup))
    , m_commit(std::move(commit))
{
    if (!m_commit) {
        m_commit = [this](QString *why) {
            m_model->sortList(m_sortMode);
            return lists::saveList(*m_model, m_listPath, why);
        };
    }
    // The pace is a promise to the callbooks: never early.
    m_paceTimer.setTimerType(Qt::PreciseTimer);
    m_paceTimer.setSingleShot(true);
    connect(&m_paceTimer, &QTimer::timeout, this, &ListRefresh::next);
    m_answerTimer.setSingleShot(true);
    connect(&m_answerTimer, &QTimer::timeout, this, [this] {
        const QString call = m_pending; // settling clears m_pending
        failed(call, QStringLiteral("no answer within %1 s").arg(m_answerTimeoutMs / 1000.0));
    });
}

// Quitting in the middle keeps the state file: the next start goes on.
ListRefresh::~ListRefresh() = default;

bool ListRefresh::hasUnfinished() const
{
    return QFileInfo::exists(m_stateFile);
}

QString ListRefresh::resumesAfter() const
{
    QFile file(m_stateFile);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object().value(QLatin1StringView("after")).toString();
}

bool ListRefresh::discardUnfinished()
{
    return !QFileInfo::exists(m_stateFile) || QFile::remove(m_stateFile);
}

bool ListRefresh::readState()
{
    QFile file(m_stateFile);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
    if (o.value(QLatin1StringView("version")).toInt() != kStateVersion) {
        qCWarning(lcLogs) << "the refresh state" << m_stateFile << "is not readable; starting anew";
        return false;
    }
    const auto count = [&](const char *key) { return std::max(0, o.value(QLatin1StringView(key)).toInt()); };
    m_savedAfter = o.value(QLatin1StringView("after")).toString();
    m_saved.done = count("done");
    m_saved.updated = count("updated");
    m_saved.notFound = count("notFound");
    m_saved.failed = count("failed");
    m_saved.gone = count("gone");
    m_started = o.value(QLatin1StringView("started")).toString();
    return true;
}

void ListRefresh::saveState()
{
    QJsonObject o;
    o.insert(QStringLiteral("version"), kStateVersion);
    o.insert(QStringLiteral("list"), QFileInfo(m_listPath).fileName());
    o.insert(QStringLiteral("source"), m_sourceName);
    o.insert(QStringLiteral("started"), m_started);
    o.insert(QStringLiteral("after"), m_savedAfter);
    o.insert(QStringLiteral("done"), m_saved.done);
    o.insert(QStringLiteral("updated"), m_saved.updated);
    o.insert(QStringLiteral("notFound"), m_saved.notFound);
    o.insert(QStringLiteral("failed"), m_saved.failed);
    o.insert(QStringLiteral("gone"), m_saved.gone);
    QString why;
    if (!app::writeFileAtomically(m_stateFile, QJsonDocument(o).toJson(QJsonDocument::Indented), &why))
        qCWarning(lcLogs) << "could not keep the refresh's place in" << m_stateFile << ":" << why;
}

bool ListRefresh::isRecent(const CallRecord &row, const QDateTime &now) const
{
    if (m_skipDays <= 0)
        return false;
    const QDateTime stamp = QDateTime::fromString(row[Column::TimeStamp], kStampFormat);
    return stamp.isValid() && stamp.secsTo(now) < qint64(m_skipDays) * 86400;
}

bool ListRefresh::start()
{
    if (m_running || !m_model)
        return false;
    m_summary = {};
    m_saved = {};
    m_savedAfter.clear();
    m_started.clear();
    const bool resumed = readState();
    if (resumed) {
        m_summary = m_saved;
        m_summary.resumed = true;
    }
    if (m_started.isEmpty())
        m_started = QDateTime::currentDateTime().toString(Qt::ISODate);

    // Callsign order, which no sort or edit of the list disturbs: the state
    // needs only the last call settled to know where to go on.
    const QDateTime now = QDateTime::currentDateTime();
    QStringList calls;
    QSet<QString> seen;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const CallRecord &record = m_model->record(row);
        const QString &call = record[Column::Callsign];
        if (call.isEmpty() || seen.contains(call))
            continue;
        seen.insert(call);
        if (!m_savedAfter.isEmpty() && call <= m_savedAfter)
            continue;
        if (isRecent(record, now)) {
            ++m_summary.skippedRecent;
            continue;
        }
        calls.append(call);
    }
    std::sort(calls.begin(), calls.end());
    m_queue.assign(calls.begin(), calls.end());
    m_summary.total = m_summary.done + int(m_queue.size());

    m_running = true;
    m_pending.clear();
    m_failureStreak = 0;
    m_askedThisRun = 0;
    m_sinceLastStart.invalidate();
    m_runClock.start();
    // A refresh with nothing to do leaves no trace; one with work keeps its
    // place from the start, so a crash before the first answer resumes too.
    if (!m_queue.empty())
        saveState();
    qCDebug(lcLogs) << "refresh of" << m_listPath << (resumed ? "resumed after" : "started") << m_savedAfter
                    << m_queue.size() << "calls to go";
    m_paceTimer.start(0);
    return true;
}

void ListRefresh::cancel()
{
    if (m_running)
        finish(RefreshEnd::Cancelled);
}

void ListRefresh::next()
{
    if (!m_running || !m_pending.isEmpty() || !m_model)
        return;
    // A call deleted from the list since the refresh began is not asked for.
    while (!m_queue.empty() && m_model->findCallsign(m_queue.front()) < 0) {
        const QString call = m_queue.front();
        m_queue.pop_front();
        ++m_summary.gone;
        ++m_summary.done;
        answered(call);
    }
    if (m_queue.empty()) {
        finish(RefreshEnd::Completed);
        return;
    }
    if (m_sinceLastStart.isValid()) {
        const qint64 wait = m_intervalMs - m_sinceLastStart.elapsed();
        if (wait > 0) {
            m_paceTimer.start(int(wait));
            return;
        }
    }
    m_pending = m_queue.front();
    m_sinceLastStart.start();
    ++m_askedThisRun;
    const QString call = m_pending;
    emit progress(m_summary.done + 1, m_summary.total, call, estimateLeft());
    if (!m_running || m_pending != call)
        return; // cancelled from the progress signal
    m_answerTimer.start(m_answerTimeoutMs);
    m_startLookup(call);
}

qint64 ListRefresh::estimateLeft() const
{
    // The lookups of this run so far tell how long one takes; before the
    // first one, the pace does.
    qint64 perCall = m_intervalMs;
    if (m_askedThisRun > 1)
        perCall = std::max<qint64>(perCall, m_runClock.elapsed() / (m_askedThisRun - 1));
    return qint64(m_queue.size()) * perCall;
}

bool ListRefresh::settle(const QString &call)
{
    // A late answer (after a time-out or Cancel) or one for another call.
    if (!m_running || call.isEmpty() || call != m_pending)
        return false;
    m_answerTimer.stop();
    m_pending.clear();
    m_queue.pop_front();
    ++m_summary.done;
    return true;
}

void ListRefresh::answered(const QString &call)
{
    // A definite answer settles the failures before it for good.
    m_failureStreak = 0;
    m_savedAfter = call;
    m_saved = m_summary;
    saveState();
    if (m_running)
        m_paceTimer.start(0);
}

void ListRefresh::found(const QString &call, const lookup::LookupResult &result, const QString &source)
{
    if (!settle(call))
        return;
    switch (result.outcome) {
    case lookup::LookupOutcome::Found: break;
    case lookup::LookupOutcome::CallNotFound:
    case lookup::LookupOutcome::PageNotFound:
        ++m_summary.notFound;
        answered(call);
        return;
    case lookup::LookupOutcome::LoginRequired:
        recordFailure(call, QStringLiteral("details need a log-in"));
        return;
    case lookup::LookupOutcome::ReaderError:
        recordFailure(call, QStringLiteral("page not readable: ") + result.error);
        return;
    }
    const int row = m_model->findCallsign(call);
    if (row < 0) {
        ++m_summary.gone;
        answered(call);
        return;
    }
    m_model->replaceRecord(row, refreshedRecord(m_model->record(row), result, m_me, QDateTime::currentDateTime()));
    QString why;
    if (!m_commit(&why)) {
        finish(RefreshEnd::WriteFailed, why);
        return;
    }
    ++m_summary.updated;
    answered(call);
    emit rowWritten(call, source);
}

void ListRefresh::notFound(const QString &call)
{
    if (!settle(call))
        return;
    ++m_summary.notFound;
    answered(call);
}

void ListRefresh::failed(const QString &call, const QString &reason)
{
    if (settle(call))
        recordFailure(call, reason);
}

void ListRefresh::recordFailure(const QString &call, const QString &reason)
{
    ++m_summary.failed;
    ++m_failureStreak;
    m_summary.message = reason;
    if (m_summary.failures.size() < kMaxListedFailures)
        m_summary.failures.append(call + QStringLiteral(": ") + reason);
    qCDebug(lcLogs) << "refresh:" << call << "failed:" << reason;
    if (m_failureStreak >= m_failuresInARow) {
        finish(RefreshEnd::Failing, reason);
        return;
    }
    m_paceTimer.start(0);
}

void ListRefresh::quotaUsedUp(const QString &call, const QString &message)
{
    if (!m_running || call.isEmpty() || call != m_pending)
        return;
    // The call stays first in line for the next start.
    finish(RefreshEnd::QuotaUsedUp, message);
}

void ListRefresh::finish(RefreshEnd end, const QString &message)
{
    m_running = false;
    m_paceTimer.stop();
    m_answerTimer.stop();
    m_pending.clear();
    m_summary.end = end;
    if (!message.isEmpty())
        m_summary.message = message;
    m_summary.notReached = end == RefreshEnd::Completed ? 0 : int(m_queue.size());
    if (end == RefreshEnd::Completed)
        QFile::remove(m_stateFile);
    qCDebug(lcLogs) << "refresh of" << m_listPath << "ended:" << summaryText(m_summary);
    emit finished(m_summary);
}

} // namespace marvik::logs
