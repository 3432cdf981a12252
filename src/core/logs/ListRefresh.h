// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallRecord.h"
#include "core/maps/Geometry.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>

namespace marvik::lists {
class CallListModel;
}
namespace marvik::lookup {
struct LookupResult;
}

namespace marvik::logs {

/// How a refresh ended.
enum class RefreshEnd {
    Completed,   ///< every call had its turn; the saved state is gone
    Cancelled,   ///< the user stopped it; the next start goes on from there
    QuotaUsedUp, ///< the service allows no more lookups today; the next start goes on from there
    Failing,     ///< too many lookups in a row failed (the network is down); the next start retries them
    WriteFailed, ///< the list file could not be written
};

/// What a refresh did, counted over the whole refresh (a resumed one
/// includes what the earlier runs did).
struct RefreshSummary
{
    RefreshEnd end = RefreshEnd::Completed;
    int total = 0;         ///< calls the refresh looks up: the m of "call n of m"
    int done = 0;          ///< of those, answered (or gone)
    int updated = 0;       ///< rows written from an answer
    int notFound = 0;      ///< calls the source does not know
    int failed = 0;        ///< lookups that ended without an answer (time-out, network, log-in)
    int gone = 0;          ///< calls deleted from the list before their turn or their answer
    int skippedRecent = 0; ///< rows looked up within the set number of days, not asked for
    int notReached = 0;    ///< left for the next start
    bool resumed = false;  ///< this run went on with an interrupted refresh
    QString message;       ///< the quota message, the write error, or the last failure
    QStringList failures;  ///< "CALL: reason" of the first few failures of this run
};

/// The one-line summary in English, as marvik-cli prints it.
QString summaryText(const RefreshSummary &summary);

/// Where a list's refresh keeps its state: beside the list file, "List<n>.refresh".
QString refreshStateFile(const QString &listPath);

/// A row after a lookup answered for it during a refresh: written as a
/// single update writes it (the first name and Extra kept, new time stamp),
/// except that a field the answer does not give keeps what the row had.
lists::CallRecord refreshedRecord(const lists::CallRecord &row, const lookup::LookupResult &result,
                                  const maps::Position &me, const QDateTime &now);

/// Looks every call of a list up again, one after the other.
///
/// The lookup itself comes through a seam: a function that starts the
/// lookup of one call, and the four slots below, which the caller calls
/// with the outcome (at once or later). Requests are paced (a new one starts
/// no sooner than the interval after the last one started); each answer is
/// written into its row and the list saved at once; what an answer leaves
/// out is never blanked. The refresh's place is kept in a small state file
/// after every answer, so a refresh stopped in any way (Cancel, the quota,
/// quitting, a crash) goes on from there at the next start(). Calls go in
/// callsign order, so the place survives sorting and edits of the list.
class ListRefresh : public QObject
{
    Q_OBJECT

public:
    /// Starts the lookup of one call; the answer comes through a slot.
    using StartLookup = std::function<void(const QString &call)>;
    /// Sorts and saves the list after a row was written; false with the
    /// reason when the file could not be written.
    using Commit = std::function<bool(QString *errorString)>;

    static constexpr int kDefaultIntervalMs = 2000;
    static constexpr int kDefaultAnswerTimeoutMs = 30000;
    static constexpr int kDefaultFailuresInARow = 5;

    /// `commit` empty: sort with setSortMode()'s mode and save to `listPath`.
    ListRefresh(lists::CallListModel *model, const QString &listPath, StartLookup startLookup, Commit commit = {},
                QObject *parent = nullptr);
    ~ListRefresh() override;

    void setOwnPosition(const maps::Position &me) { m_me = me; }
    void setSortMode(qint16 mode) { m_sortMode = mode; }
    /// The least time between the starts of two lookups.
    void setIntervalMs(int ms) { m_intervalMs = std::max(0, ms); }
    int intervalMs() const { return m_intervalMs; }
    /// Rows stamped within this many days are not looked up; 0: none skipped.
    void setSkipDays(int days) { m_skipDays = std::max(0, days); }
    /// A lookup that has not answered after this long counts as failed, so a
    /// seam that never answers cannot stall the refresh.
    void setAnswerTimeoutMs(int ms) { m_answerTimeoutMs = std::max(1, ms); }
    /// After this many failures in a row the refresh stops (Failing).
    void setFailuresInARow(int count) { m_failuresInARow = std::max(1, count); }
    /// The source the refresh asks, kept in the state file for the record.
    void setSourceName(const QString &name) { m_sourceName = name; }

    QString stateFile() const { return m_stateFile; }
    /// Whether an interrupted refresh of this list waits to go on.
    bool hasUnfinished() const;
    /// The call the saved state goes on after; empty when none.
    QString resumesAfter() const;
    /// Forgets an interrupted refresh, so the next start begins anew.
    bool discardUnfinished();

    /// Starts, or goes on with an interrupted refresh. The first step runs
    /// from the event loop. False when already running.
    bool start();
    /// Stops at once; a late answer is ignored. finished() follows.
    void cancel();
    bool isRunning() const { return m_running; }
    const RefreshSummary &summary() const { return m_summary; }
    /// The call whose answer is awaited; empty between lookups.
    QString pendingCall() const { return m_pending; }

public slots:
    /// An answer for `call`. Its outcome decides: Found writes the row,
    /// CallNotFound and PageNotFound count as not found, LoginRequired and
    /// ReaderError as failed.
    void found(const QString &call, const marvik::lookup::LookupResult &result, const QString &source);
    void notFound(const QString &call);
    void failed(const QString &call, const QString &reason);
    /// The service allows no more lookups today: the refresh stops, and
    /// `call` is the first the next start asks for.
    void quotaUsedUp(const QString &call, const QString &message);

signals:
    /// A lookup starts: call `n` of `m`, and the estimated time left.
    void progress(int n, int m, const QString &call, qint64 msecsLeft);
    /// A row was written and the list saved (the caller fetches the picture).
    void rowWritten(const QString &call, const QString &source);
    void finished(const marvik::logs::RefreshSummary &summary);

private:
    void next();
    bool settle(const QString &call);
    void answered(const QString &call);
    void recordFailure(const QString &call, const QString &reason);
    void finish(RefreshEnd end, const QString &message = {});
    void saveState();
    bool readState();
    qint64 estimateLeft() const;
    bool isRecent(const lists::CallRecord &row, const QDateTime &now) const;

    QPointer<lists::CallListModel> m_model;
    QString m_listPath;
    QString m_stateFile;
    StartLookup m_startLookup;
    Commit m_commit;
    maps::Position m_me;
    qint16 m_sortMode = 0;
    int m_intervalMs = kDefaultIntervalMs;
    int m_skipDays = 0;
    int m_answerTimeoutMs = kDefaultAnswerTimeoutMs;
    int m_failuresInARow = kDefaultFailuresInARow;
    QString m_sourceName;

    bool m_running = false;
    std::deque<QString> m_queue;
    QString m_pending;
    /// The last call settled for good, and the counts up to it: what the
    /// state file holds. Failures are settled for good only by a later answer.
    QString m_savedAfter;
    RefreshSummary m_saved;
    RefreshSummary m_summary;
    int m_failureStreak = 0;
    int m_askedThisRun = 0;
    QString m_started;
    QTimer m_paceTimer;
    QTimer m_answerTimer;
    QElapsedTimer m_sinceLastStart;
    QElapsedTimer m_runClock;
};

} // namespace marvik::logs
