// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/RefreshSettings.h"

#include <QSettings>

namespace marvik::logs {

namespace {

int wholeNumber(const QSettings &store, const QString &key, int fallback)
{
    bool ok = false;
    const int value = store.value(key).toInt(&ok);
    return ok && value >= 0 ? value : fallback;
}

} // namespace

RefreshSettings RefreshSettings::load(QSettings &store)
{
    RefreshSettings s;
    store.beginGroup(QStringLiteral("Refresh"));
    s.intervalMs = wholeNumber(store, QStringLiteral("IntervalMs"), s.intervalMs);
    s.skipDays = wholeNumber(store, QStringLiteral("SkipDays"), s.skipDays);
    store.endGroup();
    return s;
}

RefreshSettings RefreshSettings::load()
{
    QSettings store(QStringLiteral("Marvik"), QStringLiteral("Marvik"));
    return load(store);
}

void RefreshSettings::save(QSettings &store) const
{
    store.beginGroup(QStringLiteral("Refresh"));
    store.setValue(QStringLiteral("IntervalMs"), intervalMs);
    store.setValue(QStringLiteral("SkipDays"), skipDays);
    store.endGroup();
}

} // namespace marvik::logs
