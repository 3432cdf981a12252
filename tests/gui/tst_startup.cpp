// SPDX-License-Identifier: GPL-3.0-or-later
// Lists read off the window's thread, through the whole program: a list
// switch after a clear still brings the rows back from the file, and the
// window paints while lists of 100,000 rows are being read.
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Session.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <functional>
#include <memory>

using namespace marvik;
using test::readAll;
using test::writeAll;

namespace {

const QByteArray kConfig = "LatLon:\r\n 51.5\r\n -0.12\r\nSort:\r\n 0 \r\n 0 \r\nStartup:\r\n0\r\nG0XYZ\r\n\r\n\r\n"
                           " 1 \r\n 0 \r\nDX\r\nSkeds\r\nEurope\r\nOld\r\nNew\r\n1\r\nMaps:\r\n 0 \r\nWORLDMAP*3*4\r\n";

/// `count` rows whose calls sort in file order (callsign order is sort
/// mode 0), so a sort never moves them.
QByteArray listOf(const QByteArray &prefix, int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        bytes += prefix + QByteArray::number(100000 + i) + "*Bob**Bob Smith*1 Road*Leeds*England*53.8*-1.55*"
                 + QByteArray::number(20240101000000LL + i) + "*\r\n";
    }
    return bytes;
}

QStringList callsOf(const QByteArray &prefix, int count)
{
    QStringList calls;
    for (int i = 0; i < count; ++i)
        calls << QString::fromLatin1(prefix + QByteArray::number(100000 + i));
    return calls;
}

/// Watches the main window for its first paint and notes, at that moment,
/// whether lists are still being read and what the chooser shows.
class PaintWatch : public QObject
{
public:
    PaintWatch(gui::CompositionRoot &root, std::function<void()> onPaint)
        : m_root(root)
        , m_onPaint(std::move(onPaint))
    {
        root.mainWindow()->installEventFilter(this);
    }

    bool painted = false;
    bool readingAtPaint = false;
    QString chooserAtPaint;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !painted) {
            painted = true;
            readingAtPaint = m_root.lists().isReading();
            chooserAtPaint = m_root.mainWindow()->chooserLine(2);
            m_onPaint();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    gui::CompositionRoot &m_root;
    std::function<void()> m_onPaint;
};

} // namespace

