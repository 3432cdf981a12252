// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/Sources.h"

#include <QList>
#include <QString>

#include <array>
#include <optional>

class QSettings;

namespace marvik::lookup {

/// How a source is reached: its web page, read by the page readers, or its
/// data service (XML or JSON made for programs).
enum class Via { Page, Service };

/// "page" or "service", as the settings and the command line write it.
QString viaName(Via via);
std::optional<Via> viaFromName(const QString &name);

/// Where the callbooks, the picture host and the maker's site are, kept in
/// group "Sources" of the settings store so a user (or a test) can move them.
class SourceSettings
{
public:
    SourceSettings(); ///< the public addresses

    /// Reads group "Sources"; a missing key keeps its default.
    static SourceSettings load(QSettings &store);
    /// Reads the per-user settings store QSettings("Marvik", "Marvik").
    static SourceSettings load();
    void save(QSettings &store) const;

    /// Scheme and host (and port) of an online source, no trailing slash.
    /// Empty for a CD callbook.
    QString host(Source source) const;
    void setHost(Source source, const QString &host);
    /// The source's domain name as its pages print it ("QRZCQ.com").
    QString domain(Source source) const;
    void setDomain(Source source, const QString &domain);

    /// The operator-picture host, ending in "/".
    QString picturesHost() const { return m_picturesHost; }
    void setPicturesHost(const QString &host) { m_picturesHost = host; }
    /// The maker's update page; empty: no update check.
    QString updatesUrl() const { return m_updatesUrl; }
    void setUpdatesUrl(const QString &url) { m_updatesUrl = url; }
    QString downloadUrl() const { return m_downloadUrl; }
    void setDownloadUrl(const QString &url) { m_downloadUrl = url; }
    QString streetViewHost() const { return m_streetViewHost; }
    void setStreetViewHost(const QString &host) { m_streetViewHost = host; }
    QString satelliteHost() const { return m_satelliteHost; }
    void setSatelliteHost(const QString &host) { m_satelliteHost = host; }

    /// Scheme and host of a source's data service ("<key>/ServiceHost");
    /// empty for a source without one.
    QString serviceHost(Source source) const;
    void setServiceHost(Source source, const QString &host);
    /// The account's user name for a data service ("<key>/User"); the
    /// password lives in the desktop keyring, never here.
    QString userName(Source source) const;
    void setUserName(Source source, const QString &user);
    /// How the source is reached ("<key>/Via"). Unset, a source with call
    /// pages is read from its pages unless its service needs no account
    /// (Callook) or an account is set up for it; HamQTH has only its service.
    /// A choice the source cannot serve gives way to the one it can.
    Via via(Source source) const;
    /// nothing: back to the rule above.
    void setVia(Source source, std::optional<Via> via);
    /// The way as set; nothing when the rule above decides.
    std::optional<Via> savedVia(Source source) const;
    /// True when the source can answer with nothing more set up: a page, a
    /// service without an account, or a service whose user name is set.
    bool isReady(Source source) const;

    /// The sources a lookup tries after the chosen one, in the user's order
    /// ("Fallback/Order", keys separated by commas). Unset: every other
    /// online source that is ready, in menu order.
    QList<Source> fallbackOrder(Source chosen) const;
    /// The order as set; empty when the default rule applies.
    QList<Source> savedFallbackOrder() const { return m_fallbackOrder; }
    void setFallbackOrder(const QList<Source> &order) { m_fallbackOrder = order; }

    /// How many days a cached lookup result still answers ("Cache/FreshDays").
    int cacheFreshDays() const { return m_cacheFreshDays; }
    void setCacheFreshDays(int days) { m_cacheFreshDays = days; }
    /// The most results the cache keeps; the oldest go first ("Cache/MaxEntries").
    int cacheMaxEntries() const { return m_cacheMaxEntries; }
    void setCacheMaxEntries(int entries) { m_cacheMaxEntries = entries; }

private:
    std::array<QString, kSourceCount> m_hosts;
    std::array<QString, kSourceCount> m_domains;
    std::array<QString, kSourceCount> m_serviceHosts;
    std::array<QString, kSourceCount> m_users;
    std::array<std::optional<Via>, kSourceCount> m_via;
    QList<Source> m_fallbackOrder;
    int m_cacheFreshDays = 90;
    int m_cacheMaxEntries = 20000;
    QString m_picturesHost;
    QString m_updatesUrl;
    QString m_downloadUrl;
    QString m_streetViewHost;
    QString m_satelliteHost;
};

/// The subject of a site request, which its page must contain: eHam's domain
/// name, "QRZ", "QRZCQ", "callook", "HamCall".
QString requestLabel(const SourceSettings &settings, Source source);

/// The label of a source in the Database menu's caption: the domain name
/// (Callook's in capitals), "QRZ CD", "HamCall CD".
QString menuLabel(const SourceSettings &settings, Source source);
/// The site a source stands for: the host (QRZ's with "/db/"), empty for
/// the CD callbooks.
QString siteAddress(const SourceSettings &settings, Source source);

} // namespace marvik::lookup
