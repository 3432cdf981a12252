// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Number.h"

#include <QLocale>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace marvik::app {

namespace {

bool isSkipped(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n';
}

double radixWhole(QStringView text, qsizetype i, int radix)
{
    double value = 0;
    bool any = false;
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (isSkipped(c))
            continue;
        const int digit = c.isDigit() && c.unicode() < 128 ? c.unicode() - '0'
            : (radix == 16 && c.toUpper() >= u'A' && c.toUpper() <= u'F') ? c.toUpper().unicode() - 'A' + 10
                                                                       : -1;
        if (digit < 0 || digit >= radix)
            break;
        value = value * radix + digit;
        any = true;
    }
    return any && std::isfinite(value) ? value : 0;
}

} // namespace

double val(QStringView text)
{
    // Collect the characters that make up the number into a plain ASCII
    // buffer and convert it with from_chars: correctly rounded, and blind to
    // the user's locale (a German desktop must still read "52.5").
    qsizetype i = 0;
    while (i < text.size() && isSkipped(text[i]))
        ++i;
    if (i + 1 < text.size() && text[i] == u'&') {
        const QChar kind = text[i + 1].toUpper();
        if (kind == u'H')
            return radixWhole(text, i + 2, 16);
        if (kind == u'O')
            return radixWhole(text, i + 2, 8);
    }

    std::string buffer;
    bool digits = false;
    bool point = false;
    bool exponent = false;
    bool exponentDigits = false;
    bool exponentSign = false;
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (isSkipped(c))
            continue;
        const char16_t u = c.unicode();
        if (u >= '0' && u <= '9') {
            buffer += char(u);
            (exponent ? exponentDigits : digits) = true;
        } else if ((u == '+' || u == '-') && buffer.empty()) {
            buffer += char(u);
        } else if ((u == '+' || u == '-') && exponent && !exponentDigits && !exponentSign) {
            buffer += char(u);
            exponentSign = true;
        } else if (u == '.' && !point && !exponent) {
            buffer += '.';
            point = true;
        } else if ((u == 'e' || u == 'E' || u == 'd' || u == 'D') && digits && !exponent) {
            buffer += 'e';
            exponent = true;
        } else {
            break;
        }
    }
    if (!digits)
        return 0;
    if (exponent && !exponentDigits)
        buffer += '0';
    const char *first = buffer.data();
    const char *last = buffer.data() + buffer.size();
    bool negative = false;
    if (*first == '+' || *first == '-') {
        negative = *first == '-';
        ++first;
    }
    double value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end == first || !std::isfinite(value))
        return 0;
    return negative ? -value : value;
}

double valCoordinate(QStringView text)
{
    QString copy = text.toString();
    copy.replace(u',', u'.');
    return val(copy);
}

std::optional<qint16> toInt16(double value)
{
    if (!std::isfinite(value))
        return std::nullopt;
    const double rounded = std::nearbyint(value); // the default mode rounds half to even
    if (rounded < std::numeric_limits<qint16>::min() || rounded > std::numeric_limits<qint16>::max())
        return std::nullopt;
    return static_cast<qint16>(rounded);
}

QString printedNumber(int value)
{
    return (value < 0 ? QString::number(value) : u' ' + QString::number(value)) + u' ';
}

QString signedDecimal(double value)
{
    if (value == 0 || !std::isfinite(value))
        return QStringLiteral(" 0");
    QString text = QString::number(value, 'g', 15);
    if (text.contains(u'e')) {
        // Spell the number out: 15 significant digits after the leading zeros.
        const int magnitude = int(std::floor(std::log10(std::fabs(value))));
        const int decimals = std::clamp(14 - magnitude, 0, 340);
        text = QString::number(value, 'f', decimals);
        if (text.contains(u'.')) {
            while (text.endsWith(u'0'))
                text.chop(1);
            if (text.endsWith(u'.'))
                text.chop(1);
        }
    }
    return value < 0 ? text : u' ' + text;
}

QString shortestDecimal(double value)
{
    if (value == 0 || !std::isfinite(value))
        return QStringLiteral("0");
    QString text = QString::number(value, 'g', QLocale::FloatingPointShortest);
    if (text.contains(u'e'))
        text = signedDecimal(value).trimmed();
    return text;
}

} // namespace marvik::app
