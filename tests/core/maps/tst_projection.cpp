// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/maps/MapScene.h"
#include "core/maps/Projection.h"

#include <QImage>
#include <QTest>

#include <cmath>
#include <limits>

using namespace marvik::maps;

namespace {

constexpr qint32 kUntouched = -12345;

struct Pixel
{
    ProjectionStatus status;
    qint32 x = kUntouched;
    qint32 y = kUntouched;
    double longitude; ///< as the projection left it
};

Pixel project(const QString &map, double lat, double lon)
{
    Pixel p {ProjectionStatus::Failed, kUntouched, kUntouched, lon};
    p.status = projectToMap(map, lat, p.longitude, p.x, p.y);
    return p;
}

/// The distance of a pixel from a conic map's apex: the fit's radius.
double radius(const Pixel &p, double xc, double yc)
{
    return std::hypot(p.x - xc, p.y - yc);
}

} // namespace

class TestProjection : public QObject
{
    Q_OBJECT

private slots:
    void worldMap_data();
    void worldMap();
    void worldMapWholeDegrees_data();
    void worldMapWholeDegrees();
    void worldMapPoles();
    void correctionBuckets_data();
    void correctionBuckets();
    void northAmericaCorrection_data();
    void northAmericaCorrection();
    void otherMaps_data();
    void otherMaps();
    void unknownNames_data();
    void unknownNames();
    void drawingAgreesAtWholeDegrees();
    void ownLatitudeClamp_data();
    void ownLatitudeClamp();
    void coastalCities_data();
    void coastalCities();
    void sceneForRow_data();
    void sceneForRow();
};

void TestProjection::worldMap_data()
{
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<double>("lonAfter");

    QTest::newRow("centre") << 0.0 << 0.0 << 1322 << 706 << 0.0;
    // Row 9, no weight: 706 - 698 * 0.5571 and 1322 + 0.8962 * 1453/190 * 90 + 7.
    QTest::newRow("45 N 90 E") << 45.0 << 90.0 << 1946 << 317 << 90.0;
    // West of the centre the 1300/170 scale applies, and the row's correction
    // still shifts the point to the right.
    QTest::newRow("45 N 90 W") << 45.0 << -90.0 << 1322 - 617 + 7 << 317 << -90.0;
    QTest::newRow("south mirrors north") << -45.0 << 90.0 << 1946 << 706 + (706 - 317) << 90.0;
    // Longitudes west of 170 W become east of 180, and the caller sees it.
    QTest::newRow("175 W is 185 E") << 0.0 << -175.0 << 1322 + 1415 << 706 << 185.0;
    QTest::newRow("170 W stays") << 0.0 << -170.0 << 1322 - 1300 << 706 << -170.0;
}

void TestProjection::worldMap()
{
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(double, lonAfter);
    const Pixel p = project(u"World Map"_qs, lat, lon);
    QCOMPARE(p.status, ProjectionStatus::Projected);
    QCOMPARE(p.x, x);
    QCOMPARE(p.y, y);
    QCOMPARE(p.longitude, lonAfter);
}

void TestProjection::worldMapWholeDegrees_data()
{
    // Whole degrees only count: a latitude lands where its whole degree
    // below it lands, and a southern one counts away from zero.
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("sameAs");

    QTest::newRow("40.9 N is drawn at 40 N") << 40.9 << 40.0;
    QTest::newRow("33.9 S is drawn at 34 S") << -33.9 << -34.0;
    QTest::newRow("34.5 S falls back to the 30 S row") << -34.5 << -30.0;
    QTest::newRow("0.5 S counts as 1 S") << -0.5 << -1.0;
    // The row is found from the latitude as a 32-bit float, which rounds up
    // to 45 here, while the weight still counts 44: four degrees further on.
    QTest::newRow("just below 45 N lands at 49 N") << 44.9999999999 << 49.0;
}

void TestProjection::worldMapWholeDegrees()
{
    QFETCH(double, lat);
    QFETCH(double, sameAs);
    for (double lon : {-100.0, 0.0, 120.0}) {
        const Pixel a = project(u"World Map"_qs, lat, lon);
        const Pixel b = project(u"World Map"_qs, sameAs, lon);
        QCOMPARE(a.status, ProjectionStatus::Projected);
        QCOMPARE(a.x, b.x);
        QCOMPARE(a.y, b.y);
    }
}

