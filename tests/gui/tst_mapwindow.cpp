// SPDX-License-Identifier: GPL-3.0-or-later
// The map window as a user sees it: the marks read back from the drawn
// map, the Maps menu, the notice for a station off the map, zoom and drag.
#include "core/i18n/Texts.h"
#include "core/maps/Projection.h"
#include "gui/maps/MapWindow.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace marvik;
using maps::MapScene;

namespace {

const QString kMaps = QStringLiteral(MARVIK_MAPS_DIR);
const maps::Position kMe {51.5, -0.12}; // London

QPoint pixelOn(const QString &map, double lat, double lon)
{
    qint32 x = -1;
    qint32 y = -1;
    [&] { QCOMPARE(maps::projectToMap(map, lat, lon, x, y), maps::ProjectionStatus::Projected); }();
    return {x, y};
}

/// The marks' blue, and nothing the maps themselves are painted with.
bool isMarkBlue(QRgb c)
{
    return qBlue(c) > 180 && qRed(c) < 100 && qGreen(c) < 100;
}

QImage drawnMap(gui::MapWindow &w)
{
    return w.findChild<QWidget *>(u"picInner"_qs)->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TestMapWindow : public QObject
{
    Q_OBJECT

private slots:
    void marksWhereTheFitPutsThem_data();
    void marksWhereTheFitPutsThem();
    void meOnly();
    void menuSwitchesMaps();
    void ownBitmapGetsNoMarks();
    void stationOffTheMap();
    void zoomAroundThePointer();
    void dragAndClose();
    void relabels();
};

void TestMapWindow::marksWhereTheFitPutsThem_data()
{
    QTest::addColumn<QString>("map");
    QTest::addColumn<double>("meLat");
    QTest::addColumn<double>("meLon");
    QTest::addColumn<double>("lat");
    QTest::addColumn<double>("lon");

    QTest::newRow("world: London to Boston") << u"World Map"_qs << kMe.latitude << kMe.longitude << 42.36 << -71.06;
    QTest::newRow("world: east of the cut") << u"World Map"_qs << -33.9 << 151.2 << 21.3 << -157.86;
    QTest::newRow("North America") << u"North America Map"_qs << 40.0 << -75.0 << 37.77 << -122.42;
    QTest::newRow("Europe") << u"Europe Map"_qs << kMe.latitude << kMe.longitude << 41.9 << 12.5;
    QTest::newRow("N-Nederland") << u"N-Nederland Map"_qs << 52.37 << 4.9 << 53.22 << 6.57;
}

void TestMapWindow::marksWhereTheFitPutsThem()
{
    QFETCH(QString, map);
    QFETCH(double, meLat);
    QFETCH(double, meLon);
    QFETCH(double, lat);
    QFETCH(double, lon);

    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {map + u".png"_qs}, 0);
    w.show();
    w.showStation(MapScene::forRow({meLat, meLon}, u"W1AW"_qs, lat, lon));

    const QPoint me = pixelOn(map, meLat, meLon);
    const QPoint station = pixelOn(map, lat, lon);
    QCOMPARE(w.stationPixel(), station);
    QCOMPARE(w.mePixel(), me);

    const QImage image = drawnMap(w);
    QCOMPARE(image.size(), QImage(kMaps + u'/' + map + u".png"_qs).size());
    QVERIFY2(isMarkBlue(image.pixel(station)), "no dot on the station");
    QVERIFY2(isMarkBlue(image.pixel(me)), "no dot on Me");
    // Along the line, and not beside it.
    const QPointF along = QPointF(station - me);
    const QPointF across = QPointF(-along.y(), along.x()) / std::hypot(along.x(), along.y());
    for (double t : {0.3, 0.5, 0.7}) {
        // The pixel the line's centre runs through.
        const QPointF on = QPointF(me) + along * t + QPointF(0.5, 0.5);
        const auto pixel = [](QPointF p) { return QPoint(int(std::floor(p.x())), int(std::floor(p.y()))); };
        QVERIFY2(isMarkBlue(image.pixel(pixel(on))), qPrintable(QStringLiteral("line missing at %1").arg(t)));
        QVERIFY2(
            !isMarkBlue(image.pixel(pixel(on + across * 6))), qPrintable(QStringLiteral("line too wide at %1").arg(t)));
    }
    QVERIFY(!w.subjectOutside());
}

void TestMapWindow::meOnly()
{
    // A row without a position: the map shows Me and nothing else.
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {u"Europe Map.png"_qs}, 0);
    w.show();
    const MapScene scene = MapScene::forRow(kMe, u"G4XYZ"_qs, 0, 0);
    QVERIFY(!scene.station);
    w.showStation(scene);
    QVERIFY(!w.stationPixel());
    const QPoint me = pixelOn(u"Europe Map"_qs, kMe.latitude, kMe.longitude);
    QCOMPARE(w.mePixel(), me);

