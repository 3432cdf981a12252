// SPDX-License-Identifier: GPL-3.0-or-later
// The sharing commands through the real main window: marking rows for the
// paste text from the row menu and with Space, the marks through a list
// switch, the list text on the clipboard, printing through the menu, and
// marked cells that stay readable on a dark theme.
#include "support/GuiTestUtil.h"
#include "support/TestFiles.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainCommands.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Selection.h"
#include "gui/lists/ListGrid.h"
#include "gui/share/ListPrinter.h"
#include "gui/share/ShareController.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPrinter>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik;
using test::writeAll;

namespace {

// Stored unsorted. K1ABC's first name is a nickname; VK2ABC has no
// longitude, G4XYZ no latitude.
const QByteArray kList1 = "K1ABC*Jim**James Taylor**Boston*USA*42.36*-71.06*20240105093000*\r\n"
                          "VK2ABC*Ann**Ann Lee**Sydney*Australia*-33.87*0*20240103000000*\r\n"
                          "DL1ABC*Hans**Hans Meyer**Berlin*Germany*52.52*13.405*20240102101500*\r\n"
                          "G4XYZ*Bob**Bob Smith**Leeds*England*0*-1.55*20231231220000*\r\n";
const QByteArray kList2 = "F5ABC*Jean**Jean Dupont**Paris*France*48.86*2.35*20240112154500*\r\n";

using marvik::test::runProgram;

} // namespace

class TestShareController : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    lists::CallListModel *model(int list = 1) const { return m_root->lists().model(list); }
    gui::ListGrid *grid() const { return m_root->mainWindow()->grid(m_root->selection().currentList()); }
    QAction *action(const QString &name) const { return m_root->commands().action(name); }
    int rowOf(const QString &call) const { return model(m_root->selection().currentList())->findCallsign(call); }
    bool marked(const QString &call) const
    {
        const int row = rowOf(call);
        return row >= 0 && model(m_root->selection().currentList())->index(row, 0).data(Qt::BackgroundRole)
            == QVariant(lists::kMarkColour);
    }
    void click(int row, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(grid()->viewport(), button, {}, grid()->visualRect(grid()->model()->index(row, 0)).center());
    }
    /// Opens the row menu on a row and picks one of its items.
    void pickFromRowMenu(int row, const QString &name)
    {
        click(row, Qt::RightButton);
        auto *menu = m_root->mainWindow()->findChild<QMenu *>(u"mnuPopup"_qs);
        QVERIFY(menu->isVisible());
        QVERIFY2(menu->actions().contains(action(name)), qPrintable(name));
        QVERIFY(action(name)->isEnabled());
        menu->hide();
        action(name)->trigger();
    }
    void switchTo(int list)
    {
        auto *chooser = m_root->mainWindow()->findChild<QComboBox *>(u"cboList"_qs);
        chooser->setCurrentIndex(list - 1);
        emit chooser->activated(list - 1);
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(u"Images/Thumbs"_qs);
        app::Settings settings;
        settings.me = {51.5, -0.12};
        QVERIFY(app::writeConfig(file(u"Marvik.cfg"_qs), settings));
        writeAll(file(u"List1.dat"_qs), kList1);
        writeAll(file(u"List2.dat"_qs), kList2);
        m_store = std::make_unique<QSettings>(file(u"settings.ini"_qs), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        QVERIFY(m_root->startUp());
        m_root->mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_root->mainWindow()));
        m_root->lists().finishReading();
    }
    void cleanup()
    {
        gui::setPrintDialogForTests({});
        m_root.reset();
        m_store.reset();
        m_dir.reset();
    }

    void markTogglesFromTheMenuAndWithSpace_data();
    void markTogglesFromTheMenuAndWithSpace();
    void marksOutliveAListSwitchAndASort();
    void copyPutsTheListTextOnTheClipboard();
    void printGoesThroughTheMenu_data();
    void printGoesThroughTheMenu();
    void colouredCellsStayReadableOnADarkTheme_data();
    void colouredCellsStayReadableOnADarkTheme();
};

void TestShareController::markTogglesFromTheMenuAndWithSpace_data()
{
    QTest::addColumn<bool>("space");
    QTest::newRow("row menu") << false;
    QTest::newRow("Space") << true;
}

