// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/MainWindow.h"

#include "core/app/Callsign.h"
#include "core/app/Config.h"
#include "core/app/Number.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListEditing.h"
#include "core/lookup/Sources.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/lists/HeadingBar.h"
#include "gui/lists/ListGrid.h"
#include "gui/lists/ThumbnailDelegate.h"
#include "gui/widgets/ElidingLabel.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QWindow>

#include <algorithm>

namespace marvik::gui {

using i18n::TextId;

namespace {

constexpr int kTwips = app::Placement::kTwipsPerPixel;
constexpr int kNormalMaxWidth = 614;
constexpr int kExpandedWidth = 935;
// The heading frame's top edge in the window's client area.
constexpr int kHeadingTop = 60;
// Ten blinks: twenty ticks of the blink timer.
constexpr int kBlinkTicks = 20;
constexpr int kBlinkMs = 250;

// Column edges in pixels; the heading frame and the grid columns share them.
const QList<int> kNormalEdges{0, 68, 168, 205, 445};
const QList<int> kExpandedEdges{0, 68, 168, 205, 372, 572, 799};
// The expanded view's last column, Country, runs from its edge to the window's.
constexpr int kCountryWidth = 935 - 799;

const QColor kButtonColour(170, 197, 255);

/// The menu bar's look: a separator in the bar puts the menus after it at
/// the bar's right end, as Setup, Help and About always stood. Qt's menu bar
/// lays them out that way for styles that draw menu-bar separators, so this
/// style says it does; everything else is the application's style.
class MenuBarStyle : public QProxyStyle
{
public:
    MenuBarStyle()
        : QProxyStyle(QApplication::style()->name())
    {
    }
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == SH_DrawMenuBarSeparator)
            return 1;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

void colourButton(QPushButton *button)
{
    QPalette pal = button->palette();
    pal.setColor(QPalette::Button, kButtonColour);
    pal.setColor(QPalette::ButtonText, Qt::black);
    // Disabled, the face pales and the caption greys, whatever the theme:
    // the blue must not say "press me" when nothing would happen.
    pal.setColor(QPalette::Disabled, QPalette::Button, QColor(218, 224, 236));
    pal.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(128, 128, 128));
    button->setPalette(pal);
    button->setAutoFillBackground(true);
}

} // namespace

MainWindow::MainWindow(Commands &commands, const i18n::CurrentTexts &texts, Selection &selection, QWidget *parent)
    : QMainWindow(parent)
    , m_commands(commands)
    , m_texts(texts)
    , m_selection(selection)
{
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(QString::fromUtf16(app::kVersionText));
    buildControls();
    buildMenus();
    relabel();
    connect(&texts, &i18n::CurrentTexts::changed, this, &MainWindow::relabel);
    connect(&selection, &Selection::revealRequested, this, &MainWindow::reveal);
    // A list switch made by a part shows that list's grid.
    connect(&selection, &Selection::currentChanged, this, [this] {
        if (m_selection.currentList() != shownList())
            showList(m_selection.currentList());
    });
    connect(m_commands.action(QStringLiteral("mnuExpand")), &QAction::triggered, this, &MainWindow::toggleExpanded);
    m_commands.provide(QStringLiteral("mnuExpand"));
}

MainWindow::~MainWindow() = default;

QMenu *MainWindow::addMenu(QMenu *parent, const QString &name)
{
    QMenu *menu = parent ? parent->addMenu(QString()) : menuBar()->addMenu(QString());
    menu->setObjectName(name);
    menu->menuAction()->setObjectName(name);
    return menu;
}

