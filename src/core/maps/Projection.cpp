// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/maps/Projection.h"

#include <array>
#include <cmath>
#include <limits>

namespace marvik::maps {

namespace {

enum class Fit { None, NorthAmerica, Australia, UK, Europe, NewZealand, Japan, Asia, NNederland, World };

struct NamedFit
{
    const char16_t *name;
    Fit fit;
};

constexpr NamedFit kFits[] = {
    {u"North America Map", Fit::NorthAmerica},
    {u"Australia Map", Fit::Australia},
    {u"UK Map", Fit::UK},
    {u"Europe Map", Fit::Europe},
    {u"New Zealand Map", Fit::NewZealand},
    {u"Japan Map", Fit::Japan},
    {u"Asia Map", Fit::Asia},
    {u"N-Nederland Map", Fit::NNederland},
    {u"World Map", Fit::World},
};

Fit fitOf(const QString &mapName)
{
    for (const NamedFit &f : kFits) {
        if (mapName == QStringView(f.name))
            return f.fit;
    }
    return Fit::None;
}

// The conic maps were fitted with this value in place of pi (two digits
// swapped); their constants only hold with it.
constexpr double kFittedPi = 3.14159625;

// Robinson's table at every 5 degrees of latitude, kept in 32-bit floats as
// the world bitmap's fit used it: parallel length, distance from the
// equator, and a horizontal correction in pixels fitted to the bitmap.
constexpr int kRobinsonRows = 19;
constexpr std::array<float, kRobinsonRows> kRowLatitude
    = {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75, 80, 85, 90};
constexpr std::array<float, kRobinsonRows> kLength = {1.0f, 0.9986f, 0.9954f, 0.99f, 0.9822f, 0.973f, 0.96f, 0.9427f,
    0.9216f, 0.8962f, 0.8679f, 0.835f, 0.7986f, 0.7597f, 0.7186f, 0.6732f, 0.6213f, 0.5722f, 0.5322f};
constexpr std::array<float, kRobinsonRows> kDistance = {0, 0.062f, 0.124f, 0.186f, 0.248f, 0.31f, 0.372f, 0.434f,
    0.4958f, 0.5571f, 0.6176f, 0.6769f, 0.7346f, 0.7903f, 0.8435f, 0.8936f, 0.9394f, 0.9761f, 1.0f};
constexpr std::array<float, kRobinsonRows> kCorrection
    = {0, 0, 0, 1, 2, 2, 3, 4, 5, 7, 9, 11, 13, 16, 19, 22, 26, 30, 35};

struct Conic
{
    double xc;
    double yc;
    double theta; ///< degrees
    double radius; ///< pixels
};

QPointF conicPoint(const Conic &c)
{
    const double angle = c.theta * kFittedPi / 180;
    return {c.xc + c.radius * std::cos(angle), c.yc + c.radius * std::sin(angle)};
}

/// A whole number the way the fits make one: nearest, halves to even.
/// Empty when it does not fit the integer type.
template<typename Int> std::optional<Int> toWhole(double value)
{
    const double r = std::nearbyint(value);
    if (!(r >= double(std::numeric_limits<Int>::min()) && r <= double(std::numeric_limits<Int>::max())))
        return std::nullopt;
    return Int(r);
}

/// The world bitmap's fit. With `wholeDegrees` the weight between two rows
/// counts whole degrees only (floor, so 33.9 S counts as 34 and 34.5 S as 35,
/// which falls back to the 30 degree row), and the row is found from the
/// latitude as a 32-bit float: that is where the program puts its marks.
/// Without it the weight follows the exact latitude: that is how the bitmap
/// itself is drawn, so both agree at every whole degree.
std::optional<QPointF> robinson(double latitude, double &longitude, bool wholeDegrees)
{
    if (longitude < -170)
        longitude = 180 - std::fabs(longitude) + 180;

    int row = 0;
    double weight = 0;
    if (wholeDegrees) {
        const float absLat = float(std::fabs(latitude));
        // At the poles the row search runs past the table's last row.
        if (!(absLat < kRowLatitude.back()))
            return std::nullopt;
        while (row + 1 < kRobinsonRows && kRowLatitude[row + 1] <= absLat)
            ++row;
        weight = double(int(std::fabs(std::floor(latitude))) % 5) / 5;
    } else {
        const double absLat = std::fabs(latitude);
        if (!(absLat < 90))
            return std::nullopt;
        row = std::min(int(absLat / 5), kRobinsonRows - 2);
        weight = (absLat - double(kRowLatitude[row])) / 5;
    }
    const double y = double(kDistance[row]) + weight * double(kDistance[row + 1] - kDistance[row]);
    const double length = double(kLength[row]) - weight * double(kLength[row] - kLength[row + 1]);
    const double correction = kCorrection[row];
    const double px = longitude >= 0 ? 1322 + length * 1453 / 190 * longitude + correction
                                     : 1322 - length * 1300 / 170 * std::fabs(longitude) + correction;
    const double py = latitude >= 0 ? 706 - 698 * y : 706 + 698 * y;
    return QPointF(px, py);
}

/// The fit of one map before its final rounding.
std::optional<QPointF> fitPoint(Fit fit, double lat, double &lon, bool wholeDegrees)
{
    switch (fit) {
    case Fit::None:
        return std::nullopt;
    case Fit::NorthAmerica: {
        // The radius shrinks with the distance from 95 W in whole-degree
        // buckets; past 35.5 degrees the bucket helper hands the distance
        // back unchanged, so the map jumps there. Both are part of the fit.
        const auto n = toWhole<qint16>(std::fabs(-95 - lon));
        if (!n)
            return std::nullopt;
        const double c = correctionBucket(*n);
        return conicPoint({666, -1400, (-lon - 65) * 0.578 + 72.82, (55 - lat) * 25.27 + 1492 - c});
    }
    case Fit::Australia:
        return conicPoint({648, 4500, (lon - 110) * 0.467 + 259.72, (lat + 36) * 35.62 + 3553});
    case Fit::UK:
        return conicPoint({483, -4100, 86.255 - lon * 0.827, (57 - lat) * 117 + 4412});
    case Fit::Europe:
        return conicPoint({800, -850, 105 - lon * 0.745, (60 - lat) * 33.12 + 1288});
    case Fit::NewZealand:
        return conicPoint({520, 7500, (lon - 170) * 0.6757 + 268.06, (lat + 38) * 106 + 7088});
    case Fit::Japan:
        return conicPoint({520, -4000, 90.37 - (lon - 136) * 0.555, (40 - lat) * 56.2 + 4450});
    case Fit::Asia: {
        const double bend = std::pow(std::fabs(lat), 1.3);
        return QPointF((lon - 40) * 13.72 + 130, lat >= 0 ? 932 - lat * 11.5 - bend : 932 - lat * 11.5 + bend);
    }
    case Fit::NNederland:
        return QPointF((lon - 3.828) * 240.16 - 14, 595 - (lat - 52.184) * 386.36 - 11);
    case Fit::World:
        return robinson(lat, lon, wholeDegrees);
    }
    return std::nullopt;
}

} // namespace

qint16 correctionBucket(qint16 n)
{
    if (n >= 0 && n <= 9)
        return 0;
    if (n >= 10 && n <= 15)
        return 3;
    if (n >= 16 && n <= 20)
        return 7;
    if (n >= 21 && n <= 25)
        return 10;
    if (n >= 26 && n <= 35)
        return 15;
    return n;
}

ProjectionStatus projectToMap(const QString &mapName, double latitude, double &longitude, qint32 &x, qint32 &y)
{
    const Fit fit = fitOf(mapName);
    if (fit == Fit::None)
        return ProjectionStatus::NoProjection;
    const std::optional<QPointF> p = fitPoint(fit, latitude, longitude, true);
    if (!p)
        return ProjectionStatus::Failed;
    const auto px = toWhole<qint32>(p->x());
    const auto py = toWhole<qint32>(p->y());
    if (!px || !py)
        return ProjectionStatus::Failed;
    x = *px;
    y = *py;
    return ProjectionStatus::Projected;
}

bool hasProjection(const QString &mapName)
{
    return fitOf(mapName) != Fit::None;
}

QStringList projectedMapNames()
{
    QStringList names;
    for (const NamedFit &f : kFits)
        names.append(QString::fromUtf16(f.name));
    return names;
}

std::optional<QPointF> mapPoint(const QString &mapName, double latitude, double longitude)
{
    const std::optional<QPointF> p = fitPoint(fitOf(mapName), latitude, longitude, false);
    if (!p || !std::isfinite(p->x()) || !std::isfinite(p->y()))
        return std::nullopt;
    return p;
}

QString mapNameOfFile(const QString &fileName)
{
    return fileName.left(std::max<qsizetype>(0, fileName.size() - 4));
}

double clampMapLatitude(double latitude)
{
    if (latitude >= 89)
        return 89;
    if (latitude < -89)
        return -89;
    return latitude;
}

} // namespace marvik::maps
