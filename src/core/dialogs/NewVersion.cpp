// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/dialogs/NewVersion.h"

namespace marvik::dialogs {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// A version number of at least two parts starting at `from`; its length
/// in `length`.
std::optional<QVersionNumber> versionAt(const QString &text, qsizetype from)
{
    QList<int> parts;
    qsizetype i = from;
    while (i < text.size() && isDigit(text.at(i))) {
        qsizetype end = i;
        while (end < text.size() && isDigit(text.at(end)))
            ++end;
        // More digits than any release number has: not a version.
        if (end - i > 6)
            return std::nullopt;
        parts.append(text.mid(i, end - i).toInt());
        i = end;
        if (i + 1 < text.size() && text.at(i) == u'.' && isDigit(text.at(i + 1)))
            ++i;
        else
            break;
    }
    if (parts.size() < 2)
        return std::nullopt;
    return QVersionNumber(parts);
}

} // namespace

std::optional<QVersionNumber> reportedVersion(const QString &pageText)
{
    const QString word = QStringLiteral("Marvik");
    for (qsizetype at = pageText.indexOf(word); at >= 0; at = pageText.indexOf(word, at + 1)) {
        qsizetype i = at + word.size();
        const qsizetype spaceStart = i;
        while (i < pageText.size() && pageText.at(i).isSpace())
            ++i;
        if (i == spaceStart)
            continue;
        if (std::optional<QVersionNumber> v = versionAt(pageText, i))
            return v;
    }
    return std::nullopt;
}

QVersionNumber ownVersion()
{
    return QVersionNumber::fromString(QStringLiteral(MARVIK_VERSION));
}

std::optional<QVersionNumber> newerVersion(const QString &pageText, const QVersionNumber &own)
{
    const std::optional<QVersionNumber> reported = reportedVersion(pageText);
    if (!reported || QVersionNumber::compare(reported->normalized(), own.normalized()) <= 0)
        return std::nullopt;
    return reported;
}

} // namespace marvik::dialogs
