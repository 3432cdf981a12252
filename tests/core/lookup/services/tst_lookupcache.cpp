// SPDX-License-Identifier: GPL-3.0-or-later
// The lookup cache: what goes in comes back with its source and date, stale
// results stop answering, the size cap holds, a damaged file is set aside,
// and a process killed while writing leaves a cache that opens.
#include "core/lookup/services/LookupCache.h"

#include "support/TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>

using namespace marvik::lookup;
using marvik::test::readBytes;
using marvik::test::writeBytes;

namespace {

const QDateTime kNow = QDateTime(QDate(2026, 8, 16), QTime(12, 0), Qt::UTC);

LookupResult result(const QString &name)
{
    LookupResult r;
    r.name = name;
    r.firstName = u"Hiram"_qs;
    r.address1 = u"225 Main St"_qs;
    r.address2 = u"Newington, CT 06111"_qs;
    r.country = u"USA"_qs;
    r.latitude = 41.714775;
    r.longitude = -72.72726;
    r.locator = u"FN31pr"_qs;
    r.licenceClass = u"C"_qs;
    r.previousCall = u"K1AW"_qs;
    r.dateOfBirth = u"1914"_qs;
    r.webPage = u"http://www.arrl.org/w1aw"_qs;
    r.pictureUrl = u"https://example.invalid/w1aw.jpg"_qs;
    return r;
}

} // namespace

class TestLookupCache : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void roundTrip();
    void newestSourceAnswers();
    void freshness_data();
    void freshness();
    void sizeCapDropsTheOldest();
    void clearAndPrune();
    void damagedFileSetAside_data();
    void damagedFileSetAside();
    void unwritableFolderIsNoCache();
    void killedWriterLeavesACacheThatOpens();

private:
    QString path() const { return m_dir.filePath(LookupCache::fileName()); }
    std::unique_ptr<QTemporaryDir> m_dirOwner;
    QDir m_dir;
};

void TestLookupCache::init()
{
    m_dirOwner = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dirOwner->isValid());
    m_dir = QDir(m_dirOwner->path());
}

void TestLookupCache::roundTrip()
{
    {
        LookupCache cache(path());
        QVERIFY(cache.isOpen());
        QVERIFY(cache.setAsidePath().isEmpty());
        QVERIFY(cache.store(u"W1AW"_qs, Source::HamQth, Via::Service, result(u"ARRL HQ"_qs), kNow));
    }
    // A new run reads what the last one wrote.
    LookupCache cache(path());
    const std::optional<CachedResult> c = cache.find(u"W1AW"_qs, kNow.addDays(1));
    QVERIFY(c);
    QCOMPARE(c->source, Source::HamQth);
    QCOMPARE(c->via, Via::Service);
    QCOMPARE(c->storedAt, kNow);
    const LookupResult want = result(u"ARRL HQ"_qs);
    const LookupResult &got = c->result;
    QCOMPARE(QStringList({got.name, got.firstName, got.address1, got.address2, got.country, got.locator,
                          got.licenceClass, got.previousCall, got.dateOfBirth, got.webPage, got.pictureUrl}),
             QStringList({want.name, want.firstName, want.address1, want.address2, want.country, want.locator,
                          want.licenceClass, want.previousCall, want.dateOfBirth, want.webPage, want.pictureUrl}));
    QCOMPARE(got.latitude, want.latitude);
    QCOMPARE(got.longitude, want.longitude);
    // Calls are told apart exactly, as everywhere in Marvik.
    QVERIFY(!cache.find(u"w1aw"_qs, kNow));
    QVERIFY(!cache.find(u"W1AX"_qs, kNow));
}

void TestLookupCache::newestSourceAnswers()
{
    LookupCache cache(path());
    QVERIFY(cache.store(u"W1AW"_qs, Source::Qrz, Via::Page, result(u"old QRZ"_qs), kNow.addDays(-3)));
    QVERIFY(cache.store(u"W1AW"_qs, Source::Callook, Via::Service, result(u"Callook"_qs), kNow.addDays(-2)));
    QCOMPARE(cache.find(u"W1AW"_qs, kNow)->result.name, u"Callook"_qs);
    // A source's new answer replaces its old one and is now the newest.
    QVERIFY(cache.store(u"W1AW"_qs, Source::Qrz, Via::Service, result(u"new QRZ"_qs), kNow.addDays(-1)));
    QCOMPARE(cache.count(), 2);
    const std::optional<CachedResult> c = cache.find(u"W1AW"_qs, kNow);
    QCOMPARE(c->result.name, u"new QRZ"_qs);
    QCOMPARE(c->source, Source::Qrz);
    QCOMPARE(c->via, Via::Service);
}

void TestLookupCache::freshness_data()
{
    QTest::addColumn<int>("freshDays");
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<bool>("answers");

    const qint64 day = 24 * 3600 * 1000LL;
    QTest::newRow("a minute old") << 90 << qint64(60000) << true;
    QTest::newRow("exactly the limit") << 90 << 90 * day << true;
    QTest::newRow("a millisecond past it") << 90 << 90 * day + 1 << false;
    QTest::newRow("a year old") << 90 << 365 * day << false;
    QTest::newRow("from the future (clock set back)") << 90 << -day << true;
    QTest::newRow("0 days: the cache never answers") << 0 << qint64(0) << false;
}

void TestLookupCache::freshness()
{
    QFETCH(int, freshDays);
    QFETCH(qint64, ageMs);
    QFETCH(bool, answers);
    LookupCache cache(path());
    cache.setFreshDays(freshDays);
    QVERIFY(cache.store(u"W1AW"_qs, Source::Qrz, Via::Page, result(u"x"_qs), kNow.addMSecs(-ageMs)));
    QCOMPARE(bool(cache.find(u"W1AW"_qs, kNow)), answers);
}

