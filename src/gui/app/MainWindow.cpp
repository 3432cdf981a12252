// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/MainWindow.h"

#include "gui/lists/HeadingBar.h"
#include "gui/lists/ListGrid.h"
#include "gui/lists/ListNamesDialog.h"
#include "gui/lists/ThumbnailDelegate.h"

#include "core/app/Log.h"
#include "core/app/Callsign.h"
#include "core/app/Number.h"
#include "core/app/Placement.h"
#include "core/app/TextFile.h"
#include "core/lists/ListEditing.h"
#include "core/lists/ListFile.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLockFile>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaMethod>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QSettings>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace marvik::gui {

namespace {

constexpr int kTwips = app::Placement::kTwipsPerPixel;
const QString kExpandCaption = QStringLiteral("  Expand  ");
const QString kCollapseCaption = QStringLiteral("  Collapse  ");
constexpr int kNormalMaxWidth = 614;
constexpr int kExpandedWidth = 935;
// The heading frame's top edge in the window's client area.
constexpr int kHeadingTop = 60;

// Column edges in pixels; the heading frame and the grid columns share them.
const QList<int> kNormalEdges{0, 68, 168, 205, 445};
const QList<int> kExpandedEdges{0, 68, 168, 205, 372, 572, 799};
// The expanded view's last column, Country, runs from its edge to the window's.
constexpr int kCountryWidth = 935 - 799;

const QColor kButtonColour(170, 197, 255);

// The source table's names: the menu captions, and the settings keys of
// their domain names, which are the labels of the Database menu.

void setAlarmLook(QLabel *label, bool alarm)
{
    QPalette pal = label->palette();
    pal.setColor(QPalette::Window, alarm ? QColor(255, 0, 0) : QColor(Qt::white));
    pal.setColor(QPalette::WindowText, alarm ? QColor(Qt::white) : QColor(Qt::black));
    label->setPalette(pal);
}

void colourButton(QPushButton *button)
{
    QPalette pal = button->palette();
    pal.setColor(QPalette::Button, kButtonColour);
    pal.setColor(QPalette::ButtonText, Qt::black);
    button->setPalette(pal);
    button->setAutoFillBackground(true);
}

} // namespace

MainWindow::MainWindow(const QString &dataDir, QSettings *store, QWidget *parent)
    : QMainWindow(parent)
    , m_data(dataDir)
    , m_store(store)
{
    if (!m_store) {
        m_ownStore = std::make_unique<QSettings>(QStringLiteral("Marvik"), QStringLiteral("Marvik"));
        m_store = m_ownStore.get();
    }
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(QString::fromUtf16(app::kVersionText));
    buildControls();
    buildMenus();
}

MainWindow::~MainWindow() = default;

QAction *MainWindow::named(QAction *action, const QString &name)
{
    action->setObjectName(name);
    return action;
}

QMenu *MainWindow::namedMenu(QMenu *menu, const QString &name)
{
    menu->setObjectName(name);
    menu->menuAction()->setObjectName(name);
    return menu;
}

