// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace marvik::maps {

/// A position in decimal degrees, north and east positive. 0, 0 is "not set".
struct Position
{
    double latitude = 0;
    double longitude = 0;
    bool isSet() const { return latitude != 0 || longitude != 0; }
};

enum class DistanceStatus {
    Computed, ///< both outputs written
    NoOwnPosition, ///< Me is 0, 0: outputs left as the caller had them
    Degenerate, ///< the arithmetic broke down (antipodal points): outputs left alone
};

/// Distance in whole statute miles and initial bearing in whole degrees from
/// `me` to a station, on the ellipsoid with the fixed constants the Windows
/// program used (short pi, 6378/6356 km, 1.609 km per mile), both floored.
/// Leaves `distance` and `azimuth` untouched when Me is 0, 0 or the figures
/// cannot be computed.
DistanceStatus getDistanceAndAzimuth(const Position &me, double latitude, double longitude, double &distance,
                                     double &azimuth);

/// What every caller shows: the azimuth forced to 0 when the distance is 0,
/// with outputs starting at 0 (so Me unset gives 0 miles, 0 degrees).
struct Bearing
{
    int miles = 0;
    int degrees = 0;
};

/// Distances and azimuths from one own position to many stations: what
/// depends on Me alone is worked out once (a list load asks for thousands).
/// Gives exactly the figures of getDistanceAndAzimuth().
class DistanceFromMe
{
public:
    explicit DistanceFromMe(const Position &me);
    DistanceStatus compute(double latitude, double longitude, double &distance, double &azimuth) const;
    /// The callers' rule (see bearingFrom()).
    Bearing bearing(double latitude, double longitude) const;

private:
    bool m_set;
    double m_lambda1;
    double m_g1;
    double m_sinG1;
    double m_cosG1;
};

/// The angle of (x, y) in (-pi, pi] with the short pi; pi/2 for 0, 0.
double arcTan2(double y, double x);

/// The figures one station gets by the callers' rule.
Bearing bearingFrom(const Position &me, double latitude, double longitude);

/// The azimuth column's text: the whole degrees followed by "°".
QString azimuthText(int degrees);
/// The same text for 0 to 359 degrees, in a string that lasts the whole
/// run; empty for any other figure.
QStringView sharedAzimuthText(int degrees);

/// The six-character Maidenhead locator (upper-case field, digits, lower-case
/// subsquare). Empty outside -90..90 / -180..180.
QString toLocator(double latitude, double longitude);

/// The centre of the subsquare named by the last six characters of `text`
/// (case-insensitive). Letters are wanted in places 1, 2, 5 and 6 (a character
/// code of 65 or more) and digits in places 3 and 4; false otherwise.
bool fromLocator(const QString &text, Position &position);

} // namespace marvik::maps
