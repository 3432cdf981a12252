// SPDX-License-Identifier: GPL-3.0-or-later
// "Paste list text to EasyPal" from the row menu of a real main window on
// an X server with a window manager: the stand-in EasyPal is restored,
// raised and sent F7 while the clipboard holds the list text; a window with
// another title, or none, gets no key.
#include "core/lists/ListStore.h"
#include "support/FakeEasyPal.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainCommands.h"
#include "gui/app/MainWindow.h"
#include "gui/app/StatusLine.h"
#include "gui/lists/ListGrid.h"
#include "gui/share/ShareController.h"

#include <QAction>
#include <QClipboard>
#include <QElapsedTimer>
#include <QMenu>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace marvik;
using test::FakeEasyPal;

class TestPasteFromMenu : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;

    QAction *action(const QString &name) const { return m_root->commands().action(name); }
    void pickFromRowMenu(int row, const QString &name)
    {
        gui::ListGrid *grid = m_root->mainWindow()->grid(1);
        QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, grid->visualRect(grid->model()->index(row, 0)).center());
        auto *menu = m_root->mainWindow()->findChild<QMenu *>(u"mnuPopup"_qs);
        QTRY_VERIFY(menu->isVisible());
        QVERIFY(menu->actions().contains(action(name)));
        QVERIFY(action(name)->isEnabled());
        menu->hide();
        action(name)->trigger();
    }

private slots:
    void initTestCase();
    void cleanupTestCase();
    void pasteFromTheRowMenu_data();
    void pasteFromTheRowMenu();
};

void TestPasteFromMenu::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_qs);
    QDir(m_dir.path()).mkpath(u"Images/Thumbs"_qs);
    app::Settings settings;
    settings.me = {51.5, -0.12};
    QVERIFY(app::writeConfig(m_dir.filePath(u"Marvik.cfg"_qs), settings));
    test::writeAll(m_dir.filePath(u"List1.dat"_qs),
                   "PA0ABC*Jan**Jan Jansen**Utrecht*Netherlands*52.09*5.12*20240101120000*\r\n"
                   "W1AW*Hiram**Hiram Maxim**Newington*USA*41.71*-72.72*20240101120000*\r\n");
    m_store = std::make_unique<QSettings>(m_dir.filePath(u"settings.ini"_qs), QSettings::IniFormat);
    test::pointSourcesNowhere(*m_store);
    m_root = std::make_unique<gui::CompositionRoot>(m_dir.path(), m_store.get());
    QVERIFY(m_root->startUp());
    m_root->mainWindow()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_root->mainWindow()));
    m_root->lists().finishReading();
    // One row marked, so the text on the clipboard is the window's own.
    pickFromRowMenu(0, gui::kMarkCommand);
}

void TestPasteFromMenu::cleanupTestCase()
{
    if (m_root)
        m_root->mainWindow()->close();
    m_root.reset();
}

void TestPasteFromMenu::pasteFromTheRowMenu_data()
{
    QTest::addColumn<QString>("title"); // the stand-in's title; empty: none runs
    QTest::addColumn<bool>("minimise");
    QTest::addColumn<bool>("key");

    QTest::newRow("EasyPal minimised") << u"EasyPal"_qs << true << true;
    QTest::newRow("EasyPal behind Marvik") << u"EasyPal"_qs << false << true;
    QTest::newRow("no EasyPal") << QString() << false << false;
    QTest::newRow("another title") << u"EasyPal - something"_qs << false << false;
}

void TestPasteFromMenu::pasteFromTheRowMenu()
{
    QFETCH(QString, title);
    QFETCH(bool, minimise);
    QFETCH(bool, key);

    std::unique_ptr<FakeEasyPal> easyPal;
    if (!title.isEmpty()) {
        easyPal = std::make_unique<FakeEasyPal>(FakeEasyPal::Options{title, minimise, u"magenta"_qs});
        QTRY_VERIFY_WITH_TIMEOUT(easyPal->logged(minimise ? "state minimised" : "active"), 15000);
    }
    gui::MainWindow *window = m_root->mainWindow();
    window->raise();
    window->activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(window->isActiveWindow(), 5000);
    const int linesBefore = easyPal ? int(easyPal->lines().size()) : 0;
    QGuiApplication::clipboard()->setText(u"something else"_qs);

    QElapsedTimer clock;
    clock.start();
    pickFromRowMenu(1, u"mnu4"_qs);
    QVERIFY(!QTest::currentTestFailed());
    // The list text is on the clipboard at once, and one paste runs at a time.
    const QString text = m_root->share()->listText();
    QVERIFY(text.contains(u"\r\n\u00BB PA0ABC"_qs));
    QCOMPARE(QGuiApplication::clipboard()->text(), text);
    QVERIFY(!action(u"mnu4"_qs)->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(action(u"mnu4"_qs)->isEnabled(), 15000);
    // 0.2 + 0.5 + 0.5 + 0.5 s with EasyPal, 0.5 s without.
    QVERIFY2(clock.elapsed() >= (key ? 1700 : 500), qPrintable(QString::number(clock.elapsed())));
    // Where every window is in sight, an absent EasyPal ends without a word.
    QCOMPARE(window->statusLine().noteText(), QString());

    if (!easyPal)
        return;
    QTest::qWait(200);
    const QList<QByteArray> after = easyPal->lines().mid(linesBefore);
    const qsizetype keys = std::count_if(after.cbegin(), after.cend(), [](const QByteArray &l) { return l.startsWith("key "); });
    if (!key) {
        QVERIFY2(after.isEmpty(), after.join('|').constData());
        QVERIFY(window->isActiveWindow());
        return;
    }
    QCOMPARE(keys, 1);
    const qsizetype f7 = after.indexOf("key F7");
    QVERIFY2(f7 >= 0, after.join('|').constData());
    if (minimise) {
        const qsizetype restored = after.indexOf("state normal");
        QVERIFY2(restored >= 0 && restored < f7, after.join('|').constData());
    }
    QCOMPARE(QString::fromUtf8(QByteArray::fromBase64(easyPal->value("clipboard"))), text);
    // Raised: where the stand-in is, the screen shows it.
    const QList<QByteArray> centre = easyPal->value("centre").split(' ');
    QCOMPARE(centre.size(), 2);
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::primaryScreen()
                                  ->grabWindow(0, centre[0].toInt(), centre[1].toInt(), 1, 1)
                                  .toImage()
                                  .pixelColor(0, 0),
                              QColor(Qt::magenta), 5000);
}

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestPasteFromMenu test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pastefrommenu.moc"