void MainWindow::buildMenus()
{
    QMenuBar *bar = menuBar();

    m_mnuDatabase = namedMenu(bar->addMenu(QStringLiteral("Database")), QStringLiteral("mnuDatabase"));
    for (int i = 0; i < 7; ++i) {
        QAction *a = named(m_mnuDatabase->addAction(lookup::sourceTable()[std::size_t(i)].caption.toString()),
                           QStringLiteral("mnuSource%1").arg(i));
        a->setCheckable(true);
        connect(a, &QAction::triggered, this, [this, i] { chooseSource(i); });
        m_mnuSource[std::size_t(i)] = a;
    }
    named(m_mnuDatabase->addSeparator(), QStringLiteral("mnuSepLogin"));
    m_mnuLogin = named(m_mnuDatabase->addAction(QStringLiteral("Log in")), QStringLiteral("mnuLogin"));
    connect(m_mnuLogin, &QAction::triggered, this, &MainWindow::loginRequested);

    m_mnuExpand = named(bar->addAction(kExpandCaption), QStringLiteral("mnuExpand"));
    connect(m_mnuExpand, &QAction::triggered, this, &MainWindow::expandClicked);

    QMenu *setup = namedMenu(bar->addMenu(QStringLiteral("Setup")), QStringLiteral("mnuSetup"));
    m_mnuAdd = named(setup->addAction(QStringLiteral("Manually add or edit data")), QStringLiteral("mnuAdd"));
    connect(m_mnuAdd, &QAction::triggered, this, [this] { emit addEditRequested(-1); });
    m_mnuLatLon = named(setup->addAction(QStringLiteral("Lat & Lon")), QStringLiteral("mnuLatLon"));
    connect(m_mnuLatLon, &QAction::triggered, this, &MainWindow::setupRequested);
    m_mnuDB = namedMenu(setup->addMenu(QStringLiteral("Default database")), QStringLiteral("mnuDB"));
    for (int i = 0; i < 7; ++i) {
        QAction *a = named(m_mnuDB->addAction(lookup::sourceTable()[std::size_t(i)].caption.toString()),
                           QStringLiteral("mnuDefaultDB%1").arg(i));
        a->setCheckable(true);
        connect(a, &QAction::triggered, this, [this, i] { chooseDefaultDatabase(i); });
        m_mnuDefaultDB[std::size_t(i)] = a;
    }
    // On opening, the check mark follows the default, not the current source.
    connect(m_mnuDB, &QMenu::aboutToShow, this, [this] {
        for (int i = 0; i < 7; ++i)
            m_mnuDefaultDB[std::size_t(i)]->setChecked(i == m_settings.defaultDatabase);
    });
    QAction *names = named(setup->addAction(QStringLiteral("Change list names")), QStringLiteral("mnuNames"));
    connect(names, &QAction::triggered, this, &MainWindow::changeListNames);
    m_mnuOnTop = named(setup->addAction(QStringLiteral("Always on top")), QStringLiteral("mnuOnTop"));
    m_mnuOnTop->setCheckable(true);
    connect(m_mnuOnTop, &QAction::triggered, this, &MainWindow::toggleOnTop);
    QMenu *lan = namedMenu(setup->addMenu(QStringLiteral("Language")), QStringLiteral("mnuLan"));
    const QStringList languages{QStringLiteral("English"), QStringLiteral("Spanish"), QStringLiteral("German"),
                                QStringLiteral("French"), QStringLiteral("Dutch")};
    for (int i = 0; i < 5; ++i) {
        QAction *a = named(lan->addAction(languages[i]), QStringLiteral("mnuLang%1").arg(i));
        a->setCheckable(true);
        connect(a, &QAction::triggered, this, [this, i] {
            for (int k = 0; k < 5; ++k)
                m_mnuLang[std::size_t(k)]->setChecked(k == i);
            m_settings.language = qint16(i);
            emit languageRequested(i);
        });
        m_mnuLang[std::size_t(i)] = a;
    }

    QAction *help = named(bar->addAction(QStringLiteral("Help")), QStringLiteral("mnuHelp"));
    connect(help, &QAction::triggered, this, &MainWindow::showHelp);
    QAction *about = named(bar->addAction(QStringLiteral("About")), QStringLiteral("mnuAbout"));
    connect(about, &QAction::triggered, this, &MainWindow::showAbout);

    // The two context menus are invisible menu-bar entries, opened from the grid.
    m_mnuPopup = namedMenu(bar->addMenu(QStringLiteral("Popup")), QStringLiteral("mnuPopup"));
    m_mnuPopup->menuAction()->setVisible(false);
    m_mnuShowPic = named(m_mnuPopup->addAction(QStringLiteral("Show image")), QStringLiteral("mnuShowPic"));
    connect(m_mnuShowPic, &QAction::triggered, this, [this] {
        if (currentRow() >= 0)
            emit pictureRequested(currentRow(), false);
    });
    m_mnuName = named(m_mnuPopup->addAction(QStringLiteral("Name")), QStringLiteral("mnuName"));
    connect(m_mnuName, &QAction::triggered, this, &MainWindow::changeFirstName);
    named(m_mnuPopup->addSeparator(), QStringLiteral("mnuSep0"));
    const QStringList views{QStringLiteral("Google Street View (if available)"),
                            QStringLiteral("Google satellite view")};
    for (int i = 0; i < 2; ++i) {
        QAction *a = named(m_mnuPopup->addAction(views[i]), QStringLiteral("mnuStView%1").arg(i));
        connect(a, &QAction::triggered, this, [this, i] {
            if (currentRow() >= 0)
                emit streetViewRequested(currentRow(), i);
        });
        m_mnuStView[std::size_t(i)] = a;
    }
    named(m_mnuPopup->addSeparator(), QStringLiteral("mnuSep1"));
    m_mnuAddNew = named(m_mnuPopup->addAction(QStringLiteral("Manually add new callsign")), QStringLiteral("mnuAddNew"));
    connect(m_mnuAddNew, &QAction::triggered, this, [this] { emit addEditRequested(-1); });
    m_mnuManUpdate = named(m_mnuPopup->addAction(QStringLiteral("Update Manually")), QStringLiteral("mnuManUpdate"));
    connect(m_mnuManUpdate, &QAction::triggered, this, [this] {
        if (currentRow() >= 0)
            emit addEditRequested(currentRow());
    });
    m_mnuUpdate = named(m_mnuPopup->addAction(QStringLiteral("Update")), QStringLiteral("mnuUpdate"));
    connect(m_mnuUpdate, &QAction::triggered, this, [this] {
        if (currentRow() >= 0)
            emit updateRequested(currentRow());
    });
    named(m_mnuPopup->addSeparator(), QStringLiteral("mnuSep2"));
    m_mnu3 = named(m_mnuPopup->addAction(QStringLiteral("Delete")), QStringLiteral("mnu3"));
    connect(m_mnu3, &QAction::triggered, this, &MainWindow::deleteEntry);
    m_mnuClear = named(m_mnuPopup->addAction(QStringLiteral("Delete all entries in list")), QStringLiteral("mnuClear"));
    connect(m_mnuClear, &QAction::triggered, this, &MainWindow::clearList);
    m_mnuAddCall = namedMenu(m_mnuPopup->addMenu(QStringLiteral("Add xxx to")), QStringLiteral("mnuAddCall"));
    for (int k = 1; k <= 5; ++k) {
        QAction *a = named(m_mnuAddCall->addAction(QStringLiteral("List %1").arg(k)), QStringLiteral("mnuAddTo%1").arg(k));
        connect(a, &QAction::triggered, this, [this, k] { addTo(k); });
        m_mnuAddTo[std::size_t(k - 1)] = a;
    }
    m_mnuAddAll = namedMenu(m_mnuPopup->addMenu(QStringLiteral("Add all to")), QStringLiteral("mnuAddAll"));
    for (int k = 1; k <= 5; ++k) {
        QAction *a =
            named(m_mnuAddAll->addAction(QStringLiteral("List %1").arg(k)), QStringLiteral("mnuAddAllTo%1").arg(k));
        connect(a, &QAction::triggered, this, [this, k] { addAllTo(k); });
        m_mnuAddAllTo[std::size_t(k - 1)] = a;
    }
    named(m_mnuPopup->addSeparator(), QStringLiteral("mnuSep3"));
    m_mnu4 = named(m_mnuPopup->addAction(QStringLiteral("Paste list text to EasyPal Tx window")), QStringLiteral("mnu4"));
    connect(m_mnu4, &QAction::triggered, this, &MainWindow::pasteListRequested);
    m_mnu5 = named(m_mnuPopup->addAction(QStringLiteral("Copy list to clipboard")), QStringLiteral("mnu5"));
    connect(m_mnu5, &QAction::triggered, this, &MainWindow::copyListRequested);
    m_mnu6 = named(m_mnuPopup->addAction(QStringLiteral("Print list")), QStringLiteral("mnu6"));
    connect(m_mnu6, &QAction::triggered, this, &MainWindow::printListRequested);

    m_mnuPopup2 = namedMenu(bar->addMenu(QStringLiteral("Popup")), QStringLiteral("mnuPopup2"));
    m_mnuPopup2->menuAction()->setVisible(false);
    m_mnuAddNew2 =
        named(m_mnuPopup2->addAction(QStringLiteral("Manually add new callsign")), QStringLiteral("mnuAddNew2"));
    connect(m_mnuAddNew2, &QAction::triggered, this, [this] { emit addEditRequested(-1); });
}

