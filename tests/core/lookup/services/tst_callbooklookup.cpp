// SPDX-License-Identifier: GPL-3.0-or-later
// The lookup that goes from source to source: the first that knows the call
// answers, once; every failure says why; the cache answers when all fail;
// and every lookup ends within its deadline.
#include "support/ServicePlayer.h"

#include "core/lookup/services/CallbookLookup.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"
#include "core/lookup/services/ServiceClient.h"

#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik::lookup;
using Mode = ServicePlayer::Mode;

namespace {

constexpr Source kServices[] = {Source::Qrz, Source::QrzCq, Source::HamQth, Source::Callook};

QByteArray page(const QString &file)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + file);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestCallbookLookup : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fallback_data();
    void fallback();
    void quotaUsedUpIsNotAskedAgainToday();
    void deadlineEndsASlowLookup();
    void offlineAsksNoSource();
    void passwordFromTheStore();
    void defaultOrderTakesReadySourcesOnly();

private:
    CallbookLookup *makeLookup(const SourceSettings &settings);
    SourceSettings accounts() const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<ServicePlayer> m_player;
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<CredentialStore> m_credentials;
    std::unique_ptr<LookupCache> m_cache;
    std::unique_ptr<CallbookLookup> m_lookup;
};

void TestCallbookLookup::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<CallbookServer>();
    m_player = std::make_unique<ServicePlayer>(*m_server);
    m_network = std::make_unique<QNetworkAccessManager>();
    m_credentials = std::make_unique<CredentialStore>();
    m_cache = std::make_unique<LookupCache>(m_dir->filePath(LookupCache::fileName()));
    QVERIFY(m_cache->isOpen());
    for (Source s : {Source::Qrz, Source::QrzCq, Source::HamQth}) {
        m_player->setAccount(s, u"k1abc"_qs, u"secret"_qs);
        m_credentials->keepForThisRun(s, u"k1abc"_qs, u"secret"_qs);
    }
    CallbookServer::Answer found;
    found.body = page(u"qrz_found.html"_qs);
    m_server->answer(u"/db/W1AW"_qs, found);
}

void TestCallbookLookup::cleanup()
{
    m_lookup.reset();
    m_network.reset();
    m_player.reset();
    m_server.reset();
}

SourceSettings TestCallbookLookup::accounts() const
{
    SourceSettings s = m_player->settings();
    for (Source source : {Source::Qrz, Source::QrzCq, Source::HamQth})
        s.setUserName(source, u"k1abc"_qs);
    return s;
}

CallbookLookup *TestCallbookLookup::makeLookup(const SourceSettings &settings)
{
    m_lookup = std::make_unique<CallbookLookup>(m_network.get(), m_credentials.get(), m_cache.get());
    m_lookup->setSettings(settings);
    m_lookup->setSourceTimeout(700);
    m_lookup->setDeadline(10000);
    return m_lookup.get();
}

