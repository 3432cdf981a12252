// SPDX-License-Identifier: GPL-3.0-or-later
#include "ListEditing.h"

#include "../app/DataFolder.h"
#include "../app/Number.h"

#include <QFileInfo>

namespace marvik::lists {

QString chooserLine(const QString &name, int count)
{
    return u' ' + name + QStringLiteral("  (") + QString::number(count) + u')';
}

QString nameBeforeParen(const QString &caption)
{
    const qsizetype paren = caption.indexOf(u'(');
    return paren < 0 ? caption : caption.left(paren);
}

QString defaultListName(const QString &listWord, int number)
{
    return listWord + u' ' + QString::number(number);
}

QString lookupCallsign(const QString &typed)
{
    QString call = plainZero(typed).toUpper();
    if (call.startsWith(QLatin1String("DE ")))
        call.remove(0, 3);
    for (qsizetype i = 0; i < call.size(); ++i) {
        if (call[i] == u'-' || call[i] == u' ')
            return call.left(i);
    }
    return call;
}

QString callsignFromClipboard(const QString &clipboard)
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

CallRecord copiedRecord(const CallRecord &source, const LoadContext &context)
{
    CallRecord row;
    row.fields = source.fields;
    const QString thumb = context.thumbsDir + u'/' + app::safeFileName(row[Callsign]) + QStringLiteral(".jpg");
    if (!context.thumbsDir.isEmpty() && QFileInfo::exists(thumb))
        row.thumbnail = thumb;
    if (isNicknameWhenEdited(row[FullName], row[FirstName]))
        row.firstNameBack = kNicknameColour;
    const double lat = app::val(row[Latitude]);
    const double lon = app::val(row[Longitude]);
    if (lat != 0 && lon != 0)
        row[Azimuth] = maps::azimuthText(maps::bearingFrom(context.me, lat, lon).degrees);
    return row;
}

bool copyRecordTo(const CallRecord &source, CallListModel &target, const LoadContext &context)
{
    if (target.findCallsign(source[Callsign]) >= 0)
        return false;
    target.appendRecord(copiedRecord(source, context));
    return true;
}

int copyAllTo(const CallListModel &source, CallListModel &target, const LoadContext &context)
{
    int copied = 0;
    for (const CallRecord &r : source.records()) {
        if (copyRecordTo(r, target, context))
            ++copied;
    }
    return copied;
}

void deleteRow(CallListModel &model, int row)
{
    // The grid would not lose its last row, so a list of one is emptied
    // instead; the rule stays even though our model could remove it.
    if (model.rowCount() >= 2)
        model.removeRecord(row);
    else
        model.clear();
}

int renameFirstName(CallListModel &model, const QString &callsign, const QString &firstName)
{
    int changed = 0;
    for (int r = 0; r < model.rowCount(); ++r) {
        if (model.record(r)[Callsign] != callsign)
            continue;
        model.setField(r, FirstName, firstName);
        model.setCellBackground(r, FirstName, kNicknameColour);
        ++changed;
    }
    return changed;
}

int wheelTopRow(int topRow, int delta, int rowCount, int visibleRows)
{
    if (delta != -120) {
        topRow -= 5;
        if (topRow < 5)
            topRow = 0;
    } else {
        topRow += 5;
        if (topRow > rowCount - visibleRows)
            topRow = rowCount - visibleRows;
    }
    return topRow;
}

bool inThumbnailZone(int xTwips)
{
    return xTwips > 2200 && xTwips < 2500;
}

} // namespace marvik::lists