void MainWindow::buildControls()
{
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("picInner"));
    setCentralWidget(central);

    m_txtCall = new QLineEdit(central);
    m_txtCall->setObjectName(QStringLiteral("txtCall"));
    m_txtCall->setPlaceholderText(QStringLiteral("Callsign"));
    connect(m_txtCall, &QLineEdit::returnPressed, this, &MainWindow::getCall);

    m_cmdGet = new QPushButton(QStringLiteral("Get"), central);
    m_cmdGet->setObjectName(QStringLiteral("cmdGet"));
    connect(m_cmdGet, &QPushButton::clicked, this, &MainWindow::getCall);
    m_cmdMap = new QPushButton(QStringLiteral("Map"), central);
    m_cmdMap->setObjectName(QStringLiteral("cmdMap"));
    connect(m_cmdMap, &QPushButton::clicked, this, [this] { emit mapRequested(currentRow()); });
    for (QPushButton *b : {m_cmdGet, m_cmdMap})
        b->setFocusPolicy(Qt::TabFocus);

    m_cboList = new QComboBox(central);
    m_cboList->setObjectName(QStringLiteral("cboList"));
    m_cboList->setFocusPolicy(Qt::TabFocus);
    for (int n = 1; n <= 5; ++n)
        m_cboList->addItem(QString());
    connect(m_cboList, &QComboBox::activated, this, &MainWindow::listSwitch);

    const QStringList sorts{QStringLiteral("Sort by callsign"), QStringLiteral("Sort by date/time")};
    for (int i = 0; i < 2; ++i) {
        auto *opt = new QRadioButton(sorts[i], central);
        opt->setObjectName(QStringLiteral("optSort%1").arg(i));
        opt->setFocusPolicy(Qt::TabFocus);
        connect(opt, &QRadioButton::clicked, this, [this, i] { optSortClicked(i); });
        m_optSort[std::size_t(i)] = opt;
    }

    m_lblStatus = new QLabel(central);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->setAutoFillBackground(true);
    m_lblStatus->setAlignment(Qt::AlignCenter);
    QFont bold = m_lblStatus->font();
    bold.setBold(true);
    m_lblStatus->setFont(bold);
    setAlarmLook(m_lblStatus, false);
    m_lblStatus->hide();

    m_picProgress = new QProgressBar(central);
    m_picProgress->setObjectName(QStringLiteral("picProgress"));
    m_picProgress->setTextVisible(false);
    m_picProgress->setFocusPolicy(Qt::NoFocus);
    m_picProgress->setToolTip(QStringLiteral("Downloading the operator's picture"));
    m_picProgress->hide();

    m_heading = new HeadingBar(central);

    m_stack = new QStackedWidget(central);
    auto *delegate = new ThumbnailDelegate(this);
    for (int n = 1; n <= 5; ++n) {
        auto *model = new lists::CallListModel(this);
        model->setObjectName(QStringLiteral("List%1").arg(n));
        auto *grid = new ListGrid(m_stack);
        grid->setObjectName(QStringLiteral("Grid%1").arg(n));
        grid->setModel(model);
        grid->setItemDelegate(delegate);
        connect(grid, &ListGrid::mouseUp, this, &MainWindow::gridMouseUp);
        m_stack->addWidget(grid);
        m_models[std::size_t(n - 1)] = model;
        m_grids[std::size_t(n - 1)] = grid;
    }

    const int intervals[] = {250, 0, 4000, 12000};
    for (int i = 0; i < 4; ++i) {
        auto *t = new QTimer(this);
        t->setObjectName(QStringLiteral("Timer%1").arg(i + 1));
        t->setInterval(intervals[i]);
        m_timers[std::size_t(i)] = t;
    }
    // Timer3 puts the status line away; Timer4 is the lookup time-out, which
    // the lookup connects.
    m_timers[2]->setSingleShot(true);
    m_timers[3]->setSingleShot(true);
    connect(m_timers[0], &QTimer::timeout, this, &MainWindow::blinkTick);
    connect(m_timers[2], &QTimer::timeout, this, &MainWindow::statusToRest);

    applyView();
}

