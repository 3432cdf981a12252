// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <span>

namespace marvik::lookup {

/// A lookup source by its place in the Database menus (`mnuSource`,
/// `mnuDefaultDB`). The number a request control calls `data_base` is this
/// index plus one; the two CD callbooks start no online request.
enum class Source : int {
    EHam = 0,
    Qrz = 1,
    QrzCq = 2,
    Callook = 3,
    HamCall = 4,
    QrzCd = 5,
    HamCallCd = 6,
};

/// One row of the source table: everything the menus, the requests and the
/// settings need to know about a source, written down once.
struct SourceInfo
{
    Source source;
    QStringView caption;       ///< the menu caption: the service's name, "QRZ CD", "HamCall CD"
    QStringView key;           ///< key prefix in the "Sources" settings group; empty for a CD callbook
    QStringView sitePath;      ///< the page that tells the log-in state
    QStringView callPagePath;  ///< what a callsign is appended to for its page
    QStringView requestLabel;  ///< the subject of a site request; empty: the domain name
    QStringView defaultHost;   ///< scheme and host, no trailing slash
    QStringView defaultDomain; ///< the domain name as the pages print it, the Database menu's label
    bool online;               ///< false for the CD callbooks, which request nothing
};

/// Every source, in menu order.
std::span<const SourceInfo> sourceTable();
const SourceInfo &sourceInfo(Source source);

/// The number of entries of the Database menus.
inline constexpr int kSourceCount = 7;

inline int menuIndexOf(Source source)
{
    return int(source);
}
/// The `data_base` number of a source: its menu index plus one.
inline int dataBaseOf(Source source)
{
    return int(source) + 1;
}
inline bool isOnline(Source source)
{
    return sourceInfo(source).online;
}

/// The source at a menu index; nothing outside the table.
std::optional<Source> sourceFromMenuIndex(int menuIndex);
/// The online source a `data_base` number selects; nothing for any other
/// number (the CD callbooks' 6 and 7 select none).
std::optional<Source> onlineSourceFromDataBase(int dataBase);
/// A source named on a command line: its `data_base` number "1".."5", or
/// eham, qrz, qrzcq, callook, hamcall in any case. Online sources only.
std::optional<Source> sourceFromName(const QString &name);

} // namespace marvik::lookup
