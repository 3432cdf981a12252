// SPDX-License-Identifier: GPL-3.0-or-later
// The add/edit dialog, the setup dialog and the new-version question, driven
// through their own widgets inside the running program, against a local
// server that plays the callbooks and the maker's update page.
#include "support/CallbookServer.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "core/app/Number.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "core/lookup/LookUp.h"
#include "core/maps/Geometry.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/dialogs/AddEditDialog.h"
#include "gui/dialogs/Beep.h"
#include "gui/dialogs/DialogsController.h"
#include "gui/dialogs/NewVersionDialog.h"
#include "gui/dialogs/SetupDialog.h"
#include "gui/lists/ListGrid.h"
#include "gui/lists/ListsController.h"
#include "gui/widgets/ChameleonButton.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <memory>

using namespace marvik;
using Answer = CallbookServer::Answer;
using lists::Column;
using test::readAll;
using test::writeAll;

namespace {

const maps::Position kMe{51.5, -0.12};
const QColor kFace(170, 197, 255);
const QColor kHovered(150, 190, 255);

const QByteArray kList1 = "K1ABC*Jim**James Taylor*45 Elm Rd*Boston, MA*USA*42.36*-71.06*20240105093000*x\r\n";
const QByteArray kList2 = "DL1ABC*Hansi*1\xB0*Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*\r\n";
const QByteArray kList5 = "DL1ABC*Hans*2\xB0*Hans Meyer*Ring 2*Potsdam*Germany*52.4*13.06*20240301080000*e\r\n"
                          "F5ABC*Jean**Jean Dupont*3 Rue*Paris*France*48.86*2.35*20240112154500*\r\n";

QByteArray fixture(const QString &name)
{
    return readAll(QStringLiteral(MARVIK_TEST_DATA "/") + name);
}

QByteArray az(double lat, double lon)
{
    return QByteArray::number(maps::bearingFrom(kMe, lat, lon).degrees) + "\xB0";
}

/// Receives the address a dialog opens instead of a desktop browser.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void open(const QUrl &url) { opened.append(url); }
    QList<QUrl> opened;
};

} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<gui::CompositionRoot> m_root;
    gui::MainWindow *m_window = nullptr;
    UrlCatcher m_urls;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    template<typename T>
    T *child(QWidget *in, const char *name) const { return in->findChild<T *>(QLatin1String(name)); }
    QLineEdit *box(QWidget *in, const char *name) const { return child<QLineEdit>(in, name); }
    gui::ChameleonButton *button(QWidget *in, const char *name) const { return child<gui::ChameleonButton>(in, name); }
    QAction *action(const char *name) const { return m_root->mainWindow()->findChild<QAction *>(QLatin1String(name)); }
    QString cell(int list, int row, Column column) const
    {
        return m_root->lists().model(list)->index(row, int(column)).data().toString();
    }

    bool start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        m_window = m_root->mainWindow();
        if (!m_root->startUp())
            return false;
        m_root->lists().finishReading();
        m_window->show();
        return QTest::qWaitForWindowExposed(m_window);
    }
    /// Opens a dialog by its menu item.
    gui::AddEditDialog *openAddEdit(const char *item = "mnuAdd")
    {
        action(item)->trigger();
        gui::AddEditDialog *d = m_root->dialogs()->addEditDialog();
        return d && QTest::qWaitForWindowExposed(d) ? d : nullptr;
    }
    gui::SetupDialog *openSetup()
    {
        action("mnuLatLon")->trigger();
        gui::SetupDialog *d = m_root->dialogs()->setupDialog();
        return d && QTest::qWaitForWindowExposed(d) ? d : nullptr;
    }
    /// Replaces a box's text by typing.
    static void retype(QLineEdit *edit, const QString &text)
    {
        edit->setFocus();
        QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void setUpdatePage(const QString &updates, const QString &download)
    {
        lookup::SourceSettings s = lookup::SourceSettings::load(*m_store);
        s.setUpdatesUrl(updates);
        s.setDownloadUrl(download);
        s.save(*m_store);
    }
    /// Starts Marvik with an update page and waits until its answer is in.
    bool startWithUpdatePage(const Answer &page)
    {
        m_server->answer(QStringLiteral("/marvik/version.txt"), page);
        setUpdatePage(m_server->base() + QStringLiteral("/marvik/version.txt"),
                      m_server->base() + QStringLiteral("/download"));
        if (!start())
            return false;
        return QTest::qWaitFor([this] {
            const lookup::LookUp *check = m_root->dialogs()->updateLookUp();
            // A dropped connection is tried once more by the network.
            return check && m_server->hits(QStringLiteral("/marvik/version.txt")) >= 1
                   && check->pendingRequests().isEmpty();
        });
    }
    /// What was asked of the server, the main window's log-in check of
    /// its site ("/") left out.
    QStringList lookups() const
    {
        QStringList out = m_server->requests();
        out.removeAll(QStringLiteral("/"));
        return out;
    }
    QStringList settingsStore() const
    {
        QStringList out;
        for (const QString &key : m_store->allKeys())
            out << key + u'=' + m_store->value(key).toString();
        return out;
    }

private slots:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("http"), &m_urls, "open");
    }
    void cleanupTestCase()
    {
        QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
    }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        app::Settings settings;
        settings.me = kMe;
        settings.ownCallsign = QStringLiteral("G0XYZ");
        settings.defaultDatabase = 1; // QRZ
        QVERIFY(app::writeConfig(file(QStringLiteral("Marvik.cfg")), settings));
        writeAll(file(QStringLiteral("List1.dat")), kList1);
        writeAll(file(QStringLiteral("List2.dat")), kList2);
        writeAll(file(QStringLiteral("List5.dat")), kList5);

        m_server = std::make_unique<CallbookServer>();
        QVERIFY(m_server->isListening());
        lookup::SourceSettings sources = m_server->sourceSettings();
        // The data services too: Callook is asked through its service.
        for (const lookup::SourceInfo &info : lookup::sourceTable()) {
            if (lookup::hasDataService(info.source))
                sources.setServiceHost(info.source, m_server->base());
        }
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        sources.save(*m_store);
        m_urls.opened.clear();
        gui::messages::resetSeam();
    }

    void cleanup()
    {
        m_root.reset();
        m_window = nullptr;
        m_store.reset();
        m_server.reset();
        m_dir.reset();
    }

    // ---- the add/edit dialog

    void typingTheCallsign_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("caretFromEnd"); // Left presses before the last part is typed
        QTest::addColumn<QString>("more");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("caret");
        QTest::addColumn<QString>("label1");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("city");

        QTest::newRow("zero becomes the slashed zero") << "dl0abc" << 0 << "" << "DL\u00D8ABC" << 6 << ""
                                                       << "Add call to list" << "";
        QTest::newRow("typed into the middle") << "dlabc" << 3 << "0" << "DL\u00D8ABC" << 3 << ""
                                               << "Add call to list" << "";
        QTest::newRow("a call in lists 2 and 5") << "dl1abc" << 0 << "" << "DL1ABC" << 6
                                                 << "DL1ABC is in list 2,5" << "Save changes" << "Potsdam";
        QTest::newRow("the last key makes it a known call") << "k1ab" << 0 << "c" << "K1ABC" << 5
                                                           << "K1ABC is in list 1" << "Save changes" << "Boston, MA";
    }
    void typingTheCallsign()
    {
        QFETCH(QString, typed);
        QFETCH(int, caretFromEnd);
        QFETCH(QString, more);
        QFETCH(QString, text);
        QFETCH(int, caret);
        QFETCH(QString, label1);
        QFETCH(QString, caption);
        QFETCH(QString, city);
        QVERIFY(start());
        gui::AddEditDialog *d = openAddEdit();
        QVERIFY(d);
        QCOMPARE(d->windowTitle(), QStringLiteral("Enter callsign to add or edit"));
        QLineEdit *call = box(d, "txtCall");
        QVERIFY(call->hasFocus());
        QVERIFY(!button(d, "cmdAdd")->isEnabled());

        QTest::keyClicks(call, typed);
        for (int i = 0; i < caretFromEnd; ++i)
            QTest::keyClick(call, Qt::Key_Left);
        QTest::keyClicks(call, more);
        QCOMPARE(call->text(), text);
        QCOMPARE(call->cursorPosition(), caret);
        QCOMPARE(child<QLabel>(d, "Label1")->text(), label1);
        QCOMPARE(button(d, "cmdAdd")->caption(), caption);
        QVERIFY(button(d, "cmdAdd")->isEnabled());
        QCOMPARE(box(d, "txtAdd2")->text(), city);

        // Back to a call no list holds: the boxes empty, the caption goes back.
        QTest::keyClick(call, Qt::Key_End);
        QTest::keyClicks(call, QStringLiteral("x"));
        QCOMPARE(child<QLabel>(d, "Label1")->text(), QString());
        QCOMPARE(button(d, "cmdAdd")->caption(), QStringLiteral("Add call to list"));
        for (const char *name : {"txtNickname", "txtName", "txtAdd1", "txtAdd2", "txtCtry", "txtLat", "txtLon", "txtAz"})
            QVERIFY2(box(d, name)->text().isEmpty(), name);
        // Emptied: nothing to add.
        retype(call, QString());
        QVERIFY(!button(d, "cmdAdd")->isEnabled());
    }

    void saveChangesInEveryListThatHoldsTheCall()
    {
        QVERIFY(start());
        gui::AddEditDialog *d = openAddEdit();
        QVERIFY(d);
        QTest::keyClicks(box(d, "txtCall"), QStringLiteral("dl1abc"));
        // List 5's entry shows, and its azimuth is worked out from its position.
        QCOMPARE(box(d, "txtNickname")->text(), QStringLiteral("Hans"));
        QCOMPARE(box(d, "txtLat")->text(), QStringLiteral("52.4"));
        QCOMPARE(box(d, "txtAz")->text() + QChar(0xB0), QString::fromLatin1(az(52.4, 13.06)));
        // An empty nickname leaves each list's first name as it is.
        retype(box(d, "txtNickname"), QString());
        retype(box(d, "txtAdd1"), QStringLiteral("Neue Str. 5"));
        const int beeps = gui::sound::beepCount();
        QTest::mouseClick(button(d, "cmdAdd"), Qt::LeftButton);

        const QByteArray tail = "*Hans Meyer*Neue Str. 5*Potsdam*Germany*52.4*13.06*";
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))),
                 "DL1ABC*Hansi*" + az(52.4, 13.06) + tail + "20240102101500*\r\n");
        QCOMPARE(readAll(file(QStringLiteral("List5.dat"))),
                 "DL1ABC*Hans*" + az(52.4, 13.06) + tail + "20240301080000*e\r\n"
                     "F5ABC*Jean*" + az(48.86, 2.35) + "*Jean Dupont*3 Rue*Paris*France*48.86*2.35*20240112154500*\r\n");
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))), kList1);
        // "Hansi" is not the first word of "Hans Meyer": marked.
        QCOMPARE(m_root->lists().model(2)->index(0, int(Column::FirstName)).data(Qt::BackgroundRole).value<QColor>(),
                 lists::kNicknameColour);
        QVERIFY(!m_root->lists().model(5)->index(0, int(Column::FirstName)).data(Qt::BackgroundRole).isValid());
        QCOMPARE(gui::sound::beepCount(), beeps + 1);
        auto *status = m_window->findChild<QLabel *>(QStringLiteral("lblStatus"));
        QVERIFY(status->isVisible());
        QCOMPARE(status->text(), QStringLiteral("DL1ABC updated"));
        QCOMPARE(status->palette().color(QPalette::Window), QColor(Qt::red));
        // The dialog stays for more changes.
        QVERIFY(d->isVisible());
        QCOMPARE(box(d, "txtNickname")->text(), QStringLiteral("Hans"));
    }

    void addToTheListShownAtTheClick()
    {
        QVERIFY(start());
        gui::AddEditDialog *d = openAddEdit("mnuAddNew2");
        QVERIFY(d);
        QTest::keyClicks(box(d, "txtCall"), QStringLiteral("dl0xyz"));
        QTest::keyClick(box(d, "txtCall"), Qt::Key_Tab);
        QVERIFY(box(d, "txtNickname")->hasFocus());
        QTest::keyClicks(box(d, "txtNickname"), QStringLiteral("Otto"));
        retype(box(d, "txtName"), QStringLiteral("Otto Normal"));
        retype(box(d, "txtCtry"), QStringLiteral("Germany"));
        retype(box(d, "txtLat"), QStringLiteral("48.1"));
        retype(box(d, "txtLon"), QStringLiteral("11.6"));
        QCOMPARE(box(d, "txtAz")->text() + QChar(0xB0), QString::fromLatin1(az(48.1, 11.6)));
        // The list changes while the dialog is open: the new entry goes into
        // the list shown when the button is pressed.
        m_root->listsController()->switchTo(3);
        const QString before = lists::timeStamp(QDateTime::currentDateTime());
        QTest::keyClick(box(d, "txtLon"), Qt::Key_Return);

        QCOMPARE(m_root->lists().model(3)->rowCount(), 1);
        const QString stamp = cell(3, 0, Column::TimeStamp);
        QVERIFY(stamp >= before && stamp.size() == 14);
        QCOMPARE(readAll(file(QStringLiteral("List3.dat"))),
                 "DL\xD8XYZ*Otto*" + az(48.1, 11.6) + "*Otto Normal***Germany*48.1*11.6*" + stamp.toLatin1() + "*\r\n");
        QCOMPARE(m_root->lists().model(1)->rowCount(), 1);
        QCOMPARE(m_root->selection().currentList(), 3);
        QCOMPARE(m_root->selection().currentRow(), 0);
        // Now it stands in a list: a second Enter saves, it does not add again.
        QCOMPARE(child<QLabel>(d, "Label1")->text(), QStringLiteral("DL\u00D8XYZ is in list 3"));
        QCOMPARE(button(d, "cmdAdd")->caption(), QStringLiteral("Save changes"));
        retype(box(d, "txtAz"), QStringLiteral("77"));
        QTest::keyClick(box(d, "txtAz"), Qt::Key_Enter);
        QCOMPARE(m_root->lists().model(3)->rowCount(), 1);
        QCOMPARE(cell(3, 0, Column::Azimuth), QStringLiteral("77\u00B0"));
    }

    void keysAndTabOrder()
    {
        QVERIFY(start());
        gui::AddEditDialog *d = openAddEdit();
        QVERIFY(d);
        // Enter with no call adds nothing and keeps the dialog.
        QTest::keyClick(box(d, "txtCall"), Qt::Key_Return);
        QVERIFY(d->isVisible());
        QTest::keyClicks(box(d, "txtCall"), QStringLiteral("k1abc"));
        QStringList order{QApplication::focusWidget()->objectName()};
        for (int i = 0; i < 10; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order << QApplication::focusWidget()->objectName();
        }
        QCOMPARE(order, (QStringList{u"txtCall"_qs, u"txtNickname"_qs, u"txtName"_qs, u"txtAdd1"_qs, u"txtAdd2"_qs,
                                     u"txtCtry"_qs, u"txtLat"_qs, u"txtLon"_qs, u"txtAz"_qs, u"cmdAdd"_qs,
                                     u"cmdCancel"_qs}));
        // Escape leaves the lists as they were.
        retype(box(d, "txtName"), QStringLiteral("Somebody Else"));
        QTest::keyClick(box(d, "txtName"), Qt::Key_Escape);
        QTRY_VERIFY(!m_root->dialogs()->addEditDialog());
        QCOMPARE(cell(1, 0, Column::FullName), QStringLiteral("James Taylor"));
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))), kList1);
    }

    void rowMenuOpensTheRowsCall()
    {
        QVERIFY(start());
        QVERIFY(!action("mnuManUpdate")->isEnabled());
        gui::ListGrid *grid = m_window->grid(1);
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualRect(grid->model()->index(0, 0)).center());
        QVERIFY(action("mnuManUpdate")->isEnabled());
        gui::AddEditDialog *d = openAddEdit("mnuManUpdate");
        QVERIFY(d);
        QCOMPARE(box(d, "txtCall")->text(), QStringLiteral("K1ABC"));
        QCOMPARE(child<QLabel>(d, "Label1")->text(), QStringLiteral("K1ABC is in list 1"));
        QCOMPARE(box(d, "txtName")->text(), QStringLiteral("James Taylor"));
        QCOMPARE(button(d, "cmdAdd")->caption(), QStringLiteral("Save changes"));
        QCOMPARE(button(d, "cmdAdd")->backColor(), kFace);
    }

    // ---- the setup dialog

    void typedPosition_data()
    {
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        QTest::addColumn<double>("meLat");
        QTest::addColumn<double>("meLon");
        QTest::addColumn<QString>("grid");
        QTest::newRow("decimal commas") << "52,5" << "13,4" << 52.5 << 13.4 << "Grid locator:   JO62qm";
        // Typed key by key: the line stays at latitude 9, on the way to 91.
        QTest::newRow("latitude 91") << "91" << "13,4" << 91.0 << 13.4 << "Grid locator:   IJ99wa";
        QTest::newRow("not a number") << "north" << "-1.5" << 0.0 << -1.5 << "Grid locator:   IJ90ga";
    }
    void typedPosition()
    {
        QFETCH(QString, latitude);
        QFETCH(QString, longitude);
        QFETCH(double, meLat);
        QFETCH(double, meLon);
        QFETCH(QString, grid);
        QVERIFY(start());
        gui::SetupDialog *d = openSetup();
        QVERIFY(d);
        QCOMPARE(box(d, "txtCall")->text(), QStringLiteral("G0XYZ"));
        QCOMPARE(box(d, "txtLat")->text(), QStringLiteral("51.5"));
        QCOMPARE(box(d, "txtLon")->text(), QStringLiteral("-0.12"));
        QCOMPARE(child<QLabel>(d, "lblGrid")->text(), QStringLiteral("Grid locator:   IO91wm"));

        retype(box(d, "txtCall"), QStringLiteral("DL1XYZ"));
        retype(box(d, "txtLat"), latitude);
        retype(box(d, "txtLon"), longitude);
        QCOMPARE(m_root->session().me().latitude, meLat);
        QCOMPARE(m_root->session().me().longitude, meLon);
        QCOMPARE(child<QLabel>(d, "lblGrid")->text(), grid);
        // Every list's bearings follow the own station at once.
        QCOMPARE(cell(2, 0, Column::Azimuth),
                 lists::azimuthOf(maps::DistanceFromMe({meLat, meLon}), m_root->lists().model(2)->record(0)));
        QCOMPARE(cell(1, 0, Column::Azimuth),
                 lists::azimuthOf(maps::DistanceFromMe({meLat, meLon}), m_root->lists().model(1)->record(0)));

        // Done with Enter; kept in Marvik.cfg when Marvik closes.
        QTest::keyClick(box(d, "txtLon"), Qt::Key_Return);
        QTRY_VERIFY(!m_root->dialogs()->setupDialog());
        m_window->close();
        app::Settings saved;
        QCOMPARE(app::readConfig(file(QStringLiteral("Marvik.cfg")), saved), app::ConfigReadStatus::Read);
        QCOMPARE(saved.ownCallsign, QStringLiteral("DL1XYZ"));
        QCOMPARE(saved.me.latitude, meLat);
        QCOMPARE(saved.me.longitude, meLon);
    }

    void positionFromALocator()
    {
        QVERIFY(start());
        gui::SetupDialog *d = openSetup();
        QVERIFY(d);
        QLineEdit *locator = box(d, "txtLocator");
        QTest::keyClicks(locator, QStringLiteral("jo62q"));
        // Five characters make no locator yet.
        QCOMPARE(m_root->session().me().latitude, kMe.latitude);
        QTest::keyClicks(locator, QStringLiteral("m"));
        maps::Position centre;
        QVERIFY(maps::fromLocator(QStringLiteral("JO62QM"), centre));
        QCOMPARE(m_root->session().me().latitude, centre.latitude);
        QCOMPARE(m_root->session().me().longitude, centre.longitude);
        QCOMPARE(app::valCoordinate(box(d, "txtLat")->text()), centre.latitude);
        QCOMPARE(app::valCoordinate(box(d, "txtLon")->text()), centre.longitude);
        QCOMPARE(child<QLabel>(d, "lblGrid")->text(), QStringLiteral("Grid locator:   JO62qm"));
        // A position typed by hand is no longer the locator's.
        QTest::keyClicks(box(d, "txtLat"), QStringLiteral("1"));
        QCOMPARE(locator->text(), QString());
    }

    void fetchPosition_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("status");
        QTest::addColumn<double>("latitude"); // 0: no position
        const auto qrz = int(lookup::Source::Qrz);
        QTest::newRow("QRZ page showing the own call") << qrz << "W1AW" << "/db/W1AW" << "lookup/qrz_found.html"
                                                       << "QRZ  (Logged in)" << 41.714775;
        QTest::newRow("suffix left out") << qrz << "w1aw-1" << "/db/W1AW" << "lookup/qrz_found.html"
                                         << "QRZ  (Login required)" << 41.714775;
        QTest::newRow("remark after a blank") << int(lookup::Source::EHam) << "W1AW portable" << "/callbook/W1AW"
                                              << "lookup/eham_found.html" << "eHam  (Logged in)" << 41.714775;
        QTest::newRow("Callook's data service") << int(lookup::Source::Callook) << "W1AW" << "/W1AW/json"
                                                << "services/callook_w1aw.json" << "Callook  (Login not required)"
                                                << 41.714775;
        QTest::newRow("no such call") << qrz << "W9XYZ" << "/db/W9XYZ" << "lookup/qrz_notfound.html" << "Not found"
                                      << 0.0;
        QTest::newRow("details need a log-in") << qrz << "W1AW" << "/db/W1AW" << "lookup/qrz_login.html"
                                               << "Login required" << 0.0;
    }
    void fetchPosition()
    {
        QFETCH(int, source);
        QFETCH(QString, typed);
        QFETCH(QString, path);
        QFETCH(QString, answer);
        QFETCH(QString, status);
        QFETCH(double, latitude);
        Answer a;
        a.body = fixture(answer);
        a.contentType = answer.endsWith(u".json") ? "application/json" : "text/html";
        a.delayMs = 100;
        m_server->answer(path, a);
        QVERIFY(start());
        m_root->session().setCurrentSource(lookup::Source(source));
        gui::SetupDialog *d = openSetup();
        QVERIFY(d);
        retype(box(d, "txtCall"), typed);
        const int beeps = gui::sound::beepCount();
        QTest::mouseClick(button(d, "cmdGetLatLon"), Qt::LeftButton);
        // Emptied while the answer is awaited.
        QCOMPARE(box(d, "txtLat")->text(), QString());
        QCOMPARE(child<QLabel>(d, "lblGrid")->text(), QString());
        QVERIFY(child<QTimer>(d, "Timer1")->isActive());

        QTRY_COMPARE(child<QLabel>(d, "Label4")->text(), status);
        QCOMPARE(lookups(), QStringList{path});
        QVERIFY(!child<QTimer>(d, "Timer1")->isActive());
        if (latitude != 0) {
            QCOMPARE(m_root->session().me().latitude, latitude);
            QCOMPARE(app::val(box(d, "txtLat")->text()), latitude);
            QCOMPARE(child<QLabel>(d, "lblGrid")->text(), QStringLiteral("Grid locator:   FN31pr"));
            QCOMPARE(gui::sound::beepCount(), beeps);
        } else {
            QCOMPARE(box(d, "txtLat")->text(), QString());
            QVERIFY(box(d, "txtCall")->hasFocus());
            QCOMPARE(gui::sound::beepCount(), beeps + 1);
        }
    }

    void noAnswerInTime()
    {
        Answer late;
        late.body = fixture(QStringLiteral("lookup/qrz_found.html"));
        late.delayMs = 1500;
        m_server->answer(QStringLiteral("/db/W1AW"), late);
        QVERIFY(start());
        gui::SetupDialog *d = openSetup();
        QVERIFY(d);
        retype(box(d, "txtCall"), QStringLiteral("W1AW"));
        child<QTimer>(d, "Timer1")->setInterval(200);
        const int beeps = gui::sound::beepCount();
        QTest::keyClick(box(d, "txtCall"), Qt::Key_Return);
        QTRY_COMPARE(child<QLabel>(d, "Label4")->text(), QStringLiteral("Not found"));
        QCOMPARE(gui::sound::beepCount(), beeps + 1);
        QVERIFY(box(d, "txtCall")->hasFocus());
        // The page that comes after all is not taken.
        QTest::qWait(1600);
        QCOMPARE(box(d, "txtLat")->text(), QString());
        QCOMPARE(child<QLabel>(d, "Label4")->text(), QStringLiteral("Not found"));
    }

    void cdSourceDoesNothing()
    {
        QVERIFY(start());
        m_root->session().setCurrentSource(lookup::Source::QrzCd);
        gui::SetupDialog *d = openSetup();
        QVERIFY(d);
        QTest::mouseClick(button(d, "cmdGetLatLon"), Qt::LeftButton);
        QCOMPARE(box(d, "txtLat")->text(), QStringLiteral("51.5"));
        QCOMPARE(child<QLabel>(d, "Label4")->text(), QString());
        QVERIFY(!child<QTimer>(d, "Timer1")->isActive());
        QTest::qWait(100);
        QVERIFY(lookups().isEmpty());
        // No call, no button.
        retype(box(d, "txtCall"), QString());
        QVERIFY(!button(d, "cmdGetLatLon")->isEnabled());
        QCOMPARE(m_root->session().settings().ownCallsign, QString());
    }

    // ---- every dialog

    void relabelsWithNewTexts()
    {
        QVERIFY(start());
        i18n::Texts german = i18n::Texts::english();
        german[i18n::TextId::GridLocator] = QStringLiteral("QTH-Locator");
        german[i18n::TextId::SaveChanges] = QStringLiteral("Speichern");
        german[i18n::TextId::InLists] = QStringLiteral("xxx steht in Liste ???");
        german[i18n::TextId::GetLatLon] = QStringLiteral("Position von QRZ holen");

        gui::AddEditDialog *edit = openAddEdit();
        QVERIFY(edit);
        QTest::keyClicks(box(edit, "txtCall"), QStringLiteral("dl1abc"));
        m_root->texts().setTexts(german);
        QCOMPARE(button(edit, "cmdAdd")->caption(), QStringLiteral("Speichern"));
        QCOMPARE(child<QLabel>(edit, "Label1")->text(), QStringLiteral("DL1ABC steht in Liste 2,5"));
        edit->close();
        QTRY_VERIFY(!m_root->dialogs()->addEditDialog());

        gui::SetupDialog *setup = openSetup();
        QVERIFY(setup);
        QCOMPARE(child<QLabel>(setup, "lblGrid")->text(), QStringLiteral("QTH-Locator:   IO91wm"));
        QCOMPARE(button(setup, "cmdGetLatLon")->caption(), QStringLiteral("Position von QRZ holen"));
        m_root->texts().setTexts(i18n::Texts::english());
        QCOMPARE(child<QLabel>(setup, "lblGrid")->text(), QStringLiteral("Grid locator:   IO91wm"));
    }

    // ---- the new-version question

    void updateCheck_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("drop");
        QTest::addColumn<QString>("asked"); // the version in the question; empty: no question
        QTest::newRow("newer, plain text") << QByteArray("Marvik  3.13\r\nWhat is new: ...\r\n") << 200 << false
                                           << "3.13";
        QTest::newRow("newer, on a web page") << QByteArray("<html><body><h1>Marvik 4.0</h1></body></html>") << 200
                                              << false << "4.0";
        QTest::newRow("the same version") << QByteArray("Marvik  3.12") << 200 << false << "";
        QTest::newRow("page missing") << QByteArray("Marvik 3.13") << 404 << false << "";
        QTest::newRow("connection dropped") << QByteArray() << 200 << true << "";
    }
    void updateCheck()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(bool, drop);
        QFETCH(QString, asked);
        Answer page;
        page.body = body;
        page.contentType = body.startsWith('<') ? "text/html" : "text/plain";
        page.status = status;
        page.drop = drop;
        QVERIFY(startWithUpdatePage(page));
        if (asked.isEmpty()) {
            QTest::qWait(50);
            QVERIFY(!m_root->dialogs()->newVersionDialog());
        } else {
            QTRY_VERIFY(m_root->dialogs()->newVersionDialog());
            QVERIFY(child<QLabel>(m_root->dialogs()->newVersionDialog(), "Label1")->text().contains(asked + u'.'));
        }
        // Nothing is ever said about a failed check.
        QVERIFY(gui::messages::takeShown().isEmpty());
        QCOMPARE(QApplication::activeModalWidget() != nullptr, !asked.isEmpty());
    }

    void updateCheckWaitsForNothing()
    {
        Answer slow;
        slow.body = "Marvik 3.13";
        slow.delayMs = 1500;
        m_server->answer(QStringLiteral("/marvik/version.txt"), slow);
        setUpdatePage(m_server->base() + QStringLiteral("/marvik/version.txt"), QString());
        QVERIFY(start());
        // The window is up while the page is still on its way.
        QTRY_VERIFY(m_root->dialogs()->updateLookUp());
        QCOMPARE(m_root->dialogs()->updateLookUp()->pendingRequests(), QStringList{u"Updates3"_qs});
        QVERIFY(!m_root->dialogs()->newVersionDialog());
        QTRY_VERIFY_WITH_TIMEOUT(m_root->dialogs()->newVersionDialog(), 5000);
    }

    void noUpdatePageNoCheck()
    {
        QVERIFY(start());
        QTest::qWait(100);
        QVERIFY(!m_root->dialogs()->updateLookUp());
        QVERIFY(lookups().isEmpty());
    }

    void yesOpensTheDownloadPage()
    {
        const int beeps = gui::sound::beepCount();
        Answer page;
        page.body = "Marvik  3.13";
        QVERIFY(startWithUpdatePage(page));
        QTRY_VERIFY(m_root->dialogs()->newVersionDialog());
        gui::NewVersionDialog *d = m_root->dialogs()->newVersionDialog();
        QVERIFY(QTest::qWaitForWindowExposed(d));
        QCOMPARE(d->objectName(), QStringLiteral("Form5"));
        QCOMPARE(d->windowTitle(), QStringLiteral("Marvik"));
        QVERIFY(!child<QLabel>(d, "Image1")->pixmap().isNull());
        QCOMPARE(gui::sound::beepCount(), beeps + 1);
        gui::ChameleonButton *yes = button(d, "cmdYes");
        gui::ChameleonButton *no = button(d, "cmdNo");
        QCOMPARE(yes->caption(), QStringLiteral("&Yes"));
        QCOMPARE(no->caption(), QStringLiteral("&No"));

        // The offscreen pointer goes to the first window under it: the
        // question moves off the main window so its moves reach it.
        d->move(m_window->geometry().topRight() + QPoint(40, 0));
        QTest::mouseMove(yes, yes->rect().center());
        QTRY_COMPARE(yes->backColor(), kHovered);
        QCOMPARE(no->backColor(), kFace);
        // Over the question's text: both back to normal.
        QLabel *label = child<QLabel>(d, "Label1");
        QTest::mouseMove(label, label->rect().center());
        QTRY_COMPARE(yes->backColor(), kFace);
        QTest::mouseMove(yes, yes->rect().center());
        QTRY_COMPARE(yes->backColor(), kHovered);
        // Over the dialog's own background.
        QTest::mouseMove(d, QPoint(2, d->height() - 2));
        QTRY_COMPARE(yes->backColor(), kFace);
        QCOMPARE(no->backColor(), kFace);

        QTest::mouseClick(yes, Qt::LeftButton);
        QTRY_VERIFY(!m_root->dialogs()->newVersionDialog());
        QCOMPARE(m_urls.opened, QList<QUrl>{QUrl(m_server->base() + QStringLiteral("/download"))});
    }

    void noLeavesNoTrace_data()
    {
        QTest::addColumn<int>("how");
        QTest::newRow("No") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("Enter, No having the focus") << 2;
    }
    void noLeavesNoTrace()
    {
        QFETCH(int, how);
        Answer page;
        page.body = "Marvik  3.13";
        QVERIFY(startWithUpdatePage(page));
        QTRY_VERIFY(m_root->dialogs()->newVersionDialog());
        gui::NewVersionDialog *d = m_root->dialogs()->newVersionDialog();
        QVERIFY(QTest::qWaitForWindowExposed(d));
        const QStringList store = settingsStore();
        const QStringList config = app::configLines(m_root->session().settings());
        switch (how) {
        case 0: QTest::mouseClick(button(d, "cmdNo"), Qt::LeftButton); break;
        case 1: QTest::keyClick(d, Qt::Key_Escape); break;
        case 2:
            QVERIFY(button(d, "cmdNo")->hasFocus());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
            break;
        }
        QTRY_VERIFY(!m_root->dialogs()->newVersionDialog());
        QVERIFY(m_urls.opened.isEmpty());
        QCOMPARE(settingsStore(), store);
        QCOMPARE(app::configLines(m_root->session().settings()), config);
    }

    void nothingClipped()
    {
        // Run at 100 % and again by CTest with QT_SCALE_FACTOR=2.
        Answer page;
        page.body = "Marvik  3.13";
        const auto check = [](QWidget *d) {
            for (QLabel *label : d->findChildren<QLabel *>()) {
                if (label->text().isEmpty())
                    continue;
                QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
                QVERIFY2(label->height() >= label->sizeHint().height(), qPrintable(label->text()));
            }
            for (gui::ChameleonButton *b : d->findChildren<gui::ChameleonButton *>()) {
                QVERIFY2(b->width() >= b->sizeHint().width(), qPrintable(b->caption()));
                QVERIFY2(b->height() >= b->sizeHint().height(), qPrintable(b->caption()));
            }
        };
        QVERIFY(startWithUpdatePage(page));
        QTRY_VERIFY(m_root->dialogs()->newVersionDialog());
        QVERIFY(QTest::qWaitForWindowExposed(m_root->dialogs()->newVersionDialog()));
        check(m_root->dialogs()->newVersionDialog());
        m_root->dialogs()->newVersionDialog()->close();
        QTRY_VERIFY(!m_root->dialogs()->newVersionDialog());

        gui::AddEditDialog *edit = openAddEdit();
        QVERIFY(edit);
        QTest::keyClicks(box(edit, "txtCall"), QStringLiteral("dl1abc"));
        check(edit);
        edit->close();
        QTRY_VERIFY(!m_root->dialogs()->addEditDialog());
        gui::SetupDialog *setup = openSetup();
        QVERIFY(setup);
        check(setup);
    }
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