// ---------------------------------------------------------------- start-up

bool MainWindow::startUp()
{
    m_starting = true;
    setMinimumSize(300, 200);
    setMaximumWidth(m_maxWindowWidth);

    // One Marvik per data folder: two would overwrite each other's lists at exit.
    QDir().mkpath(m_data.path());
    m_lock = std::make_unique<QLockFile>(m_data.filePath(QStringLiteral("Marvik.lock")));
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock(0)) {
        if (m_lock->error() == QLockFile::LockFailedError) {
            QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"),
                            QStringLiteral("Another instance of Marvik is running"), QMessageBox::Ok, this);
            box.exec();
            m_lock.reset();
            return false;
        }
        qCWarning(lcApp) << "cannot lock the data folder" << m_data.path() << m_lock->error();
    }

    QString why;
    if (!m_data.ensureCreated(app::shareFolder(), &why))
        qCWarning(lcApp) << why;

    const app::Placement place = app::Placement::load(*m_store);
    move(place.left / kTwips, place.top / kTwips);
    resize(place.width / kTwips, place.height / kTwips);

    m_data.ensureImageFolders();

    m_settings.maps.clear();
    for (const QString &name : m_data.scanMaps())
        m_settings.maps.append(app::MapRow{name, {}, {}});

    readConfiguration();

    applyAlwaysOnTop();

    m_stack->setCurrentIndex(m_settings.currentList - 1);
    if (m_settings.defaultDatabase == -1)
        m_settings.defaultDatabase = 0;
    if (m_settings.defaultDatabase < 0 || m_settings.defaultDatabase > 6)
        m_settings.defaultDatabase = 0;
    m_mnuDefaultDB[std::size_t(m_settings.defaultDatabase)]->setChecked(true);
    chooseSource(m_settings.defaultDatabase);

    const int language = std::clamp<int>(m_settings.language, 0, 4);
    for (int i = 0; i < 5; ++i)
        m_mnuLang[std::size_t(i)]->setChecked(i == language);
    colourButton(m_cmdGet);
    colourButton(m_cmdMap);
    refreshHookStates();

    m_starting = false;

    for (int n = 1; n <= 5; ++n) {
        QString &name = m_settings.listNames[std::size_t(n - 1)];
        if (name.isEmpty())
            name = lists::defaultListName(m_texts[i18n::TextId::ListWord], n);
        refreshChooserLine(n);
    }

    m_cboList->setCurrentIndex(m_settings.currentList - 1);
    switchToList(m_settings.currentList - 1, true);
    reportDamagedLists();
    return true;
}

void MainWindow::readConfiguration()
{
    const app::ConfigReadStatus status = app::readConfig(m_data.configFile(), m_settings);
    if (status == app::ConfigReadStatus::Unreadable)
        qCWarning(lcApp) << "cannot read" << m_data.configFile();
    m_optSort[m_settings.sortMode == 0 ? 0 : 1]->setChecked(true);
    if (m_settings.currentList < 1 || m_settings.currentList > 5)
        m_settings.currentList = 1;
    for (int n = 1; n <= 5; ++n) {
        if (!QFileInfo::exists(m_data.listFile(n)))
            continue;
        if (n == m_settings.currentList) {
            loadList(n, false);
        } else {
            // Large lists would keep the window from showing; the chooser
            // needs only their line counts until they are read.
            QFile file(m_data.listFile(n));
            m_pending[std::size_t(n - 1)] = true;
            m_pendingRows[std::size_t(n - 1)] =
                file.open(QIODevice::ReadOnly) ? int(app::countLines(file.readAll())) : 0;
        }
    }
}

void MainWindow::loadPendingList(int n)
{
    if (n < 1 || n > 5 || !m_pending[std::size_t(n - 1)])
        return;
    m_pending[std::size_t(n - 1)] = false;
    loadList(n, false);
    refreshChooserLine(n);
}

void MainWindow::loadPendingLists()
{
    for (int n = 1; n <= 5; ++n)
        loadPendingList(n);
    reportDamagedLists();
}

bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::Paint && std::any_of(m_pending.begin(), m_pending.end(), [](bool p) { return p; }))
        QTimer::singleShot(0, this, &MainWindow::loadPendingLists);
    return QMainWindow::event(event);
}

void MainWindow::loadList(int n, bool sorting)
{
    const QString path = m_data.listFile(n);
    const QFileInfo before(path);
    m_pending[std::size_t(n - 1)] = false;
    const lists::LoadReport report =
        lists::loadList(*m_models[std::size_t(n - 1)], path, loadContext(), m_settings.sortMode, sorting);
    m_loaded[std::size_t(n - 1)] = {before.size(), before.lastModified(), report.complete()};
    if (report.complete())
        return;
    // Each damaged file is copied aside and reported once per run, not at
    // every switch to its list.
    const QString key = path + QString::number(QFileInfo(path).size());
    if (m_reportedDamage.contains(key))
        return;
    m_reportedDamage.insert(key);
    if (!report.opened) {
        m_damaged.append(QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), report.errorString));
        return;
    }
    const QString copy = lists::keepDamagedCopy(path);
    QString line = QStringLiteral("%1, line %2: fewer than eleven fields; the rest of the file was not loaded.")
                       .arg(QDir::toNativeSeparators(path))
                       .arg(report.badLine);
    if (!copy.isEmpty())
        line += QStringLiteral(" The whole file was kept as %1.").arg(QDir::toNativeSeparators(copy));
    m_damaged.append(line);
}

