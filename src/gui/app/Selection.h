// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallRecord.h"
#include "core/maps/Geometry.h"

#include <QObject>
#include <QPersistentModelIndex>

#include <optional>

namespace marvik::lists {
class ListStore;
}

namespace marvik::gui {

/// What the user has selected: the current list (the one whose grid shows),
/// the current row of it (the row last clicked; it follows its entry through
/// sorts) and the current station position that the map and the street
/// views use. The main window keeps it up to date; the parts read it and ask
/// for a row to be shown through reveal().
class Selection : public QObject
{
    Q_OBJECT

public:
    explicit Selection(lists::ListStore &lists, QObject *parent = nullptr);

    /// 1..5.
    int currentList() const { return m_list; }
    /// The current row of the current list, -1 when none.
    int currentRow() const;
    /// The current row's record; nothing when no row is current.
    std::optional<lists::CallRecord> record() const;
    QString callsign() const;

    maps::Position stationPosition() const { return m_station; }
    void setStationPosition(const maps::Position &position) { m_station = position; }

    // Kept up to date by the main window.
    void setCurrentList(int list);
    void setCurrentIndex(const QModelIndex &index);

    /// Asks the main window to select a row and scroll it into view, and to
    /// blink it when `blink` is set (an entry that is already in the list).
    void reveal(int list, int row, bool blink = false);

signals:
    void currentChanged();
    void revealRequested(int list, int row, bool blink);

private:
    lists::ListStore &m_lists;
    int m_list = 1;
    QPersistentModelIndex m_index;
    maps::Position m_station;
};

} // namespace marvik::gui
