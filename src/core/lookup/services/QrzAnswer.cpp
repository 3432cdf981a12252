// SPDX-License-Identifier: GPL-3.0-or-later
// QRZ's XML data service and QRZCQ's, which answers in the same shape: a
// <Session> part with the key, the day's count, the subscription and any
// error, and a <Callsign> part with the record.
#include "core/lookup/services/XmlAnswer.h"

namespace marvik::lookup {

namespace {

using xmlanswer::value;

LookupResult qrzRecord(const QHash<QString, QString> &r)
{
    LookupResult result;
    const QString first = value(r, {u"fname", u"firstname"});
    const QString last = value(r, {u"name"});
    // QRZ splits the name in two; QRZCQ may give it whole in <name>.
    result.name = last.startsWith(first, Qt::CaseInsensitive) ? last : xmlanswer::joined(first, u" ", last);
    result.firstName = value(r, {u"nickname", u"fname", u"firstname"});
    result.address1 = value(r, {u"addr1", u"address", u"street"});
    // The second line as the pages print it: city, state and zip code.
    const QString city = value(r, {u"addr2", u"city"});
    const QString state = value(r, {u"state"});
    result.address2 = xmlanswer::joined(xmlanswer::joined(city, u", ", state), u" ", value(r, {u"zip"}));
    result.country = value(r, {u"country"});
    result.latitude = xmlanswer::coordinate(value(r, {u"lat", u"latitude"}));
    result.longitude = xmlanswer::coordinate(value(r, {u"lon", u"longitude"}));
    result.locator = value(r, {u"grid", u"locator"});
    result.licenceClass = value(r, {u"class", u"licenseclass"});
    result.previousCall = value(r, {u"p_call"});
    result.dateOfBirth = value(r, {u"born", u"dob"});
    result.webPage = value(r, {u"url", u"homepage", u"web"});
    result.pictureUrl = value(r, {u"image", u"picture", u"imageurl"});
    return result;
}

ServiceAnswer parseQrzShaped(const QByteArray &bytes, QStringView root)
{
    ServiceAnswer a;
    a.result.outcome = LookupOutcome::ReaderError;
    const xmlanswer::Sections s = xmlanswer::read(bytes, root, u"session", u"callsign");
    if (!s.read) {
        a.message = s.error;
        return a;
    }
    a.sessionKey = s.session.value(QStringLiteral("key"));
    bool counted = false;
    const int count = s.session.value(QStringLiteral("count")).toInt(&counted);
    a.lookupsToday = counted && count >= 0 ? count : -1;
    a.subscription = s.session.value(QStringLiteral("subexp"));
    const QString error = s.session.value(QStringLiteral("error"));
    a.message = s.session.value(QStringLiteral("message"));
    if (!error.isEmpty()) {
        a.error = xmlanswer::classify(error);
        a.message = error;
        a.result.outcome = outcomeOf(a.error);
        return a;
    }
    if (s.hasRecord && !value(s.record, {u"call"}).isEmpty()) {
        xmlanswer::setRecord(a, qrzRecord(s.record));
        a.callsign = value(s.record, {u"call"});
        // A non-subscriber is shown the name and the country, not the rest.
        a.limited = a.subscription.compare(u"non-subscriber", Qt::CaseInsensitive) == 0
            || a.message.contains(u"subscription", Qt::CaseInsensitive);
        return a;
    }
    if (!s.hasSession || a.sessionKey.isEmpty()) {
        // No key and no error: the service wants a new log-in.
        a.error = ServiceError::SessionExpired;
        if (a.message.isEmpty())
            a.message = QStringLiteral("no session key in the answer");
        a.result.outcome = outcomeOf(a.error);
        return a;
    }
    a.error = ServiceError::None;
    return a;
}

} // namespace

ServiceAnswer parseQrzAnswer(const QByteArray &bytes)
{
    return parseQrzShaped(bytes, u"QRZDatabase");
}

ServiceAnswer parseQrzCqAnswer(const QByteArray &bytes)
{
    return parseQrzShaped(bytes, u"QRZCQDatabase");
}

} // namespace marvik::lookup
