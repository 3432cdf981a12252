// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/ServiceClient.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/lookup/NamedDownloads.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

namespace marvik::lookup {

namespace {

// The services ask a program to name itself in every request.
constexpr char kAgent[] = "Marvik-3.12";
const QString kLookupName = QStringLiteral("lookup");

QByteArray pair(const char *name, const QString &value)
{
    return QByteArray(name) + '=' + QUrl::toPercentEncoding(value);
}

ServiceAnswer failure(ServiceError error, const QString &message)
{
    ServiceAnswer a;
    a.error = error;
    a.message = message;
    a.result.outcome = outcomeOf(error);
    return a;
}

} // namespace

ServiceClient::ServiceClient(Source service, QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_network(network)
    , m_downloads(new NamedDownloads(network, this))
    , m_host(sourceInfo(service).defaultServiceHost.toString())
    , m_transferTimeout(kDefaultTransferTimeoutMs)
{
    connect(m_downloads, &NamedDownloads::finished, this,
            [this](const QString &, const QByteArray &bytes) { lookupFinished(bytes); });
    connect(m_downloads, &NamedDownloads::failed, this,
            [this](const QString &, const QString &reason) { lookupFailed(reason); });
}

ServiceClient::~ServiceClient()
{
    if (m_loginReply) {
        m_loginReply->disconnect(this);
        m_loginReply->abort();
        m_loginReply->deleteLater();
    }
}

void ServiceClient::setAccount(const QString &user, const QString &password)
{
    if (user == m_user && password == m_password)
        return;
    m_user = user;
    m_password = password;
    m_key.clear();
}

bool ServiceClient::needsAccount() const
{
    return sourceInfo(m_service).serviceNeedsAccount;
}

bool ServiceClient::hasAccount() const
{
    return !needsAccount() || (!m_user.isEmpty() && !m_password.isEmpty());
}

void ServiceClient::setTransferTimeout(int milliseconds)
{
    m_transferTimeout = milliseconds;
    m_downloads->setTransferTimeout(milliseconds);
}

QString ServiceClient::endpoint() const
{
    switch (m_service) {
    case Source::Qrz: return m_host + u"/xml/current/";
    case Source::QrzCq: return m_host + u"/xml";
    case Source::HamQth: return m_host + u"/xml.php";
    default: return m_host;
    }
}

bool ServiceClient::sessionUsable() const
{
    return !needsAccount() || (!m_key.isEmpty() && !m_keyExpiry.hasExpired());
}

void ServiceClient::cancel()
{
    m_downloads->cancel(kLookupName);
    if (m_loginReply) {
        m_loginReply->disconnect(this);
        m_loginReply->abort();
        m_loginReply->deleteLater();
    }
    m_state = State::Idle;
    m_loginOnly = false;
    m_call.clear();
}

void ServiceClient::lookUp(const QString &callsign)
{
    cancel();
    m_call = callsign;
    m_retried = false;
    if (sessionUsable())
        startLookup();
    else
        startLogIn();
}

void ServiceClient::logIn()
{
    cancel();
    m_loginOnly = true;
    startLogIn();
}

void ServiceClient::startLogIn()
{
    if (!needsAccount()) {
        finish(failure(ServiceError::None, {}));
        return;
    }
    if (!hasAccount()) {
        finish(failure(ServiceError::NoAccount, QStringLiteral("no user name or password for %1")
                                                    .arg(sourceInfo(m_service).defaultDomain)));
        return;
    }
    const QUrl url(endpoint());
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https")) {
        finish(failure(ServiceError::Unreachable, QStringLiteral("not a web address: %1").arg(m_host)));
        return;
    }
    QByteArray form;
    if (m_service == Source::HamQth)
        form = pair("u", m_user) + '&' + pair("p", m_password) + '&' + pair("prg", QString::fromLatin1(kAgent));
    else
        form = pair("username", m_user) + '&' + pair("password", m_password) + '&'
            + pair("agent", QString::fromLatin1(kAgent));

    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // A redirected post would lose its form, or carry the password to
    // another host: a log-in goes exactly where the settings say.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(m_transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Marvik/3.12"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));

    m_state = State::LoggingIn;
    QNetworkReply *reply = m_network->post(request, form);
    m_loginReply = reply;
    qCDebug(lcLookup) << "logging in to" << sourceInfo(m_service).key << "as" << m_user;
    connect(reply, &QNetworkReply::downloadProgress, this, [reply](qint64 done, qint64) {
        if (done > kServiceSizeLimit) {
            reply->setProperty("tooLarge", true);
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { logInFinished(reply); });
}

void ServiceClient::logInFinished(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply != m_loginReply)
        return;
    m_loginReply.clear();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    ServiceAnswer answer;
    if (reply->property("tooLarge").toBool()) {
        answer = failure(ServiceError::Unreachable, QStringLiteral("answer larger than %1 bytes").arg(kServiceSizeLimit));
    } else if (reply->error() == QNetworkReply::OperationCanceledError) {
        answer = failure(ServiceError::Unreachable, QStringLiteral("no answer within %1 s").arg(m_transferTimeout / 1000.0));
    } else if (reply->error() != QNetworkReply::NoError) {
        answer = failure(ServiceError::Unreachable, reply->errorString());
    } else if (status >= 300) {
        answer = failure(ServiceError::Unreachable, QStringLiteral("HTTP %1 to the log-in").arg(status));
    } else {
        answer = parseServiceAnswer(m_service, reply->readAll());
        keepCounters(answer);
        if (answer.error == ServiceError::None && answer.sessionKey.isEmpty())
            answer = failure(ServiceError::Malformed, QStringLiteral("no session in the log-in answer"));
    }
    if (answer.error != ServiceError::None) {
        qCInfo(lcLookup) << "log-in to" << sourceInfo(m_service).key << "failed:" << answer.message;
        finish(answer);
        return;
    }
    m_key = answer.sessionKey;
    m_keyExpiry = m_service == Source::HamQth ? QDeadlineTimer(kHamQthSessionMs - 5 * 60 * 1000)
                                              : QDeadlineTimer(QDeadlineTimer::Forever);
    if (m_loginOnly) {
        finish(answer);
        return;
    }
    startLookup();
}

void ServiceClient::startLookup()
{
    const QString call = callsign::plainZero(m_call);
    QString address;
    const QByteArray encoded = QUrl::toPercentEncoding(call);
    switch (m_service) {
    case Source::Qrz:
    case Source::QrzCq:
        address = endpoint() + u'?'
            + QString::fromLatin1(pair("s", m_key) + "&callsign=" + encoded + '&' + pair("agent", QString::fromLatin1(kAgent)));
        break;
    case Source::HamQth:
        address = endpoint() + u'?'
            + QString::fromLatin1(pair("id", m_key) + "&callsign=" + encoded + '&' + pair("prg", QString::fromLatin1(kAgent)));
        break;
    default:
        address = m_host + u'/' + QString::fromLatin1(encoded) + u"/json";
        break;
    }
    const QUrl url(address, QUrl::StrictMode);
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https")) {
        finish(failure(ServiceError::Unreachable, QStringLiteral("not a web address: %1").arg(m_host)));
        return;
    }
    m_state = State::LookingUp;
    m_downloads->start(kLookupName, url, kServiceSizeLimit);
}

void ServiceClient::lookupFinished(const QByteArray &bytes)
{
    if (m_state != State::LookingUp)
        return;
    ServiceAnswer answer = parseServiceAnswer(m_service, bytes);
    keepCounters(answer);
    if (!answer.sessionKey.isEmpty())
        m_key = answer.sessionKey;
    if (answer.error == ServiceError::SessionExpired && needsAccount() && !m_retried) {
        // Once per lookup: a service that forgets every new session must
        // not keep us logging in for ever.
        qCDebug(lcLookup) << sourceInfo(m_service).key << "forgot the session:" << answer.message;
        m_retried = true;
        m_key.clear();
        startLogIn();
        return;
    }
    if (answer.error == ServiceError::None && !answer.record)
        answer = failure(ServiceError::Malformed, QStringLiteral("no record in the answer"));
    finish(answer);
}

void ServiceClient::lookupFailed(const QString &reason)
{
    if (m_state != State::LookingUp)
        return;
    finish(failure(ServiceError::Unreachable, reason));
}

void ServiceClient::keepCounters(const ServiceAnswer &answer)
{
    if (answer.lookupsToday < 0 && answer.subscription.isEmpty())
        return;
    const int count = answer.lookupsToday >= 0 ? answer.lookupsToday : m_lookupsToday;
    const QString subscription = answer.subscription.isEmpty() ? m_subscription : answer.subscription;
    if (count == m_lookupsToday && subscription == m_subscription)
        return;
    m_lookupsToday = count;
    m_subscription = subscription;
    emit countersChanged(m_lookupsToday, m_subscription);
}

void ServiceClient::finish(const ServiceAnswer &answer)
{
    const bool loginOnly = m_loginOnly;
    const QString call = m_call;
    m_state = State::Idle;
    m_loginOnly = false;
    m_call.clear();
    if (loginOnly)
        emit loggedIn(answer);
    else
        emit answered(call, answer);
}

} // namespace marvik::lookup
