// SPDX-License-Identifier: GPL-3.0-or-later
// marvik-cli's data-service commands, run as a script runs them: saved
// answers read into the page readers' JSON, live lookups by page, service,
// fallback and cache, and passwords that stay out of Marvik's files.
#include "support/ServicePlayer.h"
#include "support/TestFiles.h"

#include "core/lookup/services/LookupCache.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik::lookup;
using Mode = ServicePlayer::Mode;

namespace {

const QString kPassword = u"Zebra-Quokka-1914"_qs;

struct CliRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
    QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

CliRun runCli(const QStringList &args, const QProcessEnvironment &env = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), args);
    // Spin the event loop, not just wait: the server lives in this process.
    QSignalSpy finished(&process, &QProcess::finished);
    if (!finished.wait(60000))
        process.kill();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class TestServiceCli : public QObject
{
    Q_OBJECT

private slots:
    void readService_data();
    void readService();
    void init();
    void cleanup();
    void lookupByService();
    void lookupChoicesRefused_data();
    void lookupChoicesRefused();
    void fallbackAndCache();

private:
    void saveSettings(const SourceSettings &settings);
    CliRun lookup(const QStringList &args);

    std::unique_ptr<QTemporaryDir> m_config;
    std::unique_ptr<QTemporaryDir> m_data;
    std::unique_ptr<QTemporaryDir> m_private;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<ServicePlayer> m_player;
    QProcessEnvironment m_env;
};

void TestServiceCli::readService_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("event");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");

    QTest::newRow("QRZ record") << u"qrz"_qs << u"w1aw"_qs << u"qrz_w1aw.xml"_qs << 0 << u"GotPage"_qs
                                << u"ARRL HQ OPERATORS CLUB"_qs << QString();
    QTest::newRow("HamQTH record, call written in lower case") << u"hamqth"_qs << u"W1AW"_qs << u"hamqth_w1aw.xml"_qs
                                                               << 0 << u"GotPage"_qs << u"ARRL HQ Operators Club"_qs
                                                               << QString();
    QTest::newRow("Callook record") << u"callook"_qs << u"DE W1AW-5"_qs << u"callook_w1aw.json"_qs << 0
                                    << u"GotPage"_qs << u"ARRL HQ OPERATORS CLUB"_qs << QString();
    QTest::newRow("QRZ not found") << u"qrz"_qs << u"W9XYZ"_qs << u"qrz_notfound.xml"_qs << 1 << u"CallNotFound"_qs
                                   << QString() << u"marvik-cli: QRZ.com: Not found: W9XYZ"_qs;
    QTest::newRow("Callook updating") << u"callook"_qs << u"W1AW"_qs << u"callook_updating.json"_qs << 1
                                      << u"ServiceUpdating"_qs << QString() << u"marvik-cli: CALLOOK.INFO: UPDATING"_qs;
    QTest::newRow("a log-in answer holds no record") << u"hamqth"_qs << u"W1AW"_qs << u"hamqth_login.xml"_qs << 1
                                                     << u"ReaderError"_qs << QString()
                                                     << u"marvik-cli: HamQTH.com: a log-in answer; it holds no record"_qs;
    QTest::newRow("the answer is another call's") << u"qrz"_qs << u"K1ABC"_qs << u"qrz_w1aw.xml"_qs << 1
                                                  << u"PageNotFound"_qs << QString()
                                                  << u"marvik-cli: QRZ.com: the answer is for W1AW"_qs;
    QTest::newRow("a web page is no service answer") << u"qrz"_qs << u"W1AW"_qs << u"../lookup/qrz_found.html"_qs << 1
                                                     << u"ReaderError"_qs << QString() << QString();
    QTest::newRow("eHam has no service") << u"eham"_qs << u"W1AW"_qs << u"qrz_w1aw.xml"_qs << 2 << QString()
                                         << QString() << QString();
}

