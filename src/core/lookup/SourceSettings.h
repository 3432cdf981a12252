// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/Sources.h"

#include <QString>

#include <array>

class QSettings;

namespace marvik::lookup {

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

private:
    std::array<QString, kSourceCount> m_hosts;
    std::array<QString, kSourceCount> m_domains;
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
