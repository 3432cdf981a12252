// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/Placement.h"

#include <QColor>
#include <QMainWindow>

#include <array>
#include <optional>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTimer;

namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lists {
class CallListModel;
}

namespace marvik::gui {

class Commands;
class HeadingBar;
class ListGrid;
class Selection;
class StatusLine;

/// `Form1`, the main window, as a view: the callsign box, the Get and Map
/// buttons, the list chooser and sort options, the status line, the five
/// list grids and the menus built from the program's commands. It shows what
/// it is told, keeps the selection up to date and emits what the user did;
/// the parts behind it never see it.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow(Commands &commands, const i18n::CurrentTexts &texts, Selection &selection, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// The models of lists 1..5, one grid each.
    /// The lists' models. A grid takes its model when it is first asked for
    /// (the list shown at the start) or at attachAllModels().
    void setModels(const std::array<lists::CallListModel *, 5> &models);
    void attachAllModels();
    ListGrid *grid(int list) const;
    /// Shows list 1..5's grid.
    void showList(int list);
    int shownList() const;
    void setChooserLine(int list, const QString &line);
    QString chooserLine(int list) const;
    void setSortOption(int index);
    /// The Database menu's caption: the source's label, maybe with a suffix.
    void setDatabaseCaption(const QString &caption);
    /// The current source's label, put into the "Update ... from ???" item.
    void setSourceLabel(const QString &label) { m_sourceLabel = label; }
    void setAlwaysOnTop(bool onTop);
    /// The place and size kept in the settings store.
    void applyPlacement(const app::Placement &placement);
    /// The place to keep at exit: only in the normal view of a window that
    /// is neither minimised nor maximised.
    std::optional<app::Placement> placementToKeep() const;
    bool isExpanded() const { return m_expanded; }

    StatusLine &statusLine() const { return *m_status; }
    QString typedCall() const;
    void focusCallBox();
    void scrollToTop(int list);
    void showPictureProgress(qint64 done, qint64 total);
    void hidePictureProgress();

signals:
    /// Get, Enter in the callsign box, F8: the text as typed.
    void getRequested(const QString &typed);
    /// The Get button while a lookup runs, or Escape: stop it.
    void cancelRequested();
    /// The list chooser picked list 1..5.
    void listChosen(int list);
    /// A sort option was clicked (0 callsign, 1 date/time).
    void sortChosen(int index);
    /// A click on a row's thumbnail.
    void thumbnailClicked(int row);
    /// Every mouse-up on a row of the current list, after the selection.
    void rowMouseUp(int row);
    /// The window is closing; the program shuts down before it goes.
    void closing();
    /// The window has painted for the first time.
    void firstPaint();
    /// Ctrl+Z in a list.
    void undoRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void buildControls();
    /// The list's keyboard: into the grid, Enter, the row menu, Delete.
    void focusGrid();
    int keyboardRow() const;
    void activateRow();
    void openRowMenuFromKeyboard();
    void deleteFromKeyboard();
    void buildMenus();
    QMenu *addMenu(QMenu *parent, const QString &name);
    void relabel();
    void layoutControls();
    void applyView();
    void applyColumns(ListGrid *grid) const;
    /// Gives the grid of list index `i` its model, once.
    void attachModel(std::size_t i);
    void toggleExpanded();
    void gridMouseUp(Qt::MouseButton button, QPoint pos);
    void preparePopup(int row);
    void reveal(int list, int row, bool blink);
    void blinkTick();
    void stopBlink();
    void busyChanged(bool busy);
    void getClicked();

    Commands &m_commands;
    const i18n::CurrentTexts &m_texts;
    Selection &m_selection;
    QString m_sourceLabel;
    bool m_expanded = false;
    bool m_painted = false;
    int m_normalWidthTwips = 0;
    int m_maxWindowWidth = 614;

    // The blink of an entry already in the list.
    QTimer *m_blinkTimer = nullptr;
    int m_blinkCount = 0;
    int m_blinkRow = -1;
    int m_blinkList = 0;
    QColor m_blinkSavedColour;

    std::array<ListGrid *, 5> m_grids{};
    std::array<lists::CallListModel *, 5> m_models{};
    QStackedWidget *m_stack = nullptr;
    HeadingBar *m_heading = nullptr;
    QLineEdit *m_txtCall = nullptr;
    QPushButton *m_cmdGet = nullptr;
    QPushButton *m_cmdMap = nullptr;
    QComboBox *m_cboList = nullptr;
    std::array<QRadioButton *, 2> m_optSort{};
    QLabel *m_lblStatus = nullptr;
    StatusLine *m_status = nullptr;
    QProgressBar *m_picProgress = nullptr;

    QMenu *m_mnuDatabase = nullptr;
    QMenu *m_mnuPopup = nullptr;
    QMenu *m_mnuPopup2 = nullptr;
    QMenu *m_mnuAddCall = nullptr;
};

} // namespace marvik::gui