void TestCallbookLookup::fallback_data()
{
    QTest::addColumn<Source>("chosen");
    QTest::addColumn<int>("chosenVia"); // -1: as the settings say
    QTest::addColumn<QList<Source>>("order"); // empty: no fallback
    QTest::addColumn<QList<Mode>>("modes"); // QRZ, QRZCQ, HamQTH, Callook services
    QTest::addColumn<bool>("cached");       // W1AW was answered by Callook two days ago
    QTest::addColumn<int>("answeredBy");    // -1: nobody
    QTest::addColumn<Via>("answeredVia");
    QTest::addColumn<bool>("fromCache");
    QTest::addColumn<QList<FailReason>>("reasons");

    const QList<Mode> allUp{Mode::Normal, Mode::Normal, Mode::Normal, Mode::Normal};
    const QList<Source> hamQthThenCallook{Source::HamQth, Source::Callook};
    const int page = int(Via::Page);
    const int service = int(Via::Service);

    QTest::newRow("the chosen service answers") << Source::Qrz << -1 << hamQthThenCallook << allUp << false
                                                << int(Source::Qrz) << Via::Service << false << QList<FailReason>{};
    QTest::newRow("the chosen page answers") << Source::Qrz << page << hamQthThenCallook << allUp << false
                                             << int(Source::Qrz) << Via::Page << false << QList<FailReason>{};
    QTest::newRow("chosen down, the second answers")
        << Source::Qrz << -1 << hamQthThenCallook << QList<Mode>{Mode::Down, Mode::Normal, Mode::Normal, Mode::Normal}
        << false << int(Source::HamQth) << Via::Service << false << QList<FailReason>{FailReason::Unreachable};
    QTest::newRow("chosen silent: its time-out, then the second")
        << Source::Qrz << -1 << hamQthThenCallook << QList<Mode>{Mode::Silent, Mode::Normal, Mode::Normal, Mode::Normal}
        << false << int(Source::HamQth) << Via::Service << false << QList<FailReason>{FailReason::TimedOut};
    QTest::newRow("two fail, the third answers")
        << Source::QrzCq << -1 << QList<Source>{Source::Qrz, Source::HamQth, Source::Callook}
        << QList<Mode>{Mode::QuotaUsedUp, Mode::Malformed, Mode::Normal, Mode::Normal} << false
        << int(Source::HamQth) << Via::Service << false
        << QList<FailReason>{FailReason::Unreadable, FailReason::QuotaUsedUp};
    QTest::newRow("log-in refused, Callook answers")
        << Source::HamQth << -1 << QList<Source>{Source::Callook}
        << QList<Mode>{Mode::Normal, Mode::Normal, Mode::ForgetsSessions, Mode::Normal} << false
        << int(Source::Callook) << Via::Service << false << QList<FailReason>{FailReason::LoginRequired};
    QTest::newRow("page source wants a log-in, the service after it answers")
        << Source::EHam << page << QList<Source>{Source::Callook} << allUp << false << int(Source::Callook)
        << Via::Service << false << QList<FailReason>{FailReason::Unreachable};
    QTest::newRow("every source down, the cache answers")
        << Source::Qrz << service << hamQthThenCallook
        << QList<Mode>{Mode::Down, Mode::Down, Mode::Down, Mode::Updating} << true << int(Source::Callook)
        << Via::Service << true
        << QList<FailReason>{FailReason::Unreachable, FailReason::Unreachable, FailReason::Unavailable};
    QTest::newRow("every source down, nothing cached")
        << Source::Qrz << service << hamQthThenCallook
        << QList<Mode>{Mode::Down, Mode::Down, Mode::Down, Mode::Updating} << false << -1 << Via::Page << false
        << QList<FailReason>{FailReason::Unreachable, FailReason::Unreachable, FailReason::Unavailable};
    QTest::newRow("a page for a service-only source") << Source::HamQth << page << QList<Source>{} << allUp << false
                                                      << -1 << Via::Page << false
                                                      << QList<FailReason>{FailReason::Unavailable};
    QTest::newRow("a service for a page-only source") << Source::HamCall << service << QList<Source>{} << allUp
                                                      << false << -1 << Via::Page << false
                                                      << QList<FailReason>{FailReason::Unavailable};
}

