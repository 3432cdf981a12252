// SPDX-License-Identifier: GPL-3.0-or-later
// The list menu's log commands through the real main window: importing an
// ADIF log, exporting a list through the export dialog and back, and
// updating a whole list against a local callbook while the window stays in
// use.
#include "support/CallbookServer.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "gui/app/Commands.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/lists/ListGrid.h"
#include "gui/logs/LogTexts.h"
#include "gui/logs/LogsController.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

using namespace marvik;
using Answer = CallbookServer::Answer;
using gui::LogsController;
using test::readAll;
using test::writeAll;

namespace {

const maps::Position kMe{51.5, -0.12};

// DL1ABC is there already, without a position or an address.
const QByteArray kList1 = "DL1ABC*Hansi**Hans Meyer******20240102101500*\r\n"
                          "G4XYZ*Bob*0\xB0*Robert Smith*12 High Street*Leeds*England*53.8*-1.55*20231231220000*x\r\n";

// Header text, names in any case, two contacts of one call, a record
// without a call and one whose call holds a blank.
const QByteArray kLog = "Exported by a logger <ADIF_VER:5>3.1.4 <EOH>\r\n"
                        "<CALL:6>DL1ABC <ADDRESS:10>Hauptstr 1 <GRIDSQUARE:4>JO62 <QSO_DATE:8>20240301 <EOR>\r\n"
                        "<call:4>K1XX <name:8>Jo Smith <qso_date:8>20240302 <time_on:4>1200 <EOR>\r\n"
                        "<CALL:4>K1XX <QTH:6>Boston <QSO_DATE:8>20240101 <EOR>\r\n"
                        "<NAME:3>Bob <EOR>\r\n"
                        "<CALL:7>DL 1ABC <EOR>\r\n";

/// Callook's page for a call, found or not, answered after `delayMs`.
Answer callookPage(const QString &call, bool found, int delayMs = 0)
{
    const QString name = found ? QStringLiteral("callook_found.html") : QStringLiteral("callook_notfound.html");
    Answer a;
    a.delayMs = delayMs;
    a.body = readAll(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + name);
    a.body.replace("ARRL HQ OPERATORS CLUB", QByteArray("OP " + call.toLatin1())).replace("W1AW", call.toLatin1());
    a.body.replace("W9XYZ", call.toLatin1());
    return a;
}

/// Calls `act` on the next modal dialog once it shows.
void whenModal(std::function<void(QWidget *)> act)
{
    auto *timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, act = std::move(act)] {
        if (QWidget *w = QApplication::activeModalWidget()) {
            timer->stop();
            timer->deleteLater();
            act(w);
        }
    });
    timer->start();
}

} // namespace

class TestLogsWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<gui::CompositionRoot> m_root;
    QList<LogsController::FileQuestion> m_asked;
    QString m_answer; ///< what the file dialogs answer

    QString file(const QString &name) const { return m_dir->filePath(name); }
    template<typename T>
    T *child(const QString &name) const { return test::findPart<T>(*m_root, name); }
    QAction *action(const char *name) const { return child<QAction>(QLatin1String(name)); }
    lists::CallListModel *model(int list) const { return m_root->lists().model(list); }
    QStringList rows(int list) const
    {
        QStringList out;
        for (int r = 0; r < model(list)->rowCount(); ++r)
            out << model(list)->record(r).toLine();
        return out;
    }

    bool start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        if (!m_root->startUp())
            return false;
        m_root->lists().finishReading();
        m_root->logs()->setFileChooser([this](const LogsController::FileQuestion &q) {
            m_asked << q;
            return m_answer;
        });
        m_root->mainWindow()->show();
        return QTest::qWaitForWindowExposed(m_root->mainWindow());
    }
    /// Opens the menu a right click on the grid opens (the row menu, or the
    /// empty grid's), then closes it, leaving its captions and rules set.
    QMenu *openMenu(int row = 0)
    {
        gui::ListGrid *g = m_root->mainWindow()->grid(m_root->selection().currentList());
        const bool empty = g->model()->rowCount() == 0;
        const QPoint at = empty ? QPoint(30, 10) : g->visualRect(g->model()->index(row, 0)).center();
        QTest::mouseClick(g->viewport(), Qt::RightButton, {}, at);
        auto *menu = child<QMenu>(empty ? QStringLiteral("mnuPopup2") : QStringLiteral("mnuPopup"));
        menu->hide();
        return menu;
    }
    void switchTo(int list)
    {
        auto *cbo = child<QComboBox>(QStringLiteral("cboList"));
        cbo->setCurrentIndex(list - 1);
        emit cbo->activated(list - 1);
    }

