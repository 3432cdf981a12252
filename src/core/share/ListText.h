// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QList>
#include <QString>

namespace marvik::lists {
class CallListModel;
}

namespace marvik::share {

/// What one list row gives the paste text: the callsign, first name,
/// azimuth and city cells, and whether the row is marked for paste.
struct ListTextRow
{
    QString callsign;
    QString firstName;
    QString azimuth;
    QString city;
    bool marked = false;
};

/// The rows of a list as the paste text reads them, every record in grid
/// order. A row is marked when its callsign cell has the paste-mark colour.
QList<ListTextRow> listTextRows(const lists::CallListModel &model);

/// The list text that goes on the clipboard, to EasyPal and to the printer:
/// a line break first, then one line per row ended by CR LF. Each line is
/// "» " for a marked row or three blanks, then the callsign, first name and
/// azimuth each padded with blanks to the 100, 200 and 270 pixel stops of
/// `font`, then the city. Every padding holds at least one blank, so a cell
/// already past its stop never runs into the next one.
QString composeListText(const QList<ListTextRow> &rows, const QFont &font);

/// The font the list text is measured with, in the main window and in
/// marvik-cli alike: Arial at 11 pixels (the Windows dialog font's size at
/// 96 dpi), unhinted so the desktop's hinting settings cannot move a stop.
/// Where Arial is not installed the font system gives its metric twin.
QFont listTextFont();

} // namespace marvik::share