class TestStartUp : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    bool start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        if (!m_root->startUp())
            return false;
        m_root->mainWindow()->show();
        return QTest::qWaitForWindowExposed(m_root->mainWindow());
    }
    QStringList callsigns(int list) const
    {
        // The rows as the list's grid shows them: no waiting for a read.
        const QAbstractItemModel *model = m_root->lists().models()[std::size_t(list - 1)];
        QStringList out;
        for (int r = 0; r < model->rowCount(); ++r)
            out << model->index(r, 0).data().toString();
        return out;
    }
    /// A pick in the list chooser, as the user makes it.
    void choose(int list)
    {
        auto *chooser = test::findPart<QComboBox>(*m_root, QStringLiteral("cboList"));
        chooser->setCurrentIndex(list - 1);
        emit chooser->activated(list - 1);
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        writeAll(file(QStringLiteral("Marvik.cfg")), kConfig);
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
        gui::messages::resetSeam();
    }
    void cleanup()
    {
        m_root.reset();
        m_store.reset();
        m_dir.reset();
        gui::messages::resetSeam();
        QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
    }

    // The current list is read while the window is built, before start-up
    // has read the configuration or taken the data folder: what it read
    // counts only if the file is still the same when start-up asks.
    void aListChangedAfterTheReadAheadIsReadAgain()
    {
        writeAll(file(QStringLiteral("List1.dat")), listOf("G4", 5));
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        QTest::qWait(300); // the read ahead has long finished
        writeAll(file(QStringLiteral("List1.dat")), listOf("DL", 3));
        QVERIFY(m_root->startUp());
        m_root->mainWindow()->show();
        QTRY_COMPARE(callsigns(1), callsOf("DL", 3));
    }

    // Start-up takes the current list over from its read ahead while that
    // read may still be under way: from then on the list counts as being
    // read, or the switch that ends start-up reads it a second time (and a
    // damaged file is copied aside twice).
    void theReadAheadTakenOverIsAReadUnderWay()
    {
        writeAll(file(QStringLiteral("List1.dat")), listOf("G4", 60000) + "G4TORN*Bob*\r\n");
        app::DataFolder data(m_dir->path());
        app::Settings settings;
        settings.currentList = 1;
        lists::ListStore store(data, settings);
        store.readAhead(settings);
        store.loadAtStartUp(1);
        QVERIFY(store.isReading());
        store.finishReading();
        QCOMPARE(store.model(1)->rowCount(), 60001);
        QCOMPARE(QDir(m_dir->path()).entryList({QStringLiteral("List1.dat.damaged-*")}).size(), 1);
    }

    // A damaged list is copied aside when Marvik reads it, but not by a
    // start that finds the data folder taken: that start reads nothing.
    void aDamagedListIsLeftAloneByAStartThatCannotRun()
    {
        writeAll(file(QStringLiteral("List1.dat")), listOf("G4", 3) + "G4TORN*Bob*\r\n");
        QLockFile other(file(QStringLiteral("Marvik.lock")));
        QVERIFY(other.tryLock(0));
        gui::messages::answerNext({});
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        QTest::qWait(300);
        QVERIFY(!m_root->startUp());
        m_root.reset();
        const QStringList damagedCopy{QStringLiteral("List1.dat.damaged-*")};
        QVERIFY(QDir(m_dir->path()).entryList(damagedCopy).isEmpty());

        other.unlock();
        gui::messages::answerNext({});
        QVERIFY(start());
        QTRY_VERIFY(!QDir(m_dir->path()).entryList(damagedCopy).isEmpty());
        QTest::qWait(200); // time for a second copy, were one made
        QCOMPARE(QDir(m_dir->path()).entryList(damagedCopy).size(), 1);
        QTRY_COMPARE(callsigns(1), callsOf("G4", 3) << QStringLiteral("G4TORN"));
    }

    // A clear empties the grid but not the file; the list's next read must
    // not take the file for unchanged since it was read.
    void clearedRowsComeBackFromTheFile_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QList<int>>("switches");
        QTest::addColumn<bool>("saveBetween");
        QTest::newRow("current list, away and back") << 1 << QList<int>{2, 1} << false;
        QTest::newRow("current list, chosen again") << 1 << QList<int>{1} << false;
        QTest::newRow("another list, away and back") << 3 << QList<int>{1, 3} << false;
        QTest::newRow("saved after the clear") << 1 << QList<int>{2, 1} << true;
    }
    void clearedRowsComeBackFromTheFile()
    {
        QFETCH(int, list);
        QFETCH(QList<int>, switches);
        QFETCH(bool, saveBetween);
        writeAll(file(QStringLiteral("List1.dat")), listOf("G4", 5));
        writeAll(file(QStringLiteral("List2.dat")), listOf("DL", 2));
        writeAll(file(QStringLiteral("List3.dat")), listOf("K1", 4));
        const QByteArray prefix = list == 1 ? "G4" : "K1";
        const int rows = list == 1 ? 5 : 4;
        QVERIFY(start());
        if (list != 1)
            choose(list);
        QTRY_COMPARE(callsigns(list), callsOf(prefix, rows));
        const QString path = m_root->session().dataFolder().listFile(list);
        const QByteArray before = readAll(path);

        gui::messages::answerNext({true, {}, 0});
        test::findPart<QAction>(*m_root, QStringLiteral("mnuClear"))->trigger();
        QCOMPARE(gui::messages::takeShown().size(), 1);
        QCOMPARE(callsigns(list), QStringList());
        QCOMPARE(readAll(path), before);

        QStringList expected = callsOf(prefix, rows);
        if (saveBetween) {
            // An edit of the cleared list writes it: the file holds what the
            // list holds from then on.
            lists::CallRecord record;
            record[lists::Column::Callsign] = QStringLiteral("ON4NEW");
            m_root->lists().model(list)->appendRecord(record);
            m_root->lists().changed(list);
            expected = QStringList{QStringLiteral("ON4NEW")};
        }
        for (int to : switches)
            choose(to);
        QTRY_COMPARE(callsigns(list), expected);
        // Nothing still on its way changes that.
        m_root->lists().finishReading();
        QCOMPARE(callsigns(list), expected);
        if (!saveBetween)
            QCOMPARE(readAll(path), before);
    }

    // A list picked while the readers are busy elsewhere, or while its own
    // read is under way, is read then and shown whole; the others arrive too.
    void listChosenWhileTheReadersAreBusy_data()
    {
        QTest::addColumn<int>("list");
        QTest::newRow("still queued") << 5;
        QTest::newRow("being read") << 2;
    }
    void listChosenWhileTheReadersAreBusy()
    {
        QFETCH(int, list);
        constexpr int kBig = 40000;
        const QByteArray prefixes[] = {"G4", "W", "N", "K", "VK"};
        for (int n = 1; n <= 4; ++n)
            writeAll(file(QStringLiteral("List%1.dat").arg(n)), listOf(prefixes[n - 1], kBig));
        writeAll(file(QStringLiteral("List5.dat")), listOf("VK", 3));
        QVERIFY(start());
        choose(list);
        const int rows = list == 5 ? 3 : kBig;
        QTRY_COMPARE_WITH_TIMEOUT(callsigns(list).size(), rows, 60000);
        QCOMPARE(callsigns(list).constFirst(), QString::fromLatin1(prefixes[list - 1]) + u"100000");
        QCOMPARE(m_root->mainWindow()->shownList(), list);
        m_root->lists().finishReading();
        for (int n = 1; n <= 5; ++n)
            QCOMPARE(callsigns(n).size(), n == 5 ? 3 : kBig);
    }

    // The big lists are not the current one: the window must not wait for
    // them, neither for their reading nor for the threads that read them.
    void windowPaintsWhileLargeListsAreRead()
    {
        constexpr int kBig = 100000;
        // Enough rows for the grid's scroll bar, whose paint Qt may spread
        // over its own thread pool.
        writeAll(file(QStringLiteral("List1.dat")), listOf("G4", 60));
        writeAll(file(QStringLiteral("List2.dat")), listOf("W", kBig));
        writeAll(file(QStringLiteral("List3.dat")), listOf("N", kBig));
        // Qt's own pool as on a two-core machine: lists read there would
        // take every thread the paint needs.
        QThreadPool::globalInstance()->setMaxThreadCount(2);

        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        QStringList events;
        QElapsedTimer clock;
        QHash<QString, qint64> at;
        const auto note = [&](const QString &event) {
            events << event;
            at.insert(event, clock.nsecsElapsed());
        };
        PaintWatch watch(*m_root, [&] { note(QStringLiteral("paint")); });
        connect(&m_root->lists(), &lists::ListStore::listRead, this,
                [&](int list) { note(QStringLiteral("list %1").arg(list)); });
        // The program's own moment of its first paint: once it has been drawn.
        connect(m_root->mainWindow(), &gui::MainWindow::firstPaint, this, [&] { note(QStringLiteral("painted")); });
        clock.start();
        QVERIFY(m_root->startUp());
        m_root->mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_root->mainWindow()));
        QTRY_VERIFY_WITH_TIMEOUT(
            events.contains(QStringLiteral("list 2")) && events.contains(QStringLiteral("list 3")), 120000);
        const QString order = events.join(QStringLiteral(", "));

        QVERIFY2(watch.painted && watch.readingAtPaint, qPrintable(order));
        // From the first paint on, the chooser counts the lines of the file.
        QCOMPARE(watch.chooserAtPaint, QStringLiteral(" Skeds  (100000)"));
        const qsizetype painted = events.indexOf(QStringLiteral("painted"));
        QVERIFY2(painted >= 0 && painted < events.indexOf(QStringLiteral("list 2"))
                     && painted < events.indexOf(QStringLiteral("list 3")),
                 qPrintable(order));
        // A paint held up until a read was done ends just before that list
        // arrives; one that was not is over long before.
        const qint64 paintTook = at[QStringLiteral("painted")] - at[QStringLiteral("paint")];
        const qint64 firstBig = std::min(at[QStringLiteral("list 2")], at[QStringLiteral("list 3")]);
        QVERIFY2(paintTook < (firstBig - at[QStringLiteral("paint")]) / 2,
                 qPrintable(QStringLiteral("paint %1 ms, first large list %2 ms after the paint began")
                                .arg(paintTook / 1000000)
                                .arg((firstBig - at[QStringLiteral("paint")]) / 1000000)));

        QVERIFY(!m_root->lists().isReading());
        for (const auto &[list, prefix] : {std::pair{2, "W"}, std::pair{3, "N"}}) {
            const lists::CallListModel *big = m_root->lists().model(list);
            QCOMPARE(big->rowCount(), kBig);
            QCOMPARE(big->field(0, lists::Column::Callsign), QString::fromLatin1(prefix) + u"100000");
            QCOMPARE(big->field(kBig - 1, lists::Column::Callsign),
                     QString::fromLatin1(prefix) + QString::number(100000 + kBig - 1));
        }
        QCOMPARE(m_root->mainWindow()->chooserLine(2), QStringLiteral(" Skeds  (100000)"));
        QCOMPARE(callsigns(1), callsOf("G4", 60));
    }
};

QTEST_MAIN(TestStartUp)
#include "tst_startup.moc"
