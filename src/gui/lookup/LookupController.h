// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/SourceSettings.h"

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QWidget>
#include <QString>

class QNetworkAccessManager;
class QTimer;

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lists {
class ListStore;
}
namespace marvik::lookup {
class CookieJar;
class LookUp;
class PictureDownloader;
struct LookupResult;
}

namespace marvik::gui {

class Commands;
class ImageViewer;
class LoginWindow;
class Selection;
class StatusLine;

/// The main window's callbook lookups: owns `ucLookUp` and `ucDnLoad`,
/// answers Get, F8 and Update, reports the outcome in the status line,
/// writes the row, fetches the operator's picture and its thumbnail, shows
/// the log-in state in the Database menu's caption, and opens the picture
/// viewer and the log-in browser window.
class LookupController : public QObject
{
    Q_OBJECT

public:
    LookupController(lists::ListStore &lists, app::Session &session, Selection &selection, StatusLine &status,
                     const i18n::CurrentTexts &texts, Commands &commands, QNetworkAccessManager &network,
                     lookup::CookieJar &jar, QWidget *dialogParent, QObject *parent = nullptr);
    ~LookupController() override;

    lookup::LookUp *lookUp() const { return m_lookUp; }
    lookup::PictureDownloader *downloader() const { return m_dnLoad; }
    lookup::CookieJar *cookieJar() const { return &m_jar; }
    /// The picture viewer and the log-in window while they are open.
    ImageViewer *viewer() const;
    LoginWindow *loginWindow() const;

    /// Get: an entry already in the current list is selected and blinks;
    /// a new call is looked up on the current source.
    void get(const QString &typed);
    /// A click on a row's thumbnail: the picture, with the pointer moved into it.
    void showThumbnailPicture(int row);
    /// Asks the current online source whether the user is logged in; the
    /// answer goes into the Database menu's caption.
    void checkLogin();
    /// The source changed: a new label, and the log-in state asked again.
    void sourceChanged(const QString &label);
    /// Shut-down: the viewer and the log-in window close.
    void closeWindows();
    /// The picture of a call some other part has just written into a list
    /// (a whole-list update): fetched, stored and shown as after a Get, but
    /// a call without a picture is not an alarm, since a long run of them
    /// would keep the status line red.
    void fetchPictureQuietly(const QString &callSign);

signals:
    void databaseCaptionChanged(const QString &caption);
    void pictureProgress(qint64 done, qint64 total);
    void pictureProgressDone();

private:
    void startLookup(const QString &callSign, const QString &typed, const QString &rowCallsign);
    void update();
    void gotSite(const QString &subject, bool loggedIn);
    void gotPage(const QString &callSign);
    void pageNotFound(const QString &callSign);
    void callNotFound(const QString &callSign);
    void loginRequired(const QString &callSign);
    void requestFailed(const QString &name, const QString &reason);
    void timedOut();
    void writeRow(const lookup::LookupResult &result);
    void startPicture(const QString &callSign, const QString &typed);
    void pictureDownloaded(const QString &name);
    void pictureFailed(const QString &name, const QString &reason);
    void pictureDownloadsEnded(const QString &name);
    void showPicture(int row, bool fromThumbnail);
    void openLogin();

    lists::ListStore &m_lists;
    app::Session &m_session;
    Selection &m_selection;
    StatusLine &m_status;
    const i18n::CurrentTexts &m_texts;
    Commands &m_commands;
    lookup::CookieJar &m_jar;
    QPointer<QWidget> m_parent;
    lookup::SourceSettings m_sources;
    lookup::LookUp *m_lookUp = nullptr;
    lookup::PictureDownloader *m_dnLoad = nullptr;
    QTimer *m_timeout = nullptr;
    QPointer<ImageViewer> m_viewer;
    QPointer<LoginWindow> m_login;
    QString m_sourceLabel;
    /// Pictures fetched for fetchPictureQuietly(), by name.
    QSet<QString> m_quietPictures;

    // The lookup in progress: the call as requested, as typed (for the
    // picture address), the row it updates (empty: a new row), its list and
    // source.
    QString m_call;
    QString m_typed;
    QString m_rowCallsign;
    int m_list = 1;
    lookup::Source m_source = lookup::Source::EHam;
};

} // namespace marvik::gui
