// SPDX-License-Identifier: GPL-3.0-or-later
// Lookups through the real main window against a local server that plays
// the callbooks and the picture host: Get, the status line and its timers,
// the Database menu's log-in state, Update, pictures and the viewer.
#include "support/GuiTestUtil.h"
#include "support/CallbookServer.h"

#include "support/MarvikUnderTest.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Selection.h"
#include "core/lists/ListStore.h"
#include "gui/dialogs/ImageViewer.h"
#include "gui/lists/ListGrid.h"
#include "gui/lookup/LookupController.h"
#include "core/app/Config.h"
#include "core/lists/CallListModel.h"
#include "core/lookup/SourceSettings.h"
#include "core/maps/Geometry.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMovie>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace marvik;
using Answer = CallbookServer::Answer;
using test::DialogAnswerer;
using test::readAll;
using test::writeAll;

namespace {

const maps::Position kMe{51.5, -0.12};

QByteArray fixture(const char *name)
{
    return readAll(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + QString::fromLatin1(name));
}

Answer page(const QByteArray &body, int delayMs = 0)
{
    Answer a;
    a.body = body;
    a.delayMs = delayMs;
    return a;
}

Answer picture(const QByteArray &bytes)
{
    Answer a;
    a.body = bytes;
    a.contentType = "image/jpeg";
    return a;
}

} // namespace

class TestLookupWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<gui::CompositionRoot> m_root;
    gui::MainWindow *m_window = nullptr;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    template<typename T>
    T *child(const QString &name) const { return test::findPart<T>(*m_root, name); }
    QTimer *timer(int n) const { return child<QTimer>(QStringLiteral("Timer%1").arg(n)); }
    QLabel *status() const { return child<QLabel>(QStringLiteral("lblStatus")); }
    QString cell(int row, lists::Column column) const { return m_root->lists().model(1)->index(row, column).data().toString(); }

    gui::MainWindow *start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        m_window = m_root->mainWindow();
        if (!m_root->startUp())
            return nullptr;
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window))
            return nullptr;
        // The lists arrive from their readers after the first paint.
        m_root->lists().finishReading();
        // The status line goes to rest sooner than the user's 4 s.
        timer(3)->setInterval(150);
        return m_window;
    }
    void get(const QString &typed)
    {
        child<QLineEdit>(QStringLiteral("txtCall"))->setText(typed);
        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
    }
    QString caption() const { return child<QMenu>(QStringLiteral("mnuDatabase"))->title(); }
    QString note() const { return child<QStatusBar>(QStringLiteral("statusBar"))->currentMessage(); }
    QString getCaption() const { return child<QPushButton>(QStringLiteral("cmdGet"))->text(); }
    /// The QRZ page of W1AW with its position taken out: no coordinates and
    /// no grid square to work one out from.
    static QByteArray pageWithoutPosition()
    {
        QByteArray body = fixture("qrz_found.html");
        for (const char *marker : {"Latitude", "Longitude", "Grid Square"})
            body.replace(marker, "Remark");
        return body;
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        QDir(m_dir->path()).mkpath(QStringLiteral("Images/Thumbs"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        app::Settings settings;
        settings.me = kMe;
        settings.ownCallsign = QStringLiteral("K1ABC");
        settings.defaultDatabase = 1; // QRZ
        QVERIFY(app::writeConfig(file(QStringLiteral("Marvik.cfg")), settings));

        m_server = std::make_unique<CallbookServer>();
        QVERIFY(m_server->isListening());
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        m_server->sourceSettings().save(*m_store);
        // The site page of every source: QRZ shows the own call when logged in.
        m_server->answer(QStringLiteral("/"), page("<p>QRZ.com callook eHam.net</p><p>Login</p>"));
    }

    void cleanup()
    {
        m_root.reset();
        m_window = nullptr;
        m_store.reset();
        m_server.reset();
        m_dir.reset();
    }

    void wholeLookup()
    {
        const QByteArray jpeg = CallbookServer::picture("jpeg", QSize(200, 100));
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html")));
        m_server->answer(QStringLiteral("/pics/w/w1aw/w1aw.jpg"), picture(jpeg));
        QVERIFY(start());
        const QString before = lists::timeStamp(QDateTime::currentDateTime());

        get(QStringLiteral("de w1aw-5"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        QCOMPARE(m_server->requests().count(QStringLiteral("/db/W1AW")), 1);
        QCOMPARE(cell(0, lists::Column::Callsign), QStringLiteral("W1AW"));
        QCOMPARE(cell(0, lists::Column::FirstName), QStringLiteral("ARRL"));
        QCOMPARE(cell(0, lists::Column::FullName), QStringLiteral("ARRL HQ Operators Club"));
        QCOMPARE(cell(0, lists::Column::Address), QStringLiteral("225 Main St"));
        QCOMPARE(cell(0, lists::Column::City), QStringLiteral("Newington, CT 06111"));
        QCOMPARE(cell(0, lists::Column::Country), QStringLiteral("USA"));
        QCOMPARE(cell(0, lists::Column::Latitude), QStringLiteral("41.714775"));
        QCOMPARE(cell(0, lists::Column::Longitude), QStringLiteral("-72.72726"));
        QCOMPARE(cell(0, lists::Column::Azimuth),
                 maps::azimuthText(maps::bearingFrom(kMe, 41.714775, -72.72726).degrees));
        QVERIFY(cell(0, lists::Column::TimeStamp) >= before);
        QCOMPARE(m_root->selection().currentRow(), 0);
        QVERIFY(!timer(4)->isActive());
        QVERIFY(!status()->isVisible());
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(0).right(3), QStringLiteral("(1)"));
        QVERIFY(readAll(file(QStringLiteral("List1.dat"))).startsWith("W1AW*ARRL*"));

        // The picture as it came, its thumbnail in the grid and on disk.
        const QModelIndex firstName = m_root->lists().model(1)->index(0, lists::Column::FirstName);
        QTRY_VERIFY(!firstName.data(lists::CallListModel::ThumbnailRole).value<QImage>().isNull());
        QCOMPARE(firstName.data(lists::CallListModel::ThumbnailRole).value<QImage>().size(), QSize(32, 16));
        QCOMPARE(readAll(file(QStringLiteral("Images/W1AW.jpg"))), jpeg);
        QCOMPARE(QImage(file(QStringLiteral("Images/Thumbs/W1AW.jpg"))).size(), QSize(32, 16));
        QVERIFY(!child<QProgressBar>(QStringLiteral("picProgress"))->isVisible());
        QVERIFY(!status()->isVisible());
    }

    void alarms_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("drop");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("text");

        QByteArray cut = fixture("eham_found.html");
        cut.truncate(cut.indexOf("41.714775") + 2);
        QTest::newRow("no such call") << 1 << "/db/W9XYZ" << fixture("qrz_notfound.html") << false << "w9xyz"
                                      << "W9XYZ not found";
        QTest::newRow("log-in needed") << 1 << "/db/W1AW" << fixture("qrz_login.html") << false << "W1AW"
                                       << "Details require a log-in to QRZ.com";
        QTest::newRow("page without the call") << 1 << "/db/K2XX" << fixture("qrz_found.html") << false << "K2XX"
                                               << "K2XX not found";
        QTest::newRow("page cut short") << 0 << "/callbook/W1AW" << cut << false << "W1AW"
                                        << "The page of W1AW on eHam.net could not be read";
        // A callbook we cannot reach says so; "not found" would make the user
        // believe the call does not exist.
        QTest::newRow("connection dropped") << 1 << "/db/W1AW" << QByteArray() << true << "W1AW"
                                            << "W1AW not looked up: QRZ.com could not be reached";
    }
    void alarms()
    {
        QFETCH(int, source);
        QFETCH(QString, path);
        QFETCH(QByteArray, body);
        QFETCH(bool, drop);
        QFETCH(QString, typed);
        QFETCH(QString, text);
        Answer a = page(body);
        a.drop = drop;
        m_server->answer(path, a);
        QVERIFY(start());
        child<QAction>(QStringLiteral("mnuSource%1").arg(source))->trigger();

        get(typed);
        QTRY_VERIFY(status()->isVisible());
        QVERIFY2(status()->text().startsWith(text), qPrintable(status()->text()));
        if (drop)
            test::screenshot(m_window, QStringLiteral("network-failure"));
        QVERIFY(!child<QComboBox>(QStringLiteral("cboList"))->isVisible());
        QCOMPARE(status()->palette().color(QPalette::Window), QColor(255, 0, 0));
        QVERIFY(!timer(4)->isActive());
        QCOMPARE(m_root->lists().model(1)->rowCount(), 0);
        // Timer3 puts it away again.
        QTRY_VERIFY(!status()->isVisible());
        QVERIFY(child<QComboBox>(QStringLiteral("cboList"))->isVisible());
        QCOMPARE(status()->text(), QString());
        QCOMPARE(m_server->requests().count(QStringLiteral("/pics/w/w1aw/w1aw.jpg")), 0);
    }

    void missingPictureIsAQuietNote()
    {
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html")));
        Answer missing = page("<html>Not Found</html>");
        missing.status = 404;
        m_server->answer(QStringLiteral("/pics/w/w1aw/w1aw.jpg"), missing);
        QVERIFY(start());
        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        QTRY_VERIFY2(note().startsWith(QStringLiteral("No picture of W1AW")), qPrintable(note()));
        test::screenshot(m_window, QStringLiteral("no-picture"));
        // Most calls have no picture: the chooser stays, nothing turns red.
        QVERIFY(!status()->isVisible());
        QVERIFY(child<QComboBox>(QStringLiteral("cboList"))->isVisible());
        QVERIFY(!QFile::exists(file(QStringLiteral("Images/W1AW.jpg"))));
        QVERIFY(!child<QAction>(QStringLiteral("mnuShowPic"))->isEnabled());
    }

    void showImageNeedsAPictureFile_data()
    {
        QTest::addColumn<bool>("withPicture");
        QTest::newRow("no picture file") << false;
        QTest::newRow("picture file") << true;
    }
    void showImageNeedsAPictureFile()
    {
        QFETCH(bool, withPicture);
        writeAll(file(QStringLiteral("List1.dat")), "W1AW*Hiram**Hiram Maxim******20200101000000*\r\n"
                                                    "K2XX*Kay**Kay Exe******20200101000000*\r\n");
        if (withPicture)
            writeAll(file(QStringLiteral("Images/K2XX.jpg")), CallbookServer::picture("jpeg"));
        QVERIFY(start());
        QAction *showPic = child<QAction>(QStringLiteral("mnuShowPic"));
        const int row = m_root->lists().model(1)->findCallsign(QStringLiteral("K2XX"));
        m_root->selection().reveal(1, row);
        QCOMPARE(m_root->selection().callsign(), QStringLiteral("K2XX"));
        m_root->commands().refresh();
        QCOMPARE(showPic->isEnabled(), withPicture);
        // Another row's picture does not count for this one.
        m_root->selection().reveal(1, 1 - row);
        m_root->commands().refresh();
        QVERIFY(!showPic->isEnabled());
    }

    void noPositionIsNeverInvented_data()
    {
        QTest::addColumn<QByteArray>("listFile");
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("hasAzimuth");
        // A new row: no 0/0, and no bearing to a point off Africa.
        QTest::newRow("new row") << QByteArray() << QString() << QString() << "225 Main St" << false;
        // An update keeps the position (and so the bearing) it had.
        QTest::newRow("update keeps the position")
            << QByteArray("W1AW*Hiram**Old Name*Old St*Old Town*USA*41.7*-72.7*20200101000000*\r\n")
            << "41.7" << "-72.7" << "225 Main St" << true;
    }
    void noPositionIsNeverInvented()
    {
        QFETCH(QByteArray, listFile);
        QFETCH(QString, latitude);
        QFETCH(QString, longitude);
        QFETCH(QString, address);
        QFETCH(bool, hasAzimuth);
        if (!listFile.isEmpty())
            writeAll(file(QStringLiteral("List1.dat")), listFile);
        m_server->answer(QStringLiteral("/db/W1AW"), page(pageWithoutPosition()));
        QVERIFY(start());
        if (listFile.isEmpty()) {
            get(QStringLiteral("W1AW"));
        } else {
            m_root->selection().reveal(1, 0);
            child<QAction>(QStringLiteral("mnuUpdate"))->trigger();
        }
        QTRY_COMPARE(cell(0, lists::Column::Address), address);
        QCOMPARE(cell(0, lists::Column::Latitude), latitude);
        QCOMPARE(cell(0, lists::Column::Longitude), longitude);
        QCOMPARE(!cell(0, lists::Column::Azimuth).isEmpty(), hasAzimuth);
        if (hasAzimuth)
            QCOMPARE(cell(0, lists::Column::Azimuth), maps::azimuthText(maps::bearingFrom(kMe, 41.7, -72.7).degrees));
        // The saved row says the same.
        const QByteArray saved = readAll(file(QStringLiteral("List1.dat")));
        QVERIFY2(saved.contains(QStringLiteral("*USA*%1*%2*").arg(latitude, longitude).toUtf8()), saved.constData());
    }

    void lookupInFlightCanBeCancelled_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Cancel button") << false;
        QTest::newRow("Escape key") << true;
    }
    void lookupInFlightCanBeCancelled()
    {
        QFETCH(bool, escape);
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html"), 1500));
        QVERIFY(start());
        auto *busyText = child<QLabel>(QStringLiteral("lblBusy"));
        auto *busyBar = child<QProgressBar>(QStringLiteral("busyIndicator"));
        QVERIFY(busyText && busyBar);
        QVERIFY(!busyBar->isVisible());
        QCOMPARE(getCaption(), QStringLiteral("Get"));

        get(QStringLiteral("W1AW"));
        QTRY_VERIFY(busyBar->isVisible());
        QCOMPARE(busyText->text(), QStringLiteral("Looking up W1AW on QRZ.com\u2026"));
        QCOMPARE(getCaption(), QStringLiteral("Cancel"));
        QVERIFY(timer(4)->isActive());
        test::screenshot(m_window, QStringLiteral("lookup-in-flight"));
        QVERIFY(!status()->isVisible());

        if (escape)
            QTest::keyClick(m_window, Qt::Key_Escape);
        else
            QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
        QVERIFY(!busyBar->isVisible());
        QCOMPARE(getCaption(), QStringLiteral("Get"));
        QVERIFY(!timer(4)->isActive());
        // The page still arrives; a cancelled lookup writes nothing and
        // raises no alarm.
        QTRY_COMPARE(m_server->hits(QStringLiteral("/db/W1AW")), 1);
        QTest::qWait(1800);
        QCOMPARE(m_root->lists().model(1)->rowCount(), 0);
        QVERIFY(!status()->isVisible());

        // The next lookup runs as usual, and the busy line goes when it ends.
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html")));
        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        QVERIFY(!busyBar->isVisible());
        QCOMPARE(getCaption(), QStringLiteral("Get"));
    }

    void noAnswerTimesOut()
    {
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html"), 60000));
        QVERIFY(start());
        timer(4)->setInterval(300);
        timer(3)->setInterval(60000);
        get(QStringLiteral("W1AW"));
        QVERIFY(timer(4)->isActive());
        QVERIFY(!status()->isVisible());
        QTRY_COMPARE(status()->text(), QStringLiteral("W1AW not found"));
        QVERIFY(status()->isVisible());
        QVERIFY(timer(3)->isActive());
        QVERIFY(!timer(4)->isActive());
        QCOMPARE(getCaption(), QStringLiteral("Get"));
    }

    void databaseCaption()
    {
        m_server->answer(QStringLiteral("/"), {page("<p>QRZ.com</p><a>Login</a>"), page("<p>QRZ.com K1ABC</p>"),
                                               page("<p>QRZ.com K1ABC</p>"), page("<p>by callook author</p>")});
        QVERIFY(start());
        QTRY_COMPARE(caption(), QStringLiteral("QRZ.com  (Login required)"));
        // Each source change asks again; the suffix is replaced, never added to.
        child<QAction>(QStringLiteral("mnuSource1"))->trigger();
        QTRY_COMPARE(caption(), QStringLiteral("QRZ.com  (Logged in)"));
        child<QAction>(QStringLiteral("mnuSource1"))->trigger();
        QTRY_COMPARE(m_server->hits(QStringLiteral("/")), 3);
        QTest::qWait(50);
        QCOMPARE(caption(), QStringLiteral("QRZ.com  (Logged in)"));
        child<QAction>(QStringLiteral("mnuSource3"))->trigger();
        QTRY_COMPARE(caption(), QStringLiteral("CALLOOK.INFO  (Login not required)"));
        // The CD callbooks ask nothing and cannot be logged in to.
        child<QAction>(QStringLiteral("mnuSource5"))->trigger();
        QCOMPARE(caption(), QStringLiteral("QRZ CD"));
        QVERIFY(!child<QAction>(QStringLiteral("mnuLogin"))->isEnabled());
        QTest::qWait(50);
        QCOMPARE(m_server->hits(QStringLiteral("/")), 4);
    }

    void updateKeepsFirstNameAndExtra()
    {
        writeAll(file(QStringLiteral("List1.dat")),
                 "W1AW*Hiram**Old Name*Old St*Old Town*USA*0*0*20200101000000*QSL via bureau\r\n");
        m_server->answer(QStringLiteral("/db/W1AW"), page(fixture("qrz_found.html")));
        QVERIFY(start());
        m_root->selection().reveal(1, 0);
        child<QAction>(QStringLiteral("mnuUpdate"))->trigger();
        QTRY_COMPARE(cell(0, lists::Column::FullName), QStringLiteral("ARRL HQ Operators Club"));
        QCOMPARE(m_root->lists().model(1)->rowCount(), 1);
        QCOMPARE(cell(0, lists::Column::FirstName), QStringLiteral("Hiram"));
        QCOMPARE(cell(0, lists::Column::Extra), QStringLiteral("QSL via bureau"));
        QCOMPARE(cell(0, lists::Column::Address), QStringLiteral("225 Main St"));
        QVERIFY(cell(0, lists::Column::TimeStamp) > QStringLiteral("20200101000000"));
        QVERIFY(readAll(file(QStringLiteral("List1.dat"))).endsWith("*QSL via bureau\r\n"));
    }

    void corruptPictureIsReported()
    {
        writeAll(file(QStringLiteral("List1.dat")), "W1AW*Hiram**Hiram Maxim******20200101000000*\r\n");
        writeAll(file(QStringLiteral("Images/W1AW.jpg")), "<html>no picture here</html>");
        QVERIFY(start());
        m_root->selection().reveal(1, 0);
        DialogAnswerer answer;
        child<QAction>(QStringLiteral("mnuShowPic"))->trigger();
        QVERIFY(answer.dialog().seen);
        QCOMPARE(answer.dialog().title, QStringLiteral("Marvik"));
        QCOMPARE(answer.dialog().text, QStringLiteral("The image may be corrupt\nand can not be displayed."));
        QVERIFY(!m_window->findChild<gui::ImageViewer *>());
    }

    void thumbnailClickOpensTheViewer_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("animated");
        QTest::newRow("PNG") << CallbookServer::picture("png", QSize(120, 90)) << false;
        QTest::newRow("animated GIF") << CallbookServer::picture("gif", QSize(60, 40), 3) << true;
    }
    void thumbnailClickOpensTheViewer()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, animated);
        writeAll(file(QStringLiteral("List1.dat")), "W1AW*Hiram**Hiram Maxim******20200101000000*\r\n");
        writeAll(file(QStringLiteral("Images/W1AW.jpg")), bytes);
        QVERIFY(QImage::fromData(bytes).scaledToHeight(16).save(file(QStringLiteral("Images/Thumbs/W1AW.jpg")), "BMP"));
        QVERIFY(start());
        const QPoint home(20, 30);
        QCursor::setPos(home);
        QCOMPARE(QCursor::pos(), home);

        gui::ListGrid *grid = m_window->grid(1);
        const QPoint at(155, grid->visualRect(grid->model()->index(0, int(lists::Column::FirstName))).center().y());
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
        QPointer<gui::ImageViewer> viewer = test::findPart<gui::ImageViewer>(*m_root, QStringLiteral("Form4"));
        QVERIFY(viewer);
        QVERIFY(viewer->isVisible());
        auto *label = viewer->findChild<QLabel *>(QStringLiteral("AniGIF1"));
        QVERIFY(label);
        QCOMPARE(viewer->isAnimated(), animated);
        if (animated) {
            QVERIFY(label->movie());
            QCOMPARE(label->movie()->state(), QMovie::Running);
            const int frame = label->movie()->currentFrameNumber();
            QTRY_VERIFY(label->movie()->currentFrameNumber() != frame);
        } else {
            QCOMPARE(label->pixmap().size(), QSize(120, 90));
        }
        QTRY_COMPARE(QCursor::pos(), viewer->cursorTarget());

        QTest::mouseClick(label, Qt::LeftButton);
        QTRY_VERIFY(!viewer);
        QCOMPARE(QCursor::pos(), home);
    }
};

int main(int argc, char *argv[])
{
    // Never the user's own settings or data folder.
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestLookupWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_lookupwindow.moc"
