// SPDX-License-Identifier: GPL-3.0-or-later
// Lists whose file was not read whole: on a full disk (no copy of a damaged
// file can be kept) and for a file that cannot be read, the whole program is
// started, the user's choice is given, the program is closed, and the bytes
// on disk are compared. The faults come from the file layer's test seam
// (this executable's environment names "damaged" and "List4.dat").
#include "support/GuiTestUtil.h"

#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "gui/app/StatusLine.h"
#include "gui/lists/ListsController.h"
#include "support/MarvikUnderTest.h"

#include <QDir>
#include <QLabel>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace marvik;
using test::readAll;
using test::writeAll;

namespace {

const QByteArray kConfig = "LatLon:\r\n 51.5\r\n -0.12\r\nSort:\r\n 0 \r\n 0 \r\nStartup:\r\n0\r\nG0XYZ\r\n\r\n\r\n"
                           " 1 \r\n 0 \r\nDX\r\nSkeds\r\nEurope\r\nOld\r\nNew\r\n1\r\nMaps:\r\n 0 \r\nWORLDMAP*3*4\r\n";
const QByteArray kRow = "F5ABC*Jean**Jean Dupont*3 Rue*Paris*France*48.86*2.35*20240112154500*\r\n";

/// A list of many rows with a short line after the first few: the loader
/// keeps only what stands before it.
QByteArray damagedList()
{
    QByteArray bytes;
    for (int i = 0; i < 10; ++i)
        bytes += "G" + QByteArray::number(i) + "AAA*Bob**Bob Smith*1 Road*Leeds*England*53.8*-1.55*20231231220000*\r\n";
    bytes += "BROKEN*line\r\n";
    for (int i = 0; i < 500; ++i)
        bytes += "K" + QByteArray::number(i) + "ZZ*Jim**Jim Taylor*2 Elm*Boston*USA*42.36*-71.06*20240105093000*\r\n";
    return bytes;
}

enum Choice { TryAgain = 0, CopyElsewhere = 1, Leave = 2 };

} // namespace

