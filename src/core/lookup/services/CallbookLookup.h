// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/LookupResult.h"
#include "core/lookup/SourceSettings.h"
#include "core/lookup/services/ServiceAnswer.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QTimer;

namespace marvik::lookup {

class CredentialStore;
class LookUp;
class LookupCache;
class ServiceClient;

/// The one answer a lookup ends in when some source (or the cache) knew the call.
struct CallbookAnswer
{
    QString callsign;
    LookupResult result; ///< with the picture address (the picture host's when the source named none)
    Source source = Source::Qrz; ///< the source that answered (for a cached answer: the one that did then)
    Via via = Via::Page;
    bool cached = false;  ///< every source failed; the cache answered
    QDateTime cachedAt;   ///< when the cached result was found (UTC); invalid for a live answer
    bool limited = false; ///< a non-subscriber's record
};

/// Why one source could not answer.
enum class FailReason {
    NotFound,      ///< the source does not know the call
    LoginRequired, ///< the source wants a log-in (page) or refused the account (service)
    NoAccount,     ///< a service without a user name or a password
    QuotaUsedUp,   ///< the service's lookups for today are used up
    TimedOut,      ///< no answer in time
    Unreachable,   ///< network failure, HTTP error, answer too large, no web address
    Unreadable,    ///< the answer could not be read
    Unavailable,   ///< the source cannot serve this now (updating, a service error, nothing to ask it with)
};

/// What one source said instead of an answer.
struct SourceFailure
{
    Source source = Source::Qrz;
    Via via = Via::Page;
    FailReason reason = FailReason::Unavailable;
    QString detail; ///< the service's message or the network's reason
    LookupResult result; ///< a page source's reading (its outcome), for callers that show it
};

/// How one lookup may go about it.
struct LookupOptions
{
    std::optional<Via> via; ///< page or service for the chosen source; nothing: the settings say
    bool fallback = true;   ///< go on to the next sources of the user's order
    bool cacheWhenFailing = true; ///< the cache answers when every source failed
    bool offline = false;   ///< ask no source: the cache alone answers
};

/// A short English text of a failure reason ("not found", "time-out", ...).
QString failReasonText(FailReason reason);

/// Looks one call up by every way Marvik knows: the chosen source first,
/// by its page or its data service as the settings say, then the next
/// sources of the user's order when one cannot answer, and at last the
/// lookup cache. The first source that found the call wins; its result is
/// kept in the cache and reported once. Each lookup ends in answered() or
/// failed(), within its own deadline, never in silence.
class CallbookLookup : public QObject
{
    Q_OBJECT

public:
    /// `credentials` and `cache` may be null: then services that need an
    /// account cannot answer, and nothing is cached.
    CallbookLookup(QNetworkAccessManager *network, CredentialStore *credentials, LookupCache *cache,
                   QObject *parent = nullptr);
    ~CallbookLookup() override;

    /// The cache to keep answers in and to answer from; null: none.
    void setCache(LookupCache *cache) { m_cache = cache; }
    /// A cache opened on first use instead: `open` runs when an answer is
    /// first kept or looked for (or cache() is asked), not before.
    void setCacheOpener(std::function<LookupCache *()> open);
    /// The cache, opened now if it is opened on first use.
    LookupCache *cache();
    /// The cache if it is open already; null while it waits for first use.
    LookupCache *openedCache() const { return m_cache; }
    /// Whether answers can be kept: an open cache, or one still to open.
    bool mayCache() const;
    void setSettings(const SourceSettings &settings);
    const SourceSettings &settings() const { return m_settings; }
    /// The user's callsign, by which QRZ's pages tell a log-in.
    void setOwnCallsign(const QString &callsign);
    /// How long one source may take (also each request's stand-still limit).
    void setSourceTimeout(int milliseconds);
    /// How long a whole lookup may take, every source together.
    void setDeadline(int milliseconds);

    /// Starts looking `callsign` (cleaned up already) up; a lookup under
    /// way is dropped. Nothing is reported before the event loop runs.
    void lookUp(const QString &callsign, Source chosen, const LookupOptions &options = {});
    /// Drops the lookup under way; nothing more is reported for it.
    void cancel();
    bool isBusy() const { return !m_call.isEmpty(); }
    /// The sources a lookup would try, in order, with the way each is reached.
    QList<QPair<Source, Via>> plan(Source chosen, const LookupOptions &options = {}) const;

    /// The timer of the whole lookup's deadline, for a window that shows it
    /// under its own name.
    QTimer *deadlineTimer() const { return m_deadline; }
    /// The page request control the page sources go through.
    LookUp *pageLookUp() const { return m_lookUp; }
    /// The client of a service, made on first use (for a "Test" of an account).
    ServiceClient *client(Source service);

signals:
    void answered(const marvik::lookup::CallbookAnswer &answer);
    /// Every source failed and the cache did not know the call; `failures`
    /// in the order the sources were tried.
    void failed(const QString &callsign, const QList<marvik::lookup::SourceFailure> &failures);
    /// A source is being asked.
    void trying(const QString &callsign, marvik::lookup::Source source, marvik::lookup::Via via);
    /// One source could not answer; the lookup goes on.
    void sourceFailed(const QString &callsign, const marvik::lookup::SourceFailure &failure);
    /// A service's lookups for today are used up; it is not asked again today.
    void quotaUsedUp(marvik::lookup::Source source, const QString &message);
    /// A service told its day's lookup count or its subscription state.
    void countersChanged(marvik::lookup::Source source, int lookupsToday, const QString &subscription);

private:
    void next();
    void scheduleNext();
    void startPage(Source source);
    void startService(Source source);
    void serviceAnswered(Source source, const QString &callsign, const ServiceAnswer &answer);
    void pageArrived(const QString &callsign);
    void attemptTimedOut();
    void deadlinePassed();
    void fail(FailReason reason, const QString &detail, const LookupResult &result = {});
    void succeed(LookupResult result, bool limited);
    void exhausted();
    void stopAttempt();

    QNetworkAccessManager *m_network;
    CredentialStore *m_credentials;
    LookupCache *m_cache;
    std::function<LookupCache *()> m_openCache;
    LookUp *m_lookUp;
    QHash<int, ServiceClient *> m_clients;
    SourceSettings m_settings;
    QTimer *m_attemptTimer;
    QTimer *m_deadline;
    int m_sourceTimeout = 12000;
    QHash<int, QDate> m_quotaDay; ///< the UTC day a service's quota ran out

    // The lookup under way.
    QString m_call;
    LookupOptions m_options;
    QList<QPair<Source, Via>> m_queue;
    QList<SourceFailure> m_failures;
    quint64 m_generation = 0;
    bool m_attempting = false;
    Source m_source = Source::Qrz;
    Via m_via = Via::Page;
};

} // namespace marvik::lookup

Q_DECLARE_METATYPE(marvik::lookup::CallbookAnswer)
Q_DECLARE_METATYPE(marvik::lookup::SourceFailure)