void MainWindow::reportDamagedLists()
{
    if (m_damaged.isEmpty())
        return;
    const QString text = QStringLiteral("A list file is damaged:\n\n") + m_damaged.join(QStringLiteral("\n\n"));
    m_damaged.clear();
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"), text, QMessageBox::Ok, this);
    box.exec();
}

lists::LoadContext MainWindow::loadContext() const
{
    lists::LoadContext ctx;
    ctx.me = m_settings.me;
    ctx.thumbsDir = m_data.thumbsDir();
    return ctx;
}

void MainWindow::applyAlwaysOnTop()
{
    const bool onTop = m_settings.alwaysOnTop == 1;
    m_mnuOnTop->setChecked(onTop);
    if (bool(windowFlags() & Qt::WindowStaysOnTopHint) == onTop)
        return;
    const bool wasVisible = isVisible();
    const QPoint pos = this->pos();
    const QSize size = this->size();
    setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    move(pos);
    resize(size);
    if (wasVisible) {
        // Shown again without taking the focus from where it is.
        setAttribute(Qt::WA_ShowWithoutActivating, true);
        show();
        setAttribute(Qt::WA_ShowWithoutActivating, false);
    }
}

// ---------------------------------------------------------------- shut-down

void MainWindow::closeEvent(QCloseEvent *event)
{
    shutDown();
    event->accept();
}

void MainWindow::shutDown()
{
    if (m_shutDown || !m_lock)
        return;
    m_shutDown = true;
    m_timers[0]->stop();
    emit closingDown();

    if (!expanded() && !(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen))) {
        app::Placement place;
        place.left = x() * kTwips;
        place.top = y() * kTwips;
        place.width = width() * kTwips;
        place.height = height() * kTwips;
        place.save(*m_store);
        m_store->sync();
    }

    m_settings.currentList = qint16(currentList());
    QString why;
    if (!app::writeConfig(m_data.configFile(), m_settings, &why))
        tellWriteFailure(m_data.configFile(), why);
    for (int n = 1; n <= 5; ++n)
        saveList(n);
    m_data.rotateIni();
    const QString install = app::installationFolder();
    app::removeFolder(install + QStringLiteral("/Maps"), install);
    m_lock->unlock();
}

void MainWindow::tellWriteFailure(const QString &file, const QString &why)
{
    qCWarning(lcApp) << "cannot write" << file << why;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"),
                    QStringLiteral("%1 could not be written:\n%2").arg(QDir::toNativeSeparators(file), why),
                    QMessageBox::Ok, this);
    box.exec();
}

// ---------------------------------------------------------------- lists

int MainWindow::currentList() const
{
    return m_stack->currentIndex() + 1;
}

lists::CallListModel *MainWindow::model(int list) const
{
    if (list < 1 || list > 5)
        return nullptr;
    if (m_pending[std::size_t(list - 1)])
        const_cast<MainWindow *>(this)->loadPendingList(list);
    return m_models[std::size_t(list - 1)];
}

ListGrid *MainWindow::grid(int list) const
{
    return list >= 1 && list <= 5 ? m_grids[std::size_t(list - 1)] : nullptr;
}

