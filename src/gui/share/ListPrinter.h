// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QString>

class QPrinter;
class QWidget;

namespace marvik::gui {

/// The printed list's font: "Courier New", 10 points. The list text is laid
/// out for a proportional font, so on paper a fixed-pitch one keeps the
/// columns at least even; Linux gives its metric twin, Liberation Mono.
QFont listPrintFont();

/// Prints the list text on `printer` with margins of 20 mm at the left and
/// 15 mm elsewhere, line by line in listPrintFont(), starting a new page when
/// one is full; a line wider than the page goes on in the next line. False
/// when the printer could not be started.
bool printListText(const QString &text, QPrinter &printer);

/// "Print list": the print dialog, then printListText() on the printer the
/// user chose. False when the user cancelled or the printing failed.
bool printListWithDialog(const QString &text, QWidget *parent);

} // namespace marvik::gui
