// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ListGrid.h"

#include "core/lists/ListEditing.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

namespace marvik::gui {

ListGrid::ListGrid(QWidget *parent)
    : QTableView(parent)
{
    horizontalHeader()->hide();
    verticalHeader()->hide();
    // Equal row heights let the view skip measuring 10,000 rows.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 5);
    horizontalHeader()->setMinimumSectionSize(0);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrap(false);
    setTabKeyNavigation(false);
    // The column edges must line up with the heading bar, so no frame shifts them.
    setFrameShape(QFrame::NoFrame);
    // A click hands the focus back to the callsign box, so the keyboard
    // reaches the rows (arrows, Space for the paste mark) through Tab.
    setFocusPolicy(Qt::StrongFocus);
}

int ListGrid::topRow() const
{
    return verticalScrollBar()->value();
}

void ListGrid::setTopRow(int row)
{
    verticalScrollBar()->setValue(row);
}

int ListGrid::fullyVisibleRows() const
{
    const int h = verticalHeader()->defaultSectionSize();
    return h > 0 ? viewport()->height() / h : 0;
}

void ListGrid::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    emit currentRowChanged(current.isValid() ? current.row() : -1);
}

void ListGrid::keyPressEvent(QKeyEvent *event)
{
    const int key = event->key();
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    // The view's own Space only selects the current row, which is selected already.
    if (key == Qt::Key_Space && mods == Qt::NoModifier) {
        emit spacePressed();
    } else if ((key == Qt::Key_Return || key == Qt::Key_Enter) && mods == Qt::NoModifier) {
        emit rowActivated();
    } else if (key == Qt::Key_Menu || (key == Qt::Key_F10 && mods == Qt::ShiftModifier)) {
        emit rowMenuRequested();
    } else if (key == Qt::Key_Delete && mods == Qt::NoModifier) {
        emit deletePressed();
    } else if (event->matches(QKeySequence::Undo)) {
        emit undoPressed();
    } else if ((key == Qt::Key_F6 || key == Qt::Key_Escape) && mods == Qt::NoModifier) {
        emit leaveRequested();
    } else {
        QTableView::keyPressEvent(event);
        return;
    }
    event->accept();
}

void ListGrid::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    emit mouseUp(event->button(), event->position().toPoint());
}

void ListGrid::wheelEvent(QWheelEvent *event)
{
    // Whole notches of 120 are what the grid scrolls by; touchpads deliver
    // smaller steps, which are gathered into notches first.
    m_wheelRest += event->angleDelta().y();
    while (m_wheelRest >= 120 || m_wheelRest <= -120) {
        const int delta = m_wheelRest > 0 ? 120 : -120;
        m_wheelRest -= delta;
        setTopRow(lists::wheelTopRow(topRow(), delta, model() ? model()->rowCount() : 0, fullyVisibleRows()));
    }
    event->accept();
}

} // namespace marvik::gui