int MainWindow::currentRow() const
{
    const QModelIndex current = grid(currentList())->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void MainWindow::setCurrentRow(int row)
{
    ListGrid *g = grid(currentList());
    if (row < 0 || row >= g->model()->rowCount())
        return;
    g->setCurrentIndex(g->model()->index(row, int(lists::Column::Callsign)));
    g->selectRow(row);
}

void MainWindow::sortGrid(int n, qint16 &selector)
{
    if (m_starting || !model(n))
        return;
    model(n)->sortList(selector);
}

bool MainWindow::saveList(int n)
{
    QString why;
    if (lists::saveList(*model(n), m_data.listFile(n), &why))
        return true;
    tellWriteFailure(m_data.listFile(n), why);
    return false;
}

void MainWindow::refreshChooserLine(int n)
{
    const int rows = m_pending[std::size_t(n - 1)] ? m_pendingRows[std::size_t(n - 1)] : model(n)->rowCount();
    m_cboList->setItemText(n - 1, lists::chooserLine(m_settings.listNames[std::size_t(n - 1)], rows));
}

void MainWindow::listChanged(int n)
{
    sortGrid(n, m_settings.sortMode);
    saveList(n);
    refreshChooserLine(n);
}

void MainWindow::optSortClicked(int index)
{
    if (m_starting)
        return;
    m_txtCall->setFocus();
    const int k = currentList();
    m_settings.sortMode = qint16(index);
    // A copy: the option leaves the sort mode at 0 or 1, whatever the sort does.
    qint16 selector = qint16(index);
    sortGrid(k, selector);
    grid(k)->setTopRow(0);
}

void MainWindow::listSwitch(int index)
{
    switchToList(index, false);
}

void MainWindow::switchToList(int index, bool atStartUp)
{
    if (m_starting || index < 0 || index > 4)
        return;
    m_stack->setCurrentIndex(index);
    const int n = index + 1;
    const QFileInfo file(m_data.listFile(n));
    if (file.exists()) {
        // The first switch follows the load of every list at once; when the
        // file is as it was then, reading it again would give the same rows,
        // so only the sort that the load skipped is done.
        const LoadedFile &loaded = m_loaded[std::size_t(index)];
        if (atStartUp && loaded.complete && loaded.size == file.size() && loaded.modified == file.lastModified())
            sortGrid(n, m_settings.sortMode);
        else
            loadList(n, !m_starting);
    }
    reportDamagedLists();
    m_txtCall->setFocus();
}

// ---------------------------------------------------------------- views

bool MainWindow::expanded() const
{
    return m_mnuExpand && m_mnuExpand->text() == kCollapseCaption;
}

void MainWindow::expandClicked()
{
    if (!expanded()) {
        m_normalWidthTwips = width() * kTwips;
        m_mnuExpand->setText(kCollapseCaption);
        m_maxWindowWidth = kExpandedWidth;
        setMaximumWidth(m_maxWindowWidth);
        resize(kExpandedWidth, height());
    } else {
        m_mnuExpand->setText(kExpandCaption);
        m_maxWindowWidth = kNormalMaxWidth;
        setMaximumWidth(m_maxWindowWidth);
        resize(m_normalWidthTwips / kTwips, height());
    }
    applyView();
}

void MainWindow::applyView()
{
    const QList<int> &edges = expanded() ? kExpandedEdges : kNormalEdges;
    // Columns beyond the edges keep the expanded widths in the normal view,
    // so a wider window shows the address as the grid did.
    for (ListGrid *g : m_grids) {
        for (int c = 0; c < lists::kColumnCount; ++c) {
            int w = 0;
            if (c + 1 < edges.size())
                w = edges[c + 1] - edges[c];
            else if (c + 1 < kExpandedEdges.size())
                w = kExpandedEdges[c + 1] - kExpandedEdges[c];
            else if (c == int(lists::Column::Country))
                w = kCountryWidth;
            g->setColumnHidden(c, w == 0);
            if (w)
                g->setColumnWidth(c, w);
        }
    }
    m_heading->setEdges(expanded() ? edges + QList<int>{kExpandedWidth} : edges);
    layoutControls();
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (!expanded() && m_maxWindowWidth != kNormalMaxWidth) {
        m_maxWindowWidth = kNormalMaxWidth;
        setMaximumWidth(m_maxWindowWidth);
    }
    layoutControls();
}

void MainWindow::layoutControls()
{
    QWidget *c = centralWidget();
    const int w = c->width();
    const int h = c->height();
    const int rowHeight = std::max(24, m_txtCall->sizeHint().height());
    const int y1 = 5;
    const int y2 = y1 + rowHeight + 3;
    m_txtCall->setGeometry(4, y1, 110, rowHeight);
    m_cmdGet->setGeometry(118, y1, 52, rowHeight);
    m_cmdMap->setGeometry(174, y1, 52, rowHeight);
    m_cboList->setGeometry(232, y1, std::clamp(w - 236, 60, 240), rowHeight);
    const int progressLeft = m_cboList->geometry().right() + 8;
    m_picProgress->setGeometry(progressLeft, y1 + rowHeight / 4, std::max(30, w - progressLeft - 6), rowHeight / 2);

    const int opt0 = m_optSort[0]->sizeHint().width();
    m_optSort[0]->setGeometry(6, y2, opt0, rowHeight);
    m_optSort[1]->setGeometry(6 + opt0 + 16, y2, m_optSort[1]->sizeHint().width(), rowHeight);
    // The status line takes the place of the sort options (the chooser
    // hides with them).
    m_lblStatus->setGeometry(4, y2, w - 8, rowHeight);

    const int top = std::max(kHeadingTop, y2 + rowHeight + 3);
    m_heading->setGeometry(0, top, w, HeadingBar::kHeight);
    m_stack->setGeometry(0, top + HeadingBar::kHeight, w, std::max(0, h - top - HeadingBar::kHeight));
}

// ---------------------------------------------------------------- grid mouse

void MainWindow::gridMouseUp(Qt::MouseButton button, QPoint pos)
{
    auto *g = qobject_cast<ListGrid *>(sender());
    if (!g || g != grid(currentList()))
        return;
    const int rows = g->model()->rowCount();
    if (rows == 0) {
        if (button == Qt::RightButton) {
            m_mnuAddNew2->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::addEditRequested)));
            m_mnuPopup2->popup(g->viewport()->mapToGlobal(pos));
        }
        return;
    }
    int row = g->rowAt(pos.y());
    if (row < 0)
        row = rows - 1;
    setCurrentRow(row);

    const lists::CallRecord &record = currentModel()->record(row);
    if (lists::inThumbnailZone(pos.x() * kTwips) && !record.thumbnail.isEmpty())
        emit pictureRequested(row, true);
    emit currentRowChanged(row);

    if (button == Qt::RightButton) {
        preparePopup(row);
        m_mnuPopup->popup(g->viewport()->mapToGlobal(pos));
    }
    m_txtCall->setFocus();
}

