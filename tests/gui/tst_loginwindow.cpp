// SPDX-License-Identifier: GPL-3.0-or-later
// The log-in browser window against the local callbook server: it starts
// with Marvik's cookies, and what the site sets there counts for lookups.
#include "core/lists/ListStore.h"
#include "support/GuiTestUtil.h"
#include "support/CallbookServer.h"
#include "support/WebEngineTests.h"

#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/lookup/LoginWindow.h"
#include "gui/web/WebView.h"
#include "gui/lookup/LookupController.h"
#include "core/app/Config.h"
#include "core/lookup/CookieJar.h"
#include "core/lookup/SourceSettings.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QMenu>
#include <QNetworkCookie>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik;
using Answer = CallbookServer::Answer;

namespace {

bool hasCookie(const lookup::CookieJar &jar, const QByteArray &name)
{
    for (const QNetworkCookie &c : jar.cookies()) {
        if (c.name() == name)
            return true;
    }
    return false;
}

} // namespace

class TestLoginWindow : public QObject
{
    Q_OBJECT

private slots:
    void logInThroughTheBrowser()
    {
        QTemporaryDir dir;
        QDir(dir.path()).mkpath(QStringLiteral("Images/Thumbs"));
        app::Settings settings;
        settings.ownCallsign = QStringLiteral("K1ABC");
        settings.defaultDatabase = 1; // QRZ
        QVERIFY(app::writeConfig(dir.filePath(QStringLiteral("Marvik.cfg")), settings));
        CallbookServer server;
        QSettings store(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        server.sourceSettings().save(store);

        Answer before;
        before.body = "<p>QRZ.com <a>Login</a></p>";
        Answer login = before;
        login.headers.append(qMakePair(QByteArray("Set-Cookie"), QByteArray("session=xyz; Path=/; Max-Age=3600")));
        Answer after;
        after.body = "<p>QRZ.com K1ABC</p>";
        server.answer(QStringLiteral("/db/"), login);
        server.answer(QStringLiteral("/"), {before, after});

        gui::CompositionRoot root(dir.path(), &store);
        QVERIFY(root.startUp());
        root.lists().finishReading();
        gui::LookupController *controller = root.lookup();
        gui::MainWindow &window = *root.mainWindow();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto *caption = window.findChild<QMenu *>(QStringLiteral("mnuDatabase"));
        QTRY_COMPARE(caption->title(), QStringLiteral("QRZ.com  (Login required)"));

        // A cookie the lookups already hold goes to the browser.
        QNetworkCookie kept("kept", "1");
        kept.setDomain(QStringLiteral("127.0.0.1"));
        kept.setPath(QStringLiteral("/"));
        kept.setExpirationDate(QDateTime::currentDateTimeUtc().addDays(1));
        QVERIFY(controller->cookieJar()->insertCookie(kept));

        auto *action = window.findChild<QAction *>(QStringLiteral("mnuLogin"));
        QTRY_VERIFY(action->isEnabled());
        action->trigger();
        QPointer<gui::LoginWindow> browser = controller->loginWindow();
        QVERIFY(browser);
        // The browser came with the web module, loaded just now.
        QVERIFY(gui::isWebModuleLoaded());
        QVERIFY(browser->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(server.hits(QStringLiteral("/db/")) >= 1, 20000);
        QVERIFY(server.cookies().at(server.requests().indexOf(QStringLiteral("/db/"))).contains("kept=1"));
        // What the site set in the browser is in the jar, and on disk.
        QTRY_VERIFY_WITH_TIMEOUT(hasCookie(*controller->cookieJar(), "session"), 10000);
        QVERIFY(test::readAll(controller->cookieJar()->filePath()).contains("session=xyz"));

        // Closing the window asks the site again, with the new cookie.
        browser->close();
        QTRY_VERIFY(!browser);
        QTRY_COMPARE(caption->title(), QStringLiteral("QRZ.com  (Logged in)"));
        QVERIFY(server.cookies().last().contains("session=xyz"));
        window.close();
    }
};

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    test::prepareWebEngine();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestLoginWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_loginwindow.moc"
