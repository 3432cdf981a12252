// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/Sources.h"

#include <array>

namespace marvik::lookup {

namespace {

// The request labels are fixed words except eHam's, which is its domain
// name: the site page must contain the label for the answer to count.
// HamQTH offers no call page worth reading, only its data service; its menu
// caption is its domain name.
constexpr std::array<SourceInfo, kSourceCount> kTable{{
    {Source::EHam, u"eHam", u"eHam", u"/", u"/callbook/", u"", u"https://www.eham.net", u"eHam.net", true, true, u"",
     false},
    {Source::Qrz, u"QRZ", u"QRZ", u"/", u"/db/", u"QRZ", u"https://www.qrz.com", u"QRZ.com", true, true,
     u"https://xmldata.qrz.com", true},
    {Source::QrzCq, u"QRZCQ", u"QRZCQ", u"/", u"/call/", u"QRZCQ", u"https://www.qrzcq.com", u"QRZCQ.com", true, true,
     u"https://ssl.qrzcq.com", true},
    {Source::Callook, u"Callook", u"Callook", u"/", u"/", u"callook", u"https://callook.info", u"Callook.info", true, true,
     u"https://callook.info", false},
    {Source::HamCall, u"HamCall", u"HamCall", u"/call", u"/call?callsign=", u"HamCall", u"https://hamcall.net",
     u"HamCall.net", true, true, u"", false},
    {Source::QrzCd, u"QRZ CD", u"", u"", u"", u"", u"", u"", false, false, u"", false},
    {Source::HamCallCd, u"HamCall CD", u"", u"", u"", u"", u"", u"", false, false, u"", false},
    {Source::HamQth, u"HamQTH.com", u"HamQTH", u"", u"", u"HamQTH", u"https://www.hamqth.com", u"HamQTH.com", true, false,
     u"https://www.hamqth.com", true},
}};

} // namespace

std::span<const SourceInfo> sourceTable()
{
    return kTable;
}

const SourceInfo &sourceInfo(Source source)
{
    return kTable[std::size_t(source)];
}

std::optional<Source> sourceFromMenuIndex(int menuIndex)
{
    if (menuIndex < 0 || menuIndex >= kSourceCount)
        return std::nullopt;
    return Source(menuIndex);
}

std::optional<Source> onlineSourceFromDataBase(int dataBase)
{
    const std::optional<Source> source = sourceFromMenuIndex(dataBase - 1);
    if (!source || !hasPageReader(*source))
        return std::nullopt;
    return source;
}

std::optional<Source> sourceFromName(const QString &name)
{
    const QString n = name.trimmed();
    bool ok = false;
    const int number = n.toInt(&ok);
    if (ok)
        return onlineSourceFromDataBase(number);
    for (const SourceInfo &info : kTable) {
        if (info.online && n.compare(info.key, Qt::CaseInsensitive) == 0)
            return info.source;
    }
    return std::nullopt;
}

QString sourceName(Source source)
{
    return sourceInfo(source).key.toString().toLower();
}

} // namespace marvik::lookup