void MainWindow::preparePopup(int row)
{
    const lists::CallRecord &record = currentModel()->record(row);
    const QString &call = record[lists::Column::Callsign];
    m_mnuName->setText(i18n::fillIn(m_texts[i18n::TextId::MenuName], call));
    m_mnuAddCall->menuAction()->setText(i18n::fillIn(m_texts[i18n::TextId::MenuAddCall], call));
    m_mnuUpdate->setText(i18n::fillIn(m_texts[i18n::TextId::MenuUpdate], call, m_sourceLabel));
    m_mnuManUpdate->setText(i18n::fillIn(m_texts[i18n::TextId::MenuManUpdate], call));
    m_mnuStView[0]->setText(i18n::fillIn(m_texts[i18n::TextId::MenuStreetView], call));
    m_mnuStView[1]->setText(i18n::fillIn(m_texts[i18n::TextId::MenuSatelliteView], call));

    // Only the longitude decides, as it always has; the latitude is not tested.
    const bool hasLongitude = app::val(record[lists::Column::Longitude]) != 0;
    const bool views = hooked(QMetaMethod::fromSignal(&MainWindow::streetViewRequested));
    for (QAction *a : m_mnuStView)
        a->setEnabled(hasLongitude && views);

    for (int k = 1; k <= 5; ++k) {
        for (QAction *a : {m_mnuAddTo[std::size_t(k - 1)], m_mnuAddAllTo[std::size_t(k - 1)]}) {
            a->setText(m_cboList->itemText(k - 1));
            a->setVisible(k != currentList());
        }
    }
    m_mnuShowPic->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::pictureRequested)));
    const bool edit = hooked(QMetaMethod::fromSignal(&MainWindow::addEditRequested));
    m_mnuAddNew->setEnabled(edit);
    m_mnuManUpdate->setEnabled(edit);
    m_mnuUpdate->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::updateRequested)));
    m_mnu4->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::pasteListRequested)));
    m_mnu5->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::copyListRequested)));
    m_mnu6->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::printListRequested)));
}

bool MainWindow::hooked(const QMetaMethod &signal) const
{
    return isSignalConnected(signal);
}

void MainWindow::connectNotify(const QMetaMethod &signal)
{
    QMainWindow::connectNotify(signal);
    if (signal.enclosingMetaObject() == &MainWindow::staticMetaObject)
        QMetaObject::invokeMethod(this, &MainWindow::refreshHookStates, Qt::QueuedConnection);
}

void MainWindow::refreshHookStates()
{
    m_cmdMap->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::mapRequested)));
    m_mnuAdd->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::addEditRequested)));
    m_mnuLatLon->setEnabled(hooked(QMetaMethod::fromSignal(&MainWindow::setupRequested)));
    m_mnuLogin->setEnabled(lookup::isOnline(m_currentSource) && hooked(QMetaMethod::fromSignal(&MainWindow::loginRequested)));
    m_mnuLogin->setText(i18n::fillIn(m_texts[i18n::TextId::MenuLogin], QString(), m_sourceLabel));
    const bool languages = hooked(QMetaMethod::fromSignal(&MainWindow::languageRequested));
    for (QAction *a : m_mnuLang)
        a->setEnabled(languages);
}