void TestShareController::markTogglesFromTheMenuAndWithSpace()
{
    QFETCH(bool, space);
    // Sorted by callsign: DL1ABC, G4XYZ, K1ABC, VK2ABC.
    QCOMPARE(rowOf(u"G4XYZ"_qs), 1);
    const auto toggle = [&] {
        if (!space) {
            pickFromRowMenu(1, gui::kMarkCommand);
            return;
        }
        // The keyboard reaches the rows through Tab; a click hands the
        // focus back to the callsign box, where Space is a blank.
        click(0);
        auto *callBox = m_root->mainWindow()->findChild<QLineEdit *>(u"txtCall"_qs);
        QVERIFY(callBox->hasFocus());
        QTest::keyClick(callBox, Qt::Key_Space);
        QVERIFY(!marked(u"DL1ABC"_qs));
        grid()->setFocus();
        QTest::keyClick(grid(), Qt::Key_Down);
        QCOMPARE(m_root->selection().currentRow(), 1);
        QTest::keyClick(grid(), Qt::Key_Space);
    };

    toggle();
    QVERIFY(!QTest::currentTestFailed());
    QVERIFY(marked(u"G4XYZ"_qs));
    for (const QString &other : {u"DL1ABC"_qs, u"K1ABC"_qs, u"VK2ABC"_qs})
        QVERIFY2(!marked(other), qPrintable(other));
    // The row menu shows the mark of the row it was opened on.
    click(1, Qt::RightButton);
    QVERIFY(action(gui::kMarkCommand)->isChecked());
    click(0, Qt::RightButton);
    QVERIFY(!action(gui::kMarkCommand)->isChecked());
    m_root->mainWindow()->findChild<QMenu *>(u"mnuPopup"_qs)->hide();

    toggle();
    QVERIFY(!QTest::currentTestFailed());
    QVERIFY(!marked(u"G4XYZ"_qs));
    QVERIFY(!model()->index(1, 0).data(Qt::BackgroundRole).isValid());
}

void TestShareController::marksOutliveAListSwitchAndASort()
{
    pickFromRowMenu(rowOf(u"K1ABC"_qs), gui::kMarkCommand);
    QVERIFY(!QTest::currentTestFailed());
    QVERIFY(marked(u"K1ABC"_qs));
    // The switch reads each list's file again.
    switchTo(2);
    QCOMPARE(model(2)->rowCount(), 1);
    switchTo(1);
    QVERIFY(marked(u"K1ABC"_qs));
    QVERIFY(!marked(u"DL1ABC"_qs));
    // Sorted by date, K1ABC comes first and keeps its mark.
    m_root->mainWindow()->findChild<QRadioButton *>(u"optSort1"_qs)->click();
    QCOMPARE(rowOf(u"K1ABC"_qs), 0);
    QVERIFY(marked(u"K1ABC"_qs));
    QCOMPARE(m_root->share()->listText().split(u"\r\n"_qs).value(1).left(7), u"\u00BB K1ABC"_qs);
}

void TestShareController::copyPutsTheListTextOnTheClipboard()
{
    pickFromRowMenu(rowOf(u"DL1ABC"_qs), gui::kMarkCommand);
    pickFromRowMenu(rowOf(u"VK2ABC"_qs), gui::kMarkCommand);
    QGuiApplication::clipboard()->setText(u"something else"_qs);
    pickFromRowMenu(0, u"mnu5"_qs);
    QVERIFY(!QTest::currentTestFailed());
    const QString text = QGuiApplication::clipboard()->text();

    QVERIFY(text.startsWith(u"\r\n"_qs));
    QVERIFY(text.endsWith(u"\r\n"_qs));
    QStringList lines = text.split(u"\r\n"_qs);
    lines.removeFirst();
    lines.removeLast();
    QCOMPARE(lines.size(), 4);
    // An unmarked line is what marvik-cli composes from the file, measured
    // and padded alike.
    const QStringList cli = runProgram(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), {u"--data-dir"_qs, m_dir->path(),
                                                                              u"list-text"_qs, u"1"_qs})
                                .split(u"\r\n"_qs);
    QCOMPARE(cli.size(), 6);
    const QStringList calls{u"DL1ABC"_qs, u"G4XYZ"_qs, u"K1ABC"_qs, u"VK2ABC"_qs};
    const QList<bool> marks{true, false, false, true};
    for (int i = 0; i < 4; ++i) {
        const QString &line = lines[i];
        if (marks[i]) {
            QVERIFY2(line.startsWith(u"\u00BB "_qs + calls[i] + u' '), qPrintable(line));
            // The same cells as the unmarked line, the marker in front.
            QCOMPARE(line.simplified(), u"\u00BB "_qs + cli[i + 1].simplified());
        } else {
            QCOMPARE(line, cli[i + 1]);
            QVERIFY(line.startsWith(u"   "_qs + calls[i] + u' '));
        }
    }
    QVERIFY(lines[0].endsWith(u"Berlin"_qs));
    QVERIFY(lines[0].contains(u"\u00B0"_qs));
}

