// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/maps/MapController.h"

#include "core/app/Number.h"
#include "core/app/Session.h"
#include "core/maps/MapScene.h"
#include "core/maps/Projection.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/Selection.h"
#include "gui/maps/MapWindow.h"

#include <QAction>
#include <QDir>

namespace marvik::gui {

using lists::Column;

MapController::MapController(app::Session &session, Selection &selection, const i18n::CurrentTexts &texts,
                             Commands &commands, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_selection(selection)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("mapController"));
    connect(commands.action(kMapCommand), &QAction::triggered, this, &MapController::showCurrentRow);
    commands.provide(kMapCommand);
}

MapController::~MapController()
{
    delete m_window;
}

MapWindow *MapController::window() const
{
    return m_window;
}

QStringList MapController::mapFiles() const
{
    // The map table keeps names; a map's file is the one whose name less its
    // last four characters is that name.
    const QStringList files = QDir(m_session.dataFolder().mapsDir()).entryList(QDir::Files | QDir::Hidden);
    QStringList out;
    for (const app::MapRow &row : m_session.settings().maps) {
        QString file;
        for (const QString &candidate : files) {
            if (maps::mapNameOfFile(candidate) == row.name) {
                file = candidate;
                break;
            }
        }
        out.append(file);
    }
    return out;
}

void MapController::showCurrentRow()
{
    app::Settings &settings = m_session.settings();
    if (!m_window) {
        m_window = new MapWindow(m_texts);
        m_window->setObjectName(QStringLiteral("Form3"));
        connect(m_window, &MapWindow::mapChosen, this,
                [this](int index) { m_session.settings().currentMap = qint16(index); });
    }
    const QStringList files = mapFiles();
    const int current = settings.currentMap >= 0 && settings.currentMap < files.size() ? settings.currentMap : 0;
    m_window->setMaps(m_session.dataFolder().mapsDir(), files, current);

    // The map keeps the own latitude off the poles; the stored value changes.
    maps::Position me = m_session.me();
    me.latitude = maps::clampMapLatitude(me.latitude);
    m_session.setMe(me);

    QString call;
    double latitude = 0;
    double longitude = 0;
    if (const std::optional<lists::CallRecord> record = m_selection.record()) {
        call = (*record)[Column::Callsign];
        latitude = app::val((*record)[Column::Latitude]);
        longitude = app::val((*record)[Column::Longitude]);
    }
    m_selection.setStationPosition({latitude, longitude});
    m_window->showStation(maps::MapScene::forRow(me, call, latitude, longitude));
    m_window->show();
    m_window->raise();
}

void MapController::rowClicked()
{
    if (m_window && m_window->isVisible())
        showCurrentRow();
}

void MapController::closeWindow()
{
    if (m_window)
        m_window->close();
}

} // namespace marvik::gui
