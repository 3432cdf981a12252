// SPDX-License-Identifier: GPL-3.0-or-later
#include "CallRecord.h"

#include <QDateTime>

namespace marvik::lists {

QString CallRecord::toLine() const
{
    qsizetype size = ColumnCount - 1;
    for (const QString &f : fields)
        size += f.size();
    QString line;
    line.reserve(size);
    for (int c = 0; c < ColumnCount; ++c) {
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

bool isNicknameAtLoad(const QString &fullName, const QString &firstName)
{
    const QString word = firstWord(fullName);
    return !word.isEmpty() && word.toUpper() != firstName.toUpper();
}

bool isNicknameWhenEdited(const QString &fullName, const QString &firstName)
{
    return firstWord(fullName) != firstName;
}

QString plainZero(QString callsign)
{
    return callsign.replace(QChar(0xD8), u'0');
}

} // namespace marvik::lists
