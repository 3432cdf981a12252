// SPDX-License-Identifier: GPL-3.0-or-later
// Callook's JSON: the licence database of the United States, no account.
#include "core/lookup/services/XmlAnswer.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace marvik::lookup {

namespace {

// Callook writes its numbers as strings; a number is taken as well.
double jsonCoordinate(const QJsonValue &v)
{
    return v.isDouble() ? xmlanswer::coordinate(QString::number(v.toDouble(), 'g', 17))
                        : xmlanswer::coordinate(v.toString());
}

} // namespace

ServiceAnswer parseCallookAnswer(const QByteArray &bytes)
{
    ServiceAnswer a;
    a.result.outcome = LookupOutcome::ReaderError;
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError || !doc.isObject()) {
        a.message = parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                                 : QStringLiteral("not an answer of this service");
        return a;
    }
    const QJsonObject o = doc.object();
    const QString status = o.value(u"status").toString().trimmed().toUpper();
    a.message = status;
    if (status == u"INVALID") {
        a.error = ServiceError::NotFound;
        a.result.outcome = outcomeOf(a.error);
        return a;
    }
    if (status == u"UPDATING") {
        a.error = ServiceError::Updating;
        a.result.outcome = outcomeOf(a.error);
        return a;
    }
    if (status != u"VALID") {
        a.message = status.isEmpty() ? QStringLiteral("no status in the answer") : status;
        return a;
    }
    LookupResult r;
    r.name = o.value(u"name").toString().trimmed();
    const QJsonObject address = o.value(u"address").toObject();
    r.address1 = address.value(u"line1").toString().trimmed();
    r.address2 = address.value(u"line2").toString().trimmed();
    // Every call Callook knows is American; its answer does not say so.
    r.country = QStringLiteral("USA");
    const QJsonObject location = o.value(u"location").toObject();
    r.latitude = jsonCoordinate(location.value(u"latitude"));
    r.longitude = jsonCoordinate(location.value(u"longitude"));
    r.locator = location.value(u"gridsquare").toString().trimmed();
    r.licenceClass = o.value(u"current").toObject().value(u"operClass").toString().trimmed();
    r.previousCall = o.value(u"previous").toObject().value(u"callsign").toString().trimmed();
    xmlanswer::setRecord(a, r);
    a.callsign = o.value(u"current").toObject().value(u"callsign").toString().trimmed();
    a.message.clear();
    return a;
}

} // namespace marvik::lookup