void TestServiceCli::readService()
{
    QFETCH(QString, service);
    QFETCH(QString, call);
    QFETCH(QString, file);
    QFETCH(int, exitCode);
    QFETCH(QString, event);
    QFETCH(QString, name);
    QFETCH(QString, message);
    const CliRun r = runCli({u"read-service"_qs, service, call, QStringLiteral(MARVIK_TEST_DATA "/services/") + file});
    QCOMPARE(r.exitCode, exitCode);
    if (exitCode == 2)
        return;
    const QJsonObject o = r.json();
    // The JSON of read: the same twelve keys.
    QCOMPARE(o.keys().size(), 12);
    QCOMPARE(o.value(u"event"_qs).toString(), event);
    QCOMPARE(o.value(u"name"_qs).toString(), name);
    const QString err = QString::fromUtf8(r.err).trimmed();
    if (exitCode == 0) {
        QVERIFY(err.isEmpty());
    } else {
        QVERIFY(!err.contains(u'\n'));
        if (!message.isEmpty())
            QCOMPARE(err, message);
        else
            QVERIFY(err.startsWith(u"marvik-cli: QRZ.com: "));
    }
}

void TestServiceCli::init()
{
    m_config = std::make_unique<QTemporaryDir>();
    m_data = std::make_unique<QTemporaryDir>();
    m_private = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<CallbookServer>();
    m_player = std::make_unique<ServicePlayer>(*m_server);
    for (Source s : {Source::Qrz, Source::QrzCq, Source::HamQth})
        m_player->setAccount(s, u"k1abc"_qs, kPassword);
    CallbookServer::Answer found;
    found.body = ServicePlayer::sample(u"../lookup/qrz_found.html"_qs);
    m_server->answer(u"/db/W1AW"_qs, found);
    m_env = QProcessEnvironment::systemEnvironment();
    m_env.insert(u"XDG_CONFIG_HOME"_qs, m_config->path());
    // No keyring here, and never the user's own.
    m_env.insert(u"DBUS_SESSION_BUS_ADDRESS"_qs, u"unix:path=/nonexistent"_qs);
    QVERIFY(marvik::test::writeBytes(m_private->filePath(u"password"_qs), kPassword.toUtf8() + "\n"));
    saveSettings(m_player->settings());
}

void TestServiceCli::cleanup()
{
    // Whatever ran, the password is in no file of Marvik's.
    for (const QString &folder : {m_config->path(), m_data->path()}) {
        QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QVERIFY2(!marvik::test::readBytes(path).contains(kPassword.toUtf8()), qPrintable(path));
        }
    }
    m_player.reset();
    m_server.reset();
}

void TestServiceCli::saveSettings(const SourceSettings &settings)
{
    QSettings store(m_config->filePath(u"Marvik/Marvik.conf"_qs), QSettings::IniFormat);
    settings.save(store);
}

CliRun TestServiceCli::lookup(const QStringList &args)
{
    return runCli(QStringList{u"--data-dir"_qs, m_data->path(), u"lookup"_qs} + args, m_env);
}

