// SPDX-License-Identifier: GPL-3.0-or-later
// Passwords in the desktop keyring, or for this run only when there is
// none; and never in a file of Marvik's. Runs twice: inside a private
// session with a real keyring (MARVIK_KEYRING_EXPECTED=1), and with no
// session bus at all.
#include "support/ServicePlayer.h"
#include "support/TestFiles.h"

#include "core/lookup/services/CredentialStore.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik::lookup;
using Status = CredentialStore::Status;

namespace {

const QString kPassword = u"Walrus-Topaz-2031"_qs;

bool keyringExpected()
{
    return qEnvironmentVariableIntValue("MARVIK_KEYRING_EXPECTED") == 1;
}

} // namespace

class TestCredentials : public QObject
{
    Q_OBJECT

private slots:
    void storeReadForget();
    void runOnlyPassword();
    void cliTakesThePasswordFromTheKeyring();

private:
    Status read(CredentialStore &store, Source source, const QString &user, QString *password = nullptr);
};

Status TestCredentials::read(CredentialStore &store, Source source, const QString &user, QString *password)
{
    QSignalSpy spy(&store, &CredentialStore::passwordRead);
    store.readPassword(source, user);
    if (!spy.wait(10000))
        return Status::NoKeyring;
    if (password)
        *password = spy.at(0).at(2).toString();
    return spy.at(0).at(3).value<Status>();
}

void TestCredentials::storeReadForget()
{
    CredentialStore store;
    store.setKeyringService(u"Marvik test"_qs);
    QSignalSpy stored(&store, &CredentialStore::passwordStored);
    store.storePassword(Source::Qrz, u"k1abc"_qs, kPassword);
    QVERIFY(stored.wait(10000));
    const Status status = stored.at(0).at(2).value<Status>();
    if (!keyringExpected()) {
        // No keyring: the caller hears so, and nothing is kept.
        QCOMPARE(status, Status::NoKeyring);
        QVERIFY(!stored.at(0).at(3).toString().isEmpty());
        QVERIFY(!store.keyringAvailable());
        QVERIFY(!store.knownPassword(Source::Qrz, u"k1abc"_qs));
        QCOMPARE(read(store, Source::Qrz, u"k1abc"_qs), Status::NoKeyring);
        return;
    }
    QCOMPARE(status, Status::Ok);
    QVERIFY(store.keyringAvailable());

    // Another run of the program finds it there.
    CredentialStore later;
    later.setKeyringService(u"Marvik test"_qs);
    QString password;
    QCOMPARE(read(later, Source::Qrz, u"k1abc"_qs, &password), Status::Ok);
    QCOMPARE(password, kPassword);
    // Filed per service and user: another account has none.
    QCOMPARE(read(later, Source::QrzCq, u"k1abc"_qs), Status::NotFound);
    QCOMPARE(read(later, Source::Qrz, u"k1abd"_qs), Status::NotFound);

    QSignalSpy forgotten(&later, &CredentialStore::passwordForgotten);
    later.forgetPassword(Source::Qrz, u"k1abc"_qs);
    QVERIFY(forgotten.wait(10000));
    QCOMPARE(forgotten.at(0).at(2).value<Status>(), Status::Ok);
    QVERIFY(!later.knownPassword(Source::Qrz, u"k1abc"_qs));
    CredentialStore third;
    third.setKeyringService(u"Marvik test"_qs);
    QCOMPARE(read(third, Source::Qrz, u"k1abc"_qs), Status::NotFound);
}

void TestCredentials::runOnlyPassword()
{
    CredentialStore store;
    store.setKeyringService(u"Marvik test"_qs);
    store.keepForThisRun(Source::HamQth, u"k1abc"_qs, kPassword);
    QCOMPARE(store.knownPassword(Source::HamQth, u"k1abc"_qs).value_or(QString()), kPassword);
    // Answered from memory, through the event loop like any other read.
    QString password;
    QCOMPARE(read(store, Source::HamQth, u"k1abc"_qs, &password), Status::Ok);
    QCOMPARE(password, kPassword);
    // Memory only: the next run does not know it.
    CredentialStore next;
    next.setKeyringService(u"Marvik test"_qs);
    QVERIFY(!next.knownPassword(Source::HamQth, u"k1abc"_qs));
    QCOMPARE(read(next, Source::HamQth, u"k1abc"_qs), keyringExpected() ? Status::NotFound : Status::NoKeyring);
}

void TestCredentials::cliTakesThePasswordFromTheKeyring()
{
    QTemporaryDir config;
    QTemporaryDir data;
    CallbookServer server;
    ServicePlayer player(server);
    player.setAccount(Source::Qrz, u"k1abc"_qs, kPassword);
    {
        SourceSettings s = player.settings();
        s.setUserName(Source::Qrz, u"k1abc"_qs);
        QSettings store(config.filePath(u"Marvik/Marvik.conf"_qs), QSettings::IniFormat);
        s.save(store);
    }
    CredentialStore store; // Marvik's own keyring service, as marvik-cli reads it
    QSignalSpy stored(&store, &CredentialStore::passwordStored);
    store.storePassword(Source::Qrz, u"k1abc"_qs, kPassword);
    QVERIFY(stored.wait(10000));

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_qs, config.path());
    QProcess cli;
    cli.setProcessEnvironment(env);
    cli.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"),
              {u"--data-dir"_qs, data.path(), u"lookup"_qs, u"--source"_qs, u"qrz"_qs, u"W1AW"_qs});
    QSignalSpy finished(&cli, &QProcess::finished);
    QVERIFY(finished.wait(60000));
    const QByteArray out = cli.readAllStandardOutput();
    const QByteArray err = cli.readAllStandardError();
    if (keyringExpected()) {
        QCOMPARE(cli.exitCode(), 0);
        const QJsonObject o = QJsonDocument::fromJson(out).object();
        QCOMPARE(o.value(u"via"_qs).toString(), u"service"_qs);
        QCOMPARE(o.value(u"name"_qs).toString(), u"ARRL HQ OPERATORS CLUB"_qs);
        QCOMPARE(player.logins(Source::Qrz), 1);
        QSignalSpy forgotten(&store, &CredentialStore::passwordForgotten);
        store.forgetPassword(Source::Qrz, u"k1abc"_qs);
        QVERIFY(forgotten.wait(10000));
    } else {
        QCOMPARE(cli.exitCode(), 1);
        QVERIFY2(err.contains("keyring"), err.constData());
        QCOMPARE(player.logins(Source::Qrz), 0);
    }
    // The password is in no file of the data folder or the settings folder.
    for (const QString &folder : {config.path(), data.path()}) {
        QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        int files = 0;
        while (it.hasNext()) {
            const QString path = it.next();
            ++files;
            QVERIFY2(!marvik::test::readBytes(path).contains(kPassword.toUtf8()), qPrintable(path));
        }
        QVERIFY(files > 0); // the search looked at something: the settings, the cache, the cookies
    }
}

QTEST_GUILESS_MAIN(TestCredentials)
#include "tst_credentials.moc"
