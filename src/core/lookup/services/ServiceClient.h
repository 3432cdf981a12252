// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/services/ServiceAnswer.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

namespace marvik::lookup {

class NamedDownloads;

/// A data service's answer is far smaller; anything bigger is not one.
inline constexpr qint64 kServiceSizeLimit = 1024 * 1024;

/// The client of one callbook's data service (QRZ, QRZCQ, HamQTH, Callook):
/// logs in with the account when it has no session, looks calls up with the
/// session, and logs in again once when the service has forgotten the
/// session in the middle of a run. Log-ins are posted as forms, so a
/// password never stands in an address; the lookups are named downloads
/// that never come from a cache.
class ServiceClient : public QObject
{
    Q_OBJECT

public:
    /// `service`: a source with a data service.
    ServiceClient(Source service, QNetworkAccessManager *network, QObject *parent = nullptr);
    ~ServiceClient() override;

    Source service() const { return m_service; }
    /// Scheme and host of the service, as in the settings.
    void setServiceHost(const QString &host) { m_host = host; }
    QString serviceHost() const { return m_host; }
    /// A new account forgets the session of the old one.
    void setAccount(const QString &user, const QString &password);
    QString user() const { return m_user; }
    /// True when the service needs no account or both parts are set.
    bool hasAccount() const;
    bool needsAccount() const;
    void setTransferTimeout(int milliseconds);

    /// Looks `callsign` up; ends in exactly one answered() for it, unless
    /// cancelled or replaced by the next lookUp().
    void lookUp(const QString &callsign);
    /// Logs in anew, even with a session at hand; ends in one loggedIn().
    void logIn();
    /// Drops whatever is under way; nothing more is reported for it.
    void cancel();
    bool isBusy() const { return m_state != State::Idle; }

    /// The session the service gave at the last log-in; empty without one.
    QString sessionKey() const { return m_key; }
    /// QRZ's and QRZCQ's counters from the last answer that had them.
    int lookupsToday() const { return m_lookupsToday; }
    QString subscription() const { return m_subscription; }

    /// How long a HamQTH session lasts; the client logs in again a little
    /// before, rather than spend a request on an expired one.
    static constexpr int kHamQthSessionMs = 60 * 60 * 1000;

signals:
    void answered(const QString &callsign, const marvik::lookup::ServiceAnswer &answer);
    void loggedIn(const marvik::lookup::ServiceAnswer &answer);
    /// The day's lookups or the subscription changed (QRZ, QRZCQ).
    void countersChanged(int lookupsToday, const QString &subscription);

private:
    enum class State { Idle, LoggingIn, LookingUp };

    void startLogIn();
    void startLookup();
    void logInFinished(QNetworkReply *reply);
    void lookupFinished(const QByteArray &bytes);
    void lookupFailed(const QString &reason);
    void keepCounters(const ServiceAnswer &answer);
    void finish(const ServiceAnswer &answer);
    bool sessionUsable() const;
    QString endpoint() const;

    Source m_service;
    QNetworkAccessManager *m_network;
    NamedDownloads *m_downloads;
    QPointer<QNetworkReply> m_loginReply;
    QString m_host;
    QString m_user;
    QString m_password;
    int m_transferTimeout;

    State m_state = State::Idle;
    bool m_loginOnly = false; ///< logIn(), not a lookup, is under way
    bool m_retried = false;   ///< this lookup has logged in again once already
    QString m_call;

    QString m_key;
    QDeadlineTimer m_keyExpiry{QDeadlineTimer::Forever};
    int m_lookupsToday = -1;
    QString m_subscription;
};

} // namespace marvik::lookup