void TestShareController::printGoesThroughTheMenu_data()
{
    QTest::addColumn<bool>("printed"); // false: the dialog was cancelled
    QTest::newRow("printed") << true;
    QTest::newRow("cancelled") << false;
}

void TestShareController::printGoesThroughTheMenu()
{
    QFETCH(bool, printed);
    const QString pdf = file(u"list.pdf"_qs);
    int asked = 0;
    gui::setPrintDialogForTests([&](QPrinter &printer) {
        ++asked;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        return printed;
    });
    pickFromRowMenu(rowOf(u"K1ABC"_qs), gui::kMarkCommand);
    pickFromRowMenu(0, u"mnu6"_qs);
    QVERIFY(!QTest::currentTestFailed());
    QCOMPARE(asked, 1);
    QCOMPARE(QFile::exists(pdf), printed);
    if (!printed)
        return;
    const QString fonts = runProgram(u"pdffonts"_qs, {pdf});
    QVERIFY2(fonts.contains(u"LiberationMono"_qs) || fonts.contains(u"Courier"_qs), qPrintable(fonts));
    QStringList printedLines = runProgram(u"pdftotext"_qs, {u"-layout"_qs, pdf, u"-"_qs}).split(u'\n');
    for (QString &line : printedLines)
        line = line.simplified();
    printedLines.removeAll(QString());
    QStringList listed = m_root->share()->listText().split(u"\r\n"_qs);
    for (QString &line : listed)
        line = line.simplified();
    listed.removeAll(QString());
    QCOMPARE(printedLines, listed);
    QVERIFY(printedLines.value(2).startsWith(u"\u00BB K1ABC "_qs));
}

void TestShareController::colouredCellsStayReadableOnADarkTheme_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("mark");
    QTest::newRow("marked callsign") << 0 << true;
    QTest::newRow("nickname") << 1 << false;
}

void TestShareController::colouredCellsStayReadableOnADarkTheme()
{
    QFETCH(int, column);
    QFETCH(bool, mark);
    QPalette dark = grid()->palette();
    for (QPalette::ColorRole role : {QPalette::Base, QPalette::Window, QPalette::AlternateBase})
        dark.setColor(role, QColor(30, 30, 30));
    for (QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText})
        dark.setColor(role, Qt::white);
    grid()->setPalette(dark);

    const int row = rowOf(u"K1ABC"_qs);
    if (mark)
        pickFromRowMenu(row, gui::kMarkCommand);
    // A row that is not the selected one, as most rows are.
    click(rowOf(u"DL1ABC"_qs));
    QVERIFY(model()->index(row, column).data(Qt::BackgroundRole).isValid());
    const QRect cell = grid()->visualRect(model()->index(row, column));
    const QImage picture = grid()->viewport()->grab(cell).toImage();

    // The cell keeps its light colour and its text shows in a dark one, where
    // the theme would have written white.
    const QColor back = model()->index(row, column).data(Qt::BackgroundRole).value<QColor>();
    int darkPixels = 0;
    int backPixels = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor c = picture.pixelColor(x, y);
            darkPixels += c.lightness() < 90;
            backPixels += c == back;
        }
    }
    QVERIFY2(backPixels > picture.width() * picture.height() / 2, qPrintable(QString::number(backPixels)));
    QVERIFY2(darkPixels >= 10, qPrintable(QString::number(darkPixels)));
}

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestShareController test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sharecontroller.moc"