void TestCallbookLookup::fallback()
{
    QFETCH(Source, chosen);
    QFETCH(int, chosenVia);
    QFETCH(QList<Source>, order);
    QFETCH(QList<Mode>, modes);
    QFETCH(bool, cached);
    QFETCH(int, answeredBy);
    QFETCH(Via, answeredVia);
    QFETCH(bool, fromCache);
    QFETCH(QList<FailReason>, reasons);

    for (int i = 0; i < 4; ++i)
        m_player->setMode(kServices[i], modes[i]);
    const QDateTime twoDaysAgo = QDateTime::currentDateTimeUtc().addDays(-2);
    if (cached) {
        LookupResult r;
        r.name = u"from the cache"_qs;
        QVERIFY(m_cache->store(u"W1AW"_qs, Source::Callook, Via::Service, r, twoDaysAgo));
    }
    SourceSettings s = accounts();
    s.setFallbackOrder(order);
    s.setHost(Source::EHam, u"http://127.0.0.1:1"_qs); // nothing listens there
    CallbookLookup *lookup = makeLookup(s);
    QSignalSpy answered(lookup, &CallbookLookup::answered);
    QSignalSpy failed(lookup, &CallbookLookup::failed);
    QSignalSpy sourceFailed(lookup, &CallbookLookup::sourceFailed);
    LookupOptions options;
    options.fallback = !order.isEmpty();
    if (chosenVia >= 0)
        options.via = Via(chosenVia);
    lookup->lookUp(u"W1AW"_qs, chosen, options);
    QCOMPARE(answered.size() + failed.size(), 0); // nothing before the event loop runs
    QTRY_COMPARE_WITH_TIMEOUT(answered.size() + failed.size(), 1, 8000);
    QVERIFY(!lookup->isBusy());

    QList<FailReason> got;
    for (const QList<QVariant> &args : sourceFailed)
        got.append(args.at(1).value<SourceFailure>().reason);
    QCOMPARE(got, reasons);
    if (answeredBy < 0) {
        QCOMPARE(failed.size(), 1);
        QCOMPARE(failed.at(0).at(1).value<QList<SourceFailure>>().size(), reasons.size());
        QCOMPARE(m_cache->count(), 0);
    } else {
        QCOMPARE(answered.size(), 1);
        const auto a = answered.at(0).at(0).value<CallbookAnswer>();
        QCOMPARE(a.callsign, u"W1AW"_qs);
        QCOMPARE(int(a.source), answeredBy);
        QCOMPARE(a.via, answeredVia);
        QCOMPARE(a.cached, fromCache);
        QVERIFY(!a.result.name.isEmpty());
        if (fromCache) {
            QCOMPARE(a.result.name, u"from the cache"_qs);
            QCOMPARE(a.cachedAt, QDateTime::fromMSecsSinceEpoch(twoDaysAgo.toMSecsSinceEpoch(), Qt::UTC));
        } else {
            // The live answer is now the cache's answer for the call.
            const std::optional<CachedResult> c = m_cache->find(u"W1AW"_qs);
            QVERIFY(c);
            QCOMPARE(int(c->source), answeredBy);
            QCOMPARE(c->result.name, a.result.name);
            QVERIFY(!c->result.pictureUrl.isEmpty());
            QVERIFY(!a.cachedAt.isValid());
        }
    }
    QTest::qWait(100);
    QCOMPARE(answered.size() + failed.size(), 1); // one answer, never a second
}

void TestCallbookLookup::quotaUsedUpIsNotAskedAgainToday()
{
    m_player->setMode(Source::Qrz, Mode::QuotaUsedUp);
    SourceSettings s = accounts();
    s.setFallbackOrder({Source::Callook});
    CallbookLookup *lookup = makeLookup(s);
    QSignalSpy quota(lookup, &CallbookLookup::quotaUsedUp);
    QSignalSpy answered(lookup, &CallbookLookup::answered);
    lookup->lookUp(u"W1AW"_qs, Source::Qrz);
    QVERIFY(answered.wait(5000));
    QCOMPARE(quota.size(), 1);
    QCOMPARE(quota.at(0).at(0).value<Source>(), Source::Qrz);
    QVERIFY(quota.at(0).at(1).toString().contains(u"limit"));
    QCOMPARE(answered.at(0).at(0).value<CallbookAnswer>().source, Source::Callook);
    const int asked = m_player->lookups(Source::Qrz);

    lookup->lookUp(u"W1AW"_qs, Source::Qrz);
    QVERIFY(answered.wait(5000));
    QCOMPARE(m_player->lookups(Source::Qrz), asked); // not asked again today
    QCOMPARE(quota.size(), 1);
}

void TestCallbookLookup::deadlineEndsASlowLookup()
{
    for (Source service : kServices)
        m_player->setMode(service, Mode::Silent);
    SourceSettings s = accounts();
    s.setFallbackOrder({Source::QrzCq, Source::HamQth, Source::Callook});
    CallbookLookup *lookup = makeLookup(s);
    lookup->setSourceTimeout(5000);
    lookup->setDeadline(1200);
    QSignalSpy failed(lookup, &CallbookLookup::failed);
    QElapsedTimer t;
    t.start();
    lookup->lookUp(u"W1AW"_qs, Source::Qrz);
    QVERIFY(failed.wait(5000));
    QVERIFY2(t.elapsed() < 3000, "the whole lookup's deadline was not kept");
    const auto failures = failed.at(0).at(1).value<QList<SourceFailure>>();
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.at(0).reason, FailReason::TimedOut);
    QCOMPARE(failures.at(0).source, Source::Qrz);
}