void TestProjection::worldMapPoles()
{
    // At the poles the fit has no row: a failure the caller sees, with the
    // pixel untouched but the longitude already rewritten.
    for (double pole : {90.0, -90.0, 89.99999999999, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        const Pixel p = project(u"World Map"_qs, pole, -175);
        QCOMPARE(p.status, ProjectionStatus::Failed);
        QCOMPARE(p.x, kUntouched);
        QCOMPARE(p.y, kUntouched);
        QCOMPARE(p.longitude, 185.0);
    }
    QCOMPARE(project(u"World Map"_qs, 89.9, 0).status, ProjectionStatus::Projected);
}

void TestProjection::correctionBuckets_data()
{
    QTest::addColumn<int>("n");
    QTest::addColumn<int>("c");
    const int rows[][2] = {{-32768, -32768}, {-1, -1}, {0, 0}, {9, 0}, {10, 3}, {15, 3}, {16, 7}, {20, 7}, {21, 10},
        {25, 10}, {26, 15}, {35, 15}, {36, 36}, {32767, 32767}};
    for (const auto &r : rows)
        QTest::addRow("%d", r[0]) << r[0] << r[1];
}

void TestProjection::correctionBuckets()
{
    QFETCH(int, n);
    QFETCH(int, c);
    QCOMPARE(int(correctionBucket(qint16(n))), c);
}

void TestProjection::northAmericaCorrection_data()
{
    // Two longitudes a tenth of a degree apart at 40 N: their radii from the
    // apex differ by the change of correction alone (the angle barely moves).
    QTest::addColumn<double>("lonA");
    QTest::addColumn<double>("lonB");
    QTest::addColumn<double>("shrink");

    QTest::newRow("inside a bucket") << -100.0 << -100.1 << 0.0;
    // 9.5 rounds to 10 (halves to even), 10.5 to 10 as well.
    QTest::newRow("9.4 to 9.5 degrees west") << -104.4 << -104.5 << 3.0;
    QTest::newRow("9.4 to 9.5 degrees east") << -85.6 << -85.5 << 3.0;
    QTest::newRow("10.5 stays in the bucket") << -105.4 << -105.5 << 0.0;
    QTest::newRow("25.4 to 25.6") << -120.4 << -120.6 << 5.0;
    // Past 35.5 degrees the helper hands the distance back: a jump of 21.
    QTest::newRow("the edge of the fit, west") << -130.4 << -130.6 << 21.0;
    QTest::newRow("the edge of the fit, east") << -59.6 << -59.4 << 21.0;
    QTest::newRow("beyond it, a pixel per degree") << -140.0 << -141.0 << 1.0;
}

void TestProjection::northAmericaCorrection()
{
    QFETCH(double, lonA);
    QFETCH(double, lonB);
    QFETCH(double, shrink);
    const Pixel a = project(u"North America Map"_qs, 40, lonA);
    const Pixel b = project(u"North America Map"_qs, 40, lonB);
    QCOMPARE(a.status, ProjectionStatus::Projected);
    QCOMPARE(b.status, ProjectionStatus::Projected);
    // Each pixel is rounded, so allow for one on each.
    QVERIFY2(std::fabs(radius(a, 666, -1400) - radius(b, 666, -1400) - shrink) < 1.5,
        qPrintable(QStringLiteral("%1 vs %2").arg(radius(a, 666, -1400)).arg(radius(b, 666, -1400))));
    // The longitude is never rewritten on a conic map.
    QCOMPARE(a.longitude, lonA);
}

void TestProjection::otherMaps_data()
{
    QTest::addColumn<QString>("map");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<ProjectionStatus>("status");

    QTest::newRow("North America 40 N 95 W")
        << u"North America Map"_qs << 40.0 << -95.0 << 661 << 471 << ProjectionStatus::Projected;
    // The plain maps by hand: Asia's bend is 1 at one degree, so y = 932 -
    // 11.5 - 1 = 919.5, and 944.5 a degree south: halves go to the even pixel.
    QTest::newRow("Asia 1 N") << u"Asia Map"_qs << 1.0 << 40.0 << 130 << 920 << ProjectionStatus::Projected;
    QTest::newRow("Asia 1 S, half to even")
        << u"Asia Map"_qs << -1.0 << 40.0 << 130 << 944 << ProjectionStatus::Projected;
    QTest::newRow("N-Nederland origin") << u"N-Nederland Map"_qs << 52.184 << 3.828 << -14 << 584
                                        << ProjectionStatus::Projected;
    // Europe at its reference parallel: radius 1288 at 105 degrees from the
    // apex (800, -850).
    QTest::newRow("Europe 60 N 0 E") << u"Europe Map"_qs << 60.0 << 0.0 << 467 << 394 << ProjectionStatus::Projected;
    QTest::newRow("conic overflow fails")
        << u"Europe Map"_qs << 1e12 << 15.0 << kUntouched << kUntouched << ProjectionStatus::Failed;
    QTest::newRow("North America distance overflows")
        << u"North America Map"_qs << 40.0 << 40000.0 << kUntouched << kUntouched << ProjectionStatus::Failed;
    QTest::newRow("not a number") << u"UK Map"_qs << std::numeric_limits<double>::quiet_NaN() << 0.0 << kUntouched
                                  << kUntouched << ProjectionStatus::Failed;
}

void TestProjection::otherMaps()
{
    QFETCH(QString, map);
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(ProjectionStatus, status);
    const Pixel p = project(map, lat, lon);
    QCOMPARE(p.status, status);
    QCOMPARE(p.x, x);
    QCOMPARE(p.y, y);
}

void TestProjection::unknownNames_data()
{
    QTest::addColumn<QString>("map");
    QTest::newRow("own bitmap") << u"Garden Map"_qs;
    QTest::newRow("other case") << u"world map"_qs;
    QTest::newRow("trailing blank") << u"World Map "_qs;
    QTest::newRow("file name") << u"World Map.png"_qs;
    QTest::newRow("empty") << QString();
}

void TestProjection::unknownNames()
{
    QFETCH(QString, map);
    const Pixel p = project(map, 10, -175);
    QCOMPARE(p.status, ProjectionStatus::NoProjection);
    QCOMPARE(p.x, kUntouched);
    QCOMPARE(p.y, kUntouched);
    QCOMPARE(p.longitude, -175.0);
    QVERIFY(!hasProjection(map));
    QVERIFY(!mapPoint(map, 10, -175));
}

void TestProjection::drawingAgreesAtWholeDegrees()
{
    // The bitmaps are drawn with mapPoint(); where the program puts a mark
    // at a whole degree, the drawing has that place on the same pixel.
    const QStringList maps = projectedMapNames();
    QCOMPARE(maps.size(), 9);
    for (const QString &map : maps) {
        QVERIFY(hasProjection(map));
        for (int lat = -89; lat <= 89; ++lat) {
            for (int lon = -180; lon < 190; lon += 13) {
                double l = lon;
                qint32 x = 0;
                qint32 y = 0;
                QCOMPARE(projectToMap(map, lat, l, x, y), ProjectionStatus::Projected);
                const std::optional<QPointF> p = mapPoint(map, lat, lon);
                QVERIFY(p);
                QVERIFY2(std::fabs(p->x() - x) <= 0.5 && std::fabs(p->y() - y) <= 0.5,
                    qPrintable(QStringLiteral("%1 at %2, %3: %4, %5 vs %6, %7")
                                   .arg(map)
                                   .arg(lat)
                                   .arg(lon)
                                   .arg(p->x())
                                   .arg(p->y())
                                   .arg(x)
                                   .arg(y)));
            }
        }
    }
    // Between whole degrees the drawing follows the latitude, the marks do not.
    QVERIFY(mapPoint(u"World Map"_qs, 40.5, 0)->y() < mapPoint(u"World Map"_qs, 40, 0)->y() - 3);
}

void TestProjection::ownLatitudeClamp_data()
{
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("kept");
    QTest::newRow("pole") << 90.0 << 89.0;
    QTest::newRow("89 itself") << 89.0 << 89.0;
    QTest::newRow("just below") << 88.999 << 88.999;
    QTest::newRow("south pole") << -90.0 << -89.0;
    QTest::newRow("-89 itself") << -89.0 << -89.0;
    QTest::newRow("ordinary") << 52.1 << 52.1;
}

void TestProjection::ownLatitudeClamp()
{
    QFETCH(double, lat);
    QFETCH(double, kept);
    QCOMPARE(clampMapLatitude(lat), kept);
    // Whatever the user set, the world map then has a pixel for it.
    double lon = 0;
    qint32 x = 0;
    qint32 y = 0;
    QCOMPARE(projectToMap(u"World Map"_qs, clampMapLatitude(lat), lon, x, y), ProjectionStatus::Projected);
}

void TestProjection::coastalCities_data()
{
    QTest::addColumn<QString>("map");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<int>("reach"); ///< pixels around the mark searched for land and sea

    // Places on a coast, per map: each must fall inside its bitmap, and the
    // bitmap must show land and sea right there. The world map puts marks on
    // the whole degree below, up to 9 pixels south: its reach is wider.
    const struct
    {
        const char16_t *map;
        const char *place;
        double lat;
        double lon;
        int reach;
    } rows[] = {
        {u"World Map", "Lisbon", 38.72, -9.14, 10},
        {u"World Map", "Sydney", -33.86, 151.21, 6},
        {u"World Map", "Cape Town", -33.92, 18.42, 6},
        {u"World Map", "Rio de Janeiro", -22.91, -43.17, 6},
        {u"World Map", "Mumbai", 19.08, 72.88, 10},
        {u"World Map", "Lima", -12.05, -77.04, 6},
        {u"World Map", "Anchorage", 61.22, -149.9, 10},
        {u"World Map", "Auckland", -36.85, 174.76, 6},
        {u"North America Map", "San Francisco", 37.77, -122.42, 4},
        {u"North America Map", "Miami", 25.76, -80.19, 4},
        {u"North America Map", "Chicago", 41.88, -87.63, 4},
        {u"North America Map", "Boston", 42.36, -71.06, 4},
        {u"North America Map", "Santa Monica", 34.01, -118.50, 4},
        {u"North America Map", "Houston Galveston", 29.30, -94.80, 4},
        {u"Australia Map", "Sydney", -33.86, 151.21, 4},
        {u"Australia Map", "Fremantle", -32.05, 115.75, 4},
        {u"Australia Map", "Darwin", -12.46, 130.84, 4},
        {u"Australia Map", "Hobart", -42.88, 147.33, 4},
        {u"UK Map", "Brighton", 50.82, -0.14, 4},
        {u"UK Map", "Aberdeen", 57.15, -2.09, 4},
        {u"UK Map", "Belfast", 54.60, -5.93, 4},
        {u"UK Map", "Swansea", 51.62, -3.94, 4},
        {u"Europe Map", "Lisbon", 38.72, -9.14, 4},
        {u"Europe Map", "Marseille", 43.30, 5.37, 4},
        {u"Europe Map", "Athens Piraeus", 37.94, 23.65, 4},
        {u"Europe Map", "Valencia", 39.47, -0.33, 4},
        {u"Europe Map", "Gdansk", 54.35, 18.65, 4},
        {u"New Zealand Map", "Wellington", -41.29, 174.78, 4},
        {u"New Zealand Map", "Auckland", -36.85, 174.76, 4},
        {u"New Zealand Map", "Napier", -39.49, 176.92, 4},
        {u"Japan Map", "Tokyo", 35.65, 139.77, 4},
        {u"Japan Map", "Osaka", 34.65, 135.43, 4},
        {u"Japan Map", "Sapporo Otaru", 43.19, 141.00, 4},
        {u"Asia Map", "Singapore", 1.26, 103.83, 4},
        {u"Asia Map", "Hong Kong", 22.28, 114.16, 4},
        {u"Asia Map", "Karachi", 24.85, 67.00, 4},
        {u"Asia Map", "Shanghai", 31.23, 121.47, 4},
        // At this scale the coast of the data lies up to a kilometre off.
        {u"N-Nederland Map", "Den Helder", 52.96, 4.76, 6},
        {u"N-Nederland Map", "Harlingen", 53.17, 5.42, 6},
        {u"N-Nederland Map", "Lelystad", 52.52, 5.43, 6},
        {u"N-Nederland Map", "Egmond aan Zee", 52.62, 4.63, 6},
    };
    for (const auto &r : rows)
        QTest::addRow("%s: %s", QString::fromUtf16(r.map).toUtf8().constData(), r.place)
            << QString::fromUtf16(r.map) << r.lat << r.lon << r.reach;
}

void TestProjection::coastalCities()
{
    QFETCH(QString, map);
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(int, reach);

    const QImage image(QStringLiteral(MARVIK_MAPS_DIR "/") + map + u".png"_qs);
    QVERIFY2(!image.isNull(), qPrintable(map));
    const Pixel p = project(map, lat, lon);
    QCOMPARE(p.status, ProjectionStatus::Projected);
    QVERIFY2(image.rect().contains(p.x, p.y), qPrintable(QStringLiteral("%1, %2").arg(p.x).arg(p.y)));

    // The water of the shipped maps (docs/maps.md): sea and lakes alike.
    const auto isWater = [](QRgb c) {
        return std::abs(qRed(c) - 0xb4) < 12 && std::abs(qGreen(c) - 0xd2) < 12 && std::abs(qBlue(c) - 0xe6) < 12;
    };
    // Land is painted in warm pastels: more red than blue.
    const auto isLand = [](QRgb c) { return qRed(c) > qBlue(c) && qRed(c) > 0xc0; };
    bool land = false;
    bool water = false;
    for (int dy = -reach; dy <= reach; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            const QPoint q(p.x + dx, p.y + dy);
            if (dx * dx + dy * dy > reach * reach || !image.rect().contains(q))
                continue;
            const QRgb c = image.pixel(q);
            land = land || isLand(c);
            water = water || isWater(c);
        }
    }
    QVERIFY2(land, "no land beside the mark");
    QVERIFY2(water, "no water beside the mark");
}

