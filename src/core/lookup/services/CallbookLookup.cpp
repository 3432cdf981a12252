// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/CallbookLookup.h"

#include "core/app/Log.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/PictureFiles.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"
#include "core/lookup/services/ServiceClient.h"

#include <QTimer>

#include <utility>

namespace marvik::lookup {

namespace {

FailReason reasonOf(ServiceError error)
{
    switch (error) {
    case ServiceError::NotFound: return FailReason::NotFound;
    case ServiceError::BadLogin:
    case ServiceError::SessionExpired: return FailReason::LoginRequired;
    case ServiceError::NoAccount: return FailReason::NoAccount;
    case ServiceError::QuotaExceeded: return FailReason::QuotaUsedUp;
    case ServiceError::Malformed: return FailReason::Unreadable;
    case ServiceError::Unreachable: return FailReason::Unreachable;
    default: return FailReason::Unavailable;
    }
}

} // namespace

QString failReasonText(FailReason reason)
{
    switch (reason) {
    case FailReason::NotFound: return QStringLiteral("not found");
    case FailReason::LoginRequired: return QStringLiteral("log-in required");
    case FailReason::NoAccount: return QStringLiteral("no account set up");
    case FailReason::QuotaUsedUp: return QStringLiteral("lookups for today used up");
    case FailReason::TimedOut: return QStringLiteral("no answer in time");
    case FailReason::Unreachable: return QStringLiteral("cannot be reached");
    case FailReason::Unreadable: return QStringLiteral("answer not readable");
    case FailReason::Unavailable: return QStringLiteral("not available");
    }
    return {};
}

CallbookLookup::CallbookLookup(QNetworkAccessManager *network, CredentialStore *credentials, LookupCache *cache,
                               QObject *parent)
    : QObject(parent)
    , m_network(network)
    , m_credentials(credentials)
    , m_cache(cache)
    , m_lookUp(new LookUp(network, SourceSettings(), QString(), this))
    , m_attemptTimer(new QTimer(this))
    , m_deadline(new QTimer(this))
{
    qRegisterMetaType<CallbookAnswer>();
    qRegisterMetaType<SourceFailure>();
    qRegisterMetaType<QList<SourceFailure>>();
    qRegisterMetaType<ServiceAnswer>();
    m_attemptTimer->setSingleShot(true);
    m_deadline->setSingleShot(true);
    m_deadline->setInterval(30000);
    m_lookUp->setTransferTimeout(m_sourceTimeout);
    connect(m_attemptTimer, &QTimer::timeout, this, &CallbookLookup::attemptTimedOut);
    connect(m_deadline, &QTimer::timeout, this, &CallbookLookup::deadlinePassed);
    connect(m_lookUp, &LookUp::GotPage, this, [this](const QString &call) { pageArrived(call); });
    connect(m_lookUp, &LookUp::PageNotFound, this, [this](const QString &call) {
        if (m_attempting && m_via == Via::Page && call == m_call) {
            LookupResult r;
            r.outcome = LookupOutcome::PageNotFound;
            fail(FailReason::NotFound, QStringLiteral("the page does not mention %1").arg(call), r);
        }
    });
    connect(m_lookUp, &LookUp::requestFailed, this, [this](const QString &name, const QString &reason) {
        if (m_attempting && m_via == Via::Page && name == m_call + u'2')
            fail(FailReason::Unreachable, reason);
    });
    if (m_credentials) {
        connect(m_credentials, &CredentialStore::passwordRead, this,
                [this](Source source, const QString &user, const QString &password, CredentialStore::Status status,
                       const QString &message) {
                    if (!m_attempting || m_via != Via::Service || source != m_source
                        || user != m_settings.userName(source) || !m_clients.contains(int(source))
                        || m_clients.value(int(source))->isBusy())
                        return;
                    if (status != CredentialStore::Status::Ok || password.isEmpty()) {
                        fail(FailReason::NoAccount, status == CredentialStore::Status::NoKeyring
                                                        ? QStringLiteral("no keyring to read the password from: %1").arg(message)
                                                        : QStringLiteral("no password stored for %1").arg(user));
                        return;
                    }
                    ServiceClient *c = m_clients.value(int(source));
                    c->setAccount(user, password);
                    c->lookUp(m_call);
                });
    }
}

CallbookLookup::~CallbookLookup()
{
    // The downloads abort their replies on the way out; they must go before
    // anyone deletes the network manager.
    qDeleteAll(m_clients);
    delete m_lookUp;
}

void CallbookLookup::setCacheOpener(std::function<LookupCache *()> open)
{
    m_openCache = std::move(open);
}

LookupCache *CallbookLookup::cache()
{
    if (!m_cache && m_openCache)
        m_cache = std::exchange(m_openCache, {})();
    return m_cache;
}

bool CallbookLookup::mayCache() const
{
    return m_cache ? m_cache->isOpen() : bool(m_openCache);
}

void CallbookLookup::setSettings(const SourceSettings &settings)
{
    m_settings = settings;
    m_lookUp->setSettings(settings);
    for (auto it = m_clients.begin(); it != m_clients.end(); ++it)
        it.value()->setServiceHost(settings.serviceHost(Source(it.key())));
}

void CallbookLookup::setOwnCallsign(const QString &callsign)
{
    m_lookUp->setOwnCallsign(callsign);
}

void CallbookLookup::setSourceTimeout(int milliseconds)
{
    m_sourceTimeout = milliseconds;
    m_lookUp->setTransferTimeout(milliseconds);
    for (ServiceClient *c : std::as_const(m_clients))
        c->setTransferTimeout(milliseconds);
}

void CallbookLookup::setDeadline(int milliseconds)
{
    m_deadline->setInterval(milliseconds);
}

ServiceClient *CallbookLookup::client(Source service)
{
    if (!hasDataService(service))
        return nullptr;
    if (ServiceClient *c = m_clients.value(int(service)))
        return c;
    auto *c = new ServiceClient(service, m_network);
    c->setServiceHost(m_settings.serviceHost(service));
    c->setTransferTimeout(m_sourceTimeout);
    connect(c, &ServiceClient::answered, this, [this, service](const QString &call, const ServiceAnswer &answer) {
        serviceAnswered(service, call, answer);
    });
    connect(c, &ServiceClient::countersChanged, this, [this, service](int count, const QString &subscription) {
        emit countersChanged(service, count, subscription);
    });
    m_clients.insert(int(service), c);
    return c;
}

QList<QPair<Source, Via>> CallbookLookup::plan(Source chosen, const LookupOptions &options) const
{
    QList<QPair<Source, Via>> order;
    if (options.offline)
        return order;
    order.append({chosen, options.via.value_or(m_settings.via(chosen))});
    if (options.fallback) {
        for (Source source : m_settings.fallbackOrder(chosen))
            order.append({source, m_settings.via(source)});
    }
    return order;
}

void CallbookLookup::lookUp(const QString &callsign, Source chosen, const LookupOptions &options)
{
    cancel();
    m_call = callsign;
    m_options = options;
    m_queue = plan(chosen, options);
    m_failures.clear();
    qCDebug(lcLookup) << "looking up" << callsign << "from" << m_queue.size() << "sources";
    m_deadline->start();
    scheduleNext();
}

void CallbookLookup::cancel()
{
    ++m_generation;
    stopAttempt();
    m_deadline->stop();
    m_call.clear();
    m_queue.clear();
}

void CallbookLookup::stopAttempt()
{
    m_attemptTimer->stop();
    if (m_attempting && m_via == Via::Service) {
        if (ServiceClient *c = m_clients.value(int(m_source)))
            c->cancel();
    }
    // A page request cannot be taken back; its late answer finds no attempt
    // and is dropped, and the next request of the same call replaces it.
    m_attempting = false;
}

void CallbookLookup::scheduleNext()
{
    // Always from the event loop: no answer is reported from inside lookUp(),
    // and a long order of failing sources never nests.
    const quint64 generation = m_generation;
    QTimer::singleShot(0, this, [this, generation] {
        if (generation == m_generation && !m_call.isEmpty())
            next();
    });
}

void CallbookLookup::next()
{
    if (m_queue.isEmpty()) {
        exhausted();
        return;
    }
    const auto [source, via] = m_queue.takeFirst();
    m_source = source;
    m_via = via;
    m_attempting = true;
    emit trying(m_call, source, via);
    if (!isOnline(source)) {
        fail(FailReason::Unavailable, QStringLiteral("%1 is no online source").arg(sourceInfo(source).caption));
        return;
    }
    if (via == Via::Page && !hasPageReader(source)) {
        fail(FailReason::Unavailable, QStringLiteral("%1 has no web pages to read").arg(sourceInfo(source).caption));
        return;
    }
    if (via == Via::Service && !hasDataService(source)) {
        fail(FailReason::Unavailable, QStringLiteral("%1 has no data service").arg(sourceInfo(source).caption));
        return;
    }
    if (via == Via::Service && m_quotaDay.value(int(source)) == QDateTime::currentDateTimeUtc().date()) {
        fail(FailReason::QuotaUsedUp, QStringLiteral("used up earlier today"));
        return;
    }
    m_attemptTimer->start(m_sourceTimeout);
    if (via == Via::Page)
        startPage(source);
    else
        startService(source);
}

void CallbookLookup::startPage(Source source)
{
    m_lookUp->setDataBase(dataBaseOf(source));
    m_lookUp->GetPage(m_call + u'2');
    if (!m_lookUp->pendingRequests().contains(m_call + u'2'))
        fail(FailReason::Unreachable, QStringLiteral("not a web address: %1").arg(m_settings.host(source)));
}

void CallbookLookup::startService(Source source)
{
    ServiceClient *c = client(source);
    c->setServiceHost(m_settings.serviceHost(source));
    if (!c->needsAccount()) {
        c->lookUp(m_call);
        return;
    }
    const QString user = m_settings.userName(source);
    if (user.isEmpty()) {
        fail(FailReason::NoAccount, QStringLiteral("no user name set for %1").arg(sourceInfo(source).defaultDomain));
        return;
    }
    if (!m_credentials) {
        fail(FailReason::NoAccount, QStringLiteral("no password for %1").arg(user));
        return;
    }
    if (const std::optional<QString> password = m_credentials->knownPassword(source, user)) {
        c->setAccount(user, *password);
        c->lookUp(m_call);
        return;
    }
    // The keyring answers later; passwordRead() goes on from there.
    m_credentials->readPassword(source, user);
}

void CallbookLookup::pageArrived(const QString &callsign)
{
    if (!m_attempting || m_via != Via::Page || callsign != m_call)
        return;
    // A log-in check for another source may have moved data_base meanwhile.
    m_lookUp->setDataBase(dataBaseOf(m_source));
    LookupResult r = readLookupResult(*m_lookUp, callsign, true);
    switch (r.outcome) {
    case LookupOutcome::Found:
        succeed(r, false);
        break;
    case LookupOutcome::CallNotFound:
    case LookupOutcome::PageNotFound: fail(FailReason::NotFound, QStringLiteral("not on its page"), r); break;
    case LookupOutcome::LoginRequired: fail(FailReason::LoginRequired, QStringLiteral("details need a log-in"), r); break;
    case LookupOutcome::ReaderError: fail(FailReason::Unreadable, r.error, r); break;
    }
}

void CallbookLookup::serviceAnswered(Source source, const QString &callsign, const ServiceAnswer &answer)
{
    if (!m_attempting || m_via != Via::Service || source != m_source || callsign != m_call)
        return;
    if (answer.error == ServiceError::None) {
        succeed(answer.result, answer.limited);
        return;
    }
    if (answer.error == ServiceError::QuotaExceeded) {
        m_quotaDay.insert(int(source), QDateTime::currentDateTimeUtc().date());
        emit quotaUsedUp(source, answer.message);
    }
    fail(reasonOf(answer.error), answer.message, answer.result);
}

void CallbookLookup::attemptTimedOut()
{
    if (m_attempting)
        fail(FailReason::TimedOut, QStringLiteral("no answer within %1 s").arg(m_sourceTimeout / 1000.0));
}

void CallbookLookup::deadlinePassed()
{
    if (m_call.isEmpty())
        return;
    if (m_attempting) {
        SourceFailure f{m_source, m_via, FailReason::TimedOut,
                        QStringLiteral("the lookup took longer than %1 s").arg(m_deadline->interval() / 1000.0), {}};
        stopAttempt();
        m_failures.append(f);
        emit sourceFailed(m_call, f);
    }
    m_queue.clear();
    exhausted();
}

void CallbookLookup::fail(FailReason reason, const QString &detail, const LookupResult &result)
{
    if (!m_attempting)
        return;
    const SourceFailure f{m_source, m_via, reason, detail, result};
    stopAttempt();
    qCDebug(lcLookup) << m_call << "not from" << sourceInfo(f.source).key << viaName(f.via) << ":"
                      << failReasonText(reason) << detail;
    m_failures.append(f);
    emit sourceFailed(m_call, f);
    scheduleNext();
}

void CallbookLookup::succeed(LookupResult result, bool limited)
{
    // Pages name no picture, nor do some services: the picture host is asked
    // for it, as it always was.
    if (result.pictureUrl.isEmpty())
        result.pictureUrl = pictureAddress(m_settings.picturesHost(), m_call);
    CallbookAnswer a;
    a.callsign = m_call;
    a.result = result;
    a.source = m_source;
    a.via = m_via;
    a.limited = limited;
    stopAttempt();
    m_deadline->stop();
    if (LookupCache *kept = cache())
        kept->store(a.callsign, a.source, a.via, a.result);
    m_call.clear();
    ++m_generation;
    emit answered(a);
}

void CallbookLookup::exhausted()
{
    const QString call = m_call;
    const QList<SourceFailure> failures = m_failures;
    m_deadline->stop();
    m_call.clear();
    ++m_generation;
    LookupCache *kept = m_options.cacheWhenFailing || m_options.offline ? cache() : nullptr;
    if (kept) {
        if (const std::optional<CachedResult> c = kept->find(call)) {
            CallbookAnswer a;
            a.callsign = call;
            a.result = c->result;
            a.source = c->source;
            a.via = c->via;
            a.cached = true;
            a.cachedAt = c->storedAt;
            emit answered(a);
            return;
        }
    }
    emit failed(call, failures);
}

} // namespace marvik::lookup
