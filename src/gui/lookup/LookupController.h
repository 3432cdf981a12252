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
class CallbookLookup;
class CookieJar;
class CredentialStore;
class LookUp;
class LookupCache;
class PictureDownloader;
struct CallbookAnswer;
struct LookupResult;
struct SourceFailure;
}

namespace marvik::gui {

class AccountsDialog;
class Commands;
class ImageViewer;
class LoginWindow;
class Selection;
class StatusLine;

/// The main window's callbook lookups: answers Get, F8 and Update through
/// the callbook lookup (the chosen source by page or data service, the
/// fallback sources, the cache), shows a lookup in flight and lets the user
/// cancel it, reports the outcome in the status line, writes the row, fetches
/// the operator's picture (`ucDnLoad`) and its thumbnail, shows the log-in
/// state in the Database menu's caption, and opens the picture viewer, the
/// log-in browser window and the callbook accounts dialog.
class LookupController : public QObject
{
    Q_OBJECT

public:
    LookupController(lists::ListStore &lists, app::Session &session, Selection &selection, StatusLine &status,
                     const i18n::CurrentTexts &texts, Commands &commands, QNetworkAccessManager &network,
                     lookup::CookieJar &jar, lookup::CallbookLookup &callbooks, lookup::CredentialStore &credentials,
                     QWidget *dialogParent, QObject *parent = nullptr);
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
    /// Drops the lookup in flight (the Get button while busy, Escape);
    /// nothing is written and no alarm is raised for it.
    void cancel();
    /// Setup, "Callbook accounts…": a modal dialog; its settings are kept
    /// when the user confirms them.
    void openAccounts();
    /// Empties the lookup cache and says how many results went.
    void clearCache();
    /// The accounts dialog while it is open.
    AccountsDialog *accountsDialog() const;
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
    void trying(const QString &callSign, lookup::Source source);
    void answered(const lookup::CallbookAnswer &answer);
    void failed(const QString &callSign, const QList<lookup::SourceFailure> &failures);
    void writeRow(const lookup::LookupResult &result);
    void startPicture(const QString &callSign, const QString &address);
    bool hasPictureFile() const;
    void applySources();
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
    QNetworkAccessManager &m_network;
    lookup::CookieJar &m_jar;
    lookup::CallbookLookup &m_callbooks;
    lookup::CredentialStore &m_credentials;
    QPointer<QWidget> m_parent;
    lookup::LookUp *m_lookUp = nullptr;
    lookup::PictureDownloader *m_dnLoad = nullptr;
    QPointer<ImageViewer> m_viewer;
    QPointer<LoginWindow> m_login;
    QPointer<AccountsDialog> m_accounts;
    QString m_sourceLabel;
    /// Pictures fetched for fetchPictureQuietly(), by name.
    QSet<QString> m_quietPictures;

    // The lookup in progress: the call as requested, as typed (for the
    // picture address), the row it updates (empty: a new row), its list and
    // the source the user chose.
    QString m_call;
    QString m_typed;
    QString m_rowCallsign;
    /// What the answer's note said (the source, the cache), so the picture's
    /// note that follows it does not wipe it out.
    QString m_answerNote;
    int m_list = 1;
    lookup::Source m_source = lookup::Source::EHam;
};

} // namespace marvik::gui
