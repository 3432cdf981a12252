// SPDX-License-Identifier: GPL-3.0-or-later
// A program built from the whole core library and nothing of the windows:
// it links only when no part of the core reaches for Qt Widgets or the web
// engine, and it runs the core headless.
#include "core/app/Config.h"
#include "core/lists/CallListModel.h"
#include "core/maps/Geometry.h"

#include <QGuiApplication>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    marvik::lists::CallListModel model;
    const marvik::maps::Bearing b = marvik::maps::bearingFrom({40, -75}, 41, -75);
    return model.rowCount() == 0 && b.miles == 69 ? 0 : 1;
}
