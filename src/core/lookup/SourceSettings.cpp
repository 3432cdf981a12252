// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/SourceSettings.h"

#include <QSettings>

namespace marvik::lookup {

namespace {

std::size_t slot(Source source)
{
    return std::size_t(menuIndexOf(source));
}

} // namespace

SourceSettings::SourceSettings()
    : m_picturesHost(QStringLiteral("https://files.qrz.com/"))
    , m_streetViewHost(QStringLiteral("http://maps.google.com"))
    , m_satelliteHost(QStringLiteral("https://www.google.com"))
{
    for (const SourceInfo &info : sourceTable()) {
        m_hosts[slot(info.source)] = info.defaultHost.toString();
        m_domains[slot(info.source)] = info.defaultDomain.toString();
    }
}

SourceSettings SourceSettings::load(QSettings &store)
{
    SourceSettings s;
    store.beginGroup(QStringLiteral("Sources"));
    for (const SourceInfo &info : sourceTable()) {
        if (!info.online)
            continue;
        const QString key = info.key.toString();
        QString &host = s.m_hosts[slot(info.source)];
        QString &domain = s.m_domains[slot(info.source)];
        host = store.value(key + QStringLiteral("/Host"), host).toString();
        domain = store.value(key + QStringLiteral("/Domain"), domain).toString();
    }
    s.m_picturesHost = store.value(QStringLiteral("Pictures/Host"), s.m_picturesHost).toString();
    s.m_updatesUrl = store.value(QStringLiteral("Updates/Url"), s.m_updatesUrl).toString();
    s.m_downloadUrl = store.value(QStringLiteral("Download/Url"), s.m_downloadUrl).toString();
    s.m_streetViewHost = store.value(QStringLiteral("StreetView/Host"), s.m_streetViewHost).toString();
    s.m_satelliteHost = store.value(QStringLiteral("Satellite/Host"), s.m_satelliteHost).toString();
    store.endGroup();
    return s;
}

SourceSettings SourceSettings::load()
{
    QSettings store(QStringLiteral("Marvik"), QStringLiteral("Marvik"));
    return load(store);
}

void SourceSettings::save(QSettings &store) const
{
    store.beginGroup(QStringLiteral("Sources"));
    for (const SourceInfo &info : sourceTable()) {
        if (!info.online)
            continue;
        store.setValue(info.key + QStringLiteral("/Host"), m_hosts[slot(info.source)]);
        store.setValue(info.key + QStringLiteral("/Domain"), m_domains[slot(info.source)]);
    }
    store.setValue(QStringLiteral("Pictures/Host"), m_picturesHost);
    store.setValue(QStringLiteral("Updates/Url"), m_updatesUrl);
    store.setValue(QStringLiteral("Download/Url"), m_downloadUrl);
    store.setValue(QStringLiteral("StreetView/Host"), m_streetViewHost);
    store.setValue(QStringLiteral("Satellite/Host"), m_satelliteHost);
    store.endGroup();
}

QString SourceSettings::host(Source source) const
{
    return isOnline(source) ? m_hosts[slot(source)] : QString();
}

void SourceSettings::setHost(Source source, const QString &host)
{
    if (isOnline(source))
        m_hosts[slot(source)] = host;
}

QString SourceSettings::domain(Source source) const
{
    return isOnline(source) ? m_domains[slot(source)] : QString();
}

void SourceSettings::setDomain(Source source, const QString &domain)
{
    if (isOnline(source))
        m_domains[slot(source)] = domain;
}

QString requestLabel(const SourceSettings &settings, Source source)
{
    const SourceInfo &info = sourceInfo(source);
    if (!info.online)
        return {};
    return info.requestLabel.isEmpty() ? settings.domain(source) : info.requestLabel.toString();
}

QString menuLabel(const SourceSettings &settings, Source source)
{
    if (!isOnline(source))
        return sourceInfo(source).caption.toString();
    // Callook's label is its domain name in capitals.
    return source == Source::Callook ? settings.domain(source).toUpper() : settings.domain(source);
}

QString siteAddress(const SourceSettings &settings, Source source)
{
    if (source == Source::Qrz)
        return settings.host(source) + sourceInfo(source).callPagePath;
    return settings.host(source);
}

} // namespace marvik::lookup
