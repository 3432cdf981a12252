// SPDX-License-Identifier: GPL-3.0-or-later
// The capture window on a real X server with the web engine: opened from
// the row menu on a page of the local server, it captures what the browser
// shows at each picture size, saves Map.bmp and the user's copy, offers the
// picture as image/bmp, and pastes it into the stand-in EasyPal.
#include "core/lists/ListStore.h"
#include "support/CallbookServer.h"
#include "support/FakeEasyPal.h"
#include "support/GuiTestUtil.h"
#include "support/WebEngineTests.h"

#include "core/app/Config.h"
#include "core/i18n/Texts.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Selection.h"
#include "gui/lists/ListGrid.h"
#include "gui/share/CaptureWindow.h"
#include "gui/share/ShareController.h"
#include "gui/web/WebView.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace marvik;
using test::FakeEasyPal;

namespace {

// Two halves the capture must keep apart: whatever the picture's size, its
// left quarter is red and its right quarter blue.
const QByteArray kPage = "<!DOCTYPE html><html><head><title>Station</title><style>"
                         "html,body{margin:0;height:100%;overflow:hidden}"
                         "#l,#r{position:fixed;top:0;bottom:0;width:50%}"
                         "#l{left:0;background:rgb(220,20,20)}#r{right:0;background:rgb(20,20,220)}"
                         "</style></head><body><div id=l></div><div id=r></div></body></html>";

bool near(QColor seen, QColor wanted)
{
    return std::abs(seen.red() - wanted.red()) < 40 && std::abs(seen.green() - wanted.green()) < 40
        && std::abs(seen.blue() - wanted.blue()) < 40;
}

/// The picture shows the page: red on the left, blue on the right, top to bottom.
bool showsThePage(const QImage &image)
{
    if (image.isNull())
        return false;
    const int w = image.width();
    const int h = image.height();
    for (int y : {h / 8, h / 2, h - h / 8}) {
        if (!near(image.pixelColor(w / 4, y), QColor(220, 20, 20)) || !near(image.pixelColor(w - w / 4, y), QColor(20, 20, 220)))
            return false;
    }
    return true;
}

} // namespace

class TestCaptureWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;
    QString m_chosen; ///< what the save-as dialog answers next
    QStringList m_askedFolders;

    QString file(const QString &name) const { return m_dir.filePath(name); }
    gui::CaptureWindow *capture() const { return m_root->share()->captureWindow(); }
    QAction *captureAction(const QString &name) const { return capture()->findChild<QAction *>(name); }

    /// Right-clicks a row and picks a view from its menu.
    void openView(int row, int view)
    {
        gui::ListGrid *grid = m_root->mainWindow()->grid(1);
        QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, grid->visualRect(grid->model()->index(row, 0)).center());
        auto *menu = m_root->mainWindow()->findChild<QMenu *>(u"mnuPopup"_qs);
        QVERIFY(menu->isVisible());
        QAction *item = m_root->commands().action(u"mnuStView%1"_qs.arg(view));
        QVERIFY(menu->actions().contains(item));
        QVERIFY(item->isEnabled());
        menu->hide();
        item->trigger();
    }

private slots:
    void initTestCase();
    void cleanupTestCase();
    void opensTheViewOfTheRow();
    void savesMapBmpAtEachSize_data();
    void savesMapBmpAtEachSize();
    void cancelledSaveKeepsOnlyTheWorkingCopy();
    void copyOffersABitmap();
    void pasteHandsThePictureToEasyPal();
    void sizeIsKeptInTheSettings();
};

void TestCaptureWindow::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_qs);
    QDir(m_dir.path()).mkpath(u"Images/Thumbs"_qs);
    app::Settings settings;
    settings.ownCallsign = u"G0XYZ"_qs;
    QVERIFY(app::writeConfig(file(u"Marvik.cfg"_qs), settings));
    test::writeAll(file(u"List1.dat"_qs), "PA\xD8" "ABC*Jan**Jan Jansen**Utrecht*Netherlands*40.5*-75.25*20240101120000*\r\n"
                                          "W1AW*Hiram**Hiram Maxim**Newington*USA*0*0*20240101120000*\r\n");
    m_server = std::make_unique<CallbookServer>();
    m_server->setHandler([](const CallbookServer::Request &request) -> std::optional<CallbookServer::Answer> {
        if (!request.path.startsWith(u"/maps"))
            return std::nullopt;
        CallbookServer::Answer page;
        page.body = kPage;
        return page;
    });
    m_store = std::make_unique<QSettings>(file(u"settings.ini"_qs), QSettings::IniFormat);
    m_server->sourceSettings().save(*m_store);
    gui::CaptureWindow::setSaveAsDialogForTests([this](QWidget *, const QString &folder, const QString &filter) {
        m_askedFolders << folder + u'|' + filter;
        return m_chosen;
    });

    m_root = std::make_unique<gui::CompositionRoot>(m_dir.path(), m_store.get());
    QVERIFY(m_root->startUp());
    m_root->mainWindow()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_root->mainWindow()));
    m_root->lists().finishReading();
}

