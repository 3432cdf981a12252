// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/Sources.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <optional>

namespace QKeychain {
class Job;
}

namespace marvik::lookup {

/// The passwords of the data-service accounts. They live in the desktop
/// keyring (the Secret Service, KWallet, the macOS keychain, the Windows
/// credential store) and never in a file of ours. When no keyring answers,
/// the caller hears so and may keep a password for this run only, in memory.
/// The user names are settings (SourceSettings), not secrets.
class CredentialStore : public QObject
{
    Q_OBJECT

public:
    enum class Status {
        Ok,        ///< done; for a read, the password came
        NotFound,  ///< the keyring holds no password for this account
        NoKeyring, ///< no keyring service answered (or it refused)
    };
    Q_ENUM(Status)

    explicit CredentialStore(QObject *parent = nullptr);
    ~CredentialStore() override;

    /// The name the passwords are filed under in the keyring ("Marvik").
    void setKeyringService(const QString &name) { m_service = name; }
    QString keyringService() const { return m_service; }

    /// Reads the password of `user`'s account with `source`; ends in one
    /// passwordRead(). A password known from this run answers at once.
    void readPassword(Source source, const QString &user);
    /// Files the password in the keyring; ends in one passwordStored(). When
    /// no keyring answers, the password is not kept (see keepForThisRun()).
    void storePassword(Source source, const QString &user, const QString &password);
    /// Removes the password from the keyring and from this run; ends in one
    /// passwordForgotten().
    void forgetPassword(Source source, const QString &user);
    /// Keeps a password in memory until the program ends; the keyring is
    /// not asked.
    void keepForThisRun(Source source, const QString &user, const QString &password);
    /// The password of an account as far as this run knows it (read, stored
    /// or kept).
    std::optional<QString> knownPassword(Source source, const QString &user) const;
    /// False once a keyring operation found no keyring.
    bool keyringAvailable() const { return m_keyringAvailable; }

    /// The keyring's key of an account: "<source key>/<user>".
    static QString accountKey(Source source, const QString &user);

signals:
    void passwordRead(marvik::lookup::Source source, const QString &user, const QString &password,
                      marvik::lookup::CredentialStore::Status status, const QString &message);
    void passwordStored(marvik::lookup::Source source, const QString &user,
                        marvik::lookup::CredentialStore::Status status, const QString &message);
    void passwordForgotten(marvik::lookup::Source source, const QString &user,
                           marvik::lookup::CredentialStore::Status status);

private:
    Status statusOf(const QKeychain::Job *job);

    QString m_service = QStringLiteral("Marvik");
    QHash<QString, QString> m_known;
    bool m_keyringAvailable = true;
};

} // namespace marvik::lookup