void TestLookupCache::sizeCapDropsTheOldest()
{
    LookupCache cache(path());
    cache.setMaxEntries(3);
    for (int i = 0; i < 5; ++i)
        QVERIFY(cache.store(QStringLiteral("K%1A").arg(i), Source::Qrz, Via::Page, result(u"x"_qs), kNow.addSecs(i)));
    QCOMPARE(cache.count(), 3);
    QVERIFY(!cache.find(u"K0A"_qs, kNow));
    QVERIFY(!cache.find(u"K1A"_qs, kNow));
    QVERIFY(cache.find(u"K4A"_qs, kNow));
}

void TestLookupCache::clearAndPrune()
{
    LookupCache cache(path());
    cache.setFreshDays(10);
    QVERIFY(cache.store(u"OLD"_qs, Source::Qrz, Via::Page, result(u"x"_qs), kNow.addDays(-11)));
    QVERIFY(cache.store(u"NEW"_qs, Source::Qrz, Via::Page, result(u"x"_qs), kNow.addDays(-1)));
    QCOMPARE(cache.prune(kNow), 1);
    QCOMPARE(cache.count(), 1);
    QVERIFY(cache.clear());
    QCOMPARE(cache.count(), 0);
    QVERIFY(!cache.find(u"NEW"_qs, kNow));
}

void TestLookupCache::damagedFileSetAside_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("not a database") << QByteArray("List1 of some other program\r\n").repeated(200);
    // A real cache whose pages were overwritten in the middle.
    QByteArray real;
    {
        QTemporaryDir dir;
        const QString p = dir.filePath(u"c.sqlite"_qs);
        {
            LookupCache cache(p);
            for (int i = 0; i < 300; ++i)
                cache.store(QStringLiteral("K%1A").arg(i), Source::Qrz, Via::Page, result(u"x"_qs.repeated(40)), kNow);
        }
        real = readBytes(p);
    }
    QVERIFY(real.size() > 8192);
    QByteArray torn = real;
    for (qsizetype i = 4096; i < torn.size(); i += 7)
        torn[i] = char(0xA5);
    QTest::newRow("pages overwritten") << torn;
    QTest::newRow("cut after the header") << real.left(100);
    // A newer Marvik's cache: kept for that Marvik, not read by this one.
    QByteArray future = real;
    future[60] = 0;
    future[61] = 0;
    future[62] = 0;
    future[63] = 99; // the header's user_version, big-endian
    QTest::newRow("a schema from the future") << future;
}

void TestLookupCache::damagedFileSetAside()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(writeBytes(path(), bytes));
    LookupCache cache(path());
    QVERIFY2(cache.isOpen(), qPrintable(cache.errorString()));
    QVERIFY(!cache.setAsidePath().isEmpty());
    QVERIFY(cache.setAsidePath().startsWith(path() + u".damaged-"));
    QCOMPARE(readBytes(cache.setAsidePath()), bytes); // nothing of the user's is lost
    QCOMPARE(cache.count(), 0);
    QVERIFY(cache.store(u"W1AW"_qs, Source::Qrz, Via::Page, result(u"x"_qs), kNow));
    QVERIFY(cache.find(u"W1AW"_qs, kNow));
}

void TestLookupCache::unwritableFolderIsNoCache()
{
    LookupCache cache(m_dir.filePath(u"missing/folder/"_qs + LookupCache::fileName()));
    QVERIFY(!cache.isOpen());
    QVERIFY(!cache.errorString().isEmpty());
    QVERIFY(!cache.store(u"W1AW"_qs, Source::Qrz, Via::Page, result(u"x"_qs), kNow));
    QVERIFY(!cache.find(u"W1AW"_qs, kNow));
    QCOMPARE(cache.count(), 0);
}

void TestLookupCache::killedWriterLeavesACacheThatOpens()
{
    auto *rng = QRandomGenerator::global();
    for (int round = 0; round < 10; ++round) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {u"--store-loop"_qs, path()});
        QVERIFY(child.waitForStarted());
        QVERIFY(child.waitForReadyRead(10000)); // the child says when its first rows are in
        QTest::qWait(int(rng->bounded(5, 150)));
        ::kill(pid_t(child.processId()), SIGKILL);
        QVERIFY(child.waitForFinished());

        LookupCache cache(path());
        QVERIFY2(cache.isOpen(), qPrintable(cache.errorString()));
        QVERIFY2(cache.setAsidePath().isEmpty(), "a killed writer left a cache that had to be set aside");
        QVERIFY(cache.count() >= 50);
        const std::optional<CachedResult> first = cache.find(u"K0A"_qs, kNow);
        QVERIFY(first);
        QCOMPARE(first->result.name, u"Operator 0"_qs);
    }
}

// The child of killedWriterLeavesACacheThatOpens(): fifty rows, a word to
// the parent, then rows without end.
static int storeLoop(const QString &path)
{
    LookupCache cache(path);
    cache.setMaxEntries(5000);
    for (int i = 0;; ++i) {
        const QString call = QStringLiteral("K%1A").arg(i % 4000);
        LookupResult r = result(QStringLiteral("Operator %1").arg(i % 4000));
        r.address1 = QStringLiteral("Street %1 ").arg(i).repeated(20);
        cache.store(call, i % 2 ? Source::Qrz : Source::HamQth, Via::Service, r, kNow);
        if (i == 50) {
            std::fputs("stored\n", stdout);
            std::fflush(stdout);
        }
    }
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--store-loop") == 0)
        return storeLoop(QString::fromLocal8Bit(argv[2]));
    TestLookupCache test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_lookupcache.moc"
