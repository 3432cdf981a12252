// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class Commands;
class MapWindow;
class Selection;

/// The map part: the Map button and a click on a row while the map window
/// is open show the current row on the current map (`Form3`); the map
/// picked in its Maps menu becomes the current map, kept in Marvik.cfg.
class MapController : public QObject
{
    Q_OBJECT

public:
    MapController(app::Session &session, Selection &selection, const i18n::CurrentTexts &texts,
                  Commands &commands, QObject *parent = nullptr);
    ~MapController() override;

    /// Shows the current row (Me alone when the row has no position).
    void showCurrentRow();
    /// A row was clicked: an open map window follows it.
    void rowClicked();
    MapWindow *window() const;
    /// Shut-down: the map window closes.
    void closeWindow();

private:
    /// The file of each map of the map table, in the table's order.
    QStringList mapFiles() const;

    app::Session &m_session;
    Selection &m_selection;
    const i18n::CurrentTexts &m_texts;
    QPointer<MapWindow> m_window;
};

} // namespace marvik::gui
