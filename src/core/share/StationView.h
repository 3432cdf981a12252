// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/Geometry.h"

#include <QString>

namespace marvik::i18n {
class Texts;
}
namespace marvik::lists {
struct CallRecord;
}
namespace marvik::lookup {
class SourceSettings;
}

namespace marvik::share {

/// The two views of a station's place the row menu offers.
enum class ViewKind { Street, Satellite };

/// The row menu's view entry: 0 is the street view, any other the satellite view.
ViewKind viewKindForMenu(int index);

/// A coordinate as the map addresses carry it: the shortest decimal text,
/// always with a point whatever the user's locale, never in exponent form.
QString coordinateText(double value);

/// The address of a view of a place. The street view asks the classic map
/// service with the fixed camera "12,0,0,0,0"; the satellite view centres the
/// map at zoom 19 with the satellite layer. A place at latitude or longitude
/// 0 counts as unknown: both coordinate texts stay empty and the service
/// shows its own default view.
QString viewAddress(ViewKind kind, const lookup::SourceSettings &hosts, double latitude, double longitude);

/// The street view's address carries "layer"; the satellite view's does not.
ViewKind viewKindOf(const QString &address);

/// The request the capture window is opened with: the callsign with every
/// slashed zero as "0", a "*", then the address.
QString viewRequest(const QString &callsign, const QString &address);

/// A view request taken apart again at its first "*". Without one, the
/// whole request is the address and the callsign is empty.
struct ViewRequestParts
{
    QString callsign;
    QString address;
    ViewKind kind = ViewKind::Satellite;
};
ViewRequestParts splitViewRequest(const QString &request);

/// What the view command takes from a row: the station's position (the
/// program's current station position from then on) and the request.
struct StationView
{
    maps::Position position;
    QString request;
};
StationView stationView(const lists::CallRecord &row, ViewKind kind, const lookup::SourceSettings &hosts);

/// The capture window's caption: "Marvik Calls   " and the view's text with
/// the callsign in place of "xxx".
QString captureCaption(const i18n::Texts &texts, const ViewRequestParts &parts);

} // namespace marvik::share
