// SPDX-License-Identifier: GPL-3.0-or-later
// HamQTH's XML data service: a <session> part with the session id or an
// error, and a <search> part with the record.
#include "core/lookup/services/XmlAnswer.h"

namespace marvik::lookup {

namespace {

using xmlanswer::value;

LookupResult hamQthRecord(const QHash<QString, QString> &r)
{
    LookupResult result;
    result.name = value(r, {u"adr_name", u"nick"});
    result.firstName = value(r, {u"nick"});
    result.address1 = xmlanswer::joined(value(r, {u"adr_street1"}), u", ", value(r, {u"adr_street2"}));
    // Postal order as most of HamQTH's members write it: zip code, then town.
    result.address2 = xmlanswer::joined(value(r, {u"adr_zip"}), u" ", value(r, {u"adr_city", u"qth"}));
    result.country = value(r, {u"adr_country", u"country"});
    result.latitude = xmlanswer::coordinate(value(r, {u"latitude"}));
    result.longitude = xmlanswer::coordinate(value(r, {u"longitude"}));
    result.locator = value(r, {u"grid"});
    result.dateOfBirth = value(r, {u"birth_year"});
    result.webPage = value(r, {u"web"});
    result.pictureUrl = value(r, {u"picture"});
    return result;
}

} // namespace

ServiceAnswer parseHamQthAnswer(const QByteArray &bytes)
{
    ServiceAnswer a;
    a.result.outcome = LookupOutcome::ReaderError;
    const xmlanswer::Sections s = xmlanswer::read(bytes, u"HamQTH", u"session", u"search");
    if (!s.read) {
        a.message = s.error;
        return a;
    }
    a.sessionKey = s.session.value(QStringLiteral("session_id"));
    const QString error = s.session.value(QStringLiteral("error"));
    if (!error.isEmpty()) {
        a.error = xmlanswer::classify(error);
        a.message = error;
        a.result.outcome = outcomeOf(a.error);
        return a;
    }
    if (s.hasRecord && !value(s.record, {u"callsign"}).isEmpty()) {
        xmlanswer::setRecord(a, hamQthRecord(s.record));
        a.callsign = value(s.record, {u"callsign"});
        return a;
    }
    if (a.sessionKey.isEmpty()) {
        a.message = QStringLiteral("neither a session nor a record in the answer");
        return a;
    }
    a.error = ServiceError::None;
    return a;
}

} // namespace marvik::lookup
