// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/CookieJar.h"

#include "core/app/Log.h"
#include "core/app/TextFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkCookie>

namespace marvik::lookup {

namespace {

constexpr QFileDevice::Permissions kOwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

} // namespace

CookieJar::CookieJar(const QString &dataFolder, QObject *parent)
    : QNetworkCookieJar(parent)
    , m_path(QDir(dataFolder).filePath(QStringLiteral("Cookies.txt")))
{
    load();
}

void CookieJar::load()
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QList<QNetworkCookie> kept;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.isEmpty())
            continue;
        for (const QNetworkCookie &cookie : QNetworkCookie::parseCookies(line)) {
            if (!cookie.isSessionCookie() && cookie.expirationDate() > now && !cookie.domain().isEmpty())
                kept.append(cookie);
        }
    }
    setAllCookies(kept);
}

bool CookieJar::save() const
{
    QByteArray text;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QNetworkCookie &cookie : allCookies()) {
        if (cookie.isSessionCookie() || cookie.expirationDate() <= now)
            continue;
        text += cookie.toRawForm(QNetworkCookie::Full);
        text += '\n';
    }
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    // The file holds log-in sessions: create it owner-only before the first
    // write, so it is never readable by others, not even for a moment. The
    // atomic replace keeps the permissions of the file it replaces.
    if (!QFile::exists(m_path)) {
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, kOwnerOnly))
            qCWarning(lcLookup) << "cannot create the cookie file" << m_path << file.errorString();
    }
    QString error;
    if (!app::writeFileAtomically(m_path, text, &error)) {
        qCWarning(lcLookup) << "cannot write the cookie file" << m_path << error;
        return false;
    }
    QFile::setPermissions(m_path, kOwnerOnly);
    return true;
}

void CookieJar::changed()
{
    if (!m_batch)
        save();
}

bool CookieJar::setCookiesFromUrl(const QList<QNetworkCookie> &cookieList, const QUrl &url)
{
    m_batch = true;
    const bool any = QNetworkCookieJar::setCookiesFromUrl(cookieList, url);
    m_batch = false;
    if (any)
        save();
    return any;
}

bool CookieJar::insertCookie(const QNetworkCookie &cookie)
{
    const bool done = QNetworkCookieJar::insertCookie(cookie);
    if (done)
        changed();
    return done;
}

bool CookieJar::updateCookie(const QNetworkCookie &cookie)
{
    const bool done = QNetworkCookieJar::updateCookie(cookie);
    if (done)
        changed();
    return done;
}

bool CookieJar::deleteCookie(const QNetworkCookie &cookie)
{
    const bool done = QNetworkCookieJar::deleteCookie(cookie);
    if (done)
        changed();
    return done;
}

} // namespace marvik::lookup
