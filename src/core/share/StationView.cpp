// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/share/StationView.h"

#include "core/app/Callsign.h"
#include "core/app/Number.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallRecord.h"
#include "core/lookup/SourceSettings.h"

namespace marvik::share {

ViewKind viewKindForMenu(int index)
{
    return index == 0 ? ViewKind::Street : ViewKind::Satellite;
}

QString coordinateText(double value)
{
    // The C-locale text is what the user's locale gives with its decimal
    // comma turned into a point; unlike the locale's text it can never carry
    // group separators or other digits into an address.
    return app::shortestDecimal(value);
}

QString viewAddress(ViewKind kind, const lookup::SourceSettings &hosts, double latitude, double longitude)
{
    QString lat;
    QString lon;
    if (latitude != 0 && longitude != 0) {
        lat = coordinateText(latitude);
        lon = coordinateText(longitude);
    }
    if (kind == ViewKind::Street)
        return hosts.streetViewHost() + QStringLiteral("/maps?q=&layer=c&cbll=") + lat + u',' + lon
            + QStringLiteral("&cbp=12,0,0,0,0");
    return hosts.satelliteHost() + QStringLiteral("/maps/place/") + lat + u'+' + lon + QStringLiteral("/@") + lat + u','
        + lon + QStringLiteral(",19z/data=!3m1!1e3");
}

ViewKind viewKindOf(const QString &address)
{
    return address.contains(QStringLiteral("layer")) ? ViewKind::Street : ViewKind::Satellite;
}

QString viewRequest(const QString &callsign, const QString &address)
{
    return callsign::plainZero(callsign) + u'*' + address;
}

ViewRequestParts splitViewRequest(const QString &request)
{
    ViewRequestParts parts;
    const qsizetype star = request.indexOf(u'*');
    if (star < 0) {
        parts.address = request;
    } else {
        parts.callsign = request.left(star);
        parts.address = request.mid(star + 1);
    }
    parts.kind = viewKindOf(parts.address);
    return parts;
}

StationView stationView(const lists::CallRecord &row, ViewKind kind, const lookup::SourceSettings &hosts)
{
    StationView view;
    view.position = {app::val(row[lists::Column::Latitude]), app::val(row[lists::Column::Longitude])};
    view.request = viewRequest(
        row[lists::Column::Callsign], viewAddress(kind, hosts, view.position.latitude, view.position.longitude));
    return view;
}

QString captureCaption(const i18n::Texts &texts, const ViewRequestParts &parts)
{
    const i18n::TextId id
        = parts.kind == ViewKind::Street ? i18n::TextId::StreetViewCaption : i18n::TextId::SatelliteViewCaption;
    return QStringLiteral("Marvik Calls   ") + texts.fill(id, parts.callsign);
}

} // namespace marvik::share
