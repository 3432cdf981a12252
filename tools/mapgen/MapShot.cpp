// SPDX-License-Identifier: GPL-3.0-or-later
// mapshot: the map window on each of the nine maps with a station and Me,
// saved as pictures for a look after the maps or the window changed.
//   mapshot MAPS_DIR OUT_DIR
#include "core/i18n/Texts.h"
#include "gui/maps/MapWindow.h"

#include <QApplication>
#include <QDir>
#include <QTest>

#include <cstdio>

using namespace marvik;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() != 2) {
        std::fprintf(stderr, "usage: mapshot MAPS_DIR OUT_DIR\n");
        return 2;
    }
    QDir().mkpath(args[1]);
    const struct
    {
        const char16_t *map;
        maps::Position me;
        const char16_t *call;
        double lat;
        double lon;
    } shots[] = {
        {u"World Map", {51.5, -0.12}, u"VK2ABC", -33.86, 151.21},
        {u"North America Map", {41.71, -72.73}, u"K6ABC", 37.77, -122.42},
        {u"Australia Map", {-31.95, 115.86}, u"VK2ABC", -33.86, 151.21},
        {u"UK Map", {51.5, -0.12}, u"GM3ABC", 57.15, -2.09},
        {u"Europe Map", {51.5, -0.12}, u"I0ABC", 41.9, 12.5},
        {u"New Zealand Map", {-36.85, 174.76}, u"ZL4ABC", -45.87, 170.5},
        {u"Japan Map", {35.68, 139.77}, u"JA8ABC", 43.06, 141.35},
        {u"Asia Map", {35.68, 139.77}, u"VU2ABC", 19.08, 72.88},
        {u"N-Nederland Map", {52.37, 4.9}, u"PA3ABC", 53.22, 6.57},
    };
    i18n::CurrentTexts texts;
    for (const auto &shot : shots) {
        const QString map = QString::fromUtf16(shot.map);
        gui::MapWindow window(texts);
        window.setMaps(args[0], {map + u".png"_qs}, 0);
        window.show();
        window.showStation(maps::MapScene::forRow(shot.me, QString::fromUtf16(shot.call), shot.lat, shot.lon));
        QTest::qWait(300);
        const QString file = args[1] + u'/' + map + u" shot.png"_qs;
        window.grab().save(file);
        std::printf("%s\n", qPrintable(file));
    }
    return 0;
}
