// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>

class QSettings;

namespace marvik::lookup {

/// The five online callbooks by their `data_base` number.
enum Source : int { EHam = 1, Qrz = 2, QrzCq = 3, Callook = 4, HamCall = 5 };

inline constexpr int kFirstSource = EHam;
inline constexpr int kLastSource = HamCall;
/// Menu indexes of the two CD callbooks, which start no online request.
inline constexpr int kQrzCdMenuIndex = 5;
inline constexpr int kHamCallCdMenuIndex = 6;

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

    /// Scheme and host (and port) of a source, no trailing slash. Empty for a
    /// number outside 1..5.
    QString host(int dataBase) const;
    void setHost(int dataBase, const QString &host);
    /// The source's domain name as its pages print it ("QRZCQ.com").
    QString domain(int dataBase) const;
    void setDomain(int dataBase, const QString &domain);

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

    /// The key prefix of a source in the store: "eHam", "QRZ", "QRZCQ",
    /// "Callook", "HamCall".
    static QString keyName(int dataBase);

private:
    std::array<QString, 5> m_hosts;
    std::array<QString, 5> m_domains;
    QString m_picturesHost;
    QString m_updatesUrl;
    QString m_downloadUrl;
    QString m_streetViewHost;
    QString m_satelliteHost;
};

/// The page that tells whether the user is logged in: "/" ("/call" for HamCall).
QString sitePath(int dataBase);
/// What a callsign is appended to for its page: "/db/", "/call?callsign=", ...
QString callPagePath(int dataBase);
/// The subject of a site request, which its page must contain: eHam's domain
/// name, "QRZ", "QRZCQ", "callook", "HamCall".
QString requestLabel(const SourceSettings &settings, int dataBase);

/// The caption of the source menu for a menu index 0..6 (Callook's domain in
/// capitals, "QRZ CD", "HamCall CD").
QString menuLabel(const SourceSettings &settings, int menuIndex);
/// The site a menu index stands for: the host (QRZ's with "/db/"), empty for
/// the CD callbooks.
QString siteAddress(const SourceSettings &settings, int menuIndex);

/// A source named on a command line: "1".."5" or eham, qrz, qrzcq, callook,
/// hamcall in any case. 0 when it names none.
int sourceFromName(const QString &name);

} // namespace marvik::lookup
