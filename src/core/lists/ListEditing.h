// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallListModel.h"

#include <QString>

namespace marvik::lists {

/// The list chooser's line of a list: " name  (count)".
QString chooserLine(const QString &name, int count);

/// A chooser line or a menu caption cut before its first "(", blanks kept,
/// the way messages name a list (" DX  (12)" gives " DX  ").
QString nameBeforeParen(const QString &caption);

/// The default name of list `number`: the word for list, a blank, the number.
QString defaultListName(const QString &listWord, int number);

/// A row copied into another list: the cells as they stand, the nickname
/// mark by the editors' case-sensitive rule, the thumbnail when the file
/// exists, and the azimuth recomputed when both coordinates are non-zero.
CallRecord copiedRecord(const CallRecord &source, const LoadContext &context);

/// Copies one record to `target` unless its callsign is there already
/// (exact, case-sensitive). Returns false for a duplicate.
bool copyRecordTo(const CallRecord &source, CallListModel &target, const LoadContext &context);

/// Copies every record of `source` to `target`, skipping duplicates
/// silently (also those the loop itself adds). Returns the number copied.
int copyAllTo(const CallListModel &source, CallListModel &target, const LoadContext &context);

/// Deletes a row the grid's way: with two rows or more the row goes, with
/// fewer the whole list is emptied.
void deleteRow(CallListModel &model, int row);

/// Writes a first name into every row of `model` with exactly this callsign
/// and marks the cell light blue. Returns the number of rows changed.
int renameFirstName(CallListModel &model, const QString &callsign, const QString &firstName);

/// The wheel rule of the grids: a notch towards the user (-120) moves the
/// top row down by 5, held so the last row stays in view; any other notch
/// moves it up by 5, and a top row then below 5 becomes 0.
int wheelTopRow(int topRow, int delta, int rowCount, int visibleRows);

/// The thumbnail click zone: strictly between 2200 and 2500 twips.
bool inThumbnailZone(int xTwips);

} // namespace marvik::lists
