// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/CompositionRoot.h"

#include "core/app/Config.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListEditing.h"
#include "core/lists/ListStore.h"
#include "core/lookup/CookieJar.h"
#include "core/lookup/services/CallbookLookup.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"
#include "gui/app/AppController.h"
#include "gui/app/AppIcon.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/dialogs/DialogsController.h"
#include "gui/lists/ListsController.h"
#include "gui/logs/LogsController.h"
#include "gui/lookup/LookupController.h"
#include "gui/maps/MapController.h"
#include "gui/share/ShareController.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QTimer>

#include <algorithm>
#include <QNetworkAccessManager>

namespace marvik::gui {

namespace {
/// The pause before each piece of work left over from start-up.
constexpr int kAfterStartGapMs = 1;
} // namespace

using i18n::TextId;

CompositionRoot::CompositionRoot(const QString &dataDir, QSettings *store, QObject *parent)
    : QObject(parent)
    , m_session(std::make_unique<app::Session>(dataDir, store))
    , m_lists(std::make_unique<lists::ListStore>(m_session->dataFolder(), m_session->settings()))
    , m_texts(std::make_unique<i18n::CurrentTexts>())
    , m_commands(new Commands(*m_texts))
    , m_selection(std::make_unique<Selection>(*m_lists))
    , m_network(std::make_unique<QNetworkAccessManager>())
{
    setObjectName(QStringLiteral("compositionRoot"));
    // The current list is read on a worker while the window is built. Only
    // a peek at the configuration: start-up reads it in its turn.
    app::Settings peeked;
    app::readConfig(m_session->dataFolder().configFile(), peeked);
    m_lists->readAhead(peeked);
    // One cookie jar for the lookups, the picture downloads and the web
    // windows, so a log-in made in a browser window holds for the lookups.
    m_jar = new lookup::CookieJar(m_session->dataFolder().path());
    m_network->setCookieJar(m_jar);
    // Callbook services: one keyring and one lookup for the window; the
    // cache opens once the data folder is ours and made (startUp()).
    m_credentials = std::make_unique<lookup::CredentialStore>();
    m_callbooks = new lookup::CallbookLookup(m_network.get(), m_credentials.get(), nullptr, this);
    m_callbooks->setObjectName(QStringLiteral("callbookLookup"));

    addMainWindowCommands(*m_commands);
    m_window = std::make_unique<MainWindow>(*m_commands, *m_texts, *m_selection);
    m_commands->setParent(m_window.get());
    m_window->setModels(m_lists->models());
    wire();
}

CompositionRoot::~CompositionRoot()
{
    // Controllers hold references to the window's status line and the
    // network manager; they go first.
    delete m_share;
    delete m_map;
    delete m_dialogs;
    delete m_logs;
    delete m_lookup;
    delete m_listsController;
    delete m_app;
    // Its downloads abort their replies on the way out: before the network.
    delete m_callbooks;
}

void CompositionRoot::wire()
{
    MainWindow *w = m_window.get();
    m_app = new AppController(*m_session, *m_texts, *m_commands, w, this);
    m_listsController = new ListsController(*m_lists, *m_session, *m_selection, *m_texts, *m_commands, w, this);
    m_lookup = new LookupController(*m_lists, *m_session, *m_selection, w->statusLine(), *m_texts, *m_commands,
                                    *m_network, *m_jar, *m_callbooks, *m_credentials, w, this);

    // Maps.
    m_map = new MapController(*m_session, *m_selection, *m_texts, *m_commands, this);
    connect(w, &MainWindow::rowMouseUp, m_map, &MapController::rowClicked);

    // Dialogs: add/edit, setup, and the new-version question once the
    // window has shown, so the update check never holds up the start.
    m_dialogs = new DialogsController(*m_lists, *m_session, *m_selection, w->statusLine(), *m_texts, *m_commands,
                                      *m_network, w, this);
    connect(w, &MainWindow::firstPaint, m_dialogs, &DialogsController::checkForUpdates);
    // Sharing with EasyPal.
    m_share = new ShareController(*m_lists, *m_session, *m_selection, w->statusLine(), *m_texts, *m_commands, *m_jar,
                                  w, this);

    connect(w, &MainWindow::getRequested, m_lookup, &LookupController::get);
    connect(w, &MainWindow::cancelRequested, m_lookup, &LookupController::cancel);
    connect(w, &MainWindow::thumbnailClicked, m_lookup, &LookupController::showThumbnailPicture);
    connect(w, &MainWindow::listChosen, m_listsController, &ListsController::switchTo);
    connect(w, &MainWindow::sortChosen, m_listsController, &ListsController::sortBy);
    connect(w, &MainWindow::closing, this, &CompositionRoot::shutDown);
    connect(w, &MainWindow::firstPaint, m_listsController, &ListsController::reportDamage);
    connect(w, &MainWindow::firstPaint, m_lists.get(), &lists::ListStore::startWaitingReads);
    connect(w, &MainWindow::firstPaint, this, [this] {
        m_painted = true;
        settle();
    });
    // Queued, so whoever waits for the last list hears of it first.
    connect(m_lists.get(), &lists::ListStore::listRead, this, &CompositionRoot::settle, Qt::QueuedConnection);

    connect(m_lists.get(), &lists::ListStore::chooserLineChanged, w,
            [this, w](int list) { w->setChooserLine(list, m_lists->chooserLine(list)); });
    connect(m_listsController, &ListsController::focusCallBox, w, &MainWindow::focusCallBox);
    connect(m_listsController, &ListsController::note, &w->statusLine(), &StatusLine::note);
    connect(m_listsController, &ListsController::scrollToTop, w, &MainWindow::scrollToTop);
    connect(m_app, &AppController::alwaysOnTopChanged, w, &MainWindow::setAlwaysOnTop);
    connect(w, &MainWindow::undoRequested, m_listsController, &ListsController::undo);
    connect(m_app, &AppController::sourceLabelChanged, w, &MainWindow::setSourceLabel);
    connect(m_app, &AppController::sourceLabelChanged, m_lookup, &LookupController::sourceChanged);
    connect(m_lookup, &LookupController::databaseCaptionChanged, w, &MainWindow::setDatabaseCaption);
    connect(m_lookup, &LookupController::pictureProgress, w, &MainWindow::showPictureProgress);
    connect(m_lookup, &LookupController::pictureProgressDone, w, &MainWindow::hidePictureProgress);
    connect(m_session.get(), &app::Session::meChanged, m_lists.get(), &lists::ListStore::recomputeAzimuths);
    connect(m_selection.get(), &Selection::currentChanged, m_commands, &Commands::refresh);
    connect(m_texts.get(), &i18n::CurrentTexts::changed, this, &CompositionRoot::textsChanged);

    // Lists and logs: ADIF import and export, and updating a whole list,
    // whose rows must not be deleted or cleared under it.
    m_logs = new LogsController(*m_lists, *m_session, *m_selection, w->statusLine(), *m_texts, *m_commands,
                                *m_network, w, this);
    connect(m_logs, &LogsController::pictureWanted, m_lookup, &LookupController::fetchPictureQuietly);
    m_listsController->setBusyList([this](int list) { return m_logs->isRefreshing(list); });
}

bool CompositionRoot::lockDataFolder()
{
    app::LockOutcome lock = m_session->lock();
    if (lock.state == app::LockOutcome::State::OtherHost) {
        const QString question = m_texts->fill(TextId::LockOtherHost, lock.host, QString::number(lock.pid));
        if (!messages::question(m_window.get(), question))
            return false;
        lock = m_session->takeOverLock();
    }
    switch (lock.state) {
    case app::LockOutcome::State::Acquired:
    case app::LockOutcome::State::Failed:
        // A folder that cannot hold a lock is told about with the other
        // start-up notes; Marvik still runs.
        return true;
    case app::LockOutcome::State::OtherInstance:
    case app::LockOutcome::State::OtherHost:
        messages::exclamation(m_window.get(), (*m_texts)[TextId::AnotherInstance]);
        return false;
    }
    return false;
}

bool CompositionRoot::startUp()
{
    app::Session &session = *m_session;
    app::Settings &settings = session.settings();
    session.setStarting(true);
    m_lists->setStarting(true);

    if (!lockDataFolder())
        return false;
    app::StartUpNotes notes;
    session.prepareFolder(notes);
    m_window->applyPlacement(session.placement());
    session.ensureImageFolders();
    // Callbook services: the lookup cache, in the folder that is ours now,
    // opened once the window has painted or a lookup needs it.
    m_callbooks->setCacheOpener([this] { return openLookupCache(); });
    session.scanMaps();
    session.readConfig(notes);
    m_window->setSortOption(settings.sortMode);
    m_lists->loadAtStartUp(settings.currentList);

    m_window->setAlwaysOnTop(settings.alwaysOnTop == 1);
    m_window->showList(settings.currentList);
    m_app->applyDefaultSource();

    m_app->loadLanguage();

    session.setStarting(false);
    m_lists->setStarting(false);

    m_listWord = (*m_texts)[TextId::ListWord];
    for (int n = 1; n <= lists::kListCount; ++n) {
        QString &name = settings.listNames[std::size_t(n - 1)];
        if (name.isEmpty())
            name = lists::defaultListName(m_listWord, n);
        m_window->setChooserLine(n, m_lists->chooserLine(n));
    }
    // The list switch that ends the start-up.
    m_lists->reload(settings.currentList, true);
    m_listsController->reportDamage();
    m_window->focusCallBox();
    m_commands->refresh();

    m_started = true;
    tellStartUpNotes(notes);
    return true;
}

void CompositionRoot::tellStartUpNotes(const app::StartUpNotes &notes)
{
    const QString folder = QDir::toNativeSeparators(m_session->dataFolder().path());
    const QString config = QDir::toNativeSeparators(m_session->dataFolder().configFile());
    QStringList lines;
    if (!notes.folderProblem.isEmpty())
        lines << m_texts->fill(TextId::FolderUnusable, folder, notes.folderProblem);
    else if (notes.folderReadOnly)
        lines << m_texts->fill(TextId::FolderReadOnly, folder);
    if (!notes.configKeptAs.isEmpty())
        lines << m_texts->fill(TextId::ConfigKept, config, QDir::toNativeSeparators(notes.configKeptAs));
    if (!notes.configProblem.isEmpty())
        lines << m_texts->fill(TextId::ConfigUnreadable, config, notes.configProblem);
    if (!lines.isEmpty())
        messages::exclamation(m_window.get(), lines.join(QStringLiteral("\n\n")));
}

void CompositionRoot::settle()
{
    // What neither the first paint nor the lists need wait for, once both
    // are done: the grids of the other lists, the lookup cache (SQLite and
    // its pruning; a lookup made sooner opens it itself) and the window
    // icon (six PNGs to decode).
    if (m_settled || !m_painted || m_lists->isReading())
        return;
    m_settled = true;
    m_afterStart = {[this] { m_window->attachAllModels(); }, [this] { m_callbooks->cache(); },
                    [] { QApplication::setWindowIcon(applicationIcon()); }};
    QTimer::singleShot(kAfterStartGapMs, this, &CompositionRoot::nextAfterStart);
}

void CompositionRoot::nextAfterStart()
{
    // One piece at a time, each on a timer of its own: posted at once, they
    // would run back to back, and the window could neither paint nor take a
    // key until all were done.
    if (m_afterStart.empty())
        return;
    const std::function<void()> piece = std::move(m_afterStart.front());
    m_afterStart.erase(m_afterStart.begin());
    piece();
    if (!m_afterStart.empty())
        QTimer::singleShot(kAfterStartGapMs, this, &CompositionRoot::nextAfterStart);
}

lookup::LookupCache *CompositionRoot::lookupCache() const
{
    return m_callbooks->cache();
}

lookup::LookupCache *CompositionRoot::openLookupCache()
{
    const lookup::SourceSettings &sources = m_session->sources();
    m_cache = std::make_unique<lookup::LookupCache>(m_session->dataFolder().filePath(lookup::LookupCache::fileName()));
    m_cache->setFreshDays(sources.cacheFreshDays());
    m_cache->setMaxEntries(sources.cacheMaxEntries());
    m_cache->prune();
    // Told from the event loop: the cache may be opening in the middle of a
    // lookup, which must not wait on a message box.
    QMetaObject::invokeMethod(this, [this] {
        m_commands->refresh();
        if (!m_cache->setAsidePath().isEmpty())
            messages::exclamation(m_window.get(), m_texts->fill(TextId::CacheSetAside,
                                                                 QDir::toNativeSeparators(m_cache->setAsidePath())));
    }, Qt::QueuedConnection);
    return m_cache.get();
}

void CompositionRoot::textsChanged()
{
    messages::setButtonCaptions({(*m_texts)[TextId::ButtonOk], (*m_texts)[TextId::ButtonYes], (*m_texts)[TextId::ButtonNo]});
    // A list still called by its default name follows the language; a name
    // the user gave stays.
    const QString word = (*m_texts)[TextId::ListWord];
    if (!m_started || word == m_listWord)
        return;
    for (int n = 1; n <= lists::kListCount; ++n) {
        QString &name = m_session->settings().listNames[std::size_t(n - 1)];
        if (name == lists::defaultListName(m_listWord, n)) {
            name = lists::defaultListName(word, n);
            m_window->setChooserLine(n, m_lists->chooserLine(n));
        }
    }
    m_listWord = word;
}

void CompositionRoot::shutDown()
{
    if (m_shutDown || !m_started)
        return;
    m_shutDown = true;
    m_lookup->closeWindows();
    m_map->closeWindow();
    m_dialogs->closeWindows();
    m_share->closeWindow();

    if (const std::optional<app::Placement> place = m_window->placementToKeep())
        m_session->savePlacement(*place);
    m_session->settings().currentList = qint16(m_selection->currentList());
    QString why;
    if (!m_session->writeConfig(&why))
        messages::exclamation(m_window.get(), m_texts->fill(TextId::FileWriteFailed,
                                                             QDir::toNativeSeparators(m_session->dataFolder().configFile()), why));
    for (int n = 1; n <= lists::kListCount; ++n)
        m_lists->save(n);
    m_session->finish();
}

} // namespace marvik::gui
