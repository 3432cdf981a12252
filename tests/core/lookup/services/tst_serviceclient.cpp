// SPDX-License-Identifier: GPL-3.0-or-later
// The data-service clients against a local server that plays the four
// services: every lookup ends in a record or a clear error, never a hang.
#include "support/ServicePlayer.h"

#include "core/lookup/services/ServiceClient.h"

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTest>

using namespace marvik::lookup;
using Mode = ServicePlayer::Mode;

namespace {

constexpr int kTransferTimeoutMs = 800;

} // namespace

class TestServiceClient : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void lookups_data();
    void lookups();
    void sessionKeptAndRenewed_data();
    void sessionKeptAndRenewed();
    void logInAloneReportsCounters();
    void passwordOnlyInThePostedForm();
    void newLookupReplacesThePending();

private:
    ServiceClient *client(Source service, const QString &password = u"secret"_qs);

    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<ServicePlayer> m_player;
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<ServiceClient> m_client;
};

void TestServiceClient::init()
{
    m_server = std::make_unique<CallbookServer>();
    QVERIFY(m_server->isListening());
    m_player = std::make_unique<ServicePlayer>(*m_server);
    m_network = std::make_unique<QNetworkAccessManager>();
    for (Source s : {Source::Qrz, Source::QrzCq, Source::HamQth})
        m_player->setAccount(s, u"k1abc"_qs, u"secret"_qs);
}

void TestServiceClient::cleanup()
{
    m_client.reset();
    m_network.reset();
    m_player.reset();
    m_server.reset();
}

ServiceClient *TestServiceClient::client(Source service, const QString &password)
{
    m_client = std::make_unique<ServiceClient>(service, m_network.get());
    m_client->setServiceHost(m_server->base());
    m_client->setAccount(u"k1abc"_qs, password);
    m_client->setTransferTimeout(kTransferTimeoutMs);
    return m_client.get();
}

void TestServiceClient::lookups_data()
{
    QTest::addColumn<Source>("service");
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("call");
    QTest::addColumn<ServiceError>("error");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("logins");
    QTest::addColumn<int>("lookups");

    const struct
    {
        Source service;
        const char *label;
        const char *name;
    } services[] = {{Source::Qrz, "QRZ", "ARRL HQ OPERATORS CLUB"},
                    {Source::QrzCq, "QRZCQ", "ARRL HQ Operators Club"},
                    {Source::HamQth, "HamQTH", "ARRL HQ Operators Club"}};
    for (const auto &s : services) {
        const QByteArray l(s.label);
        QTest::newRow(QByteArray(l + ", log-in and lookup").constData()) << s.service << Mode::Normal << u"secret"_qs << u"W1AW"_qs
                                                 << ServiceError::None << QString::fromLatin1(s.name) << 1 << 1;
        QTest::newRow(QByteArray(l + ", not found").constData()) << s.service << Mode::Normal << u"secret"_qs << u"W9QQQ"_qs
                                         << ServiceError::NotFound << QString() << 1 << 1;
        QTest::newRow(QByteArray(l + ", bad password: no lookup sent").constData()) << s.service << Mode::Normal << u"wrong"_qs << u"W1AW"_qs
                                                            << ServiceError::BadLogin << QString() << 1 << 0;
        QTest::newRow(QByteArray(l + ", no password: nothing sent").constData()) << s.service << Mode::Normal << QString() << u"W1AW"_qs
                                                         << ServiceError::NoAccount << QString() << 0 << 0;
        // One new log-in per lookup, then the service's word stands.
        QTest::newRow(QByteArray(l + ", forgets every session").constData()) << s.service << Mode::ForgetsSessions << u"secret"_qs
                                                     << u"W1AW"_qs << ServiceError::SessionExpired << QString() << 2
                                                     << 2;
        QTest::newRow(QByteArray(l + ", answer cut off").constData()) << s.service << Mode::Malformed << u"secret"_qs << u"W1AW"_qs
                                              << ServiceError::Malformed << QString() << 1 << 1;
        QTest::newRow(QByteArray(l + ", oversized answer").constData()) << s.service << Mode::Oversized << u"secret"_qs << u"W1AW"_qs
                                                << ServiceError::Unreachable << QString() << 1 << 0;
        QTest::newRow(QByteArray(l + ", down").constData()) << s.service << Mode::Down << u"secret"_qs << u"W1AW"_qs
                                    << ServiceError::Unreachable << QString() << 0 << 0;
        QTest::newRow(QByteArray(l + ", never answers").constData()) << s.service << Mode::Silent << u"secret"_qs << u"W1AW"_qs
                                             << ServiceError::Unreachable << QString() << 0 << 0;
    }
    QTest::newRow("QRZ, non-subscriber") << Source::Qrz << Mode::NonSubscriber << u"secret"_qs << u"W1AW"_qs
                                         << ServiceError::None << u"ARRL HQ OPERATORS CLUB"_qs << 1 << 1;
    QTest::newRow("QRZ, quota used up") << Source::Qrz << Mode::QuotaUsedUp << u"secret"_qs << u"W1AW"_qs
                                        << ServiceError::QuotaExceeded << QString() << 1 << 1;
    QTest::newRow("QRZ, slashed zero asked as a zero") << Source::Qrz << Mode::Normal << u"secret"_qs
                                                       << u"W\u00D8XYZ"_qs << ServiceError::NotFound << QString() << 1
                                                       << 1;
    QTest::newRow("Callook, no account needed") << Source::Callook << Mode::Normal << QString() << u"W1AW"_qs
                                                << ServiceError::None << u"ARRL HQ OPERATORS CLUB"_qs << 0 << 1;
    QTest::newRow("Callook, invalid call") << Source::Callook << Mode::Normal << QString() << u"G4XYZ"_qs
                                           << ServiceError::NotFound << QString() << 0 << 1;
    QTest::newRow("Callook, updating") << Source::Callook << Mode::Updating << QString() << u"W1AW"_qs
                                       << ServiceError::Updating << QString() << 0 << 1;
    QTest::newRow("Callook, never answers") << Source::Callook << Mode::Silent << QString() << u"W1AW"_qs
                                            << ServiceError::Unreachable << QString() << 0 << 0;
}

