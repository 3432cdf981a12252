// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/share/ListPrinter.h"

#include "core/app/Log.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>

namespace marvik::gui {

namespace {

std::function<bool(QPrinter &)> &printDialogSeam()
{
    static std::function<bool(QPrinter &)> seam;
    return seam;
}

/// The printed lines: the text's CR LF lines (the leading empty one kept,
/// nothing after the last line end), each cut into pieces of at most
/// `perLine` characters.
QStringList printedLines(const QString &text, qsizetype perLine)
{
    QStringList lines = text.split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    QStringList out;
    for (const QString &line : std::as_const(lines)) {
        if (line.size() <= perLine) {
            out.append(line);
            continue;
        }
        for (qsizetype at = 0; at < line.size(); at += perLine)
            out.append(line.mid(at, perLine));
    }
    return out;
}

} // namespace

QFont listPrintFont()
{
    QFont font(QStringLiteral("Courier New"), 10);
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

bool printListText(const QString &text, QPrinter &printer)
{
    printer.setPageMargins(QMarginsF(20, 15, 15, 15), QPageLayout::Millimeter);
    QPainter painter;
    if (!painter.begin(&printer)) {
        qCWarning(lcShare) << "the printer could not be started";
        return false;
    }
    const QFont font = listPrintFont();
    painter.setFont(font);
    const QFontMetricsF metrics(font, &printer);
    const QRectF area = printer.pageRect(QPrinter::DevicePixel);
    // A fixed-pitch font: every character is as wide as "M".
    const qsizetype perLine = qMax<qsizetype>(1, qsizetype(area.width() / metrics.horizontalAdvance(u'M')));

    qreal baseline = metrics.ascent();
    for (const QString &line : printedLines(text, perLine)) {
        if (baseline + metrics.descent() > area.height()) {
            printer.newPage();
            baseline = metrics.ascent();
        }
        painter.drawText(QPointF(0, baseline), line);
        baseline += metrics.lineSpacing();
    }
    return painter.end();
}

bool printListWithDialog(const QString &text, QWidget *parent)
{
    QPrinter printer;
    if (const auto &seam = printDialogSeam()) {
        if (!seam(printer))
            return false;
    } else {
        QPrintDialog dialog(&printer, parent);
        if (dialog.exec() != QDialog::Accepted)
            return false;
    }
    return printListText(text, printer);
}

void setPrintDialogForTests(std::function<bool(QPrinter &)> choose)
{
    printDialogSeam() = std::move(choose);
}

} // namespace marvik::gui
