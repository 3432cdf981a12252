// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QString>

#include <functional>

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

/// The test seam of printListWithDialog(): while set, the printer goes to
/// `choose` instead of the print dialog; it sets the printer up (a PDF file)
/// and returns false for a cancelled dialog. An empty function restores the
/// dialog.
void setPrintDialogForTests(std::function<bool(QPrinter &)> choose);

} // namespace marvik::gui
