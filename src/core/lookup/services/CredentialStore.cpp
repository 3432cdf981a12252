// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/CredentialStore.h"

#include "core/app/Log.h"

#include <QTimer>

#include <qt6keychain/keychain.h>

namespace marvik::lookup {

CredentialStore::CredentialStore(QObject *parent)
    : QObject(parent)
{
}

CredentialStore::~CredentialStore() = default;

QString CredentialStore::accountKey(Source source, const QString &user)
{
    return sourceInfo(source).key + u'/' + user;
}

CredentialStore::Status CredentialStore::statusOf(const QKeychain::Job *job)
{
    switch (job->error()) {
    case QKeychain::NoError: return Status::Ok;
    case QKeychain::EntryNotFound: return Status::NotFound;
    default:
        // Every other error means the keyring cannot be used now: no
        // session bus, no keyring daemon, a locked keyring nobody can
        // unlock, or the user saying no.
        m_keyringAvailable = false;
        qCInfo(lcLookup) << "no keyring:" << job->errorString();
        return Status::NoKeyring;
    }
}

void CredentialStore::readPassword(Source source, const QString &user)
{
    const QString key = accountKey(source, user);
    if (const auto it = m_known.constFind(key); it != m_known.constEnd()) {
        // Answered from the event loop all the same, so callers see one
        // order of events whether the keyring was asked or not.
        const QString password = *it;
        QTimer::singleShot(0, this, [this, source, user, password] {
            emit passwordRead(source, user, password, Status::Ok, {});
        });
        return;
    }
    auto *job = new QKeychain::ReadPasswordJob(m_service, this);
    job->setKey(key);
    job->setInsecureFallback(false);
    connect(job, &QKeychain::Job::finished, this, [this, source, user, key](QKeychain::Job *j) {
        const Status status = statusOf(j);
        QString password;
        if (status == Status::Ok) {
            password = static_cast<QKeychain::ReadPasswordJob *>(j)->textData();
            m_known.insert(key, password);
        }
        emit passwordRead(source, user, password, status, status == Status::Ok ? QString() : j->errorString());
    });
    job->start();
}

void CredentialStore::storePassword(Source source, const QString &user, const QString &password)
{
    const QString key = accountKey(source, user);
    auto *job = new QKeychain::WritePasswordJob(m_service, this);
    job->setKey(key);
    // Never a file of ours: without a keyring the write fails, and the
    // caller decides about keeping the password for this run.
    job->setInsecureFallback(false);
    job->setTextData(password);
    connect(job, &QKeychain::Job::finished, this, [this, source, user, key, password](QKeychain::Job *j) {
        const Status status = statusOf(j) == Status::Ok ? Status::Ok : Status::NoKeyring;
        if (status == Status::Ok) {
            m_keyringAvailable = true;
            m_known.insert(key, password);
        }
        emit passwordStored(source, user, status, status == Status::Ok ? QString() : j->errorString());
    });
    job->start();
}

void CredentialStore::forgetPassword(Source source, const QString &user)
{
    const QString key = accountKey(source, user);
    m_known.remove(key);
    auto *job = new QKeychain::DeletePasswordJob(m_service, this);
    job->setKey(key);
    job->setInsecureFallback(false);
    connect(job, &QKeychain::Job::finished, this, [this, source, user](QKeychain::Job *j) {
        emit passwordForgotten(source, user, statusOf(j));
    });
    job->start();
}

void CredentialStore::keepForThisRun(Source source, const QString &user, const QString &password)
{
    m_known.insert(accountKey(source, user), password);
}

std::optional<QString> CredentialStore::knownPassword(Source source, const QString &user) const
{
    const auto it = m_known.constFind(accountKey(source, user));
    if (it == m_known.constEnd())
        return std::nullopt;
    return *it;
}

} // namespace marvik::lookup