class TestGuardedLists : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;
    QString m_askedTitle;
    QString m_copyTarget;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    bool start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        m_root->listsController()->setAskPath([this](const QString &title, const QString &) {
            m_askedTitle = title;
            return m_copyTarget;
        });
        if (!m_root->startUp())
            return false;
        m_root->mainWindow()->show();
        if (!QTest::qWaitForWindowExposed(m_root->mainWindow()))
            return false;
        m_root->lists().finishReading();
        return true;
    }
    /// Waits until the boxes about the lists have been shown (they come
    /// once the window has painted and the lists are read).
    QList<gui::messages::Shown> boxes(int atLeast)
    {
        QList<gui::messages::Shown> all;
        for (int waited = 0; waited < 5000 && all.size() < atLeast; waited += 20) {
            QTest::qWait(20);
            all += gui::messages::takeShown();
        }
        QTest::qWait(50);
        all += gui::messages::takeShown();
        return all;
    }
    /// An edit of list n the way the window makes one: a row more, saved.
    void addRowTo(int list)
    {
        auto *model = m_root->lists().model(list);
        lists::CallRecord record;
        record[lists::Column::Callsign] = QStringLiteral("ON4NEW");
        model->appendRecord(record);
        m_root->lists().changed(list);
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        writeAll(file(QStringLiteral("Marvik.cfg")), kConfig);
        writeAll(file(QStringLiteral("List1.dat")), kRow);
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
        m_askedTitle.clear();
        m_copyTarget.clear();
        gui::messages::resetSeam();
    }
    void cleanup()
    {
        m_root.reset();
        m_store.reset();
        m_dir.reset();
        gui::messages::resetSeam();
    }

    // The file seam makes every "…damaged-…" copy fail as on a full disk.
    void damagedListOnAFullDiskIsNeverWrittenOver_data()
    {
        QTest::addColumn<QList<int>>("choices");
        QTest::addColumn<bool>("copyElsewhere");
        QTest::newRow("leave") << QList<int>{Leave} << false;
        QTest::newRow("try again, then leave") << QList<int>{TryAgain, Leave} << false;
        QTest::newRow("cancelled copy, then leave") << QList<int>{CopyElsewhere, Leave} << false;
    }
    void damagedListOnAFullDiskIsNeverWrittenOver()
    {
        QFETCH(QList<int>, choices);
        const QByteArray original = damagedList();
        writeAll(file(QStringLiteral("List2.dat")), original);
        for (int choice : choices)
            gui::messages::answerNext({true, {}, choice});
        QVERIFY(start());
        const auto shown = boxes(int(choices.size()));
        QCOMPARE(shown.size(), choices.size());
        const auto &ask = shown.first();
        QCOMPARE(ask.kind, gui::messages::Shown::Kind::Choice);
        // Which file, why, and what Marvik does.
        QVERIFY2(ask.text.contains(QDir::toNativeSeparators(file(QStringLiteral("List2.dat"))) + QStringLiteral(", line 11")),
                 qPrintable(ask.text));
        QVERIFY2(ask.text.contains(QStringLiteral("No copy of the whole file could be kept: the disk is full")),
                 qPrintable(ask.text));
        QVERIFY(ask.text.contains(QStringLiteral("will not write this list")));
        QCOMPARE(ask.buttons.size(), 3);
        QVERIFY(m_root->lists().isGuarded(2));
        // The rows before the short line, and what the short line gave.
        QCOMPARE(m_root->lists().rowCount(2), 11);

        // An edit of the partial list is not saved, and the foot says so.
        addRowTo(2);
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))), original);
        QVERIFY(m_root->mainWindow()->statusLine().noteText().contains(QStringLiteral("Skeds is not saved")));
        // Nor at exit; the other lists are written as always.
        m_root->mainWindow()->close();
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))), original);
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))).left(5), QByteArray("F5ABC"));
        QVERIFY(QDir(m_dir->path()).entryList({QStringLiteral("List2.dat.damaged-*")}).isEmpty());
    }

    void aCopyKeptElsewhereFreesTheList()
    {
        const QByteArray original = damagedList();
        writeAll(file(QStringLiteral("List2.dat")), original);
        QTemporaryDir elsewhere;
        m_copyTarget = elsewhere.filePath(QStringLiteral("List2-safe.dat"));
        gui::messages::answerNext({true, {}, CopyElsewhere});
        gui::messages::answerNext({true, {}, 0}); // the information box
        QVERIFY(start());
        const auto shown = boxes(2);
        QCOMPARE(m_askedTitle, QStringLiteral("Keep a copy of List2.dat"));
        QCOMPARE(shown.size(), 2);
        QVERIFY2(shown[1].text.contains(QDir::toNativeSeparators(m_copyTarget)), qPrintable(shown[1].text));
        QCOMPARE(readAll(m_copyTarget), original);
        QVERIFY(!m_root->lists().isGuarded(2));
        addRowTo(2);
        // The list is written again: the rows read (the short line among them), and the new one.
        const QByteArray written = readAll(file(QStringLiteral("List2.dat")));
        QCOMPARE(written.count('\n'), 12);
        QVERIFY(written.contains("ON4NEW*"));
    }

    // The file seam makes List4.dat unreadable, as a file without read
    // permission is (which root, running the tests, cannot be refused).
    void unreadableListStaysAsItIs()
    {
        const QByteArray original = QByteArray(kRow).repeated(300);
        writeAll(file(QStringLiteral("List4.dat")), original);
        gui::messages::answerNext({true, {}, 1}); // "Leave the file as it is"
        QVERIFY(start());
        const auto shown = boxes(1);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown[0].buttons.size(), 2);
        QVERIFY2(shown[0].text.contains(QDir::toNativeSeparators(file(QStringLiteral("List4.dat"))) +
                                        QStringLiteral(" could not be read")),
                 qPrintable(shown[0].text));
        QVERIFY(m_root->lists().isGuarded(4));
        QCOMPARE(m_root->lists().rowCount(4), 0);
        addRowTo(4);
        m_root->mainWindow()->close();
        QCOMPARE(readAll(file(QStringLiteral("List4.dat"))), original);
    }
};

QTEST_MAIN(TestGuardedLists)
#include "tst_guardedlists.moc"
