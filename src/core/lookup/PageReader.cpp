// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/PageReader.h"

#include "core/lookup/SourceSettings.h"
#include "core/app/Number.h"

#include <cmath>

namespace marvik::lookup {

using pagetext::cut;
using pagetext::find;
using pagetext::findBack;
using pagetext::kCrLf;
using pagetext::trimBlanks;

namespace {

bool contains(QStringView text, QStringView what)
{
    return find(text, what, 1) > 0;
}

} // namespace

QString PageReader::name(const QString &callSign, ReaderEvent &event)
{
    event = ReaderEvent::None;
    switch (m_source.value_or(Source::QrzCd)) {
    case Source::EHam: return nameEHam(callSign, event);
    case Source::Qrz: return nameQrz(event);
    case Source::QrzCq: return nameQrzCq(event);
    case Source::Callook: return nameCallook(event);
    case Source::HamCall: return nameHamCall(event);
    default: return {};
    }
}

QString PageReader::nameEHam(const QString &callSign, ReaderEvent &event)
{
    if (!contains(m_text, u"Country") || !contains(m_text, u"Search Results")) {
        event = ReaderEvent::CallNotFound;
        return {};
    }
    const qint64 r = find(m_text, u"Search Results", 1);
    const qint64 c = find(m_text, callSign, r + 3);
    const qint64 e = find(m_text, kCrLf, c + 3);
    m_cursor = find(m_text, kCrLf, e + 3);
    // The whole line after the one that holds the callsign.
    const QString name = trimBlanks(cut(m_text, e + 2, m_cursor - e - 2));
    if (name.isEmpty())
        event = ReaderEvent::CallNotFound;
    return name;
}

QString PageReader::nameQrz(ReaderEvent &event)
{
    // "produced no results" wins over "Login is required".
    if (contains(m_text, u"produced no results")) {
        event = ReaderEvent::CallNotFound;
        return {};
    }
    if (contains(m_text, u"Login is required")) {
        event = ReaderEvent::LoginRequired;
        return {};
    }
    if (!contains(m_text, u"Search QRZ")) {
        event = ReaderEvent::CallNotFound;
        return {};
    }
    const qint64 q = find(m_text, u"Search QRZ", 1);
    m_cursor = find(m_text, u",", q);
    const qint64 s = findBack(m_text, kCrLf, m_cursor);
    // From the start of the line to the first comma, blanks and all.
    const QString name = cut(m_text, s + 2, m_cursor - s - 2);
    if (name.isEmpty())
        event = ReaderEvent::CallNotFound;
    return name;
}

QString PageReader::nameQrzCq(ReaderEvent &event)
{
    if (contains(m_text, u"Error")) {
        event = ReaderEvent::CallNotFound;
        return {};
    }
    qint64 p = find(m_text, m_qrzCqDomain, 1);
    if (p == 0) {
        event = ReaderEvent::CallNotFound;
        return {};
    }
    // The first non-empty line after the domain's line. The Windows program
    // counted its loop of 1 to 20 up twice per pass, so only ten lines are
    // ever tried; an empty name is no "not found".
    QString line;
    for (int pass = 1; pass <= 20; pass += 2) {
        p = find(m_text, kCrLf, p);
        m_cursor = find(m_text, kCrLf, p + 2);
        line = cut(m_text, p + 2, m_cursor - p - 2);
        if (!line.isEmpty())
            break;
        p = m_cursor;
    }
    return line;
}

QString PageReader::nameCallook(ReaderEvent &event)
{
    // A missing "Show Map" is reported, but the reading goes on from the old
    // cursor, as it always has.
    const qint64 s = find(m_text, u"Show Map", 1);
    if (s == 0)
        event = ReaderEvent::CallNotFound;
    if (s > 0)
        m_cursor = find(m_text, kCrLf, s + 3);
    if (m_cursor < 1)
        return {};
    return trimBlanks(cut(m_text, s + 9, m_cursor - s - 9));
}

QString PageReader::nameHamCall(ReaderEvent &event)
{
    qint64 s = find(m_text, u"callsign database!", 1);
    if (s == 0)
        event = ReaderEvent::CallNotFound;
    if (s > 0)
        s = find(m_text, kCrLf, s + 3);
    if (s > 0)
        m_cursor = find(m_text, u",", s + 3);
    if (m_cursor < 1)
        return {};
    // The line after the marker's, less its first two characters, up to the
    // first comma.
    return trimBlanks(cut(m_text, s + 4, m_cursor - s - 4));
}

QString PageReader::nextLine(int shortenBy)
{
    const qint64 s = find(m_text, kCrLf, m_cursor);
    if (s == 0)
        return {};
    m_cursor = find(m_text, kCrLf, s + 2);
    return cut(m_text, s + 2, m_cursor - s - 2 - shortenBy);
}

QString PageReader::address1()
{
    if (!m_source)
        return {};
    return nextLine(0);
}

QString PageReader::address2()
{
    if (!m_source)
        return {};
    // HamCall's second address line loses its last three characters; the
    // Windows program cut it so and the stored lists carry it so.
    return nextLine(m_source == Source::HamCall ? 3 : 0);
}

QString PageReader::country()
{
    if (!m_source)
        return {};
    if (m_source == Source::Callook)
        return QStringLiteral("U.S.A.");
    return nextLine(0);
}

double PageReader::coordinate(QStringView marker, int longitudeShift)
{
    QStringView endMark;
    int k = 0;
    int d = 0;
    switch (m_source.value_or(Source::QrzCd)) {
    case Source::EHam: endMark = kCrLf; k = 3; d = 9; break;
    case Source::Qrz: endMark = u" "; k = 2; d = 8; break;
    case Source::QrzCq: endMark = u" "; k = 2; d = 9; break;
    case Source::Callook: endMark = kCrLf; k = 3; d = 9; break;
    case Source::HamCall: endMark = u","; k = 2; d = 9; break;
    default: return 0;
    }
    d += longitudeShift;
    const qint64 p = find(m_text, marker, 1);
    if (p == 0)
        return 0;
    const qint64 e = find(m_text, endMark, p + k);
    m_cursor = int(e);
    const QString text = cut(m_text, p + d, e - p - d);
    double value = app::val(text);
    // A page's "&H" followed by a long run of hex digits reads as infinity;
    // no position is better than one that poisons every distance.
    if (!std::isfinite(value))
        value = 0;
    // HamCall prints unsigned degrees with a hemisphere letter; the others
    // print the sign.
    if (m_source == Source::HamCall && text.endsWith(longitudeShift ? u'W' : u'S'))
        value = -value;
    return value;
}

double PageReader::latitude()
{
    return coordinate(u"Latitude", 0);
}

double PageReader::longitude()
{
    return coordinate(u"Longitude", 1);
}

QString PageReader::markedValue(QStringView marker, QStringView endMark, int searchShift, int valueShift,
                                int lengthShift)
{
    const qint64 p = find(m_text, marker, 1);
    if (p == 0)
        return {};
    const qint64 e = find(m_text, endMark, p + searchShift);
    m_cursor = int(e);
    return cut(m_text, p + valueShift, e - p - lengthShift);
}

QString PageReader::licenceClass()
{
    switch (m_source.value_or(Source::QrzCd)) {
    case Source::EHam: return markedValue(u"License Class", kCrLf, 2, 14, 14);
    case Source::QrzCq:
    case Source::Callook: return markedValue(u"Class", kCrLf, 2, 7, 7);
    case Source::HamCall: return markedValue(u"License Class", kCrLf, 2, 15, 15);
    case Source::Qrz: {
        const qint64 q = find(m_text, u"QRZ Record", 1);
        if (q == 0)
            return {};
        const qint64 c = find(m_text, u"Class", q);
        if (c == 0)
            return {};
        const qint64 e = find(m_text, u" ", c + 2);
        m_cursor = int(e);
        QString value = cut(m_text, c + 5, e - c - 5);
        const int k = find(value, kCrLf, 1);
        if (k > 0)
            value.truncate(k - 1);
        return value;
    }
    default: return {};
    }
}

QString PageReader::previousCall()
{
    // The Windows program searched a text that was always empty, so the
    // previous call never came from a page.
    return {};
}

QString PageReader::dateOfBirth()
{
    switch (m_source.value_or(Source::QrzCd)) {
    case Source::Qrz: return markedValue(u"Born", kCrLf, 3, 4, 4);
    case Source::HamCall: return markedValue(u"Birth Date", kCrLf, 3, 12, 12);
    default: return {};
    }
}

QString PageReader::gridSquare()
{
    switch (m_source.value_or(Source::QrzCd)) {
    case Source::Qrz: return markedValue(u"Grid Square", kCrLf, 3, 11, 11);
    // Callook's value starts two characters later than its length allows
    // for, so it runs into the line break and ends in CR LF.
    case Source::Callook: return markedValue(u"Grid Square", kCrLf, 3, 13, 11);
    default: return {};
    }
}

QString PageReader::webPage()
{
    if (m_source != Source::Qrz)
        return {};
    return markedValue(u"Web Page", kCrLf, 3, 8, 8);
}

} // namespace marvik::lookup
