// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/dialogs/AddEdit.h"

#include "core/app/Number.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"

namespace marvik::dialogs {

using lists::Column;

QList<int> Membership::lists() const
{
    QList<int> out;
    for (int k = 1; k <= mark.size(); ++k) {
        if (mark.at(k - 1) != u'0')
            out.append(k);
    }
    return out;
}

Membership findInLists(const lists::ListStore &lists, const QString &callsign)
{
    Membership m;
    for (int k = 1; k <= lists::kListCount; ++k) {
        const lists::CallListModel *model = lists.model(k);
        const int row = model ? model->findCallsign(callsign) : -1;
        if (row < 0)
            continue;
        m.mark[k - 1] = QChar(u'0' + k);
        m.shown = model->record(row);
    }
    return m;
}

QString listNumbers(const QString &mark)
{
    QString out;
    for (const QChar c : mark) {
        if (c == u'0')
            continue;
        if (!out.isEmpty())
            out += u',';
        out += c;
    }
    return out;
}

EditedFields fieldsOf(const lists::CallRecord &row)
{
    EditedFields f;
    f.callsign = row[Column::Callsign];
    f.nickname = row[Column::FirstName];
    f.name = row[Column::FullName];
    f.address = row[Column::Address];
    f.city = row[Column::City];
    f.country = row[Column::Country];
    f.latitude = row[Column::Latitude];
    f.longitude = row[Column::Longitude];
    return f;
}

QString azimuthBoxText(const maps::Position &me, const QString &latitude, const QString &longitude)
{
    if (latitude.isEmpty() && longitude.isEmpty())
        return {};
    return QString::number(maps::bearingFrom(me, app::val(latitude), app::val(longitude)).degrees);
}

void writeFields(lists::CallRecord &row, const EditedFields &fields, const maps::Position &me)
{
    row[Column::Callsign] = fields.callsign;
    row[Column::FullName] = fields.name;
    row[Column::Address] = fields.address;
    row[Column::City] = fields.city;
    row[Column::Country] = fields.country;
    if (!fields.nickname.isEmpty())
        row[Column::FirstName] = fields.nickname;
    // A mark once given stays: the dialog only ever adds it, as renaming does.
    if (lists::isNicknameWhenEdited(row[Column::FullName], row[Column::FirstName]))
        row.firstNameBack = lists::kNicknameColour;
    row[Column::Latitude] = fields.latitude;
    row[Column::Longitude] = fields.longitude;
    if (!fields.azimuth.isEmpty())
        row[Column::Azimuth] = fields.azimuth + QChar(0xB0);
    else if (row[Column::Azimuth].isEmpty())
        // A row without a position gets no bearing, as the lists give none
        // when they are read.
        row[Column::Azimuth] = lists::azimuthOf(maps::DistanceFromMe(me), row);
}

} // namespace marvik::dialogs
