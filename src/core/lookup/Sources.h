// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <span>

namespace marvik::lookup {

/// A lookup source by its place in the Database menus (`mnuSource`,
/// `mnuDefaultDB`). The number a request control calls `data_base` is this
/// index plus one; the two CD callbooks start no online request. HamQTH came
/// after the CD entries, so the menu indexes the Windows program wrote to
/// Marvik.cfg keep their meaning.
enum class Source : int {
    EHam = 0,
    Qrz = 1,
    QrzCq = 2,
    Callook = 3,
    HamCall = 4,
    QrzCd = 5,
    HamCallCd = 6,
    HamQth = 7,
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
    bool pageReader;           ///< its call pages can be read (the page request control serves it)
    QStringView defaultServiceHost; ///< scheme and host of its data service; empty: it has none
    bool serviceNeedsAccount;  ///< the data service wants a user name and a password
};

/// Every source, in menu order.
std::span<const SourceInfo> sourceTable();
const SourceInfo &sourceInfo(Source source);

/// The number of entries of the Database menus.
inline constexpr int kSourceCount = 8;

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

/// True for a source whose call pages the page readers know.
inline bool hasPageReader(Source source)
{
    return sourceInfo(source).pageReader;
}
/// True for a source with a data service (QRZ, QRZCQ, Callook, HamQTH).
inline bool hasDataService(Source source)
{
    return !sourceInfo(source).defaultServiceHost.isEmpty();
}

/// The source at a menu index; nothing outside the table.
std::optional<Source> sourceFromMenuIndex(int menuIndex);
/// The source with call pages that a `data_base` number selects; nothing for
/// any other number (the CD callbooks' 6 and 7 select none, and HamQTH's 8
/// none either: it has no pages to read).
std::optional<Source> onlineSourceFromDataBase(int dataBase);
/// A source named on a command line: its `data_base` number "1".."5", or
/// eham, qrz, qrzcq, callook, hamcall, hamqth in any case. Online sources only.
std::optional<Source> sourceFromName(const QString &name);
/// The name a command line and the settings give a source: its settings key
/// in lower case ("qrz", "hamqth"); empty for a CD callbook.
QString sourceName(Source source);

} // namespace marvik::lookup