void TestCaptureWindow::cleanupTestCase()
{
    gui::CaptureWindow::setSaveAsDialogForTests({});
    if (m_root)
        m_root->mainWindow()->close();
    QVERIFY(!capture() || !capture()->isVisible());
    m_root.reset();
}

void TestCaptureWindow::opensTheViewOfTheRow()
{
    QVERIFY(!gui::isWebModuleLoaded());
    // The row at 40.5, -75.25.
    openView(0, 0);
    QVERIFY(!QTest::currentTestFailed());
    QVERIFY(capture());
    QCOMPARE(capture()->objectName(), u"frmStView"_qs);
    QVERIFY(capture()->isVisible());
    QCOMPARE(m_root->selection().stationPosition().latitude, 40.5);
    QCOMPARE(m_root->selection().stationPosition().longitude, -75.25);
    // Timer1 opens the view once, a moment after the window shows.
    auto *timer = capture()->findChild<QTimer *>(u"Timer1"_qs);
    QVERIFY(timer && timer->isSingleShot());
    QCOMPARE(timer->interval(), 100);
    QSignalSpy loaded(capture()->view(), &gui::WebView::loadFinished);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, 30000);
    QVERIFY(loaded.first().first().toBool());
    QVERIFY(!timer->isActive());
    QCOMPARE(capture()->windowTitle(), u"Marvik Calls   Street view of PA0ABC"_qs);
    QVERIFY(m_server->requests().contains(u"/maps?q=&layer=c&cbll=40.5,-75.25&cbp=12,0,0,0,0"_qs));
    QCOMPARE(captureAction(u"mnuPaste"_qs)->text(), u"Paste to EasyPal TX"_qs);
    QCOMPARE(captureAction(u"mnuSave"_qs)->text(), u"Save image"_qs);
    QCOMPARE(captureAction(u"mnuCopy"_qs)->text(), u"Copy to Clipboard"_qs);
    // The browser paints a moment after the page has loaded.
    QTRY_VERIFY_WITH_TIMEOUT(capture()->captureView() && showsThePage(capture()->capture()), 20000);

    // The satellite view of the same row goes to the same window.
    QPointer<gui::CaptureWindow> first = capture();
    openView(0, 1);
    QVERIFY(!QTest::currentTestFailed());
    QCOMPARE(capture(), first.data());
    QTRY_COMPARE_WITH_TIMEOUT(capture()->windowTitle(), u"Marvik Calls   Satellite view of PA0ABC"_qs, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(
        m_server->requests().contains(u"/maps/place/40.5+-75.25/@40.5,-75.25,19z/data=!3m1!1e3"_qs), 20000);
    // A new language relabels the window.
    i18n::Texts texts = i18n::Texts::english();
    texts[i18n::TextId::SatelliteViewCaption] = u"Satellietbeeld van xxx"_qs;
    texts[i18n::TextId::CaptureSave] = u"Beeld bewaren"_qs;
    m_root->texts().setTexts(texts);
    QCOMPARE(capture()->windowTitle(), u"Marvik Calls   Satellietbeeld van PA0ABC"_qs);
    QCOMPARE(captureAction(u"mnuSave"_qs)->text(), u"Beeld bewaren"_qs);
    m_root->texts().setTexts(i18n::Texts::english());
    QTRY_VERIFY_WITH_TIMEOUT(capture()->captureView() && showsThePage(capture()->capture()), 20000);
}

void TestCaptureWindow::savesMapBmpAtEachSize_data()
{
    QTest::addColumn<int>("choice");
    QTest::addColumn<QSize>("size"); // empty: the view's own

    QTest::newRow("320 x 240") << 0 << QSize(320, 240);
    QTest::newRow("640 x 480") << 1 << QSize(640, 480);
    QTest::newRow("800 x 600") << 2 << QSize(800, 600);
    QTest::newRow("as shown") << 3 << QSize();
}

void TestCaptureWindow::savesMapBmpAtEachSize()
{
    QFETCH(int, choice);
    QFETCH(QSize, size);
    QVERIFY(capture());
    const QSize expected = size.isEmpty() ? capture()->view()->content()->size() : size;
    captureAction(u"mnuSize%1"_qs.arg(choice))->trigger();
    QVERIFY(captureAction(u"mnuSize%1"_qs.arg(choice))->isChecked());

    m_askedFolders.clear();
    m_chosen = file(u"copy%1.bmp"_qs.arg(choice));
    // Twice: the working copy is overwritten each time.
    for (int round = 0; round < 2; ++round) {
        QFile::remove(m_chosen);
        captureAction(u"mnuSave"_qs)->trigger();
        const QByteArray bytes = test::readAll(capture()->workingCopy());
        QCOMPARE(capture()->workingCopy(), file(u"Map.bmp"_qs));
        // A Windows bitmap: "BM", then the file's length.
        QVERIFY(bytes.startsWith("BM"));
        QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + 2), quint32(bytes.size()));
        const QImage saved = QImage::fromData(bytes, "BMP");
        QCOMPARE(saved.size(), expected);
        QVERIFY(showsThePage(saved));
        QCOMPARE(test::readAll(m_chosen), bytes);
    }
    test::screenshot(capture(), u"capture-window-%1"_qs.arg(choice));
    QCOMPARE(m_askedFolders, QStringList(2, m_dir.path() + u"|bmp files (*.bmp)"_qs));
    // The raw grab is the browser's picture, before the cut and the scaling.
    QCOMPARE(capture()->rawCapture().size(),
             capture()->view()->content()->size() * capture()->view()->content()->devicePixelRatio());
}

