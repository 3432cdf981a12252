// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QNetworkAccessManager;
class QSettings;

namespace marvik::app {
class Session;
struct StartUpNotes;
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
class LookupCache;
}

namespace marvik::gui {

class AppController;
class Commands;
class DialogsController;
class ListsController;
class LogsController;
class LookupController;
class MapController;
class MainWindow;
class Selection;
class ShareController;

/// Builds Marvik and wires its parts: the session, the list store, the one
/// network manager with its cookie jar, the current texts, the commands,
/// the main window and one controller per part. The desktop program and
/// the window tests start Marvik through this same object.
class CompositionRoot : public QObject
{
    Q_OBJECT

public:
    /// `dataDir` empty: the per-user data folder; `store` null: the per-user
    /// settings store.
    explicit CompositionRoot(const QString &dataDir = {}, QSettings *store = nullptr, QObject *parent = nullptr);
    ~CompositionRoot() override;

    /// The start-up sequence. False when Marvik must not run (another
    /// instance holds the data folder; the user has been told).
    bool startUp();
    /// The shut-down sequence; runs once, when the window closes.
    void shutDown();

    MainWindow *mainWindow() const { return m_window.get(); }
    app::Session &session() const { return *m_session; }
    lists::ListStore &lists() const { return *m_lists; }
    Selection &selection() const { return *m_selection; }
    Commands &commands() const { return *m_commands; }
    i18n::CurrentTexts &texts() const { return *m_texts; }
    QNetworkAccessManager &network() const { return *m_network; }
    lookup::CookieJar &cookieJar() const { return *m_jar; }
    LookupController *lookup() const { return m_lookup; }
    lookup::CallbookLookup &callbooks() const { return *m_callbooks; }
    lookup::CredentialStore &credentials() const { return *m_credentials; }
    /// The lookup cache, opened now if the start has not opened it yet;
    /// null before the start and when none could be opened.
    lookup::LookupCache *lookupCache() const;
    ListsController *listsController() const { return m_listsController; }
    AppController *app() const { return m_app; }
    MapController *map() const { return m_map; }
    DialogsController *dialogs() const { return m_dialogs; }
    LogsController *logs() const { return m_logs; }
    ShareController *share() const { return m_share; }

private:
    void wire();
    bool lockDataFolder();
    void tellStartUpNotes(const app::StartUpNotes &notes);
    lookup::LookupCache *openLookupCache();
    void settle();
    void nextAfterStart();
    void textsChanged();

    std::unique_ptr<app::Session> m_session;
    std::unique_ptr<lists::ListStore> m_lists;
    std::unique_ptr<i18n::CurrentTexts> m_texts;
    /// Owned by the main window, so its actions are found among the window's
    /// children like every other menu item.
    Commands *m_commands = nullptr;
    std::unique_ptr<Selection> m_selection;
    std::unique_ptr<QNetworkAccessManager> m_network;
    lookup::CookieJar *m_jar = nullptr;
    // Callbook services: the passwords, the cache in the data folder and the
    // lookup that asks the sources in turn.
    std::unique_ptr<lookup::CredentialStore> m_credentials;
    std::unique_ptr<lookup::LookupCache> m_cache;
    lookup::CallbookLookup *m_callbooks = nullptr;
    std::unique_ptr<MainWindow> m_window;
    AppController *m_app = nullptr;
    ListsController *m_listsController = nullptr;
    LookupController *m_lookup = nullptr;
    MapController *m_map = nullptr;
    DialogsController *m_dialogs = nullptr;
    LogsController *m_logs = nullptr;
    ShareController *m_share = nullptr;
    /// The word for list the default list names were made with.
    QString m_listWord;
    bool m_started = false;
    bool m_painted = false;
    bool m_settled = false;
    std::vector<std::function<void()>> m_afterStart;
    bool m_shutDown = false;
};

} // namespace marvik::gui
