// SPDX-License-Identifier: GPL-3.0-or-later
// Driving EasyPal's window on a real X server: the stand-in EasyPal is found
// by its exact title, restored, raised and sent F7 while the clipboard holds
// the list text. Runs with openbox, and once more with no window manager
// (MARVIK_X11_NO_WM), where Marvik raises and focuses the window itself.
#include "core/i18n/Texts.h"
#include "core/lists/ListFile.h"
#include "core/share/ListText.h"
#include "core/share/PasteToEasyPal.h"
#include "core/share/TransmitterWindow.h"
#include "support/FakeEasyPal.h"
#include "support/TestFiles.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <algorithm>

using marvik::share::PasteToEasyPal;
using marvik::test::FakeEasyPal;

namespace {

/// Marvik's side: a window that covers most of the screen, so that EasyPal
/// shows on top of it only when it was raised, and that counts the F7s it
/// gets (none may come back to Marvik).
class MarvikStandIn : public QWidget
{
public:
    int f7Presses = 0;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Qt::green); }
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_F7)
            ++f7Presses;
        QWidget::keyPressEvent(event);
    }
};

bool noWindowManager()
{
    return !qEnvironmentVariableIsEmpty("MARVIK_X11_NO_WM");
}

} // namespace

class TestTransmitter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void pasteRestoresRaisesAndPresses_data();
    void pasteRestoresRaisesAndPresses();
    void noKeyWithoutExactTitle_data();
    void noKeyWithoutExactTitle();
    void findsByExactTitle_data();
    void findsByExactTitle();
    void cliTextEqualsWindowText();

private:
    /// Starts a stand-in and waits until it is up (and minimised, when asked).
    std::unique_ptr<FakeEasyPal> startFake(const FakeEasyPal::Options &options);
    /// Puts Marvik's window in front, as it is when the user picks the command.
    void bringMarvikForward();
    /// Runs the paste to "EasyPal" to its end; it must end in `outcome` and
    /// take at least `leastMs`.
    void runPaste(PasteToEasyPal::Outcome outcome, qint64 leastMs);

    std::unique_ptr<marvik::share::TransmitterWindow> m_backend;
    std::unique_ptr<MarvikStandIn> m_marvik;
};

void TestTransmitter::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_qs);
    m_backend = marvik::share::createTransmitterWindow();
    QVERIFY2(m_backend, "no X11 backend although an X display runs");
    m_marvik = std::make_unique<MarvikStandIn>();
    m_marvik->setWindowTitle(u"Marvik"_qs);
    m_marvik->setGeometry(0, 0, 1500, 950);
    m_marvik->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_marvik.get()));
}

void TestTransmitter::init()
{
    m_marvik->f7Presses = 0;
}

std::unique_ptr<FakeEasyPal> TestTransmitter::startFake(const FakeEasyPal::Options &options)
{
    auto fake = std::make_unique<FakeEasyPal>(options);
    const QByteArray ready = options.minimise ? "state minimised" : "active";
    // Without a window manager nothing activates a new window by itself.
    if (!noWindowManager() || options.minimise)
        [&] { QTRY_VERIFY_WITH_TIMEOUT(fake->logged(ready), 15000); }();
    [&] { QTRY_VERIFY_WITH_TIMEOUT(fake->windowId() != 0, 15000); }();
    return fake;
}

void TestTransmitter::bringMarvikForward()
{
    m_marvik->raise();
    m_marvik->activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(m_marvik->isActiveWindow(), 5000);
}

void TestTransmitter::runPaste(PasteToEasyPal::Outcome outcome, qint64 leastMs)
{
    PasteToEasyPal paste(m_backend.get());
    QSignalSpy finished(&paste, &PasteToEasyPal::finished);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(paste.start());
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 15000);
    QCOMPARE(finished.first().first().value<PasteToEasyPal::Outcome>(), outcome);
    QVERIFY2(clock.elapsed() >= leastMs, qPrintable(QString::number(clock.elapsed())));
}

void TestTransmitter::pasteRestoresRaisesAndPresses_data()
{
    QTest::addColumn<bool>("minimise");
    QTest::newRow("minimised") << true;
    QTest::newRow("behind Marvik's window") << false;
}

void TestTransmitter::pasteRestoresRaisesAndPresses()
{
    QFETCH(bool, minimise);
    if (minimise && noWindowManager())
        QSKIP("without a window manager no window is ever minimised");
    auto fake = startFake({u"EasyPal"_qs, minimise, u"magenta"_qs});
    QVERIFY(!QTest::currentTestFailed());
    bringMarvikForward();
    const quint64 id = fake->windowId();
    QCOMPARE(m_backend->find(u"EasyPal"_qs), id);
    QCOMPARE(m_backend->isMinimised(id), minimise);

    const QString text
        = marvik::share::composeListText({{u"PA0ABC"_qs, u"Jan"_qs, u"264\u00B0"_qs, u"Utrecht"_qs, true},
                                             {u"W1AW"_qs, u"Hiram"_qs, u"291\u00B0"_qs, u"Newington"_qs, false}},
            marvik::share::listTextFont());
    QGuiApplication::clipboard()->setText(text);

    const int linesBefore = int(fake->lines().size());
    // 0.2 + 0.5 + 0.5 + 0.5 s of waits.
    runPaste(PasteToEasyPal::Outcome::KeySent, 1700);
    QVERIFY(!QTest::currentTestFailed());

    // What the stand-in went through after the command: restored (when it
    // was minimised), then exactly one key, F7, with the list text on the
    // clipboard. The key goes to whatever window has the keyboard focus, so
    // its arrival says the stand-in had been given the focus.
    const QList<QByteArray> after = fake->lines().mid(linesBefore);
    const qsizetype key = after.indexOf("key F7");
    QVERIFY2(key >= 0, after.join('|').constData());
    if (minimise)
        QVERIFY2(
            after.indexOf("state normal") >= 0 && after.indexOf("state normal") < key, after.join('|').constData());
    QCOMPARE(std::count_if(after.cbegin(), after.cend(), [](const QByteArray &l) { return l.startsWith("key "); }), 1);
    QCOMPARE(QString::fromUtf8(QByteArray::fromBase64(fake->value("clipboard"))), text);
    QVERIFY(!m_backend->isMinimised(id));
    QCOMPARE(m_marvik->f7Presses, 0);

    // Raised: where the stand-in is, the screen shows it, not Marvik's window
    // underneath.
    const QList<QByteArray> centre = fake->value("centre").split(' ');
    QCOMPARE(centre.size(), 2);
    const QPoint at(centre[0].toInt(), centre[1].toInt());
    QTRY_COMPARE_WITH_TIMEOUT(
        QGuiApplication::primaryScreen()->grabWindow(0, at.x(), at.y(), 1, 1).toImage().pixelColor(0, 0),
        QColor(Qt::magenta), 5000);
}

