// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Placement.h"

#include <QSettings>

namespace marvik::app {

namespace {

int readTwips(QSettings &store, const QString &key, int fallback)
{
    if (!store.contains(key))
        return fallback;
    // A value that is no number at all is as good as missing.
    bool ok = false;
    const double value = store.value(key).toString().trimmed().toDouble(&ok);
    return ok && value >= -1e9 && value <= 1e9 ? int(value) : fallback;
}

} // namespace

Placement Placement::load(QSettings &store)
{
    Placement p;
    store.beginGroup(QStringLiteral("Me"));
    p.left = readTwips(store, QStringLiteral("Left"), p.left);
    p.top = readTwips(store, QStringLiteral("Top"), p.top);
    p.width = readTwips(store, QStringLiteral("Width"), p.width);
    p.height = readTwips(store, QStringLiteral("Height"), p.height);
    store.endGroup();
    return p;
}

void Placement::save(QSettings &store) const
{
    store.beginGroup(QStringLiteral("Me"));
    store.setValue(QStringLiteral("Left"), QString::number(left));
    store.setValue(QStringLiteral("Top"), QString::number(top));
    store.setValue(QStringLiteral("Width"), QString::number(width));
    store.setValue(QStringLiteral("Height"), QString::number(height));
    store.endGroup();
}

} // namespace marvik::app
