// SPDX-License-Identifier: GPL-3.0-or-later
#include "web/CookieBridge.h"

#include <QNetworkCookieJar>
#include <QWebEngineCookieStore>

namespace marvik::web {

CookieBridge::CookieBridge(QWebEngineCookieStore *store, QNetworkCookieJar *jar,
                           const QList<QNetworkCookie> &cookies, QObject *parent)
    : QObject(parent)
    , m_jar(jar)
{
    connect(store, &QWebEngineCookieStore::cookieAdded, this, [this](const QNetworkCookie &cookie) {
        if (m_jar)
            takeAdded(*m_jar, cookie);
    });
    connect(store, &QWebEngineCookieStore::cookieRemoved, this, [this](const QNetworkCookie &cookie) {
        if (m_jar)
            takeRemoved(*m_jar, cookie);
    });
    for (const QNetworkCookie &cookie : cookies)
        store->setCookie(cookie, originOf(cookie));
}

QUrl CookieBridge::originOf(const QNetworkCookie &cookie)
{
    QString host = cookie.domain();
    if (host.startsWith(u'.'))
        host.remove(0, 1);
    QUrl origin;
    origin.setScheme(cookie.isSecure() ? QStringLiteral("https") : QStringLiteral("http"));
    origin.setHost(host);
    origin.setPath(cookie.path().isEmpty() ? QStringLiteral("/") : cookie.path());
    return origin;
}

void CookieBridge::takeAdded(QNetworkCookieJar &jar, const QNetworkCookie &cookie)
{
    // The browser reports each cookie with its domain already resolved; a
    // host-only cookie has no leading dot, which the jar matches exactly.
    if (cookie.domain().isEmpty() || cookie.name().isEmpty())
        return;
    // insertCookie replaces a cookie of the same name, domain and path.
    jar.insertCookie(cookie);
}

void CookieBridge::takeRemoved(QNetworkCookieJar &jar, const QNetworkCookie &cookie)
{
    jar.deleteCookie(cookie);
}

} // namespace marvik::web