void TestServiceClient::lookups()
{
    QFETCH(Source, service);
    QFETCH(Mode, mode);
    QFETCH(QString, password);
    QFETCH(QString, call);
    QFETCH(ServiceError, error);
    QFETCH(QString, name);
    QFETCH(int, logins);
    QFETCH(int, lookups);

    m_player->setMode(service, mode);
    ServiceClient *c = client(service, password);
    QSignalSpy answered(c, &ServiceClient::answered);
    c->lookUp(call);
    QTRY_COMPARE_WITH_TIMEOUT(answered.size(), 1, 5 * kTransferTimeoutMs);
    QCOMPARE(answered.at(0).at(0).toString(), call);
    const auto answer = answered.at(0).at(1).value<ServiceAnswer>();
    QCOMPARE(answer.error, error);
    QCOMPARE(answer.result.name, name);
    QCOMPARE(answer.record, error == ServiceError::None);
    QCOMPARE(answer.limited, mode == Mode::NonSubscriber);
    if (error != ServiceError::None)
        QVERIFY2(!answer.message.isEmpty(), "a failure always says why");
    QVERIFY(!c->isBusy());
    if (mode == Mode::Down || mode == Mode::Silent || mode == Mode::Oversized) {
        // The first request failed; nothing was sent after it (the network
        // layer may send a dropped request once more).
        const QList<CallbookServer::Request> sent = m_server->fullRequests();
        QVERIFY(!sent.isEmpty());
        for (const CallbookServer::Request &r : sent)
            QCOMPARE(r.target + QString::fromLatin1(r.method), sent.first().target + QString::fromLatin1(sent.first().method));
    } else {
        QCOMPARE(m_player->logins(service), logins);
        QCOMPARE(m_player->lookups(service), lookups);
    }
    QTest::qWait(50);
    QCOMPARE(answered.size(), 1); // nothing more comes afterwards
}

void TestServiceClient::sessionKeptAndRenewed_data()
{
    QTest::addColumn<Source>("service");
    QTest::newRow("QRZ") << Source::Qrz;
    QTest::newRow("QRZCQ") << Source::QrzCq;
    QTest::newRow("HamQTH") << Source::HamQth;
}