    const QImage image = drawnMap(w);
    int blue = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!isMarkBlue(image.pixel(x, y)))
                continue;
            ++blue;
            QVERIFY2(std::abs(x - me.x()) <= 6 && std::abs(y - me.y()) <= 6,
                qPrintable(QStringLiteral("a mark at %1, %2").arg(x).arg(y)));
        }
    }
    QVERIFY(blue > 10);

    // Without Me either, nothing at all is drawn.
    w.showStation(MapScene::forRow({0, 0}, u"G4XYZ"_qs, 0, 0));
    QVERIFY(!w.mePixel());
    QCOMPARE(drawnMap(w), QImage(kMaps + u"/Europe Map.png"_qs).convertToFormat(QImage::Format_RGB32));
}

void TestMapWindow::menuSwitchesMaps()
{
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    const QStringList files {u"Europe Map.png"_qs, u"UK Map.png"_qs, u"World Map.png"_qs};
    w.setMaps(kMaps, files, 2);
    w.show();
    w.showStation(MapScene::forRow(kMe, u"GM3ABC"_qs, 57.15, -2.09));
    QSignalSpy chosen(&w, &gui::MapWindow::mapChosen);

    const auto checked = [&] {
        QStringList names;
        for (int i = 1; i <= files.size(); ++i) {
            auto *item = w.findChild<QAction *>(QStringLiteral("mnuMap%1").arg(i));
            if (item && item->isChecked())
                names.append(item->text());
        }
        return names;
    };
    QCOMPARE(checked(), QStringList {u"World Map"_qs});

    w.findChild<QAction *>(u"mnuMap2"_qs)->trigger();
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.at(0).at(0).toInt(), 1);
    QCOMPARE(checked(), QStringList {u"UK Map"_qs});
    QCOMPARE(w.currentMapName(), u"UK Map"_qs);
    QCOMPARE(w.findChild<QWidget *>(u"picInner"_qs)->size(), QSize(1020, 1230));
    const QPoint aberdeen = pixelOn(u"UK Map"_qs, 57.15, -2.09);
    QCOMPARE(w.stationPixel(), aberdeen);
    QVERIFY(isMarkBlue(drawnMap(w).pixel(aberdeen)));

    // The view follows the station after the switch.
    auto *outer = w.findChild<QScrollArea *>(u"picOuter"_qs);
    const QRect shown(outer->horizontalScrollBar()->value(), outer->verticalScrollBar()->value(),
        outer->viewport()->width(), outer->viewport()->height());
    QVERIFY2(shown.contains(aberdeen),
        qPrintable(QStringLiteral("%1,%2 %3x%4").arg(shown.x()).arg(shown.y()).arg(shown.width()).arg(shown.height())));

    // An out-of-range current map falls back to the first.
    w.setMaps(kMaps, files, 7);
    QCOMPARE(checked(), QStringList {u"Europe Map"_qs});
}

void TestMapWindow::ownBitmapGetsNoMarks()
{
    // A map of the user's own: its name has no fit, so the bitmap shows
    // as it is and no notice claims the station is off it.
    QTemporaryDir dir;
    QVERIFY(QFile::copy(kMaps + u"/Japan Map.png"_qs, dir.filePath(u"Garden Map.png"_qs)));
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(dir.path(), {u"Garden Map.png"_qs}, 0);
    w.show();
    w.showStation(MapScene::forRow(kMe, u"JA1XYZ"_qs, 35.65, 139.77));
    QVERIFY(!w.mePixel());
    QVERIFY(!w.stationPixel());
    QVERIFY(!w.subjectOutside());
    QVERIFY(!w.findChild<QWidget *>(u"fraNotice"_qs)->isVisibleTo(&w));
    QCOMPARE(drawnMap(w), QImage(dir.filePath(u"Garden Map.png"_qs)).convertToFormat(QImage::Format_RGB32));
}

void TestMapWindow::stationOffTheMap()
{
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {u"UK Map.png"_qs, u"World Map.png"_qs}, 0);
    w.show();
    QSignalSpy chosen(&w, &gui::MapWindow::mapChosen);
    w.showStation(MapScene::forRow(kMe, u"VK2ABC"_qs, -33.86, 151.21));
    QVERIFY(w.subjectOutside());
    auto *notice = w.findChild<QLabel *>(u"lblNotice"_qs);
    auto *world = w.findChild<QPushButton *>(u"cmdWorldMap"_qs);
    QVERIFY(notice->isVisibleTo(&w));
    QCOMPARE(notice->text(), u"VK2ABC lies outside this map."_qs);
    QVERIFY(world->isVisibleTo(&w));

    world->click();
    QCOMPARE(w.currentMapName(), u"World Map"_qs);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.at(0).at(0).toInt(), 1);
    QVERIFY(!w.subjectOutside());
    QVERIFY(!notice->isVisibleTo(&w));

    // A station the world map's fit has no pixel for (a pole) is off it too,
    // and the window says so rather than fail.
    w.showStation(MapScene::forRow(kMe, u"KC4AAA"_qs, -90, 0));
    QVERIFY(w.subjectOutside());
    QVERIFY(!w.stationPixel());
    QVERIFY(w.mePixel());
    QVERIFY(!world->isVisibleTo(&w)); // already on the world map
}

