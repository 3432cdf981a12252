// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QNetworkCookie>
#include <QObject>
#include <QUrl>

class QWebEngineCookieStore;

namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

/// Keeps a browser profile's cookie store and Marvik's cookie jar in step:
/// the jar's cookies go into the browser when it opens, and every cookie the
/// browser sets or drops goes into the jar, so a log-in made in the browser
/// holds for the lookups and survives a restart.
class CookieBridge : public QObject
{
    Q_OBJECT

public:
    CookieBridge(QWebEngineCookieStore *store, lookup::CookieJar *jar, QObject *parent = nullptr);

    /// The address a jar cookie is given to the browser under: the cookie's
    /// domain without its leading dot, https for a secure cookie.
    static QUrl originOf(const QNetworkCookie &cookie);

    /// What the jar does with a cookie the browser reports.
    static void takeAdded(lookup::CookieJar &jar, const QNetworkCookie &cookie);
    static void takeRemoved(lookup::CookieJar &jar, const QNetworkCookie &cookie);

private:
    lookup::CookieJar *m_jar;
};

} // namespace marvik::gui