void TestServiceClient::sessionKeptAndRenewed()
{
    QFETCH(Source, service);
    ServiceClient *c = client(service);
    QSignalSpy answered(c, &ServiceClient::answered);
    const auto lookUp = [&](const QString &call) {
        c->lookUp(call);
        return answered.wait(5000) ? answered.takeLast().at(1).value<ServiceAnswer>() : ServiceAnswer();
    };
    QCOMPARE(lookUp(u"W1AW"_qs).error, ServiceError::None);
    QCOMPARE(lookUp(u"W1AW"_qs).error, ServiceError::None);
    QCOMPARE(m_player->logins(service), 1); // the session serves both
    const QString firstKey = c->sessionKey();

    // The service forgets the session in the middle of a run: the client
    // logs in again once, and the lookup still succeeds.
    m_player->expireSessions(service);
    const ServiceAnswer renewed = lookUp(u"W1AW"_qs);
    QCOMPARE(renewed.error, ServiceError::None);
    QCOMPARE(renewed.result.name.isEmpty(), false);
    QCOMPARE(m_player->logins(service), 2);
    QCOMPARE(m_player->lookups(service), 4);
    QVERIFY(c->sessionKey() != firstKey);
}

void TestServiceClient::logInAloneReportsCounters()
{
    ServiceClient *c = client(Source::Qrz);
    QSignalSpy loggedIn(c, &ServiceClient::loggedIn);
    QSignalSpy counters(c, &ServiceClient::countersChanged);
    c->logIn();
    QVERIFY(loggedIn.wait(5000));
    const auto answer = loggedIn.at(0).at(0).value<ServiceAnswer>();
    QCOMPARE(answer.error, ServiceError::None);
    QCOMPARE(c->lookupsToday(), 123);
    QCOMPARE(c->subscription(), u"Wed Jan 1 12:34:03 2031"_qs);
    QCOMPARE(counters.size(), 1);

    // The count of every lookup answer follows.
    QSignalSpy answered(c, &ServiceClient::answered);
    c->lookUp(u"W1AW"_qs);
    QVERIFY(answered.wait(5000));
    QCOMPARE(c->lookupsToday(), 124);
    QCOMPARE(counters.size(), 2);
    QCOMPARE(m_player->logins(Source::Qrz), 1);

    client(Source::Qrz, u"wrong"_qs);
    QSignalSpy refused(m_client.get(), &ServiceClient::loggedIn);
    m_client->logIn();
    QVERIFY(refused.wait(5000));
    QCOMPARE(refused.at(0).at(0).value<ServiceAnswer>().error, ServiceError::BadLogin);
    QCOMPARE(refused.at(0).at(0).value<ServiceAnswer>().message, u"Username/password incorrect"_qs);
}

void TestServiceClient::passwordOnlyInThePostedForm()
{
    for (Source service : {Source::Qrz, Source::QrzCq, Source::HamQth}) {
        ServiceClient *c = client(service, u"p&ss=w+rd secret"_qs);
        m_player->setAccount(service, u"k1abc"_qs, u"p&ss=w+rd secret"_qs);
        QSignalSpy answered(c, &ServiceClient::answered);
        c->lookUp(u"W1AW"_qs);
        QVERIFY(answered.wait(5000));
        // The form carried the password intact, since the log-in succeeded.
        QCOMPARE(answered.at(0).at(1).value<ServiceAnswer>().error, ServiceError::None);
    }
    int posts = 0;
    for (const CallbookServer::Request &r : m_server->fullRequests()) {
        QVERIFY2(!r.target.contains(u"secret"), qPrintable(r.target));
        QVERIFY2(!r.target.contains(u"w%2Brd"), qPrintable(r.target));
        if (r.method == "POST") {
            ++posts;
            QVERIFY(r.body.contains("secret"));
        }
    }
    QCOMPARE(posts, 3);
}

void TestServiceClient::newLookupReplacesThePending()
{
    m_player->setMode(Source::Callook, Mode::Normal);
    ServiceClient *c = client(Source::Callook);
    QSignalSpy answered(c, &ServiceClient::answered);
    c->lookUp(u"G4XYZ"_qs);
    c->lookUp(u"W1AW"_qs);
    QVERIFY(answered.wait(5000));
    QTest::qWait(100);
    QCOMPARE(answered.size(), 1);
    QCOMPARE(answered.at(0).at(0).toString(), u"W1AW"_qs);
    QCOMPARE(answered.at(0).at(1).value<ServiceAnswer>().error, ServiceError::None);
}

QTEST_GUILESS_MAIN(TestServiceClient)
#include "tst_serviceclient.moc"
