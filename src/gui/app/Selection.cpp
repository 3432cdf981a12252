// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/Selection.h"

#include "core/lists/ListStore.h"

namespace marvik::gui {

Selection::Selection(lists::ListStore &lists, QObject *parent)
    : QObject(parent)
    , m_lists(lists)
{
}

int Selection::currentRow() const
{
    // The models as they stand: a list still being read has no selected
    // row, and asking must not wait for its reader.
    if (!m_index.isValid() || m_list < 1 || m_list > lists::kListCount
        || m_index.model() != m_lists.models()[std::size_t(m_list - 1)])
        return -1;
    return m_index.row();
}

std::optional<lists::CallRecord> Selection::record() const
{
    const int row = currentRow();
    if (row < 0)
        return std::nullopt;
    return m_lists.model(m_list)->record(row);
}

QString Selection::callsign() const
{
    const std::optional<lists::CallRecord> r = record();
    return r ? (*r)[lists::Column::Callsign] : QString();
}

void Selection::setCurrentList(int list)
{
    if (list == m_list)
        return;
    m_list = list;
    emit currentChanged();
}

void Selection::setCurrentIndex(const QModelIndex &index)
{
    m_index = index;
    emit currentChanged();
}

void Selection::reveal(int list, int row, bool blink)
{
    emit revealRequested(list, row, blink);
}

} // namespace marvik::gui
