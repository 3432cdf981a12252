// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/CallbookServer.h"

#include "core/lookup/SourceSettings.h"

#include <QHash>

/// Plays the four callbook data services on a CallbookServer, from the
/// sample answers in tests/data/services: log-ins that hand out session
/// keys, lookups that want a valid key, W1AW as the one known call, and on
/// demand every way a service lets a program down.
class ServicePlayer
{
public:
    enum class Mode {
        Normal,
        Down,            ///< drops every connection
        Silent,          ///< takes requests and never answers
        Malformed,       ///< answers cut off in the middle
        Oversized,       ///< answers far larger than any real one
        QuotaUsedUp,     ///< every lookup: the day's lookups are used up
        NonSubscriber,   ///< QRZ's limited record for W1AW
        ForgetsSessions, ///< every lookup: the session is unknown
        Updating,        ///< Callook reloading its data
    };

    explicit ServicePlayer(CallbookServer &server);

    /// Every page host and every service host at the server.
    marvik::lookup::SourceSettings settings() const;
    void setAccount(marvik::lookup::Source service, const QString &user, const QString &password);
    void setMode(marvik::lookup::Source service, Mode mode) { m_modes.insert(int(service), mode); }
    /// Forgets every session key the service handed out.
    void expireSessions(marvik::lookup::Source service) { m_keys.remove(int(service)); }

    int logins(marvik::lookup::Source service) const { return m_logins.value(int(service)); }
    int lookups(marvik::lookup::Source service) const { return m_lookups.value(int(service)); }

    /// The sample answer file's bytes.
    static QByteArray sample(const QString &file);

private:
    std::optional<CallbookServer::Answer> serve(const CallbookServer::Request &request);

    CallbookServer &m_server;
    QHash<int, Mode> m_modes;
    QHash<int, QPair<QString, QString>> m_accounts;
    QHash<int, QByteArray> m_keys;
    QHash<int, int> m_logins;
    QHash<int, int> m_lookups;
    int m_keyNumber = 0;
};
