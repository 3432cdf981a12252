// SPDX-License-Identifier: GPL-3.0-or-later
// The callbook data services through the real main window, against a local
// server that plays the callbooks' pages and their services: the fallback to
// the next source and the answer from the cache, HamQTH as a source of the
// Database menus, and the callbook accounts dialog with the keyring (run
// once without a keyring and once with a private one: tests/run-keyring.sh).
#include "support/CallbookServer.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"
#include "support/ServicePlayer.h"

#include "core/app/Config.h"
#include "core/app/Session.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListStore.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "gui/lookup/AccountsDialog.h"
#include "gui/lookup/LookupController.h"
#include "gui/widgets/ChameleonButton.h"

#include <QAction>
#include <QCheckBox>
#include <QDirIterator>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace marvik;
using lookup::Source;
using Mode = ServicePlayer::Mode;
using Status = lookup::CredentialStore::Status;

namespace {

// The temporary home the test runs in, searched for passwords at the end.
QString g_home;

bool keyringExpected()
{
    return qEnvironmentVariableIntValue("MARVIK_KEYRING_EXPECTED") == 1;
}

/// Every file below `folder` that holds `secret`, in any of the ways a
/// program might write it.
QStringList filesHolding(const QString &folder, const QString &secret)
{
    QStringList found;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QByteArray bytes = test::readAll(path);
        for (const QByteArray &form : {secret.toUtf8(), QByteArray(reinterpret_cast<const char *>(secret.utf16()),
                                                                   secret.size() * 2),
                                       secret.toUtf8().toBase64(), QUrl::toPercentEncoding(secret)}) {
            if (bytes.contains(form))
                found.append(path);
        }
    }
    return found;
}

} // namespace

class TestServiceWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<ServicePlayer> m_player;
    std::unique_ptr<gui::CompositionRoot> m_root;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    template<typename T>
    T *child(const QString &name) const { return test::findPart<T>(*m_root, name); }
    QString note() const { return child<QStatusBar>(QStringLiteral("statusBar"))->currentMessage(); }
    QString cell(int row, lists::Column column) const
    {
        return m_root->lists().model(1)->index(row, column).data().toString();
    }
    QString caption() const { return child<QMenu>(QStringLiteral("mnuDatabase"))->title(); }

    bool start()
    {
        m_store->sync();
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        if (!m_root->startUp())
            return false;
        m_root->lists().finishReading();
        m_root->mainWindow()->show();
        return QTest::qWaitForWindowExposed(m_root->mainWindow());
    }
    void stop()
    {
        if (m_root)
            m_root->shutDown();
        m_root.reset();
        m_store->sync();
    }
    void get(const QString &typed)
    {
        child<QLineEdit>(QStringLiteral("txtCall"))->setText(typed);
        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
    }
    /// Sets a "Sources" key before Marvik starts.
    void setSource(const QString &key, const QVariant &value) { m_store->setValue(u"Sources/"_qs + key, value); }
    /// The dialog asks the keyring as it opens; its answer is awaited, as a
    /// keyring job must not outlive the program under test.
    gui::AccountsDialog *openAccounts()
    {
        QSignalSpy asked(&m_root->credentials(), &lookup::CredentialStore::passwordRead);
        child<QAction>(QStringLiteral("mnuAccounts"))->trigger();
        if (!asked.wait(5000) && asked.isEmpty())
            return nullptr;
        return m_root->lookup()->accountsDialog();
    }
    void clickButton(QWidget *dialog, const QString &name)
    {
        auto *button = dialog->findChild<gui::ChameleonButton *>(name);
        QVERIFY(button);
        QVERIFY(button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center());
    }