void MainWindow::buildMenus()
{
    const auto act = [this](const QString &name) { return m_commands.action(name); };
    const auto sep = [](QMenu *menu, const char *name) {
        menu->addSeparator()->setObjectName(QLatin1String(name));
    };

    m_mnuDatabase = addMenu(nullptr, QStringLiteral("mnuDatabase"));
    for (int i = 0; i < lookup::kSourceCount; ++i) {
        QAction *a = act(indexed("mnuSource", i));
        a->setText(Commands::menuText(lookup::sourceTable()[std::size_t(i)].caption.toString()));
        m_mnuDatabase->addAction(a);
    }
    sep(m_mnuDatabase, "mnuSepLogin");
    m_mnuDatabase->addAction(act(QStringLiteral("mnuLogin")));

    menuBar()->addAction(act(QStringLiteral("mnuExpand")));
    // The third top-level menu and those after it stand at the right.
    auto *barStyle = new MenuBarStyle;
    barStyle->setParent(menuBar());
    menuBar()->setStyle(barStyle);
    menuBar()->addSeparator()->setObjectName(QStringLiteral("mnuSepRight"));

    QMenu *setup = addMenu(nullptr, QStringLiteral("mnuSetup"));
    setup->addAction(act(QStringLiteral("mnuAdd")));
    setup->addAction(act(QStringLiteral("mnuLatLon")));
    QMenu *db = addMenu(setup, QStringLiteral("mnuDB"));
    for (int i = 0; i < lookup::kSourceCount; ++i) {
        QAction *a = act(indexed("mnuDefaultDB", i));
        a->setText(Commands::menuText(lookup::sourceTable()[std::size_t(i)].caption.toString()));
        db->addAction(a);
    }
    // Callbook services.
    setup->addAction(act(QStringLiteral("mnuAccounts")));
    setup->addAction(act(QStringLiteral("mnuClearCache")));
    setup->addAction(act(QStringLiteral("mnuNames")));
    setup->addAction(act(QStringLiteral("mnuOnTop")));
    QMenu *lan = addMenu(setup, QStringLiteral("mnuLan"));
    for (int i = 0; i < 5; ++i)
        lan->addAction(act(indexed("mnuLang", i)));

    menuBar()->addAction(act(QStringLiteral("mnuHelp")));
    menuBar()->addAction(act(QStringLiteral("mnuAbout")));

    // The two context menus are invisible menu-bar entries, opened from the grid.
    m_mnuPopup = addMenu(nullptr, QStringLiteral("mnuPopup"));
    m_mnuPopup->menuAction()->setVisible(false);
    m_mnuPopup->addAction(act(QStringLiteral("mnuShowPic")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuName")));
    sep(m_mnuPopup, "mnuSep0");
    m_mnuPopup->addAction(act(QStringLiteral("mnuStView0")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuStView1")));
    sep(m_mnuPopup, "mnuSep1");
    m_mnuPopup->addAction(act(QStringLiteral("mnuAddNew")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuManUpdate")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuUpdate")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuUpdateAll"))); // lists and logs
    sep(m_mnuPopup, "mnuSep2");
    m_mnuPopup->addAction(act(QStringLiteral("mnu3")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuClear")));
    m_mnuAddCall = addMenu(m_mnuPopup, QStringLiteral("mnuAddCall"));
    for (int k = 1; k <= 5; ++k)
        m_mnuAddCall->addAction(act(indexed("mnuAddTo", k)));
    QMenu *addAll = addMenu(m_mnuPopup, QStringLiteral("mnuAddAll"));
    for (int k = 1; k <= 5; ++k)
        addAll->addAction(act(indexed("mnuAddAllTo", k)));
    sep(m_mnuPopup, "mnuSep3");
    m_mnuPopup->addAction(act(kMarkCommand));
    m_mnuPopup->addAction(act(QStringLiteral("mnu4")));
    m_mnuPopup->addAction(act(QStringLiteral("mnu5")));
    m_mnuPopup->addAction(act(QStringLiteral("mnu6")));

    m_mnuPopup2 = addMenu(nullptr, QStringLiteral("mnuPopup2"));
    m_mnuPopup2->menuAction()->setVisible(false);
    m_mnuPopup2->addAction(act(QStringLiteral("mnuAddNew2")));

    // Lists and logs.
    sep(m_mnuPopup, "mnuSepAdif");
    m_mnuPopup->addAction(act(QStringLiteral("mnuImportAdif")));
    m_mnuPopup->addAction(act(QStringLiteral("mnuExportAdif")));
    sep(m_mnuPopup2, "mnuSepAdif2");
    m_mnuPopup2->addAction(act(QStringLiteral("mnuImportAdif")));

    for (QMenu *menu : {m_mnuPopup, m_mnuPopup2, setup, m_mnuDatabase})
        connect(menu, &QMenu::aboutToShow, &m_commands, &Commands::refresh);
}

void MainWindow::buildControls()
{
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("picInner"));
    setCentralWidget(central);

    m_txtCall = new QLineEdit(central);
    m_txtCall->setObjectName(QStringLiteral("txtCall"));
    connect(m_txtCall, &QLineEdit::returnPressed, this, [this] { emit getRequested(m_txtCall->text()); });

    m_cmdGet = new QPushButton(central);
    m_cmdGet->setObjectName(QStringLiteral("cmdGet"));
    connect(m_cmdGet, &QPushButton::clicked, this, &MainWindow::getClicked);
    m_cmdMap = new QPushButton(central);
    m_cmdMap->setObjectName(QStringLiteral("cmdMap"));
    QAction *map = m_commands.action(kMapCommand);
    connect(m_cmdMap, &QPushButton::clicked, map, &QAction::trigger);
    connect(map, &QAction::enabledChanged, m_cmdMap, &QPushButton::setEnabled);
    m_cmdMap->setEnabled(map->isEnabled());
    for (QPushButton *b : {m_cmdGet, m_cmdMap}) {
        b->setFocusPolicy(Qt::TabFocus);
        colourButton(b);
    }

    m_cboList = new QComboBox(central);
    m_cboList->setObjectName(QStringLiteral("cboList"));
    m_cboList->setFocusPolicy(Qt::TabFocus);
    for (int n = 1; n <= 5; ++n)
        m_cboList->addItem(QString());
    connect(m_cboList, &QComboBox::activated, this, [this](int index) { emit listChosen(index + 1); });

    for (int i = 0; i < 2; ++i) {
        auto *opt = new QRadioButton(central);
        opt->setObjectName(QStringLiteral("optSort%1").arg(i));
        opt->setFocusPolicy(Qt::TabFocus);
        connect(opt, &QRadioButton::clicked, this, [this, i] { emit sortChosen(i); });
        m_optSort[std::size_t(i)] = opt;
    }

    m_lblStatus = new ElidingLabel(central);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->setAlignment(Qt::AlignCenter);
    QFont bold = m_lblStatus->font();
    bold.setBold(true);
    m_lblStatus->setFont(bold);
    m_status = new StatusLine(m_lblStatus, {m_cboList, m_optSort[0], m_optSort[1]}, m_txtCall, this);
    statusBar()->setObjectName(QStringLiteral("statusBar"));
    statusBar()->setSizeGripEnabled(false);
    auto *busyText = new ElidingLabel(statusBar());
    busyText->setObjectName(QStringLiteral("lblBusy"));
    auto *busyBar = new QProgressBar(statusBar());
    busyBar->setObjectName(QStringLiteral("busyIndicator"));
    busyBar->setRange(0, 0);
    busyBar->setTextVisible(false);
    busyBar->setMaximumWidth(80);
    busyBar->setMaximumHeight(12);
    statusBar()->addWidget(busyText, 1);
    statusBar()->addPermanentWidget(busyBar);
    m_status->setFoot(statusBar(), busyText, busyBar);
    connect(m_status, &StatusLine::busyChanged, this, &MainWindow::busyChanged);

    m_picProgress = new QProgressBar(central);
    m_picProgress->setObjectName(QStringLiteral("picProgress"));
    m_picProgress->setTextVisible(false);
    m_picProgress->setFocusPolicy(Qt::NoFocus);
    m_picProgress->hide();

    m_heading = new HeadingBar(central);
    m_stack = new QStackedWidget(central);
    auto *delegate = new ThumbnailDelegate(this);
    for (int n = 1; n <= 5; ++n) {
        auto *grid = new ListGrid(m_stack);
        grid->setObjectName(QStringLiteral("Grid%1").arg(n));
        grid->setItemDelegate(delegate);
        connect(grid, &ListGrid::mouseUp, this, &MainWindow::gridMouseUp);
        connect(grid, &ListGrid::spacePressed, this, [this] {
            QAction *mark = m_commands.action(kMarkCommand);
            if (mark->isEnabled())
                mark->trigger();
        });
        connect(grid, &ListGrid::rowActivated, this, &MainWindow::activateRow);
        connect(grid, &ListGrid::rowMenuRequested, this, &MainWindow::openRowMenuFromKeyboard);
        connect(grid, &ListGrid::deletePressed, this, &MainWindow::deleteFromKeyboard);
        connect(grid, &ListGrid::undoPressed, this, &MainWindow::undoRequested);
        connect(grid, &ListGrid::leaveRequested, this, &MainWindow::focusCallBox);
        connect(grid, &ListGrid::currentRowChanged, this, [this, grid](int row) {
            // Arrows and page keys move the row the commands act on; a
            // click sets it at mouse-up, as it always did.
            if (grid->hasFocus() && grid == this->grid(shownList()) && row >= 0)
                m_selection.setCurrentIndex(grid->model()->index(row, 0));
        });
        m_stack->addWidget(grid);
        m_grids[std::size_t(n - 1)] = grid;
    }

    m_blinkTimer = new QTimer(this);
    m_blinkTimer->setObjectName(QStringLiteral("Timer1"));
    m_blinkTimer->setInterval(kBlinkMs);
    connect(m_blinkTimer, &QTimer::timeout, this, &MainWindow::blinkTick);

    applyView();
}

void MainWindow::relabel()
{
    m_txtCall->setPlaceholderText(m_texts[TextId::CallsignPlaceholder]);
    m_cmdGet->setText(m_texts[m_status->isBusy() ? TextId::ButtonCancel : TextId::ButtonGet]);
    m_cmdMap->setText(m_texts[TextId::ButtonMap]);
    m_optSort[0]->setText(m_texts[TextId::SortByCallsign]);
    m_optSort[1]->setText(m_texts[TextId::SortByDateTime]);
    m_picProgress->setToolTip(m_texts[TextId::PictureProgress]);
    m_heading->setCaptions({m_texts[TextId::HeadingCallsign], m_texts[TextId::HeadingFirstName], QString(),
                            m_texts[TextId::HeadingFullName], m_texts[TextId::HeadingAddress],
                            m_texts[TextId::HeadingCity], m_texts[TextId::HeadingCountry]});
    const auto title = [this](const char *name, TextId id) {
        findChild<QMenu *>(QLatin1String(name))->setTitle(Commands::menuText(m_texts[id]));
    };
    title("mnuSetup", TextId::MenuSetup);
    title("mnuDB", TextId::MenuDefaultDatabase);
    title("mnuLan", TextId::MenuLanguage);
    title("mnuAddAll", TextId::MenuAddAll);
    m_mnuAddCall->setTitle(Commands::menuText(m_texts[TextId::MenuAddCall]));
    const QString view = m_texts.padded(m_expanded ? TextId::MenuCollapse : TextId::MenuExpand);
    m_commands.action(QStringLiteral("mnuExpand"))->setText(Commands::menuText(view));
    layoutControls();
}

// ---------------------------------------------------------------- what it is told

void MainWindow::setModels(const std::array<lists::CallListModel *, 5> &models)
{
    // Four grids the first paint does not show need not be made ready for it.
    m_models = models;
    for (std::size_t i = 0; i < m_grids.size(); ++i) {
        if (m_grids[i]->model())
            attachModel(i);
    }
}

void MainWindow::attachAllModels()
{
    for (std::size_t i = 0; i < m_grids.size(); ++i)
        attachModel(i);
}

void MainWindow::attachModel(std::size_t i)
{
    ListGrid *grid = m_grids[i];
    if (!m_models[i] || grid->model() == m_models[i])
        return;
    grid->setModel(m_models[i]);
    connect(grid->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this, grid](const QModelIndex &current) {
                if (grid == m_grids[std::size_t(shownList() - 1)])
                    m_selection.setCurrentIndex(current);
            });
    applyColumns(grid);
}

ListGrid *MainWindow::grid(int list) const
{
    if (list < 1 || list > 5)
        return nullptr;
    // Whoever asks for a grid gets it with its list in it.
    const_cast<MainWindow *>(this)->attachModel(std::size_t(list - 1));
    return m_grids[std::size_t(list - 1)];
}

void MainWindow::showList(int list)
{
    if (list < 1 || list > 5)
        return;
    ListGrid *shown = grid(list);
    m_stack->setCurrentIndex(list - 1);
    m_cboList->setCurrentIndex(list - 1);
    m_selection.setCurrentList(list);
    m_selection.setCurrentIndex(shown->currentIndex());
}

int MainWindow::shownList() const
{
    return m_stack->currentIndex() + 1;
}

void MainWindow::setChooserLine(int list, const QString &line)
{
    m_cboList->setItemText(list - 1, line);
}

QString MainWindow::chooserLine(int list) const
{
    return m_cboList->itemText(list - 1);
}

void MainWindow::setSortOption(int index)
{
    m_optSort[index == 0 ? 0 : 1]->setChecked(true);
}

void MainWindow::setDatabaseCaption(const QString &caption)
{
    m_mnuDatabase->setTitle(Commands::menuText(caption));
}

void MainWindow::setAlwaysOnTop(bool onTop)
{
    m_commands.action(QStringLiteral("mnuOnTop"))->setChecked(onTop);
    if (bool(windowFlags() & Qt::WindowStaysOnTopHint) == onTop)
        return;
    // A window on screen gets the hint on its own native window: changing a
    // widget's flags would make that window anew, which loses the focus and
    // lets the window manager place it again.
    if (QWindow *native = windowHandle(); native && testAttribute(Qt::WA_WState_Created)) {
        native->setFlag(Qt::WindowStaysOnTopHint, onTop);
        overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnTopHint, onTop));
        return;
    }
    setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
}

void MainWindow::applyPlacement(const app::Placement &placement)
{
    setMinimumSize(300, 200);
    setMaximumWidth(m_maxWindowWidth);
    move(placement.left / kTwips, placement.top / kTwips);
    resize(placement.width / kTwips, placement.height / kTwips);
}

std::optional<app::Placement> MainWindow::placementToKeep() const
{
    if (m_expanded || (windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)))
        return std::nullopt;
    app::Placement place;
    place.left = x() * kTwips;
    place.top = y() * kTwips;
    place.width = width() * kTwips;
    place.height = height() * kTwips;
    return place;
}

QString MainWindow::typedCall() const
{
    return m_txtCall->text();
}

void MainWindow::focusCallBox()
{
    m_txtCall->setFocus();
}

void MainWindow::scrollToTop(int list)
{
    if (ListGrid *g = grid(list))
        g->setTopRow(0);
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

// ---------------------------------------------------------------- views

void MainWindow::toggleExpanded()
{
    if (!m_expanded) {
        m_normalWidthTwips = width() * kTwips;
        m_expanded = true;
        m_maxWindowWidth = kExpandedWidth;
        setMaximumWidth(m_maxWindowWidth);
        resize(kExpandedWidth, height());
    } else {
        m_expanded = false;
        m_maxWindowWidth = kNormalMaxWidth;
        setMaximumWidth(m_maxWindowWidth);
        resize(m_normalWidthTwips / kTwips, height());
    }
    relabel();
    applyView();
}

void MainWindow::applyView()
{
    const QList<int> &edges = m_expanded ? kExpandedEdges : kNormalEdges;
    for (ListGrid *g : m_grids)
        applyColumns(g);
    m_heading->setEdges(m_expanded ? edges + QList<int>{kExpandedWidth} : edges);
    layoutControls();
}

void MainWindow::applyColumns(ListGrid *grid) const
{
    if (!grid->model())
        return;
    const QList<int> &edges = m_expanded ? kExpandedEdges : kNormalEdges;
    // Columns beyond the edges keep the expanded widths in the normal view,
    // so a wider window shows the address as the grid did.
    for (int c = 0; c < lists::kColumnCount; ++c) {
        int w = 0;
        if (c + 1 < edges.size())
            w = edges[c + 1] - edges[c];
        else if (c + 1 < kExpandedEdges.size())
            w = kExpandedEdges[c + 1] - kExpandedEdges[c];
        else if (c == int(lists::Column::Country))
            w = kCountryWidth;
        grid->setColumnHidden(c, w == 0);
        if (w)
            grid->setColumnWidth(c, w);
    }
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (!m_expanded && m_maxWindowWidth != kNormalMaxWidth) {
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
    if (!g || g != grid(shownList()))
        return;
    const int rows = g->model()->rowCount();
    if (rows == 0) {
        if (button == Qt::RightButton) {
            m_commands.refresh();
            m_mnuPopup2->popup(g->viewport()->mapToGlobal(pos));
        }
        return;
    }
    int row = g->rowAt(pos.y());
    if (row < 0)
        row = rows - 1;
    g->setCurrentIndex(g->model()->index(row, 0));
    g->selectRow(row);
    m_selection.setCurrentIndex(g->currentIndex());

    if (lists::inThumbnailZone(pos.x() * kTwips)
        && !g->model()->index(row, int(lists::Column::FirstName)).data(lists::CallListModel::ThumbnailPathRole).toString().isEmpty())
        emit thumbnailClicked(row);
    emit rowMouseUp(row);

    if (button == Qt::RightButton) {
        preparePopup(row);
        m_mnuPopup->popup(g->viewport()->mapToGlobal(pos));
    }
    m_txtCall->setFocus();
}

void MainWindow::focusGrid()
{
    ListGrid *g = grid(shownList());
    const int rows = g->model() ? g->model()->rowCount() : 0;
    if (rows > 0) {
        int row = m_selection.currentRow();
        if (row < 0 || row >= rows)
            row = g->currentIndex().isValid() ? g->currentIndex().row() : 0;
        g->setCurrentIndex(g->model()->index(row, 0));
        g->selectRow(row);
        m_selection.setCurrentIndex(g->currentIndex());
    }
    g->setFocus(Qt::ShortcutFocusReason);
}

int MainWindow::keyboardRow() const
{
    const ListGrid *g = grid(shownList());
    const int rows = g->model() ? g->model()->rowCount() : 0;
    if (rows == 0)
        return -1;
    return g->currentIndex().isValid() ? g->currentIndex().row() : 0;
}

void MainWindow::activateRow()
{
    if (keyboardRow() < 0)
        return;
    // The map when it can be drawn, else the picture.
    m_commands.refresh();
    for (const QString &name : {kMapCommand, QStringLiteral("mnuShowPic")}) {
        QAction *a = m_commands.action(name);
        if (a->isEnabled()) {
            a->trigger();
            return;
        }
    }
}

void MainWindow::openRowMenuFromKeyboard()
{
    ListGrid *g = grid(shownList());
    const int row = keyboardRow();
    m_commands.refresh();
    if (row < 0) {
        m_mnuPopup2->popup(g->viewport()->mapToGlobal(QPoint(0, 0)));
        return;
    }
    g->setCurrentIndex(g->model()->index(row, 0));
    g->selectRow(row);
    m_selection.setCurrentIndex(g->currentIndex());
    preparePopup(row);
    const QRect cell = g->visualRect(g->model()->index(row, 0));
    m_mnuPopup->popup(g->viewport()->mapToGlobal(cell.bottomLeft()));
}

void MainWindow::deleteFromKeyboard()
{
    const int row = keyboardRow();
    if (row < 0)
        return;
    ListGrid *g = grid(shownList());
    g->setCurrentIndex(g->model()->index(row, 0));
    m_selection.setCurrentIndex(g->currentIndex());
    QAction *del = m_commands.action(QStringLiteral("mnu3"));
    m_commands.refresh();
    if (!del->isEnabled())
        return;
    del->trigger();
    // The keyboard stays in the list, on the row that took the deleted one's place.
    const int rows = g->model()->rowCount();
    if (rows > 0) {
        const int next = std::min(row, rows - 1);
        g->setCurrentIndex(g->model()->index(next, 0));
        g->selectRow(next);
        m_selection.setCurrentIndex(g->currentIndex());
    }
    g->setFocus(Qt::OtherFocusReason);
}

void MainWindow::preparePopup(int row)
{
    const QString call = grid(shownList())->model()->index(row, 0).data().toString();
    const auto caption = [this](const char *name, const QString &text) {
        m_commands.action(QLatin1String(name))->setText(Commands::menuText(text));
    };
    caption("mnuName", m_texts.fill(TextId::MenuName, call));
    m_mnuAddCall->setTitle(Commands::menuText(m_texts.fill(TextId::MenuAddCall, call)));
    caption("mnuUpdate", m_texts.fill(TextId::MenuUpdate, call, m_sourceLabel));
    caption("mnuUpdateAll", m_texts.fillSource(TextId::MenuUpdateAll, m_sourceLabel));
    caption("mnuManUpdate", m_texts.fill(TextId::MenuManUpdate, call));
    caption("mnuStView0", m_texts.fill(TextId::MenuStreetView, call));
    caption("mnuStView1", m_texts.fill(TextId::MenuSatelliteView, call));
    for (int k = 1; k <= 5; ++k) {
        for (const char *name : {"mnuAddTo", "mnuAddAllTo"}) {
            QAction *a = m_commands.action(indexed(name, k));
            a->setText(Commands::menuText(chooserLine(k)));
            a->setVisible(k != shownList());
        }
    }
    m_commands.refresh();
}

// ---------------------------------------------------------------- reveal and blink

void MainWindow::reveal(int list, int row, bool blink)
{
    ListGrid *g = grid(list);
    if (!g || row < 0 || row >= g->model()->rowCount())
        return;
    if (list == shownList()) {
        g->setCurrentIndex(g->model()->index(row, 0));
        g->selectRow(row);
        g->scrollTo(g->model()->index(row, 0));
    }
    if (!blink)
        return;
    stopBlink();
    auto *model = static_cast<lists::CallListModel *>(g->model());
    m_blinkList = list;
    m_blinkRow = row;
    m_blinkSavedColour = model->record(row).callsignBack;
    m_blinkCount = 0;
    m_blinkTimer->start();
}

void MainWindow::stopBlink()
{
    if (!m_blinkTimer->isActive())
        return;
    m_blinkTimer->stop();
    if (auto *model = static_cast<lists::CallListModel *>(grid(m_blinkList)->model()))
        model->setCellBackground(m_blinkRow, lists::Column::Callsign, m_blinkSavedColour);
}

void MainWindow::blinkTick()
{
    m_status->showSteady(m_texts[TextId::AlreadyInList]);
    ++m_blinkCount;
    auto *model = static_cast<lists::CallListModel *>(grid(m_blinkList)->model());
    model->setCellBackground(m_blinkRow, lists::Column::Callsign,
                             m_blinkCount % 2 ? lists::kBlinkColour : m_blinkSavedColour);
    if (m_blinkCount >= kBlinkTicks) {
        m_blinkTimer->stop();
        m_status->toRest();
        model->setCellBackground(m_blinkRow, lists::Column::Callsign, m_blinkSavedColour);
    }
}

// ---------------------------------------------------------------- lookups in flight

void MainWindow::getClicked()
{
    if (m_status->isBusy())
        emit cancelRequested();
    else
        emit getRequested(m_txtCall->text());
}

void MainWindow::busyChanged(bool busy)
{
    m_cmdGet->setText(m_texts[busy ? TextId::ButtonCancel : TextId::ButtonGet]);
}

// ---------------------------------------------------------------- keys and closing

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_status->isBusy()) {
        emit cancelRequested();
        event->accept();
        return;
    }
    // F6, or Down in the callsign box: into the list, on the current row.
    if ((event->key() == Qt::Key_F6 || (event->key() == Qt::Key_Down && m_txtCall->hasFocus()))
        && event->modifiers() == Qt::NoModifier) {
        focusGrid();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_F8) {
        m_txtCall->setText(callsign::fromClipboard(QGuiApplication::clipboard()->text()));
        emit getRequested(m_txtCall->text());
        event->accept();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

bool MainWindow::event(QEvent *event)
{
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && !m_painted) {
        m_painted = true;
        // After the paint has reached the screen, not in the middle of it.
        QTimer::singleShot(0, this, &MainWindow::firstPaint);
    }
    return handled;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    stopBlink();
    emit closing();
    event->accept();
}

} // namespace marvik::gui
