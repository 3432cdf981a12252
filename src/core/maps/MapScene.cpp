// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/maps/MapScene.h"

namespace marvik::maps {

MapScene MapScene::forRow(const Position &me, const QString &callsign, double latitude, double longitude)
{
    MapScene scene;
    if (me.isSet())
        scene.me = me;
    if (Position {latitude, longitude}.isSet()) {
        scene.station = MapStation {callsign, latitude, longitude};
        scene.bearing = bearingFrom(me, latitude, longitude);
    }
    return scene;
}

QString distanceLabel(const QString &callsign, const Bearing &bearing)
{
    return u' ' + callsign + QStringLiteral("  ") + QString::number(bearing.miles) + QStringLiteral(" mi  ")
        + azimuthText(bearing.degrees);
}

QString toLabel(const QString &callsign)
{
    return QStringLiteral("To ") + callsign + u' ';
}

QString fromMeLabel(const QString &fromMe)
{
    return u' ' + fromMe + u' ';
}

} // namespace marvik::maps