void TestCallbookLookup::offlineAsksNoSource()
{
    LookupResult r;
    r.name = u"ARRL"_qs;
    QVERIFY(m_cache->store(u"W1AW"_qs, Source::Qrz, Via::Page, r));
    CallbookLookup *lookup = makeLookup(accounts());
    QSignalSpy answered(lookup, &CallbookLookup::answered);
    QSignalSpy failed(lookup, &CallbookLookup::failed);
    LookupOptions offline;
    offline.offline = true;
    lookup->lookUp(u"W1AW"_qs, Source::HamQth, offline);
    QVERIFY(answered.wait(2000));
    QVERIFY(answered.at(0).at(0).value<CallbookAnswer>().cached);
    lookup->lookUp(u"K9NEW"_qs, Source::HamQth, offline);
    QVERIFY(failed.wait(2000));
    QVERIFY(failed.at(0).at(1).value<QList<SourceFailure>>().isEmpty());
    QVERIFY(m_server->fullRequests().isEmpty());
}

void TestCallbookLookup::passwordFromTheStore()
{
    // A user name without a password anywhere: the service is skipped with
    // a reason, and the next source answers.
    m_credentials = std::make_unique<CredentialStore>();
    m_credentials->setKeyringService(u"Marvik test that stores nothing"_qs);
    SourceSettings s = accounts();
    s.setFallbackOrder({Source::Callook});
    CallbookLookup *lookup = makeLookup(s);
    QSignalSpy answered(lookup, &CallbookLookup::answered);
    QSignalSpy sourceFailed(lookup, &CallbookLookup::sourceFailed);
    lookup->lookUp(u"W1AW"_qs, Source::HamQth);
    QVERIFY(answered.wait(8000));
    QCOMPARE(sourceFailed.size(), 1);
    QCOMPARE(sourceFailed.at(0).at(1).value<SourceFailure>().reason, FailReason::NoAccount);
    QCOMPARE(m_player->logins(Source::HamQth), 0);

    // Kept for this run, the same password serves every lookup after.
    m_credentials->keepForThisRun(Source::HamQth, u"k1abc"_qs, u"secret"_qs);
    lookup->lookUp(u"W1AW"_qs, Source::HamQth);
    QVERIFY(answered.wait(5000));
    QCOMPARE(answered.at(1).at(0).value<CallbookAnswer>().source, Source::HamQth);
}

void TestCallbookLookup::defaultOrderTakesReadySourcesOnly()
{
    SourceSettings s;
    // No account anywhere: every page source and Callook's service, never
    // HamQTH, whose service needs an account.
    QList<QPair<Source, Via>> want{{Source::Qrz, Via::Page},
                                   {Source::EHam, Via::Page},
                                   {Source::QrzCq, Via::Page},
                                   {Source::Callook, Via::Service},
                                   {Source::HamCall, Via::Page}};
    CallbookLookup *lookup = makeLookup(s);
    QCOMPARE(lookup->plan(Source::Qrz), want);
    // An account for HamQTH makes it ready; QRZ with an account goes by its
    // service unless the user chose its page.
    s.setUserName(Source::HamQth, u"k1abc"_qs);
    s.setUserName(Source::Qrz, u"k1abc"_qs);
    lookup->setSettings(s);
    want[0].second = Via::Service;
    want.append({Source::HamQth, Via::Service});
    QCOMPARE(lookup->plan(Source::Qrz), want);
    s.setVia(Source::Qrz, Via::Page);
    lookup->setSettings(s);
    want[0].second = Via::Page;
    QCOMPARE(lookup->plan(Source::Qrz), want);
    LookupOptions alone;
    alone.fallback = false;
    QCOMPARE(lookup->plan(Source::Qrz, alone).size(), 1);
}

QTEST_GUILESS_MAIN(TestCallbookLookup)
#include "tst_callbooklookup.moc"