void TestCaptureWindow::cancelledSaveKeepsOnlyTheWorkingCopy()
{
    QVERIFY(capture());
    QFile::remove(file(u"Map.bmp"_qs));
    const QStringList before = QDir(m_dir.path()).entryList(QDir::Files);
    m_chosen.clear();
    captureAction(u"mnuSave"_qs)->trigger();
    QStringList after = QDir(m_dir.path()).entryList(QDir::Files);
    after.removeOne(u"Map.bmp"_qs);
    QCOMPARE(after, before);
    QVERIFY(showsThePage(QImage(file(u"Map.bmp"_qs))));
}

void TestCaptureWindow::copyOffersABitmap()
{
    QVERIFY(capture());
    captureAction(u"mnuSize0"_qs)->trigger();
    QGuiApplication::clipboard()->setText(u"something else"_qs);
    captureAction(u"mnuCopy"_qs)->trigger();
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QVERIFY(data);
    QVERIFY2(data->formats().contains(u"image/bmp"_qs), qPrintable(data->formats().join(u' ')));
    QVERIFY(data->hasImage());
    const QImage bmp = QImage::fromData(data->data(u"image/bmp"_qs), "BMP");
    QCOMPARE(bmp.size(), QSize(320, 240));
    QVERIFY(showsThePage(bmp));
    QVERIFY(showsThePage(qvariant_cast<QImage>(data->imageData())));
}

void TestCaptureWindow::pasteHandsThePictureToEasyPal()
{
    QVERIFY(capture());
    captureAction(u"mnuSize1"_qs)->trigger();
    FakeEasyPal easyPal({u"EasyPal"_qs, true, u"magenta"_qs});
    QTRY_VERIFY_WITH_TIMEOUT(easyPal.logged("state minimised"), 15000);
    capture()->raise();
    capture()->activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(capture()->isActiveWindow(), 5000);

    captureAction(u"mnuPaste"_qs)->trigger();
    // A second paste waits for the first.
    QVERIFY(!captureAction(u"mnuPaste"_qs)->isEnabled());
    QVERIFY(!m_root->commands().action(u"mnu4"_qs)->isEnabled());
    // Another program reads the picture from the clipboard as a bitmap.
    QTRY_VERIFY_WITH_TIMEOUT(easyPal.logged("key F7"), 15000);
    QTRY_COMPARE_WITH_TIMEOUT(easyPal.value("bmp"), QByteArray("640x480"), 5000);
    const QList<QByteArray> formats = easyPal.value("formats").split(' ');
    QVERIFY2(formats.contains("image/bmp") && formats.contains("image/png"), easyPal.value("formats").constData());
    QVERIFY(easyPal.logged("state normal"));
    QTRY_VERIFY_WITH_TIMEOUT(captureAction(u"mnuPaste"_qs)->isEnabled(), 5000);
}

void TestCaptureWindow::sizeIsKeptInTheSettings()
{
    QVERIFY(capture());
    captureAction(u"mnuSize2"_qs)->trigger();
    m_store->sync();
    QCOMPARE(QSettings(file(u"settings.ini"_qs), QSettings::IniFormat).value(u"Capture/Size"_qs).toString(),
             u"800x600"_qs);
    gui::CaptureWindow again(m_root->texts(), m_root->cookieJar(), *m_store, m_dir.path());
    QCOMPARE(again.sizeChoice(), 2);
    QVERIFY(again.findChild<QAction *>(u"mnuSize2"_qs)->isChecked());
    QCOMPARE(again.captureSize(), QSize(800, 600));
    // A value no size has: the usual 640 x 480.
    m_store->setValue(u"Capture/Size"_qs, u"1024x768"_qs);
    gui::CaptureWindow other(m_root->texts(), m_root->cookieJar(), *m_store, m_dir.path());
    QCOMPARE(other.captureSize(), QSize(640, 480));
}

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    test::prepareWebEngine();
    // The browser's picture composed in software: the X server of the tests
    // has no graphics card, and Mesa's software OpenGL compiles code at run
    // time that the address sanitizer cannot follow.
    qputenv("QT_QUICK_BACKEND", "software");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestCaptureWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_capturewindow.moc"
