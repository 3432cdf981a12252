// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Callsign.h"

#include <QByteArray>
#include <QStringList>

#include <algorithm>

namespace marvik::callsign {

namespace {

QString cutAtBlankOrDash(QString call)
{
    if (call.startsWith(QLatin1String("DE ")))
        call.remove(0, 3);
    for (qsizetype i = 0; i < call.size(); ++i) {
        if (call[i] == u'-' || call[i] == u' ')
            return call.left(i);
    }
    return call;
}

bool unsafeInFileName(QChar c)
{
    // Asked of every callsign of a list as it is read: no search per character.
    switch (c.unicode()) {
    case u'%': case u'/': case u'\\': case u':': case u'*': case u'?': case u'"': case u'<': case u'>': case u'|':
    case 0x7F:
        return true;
    default:
        return c.unicode() < 0x20;
    }
}

// Windows opens a device, not a file, for these names whatever the extension.
bool isDeviceName(QStringView name)
{
    if (name.size() != 3 && name.size() != 4)
        return false;
    static const QStringList devices{QStringLiteral("CON"), QStringLiteral("PRN"), QStringLiteral("AUX"),
                                     QStringLiteral("NUL")};
    const QString upper = name.toString().toUpper();
    if (devices.contains(upper))
        return true;
    return upper.size() == 4 && (upper.startsWith(QLatin1String("COM")) || upper.startsWith(QLatin1String("LPT")))
           && upper[3] >= u'1' && upper[3] <= u'9';
}

void appendEscaped(QString &out, QChar c)
{
    // Characters beyond Latin-1 are escaped byte by byte in UTF-8.
    const QByteArray utf8 = QString(c).toUtf8();
    for (const char byte : utf8)
        out += u'%' + QString::number(quint8(byte), 16).toUpper().rightJustified(2, u'0');
}

} // namespace

QString plainZero(QString call)
{
    return call.replace(QChar(kSlashedZero), u'0');
}

QString forLookup(const QString &typed)
{
    return cutAtBlankOrDash(plainZero(typed).toUpper());
}

QString asTyped(const QString &typed)
{
    return cutAtBlankOrDash(typed.toUpper());
}

QString fromClipboard(const QString &clipboard)
{
    QString text = plainZero(clipboard.toUpper());
    if (text.startsWith(QLatin1String("DE ")))
        text.remove(0, 3);
    // Codes 48 ("0") to 122 ("z") pass, so "DE:W1ABC" stays whole while a
    // blank or "/" ends the callsign.
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 48 || c > 122)
            return text.left(i);
    }
    return text;
}

QString filterTyped(const QString &typed)
{
    QString out = typed;
    for (QChar &c : out) {
        if (c >= u'a' && c <= u'z')
            c = c.toUpper();
        else if (c == u'0')
            c = QChar(kSlashedZero);
    }
    return out;
}

bool isOwnFileName(QStringView call)
{
    return std::none_of(call.begin(), call.end(), unsafeInFileName) && !call.isEmpty() && !call.endsWith(u'.')
           && !call.endsWith(u' ') && !isDeviceName(call);
}

QString fileName(const QString &call)
{
    if (isOwnFileName(call))
        return call;
    QString name;
    name.reserve(call.size() + 8);
    for (QChar c : call) {
        if (unsafeInFileName(c))
            appendEscaped(name, c);
        else
            name += c;
    }
    // A name that is all dots, ends in a dot or blank (Windows drops those)
    // or names a device gets its last character escaped.
    // "%" alone is no escape, so it cannot be any other call's name.
    if (name.isEmpty())
        return QStringLiteral("%");
    if (name.endsWith(u'.') || name.endsWith(u' ') || isDeviceName(name)) {
        const QChar last = name.back();
        name.chop(1);
        appendEscaped(name, last);
    }
    return name;
}

QString forAddress(const QString &call)
{
    // Letters beyond ASCII stay as they are: the address keeps its readable
    // form ("ø/"), and the request encodes them as UTF-8 on the wire.
    QString out;
    out.reserve(call.size());
    for (QChar c : call) {
        const char16_t u = c.unicode();
        const bool unreserved = (u >= u'A' && u <= u'Z') || (u >= u'a' && u <= u'z') || (u >= u'0' && u <= u'9')
                                || QStringView(u"-._~").contains(c) || u >= 0x80;
        if (unreserved)
            out += c;
        else
            appendEscaped(out, c);
    }
    return out;
}

} // namespace marvik::callsign
