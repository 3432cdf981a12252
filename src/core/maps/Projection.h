// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QString>
#include <QStringList>

#include <optional>

namespace marvik::maps {

/// What projectToMap() did with a point.
enum class ProjectionStatus {
    Projected, ///< x and y hold the point's pixel
    NoProjection, ///< a map of the user's own: x and y left as the caller set them
    Failed, ///< the fit gives no pixel (the world map at the poles, numbers out of range): x and y left alone
};

/// The pixel of the full-size bitmap of map `mapName` where a point lies
/// (x to the right, y downwards from the top-left corner), by the fit drawn
/// into each of Marvik's nine maps. Map names compare exactly, case and all.
/// Points off the bitmap give pixels outside it; nothing is clamped.
/// "World Map" takes longitudes below -170 as east of 180 and writes the
/// rewritten longitude back into `longitude`.
ProjectionStatus projectToMap(const QString &mapName, double latitude, double &longitude, qint32 &x, qint32 &y);

/// The North America map's radius correction for a whole number of degrees
/// from 95 W: 0..9 give 0, 10..15 give 3, 16..20 give 7, 21..25 give 10,
/// 26..35 give 15; anything else comes back as it is.
qint16 correctionBucket(qint16 n);

/// True for the nine map names that carry a fit.
bool hasProjection(const QString &mapName);

/// The nine map names that carry a fit.
QStringList projectedMapNames();

/// Where a point lies on the map's bitmap, in fractional pixels, as the
/// bitmaps are drawn: projectToMap() without its final rounding, except that
/// the world map's latitude weight follows the exact latitude instead of whole
/// degrees (the fit itself moves a point to the whole degree below it).
/// Empty for a map without a fit and where projectToMap() fails.
std::optional<QPointF> mapPoint(const QString &mapName, double latitude, double longitude);

/// The map's name as the map list shows it and the fits know it: the file
/// name less its last four characters (the extension with its dot).
QString mapNameOfFile(const QString &fileName);

/// The own latitude as the map drawing keeps it: within -89..89, so the
/// world map never meets a pole.
double clampMapLatitude(double latitude);

} // namespace marvik::maps
