// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QNetworkCookie>
#include <QNetworkCookieJar>

namespace marvik::lookup {

/// The one cookie jar of Marvik's, kept in the data folder (readable by the
/// owner only) and shared by every lookup, the picture download and the
/// log-in browser window: a user who logs in to a callbook there is logged in
/// for the lookups too. Cookies that outlive the session are written at
/// every change; session cookies live in memory only, as in a browser.
class CookieJar : public QNetworkCookieJar
{
    Q_OBJECT

public:
    /// `dataFolder`: the folder that holds the jar's file, "Cookies.txt".
    explicit CookieJar(const QString &dataFolder, QObject *parent = nullptr);

    QString filePath() const { return m_path; }
    QList<QNetworkCookie> cookies() const { return allCookies(); }

    bool setCookiesFromUrl(const QList<QNetworkCookie> &cookieList, const QUrl &url) override;
    bool insertCookie(const QNetworkCookie &cookie) override;
    bool updateCookie(const QNetworkCookie &cookie) override;
    bool deleteCookie(const QNetworkCookie &cookie) override;

    /// Writes the lasting cookies now; false when the file cannot be written.
    bool save() const;

private:
    void load();
    void changed();

    QString m_path;
    bool m_batch = false;
};

} // namespace marvik::lookup
