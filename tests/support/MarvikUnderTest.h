// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/SourceSettings.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"

#include <QSettings>
#include <QTimer>

namespace marvik::test {

/// Points every callbook, the picture host and the map views at a closed port on this
/// computer, so a window test that starts Marvik never reaches the internet.
inline void pointSourcesNowhere(QSettings &store)
{
    lookup::SourceSettings sources;
    for (const lookup::SourceInfo &info : lookup::sourceTable()) {
        sources.setHost(info.source, QStringLiteral("http://127.0.0.1:1"));
        sources.setServiceHost(info.source, QStringLiteral("http://127.0.0.1:1"));
    }
    sources.setPicturesHost(QStringLiteral("http://127.0.0.1:1/"));
    sources.setStreetViewHost(QStringLiteral("http://127.0.0.1:1"));
    sources.setSatelliteHost(QStringLiteral("http://127.0.0.1:1"));
    sources.save(store);
}

/// A child of the running program by objectName: in the main window first,
/// then among the parts the composition root owns (controllers, timers).
template<typename T>
T *findPart(const gui::CompositionRoot &root, const QString &name)
{
    if (T *inWindow = root.mainWindow()->findChild<T *>(name))
        return inWindow;
    return root.findChild<T *>(name);
}

} // namespace marvik::test
