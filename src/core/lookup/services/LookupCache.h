// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/LookupResult.h"
#include "core/lookup/SourceSettings.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace marvik::lookup {

/// A lookup result as the cache gave it back.
struct CachedResult
{
    QString callsign;
    Source source = Source::Qrz;
    Via via = Via::Page;
    QDateTime storedAt; ///< when the source answered (UTC)
    LookupResult result; ///< with the picture address
};

/// Every successful lookup result, kept in a SQLite database in the data
/// folder, so a call looked up once can still be answered when every source
/// fails (offline, an outage). One row per call and source; the newest
/// answers. Written with write-ahead logging, so a program killed while it
/// writes leaves a cache that opens. A damaged file is set aside and the
/// cache starts afresh: the cache is never a reason not to start.
class LookupCache
{
public:
    /// The schema this build writes; a file of another version is set aside.
    static constexpr int kSchemaVersion = 1;
    /// The cache's file name in the data folder.
    static QString fileName();

    explicit LookupCache(const QString &path);
    ~LookupCache();
    LookupCache(const LookupCache &) = delete;
    LookupCache &operator=(const LookupCache &) = delete;

    /// False when no database could be made (a folder we cannot write);
    /// every call then does nothing.
    bool isOpen() const { return m_open; }
    QString path() const { return m_path; }
    QString errorString() const { return m_error; }
    /// Where a damaged file went at opening; empty when none was found.
    QString setAsidePath() const { return m_setAside; }

    /// Days a result still answers; older ones are dropped. 0: none answers.
    void setFreshDays(int days) { m_freshDays = days; }
    int freshDays() const { return m_freshDays; }
    /// The most results kept; the oldest go first.
    void setMaxEntries(int entries) { m_maxEntries = entries; }
    int maxEntries() const { return m_maxEntries; }

    /// Keeps a found result of `source` for `callsign`, replacing that
    /// source's older one, and drops the oldest rows over the cap.
    bool store(const QString &callsign, Source source, Via via, const LookupResult &result,
               const QDateTime &when = QDateTime::currentDateTimeUtc());
    /// The newest fresh result for `callsign`, from whichever source.
    std::optional<CachedResult> find(const QString &callsign,
                                     const QDateTime &now = QDateTime::currentDateTimeUtc()) const;
    int count() const;
    /// Empties the cache ("Clear cache").
    bool clear();
    /// Drops the results that are no longer fresh and the oldest over the
    /// cap; returns how many went.
    int prune(const QDateTime &now = QDateTime::currentDateTimeUtc());

private:
    bool open();
    bool createSchema();
    void setAside(const QString &why);
    void close();

    QString m_path;
    QString m_connection;
    QString m_error;
    QString m_setAside;
    bool m_open = false;
    int m_freshDays = 90;
    int m_maxEntries = 20000;
};

} // namespace marvik::lookup