void TestTransmitter::noKeyWithoutExactTitle_data()
{
    QTest::addColumn<QString>("title"); // the stand-in's title; empty: none runs

    QTest::newRow("no window") << QString();
    QTest::newRow("a longer title") << u"EasyPal - something"_qs;
    QTest::newRow("other case") << u"easypal"_qs;
    QTest::newRow("trailing blank") << u"EasyPal "_qs;
    QTest::newRow("title inside another") << u"My EasyPal"_qs;
}

void TestTransmitter::noKeyWithoutExactTitle()
{
    QFETCH(QString, title);
    std::unique_ptr<FakeEasyPal> fake;
    if (!title.isEmpty()) {
        fake = startFake({title, false, u"magenta"_qs});
        QVERIFY(!QTest::currentTestFailed());
    }
    bringMarvikForward();
    const int linesBefore = fake ? int(fake->lines().size()) : 0;

    runPaste(PasteToEasyPal::Outcome::NotFound, 500);
    QVERIFY(!QTest::currentTestFailed());
    QVERIFY(PasteToEasyPal::hint(PasteToEasyPal::Outcome::NotFound, marvik::i18n::Texts::english()).isEmpty());
    // Nothing was pressed anywhere and nothing came forward.
    QTest::qWait(300);
    QCOMPARE(m_marvik->f7Presses, 0);
    QVERIFY(m_marvik->isActiveWindow());
    if (fake) {
        const QList<QByteArray> after = fake->lines().mid(linesBefore);
        QVERIFY2(after.isEmpty(), after.join('|').constData());
    }
}

void TestTransmitter::findsByExactTitle_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("search");
    QTest::addColumn<bool>("found");

    // The window search takes its pattern as a regular expression.
    QTest::newRow("brackets in the title") << u"EasyPal (1)"_qs << u"EasyPal (1)"_qs << true;
    QTest::newRow("brackets as a group") << u"EasyPal 1"_qs << u"EasyPal (1)"_qs << false;
    QTest::newRow("dot as any character") << u"EasyPal"_qs << u"Easy.al"_qs << false;
    QTest::newRow("beyond ASCII") << u"EasyPal \u00D8"_qs << u"EasyPal \u00D8"_qs << true;
}

void TestTransmitter::findsByExactTitle()
{
    QFETCH(QString, title);
    QFETCH(QString, search);
    QFETCH(bool, found);
    auto fake = startFake({title, false, u"magenta"_qs});
    QVERIFY(!QTest::currentTestFailed());
    QCOMPARE(m_backend->find(search), found ? fake->windowId() : 0);
}

void TestTransmitter::cliTextEqualsWindowText()
{
    // The command-line text is measured without a display; the window's on
    // this X server. Both must give the same blanks.
    QTemporaryDir data;
    QVERIFY(marvik::test::writeBytes(data.filePath(u"List2.dat"_qs),
        "PA0ABC*Jan*264\xB0*Jan Jansen*Street 1*Utrecht*Netherlands*52.09*5.12*20240101120000*\r\n"
        "VERYLONGCALLSIGN*Bartholomew*7\xB0*B*Y*Kleinstadt*Z*10*10*20240101120000*\r\n"
        "W1AW*Hiram*291\xB0*Hiram Maxim*Main St*Newington*USA*41.71*-72.72*20240101120000*\r\n"
        "G4ABC*Mike*45\xB0*Mike Smith**Leeds*England*53.8*-1.55*20240101120000*\r\n"));
    QProcess cli;
    cli.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), {u"--data-dir"_qs, data.path(), u"list-text"_qs, u"2"_qs});
    QVERIFY(cli.waitForFinished(20000));
    QCOMPARE(cli.exitCode(), 0);

    marvik::lists::CallListModel model;
    qint16 sortMode = 0;
    QCOMPARE(marvik::lists::loadList(model, data.filePath(u"List2.dat"_qs), {}, sortMode).lines, 4);
    const QString window
        = marvik::share::composeListText(marvik::share::listTextRows(model), marvik::share::listTextFont());
    QCOMPARE(QString::fromUtf8(cli.readAllStandardOutput()), window);
}

QTEST_MAIN(TestTransmitter)
#include "tst_transmitter.moc"
