// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QNetworkCookie>
#include <QObject>
#include <QPointer>
#include <QUrl>

class QNetworkCookieJar;
class QWebEngineCookieStore;

namespace marvik::web {

/// Keeps the web profile's cookie store and Marvik's cookie jar in step: the
/// jar's cookies go into the browser when it starts, and every cookie the
/// browser sets or drops goes into the jar, which writes the lasting ones to
/// its file. The jar is reached through QNetworkCookieJar's public calls
/// only, so this module needs nothing of the program's own code.
class CookieBridge : public QObject
{
    Q_OBJECT

public:
    CookieBridge(QWebEngineCookieStore *store, QNetworkCookieJar *jar, const QList<QNetworkCookie> &cookies,
                 QObject *parent = nullptr);

    /// The address a jar cookie is given to the browser under: the cookie's
    /// domain without its leading dot, https for a secure cookie.
    static QUrl originOf(const QNetworkCookie &cookie);

    /// What the jar does with a cookie the browser reports.
    static void takeAdded(QNetworkCookieJar &jar, const QNetworkCookie &cookie);
    static void takeRemoved(QNetworkCookieJar &jar, const QNetworkCookie &cookie);

private:
    QPointer<QNetworkCookieJar> m_jar;
};

} // namespace marvik::web
