// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/ListEditing.h"

#include "core/app/Callsign.h"
#include "core/app/DataFolder.h"
#include "core/app/Number.h"

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

CallRecord copiedRecord(const CallRecord &source, const LoadContext &context)
{
    CallRecord row;
    row.fields = source.fields;
    const QString thumb = context.thumbsDir + u'/' + callsign::fileName(row[Column::Callsign]) + QStringLiteral(".jpg");
    if (!context.thumbsDir.isEmpty() && QFileInfo::exists(thumb))
        row.thumbnail = thumb;
    if (isNicknameWhenEdited(row[Column::FullName], row[Column::FirstName]))
        row.firstNameBack = kNicknameColour;
    const double lat = app::val(row[Column::Latitude]);
    const double lon = app::val(row[Column::Longitude]);
    if (lat != 0 && lon != 0)
        row[Column::Azimuth] = maps::azimuthText(maps::bearingFrom(context.me, lat, lon).degrees);
    return row;
}

bool copyRecordTo(const CallRecord &source, CallListModel &target, const LoadContext &context)
{
    if (target.findCallsign(source[Column::Callsign]) >= 0)
        return false;
    target.appendRecord(copiedRecord(source, context));
    return true;
}

int copyAllTo(const CallListModel &source, CallListModel &target, const LoadContext &context)
{
    int copied = 0;
    for (int row = 0; row < source.rowCount(); ++row) {
        if (copyRecordTo(source.record(row), target, context))
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
        if (model.record(r)[Column::Callsign] != callsign)
            continue;
        model.setField(r, Column::FirstName, firstName);
        model.setCellBackground(r, Column::FirstName, kNicknameColour);
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
