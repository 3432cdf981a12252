// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/maps/Geometry.h"

#include <QTest>

#include <cmath>

using namespace marvik::maps;

class TestGeometry : public QObject
{
    Q_OBJECT

private slots:
    void distanceAndAzimuth_data();
    void distanceAndAzimuth();
    void ownPositionUnsetLeavesOutputs();
    void westNeverNegative();
    void arcTan2Quadrants_data();
    void arcTan2Quadrants();
    void locator_data();
    void locator();
    void locatorOutOfRange();
    void fromLocator_data();
    void fromLocator();
    void locatorRoundTrip();
};

void TestGeometry::distanceAndAzimuth_data()
{
    QTest::addColumn<double>("meLat");
    QTest::addColumn<double>("meLon");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<int>("miles");
    QTest::addColumn<int>("degrees");

    // The worked figures of the Windows program, short pi and all.
    QTest::newRow("north") << 40.0 << -75.0 << 41.0 << -75.0 << 69 << 0;
    QTest::newRow("south") << 40.0 << -75.0 << 39.0 << -75.0 << 69 << 180;
    QTest::newRow("west") << 40.0 << -75.0 << 40.0 << -80.0 << 265 << 271;
    QTest::newRow("London") << 40.0 << -75.0 << 51.5 << -0.12 << 3540 << 50;
    QTest::newRow("Sydney to Tokyo") << -33.9 << 151.2 << 35.7 << 139.7 << 4851 << 350;
    // Same place: distance 0, and the callers force the azimuth to 0
    // (internally it is 90, from the 0, 0 angle).
    QTest::newRow("same place") << 40.0 << -75.0 << 40.0 << -75.0 << 0 << 0;
    QTest::newRow("Me on the equator") << 0.0 << 10.0 << 0.0 << 11.0 << 69 << 90;
    QTest::newRow("antipode") << 40.0 << -75.0 << -40.0 << 105.0 << 12444 << 90;
}

void TestGeometry::distanceAndAzimuth()
{
    QFETCH(double, meLat);
    QFETCH(double, meLon);
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(int, miles);
    QFETCH(int, degrees);
    const Bearing b = bearingFrom({meLat, meLon}, lat, lon);
    QCOMPARE(b.miles, miles);
    QCOMPARE(b.degrees, degrees);
}

void TestGeometry::ownPositionUnsetLeavesOutputs()
{
    double distance = 123.5;
    double azimuth = -7;
    QCOMPARE(getDistanceAndAzimuth({0, 0}, 51.5, -0.12, distance, azimuth), DistanceStatus::NoOwnPosition);
    QCOMPARE(distance, 123.5);
    QCOMPARE(azimuth, -7.0);
    // Callers start from 0 and so show 0 miles, 0 degrees.
    QCOMPARE(bearingFrom({0, 0}, 51.5, -0.12).miles, 0);
    QCOMPARE(bearingFrom({0, 0}, 51.5, -0.12).degrees, 0);
    // Only both zero means unset.
    QVERIFY(bearingFrom({0, -75}, 41, -75).miles > 0);
}

void TestGeometry::westNeverNegative()
{
    for (double lon = -179; lon <= 179; lon += 7.5) {
        for (double lat = -80; lat <= 80; lat += 20) {
            double d = 0;
            double az = 0;
            if (getDistanceAndAzimuth({48.1, 11.6}, lat, lon, d, az) != DistanceStatus::Computed)
                continue;
            QVERIFY2(az >= 0 && az <= 359, qPrintable(QStringLiteral("%1,%2 -> %3").arg(lat).arg(lon).arg(az)));
            QCOMPARE(az, std::floor(az));
            QCOMPARE(d, std::floor(d));
        }
    }
}

