// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallRecord.h"
#include "core/maps/Geometry.h"

#include <QString>

#include <optional>

namespace marvik::lists {
class ListStore;
}

/// The add/edit dialog's rules that need no window: where a call stands,
/// what the dialog says about it, and how its boxes go into a list row.
namespace marvik::dialogs {

/// Where a callsign stands across the five lists.
struct Membership
{
    /// One character per list: "0", or the list's own digit when it holds
    /// the call ("02005": lists 2 and 5).
    QString mark = QStringLiteral("00000");
    /// The first row holding the call in the last list that holds it: the
    /// boxes show this one, as a later list overwrote an earlier one's.
    std::optional<lists::CallRecord> shown;

    bool found() const { return shown.has_value(); }
    /// The lists that hold the call, 1..5 in order.
    QList<int> lists() const;
};

/// Looks a callsign up in every list, exactly and case-sensitively, as the
/// dialog compares its box with the lists.
Membership findInLists(const lists::ListStore &lists, const QString &callsign);

/// The numbers of the lists a mark names, joined by commas ("2,5"); empty
/// when no list holds the call. The dialog shows the template "xxx is in
/// list ???" filled with the call and these.
QString listNumbers(const QString &mark);

/// The dialog's boxes, by the column each fills.
struct EditedFields
{
    QString callsign;
    QString nickname;
    QString azimuth; ///< the box's number, without "°"
    QString name;
    QString address;
    QString city;
    QString country;
    QString latitude;
    QString longitude;
};

/// The boxes filled from a row (the azimuth box is left to the position).
EditedFields fieldsOf(const lists::CallRecord &row);

/// The azimuth box for a typed position: the whole degrees from Me, 0 when
/// the distance is 0 (also when Me is not set); empty while both boxes are
/// empty, since there is nothing to aim at.
QString azimuthBoxText(const maps::Position &me, const QString &latitude, const QString &longitude);

/// Writes the boxes into a row: an empty nickname keeps the first name the
/// row has; a first name that is not the full name's first word (as it
/// stands, case and all) is marked; the azimuth is the box's with "°", or,
/// with an empty box and no azimuth in the row, the bearing to the row's
/// position. Every other cell, the time stamp and Extra included, stays.
void writeFields(lists::CallRecord &row, const EditedFields &fields, const maps::Position &me);

} // namespace marvik::dialogs
