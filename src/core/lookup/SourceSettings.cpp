// SPDX-License-Identifier: GPL-3.0-or-later
#include "SourceSettings.h"

#include <QSettings>

namespace marvik::lookup {

namespace {

bool inRange(int dataBase)
{
    return dataBase >= kFirstSource && dataBase <= kLastSource;
}

std::size_t slot(int dataBase)
{
    return std::size_t(dataBase - kFirstSource);
}

} // namespace

SourceSettings::SourceSettings()
    : m_hosts{QStringLiteral("https://www.eham.net"), QStringLiteral("https://www.qrz.com"),
              QStringLiteral("https://www.qrzcq.com"), QStringLiteral("https://callook.info"),
              QStringLiteral("https://hamcall.net")}
    , m_domains{QStringLiteral("eHam.net"), QStringLiteral("QRZ.com"), QStringLiteral("QRZCQ.com"),
                QStringLiteral("Callook.info"), QStringLiteral("HamCall.net")}
    , m_picturesHost(QStringLiteral("https://files.qrz.com/"))
    , m_streetViewHost(QStringLiteral("http://maps.google.com"))
    , m_satelliteHost(QStringLiteral("https://www.google.com"))
{
}

SourceSettings SourceSettings::load(QSettings &store)
{
    SourceSettings s;
    store.beginGroup(QStringLiteral("Sources"));
    for (int db = kFirstSource; db <= kLastSource; ++db) {
        const QString key = keyName(db);
        s.m_hosts[slot(db)] = store.value(key + QStringLiteral("/Host"), s.m_hosts[slot(db)]).toString();
        s.m_domains[slot(db)] = store.value(key + QStringLiteral("/Domain"), s.m_domains[slot(db)]).toString();
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
    for (int db = kFirstSource; db <= kLastSource; ++db) {
        store.setValue(keyName(db) + QStringLiteral("/Host"), m_hosts[slot(db)]);
        store.setValue(keyName(db) + QStringLiteral("/Domain"), m_domains[slot(db)]);
    }
    store.setValue(QStringLiteral("Pictures/Host"), m_picturesHost);
    store.setValue(QStringLiteral("Updates/Url"), m_updatesUrl);
    store.setValue(QStringLiteral("Download/Url"), m_downloadUrl);
    store.setValue(QStringLiteral("StreetView/Host"), m_streetViewHost);
    store.setValue(QStringLiteral("Satellite/Host"), m_satelliteHost);
    store.endGroup();
}

QString SourceSettings::host(int dataBase) const
{
    return inRange(dataBase) ? m_hosts[slot(dataBase)] : QString();
}

void SourceSettings::setHost(int dataBase, const QString &host)
{
    if (inRange(dataBase))
        m_hosts[slot(dataBase)] = host;
}

QString SourceSettings::domain(int dataBase) const
{
    return inRange(dataBase) ? m_domains[slot(dataBase)] : QString();
}

void SourceSettings::setDomain(int dataBase, const QString &domain)
{
    if (inRange(dataBase))
        m_domains[slot(dataBase)] = domain;
}

QString SourceSettings::keyName(int dataBase)
{
    switch (dataBase) {
    case EHam: return QStringLiteral("eHam");
    case Qrz: return QStringLiteral("QRZ");
    case QrzCq: return QStringLiteral("QRZCQ");
    case Callook: return QStringLiteral("Callook");
    case HamCall: return QStringLiteral("HamCall");
    default: return {};
    }
}

QString sitePath(int dataBase)
{
    if (!inRange(dataBase))
        return {};
    return dataBase == HamCall ? QStringLiteral("/call") : QStringLiteral("/");
}

QString callPagePath(int dataBase)
{
    switch (dataBase) {
    case EHam: return QStringLiteral("/callbook/");
    case Qrz: return QStringLiteral("/db/");
    case QrzCq: return QStringLiteral("/call/");
    case Callook: return QStringLiteral("/");
    case HamCall: return QStringLiteral("/call?callsign=");
    default: return {};
    }
}

QString requestLabel(const SourceSettings &settings, int dataBase)
{
    switch (dataBase) {
    case EHam: return settings.domain(EHam);
    case Qrz: return QStringLiteral("QRZ");
    case QrzCq: return QStringLiteral("QRZCQ");
    case Callook: return QStringLiteral("callook");
    case HamCall: return QStringLiteral("HamCall");
    default: return {};
    }
}

QString menuLabel(const SourceSettings &settings, int menuIndex)
{
    switch (menuIndex) {
    case kQrzCdMenuIndex: return QStringLiteral("QRZ CD");
    case kHamCallCdMenuIndex: return QStringLiteral("HamCall CD");
    case Callook - 1: return settings.domain(Callook).toUpper();
    default: return settings.domain(menuIndex + 1);
    }
}

QString siteAddress(const SourceSettings &settings, int menuIndex)
{
    if (menuIndex == Qrz - 1)
        return settings.host(Qrz) + QStringLiteral("/db/");
    return settings.host(menuIndex + 1);
}

int sourceFromName(const QString &name)
{
    const QString n = name.trimmed().toLower();
    bool ok = false;
    const int number = n.toInt(&ok);
    if (ok)
        return inRange(number) ? number : 0;
    for (int db = kFirstSource; db <= kLastSource; ++db) {
        if (SourceSettings::keyName(db).toLower() == n)
            return db;
    }
    return 0;
}

} // namespace marvik::lookup
