// SPDX-License-Identifier: GPL-3.0-or-later
// The map window on the 2800-pixel world map: drawing it for a new station
// (the scene switched, the view redrawn) and switching to the map from
// another, each against drawing the bare map image in the same run.
#include "BenchUtil.h"
#include "core/app/DataFolder.h"
#include "core/i18n/Texts.h"
#include "gui/maps/MapWindow.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <cstdio>

using namespace marvik;

namespace {

constexpr int kRuns = 50;

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString mapsDir = app::shareFolder() + u"/Maps"_qs;
    const QPixmap world(mapsDir + u"/World Map.png"_qs);
    if (world.isNull()) {
        std::fprintf(stderr, "bench_map: no World Map.png in %s\n", qPrintable(mapsDir));
        return 1;
    }
    QImage target(world.size(), QImage::Format_RGB32);

    const auto drawBare = [&] {
        QPainter p(&target);
        p.drawPixmap(0, 0, world);
    };

    i18n::CurrentTexts texts;
    gui::MapWindow window(texts);
    window.setMaps(mapsDir, {u"Europe Map.png"_qs, u"World Map.png"_qs}, 1);
    window.show();
    QWidget *canvas = window.findChild<QWidget *>(u"picInner"_qs);
    const maps::Position me {51.5, -0.12};
    const maps::MapScene scenes[] = {maps::MapScene::forRow(me, u"VK2ABC"_qs, -33.86, 151.21),
        maps::MapScene::forRow(me, u"W1AW"_qs, 41.71, -72.73)};
    int next = 0;
    const auto drawStation = [&] {
        window.showStation(scenes[next++ % 2]);
        canvas->render(&target);
    };
    // Turn about, so a change of load on the machine hits both alike.
    double bareMs = 0;
    double stationMs = 0;
    for (int round = 0; round < 5; ++round) {
        bareMs += bench::medianMs(kRuns / 5, drawBare) / 5;
        stationMs += bench::medianMs(kRuns / 5, drawStation) / 5;
    }

    // Reading the world map's file again and drawing it: what a pick in the
    // Maps menu costs.
    const double toWorldMs = bench::medianMs(kRuns, [&] {
        window.setCurrentMap(0);
        window.setCurrentMap(1);
        canvas->render(&target);
    });

    std::printf("map window, World Map %dx%d: bare and station %d runs each in five turns (mean of the medians), map "
                "switch median of %d\n",
        world.width(), world.height(), kRuns, kRuns);
    std::printf("  bare image drawn:                       %8.2f ms\n", bareMs);
    std::printf("  new station (switch and redraw):        %8.2f ms   ratio %6.2fx\n", stationMs, stationMs / bareMs);
    std::printf("  map switch to the world map and redraw: %8.2f ms   ratio %6.2fx\n", toWorldMs, toWorldMs / bareMs);
    return 0;
}
