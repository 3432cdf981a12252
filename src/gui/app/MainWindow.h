// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lookup/SourceSettings.h"

#include <QDateTime>
#include <QMainWindow>
#include <QSet>

#include <array>
#include <memory>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QLockFile;
class QMenu;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QSettings;
class QStackedWidget;
class QTimer;

namespace marvik::gui {

class HeadingBar;
class ListGrid;

/// `Form1`: the main window with the five list grids, the menus and the
/// callsign box. It owns the program-wide settings and the lists, runs the
/// start-up and shut-down sequences, and offers the hooks (signals, status
/// line, timers) through which the lookup, map, sharing and dialog parts
/// plug in. A menu item whose hook nobody has connected stays disabled.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// `dataDir` empty: the per-user data folder. `store` null: the per-user
    /// settings store QSettings("Marvik", "Marvik").
    explicit MainWindow(const QString &dataDir = {}, QSettings *store = nullptr, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// The start-up sequence. Returns false when another instance runs (the
    /// user has been told); the window must then not be shown.
    bool startUp();
    /// The shut-down sequence; runs once, from the close of the window.
    void shutDown();

    // Program state, read and changed by the parts that plug in.
    app::Settings &settings() { return m_settings; }
    const app::DataFolder &dataFolder() const { return m_data; }
    const i18n::Texts &texts() const { return m_texts; }
    bool isStarting() const { return m_starting; }
    /// 1..5: the list whose grid is visible.
    int currentList() const;
    /// The model of list 1..5. A list whose file was left for after the first
    /// paint is read here first, so no caller ever sees it unread.
    lists::CallListModel *model(int list) const;
    lists::CallListModel *currentModel() const { return model(currentList()); }
    ListGrid *grid(int list) const;
    /// The current row of the current grid (the row last clicked; it
    /// follows its entry through sorts), -1 when none.
    int currentRow() const;
    void setCurrentRow(int row);
    /// The lookup source as a menu index 0..6 and its label.
    lookup::Source currentSource() const { return m_currentSource; }
    QString sourceLabel() const { return m_sourceLabel; }
    /// What the list loader needs: Me, the thumbnail folder.
    lists::LoadContext loadContext() const;
    QLineEdit *callBox() const { return m_txtCall; }
    QLabel *statusLabel() const { return m_lblStatus; }
    QTimer *timer(int n) const { return m_timers.at(std::size_t(n - 1)); }
    /// The settings store the window was given (group "Sources" says where
    /// the callbooks are).
    QSettings *store() const { return m_store; }

public slots:
    /// Sorts list `n` with a selector passed on by reference (see CallListModel::sortList).
    void sortGrid(int n, qint16 &selector);
    /// Writes list `n`'s file; tells the user which file and why when it fails.
    bool saveList(int n);
    /// The chooser line of list `n` from its name and row count.
    void refreshChooserLine(int n);
    /// Sort with the program's sort mode, save, rebuild the chooser line.
    void listChanged(int n);
    /// The status line's alarm: white on red in place of the chooser and the
    /// sort options, put away by Timer3.
    void showStatusAlarm(const QString &text, bool beep = false);
    /// The status line at rest: hidden, chooser and sort options back.
    void statusToRest();
    /// The caption of the Database menu (the source label, with a log-in
    /// suffix when the lookup part adds one).
    void setDatabaseCaption(const QString &caption);
    /// The Get action: select and blink an entry already in the list, or
    /// hand the callsign to the lookup.
    void getCall();
    /// Re-evaluates which hook-driven items are enabled.
    void refreshHookStates();
    /// The picture download's progress beside the list chooser; a total
    /// of 0 or less (unknown) shows a busy bar.
    void showPictureProgress(qint64 done, qint64 total);
    void hidePictureProgress();

signals:
    /// Get or F8 for a callsign not in the current list: look it up on the
    /// current source (menu index 0..4) and write the result into the list.
    void lookupRequested(const QString &callsign);
    /// "Update": look the row's callsign up again.
    void updateRequested(int row);
    /// Thumbnail click or "Show image": the operator's full picture. After a
    /// thumbnail click the pointer moves into the viewer.
    void pictureRequested(int row, bool fromThumbnail);
    /// "Log in": the current online source's site in a browser window.
    void loginRequested();
    /// "Manually add or edit data" / "Manually add new callsign" (row -1)
    /// and "Update Manually" (the row).
    void addEditRequested(int row);
    /// "Lat & Lon": the setup dialog.
    void setupRequested();
    /// The map button.
    void mapRequested(int row);
    /// After each grid mouse-up: an open map window follows the row.
    void currentRowChanged(int row);
    /// Street view (kind 0) or satellite view (kind 1) of the row.
    void streetViewRequested(int row, int kind);
    void pasteListRequested();
    void copyListRequested();
    void printListRequested();
    /// A language chosen in the Language menu (0..4).
    void languageRequested(int index);
    /// The lookup source changed (menu index 0..6).
    void sourceChanged(int index);
    /// Shut-down has begun: the map and capture windows close.
    void closingDown();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void connectNotify(const QMetaMethod &signal) override;

private:
    void buildMenus();
    void buildControls();
    QAction *named(QAction *action, const QString &name);
    QMenu *namedMenu(QMenu *menu, const QString &name);
    bool hooked(const QMetaMethod &signal) const;

    void readConfiguration();
    void loadList(int n, bool sorting);
    /// Reads a list left for after the first paint, as start-up reads a list
    /// in the background: unsorted, its damage reported.
    void loadPendingList(int n);
    void loadPendingLists();
    void reportDamagedLists();
    void applyAlwaysOnTop();
    void chooseSource(int index);
    void chooseDefaultDatabase(int index);
    void checkSourceMenus();
    void layoutControls();
    void applyView();
    bool expanded() const;

    void optSortClicked(int index);
    void listSwitch(int index);
    void switchToList(int index, bool atStartUp);
    void expandClicked();
    void gridMouseUp(Qt::MouseButton button, QPoint pos);
    void preparePopup(int row);
    void pasteCallsign();
    void blinkTick();
    void addTo(int n);
    void addAllTo(int n);
    void deleteEntry();
    void clearList();
    void changeFirstName();
    void changeListNames();
    void toggleOnTop();
    void showHelp();
    void showAbout();
    void tellWriteFailure(const QString &file, const QString &why);

    app::DataFolder m_data;
    app::Settings m_settings;
    i18n::Texts m_texts = i18n::Texts::english();
    QSettings *m_store = nullptr;
    std::unique_ptr<QSettings> m_ownStore;
    std::unique_ptr<QLockFile> m_lock;
    bool m_starting = false;
    bool m_shutDown = false;
    lookup::Source m_currentSource = lookup::Source::EHam;
    QString m_sourceLabel;
    int m_normalWidthTwips = 0;
    int m_maxWindowWidth = 614;
    QStringList m_damaged;
    QSet<QString> m_reportedDamage;
    /// What each list file was when it was last read.
    struct LoadedFile
    {
        qint64 size = -1;
        QDateTime modified;
        bool complete = false;
    };
    std::array<LoadedFile, 5> m_loaded{};
    /// Lists other than the current one are read right after the window has
    /// first painted; until then the chooser shows their files' line counts.
    std::array<bool, 5> m_pending{};
    std::array<int, 5> m_pendingRows{};

    // The blink of an entry already in the list.
    int m_blinkCount = 0;
    int m_blinkRow = -1;
    int m_blinkList = 0;
    QColor m_blinkSavedColour;

    std::array<lists::CallListModel *, 5> m_models{};
    std::array<ListGrid *, 5> m_grids{};
    std::array<QTimer *, 4> m_timers{};
    QStackedWidget *m_stack = nullptr;
    HeadingBar *m_heading = nullptr;
    QLineEdit *m_txtCall = nullptr;
    QPushButton *m_cmdGet = nullptr;
    QPushButton *m_cmdMap = nullptr;
    QComboBox *m_cboList = nullptr;
    std::array<QRadioButton *, 2> m_optSort{};
    QLabel *m_lblStatus = nullptr;
    QProgressBar *m_picProgress = nullptr;

    QMenu *m_mnuDatabase = nullptr;
    std::array<QAction *, 7> m_mnuSource{};
    QAction *m_mnuLogin = nullptr;
    QAction *m_mnuExpand = nullptr;
    QAction *m_mnuAdd = nullptr;
    QAction *m_mnuLatLon = nullptr;
    QMenu *m_mnuDB = nullptr;
    std::array<QAction *, 7> m_mnuDefaultDB{};
    QAction *m_mnuOnTop = nullptr;
    std::array<QAction *, 5> m_mnuLang{};
    QMenu *m_mnuPopup = nullptr;
    QAction *m_mnuShowPic = nullptr;
    QAction *m_mnuName = nullptr;
    std::array<QAction *, 2> m_mnuStView{};
    QAction *m_mnuAddNew = nullptr;
    QAction *m_mnuManUpdate = nullptr;
    QAction *m_mnuUpdate = nullptr;
    QAction *m_mnu3 = nullptr;
    QAction *m_mnuClear = nullptr;
    QMenu *m_mnuAddCall = nullptr;
    std::array<QAction *, 5> m_mnuAddTo{};
    QMenu *m_mnuAddAll = nullptr;
    std::array<QAction *, 5> m_mnuAddAllTo{};
    QAction *m_mnu4 = nullptr;
    QAction *m_mnu5 = nullptr;
    QAction *m_mnu6 = nullptr;
    QMenu *m_mnuPopup2 = nullptr;
    QAction *m_mnuAddNew2 = nullptr;
};

} // namespace marvik::gui
