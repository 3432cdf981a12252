// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/SourceSettings.h"

#include <QSettings>

namespace marvik::lookup {

namespace {

std::size_t slot(Source source)
{
    return std::size_t(menuIndexOf(source));
}

QString keyOf(const SourceInfo &info, const char16_t *what)
{
    return info.key + u'/' + QStringView(what);
}

} // namespace

QString viaName(Via via)
{
    return via == Via::Service ? QStringLiteral("service") : QStringLiteral("page");
}

std::optional<Via> viaFromName(const QString &name)
{
    const QString n = name.trimmed();
    if (n.compare(u"page", Qt::CaseInsensitive) == 0)
        return Via::Page;
    if (n.compare(u"service", Qt::CaseInsensitive) == 0)
        return Via::Service;
    return std::nullopt;
}

SourceSettings::SourceSettings()
    : m_picturesHost(QStringLiteral("https://files.qrz.com/"))
    , m_streetViewHost(QStringLiteral("http://maps.google.com"))
    , m_satelliteHost(QStringLiteral("https://www.google.com"))
{
    for (const SourceInfo &info : sourceTable()) {
        m_hosts[slot(info.source)] = info.defaultHost.toString();
        m_domains[slot(info.source)] = info.defaultDomain.toString();
        m_serviceHosts[slot(info.source)] = info.defaultServiceHost.toString();
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
        if (!hasDataService(info.source))
            continue;
        QString &serviceHost = s.m_serviceHosts[slot(info.source)];
        serviceHost = store.value(keyOf(info, u"ServiceHost"), serviceHost).toString();
        s.m_users[slot(info.source)] = store.value(keyOf(info, u"User")).toString().trimmed();
        s.m_via[slot(info.source)] = viaFromName(store.value(keyOf(info, u"Via")).toString());
    }
    const QStringList order = store.value(QStringLiteral("Fallback/Order")).toString().split(u',', Qt::SkipEmptyParts);
    for (const QString &name : order) {
        const std::optional<Source> source = sourceFromName(name);
        if (source && !s.m_fallbackOrder.contains(*source))
            s.m_fallbackOrder.append(*source);
    }
    bool ok = false;
    const int days = store.value(QStringLiteral("Cache/FreshDays")).toInt(&ok);
    if (ok && days >= 0)
        s.m_cacheFreshDays = days;
    const int entries = store.value(QStringLiteral("Cache/MaxEntries")).toInt(&ok);
    if (ok && entries > 0)
        s.m_cacheMaxEntries = entries;
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
        if (!hasDataService(info.source))
            continue;
        store.setValue(keyOf(info, u"ServiceHost"), m_serviceHosts[slot(info.source)]);
        if (m_users[slot(info.source)].isEmpty())
            store.remove(keyOf(info, u"User"));
        else
            store.setValue(keyOf(info, u"User"), m_users[slot(info.source)]);
        if (const std::optional<Via> via = m_via[slot(info.source)])
            store.setValue(keyOf(info, u"Via"), viaName(*via));
        else
            store.remove(keyOf(info, u"Via"));
    }
    QStringList order;
    for (Source source : m_fallbackOrder)
        order.append(sourceInfo(source).key.toString());
    if (order.isEmpty())
        store.remove(QStringLiteral("Fallback/Order"));
    else
        store.setValue(QStringLiteral("Fallback/Order"), order.join(u','));
    store.setValue(QStringLiteral("Cache/FreshDays"), m_cacheFreshDays);
    store.setValue(QStringLiteral("Cache/MaxEntries"), m_cacheMaxEntries);
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

QString SourceSettings::serviceHost(Source source) const
{
    return hasDataService(source) ? m_serviceHosts[slot(source)] : QString();
}

void SourceSettings::setServiceHost(Source source, const QString &host)
{
    if (hasDataService(source))
        m_serviceHosts[slot(source)] = host;
}

QString SourceSettings::userName(Source source) const
{
    return hasDataService(source) ? m_users[slot(source)] : QString();
}

void SourceSettings::setUserName(Source source, const QString &user)
{
    if (hasDataService(source))
        m_users[slot(source)] = user.trimmed();
}

Via SourceSettings::via(Source source) const
{
    if (!hasDataService(source))
        return Via::Page;
    if (!hasPageReader(source))
        return Via::Service;
    if (const std::optional<Via> chosen = m_via[slot(source)])
        return *chosen;
    const bool accountNeeded = sourceInfo(source).serviceNeedsAccount;
    return !accountNeeded || !userName(source).isEmpty() ? Via::Service : Via::Page;
}

std::optional<Via> SourceSettings::savedVia(Source source) const
{
    return isOnline(source) ? m_via[slot(source)] : std::nullopt;
}

void SourceSettings::setVia(Source source, std::optional<Via> via)
{
    if (hasDataService(source))
        m_via[slot(source)] = via;
}

bool SourceSettings::isReady(Source source) const
{
    if (!isOnline(source))
        return false;
    if (via(source) == Via::Page || !sourceInfo(source).serviceNeedsAccount)
        return true;
    return !userName(source).isEmpty();
}

QList<Source> SourceSettings::fallbackOrder(Source chosen) const
{
    QList<Source> order;
    if (!m_fallbackOrder.isEmpty()) {
        for (Source source : m_fallbackOrder) {
            if (source != chosen && isOnline(source))
                order.append(source);
        }
        return order;
    }
    for (const SourceInfo &info : sourceTable()) {
        if (info.source != chosen && isReady(info.source))
            order.append(info.source);
    }
    return order;
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
