// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/CallRecord.h"

#include <QDateTime>

#include <algorithm>

namespace marvik::lists {

QString CallRecord::toLine() const
{
    qsizetype size = kColumnCount - 1;
    for (const QString &f : fields)
        size += f.size();
    QString line;
    line.reserve(size);
    for (int c = 0; c < kColumnCount; ++c) {
        if (c)
            line += u'*';
        line += fields[std::size_t(c)];
    }
    return line;
}

QString firstWord(const QString &fullName)
{
    const qsizetype blank = fullName.indexOf(u' ');
    return blank < 0 ? fullName : fullName.left(blank);
}

QString timeStamp(const QDateTime &when)
{
    return when.toString(QStringLiteral("yyyyMMddHHmmss"));
}

bool isNicknameAtLoad(QStringView fullName, QStringView firstName)
{
    const qsizetype blank = fullName.indexOf(u' ');
    const QStringView word = blank < 0 ? fullName : fullName.left(blank);
    if (word.isEmpty())
        return false;
    // Plain ASCII, as nearly every name is, compares without building upper-case copies.
    const auto ascii = [](QStringView s) {
        return std::all_of(s.begin(), s.end(), [](QChar c) { return c.unicode() < 0x80; });
    };
    if (ascii(word) && ascii(firstName))
        return word.compare(firstName, Qt::CaseInsensitive) != 0;
    return word.toString().toUpper() != firstName.toString().toUpper();
}

bool isNicknameWhenEdited(const QString &fullName, const QString &firstName)
{
    return firstWord(fullName) != firstName;
}

} // namespace marvik::lists