void TestMapWindow::zoomAroundThePointer()
{
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {u"World Map.png"_qs}, 0);
    w.show();
    w.showStation(MapScene::forRow(kMe, u"W1AW"_qs, 41.71, -72.73));
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    auto *outer = w.findChild<QScrollArea *>(u"picOuter"_qs);
    auto *inner = w.findChild<QWidget *>(u"picInner"_qs);

    // The map point under the pointer stays under it.
    const QPoint pointer = outer->viewport()->rect().center() + QPoint(40, -25);
    const QPointF before = QPointF(inner->mapFrom(outer->viewport(), pointer)) / w.zoom();
    QWheelEvent wheel(QPointF(inner->mapFrom(outer->viewport(), pointer)), QPointF(), QPoint(), QPoint(0, 240),
        Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(inner, &wheel);
    QCOMPARE(w.zoom(), 1.25 * 1.25);
    const QPointF after = QPointF(inner->mapFrom(outer->viewport(), pointer)) / w.zoom();
    QVERIFY2(QLineF(before, after).length() < 1.0,
        qPrintable(QStringLiteral("%1,%2 -> %3,%4").arg(before.x()).arg(before.y()).arg(after.x()).arg(after.y())));
    QCOMPARE(inner->size(), (QSizeF(2800, 1412) * w.zoom()).toSize());

    // Marks keep their screen size and follow the map's scale.
    const QPoint station = *w.stationPixel();
    const QImage zoomed = drawnMap(w);
    QVERIFY(isMarkBlue(zoomed.pixel(((QPointF(station) + QPointF(0.5, 0.5)) * w.zoom()).toPoint())));

    // The 0 key puts the map back at its own size, the station in sight.
    QTest::keyClick(&w, Qt::Key_0);
    QCOMPARE(w.zoom(), 1.0);
    const QRect shown(outer->horizontalScrollBar()->value(), outer->verticalScrollBar()->value(),
        outer->viewport()->width(), outer->viewport()->height());
    QVERIFY(shown.contains(station));

    // Zooming out stops where the whole map fits.
    for (int i = 0; i < 20; ++i)
        w.setZoom(w.zoom() / 2, QPointF(0, 0));
    QVERIFY(inner->width() <= outer->viewport()->width() + 1 || inner->height() <= outer->viewport()->height() + 1);
    QVERIFY(w.zoom() >= 0.1);
}

void TestMapWindow::dragAndClose()
{
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {u"World Map.png"_qs}, 0);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    QTRY_COMPARE(w.frameGeometry(), w.screen()->availableGeometry());
    w.showStation(MapScene::forRow(kMe, u"ZS1A"_qs, -33.92, 18.42));

    auto *outer = w.findChild<QScrollArea *>(u"picOuter"_qs);
    auto *inner = w.findChild<QWidget *>(u"picInner"_qs);
    QScrollBar *h = outer->horizontalScrollBar();
    QScrollBar *v = outer->verticalScrollBar();
    h->setValue(1000);
    v->setValue(400);
    const QPoint grab = inner->mapFrom(outer->viewport(), outer->viewport()->rect().center());
    QTest::mousePress(inner, Qt::LeftButton, Qt::NoModifier, grab);
    QMouseEvent move(QEvent::MouseMove, QPointF(grab - QPoint(50, 30)),
        inner->mapToGlobal(QPointF(grab - QPoint(50, 30))), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(inner, &move);
    QTest::mouseRelease(inner, Qt::LeftButton, Qt::NoModifier, grab - QPoint(50, 30));
    // The map follows the pointer: dragging left and up shows what lies right and below.
    QCOMPARE(h->value(), 1050);
    QCOMPARE(v->value(), 430);

    QTest::mouseDClick(inner, Qt::LeftButton, Qt::NoModifier, grab);
    QVERIFY(!w.isVisible());
}

void TestMapWindow::relabels()
{
    i18n::CurrentTexts texts;
    gui::MapWindow w(texts);
    w.setMaps(kMaps, {u"UK Map.png"_qs, u"World Map.png"_qs}, 0);
    w.showStation(MapScene::forRow(kMe, u"VK2ABC"_qs, -33.86, 151.21));
    i18n::Texts dutch = texts.texts();
    dutch[i18n::TextId::MenuMaps] = u"Kaarten"_qs;
    dutch[i18n::TextId::MapStationOutside] = u"xxx ligt buiten deze kaart."_qs;
    texts.setTexts(dutch);
    QCOMPARE(w.menuBar()->actions().first()->text(), u"Kaarten"_qs);
    QCOMPARE(w.findChild<QLabel *>(u"lblNotice"_qs)->text(), u"VK2ABC ligt buiten deze kaart."_qs);
}

QTEST_MAIN(TestMapWindow)
#include "tst_mapwindow.moc"
