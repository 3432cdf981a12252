// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/LookupResult.h"

#include "core/lookup/LookUp.h"
#include "core/app/Log.h"
#include "core/app/Number.h"
#include "core/lists/CallRecord.h"
#include "core/lists/ListEditing.h"

#include <QDateTime>

namespace marvik::lookup {

QString outcomeName(LookupOutcome outcome)
{
    switch (outcome) {
    case LookupOutcome::Found: return QStringLiteral("GotPage");
    case LookupOutcome::PageNotFound: return QStringLiteral("PageNotFound");
    case LookupOutcome::CallNotFound: return QStringLiteral("CallNotFound");
    case LookupOutcome::LoginRequired: return QStringLiteral("LoginRequired");
    case LookupOutcome::ReaderError: return QStringLiteral("ReaderError");
    }
    return {};
}

LookupResult readLookupResult(LookUp &lookUp, const QString &callSign, bool withExtras)
{
    LookupResult r;
    try {
        r.name = lookUp.cName(callSign);
        switch (lookUp.lastNameEvent()) {
        case ReaderEvent::CallNotFound: r.outcome = LookupOutcome::CallNotFound; break;
        case ReaderEvent::LoginRequired: r.outcome = LookupOutcome::LoginRequired; break;
        case ReaderEvent::None: break;
        }
        r.address1 = lookUp.Add1();
        r.address2 = lookUp.Add2();
        r.country = lookUp.Ctry();
        r.latitude = lookUp.Latitude();
        r.longitude = lookUp.Longitude();
        r.locator = lookUp.WebAddress();
        if (withExtras) {
            r.licenceClass = lookUp.Class();
            r.previousCall = lookUp.PrevCall();
            r.dateOfBirth = lookUp.DateOfBirth();
            r.webPage = lookUp.WebPage();
        }
    } catch (const ReaderError &error) {
        if (r.outcome == LookupOutcome::Found || lookUp.lastNameEvent() == ReaderEvent::None)
            r.outcome = LookupOutcome::ReaderError;
        else if (lookUp.lastNameEvent() == ReaderEvent::CallNotFound)
            r.outcome = LookupOutcome::CallNotFound;
        r.error = QString::fromUtf8(error.what());
        qCDebug(lcLookup) << "reading the page of" << callSign << "failed:" << error.what();
        return r;
    }
    applyLocatorPosition(r);
    return r;
}

void applyLocatorPosition(LookupResult &r)
{
    // The locator is trimmed before its length is judged: the pages put a
    // tab or a line break beside it.
    const QString locator = r.locator.trimmed();
    maps::Position position;
    if (locator.size() == 6 && r.latitude == 0 && r.longitude == 0 && maps::fromLocator(locator, position)) {
        r.latitude = position.latitude;
        r.longitude = position.longitude;
        r.positionFromLocator = true;
    }
}

LookupResult readPage(LookUp &lookUp, const QString &callSign, bool withExtras)
{
    if (pagetext::find(lookUp.html(), callSign, 1) == 0) {
        LookupResult r;
        r.outcome = LookupOutcome::PageNotFound;
        return r;
    }
    return readLookupResult(lookUp, callSign, withExtras);
}

void writeLookupResult(lists::CallRecord &row, bool existing, const QString &callSign, const LookupResult &result,
                       const maps::Position &me, const QDateTime &now)
{
    using namespace lists;
    // QString::trimmed() takes U+00A0 for a blank as well, which the pages
    // put around their values.
    const QString fullName = result.name.trimmed();
    QString country = result.country.trimmed();
    // QRZ writes "UNITED STATES", eHam "United States": both are USA.
    if (country.compare(u"UNITED STATES", Qt::CaseInsensitive) == 0)
        country = QStringLiteral("USA");

    if (!existing) {
        row = CallRecord();
    }
    // A source that tells less than the row already holds (a service without
    // an address, a page without a position) never blanks what was there.
    const auto put = [&](Column column, const QString &value) {
        if (!existing || !value.isEmpty())
            row[column] = value;
    };
    row[Column::Callsign] = callSign;
    put(Column::FullName, fullName);
    if (!existing || row[Column::FirstName].isEmpty())
        row[Column::FirstName] = firstWord(result.firstName.trimmed().isEmpty() ? row[Column::FullName]
                                                                                 : result.firstName.trimmed());
    put(Column::Address, result.address1.trimmed());
    put(Column::City, result.address2.trimmed());
    put(Column::Country, country);
    // The readers give 0 for a position they did not find; a row stores
    // nothing then, rather than a point off the coast of Africa.
    if (hasPosition(result.latitude, result.longitude)) {
        row[Column::Latitude] = app::shortestDecimal(result.latitude);
        row[Column::Longitude] = app::shortestDecimal(result.longitude);
    } else if (!existing) {
        row[Column::Latitude].clear();
        row[Column::Longitude].clear();
    }
    row[Column::TimeStamp] = timeStamp(now);
    const double lat = app::val(row[Column::Latitude]);
    const double lon = app::val(row[Column::Longitude]);
    row[Column::Azimuth] =
        hasPosition(lat, lon) ? maps::azimuthText(maps::bearingFrom(me, lat, lon).degrees) : QString();
    row.firstNameBack = isNicknameAtLoad(row[Column::FullName], row[Column::FirstName]) ? kNicknameColour : QColor();
}

bool hasPosition(double latitude, double longitude)
{
    // The list loader's rule: either coordinate 0 means no position.
    return latitude != 0 && longitude != 0;
}

} // namespace marvik::lookup
