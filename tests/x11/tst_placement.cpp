// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's place on a real X server with a window manager: moved,
// always-on-top switched on and off again, closed and started again, it
// comes back to the same pixel, and switching always-on-top leaves it the
// active window.
#include "core/lists/ListStore.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "support/MarvikUnderTest.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace marvik;

class TestPlacement : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_store;

    std::unique_ptr<gui::CompositionRoot> start()
    {
        auto root = std::make_unique<gui::CompositionRoot>(m_dir.path(), m_store.get());
        if (!root->startUp())
            return nullptr;
        root->lists().finishReading();
        root->mainWindow()->show();
        if (!QTest::qWaitForWindowExposed(root->mainWindow()))
            return nullptr;
        // The window manager's frame settles after the first expose.
        QTest::qWait(300);
        return root;
    }

    /// The window's _NET_WM_STATE as the X server has it.
    static QByteArray wmState(QWidget *w)
    {
        QProcess xprop;
        xprop.start(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(w->winId()),
                                              QStringLiteral("_NET_WM_STATE")});
        return xprop.waitForFinished(5000) ? xprop.readAllStandardOutput() : QByteArray();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("Maps")));
        m_store = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
    }

    void placementRoundTrip_data()
    {
        QTest::addColumn<int>("toggles");
        QTest::newRow("untouched") << 0;
        QTest::newRow("always on top, twice") << 2;
        QTest::newRow("always on top, once") << 1;
    }
    void placementRoundTrip()
    {
        QFETCH(int, toggles);
        QRect placed;
        {
            auto root = start();
            QVERIFY(root);
            gui::MainWindow *w = root->mainWindow();
            w->move(137, 211);
            w->resize(520, 430);
            QTRY_COMPARE(w->pos(), QPoint(137, 211));
            w->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(w));
            placed = w->geometry();
            QAction *onTop = root->commands().action(QStringLiteral("mnuOnTop"));
            for (int i = 0; i < toggles; ++i) {
                onTop->trigger();
                QTest::qWait(300);
                QCOMPARE(bool(w->windowFlags() & Qt::WindowStaysOnTopHint), i % 2 == 0);
                // What the window manager was told, not only what Qt holds.
                QTRY_COMPARE(wmState(w).contains("_NET_WM_STATE_ABOVE"), i % 2 == 0);
                QVERIFY2(w->isActiveWindow(), "the window lost the focus");
                QCOMPARE(w->geometry(), placed);
            }
            w->close();
        }
        auto again = start();
        QVERIFY(again);
        QCOMPARE(again->mainWindow()->geometry(), placed);
        QCOMPARE(bool(again->mainWindow()->windowFlags() & Qt::WindowStaysOnTopHint), toggles % 2 == 1);
        again->mainWindow()->close();
    }
};

QTEST_MAIN(TestPlacement)
#include "tst_placement.moc"
