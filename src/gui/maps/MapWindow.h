// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/MapScene.h"

#include <QMainWindow>
#include <QPixmap>
#include <QPoint>
#include <QRectF>
#include <QStringList>

#include <optional>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QPushButton;
class QScrollArea;

namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class MapCanvas;

/// `Form3`: the current map in a draggable, zoomable view (`picInner` in
/// `picOuter`) with the own station, the chosen station, the line between
/// them and their labels. It knows nothing of the lists or the settings:
/// the caller hands it the map files and the scene to draw, and hears which
/// map the user picked.
class MapWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MapWindow(const i18n::CurrentTexts &texts, QWidget *parent = nullptr);
    ~MapWindow() override;

    /// The map files of the `Maps` menu (file names in `mapsDir`, one
    /// `mnuMap` item each, captioned with the map's name) and the one that
    /// is current. An index out of range picks the first.
    void setMaps(const QString &mapsDir, const QStringList &fileNames, int current);
    /// Draws `scene` on the current map and scrolls it into sight.
    void showStation(const maps::MapScene &scene);
    /// Makes map `index` current and draws the scene again (as a pick in
    /// the `Maps` menu does, without emitting mapChosen()).
    void setCurrentMap(int index);

    int currentMap() const { return m_current; }
    QString currentMapName() const;
    const maps::MapScene &scene() const { return m_scene; }

    /// The view's scale: 1 shows the bitmap pixel for pixel.
    double zoom() const { return m_zoom; }
    /// Scales the view, keeping the map point under `anchor` (a point of
    /// `picOuter`'s viewport) where it is.
    void setZoom(double zoom, QPointF anchor);
    void resetZoom();

    /// Where the marks are, in pixels of the full-size bitmap; empty when
    /// not drawn (no position, no fit, or the fit has no pixel for it).
    std::optional<QPoint> mePixel() const { return m_mePixel; }
    std::optional<QPoint> stationPixel() const { return m_stationPixel; }
    /// True when the station (or, without one, Me) falls off the bitmap.
    bool subjectOutside() const { return m_outside; }

signals:
    /// The user picked map `index` in the `Maps` menu or asked for the world map.
    void mapChosen(int index);

protected:
    void showEvent(QShowEvent *event) override;

private:
    friend class MapCanvas;

    /// A label box in `picInner`'s coordinates and its lines.
    struct Label
    {
        QRectF box;
        QStringList lines;
    };
    QFont labelFont() const;
    /// The station's label (if drawn) first, then Me's.
    QList<Label> labels() const;

    void pick(int index);
    void loadMap();
    void project();
    void relabel();
    void updateNotice();
    void scrollToSubject();
    void fillScreen();
    int worldMapIndex() const;

    const i18n::CurrentTexts &m_texts;
    QMenu *m_mapsMenu = nullptr;
    QActionGroup *m_mapGroup = nullptr;
    QList<QAction *> m_mapItems;
    QScrollArea *m_outer = nullptr;
    MapCanvas *m_inner = nullptr;
    QWidget *m_noticeBar = nullptr;
    QLabel *m_notice = nullptr;
    QPushButton *m_showWorld = nullptr;

    QString m_mapsDir;
    QStringList m_files;
    int m_current = -1;
    QPixmap m_map;
    bool m_unreadable = false;
    maps::MapScene m_scene;
    std::optional<QPoint> m_mePixel;
    std::optional<QPoint> m_stationPixel;
    bool m_outside = false;
    double m_zoom = 1;
};

} // namespace marvik::gui
