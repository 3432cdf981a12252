// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/AdifLog.h"

#include <algorithm>
#include <cmath>

namespace marvik::logs {

namespace {

QString valueIn(const QList<AdifField> &fields, QStringView name)
{
    for (const AdifField &f : fields) {
        if (f.name == name)
            return f.value;
    }
    return {};
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

} // namespace

QString AdifRecord::value(QStringView name) const
{
    return valueIn(fields, name);
}

bool AdifRecord::contains(QStringView name) const
{
    return std::any_of(fields.begin(), fields.end(), [&](const AdifField &f) { return f.name == name; });
}

QString AdifLog::headerValue(QStringView name) const
{
    return valueIn(header, name);
}

void AdifLog::addProblem(AdifProblemKind kind, int line, const QString &detail)
{
    ++problemCount;
    if (problems.size() < kMaxProblems)
        problems.append({kind, line, detail});
}

QString problemText(const AdifProblem &p)
{
    QString what;
    switch (p.kind) {
    case AdifProblemKind::BadLength: what = QStringLiteral("the length of %1 is not a number").arg(p.detail); break;
    case AdifProblemKind::BadName: what = QStringLiteral("a field without a name, or with one too long"); break;
    case AdifProblemKind::CutShort: what = QStringLiteral("the file ends inside the value of %1").arg(p.detail); break;
    case AdifProblemKind::UnclearLength:
        what = QStringLiteral("the length of %1 fits neither bytes nor characters").arg(p.detail);
        break;
    case AdifProblemKind::MissingEndOfRecord: what = QStringLiteral("the last record has no <EOR>"); break;
    case AdifProblemKind::LateHeaderEnd: what = QStringLiteral("an <EOH> after the first record"); break;
    case AdifProblemKind::NotAdx: what = QStringLiteral("the XML is not an ADX log (%1)").arg(p.detail); break;
    case AdifProblemKind::XmlError: what = QStringLiteral("malformed XML: %1").arg(p.detail); break;
    }
    return QStringLiteral("line %1: %2").arg(p.line).arg(what);
}

QString locationText(double degrees, bool latitude)
{
    const QChar hemisphere = latitude ? (degrees < 0 ? u'S' : u'N') : (degrees < 0 ? u'W' : u'E');
    // Round to whole thousandths of a minute first, so 59.9996' carries into
    // the next degree instead of printing as 60.000.
    const long long thousandths = std::llround(std::fabs(degrees) * 60000.0);
    const long long whole = thousandths / 60000;
    const double minutes = double(thousandths % 60000) / 1000.0;
    return QStringLiteral("%1%2 %3")
        .arg(hemisphere)
        .arg(whole, 3, 10, QLatin1Char('0'))
        .arg(minutes, 6, 'f', 3, QLatin1Char('0'));
}

bool readLocation(QStringView text, bool latitude, double &degrees)
{
    text = text.trimmed();
    if (text.size() < 2)
        return false;
    const QChar letter = text[0].toUpper();
    double sign = 0;
    if (latitude)
        sign = letter == u'N' ? 1 : letter == u'S' ? -1 : 0;
    else
        sign = letter == u'E' ? 1 : letter == u'W' ? -1 : 0;
    if (sign == 0)
        return false;
    qsizetype i = 1;
    int whole = 0;
    int digits = 0;
    while (i < text.size() && isDigit(text[i]) && digits < 3) {
        whole = whole * 10 + (text[i].unicode() - '0');
        ++digits;
        ++i;
    }
    if (digits == 0)
        return false;
    while (i < text.size() && text[i] == u' ')
        ++i;
    // Minutes: digits, a point, digits; nothing else may follow.
    const QStringView rest = text.mid(i);
    if (rest.isEmpty() || !std::all_of(rest.begin(), rest.end(), [](QChar c) { return isDigit(c) || c == u'.'; })
        || rest.count(u'.') > 1 || rest == u".")
        return false;
    bool ok = false;
    const double minutes = rest.toString().toDouble(&ok);
    if (!ok || minutes >= 60)
        return false;
    const double value = whole + minutes / 60;
    if (value > (latitude ? 90 : 180))
        return false;
    degrees = sign * value;
    return true;
}

bool gridSquareCentre(QStringView text, maps::Position &position)
{
    text = text.trimmed();
    if (text.size() >= 6)
        return maps::fromLocator(text.left(6).toString(), position);
    if (text.size() != 4)
        return false;
    const QChar a = text[0].toUpper();
    const QChar b = text[1].toUpper();
    // Fields run from A to R.
    if (a < u'A' || a > u'R' || b < u'A' || b > u'R' || !isDigit(text[2]) || !isDigit(text[3]))
        return false;
    position.longitude = (a.unicode() - 'A') * 20 + (text[2].unicode() - '0') * 2 + 1.0 - 180;
    position.latitude = (b.unicode() - 'A') * 10 + (text[3].unicode() - '0') + 0.5 - 90;
    return true;
}

} // namespace marvik::logs
