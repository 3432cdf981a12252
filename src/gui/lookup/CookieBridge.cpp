// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/CookieBridge.h"

#include "core/app/Log.h"
#include "core/lookup/CookieJar.h"

#include <QPointer>
#include <QWebEngineCookieStore>

namespace marvik::gui {

CookieBridge::CookieBridge(QWebEngineCookieStore *store, lookup::CookieJar *jar, QObject *parent)
    : QObject(parent)
    , m_jar(jar)
{
    QPointer<lookup::CookieJar> guard(jar);
    connect(store, &QWebEngineCookieStore::cookieAdded, this, [guard](const QNetworkCookie &cookie) {
        if (guard)
            takeAdded(*guard, cookie);
    });
    connect(store, &QWebEngineCookieStore::cookieRemoved, this, [guard](const QNetworkCookie &cookie) {
        if (guard)
            takeRemoved(*guard, cookie);
    });
    for (const QNetworkCookie &cookie : jar->cookies())
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

void CookieBridge::takeAdded(lookup::CookieJar &jar, const QNetworkCookie &cookie)
{
    // The browser reports each cookie with its domain already resolved; a
    // host-only cookie has no leading dot, which the jar matches exactly.
    if (cookie.domain().isEmpty() || cookie.name().isEmpty())
        return;
    qCDebug(lcLookup) << "browser cookie" << cookie.name() << "for" << cookie.domain();
    // insertCookie replaces a cookie of the same name, domain and path.
    jar.insertCookie(cookie);
}

void CookieBridge::takeRemoved(lookup::CookieJar &jar, const QNetworkCookie &cookie)
{
    jar.deleteCookie(cookie);
}

} // namespace marvik::gui
