// SPDX-License-Identifier: GPL-3.0-or-later
// The printed list, printed to a PDF file and read back with poppler's tools:
// every line in order, in a fixed-pitch font, inside the margins, over as
// many pages as it takes.
#include "gui/share/ListPrinter.h"
#include "support/TestFiles.h"

#include <QPrinter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

using marvik::test::runProgram;

/// The text pdftotext finds in a strip of every page, in points from the top left.
QString textIn(const QString &pdf, int x, int y, int width, int height)
{
    return runProgram(u"pdftotext"_qs,
        {u"-r"_qs, u"72"_qs, u"-x"_qs, QString::number(x), u"-y"_qs, QString::number(y), u"-W"_qs,
            QString::number(width), u"-H"_qs, QString::number(height), pdf, u"-"_qs})
        .simplified();
}

} // namespace

class TestListPrinter : public QObject
{
    Q_OBJECT

private slots:
    void printsTheListInAMonospaceFont_data();
    void printsTheListInAMonospaceFont();
};

void TestListPrinter::printsTheListInAMonospaceFont_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<QString>("tail"); // a last line of its own
    QTest::addColumn<int>("pages");

    QTest::newRow("one page") << 5 << QString() << 1;
    // A4 less 30 mm of margins holds about 60 lines of 10 points.
    QTest::newRow("several pages") << 150 << QString() << 3;
    QTest::newRow("empty list") << 0 << QString() << 1;
    QTest::newRow("line wider than the page") << 2 << u"0123456789"_qs.repeated(25) << 1;
}

void TestListPrinter::printsTheListInAMonospaceFont()
{
    QFETCH(int, rows);
    QFETCH(QString, tail);
    QFETCH(int, pages);

    QString text = u"\r\n"_qs;
    QStringList calls;
    for (int r = 0; r < rows; ++r) {
        calls << u"K%1XY"_qs.arg(r);
        text += (r % 3 ? u"   "_qs : u"\u00BB "_qs) + calls.last()
            + u"      Name%1       %2\u00B0     Town%1\r\n"_qs.arg(r).arg(r % 360);
    }
    if (!tail.isEmpty())
        text += tail + u"\r\n"_qs;
    QTemporaryDir dir;
    const QString pdf = dir.filePath(u"list.pdf"_qs);
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdf);
    printer.setPageSize(QPageSize(QPageSize::A4));
    QVERIFY(marvik::gui::printListText(text, printer));

    const QString info = runProgram(u"pdfinfo"_qs, {pdf});
    QVERIFY2(info.contains(QRegularExpression(u"Pages:\\s+%1\\n"_qs.arg(pages))), qPrintable(info));
    if (rows == 0)
        return;
    const QString fonts = runProgram(u"pdffonts"_qs, {pdf});
    QVERIFY2(fonts.contains(u"LiberationMono"_qs) || fonts.contains(u"Courier"_qs), qPrintable(fonts));

    // Every row's callsign once and in order, with the marker where the
    // list had one; a line too long for the page goes on below, nothing lost.
    const QString plain = runProgram(u"pdftotext"_qs, {u"-layout"_qs, pdf, u"-"_qs});
    QStringList printed;
    QString digits;
    for (const QString &line : plain.split(u'\n')) {
        static const QRegularExpression call(u"K\\d+XY"_qs);
        if (const auto m = call.match(line); m.hasMatch())
            printed << m.captured();
        if (const QString t = line.trimmed(); !t.isEmpty() && t.front().isDigit() && t.back().isDigit())
            digits += t;
    }
    QCOMPARE(printed, calls);
    QVERIFY(plain.contains(u"\u00BB K0XY"_qs));
    QCOMPARE(digits, tail);

    // Nothing in the margins: 20 mm at the left, 15 mm elsewhere (A4 is
    // 595 x 842 points, a millimetre 2.835 points).
    QVERIFY(!textIn(pdf, 0, 0, 595, 842).isEmpty());
    QCOMPARE(textIn(pdf, 0, 0, 56, 842), QString());
    QCOMPARE(textIn(pdf, 0, 0, 595, 42), QString());
    QCOMPARE(textIn(pdf, 553, 0, 42, 842), QString());
    QCOMPARE(textIn(pdf, 0, 800, 595, 42), QString());
}

QTEST_MAIN(TestListPrinter)
#include "tst_listprinter.moc"
