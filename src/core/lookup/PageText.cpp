// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/PageText.h"

#include <limits>

namespace marvik::lookup::pagetext {

int find(QStringView text, QStringView what, qint64 from)
{
    if (from < 1)
        throw ReaderError("search started before the first character");
    if (text.isEmpty() || from > text.size())
        return 0;
    if (what.isEmpty())
        return int(from);
    const qsizetype at = text.indexOf(what, from - 1, Qt::CaseSensitive);
    return at < 0 ? 0 : int(at + 1);
}

int findBack(QStringView text, QStringView what, qint64 upTo)
{
    if (upTo == 0 || upTo < -1)
        throw ReaderError("backward search from before the first character");
    if (upTo > text.size())
        return 0;
    const QStringView head = upTo == -1 ? text : text.first(qsizetype(upTo));
    if (what.isEmpty())
        return int(head.size());
    if (head.size() < what.size())
        return 0;
    const qsizetype at = head.lastIndexOf(what, head.size() - what.size(), Qt::CaseSensitive);
    return at < 0 ? 0 : int(at + 1);
}

QString cut(QStringView text, qint64 start, qint64 length)
{
    if (start < 1)
        throw ReaderError("cut starts before the first character");
    if (length < 0)
        throw ReaderError("cut with a negative length: an end mark is missing");
    if (start > text.size())
        return {};
    const qint64 available = text.size() - (start - 1);
    return text.sliced(qsizetype(start - 1), qsizetype(std::min(length, available))).toString();
}

QString trimBlanks(QStringView text)
{
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == u' ')
        ++first;
    while (last > first && text[last - 1] == u' ')
        --last;
    return text.sliced(first, last - first).toString();
}

} // namespace marvik::lookup::pagetext
