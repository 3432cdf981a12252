// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableView>

namespace marvik::gui {

/// One list's grid: a table without headings (the heading bar above it
/// carries them), whole-row selection, rows of fixed height, and the wheel
/// and mouse-up behaviour of the main window's grids.
class ListGrid : public QTableView
{
    Q_OBJECT

public:
    explicit ListGrid(QWidget *parent = nullptr);

    /// The row shown at the top.
    int topRow() const;
    void setTopRow(int row);
    /// Rows that fit completely in the visible area.
    int fullyVisibleRows() const;

signals:
    /// A mouse button was released over the grid; `pos` is in viewport pixels.
    void mouseUp(Qt::MouseButton button, QPoint pos);
    /// Space on the grid (without modifiers): the current row's paste mark.
    void spacePressed();
    /// Enter or Return on the current row.
    void rowActivated();
    /// The Menu key or Shift+F10: the row menu for the current row.
    void rowMenuRequested();
    /// The Delete key on the current row.
    void deletePressed();
    /// Ctrl+Z: undo the last delete or clear.
    void undoPressed();
    /// F6 or Escape: back to the callsign box.
    void leaveRequested();
    /// The current row moved (keys, clicks, the program).
    void currentRowChanged(int row);

protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    int m_wheelRest = 0;
};

} // namespace marvik::gui