private slots:
    void init()
    {
        gui::messages::resetSeam();
        m_asked.clear();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        QDir(m_dir->path()).mkpath(QStringLiteral("Images/Thumbs"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        app::Settings settings;
        settings.me = kMe;
        settings.ownCallsign = QStringLiteral("K1ABC");
        settings.defaultDatabase = 3; // Callook
        settings.listNames = {QStringLiteral("DX"), QString(), QStringLiteral("Log"), QString(), QString()};
        QVERIFY(app::writeConfig(file(QStringLiteral("Marvik.cfg")), settings));
        writeAll(file(QStringLiteral("List1.dat")), kList1);

        m_server = std::make_unique<CallbookServer>();
        QVERIFY(m_server->isListening());
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        // Callook read from its pages, which the server plays below.
        lookup::SourceSettings sources = m_server->sourceSettings();
        sources.setVia(lookup::Source::Callook, lookup::Via::Page);
        sources.save(*m_store);
        m_store->setValue(QStringLiteral("Refresh/IntervalMs"), 50);
        m_server->answer(QStringLiteral("/"), callookPage(QStringLiteral("K1ABC"), true));
    }

    void cleanup()
    {
        gui::messages::resetSeam();
        m_root.reset();
        m_store.reset();
        m_server.reset();
        m_dir.reset();
    }

    void import_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QByteArray>("content"); // empty: no file at all
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("rowsAfter");

        const int info = int(gui::messages::Shown::Kind::Information);
        const int exclamation = int(gui::messages::Shown::Kind::Exclamation);
        QTest::newRow("into a list with rows")
            << 1 << kLog << info
            << u"Imported log.adi into DX.\n5 contacts with 2 different calls.\n\nAdded: 1\n"
               u"Already in the list: 1 (1 of them gained fields)\nSkipped: 2\n    line 5: no callsign\n"
               u"    line 6: \u201cDL 1ABC\u201d is not a callsign"_qs
            << 3;
        QTest::newRow("empty grid, a log cut short")
            << 3 << QByteArray("<CALL:4>K1XX <NAME:20>Jo") << info
            << u"Imported log.adi into Log.\n1 contacts with 1 different calls.\n\nAdded: 1\n\n"
               u"The file is malformed in 2 places:\n    line 1: the file ends inside the value of NAME\n"
               u"    line 1: the last record has no <EOR>"_qs
            << 1;
        QTest::newRow("no log in the file") << 1 << QByteArray("just some notes\r\n") << exclamation
                                           << u"%1 holds no ADIF log."_qs << 2;
        QTest::newRow("no such file") << 1 << QByteArray() << exclamation << u"%1 could not be read: "_qs << 2;
    }

    void import()
    {
        QFETCH(int, list);
        QFETCH(QByteArray, content);
        QFETCH(int, kind);
        QFETCH(QString, text);
        QFETCH(int, rowsAfter);
        m_answer = file(QStringLiteral("log.adi"));
        if (!content.isEmpty())
            writeAll(m_answer, content);
        QVERIFY(start());
        switchTo(list);
        const QByteArray fileBefore = readAll(m_root->session().dataFolder().listFile(list));

        QMenu *menu = openMenu();
        QVERIFY(menu->actions().contains(action("mnuImportAdif")));
        QVERIFY(action("mnuImportAdif")->isEnabled());
        gui::messages::answerNext({});
        action("mnuImportAdif")->trigger();

        QCOMPARE(m_asked.size(), 1);
        QCOMPARE(m_asked[0].kind, LogsController::FileQuestion::Kind::Open);
        QVERIFY(m_asked[0].filters.contains(u"*.adx"_qs));
        const QList<gui::messages::Shown> shown = gui::messages::takeShown();
        QCOMPARE(shown.size(), 1);
        if (!qEnvironmentVariableIsEmpty("MARVIK_SCREENSHOT_DIR")) {
            // The summary as its box shows it (the test answered the box itself).
            QMessageBox box(QMessageBox::Information, shown[0].title, shown[0].text, QMessageBox::Ok, m_root->mainWindow());
            box.show();
            test::screenshot(&box, QStringLiteral("import-summary-%1").arg(QString::fromUtf8(QTest::currentDataTag())).replace(u' ', u'-'));
        }
        QCOMPARE(int(shown[0].kind), kind);
        if (text.contains(u"%1"))
            text = text.arg(QDir::toNativeSeparators(m_answer));
        QVERIFY2(shown[0].text.startsWith(text), qPrintable(shown[0].text));
        QCOMPARE(model(list)->rowCount(), rowsAfter);
        const QByteArray fileAfter = readAll(m_root->session().dataFolder().listFile(list));
        if (kind == int(gui::messages::Shown::Kind::Exclamation)) {
            QCOMPARE(fileAfter, fileBefore);
            return;
        }
        // Saved once, sorted, and the chooser counts the new rows.
        QCOMPARE(fileAfter.count("\r\n"), rowsAfter);
        QVERIFY(child<QComboBox>(QStringLiteral("cboList"))->itemText(list - 1).endsWith(u"(%1)"_qs.arg(rowsAfter)));
        if (list == 1) {
            QCOMPARE(model(1)->record(1)[lists::Column::Callsign], QStringLiteral("G4XYZ"));
            QCOMPARE(model(1)->record(2)[lists::Column::Callsign], QStringLiteral("K1XX"));
            // The latest contact gives the stamp, each field the latest contact that has it.
            QCOMPARE(model(1)->record(2)[lists::Column::FullName], QStringLiteral("Jo Smith"));
            QCOMPARE(model(1)->record(2)[lists::Column::City], QStringLiteral("Boston"));
            QVERIFY(fileAfter.startsWith("DL1ABC*Hansi*"));
            QVERIFY(fileAfter.contains("*Hans Meyer*Hauptstr 1***52.5*13*20240102101500*"));
        }
    }

    void exportThenImport_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("enterIn");
        QTest::addColumn<QByteArray>("fieldsSeen");

        QTest::newRow("ADI, Enter in the file box") << u"dx.adi"_qs << u"txtFile"_qs << QByteArray("<BAND:3>20m");
        QTest::newRow("ADX, Enter in the mode box") << u"dx.adx"_qs << u"cboMode"_qs << QByteArray("<BAND>20m</BAND>");
    }

    void exportThenImport()
    {
        QFETCH(QString, name);
        QFETCH(QString, enterIn);
        QFETCH(QByteArray, fieldsSeen);
        // A name beyond ASCII and an Extra field that ADIF has no place for.
        writeAll(file(QStringLiteral("List1.dat")),
                 kList1 + "DK1XYZ*Sepp*0\xB0*Jos\xE9 M\xFCller*Gro\xDF\x65 Str. 5*K\xF6ln*Germany*50.94*6.96*20240105093000*met 2023\r\n");
        m_answer = file(name);
        QVERIFY(start());
        openMenu();
        QVERIFY(action("mnuExportAdif")->isEnabled());

        bool sawDialog = false;
        whenModal([&](QWidget *dialog) {
            sawDialog = true;
            QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("cmdBrowse")), Qt::LeftButton);
            // The chosen name picks the form.
            QCOMPARE(dialog->findChild<QRadioButton *>(QStringLiteral("optAdx"))->isChecked(), name.endsWith(u".adx"));
            QCOMPARE(dialog->findChild<QComboBox *>(QStringLiteral("cboMode"))->currentText(), QStringLiteral("SSTV"));
            auto *band = dialog->findChild<QComboBox *>(QStringLiteral("cboBand"));
            band->setCurrentIndex(band->findText(QStringLiteral("20m")));
            QWidget *box = dialog->findChild<QWidget *>(enterIn);
            box->setFocus();
            QTest::keyClick(box, Qt::Key_Return);
        });
        action("mnuExportAdif")->trigger();
        QVERIFY(sawDialog);
        QCOMPARE(m_asked.size(), 1);
        QCOMPARE(m_asked[0].kind, LogsController::FileQuestion::Kind::Save);
        const QByteArray log = readAll(m_answer);
        QVERIFY2(log.contains(fieldsSeen), log.constData());
        QVERIFY(log.contains("SSTV"));
        QCOMPARE(m_root->mainWindow()->statusLine().noteText(), u"3 calls written to %1"_qs.arg(QDir::toNativeSeparators(m_answer)));

        // Back into the empty list 3, through the empty grid's menu.
        switchTo(3);
        openMenu();
        gui::messages::answerNext({});
        action("mnuImportAdif")->trigger();
        QCOMPARE(rows(3), rows(1));
    }

    void escapeLeavesTheExport()
    {
        m_answer = file(QStringLiteral("never.adi"));
        QVERIFY(start());
        openMenu();
        whenModal([](QWidget *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        action("mnuExportAdif")->trigger();
        QVERIFY(!QFile::exists(m_answer));
        QVERIFY(!QDir(m_dir->path()).entryList({u"*.adi"_qs}).size());
    }

    void updateAllThroughTheWindow()
    {
        // Long enough for a Get to go through while the update waits.
        constexpr int kLateMs = 5000;
        writeAll(file(QStringLiteral("List1.dat")), "DD1D*Dan**Dan Old*Old Rd*Oldtown*USA*40*-75*20200101000000*\r\n"
                                                    "CC1C*Cy**Cy Keep*Keep St*Keeptown*USA*41*-74*20200101000000*\r\n"
                                                    "BB1B*Bea********20200101000000*\r\n"
                                                    "AA1A*Al********20200101000000*\r\n");
        writeAll(file(QStringLiteral("List2.dat")), "F5ABC*Jean*********\r\n");
        m_server->answer(u"/AA1A"_qs, callookPage(u"AA1A"_qs, true));
        // The first answer for BB1B comes too late: the update is cancelled while it waits.
        m_server->answer(u"/BB1B"_qs, {callookPage(u"BB1B"_qs, true, kLateMs), callookPage(u"BB1B"_qs, true)});
        m_server->answer(u"/CC1C"_qs, callookPage(u"CC1C"_qs, false));
        m_server->answer(u"/DD1D"_qs, callookPage(u"DD1D"_qs, true));
        m_server->answer(u"/W1AW"_qs, callookPage(u"W1AW"_qs, true));
        Answer jpeg;
        jpeg.body = CallbookServer::picture("jpeg");
        jpeg.contentType = "image/jpeg";
        m_server->answer(u"/pics/a/aa1a/aa1a.jpg"_qs, jpeg);
        m_server->answer(u"/pics/w/w1aw/w1aw.jpg"_qs, jpeg);
        QVERIFY(start());
        auto *progress = child<QWidget>(QStringLiteral("refreshProgress"));
        QVERIFY(!progress->isVisible());

        openMenu();
        QCOMPARE(action("mnuUpdateAll")->text(), QStringLiteral("Update all from CALLOOK.INFO"));
        action("mnuUpdateAll")->trigger();
        QTRY_VERIFY(progress->isVisible());
        QTRY_VERIFY(child<QLabel>(QStringLiteral("lblRefresh"))->text().startsWith(u"call 2 of 4: BB1B, about 0:"));
        test::screenshot(m_root->mainWindow(), QStringLiteral("refresh-under-way"));
        QElapsedTimer askedForBB1B;
        askedForBB1B.start();
        QCOMPARE(model(1)->record(model(1)->findCallsign(u"AA1A"_qs))[lists::Column::FullName], QStringLiteral("OP AA1A"));
        QVERIFY(readAll(file(QStringLiteral("List1.dat"))).contains("*OP AA1A*225 MAIN ST*"));

        // The list under way keeps its rows; another list does not care.
        openMenu();
        QVERIFY(!action("mnu3")->isEnabled());
        QVERIFY(!action("mnuClear")->isEnabled());
        QVERIFY(!action("mnuUpdateAll")->isEnabled());
        switchTo(2);
        openMenu();
        QVERIFY(action("mnu3")->isEnabled());
        QVERIFY(action("mnuClear")->isEnabled());
        switchTo(1);
        // A single lookup goes on beside it, with Get still Get.
        auto *get = child<QPushButton>(QStringLiteral("cmdGet"));
        QCOMPARE(get->text(), QStringLiteral("Get"));
        child<QLineEdit>(QStringLiteral("txtCall"))->setText(u"W1AW"_qs);
        QTest::mouseClick(get, Qt::LeftButton);
        QTRY_VERIFY(model(1)->findCallsign(u"W1AW"_qs) >= 0);

        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdRefreshCancel")), Qt::LeftButton);
        QVERIFY(!progress->isVisible());
        QCOMPARE(m_root->mainWindow()->statusLine().noteText(),
                 QStringLiteral("The update of DX stopped with 3 calls to go; the next update goes on from there."));
        openMenu();
        QVERIFY(action("mnu3")->isEnabled());
        QVERIFY(action("mnuClear")->isEnabled());
        QVERIFY(QFile::exists(file(QStringLiteral("List1.refresh"))));
        // The late answer for BB1B arrives and is ignored.
        QTest::qWait(int(std::max<qint64>(0, kLateMs + 300 - askedForBB1B.elapsed())));
        QCOMPARE(model(1)->record(model(1)->findCallsign(u"BB1B"_qs))[lists::Column::FullName], QString());

        // Again: it goes on after AA1A, and takes in the row added meanwhile.
        gui::messages::answerNext({}); // go on
        gui::messages::answerNext({}); // the summary
        action("mnuUpdateAll")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), 15000);
        const QList<gui::messages::Shown> shown = gui::messages::takeShown();
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown[0].text, QStringLiteral("The last update of all calls in DX stopped after AA1A. Go on from there?\n\n"
                                               "(No starts again with the first call.)"));
        QCOMPARE(shown[1].text, QStringLiteral("The update of DX from CALLOOK.INFO is finished.\n\nUpdated: 4\nNot found: 1"
                                               "\n\nThis update went on from an earlier one; the counts include it."));
        QCOMPARE(m_server->hits(u"/AA1A"_qs), 1);
        QCOMPARE(m_server->hits(u"/BB1B"_qs), 2);
        QVERIFY(!QFile::exists(file(QStringLiteral("List1.refresh"))));

        // Found rows are written, the one not found keeps all it had.
        const QByteArray saved = readAll(file(QStringLiteral("List1.dat")));
        QVERIFY(saved.contains("*Cy Keep*Keep St*Keeptown*USA*41*-74*20200101000000*\r\n"));
        QVERIFY(saved.contains("*OP DD1D*225 MAIN ST*NEWINGTON, CT 06111*"));
        QCOMPARE(model(1)->record(model(1)->findCallsign(u"DD1D"_qs))[lists::Column::FirstName], QStringLiteral("Dan"));
        // Pictures as after a Get; the calls without one raise no alarm.
        const QModelIndex aa = model(1)->index(model(1)->findCallsign(u"AA1A"_qs), lists::Column::FirstName);
        QTRY_VERIFY(!aa.data(lists::CallListModel::ThumbnailRole).value<QImage>().isNull());
        QVERIFY(QFile::exists(file(QStringLiteral("Images/W1AW.jpg"))));
        QVERIFY(!child<QLabel>(QStringLiteral("lblStatus"))->isVisible());
    }

    void durationText_data()
    {
        QTest::addColumn<qint64>("msecs");
        QTest::addColumn<QString>("text");
        QTest::newRow("part of a second counts whole") << qint64(1) << u"0:01"_qs;
        QTest::newRow("just under a minute") << qint64(59001) << u"1:00"_qs;
        QTest::newRow("hours, minutes, seconds") << qint64(3723000) << u"1:02:03"_qs;
    }

    void durationText()
    {
        QFETCH(qint64, msecs);
        QFETCH(QString, text);
        QCOMPARE(gui::durationText(msecs), text);
    }
};

QTEST_MAIN(TestLogsWindow)
#include "tst_logswindow.moc"