// ---------------------------------------------------------------- keys

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_F8) {
        pasteCallsign();
        event->accept();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void MainWindow::pasteCallsign()
{
    m_txtCall->setText(callsign::fromClipboard(QGuiApplication::clipboard()->text()));
    getCall();
}

// ---------------------------------------------------------------- Get and the status line

void MainWindow::getCall()
{
    const QString call = callsign::forLookup(m_txtCall->text());
    if (call.isEmpty())
        return;
    lists::CallListModel *m = currentModel();
    const int row = m->findCallsign(call);
    if (row >= 0) {
        if (m_timers[0]->isActive()) {
            m_timers[0]->stop();
            model(m_blinkList)->setCellBackground(m_blinkRow, lists::Column::Callsign, m_blinkSavedColour);
        }
        setCurrentRow(row);
        grid(currentList())->scrollTo(m->index(row, lists::Column::Callsign));
        m_blinkList = currentList();
        m_blinkRow = row;
        m_blinkSavedColour = m->record(row).callsignBack;
        m_blinkCount = 0;
        m_timers[0]->start();
        return;
    }
    if (!lookup::isOnline(m_currentSource)) {
        showStatusAlarm(m_texts[i18n::TextId::NoOnlineSource]);
        return;
    }
    if (!hooked(QMetaMethod::fromSignal(&MainWindow::lookupRequested))) {
        showStatusAlarm(m_texts[i18n::TextId::NoOnlineSource]);
        return;
    }
    emit lookupRequested(call);
}

void MainWindow::blinkTick()
{
    setAlarmLook(m_lblStatus, true);
    m_lblStatus->setText(m_texts[i18n::TextId::AlreadyInList]);
    m_lblStatus->show();
    m_cboList->hide();
    for (QRadioButton *o : m_optSort)
        o->hide();

    ++m_blinkCount;
    lists::CallListModel *m = model(m_blinkList);
    m->setCellBackground(m_blinkRow, lists::Column::Callsign, m_blinkCount % 2 ? lists::kBlinkColour : m_blinkSavedColour);
    if (m_blinkCount >= 20) {
        m_timers[0]->stop();
        m_lblStatus->hide();
        m_cboList->show();
        for (QRadioButton *o : m_optSort)
            o->show();
        m->setCellBackground(m_blinkRow, lists::Column::Callsign, m_blinkSavedColour);
        setAlarmLook(m_lblStatus, false);
    }
}

void MainWindow::showStatusAlarm(const QString &text, bool beep)
{
    setAlarmLook(m_lblStatus, true);
    m_lblStatus->setText(text);
    m_lblStatus->show();
    m_cboList->hide();
    for (QRadioButton *o : m_optSort)
        o->hide();
    m_txtCall->setFocus();
    if (beep)
        QApplication::beep();
    m_timers[2]->start();
}

void MainWindow::statusToRest()
{
    m_timers[2]->stop();
    setAlarmLook(m_lblStatus, false);
    m_lblStatus->setText(QString());
    m_lblStatus->hide();
    m_cboList->show();
    for (QRadioButton *o : m_optSort)
        o->show();
}

void MainWindow::setDatabaseCaption(const QString &caption)
{
    m_mnuDatabase->setTitle(caption);
}

void MainWindow::showPictureProgress(qint64 done, qint64 total)
{
    // QProgressBar counts in int; large totals are scaled to thousandths.
    if (total > 0) {
        m_picProgress->setRange(0, 1000);
        m_picProgress->setValue(int(std::clamp<qint64>(done * 1000 / total, 0, 1000)));
    } else {
        m_picProgress->setRange(0, 0);
    }
    m_picProgress->show();
}

void MainWindow::hidePictureProgress()
{
    m_picProgress->hide();
    m_picProgress->reset();
}

// ---------------------------------------------------------------- sources

void MainWindow::chooseSource(int index)
{
    if (index < 0 || index > 6)
        return;
    m_currentSource = lookup::Source(index);
    for (int i = 0; i < 7; ++i)
        m_mnuSource[std::size_t(i)]->setChecked(i == index);
    m_sourceLabel = lookup::menuLabel(lookup::SourceSettings::load(*m_store), m_currentSource);
    setDatabaseCaption(m_sourceLabel);
    refreshHookStates();
    emit sourceChanged(index);
}

void MainWindow::chooseDefaultDatabase(int index)
{
    m_settings.defaultDatabase = qint16(index);
    for (int i = 0; i < 7; ++i)
        m_mnuDefaultDB[std::size_t(i)]->setChecked(i == index);
    chooseSource(index);
}

// ---------------------------------------------------------------- list editing

void MainWindow::addTo(int n)
{
    const int row = currentRow();
    if (row < 0 || !model(n))
        return;
    const lists::CallRecord source = currentModel()->record(row);
    if (!lists::copyRecordTo(source, *model(n), loadContext())) {
        const QString text = source[lists::Column::Callsign] + QStringLiteral(" already in ") +
                             lists::nameBeforeParen(m_mnuAddTo[std::size_t(n - 1)]->text());
        QMessageBox box(QMessageBox::NoIcon, QStringLiteral("Marvik"), text, QMessageBox::Ok, this);
        box.exec();
        return;
    }
    listChanged(n);
    m_txtCall->setFocus();
}

void MainWindow::addAllTo(int n)
{
    if (!model(n))
        return;
    lists::copyAllTo(*currentModel(), *model(n), loadContext());
    listChanged(n);
    m_txtCall->setFocus();
}

void MainWindow::deleteEntry()
{
    const int row = currentRow();
    if (row < 0)
        return;
    const int n = currentList();
    lists::deleteRow(*model(n), row);
    listChanged(n);
    m_txtCall->setFocus();
}

void MainWindow::clearList()
{
    const int n = currentList();
    const QString name = lists::nameBeforeParen(m_cboList->itemText(n - 1));
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"), i18n::fillIn(m_texts[i18n::TextId::ClearListPrompt], name),
                    QMessageBox::Yes | QMessageBox::No, this);
    if (box.exec() != QMessageBox::Yes)
        return;
    // The file keeps its rows until the next save.
    model(n)->clear();
    refreshChooserLine(n);
}

void MainWindow::changeFirstName()
{
    const int row = currentRow();
    if (row < 0)
        return;
    const lists::CallRecord &record = currentModel()->record(row);
    const QString call = record[lists::Column::Callsign];
    QInputDialog input(this);
    input.setWindowTitle(QStringLiteral("Marvik"));
    input.setLabelText(i18n::fillIn(m_texts[i18n::TextId::RenamePrompt], call));
    input.setTextValue(record[lists::Column::FirstName]);
    const QString answer = input.exec() == QDialog::Accepted ? input.textValue() : QString();
    if (answer.isEmpty())
        return;
    for (int n = 1; n <= 5; ++n) {
        if (lists::renameFirstName(*model(n), call, answer) > 0)
            saveList(n);
    }
}

void MainWindow::changeListNames()
{
    QStringList names;
    for (const QString &name : m_settings.listNames)
        names.append(name);
    ListNamesDialog dialog(names, this);
    dialog.exec();
    // Closed any way at all, the boxes give the names.
    const QStringList changed = dialog.names();
    for (int n = 1; n <= 5; ++n) {
        m_settings.listNames[std::size_t(n - 1)] = changed.value(n - 1);
        refreshChooserLine(n);
    }
}

// ---------------------------------------------------------------- commands

void MainWindow::toggleOnTop()
{
    m_settings.alwaysOnTop = m_settings.alwaysOnTop == 0 ? 1 : 0;
    applyAlwaysOnTop();
}

void MainWindow::showHelp()
{
    const QString path = app::shareFolder() + QStringLiteral("/Help.txt");
    if (QFileInfo::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"),
                    QStringLiteral("The help text %1 could not be opened.").arg(QDir::toNativeSeparators(path)),
                    QMessageBox::Ok, this);
    box.exec();
}

void MainWindow::showAbout()
{
    QMessageBox box(QMessageBox::Information, QStringLiteral("Marvik"), QString::fromUtf16(app::kVersionText),
                    QMessageBox::Ok, this);
    box.exec();
}

} // namespace marvik::gui