void TestGeometry::arcTan2Quadrants_data()
{
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("angle");
    const double pi = 3.14159265;
    QTest::newRow("origin") << 0.0 << 0.0 << pi / 2;
    QTest::newRow("east") << 0.0 << 1.0 << 0.0;
    QTest::newRow("north") << 1.0 << 0.0 << pi / 2;
    QTest::newRow("west") << 0.0 << -1.0 << pi;
    QTest::newRow("south") << -1.0 << 0.0 << -pi / 2;
    QTest::newRow("north-west") << 1.0 << -1.0 << pi - std::atan(1.0);
    QTest::newRow("south-west") << -1.0 << -1.0 << -(pi - std::atan(1.0));
    QTest::newRow("steep") << 3.0 << 1.0 << pi / 2 - std::atan(1.0 / 3);
}

void TestGeometry::arcTan2Quadrants()
{
    QFETCH(double, y);
    QFETCH(double, x);
    QFETCH(double, angle);
    QCOMPARE(arcTan2(y, x), angle);
}

void TestGeometry::locator_data()
{
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<QString>("locator");
    QTest::newRow("Newington") << 41.714775 << -72.727260 << QStringLiteral("FN31pr");
    QTest::newRow("Munich") << 48.1 << 11.6 << QStringLiteral("JN58tc");
    QTest::newRow("Sydney") << -33.9 << 151.2 << QStringLiteral("QF56oc");
    QTest::newRow("origin") << 0.0 << 0.0 << QStringLiteral("JJ00aa");
    QTest::newRow("south-west corner") << -90.0 << -180.0 << QStringLiteral("AA00aa");
    QTest::newRow("north-east corner") << 90.0 << 180.0 << QStringLiteral("RR99xx");
}

void TestGeometry::locator()
{
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(QString, locator);
    QCOMPARE(toLocator(lat, lon), locator);
}

void TestGeometry::locatorOutOfRange()
{
    QVERIFY(toLocator(90.0001, 0).isEmpty());
    QVERIFY(toLocator(0, -180.5).isEmpty());
    QVERIFY(toLocator(std::nan(""), 0).isEmpty());
}

void TestGeometry::fromLocator_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::newRow("centre of FN31pr") << QStringLiteral("FN31pr") << true << 41.7291666666667 << -72.7083333333333;
    QTest::newRow("lower case") << QStringLiteral("fn31PR") << true << 41.7291666666667 << -72.7083333333333;
    QTest::newRow("last six of a longer text") << QStringLiteral("Grid: JJ00aa") << true << 0.0208333333333 << 0.0416666666667;
    QTest::newRow("too short") << QStringLiteral("FN31p") << false << 0.0 << 0.0;
    QTest::newRow("digit where a letter goes") << QStringLiteral("F131pr") << false << 0.0 << 0.0;
    QTest::newRow("letter where a digit goes") << QStringLiteral("FNA1pr") << false << 0.0 << 0.0;
    QTest::newRow("locator with a line break") << QStringLiteral("FN31pr\r\n") << false << 0.0 << 0.0;
}

void TestGeometry::fromLocator()
{
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(double, lat);
    QFETCH(double, lon);
    Position p{1, 2};
    QCOMPARE(marvik::maps::fromLocator(text, p), ok);
    if (!ok) {
        QCOMPARE(p.latitude, 1.0);
        return;
    }
    QVERIFY(std::fabs(p.latitude - lat) < 1e-9);
    QVERIFY(std::fabs(p.longitude - lon) < 1e-9);
}

void TestGeometry::locatorRoundTrip()
{
    // The centre of every subsquare names the same subsquare again.
    for (double lat = -89.5; lat < 90; lat += 3.7) {
        for (double lon = -179.5; lon < 180; lon += 5.3) {
            const QString loc = toLocator(lat, lon);
            Position centre;
            QVERIFY(marvik::maps::fromLocator(loc, centre));
            QCOMPARE(toLocator(centre.latitude, centre.longitude), loc);
            QVERIFY(std::fabs(centre.latitude - lat) <= 1.0 / 48 + 1e-9);
            QVERIFY(std::fabs(centre.longitude - lon) <= 1.0 / 24 + 1e-9);
        }
    }
}

QTEST_GUILESS_MAIN(TestGeometry)
#include "tst_geometry.moc"
