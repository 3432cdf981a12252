// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/XmlAnswer.h"

#include <QXmlStreamReader>

#include <cmath>

namespace marvik::lookup::xmlanswer {

namespace {

bool sameName(QStringView a, QStringView b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Reads the children of the current element into `fields`; the reader ends
// on the element's end tag.
void readFields(QXmlStreamReader &xml, QHash<QString, QString> &fields)
{
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString().toLower();
        // A child with children of its own gives their text run together;
        // no field Marvik uses has any, so this only keeps the reader going.
        const QString text = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        if (!fields.contains(name))
            fields.insert(name, text);
    }
}

} // namespace

Sections read(const QByteArray &bytes, QStringView root, QStringView sessionName, QStringView recordName)
{
    Sections s;
    QXmlStreamReader xml(bytes);
    if (!xml.readNextStartElement() || !sameName(xml.name(), root)) {
        s.error = xml.hasError() ? xml.errorString() : QStringLiteral("not an answer of this service");
        return s;
    }
    while (xml.readNextStartElement()) {
        if (sameName(xml.name(), sessionName) && !s.hasSession) {
            s.hasSession = true;
            readFields(xml, s.session);
        } else if (sameName(xml.name(), recordName) && !s.hasRecord) {
            s.hasRecord = true;
            readFields(xml, s.record);
        } else {
            xml.skipCurrentElement();
        }
    }
    // The rest of the document must be well-formed too: a cut-off answer is
    // no answer, whatever its first part said.
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError()) {
        s.error = xml.errorString();
        return s;
    }
    s.read = true;
    return s;
}

ServiceError classify(const QString &message)
{
    const QString m = message.trimmed().toLower();
    // "Not found: <call>" first: a callsign may hold any of the words below.
    if (m.startsWith(u"not found") || m.startsWith(u"callsign not found"))
        return ServiceError::NotFound;
    if (m.contains(u"limit") || m.contains(u"exceeded") || m.contains(u"quota"))
        return ServiceError::QuotaExceeded;
    if (m.contains(u"password") || m.contains(u"username") || m.contains(u"user name"))
        return ServiceError::BadLogin;
    if (m.contains(u"not found"))
        return ServiceError::NotFound;
    if (m.contains(u"session") || m.contains(u"key"))
        return ServiceError::SessionExpired;
    return ServiceError::Failed;
}

QString value(const QHash<QString, QString> &fields, std::initializer_list<QStringView> names)
{
    for (QStringView name : names) {
        const QString v = fields.value(name.toString());
        if (!v.isEmpty())
            return v;
    }
    return {};
}

double coordinate(const QString &text)
{
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    return ok && std::isfinite(v) ? v : 0;
}

QString joined(const QString &first, QStringView separator, const QString &second)
{
    if (first.isEmpty())
        return second;
    if (second.isEmpty())
        return first;
    return first + separator + second;
}

bool isLocator(QStringView text)
{
    // Fields A..R, squares 0..9, subsquares A..X: the locator reader of the
    // setup dialog takes any letter, which a service's typo must not reach.
    if (text.size() != 6)
        return false;
    const auto in = [&](int i, char16_t first, char16_t last) {
        const char16_t c = QChar::toUpper(text[i].unicode());
        return c >= first && c <= last;
    };
    return in(0, u'A', u'R') && in(1, u'A', u'R') && in(2, u'0', u'9') && in(3, u'0', u'9') && in(4, u'A', u'X')
        && in(5, u'A', u'X');
}

void setRecord(ServiceAnswer &answer, LookupResult result)
{
    result.outcome = LookupOutcome::Found;
    // A position off the globe is no position; the locator may still give one.
    if (std::abs(result.latitude) > 90 || std::abs(result.longitude) > 180) {
        result.latitude = 0;
        result.longitude = 0;
    }
    if (isLocator(result.locator.trimmed()))
        applyLocatorPosition(result);
    answer.result = result;
    answer.record = true;
    answer.error = ServiceError::None;
}

} // namespace marvik::lookup::xmlanswer
