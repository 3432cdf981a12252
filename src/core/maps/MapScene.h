// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/Geometry.h"

#include <QString>

#include <optional>

namespace marvik::maps {

/// A station the map shows: its call and its position.
struct MapStation
{
    QString callsign;
    double latitude = 0;
    double longitude = 0;
};

/// Everything the map window draws: the own station (when set), the chosen
/// station (when its row has a position) and the figures between them.
struct MapScene
{
    std::optional<Position> me;
    std::optional<MapStation> station;
    Bearing bearing; ///< by the callers' rule: 0 miles and 0 degrees without Me

    /// The scene for one row: Me only when it is set (not 0, 0), the
    /// station only when its row has a position (not 0, 0).
    static MapScene forRow(const Position &me, const QString &callsign, double latitude, double longitude);
};

/// The label beside a station when Me is set: a blank, the call, two
/// blanks, the miles, " mi  ", the degrees and "°".
QString distanceLabel(const QString &callsign, const Bearing &bearing);

/// The label naming a station: "To ", the call and a blank.
QString toLabel(const QString &callsign);

/// The label at the own station: the text with a blank each side.
QString fromMeLabel(const QString &fromMe);

} // namespace marvik::maps