void TestServiceCli::lookupByService()
{
    const QString passwordFile = m_private->filePath(u"password"_qs);
    CliRun r = lookup({u"--source"_qs, u"hamqth"_qs, u"--user"_qs, u"k1abc"_qs, u"--password-file"_qs, passwordFile,
                       u"w1aw"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.err, QByteArray());
    QJsonObject o = r.json();
    QCOMPARE(o.value(u"event"_qs).toString(), u"GotPage"_qs);
    QCOMPARE(o.value(u"name"_qs).toString(), u"ARRL HQ Operators Club"_qs);
    QCOMPARE(o.value(u"source"_qs).toString(), u"hamqth"_qs);
    QCOMPARE(o.value(u"via"_qs).toString(), u"service"_qs);
    QCOMPARE(o.value(u"cached"_qs).toBool(), false);
    QCOMPARE(m_player->logins(Source::HamQth), 1);

    // The same source by its page, and QRZ without its account: by its page.
    r = lookup({u"--source"_qs, u"qrz"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.json().value(u"via"_qs).toString(), u"page"_qs);
    QCOMPARE(r.json().value(u"name"_qs).toString(), u"ARRL HQ Operators Club"_qs);

    // A user name in the settings, no keyring and no password file: the
    // service cannot be asked, and says why on one line.
    SourceSettings s = m_player->settings();
    s.setUserName(Source::Qrz, u"k1abc"_qs);
    saveSettings(s);
    r = lookup({u"--source"_qs, u"qrz"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 1);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.err.contains("no account set up") && r.err.contains("keyring"), r.err.constData());
    QCOMPARE(r.err.count('\n'), 1);
    r = lookup({u"--source"_qs, u"qrz"_qs, u"--password-file"_qs, passwordFile, u"W9ZZZ"_qs});
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(r.err.contains("QRZ.com service: not found (Not found: W9ZZZ)"), r.err.constData());
    r = lookup({u"--source"_qs, u"qrz"_qs, u"--via"_qs, u"page"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.json().value(u"via"_qs).toString(), u"page"_qs);
}

void TestServiceCli::lookupChoicesRefused_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("HamQTH has no page") << QStringList{u"--source"_qs, u"hamqth"_qs, u"--via"_qs, u"page"_qs, u"W1AW"_qs};
    QTest::newRow("HamCall has no service") << QStringList{u"--source=hamcall"_qs, u"--via=service"_qs, u"W1AW"_qs};
    QTest::newRow("no such way") << QStringList{u"--via"_qs, u"telegraph"_qs, u"--source"_qs, u"qrz"_qs, u"W1AW"_qs};
    QTest::newRow("a password without a user") << QStringList{u"--source"_qs, u"qrzcq"_qs, u"--password-file"_qs,
                                                              u"/dev/null"_qs, u"W1AW"_qs};
    QTest::newRow("two callsigns") << QStringList{u"W1AW"_qs, u"K1ABC"_qs};
}

void TestServiceCli::lookupChoicesRefused()
{
    QFETCH(QStringList, args);
    const CliRun r = lookup(args);
    QCOMPARE(r.exitCode, 2);
    QVERIFY(r.out.isEmpty());
    QCOMPARE(r.err.count('\n'), 1);
    QVERIFY(m_server->fullRequests().isEmpty());
}

void TestServiceCli::fallbackAndCache()
{
    // Callook down; the user's order goes on to QRZ's page.
    m_player->setMode(Source::Callook, Mode::Down);
    SourceSettings s = m_player->settings();
    s.setFallbackOrder({Source::Qrz});
    saveSettings(s);
    CliRun r = lookup({u"--source"_qs, u"callook"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 1); // without --fallback the chosen source alone is asked
    r = lookup({u"--source"_qs, u"callook"_qs, u"--fallback"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.json().value(u"source"_qs).toString(), u"qrz"_qs);
    QCOMPARE(r.json().value(u"via"_qs).toString(), u"page"_qs);

    // Everything down now: the cache answers, with its date.
    m_server->answer(u"/db/W1AW"_qs, CallbookServer::Answer{{}, "text/html", 503, 0, false, false, 0, {}});
    r = lookup({u"--source"_qs, u"callook"_qs, u"--fallback"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 0);
    QJsonObject o = r.json();
    QCOMPARE(o.value(u"cached"_qs).toBool(), true);
    QCOMPARE(o.value(u"source"_qs).toString(), u"qrz"_qs);
    const QDateTime at = QDateTime::fromString(o.value(u"cachedAt"_qs).toString(), Qt::ISODate);
    QVERIFY(at.isValid());
    QVERIFY(qAbs(at.secsTo(QDateTime::currentDateTimeUtc())) < 120);

    // Offline: the cache alone, no request at all.
    const qsizetype requests = m_server->fullRequests().size();
    r = lookup({u"--offline"_qs, u"--source"_qs, u"hamqth"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.json().value(u"cached"_qs).toBool(), true);
    QCOMPARE(r.json().value(u"name"_qs).toString(), u"ARRL HQ Operators Club"_qs);
    r = lookup({u"--offline"_qs, u"--source"_qs, u"qrz"_qs, u"K9NEW"_qs});
    QCOMPARE(r.exitCode, 1);
    QVERIFY(r.err.contains("not in the lookup cache"));
    QCOMPARE(m_server->fullRequests().size(), requests);

    r = runCli({u"--data-dir"_qs, m_data->path(), u"clear-cache"_qs}, m_env);
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("1\n"));
    r = lookup({u"--offline"_qs, u"--source"_qs, u"qrz"_qs, u"W1AW"_qs});
    QCOMPARE(r.exitCode, 1);
}

QTEST_GUILESS_MAIN(TestServiceCli)
#include "tst_servicecli.moc"