private slots:
    void init()
    {
        gui::messages::resetSeam();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        test::writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        app::Settings settings;
        settings.me = maps::Position{51.5, -0.12};
        settings.defaultDatabase = 1; // QRZ, read from its pages
        QVERIFY(app::writeConfig(file(QStringLiteral("Marvik.cfg")), settings));

        m_server = std::make_unique<CallbookServer>();
        QVERIFY(m_server->isListening());
        m_player = std::make_unique<ServicePlayer>(*m_server);
        m_player->setAccount(Source::HamQth, QStringLiteral("k1abc"), QStringLiteral("Secr3t-Pa55"));
        m_player->setAccount(Source::Qrz, QStringLiteral("k1abc"), QStringLiteral("Secr3t-Pa55"));
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        m_player->settings().save(*m_store);
        CallbookServer::Answer site;
        site.body = "<p>QRZ.com</p>";
        m_server->answer(QStringLiteral("/"), site);
    }

    void cleanup()
    {
        m_root.reset();
        m_store.reset();
        m_player.reset();
        m_server.reset();
        m_dir.reset();
        gui::messages::resetSeam();
    }

    void fallbackNamesTheSource_data()
    {
        QTest::addColumn<bool>("chosenDown");
        QTest::addColumn<QString>("told");
        QTest::addColumn<int>("hamQthLookups");
        QTest::newRow("chosen source down") << true << "W1AW from HamQTH" << 1;
        QTest::newRow("chosen source answers") << false << QString() << 0;
    }
    void fallbackNamesTheSource()
    {
        QFETCH(bool, chosenDown);
        QFETCH(QString, told);
        QFETCH(int, hamQthLookups);
        CallbookServer::Answer qrz;
        qrz.drop = chosenDown;
        qrz.body = test::readAll(QStringLiteral(MARVIK_TEST_DATA "/lookup/qrz_found.html"));
        m_server->answer(QStringLiteral("/db/W1AW"), qrz);
        setSource(u"Fallback/Order"_qs, u"HamQTH"_qs);
        setSource(u"HamQTH/User"_qs, u"k1abc"_qs);
        QVERIFY(start());
        m_root->credentials().keepForThisRun(Source::HamQth, u"k1abc"_qs, u"Secr3t-Pa55"_qs);

        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        // Qt sends a request once more when the connection drops unanswered.
        QVERIFY(m_server->hits(QStringLiteral("/db/W1AW")) >= 1);
        QCOMPARE(m_player->lookups(Source::HamQth), hamQthLookups);
        QCOMPARE(cell(0, lists::Column::FullName), QStringLiteral("ARRL HQ Operators Club"));
        QCOMPARE(cell(0, lists::Column::Latitude), QStringLiteral("41.714775"));
        // The picture's note (there is none on the server) keeps the source's.
        QTRY_VERIFY2(note().contains(QStringLiteral("No picture of W1AW")), qPrintable(note()));
        QVERIFY2(told.isEmpty() ? note().startsWith(QStringLiteral("No picture")) : note().startsWith(told),
                 qPrintable(note()));
        if (chosenDown)
            test::screenshot(m_root->mainWindow(), QStringLiteral("fallback"));
        QVERIFY(!child<QLabel>(QStringLiteral("lblStatus"))->isVisible());
        // Written once: nothing more comes of the lookup.
        QTest::qWait(100);
        QCOMPARE(m_root->lists().model(1)->rowCount(), 1);
    }

    void everySourceDownAnswersFromTheCache()
    {
        const QDateTime when = QDateTime::currentDateTimeUtc().addDays(-3);
        {
            lookup::LookupCache cache(file(lookup::LookupCache::fileName()));
            lookup::LookupResult r;
            r.name = QStringLiteral("Hiram Percy Maxim");
            r.address1 = QStringLiteral("225 Main St");
            r.country = QStringLiteral("USA");
            r.latitude = 41.7;
            r.longitude = -72.7;
            QVERIFY(cache.store(QStringLiteral("W1AW"), Source::Qrz, lookup::Via::Service, r, when));
        }
        CallbookServer::Answer down;
        down.drop = true;
        m_server->answer(QStringLiteral("/db/W1AW"), down);
        m_player->setMode(Source::Callook, Mode::Down);
        setSource(u"Fallback/Order"_qs, u"Callook"_qs);
        QVERIFY(start());

        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        QCOMPARE(cell(0, lists::Column::FullName), QStringLiteral("Hiram Percy Maxim"));
        QCOMPARE(cell(0, lists::Column::Latitude), QStringLiteral("41.7"));
        const QString cached = QStringLiteral("W1AW cached ") + when.toLocalTime().date().toString(Qt::ISODate);
        QTRY_VERIFY2(note().startsWith(cached), qPrintable(note()));
        QVERIFY(m_server->hits(QStringLiteral("/W1AW/json")) >= 1);
        QVERIFY(!child<QLabel>(QStringLiteral("lblStatus"))->isVisible());
    }

    void damagedCacheIsToldOnce()
    {
        test::writeAll(file(lookup::LookupCache::fileName()), QByteArray(4096, 'x'));
        gui::messages::answerNext({});
        QVERIFY(start());
        // Opened once the window has painted, or now when asked for first.
        QVERIFY(m_root->lookupCache());
        QList<gui::messages::Shown> shown;
        QTRY_VERIFY((shown += gui::messages::takeShown()).size() >= 1);
        QTest::qWait(50);
        shown += gui::messages::takeShown();
        QCOMPARE(shown.size(), 1);
        QVERIFY2(shown.first().text.contains(QStringLiteral("lookup cache was damaged")), qPrintable(shown.first().text));
        const QString aside = m_root->lookupCache()->setAsidePath();
        QVERIFY(QFile::exists(aside));
        QVERIFY(shown.first().text.contains(QDir::toNativeSeparators(aside)));
        QVERIFY(m_root->lookupCache()->isOpen());
        stop();
        // The new cache is sound: the next start says nothing.
        gui::messages::answerNext({});
        QVERIFY(start());
        QVERIFY(m_root->lookupCache() && m_root->lookupCache()->isOpen());
        QTest::qWait(50);
        QVERIFY(gui::messages::takeShown().isEmpty());
    }

    void hamQthIsAChoosableSource()
    {
        setSource(u"HamQTH/User"_qs, u"k1abc"_qs);
        QVERIFY(start());
        child<QAction>(QStringLiteral("mnuDefaultDB7"))->trigger();
        QCOMPARE(caption(), QStringLiteral("HamQTH.com"));
        stop();
        app::Settings config;
        app::readConfig(file(QStringLiteral("Marvik.cfg")), config);
        QCOMPARE(int(config.defaultDatabase), 7);

        QVERIFY(start());
        QVERIFY(child<QAction>(QStringLiteral("mnuSource7"))->isChecked());
        QVERIFY(child<QAction>(QStringLiteral("mnuDefaultDB7"))->isChecked());
        QCOMPARE(caption(), QStringLiteral("HamQTH.com"));
        m_root->credentials().keepForThisRun(Source::HamQth, u"k1abc"_qs, u"Secr3t-Pa55"_qs);
        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        QCOMPARE(m_player->lookups(Source::HamQth), 1);
        // The chosen source answered: no word about where the row came from.
        QTRY_VERIFY2(note().startsWith(QStringLiteral("No picture of W1AW")), qPrintable(note()));
    }

    void accountsDialogKeepsThePasswordOutOfOurFiles()
    {
        const QString secret = QStringLiteral("Secr3t-Pa55");
        QVERIFY(start());
        QPointer<gui::AccountsDialog> dialog = openAccounts();
        QVERIFY(dialog);
        QTRY_VERIFY(dialog->isVisible());
        auto *noKeyring = dialog->findChild<QLabel *>(QStringLiteral("lblNoKeyring"));
        auto *keep = dialog->findChild<QCheckBox *>(QStringLiteral("chkKeepForRun"));
        // The dialog asks the keyring at once, so the user knows before typing.
        if (keyringExpected()) {
            QTest::qWait(300);
            QVERIFY(!noKeyring->isVisible());
        } else {
            QTRY_VERIFY(noKeyring->isVisible());
            QVERIFY(noKeyring->text().startsWith(QStringLiteral("No keyring service is running")));
        }
        QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("txtUserHamQTH")), QStringLiteral("k1abc"));
        QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("txtPasswordHamQTH")), secret);
        clickButton(dialog, QStringLiteral("cmdOK"));
        if (!keyringExpected()) {
            // Nothing stored: the dialog stays and offers this run only.
            QTest::qWait(300);
            QVERIFY(dialog && dialog->isVisible());
            QVERIFY(keep->isVisible());
            QVERIFY(!m_root->credentials().knownPassword(Source::HamQth, u"k1abc"_qs));
            test::screenshot(dialog, QStringLiteral("accounts-no-keyring"));
            keep->setChecked(true);
            clickButton(dialog, QStringLiteral("cmdOK"));
        }
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_store->value(u"Sources/HamQTH/User"_qs).toString(), QStringLiteral("k1abc"));
        QCOMPARE(m_root->credentials().knownPassword(Source::HamQth, u"k1abc"_qs), std::optional<QString>(secret));
        if (keyringExpected()) {
            lookup::CredentialStore fresh;
            QSignalSpy read(&fresh, &lookup::CredentialStore::passwordRead);
            fresh.readPassword(Source::HamQth, u"k1abc"_qs);
            QTRY_COMPARE(read.size(), 1);
            QCOMPARE(read.first().at(2).toString(), secret);
            QCOMPARE(read.first().at(3).value<Status>(), Status::Ok);
        }

        // The password works for a lookup, and is in none of our files.
        child<QAction>(QStringLiteral("mnuSource7"))->trigger();
        get(QStringLiteral("W1AW"));
        QTRY_COMPARE(m_root->lists().model(1)->rowCount(), 1);
        stop();
        QVERIFY(QFile::exists(file(lookup::LookupCache::fileName())));
        QCOMPARE(filesHolding(m_dir->path(), secret), QStringList());
        QCOMPARE(filesHolding(g_home, secret), QStringList());
    }

    void accountsTestButton_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("down");
        QTest::addColumn<QString>("said");
        QTest::newRow("account accepted") << "Secr3t-Pa55" << false
                                          << "Logged in. Subscription: Wed Jan 1 12:34:03 2031. Lookups today: 123.";
        QTest::newRow("password refused") << "wrong" << false << "Refused: Username/password incorrect";
        QTest::newRow("service down") << "Secr3t-Pa55" << true << "Could not be reached: ";
    }
    void accountsTestButton()
    {
        QFETCH(QString, password);
        QFETCH(bool, down);
        QFETCH(QString, said);
        if (down)
            m_player->setMode(Source::Qrz, Mode::Down);
        QVERIFY(start());
        QPointer<gui::AccountsDialog> dialog = openAccounts();
        QVERIFY(dialog);
        QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("txtUserQRZ")), QStringLiteral("k1abc"));
        QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("txtPasswordQRZ")), password);
        clickButton(dialog, QStringLiteral("cmdTestQRZ"));
        auto *result = dialog->findChild<QLabel *>(QStringLiteral("lblTestQRZ"));
        QTRY_VERIFY2(result->text().startsWith(said), qPrintable(result->text()));
        if (!down && password == u"Secr3t-Pa55")
            test::screenshot(dialog, QStringLiteral("accounts-test"));
        QCOMPARE(m_player->logins(Source::Qrz), down ? 0 : 1);
        // A test stores nothing.
        dialog->reject();
        QVERIFY(!m_store->contains(u"Sources/QRZ/User"_qs));
        QVERIFY(!m_root->credentials().knownPassword(Source::Qrz, u"k1abc"_qs));
    }

    void accountsDialogKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("kept");
        QTest::newRow("Enter keeps") << int(Qt::Key_Return) << true;
        QTest::newRow("Escape drops") << int(Qt::Key_Escape) << false;
    }
    void accountsDialogKeys()
    {
        QFETCH(int, key);
        QFETCH(bool, kept);
        QVERIFY(start());
        QPointer<gui::AccountsDialog> dialog = openAccounts();
        QVERIFY(dialog);
        QTRY_VERIFY(dialog->isVisible());
        auto *days = dialog->findChild<QSpinBox *>(QStringLiteral("spnFreshDays"));
        days->setValue(7);
        // HamCall moved to the top of the fallback order.
        auto *order = dialog->findChild<QListWidget *>(QStringLiteral("lstFallback"));
        const QList<QListWidgetItem *> hamCall = order->findItems(QStringLiteral("HamCall.net"), Qt::MatchExactly);
        QCOMPARE(hamCall.size(), 1);
        order->setCurrentItem(hamCall.first());
        while (order->currentRow() > 0)
            clickButton(dialog, QStringLiteral("cmdUp"));
        days->setFocus();
        QTest::keyClick(days, Qt::Key(key));
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_store->value(u"Sources/Cache/FreshDays"_qs).toInt(), kept ? 7 : 90);
        QCOMPARE(m_root->session().sources().cacheFreshDays(), kept ? 7 : 90);
        const QString savedOrder = m_store->value(u"Sources/Fallback/Order"_qs).toString();
        QCOMPARE(savedOrder.startsWith(QStringLiteral("HamCall,")), kept);
    }

    void clearCacheCommand()
    {
        QVERIFY(start());
        lookup::LookupCache *cache = m_root->lookupCache();
        QVERIFY(cache && cache->isOpen());
        for (const char *call : {"W1AW", "K2XX"})
            QVERIFY(cache->store(QString::fromLatin1(call), Source::Qrz, lookup::Via::Page, lookup::LookupResult()));
        QAction *clear = child<QAction>(QStringLiteral("mnuClearCache"));
        QVERIFY(clear->isEnabled());
        clear->trigger();
        QCOMPARE(cache->count(), 0);
        QCOMPARE(note(), QStringLiteral("Lookup cache cleared: 2 results removed"));
    }
};

int main(int argc, char *argv[])
{
    // Never the user's own settings or data folder.
    QTemporaryDir home;
    g_home = home.path();
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestServiceWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_servicewindow.moc"
