// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/maps/Geometry.h"

#include <array>
#include <cmath>

namespace marvik::maps {

namespace {

// The Windows program's constants; its short pi is part of the result.
constexpr double kPi = 3.14159265;
constexpr double kDegree = kPi / 180;
constexpr double kEquatorialKm = 6378;
constexpr double kPolarKm = 6356;
constexpr double kFlattening = (kPolarKm * kPolarKm) / (kEquatorialKm * kEquatorialKm);
constexpr double kKmPerMile = 1.609;

double scaledLatitude(double phi, double k)
{
    return arcTan2(k * std::sin(phi), std::cos(phi));
}

} // namespace

double arcTan2(double y, double x)
{
    if (y == 0 && x == 0)
        return kPi / 2;
    const double ay = std::fabs(y);
    const double ax = std::fabs(x);
    double angle = ay > ax ? kPi / 2 - std::atan(ax / ay) : std::atan(ay / ax);
    if (x < 0)
        angle = kPi - angle;
    if (y < 0)
        angle = -angle;
    return angle;
}

DistanceFromMe::DistanceFromMe(const Position &me)
    : m_set(me.latitude != 0 || me.longitude != 0)
    , m_lambda1(me.longitude * kDegree)
    , m_g1(scaledLatitude(me.latitude * kDegree, kFlattening))
    , m_sinG1(std::sin(m_g1))
    , m_cosG1(std::cos(m_g1))
{
}

DistanceStatus DistanceFromMe::compute(double latitude, double longitude, double &distance, double &azimuth) const
{
    if (!m_set)
        return DistanceStatus::NoOwnPosition;

    const double phi2 = latitude * kDegree;
    const double lambda2 = longitude * kDegree;

    double g1 = m_g1;
    double g2 = scaledLatitude(phi2, kFlattening);
    double sinG1 = m_sinG1;
    const double cosG1 = m_cosG1;
    double sinG2 = std::sin(g2);
    const double cosG2 = std::cos(g2);

    const double c = std::cos(lambda2 - m_lambda1) * cosG1 * cosG2 + sinG1 * sinG2;
    const double d = arcTan2(std::sqrt(1 - c * c), c);
    const double sinD = std::sin(d);
    const double cosD = std::cos(d);

    double az = arcTan2(std::sin(lambda2 - m_lambda1) * cosG2 * cosG1, sinG2 - sinG1 * cosD);
    if (az < 0)
        az += 2 * kPi;

    if (!(g1 < g2)) {
        std::swap(g1, g2);
        std::swap(sinG1, sinG2);
    }

    const double t1 = arcTan2(sinG1 * sinD, sinG2 - cosD * sinG1);
    const double s1 = std::sin(t1);
    const double s2 = std::sin(d + t1);
    const double q = std::fabs(s1) > std::fabs(s2) ? sinG1 / s1 : sinG2 / s2;

    const double beta0 = arcTan2(q, std::sqrt(std::fabs(1 - q * q)) * (kPolarKm / kEquatorialKm));
    const double sinBeta0 = std::sin(beta0);
    const double k2 = (1 - kFlattening) * sinBeta0 * sinBeta0;
    const double m = 1 / std::sqrt(1 - k2);
    const double theta1 = arcTan2(m * s1, std::cos(t1));
    const double theta2 = arcTan2(m * s2, std::cos(d + t1));

    // The second-order term is divided by the polar radius, as the Windows
    // program did; it all but vanishes, and the figures depend on that.
    const double km = kEquatorialKm
        * ((1 - k2 / 4) * (theta2 - theta1) - k2 * (std::sin(2 * theta2) - std::sin(2 * theta1)) / kPolarKm);

    const double miles = std::floor(km / kKmPerMile);
    const double degrees = std::floor(az / kDegree);
    if (!std::isfinite(miles) || !std::isfinite(degrees))
        return DistanceStatus::Degenerate;
    distance = miles;
    azimuth = degrees;
    return DistanceStatus::Computed;
}

Bearing DistanceFromMe::bearing(double latitude, double longitude) const
{
    double distance = 0;
    double azimuth = 0;
    compute(latitude, longitude, distance, azimuth);
    Bearing b{int(distance), int(azimuth)};
    if (distance == 0)
        b.degrees = 0;
    return b;
}

DistanceStatus getDistanceAndAzimuth(const Position &me, double latitude, double longitude, double &distance,
                                     double &azimuth)
{
    return DistanceFromMe(me).compute(latitude, longitude, distance, azimuth);
}

Bearing bearingFrom(const Position &me, double latitude, double longitude)
{
    return DistanceFromMe(me).bearing(latitude, longitude);
}

namespace {

// Whole lists are filled with these; one string per degree serves them all.
const std::array<QString, 360> &degreeTexts()
{
    static const std::array<QString, 360> texts = [] {
        std::array<QString, 360> t;
        for (int d = 0; d < 360; ++d)
            t[std::size_t(d)] = QString::number(d) + QChar(0xB0);
        return t;
    }();
    return texts;
}

} // namespace

QString azimuthText(int degrees)
{
    if (degrees >= 0 && degrees < 360)
        return degreeTexts()[std::size_t(degrees)];
    return QString::number(degrees) + QChar(0xB0);
}

QStringView sharedAzimuthText(int degrees)
{
    return degrees >= 0 && degrees < 360 ? QStringView(degreeTexts()[std::size_t(degrees)]) : QStringView();
}

QString toLocator(double latitude, double longitude)
{
    if (!(latitude >= -90 && latitude <= 90 && longitude >= -180 && longitude <= 180))
        return {};
    // Work in whole 1/24 and 1/12 steps so no rounding error moves a point
    // over a square's edge; the far edges (90 N, 180 E) stay in the last square.
    const double lon = longitude + 180;
    const double lat = latitude + 90;
    const int lonSteps = std::min(int(std::floor(lon * 12)), 360 * 12 - 1); // 1/12 degree
    const int latSteps = std::min(int(std::floor(lat * 24)), 180 * 24 - 1); // 1/24 degree
    QString locator(6, Qt::Uninitialized);
    locator[0] = QChar(u'A' + lonSteps / (20 * 12));
    locator[1] = QChar(u'A' + latSteps / (10 * 24));
    locator[2] = QChar(u'0' + (lonSteps / (2 * 12)) % 10);
    locator[3] = QChar(u'0' + (latSteps / 24) % 10);
    locator[4] = QChar(u'a' + lonSteps % 24);
    locator[5] = QChar(u'a' + latSteps % 24);
    return locator;
}

bool fromLocator(const QString &text, Position &position)
{
    if (text.size() < 6)
        return false;
    const QString six = text.right(6).toUpper();
    auto letter = [&](int i) { return six[i].unicode() >= 65; };
    auto digit = [&](int i) { return six[i] >= u'0' && six[i] <= u'9'; };
    if (!letter(0) || !letter(1) || !digit(2) || !digit(3) || !letter(4) || !letter(5))
        return false;
    const auto at = [&](int i, char16_t base) { return double(six[i].unicode() - base); };
    position.longitude = at(0, u'A') * 20 + at(2, u'0') * 2 + at(4, u'A') / 12 + 1.0 / 24 - 180;
    position.latitude = at(1, u'A') * 10 + at(3, u'0') + at(5, u'A') / 24 + 1.0 / 48 - 90;
    return true;
}

} // namespace marvik::maps
