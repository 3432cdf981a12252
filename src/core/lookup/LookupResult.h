// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/Geometry.h"

#include <QString>

class QDateTime;

namespace marvik::lists {
struct CallRecord;
}

namespace marvik::lookup {

class LookUp;

/// How reading a call page ended.
enum class LookupOutcome {
    Found,         ///< the page was read; write the row
    PageNotFound,  ///< the page does not mention the callsign
    CallNotFound,  ///< the name reader found no such call
    LoginRequired, ///< QRZ shows details to logged-in users only
    ReaderError,   ///< the page lacked a mark a reader counts on
};

/// The fields read from a call page, as the readers return them.
struct LookupResult
{
    LookupOutcome outcome = LookupOutcome::Found;
    QString name;
    QString firstName; ///< what the operator goes by, when a data service tells; pages never do
    QString address1;
    QString address2;
    QString country;
    double latitude = 0;
    double longitude = 0;
    QString locator; ///< the grid square as printed (Callook's ends in CR LF)
    bool positionFromLocator = false; ///< the page gave no position; it came from the locator
    QString licenceClass;
    QString previousCall;
    QString dateOfBirth;
    QString webPage;
    QString pictureUrl; ///< the operator's picture, when a data service names one
    QString error; ///< what went wrong for ReaderError
};

/// When the locator (trimmed) has six characters and both coordinates are
/// 0, puts the centre of its subsquare into the position.
void applyLocatorPosition(LookupResult &result);

/// The event name of an outcome: "GotPage", "PageNotFound", "CallNotFound",
/// "LoginRequired", "ReaderError".
QString outcomeName(LookupOutcome outcome);

/// The main window's reading after GotPage: cName, Add1, Add2, Ctry,
/// Latitude, Longitude, then the grid locator, in this order (the readers
/// share a cursor). When the locator is six characters and both coordinates
/// are 0, the position is the centre of the locator's subsquare. `lookUp`
/// raises CallNotFound or LoginRequired itself; a reader failure stops the
/// reading and gives ReaderError, never an exception.
/// `withExtras` also reads Class, PrevCall, DateOfBirth and the web page.
LookupResult readLookupResult(LookUp &lookUp, const QString &callSign, bool withExtras = false);

/// Reading a page that did not come through GetPage (a saved page): first the
/// test GetPage makes, whether the page mentions the callsign at all.
LookupResult readPage(LookUp &lookUp, const QString &callSign, bool withExtras = true);

/// Writes a lookup result into a list row: a new row (`existing` false) or an
/// update of the call's row, which keeps its first name and Extra, and keeps
/// a name, address, country or position wherever the result has none. A new
/// first name is the first word of the service's first name, else of the full
/// name. Names and addresses are trimmed (a no-break space counts as a
/// blank), "UNITED STATES" becomes "USA", the position is stored as shortest
/// decimal text (nothing for a new row without one), the row is stamped with
/// `now` and gets its azimuth from `me` when it has a position, none when not.
void writeLookupResult(lists::CallRecord &row, bool existing, const QString &callSign, const LookupResult &result,
                       const maps::Position &me, const QDateTime &now);

/// Whether a latitude and longitude make a position: the readers and the
/// list files give 0 for none, so either coordinate 0 counts as none.
bool hasPosition(double latitude, double longitude);

} // namespace marvik::lookup
