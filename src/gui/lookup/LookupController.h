// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/SourceSettings.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;

namespace marvik::lookup {
class CookieJar;
class LookUp;
class PictureDownloader;
struct LookupResult;
}

namespace marvik::gui {

class ImageViewer;
class LoginWindow;
class MainWindow;

/// The main window's callbook lookups: owns `ucLookUp` and `ucDnLoad`,
/// starts a lookup on Get, F8 and Update, reports the outcome in the status
/// line, writes the row, fetches the operator's picture and its thumbnail,
/// shows the log-in state in the Database menu, and opens the picture viewer
/// and the log-in browser window.
class LookupController : public QObject
{
    Q_OBJECT

public:
    /// `network` null: a network manager of its own. Either way the manager
    /// gets Marvik's cookie jar from the window's data folder.
    explicit LookupController(MainWindow *window, QNetworkAccessManager *network = nullptr);
    ~LookupController() override;

    lookup::LookUp *lookUp() const { return m_lookUp; }
    lookup::PictureDownloader *downloader() const { return m_dnLoad; }
    lookup::CookieJar *cookieJar() const { return m_jar; }
    QNetworkAccessManager *network() const { return m_network; }
    /// The picture viewer and the log-in window while they are open.
    ImageViewer *viewer() const;
    LoginWindow *loginWindow() const;

    /// Asks the current online source whether the user is logged in; the
    /// answer goes into the Database menu's caption.
    void checkLogin();

private:
    void startLookup(const QString &callSign, const QString &typed, const QString &rowCallsign);
    void lookupRequested(const QString &callSign);
    void updateRequested(int row);
    void gotSite(const QString &subject, bool loggedIn);
    void gotPage(const QString &callSign);
    void pageNotFound(const QString &callSign);
    void callNotFound(const QString &callSign);
    void loginRequired(const QString &callSign);
    void requestFailed(const QString &name, const QString &reason);
    void timedOut();
    void writeRow(const lookup::LookupResult &result);
    void startPicture(const QString &callSign, const QString &typed);
    void pictureProgress(qint64 done, qint64 total, const QString &name);
    void pictureDownloaded(const QString &name);
    void pictureFailed(const QString &name, const QString &reason);
    void pictureDownloadsEnded(const QString &name);
    void showPicture(int row, bool fromThumbnail);
    void openLogin();
    QString typedCallsign() const;

    MainWindow *m_window;
    QNetworkAccessManager *m_network = nullptr;
    lookup::CookieJar *m_jar = nullptr;
    lookup::SourceSettings m_sources;
    lookup::LookUp *m_lookUp = nullptr;
    lookup::PictureDownloader *m_dnLoad = nullptr;
    QPointer<ImageViewer> m_viewer;
    QPointer<LoginWindow> m_login;

    // The lookup in progress: the call as requested, as typed (for the
    // picture address), the row it updates (empty: a new row), its list and
    // source.
    QString m_call;
    QString m_typed;
    QString m_rowCallsign;
    int m_list = 1;
    int m_dataBase = 0;
};

} // namespace marvik::gui