void TestProjection::sceneForRow_data()
{
    QTest::addColumn<double>("meLat");
    QTest::addColumn<double>("meLon");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");
    QTest::addColumn<bool>("hasMe");
    QTest::addColumn<bool>("hasStation");
    QTest::addColumn<QString>("label");

    QTest::newRow("worked figures") << 40.0 << -75.0 << 51.5 << -0.12 << true << true
                                    << u" W1ABC  3540 mi  50\u00b0"_qs;
    QTest::newRow("same place: azimuth forced to 0")
        << 40.0 << -75.0 << 40.0 << -75.0 << true << true << u" W1ABC  0 mi  0\u00b0"_qs;
    QTest::newRow("Me not set") << 0.0 << 0.0 << 51.5 << -0.12 << false << true << u" W1ABC  0 mi  0\u00b0"_qs;
    QTest::newRow("row without a position") << 40.0 << -75.0 << 0.0 << 0.0 << true << false << QString();
    QTest::newRow("one coordinate makes a position") << 40.0 << -75.0 << 0.0 << 10.0 << true << true << QString();
}

void TestProjection::sceneForRow()
{
    QFETCH(double, meLat);
    QFETCH(double, meLon);
    QFETCH(double, lat);
    QFETCH(double, lon);
    QFETCH(bool, hasMe);
    QFETCH(bool, hasStation);
    QFETCH(QString, label);
    const MapScene scene = MapScene::forRow({meLat, meLon}, u"W1ABC"_qs, lat, lon);
    QCOMPARE(bool(scene.me), hasMe);
    QCOMPARE(bool(scene.station), hasStation);
    if (!label.isNull())
        QCOMPARE(distanceLabel(scene.station->callsign, scene.bearing), label);
    QCOMPARE(toLabel(u"W1ABC"_qs), u"To W1ABC "_qs);
    QCOMPARE(fromMeLabel(u"From Me"_qs), u" From Me "_qs);
}

QTEST_GUILESS_MAIN(TestProjection)
#include "tst_projection.moc"
