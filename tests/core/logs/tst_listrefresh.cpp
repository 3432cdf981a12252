// SPDX-License-Identifier: GPL-3.0-or-later
// Refreshing a whole list: against a fake callbook that answers by timers,
// against the real lookup control and a local server that plays Callook,
// and through marvik-cli refresh.
#include "support/CallbookServer.h"
#include "support/TestFiles.h"

#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/logs/ListRefresh.h"
#include "core/logs/PageRefreshLookup.h"
#include "core/lookup/LookupResult.h"

#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace marvik;
using namespace marvik::logs;
using lists::CallListModel;
using lists::CallRecord;
using lists::Column;
using lookup::LookupOutcome;
using lookup::LookupResult;
using Answer = CallbookServer::Answer;

namespace {

const maps::Position kMe{40, -75};
const QString kOldStamp = QStringLiteral("20000101000000");

QString callNo(int i)
{
    return QStringLiteral("AA%1").arg(i, 3, 10, QLatin1Char('0'));
}

/// The row every call starts with: all fields filled, so a blanked one shows.
QString oldLine(int i)
{
    return callNo(i) + QStringLiteral("*Nick*96°*Old Name*Old Street*Old City*Old Country*1.5*2.5*") + kOldStamp
        + QStringLiteral("*extra");
}

/// A list of `count` calls, given in reverse so the refresh's own order shows.
void fill(CallListModel &model, int count)
{
    for (int i = count - 1; i >= 0; --i) {
        CallRecord r;
        const QStringList fields = oldLine(i).split(u'*');
        for (int c = 0; c < lists::kColumnCount; ++c)
            r.fields[std::size_t(c)] = fields[c];
        model.appendRecord(r);
    }
}

QString lineOf(const CallListModel &model, int i)
{
    const int row = model.findCallsign(callNo(i));
    return row < 0 ? QString() : model.record(row).toLine();
}

/// What the fake callbook knows of call i: some answers lack the address,
/// the country or the position, which must then stay as the row had them.
LookupResult resultFor(int i)
{
    LookupResult r;
    r.name = QStringLiteral(" Name %1 ").arg(i);
    r.address1 = i % 3 == 0 ? QString() : QStringLiteral("Street %1").arg(i);
    r.address2 = QStringLiteral("City %1").arg(i);
    r.country = i % 4 == 0 ? QString() : QStringLiteral("UNITED STATES");
    if (i % 5 != 0) {
        r.latitude = 41;
        r.longitude = -72;
    }
    return r;
}

/// The row call i has after its answer was written (the stamp aside).
QString refreshedLine(int i)
{
    const LookupResult r = resultFor(i);
    return QStringList{callNo(i), u"Nick"_qs, i % 5 != 0 ? u"65°"_qs : u"96°"_qs, r.name.trimmed(),
                       r.address1.isEmpty() ? u"Old Street"_qs : r.address1, r.address2,
                       r.country.isEmpty() ? u"Old Country"_qs : u"USA"_qs, i % 5 != 0 ? u"41"_qs : u"1.5"_qs,
                       i % 5 != 0 ? u"-72"_qs : u"2.5"_qs, u"STAMP"_qs, u"extra"_qs}
        .join(u'*');
}

QString withoutStamp(QString line)
{
    QStringList f = line.split(u'*');
    if (f.size() == lists::kColumnCount && f[9] != kOldStamp && f[9].size() == 14)
        f[9] = u"STAMP"_qs;
    return f.join(u'*');
}

/// A callbook that answers by timers, as a network lookup does.
class FakeCallbook : public QObject
{
public:
    enum class Reply { Found, NotFound, Fail, Quota, Silent };

    QHash<QString, Reply> replies; ///< Found unless named here
    int delayMs = 1;               ///< < 0: answer before start() returns
    QStringList asked;
    QList<qint64> askedAt;
    ListRefresh *refresh = nullptr;

    FakeCallbook() { m_clock.start(); }

    void start(const QString &call)
    {
        asked << call;
        askedAt << m_clock.elapsed();
        const Reply reply = replies.value(call, Reply::Found);
        if (reply == Reply::Silent)
            return;
        if (delayMs < 0)
            answer(call, reply);
        else
            QTimer::singleShot(delayMs, this, [this, call, reply] { answer(call, reply); });
    }

    ListRefresh::StartLookup seam()
    {
        return [this](const QString &call) { start(call); };
    }

private:
    void answer(const QString &call, Reply reply)
    {
        if (!refresh)
            return;
        switch (reply) {
        case Reply::Found: refresh->found(call, resultFor(call.mid(2).toInt()), u"Fake"_qs); break;
        case Reply::NotFound: refresh->notFound(call); break;
        case Reply::Fail: refresh->failed(call, u"no answer within 12 s"_qs); break;
        case Reply::Quota: refresh->quotaUsedUp(call, u"daily limit reached"_qs); break;
        case Reply::Silent: break;
        }
    }

    QElapsedTimer m_clock;
};

struct Progress
{
    int n;
    int m;
    QString call;
    qint64 msLeft;
};

RefreshSummary runToEnd(ListRefresh &refresh, QList<Progress> *progress = nullptr, int timeoutMs = 60000)
{
    QSignalSpy finished(&refresh, &ListRefresh::finished);
    QMetaObject::Connection c;
    if (progress) {
        c = QObject::connect(&refresh, &ListRefresh::progress, &refresh,
                             [progress](int n, int m, const QString &call, qint64 left) { progress->append({n, m, call, left}); });
    }
    if (!refresh.start() || !finished.wait(timeoutMs))
        return {};
    QObject::disconnect(c);
    return refresh.summary();
}

struct CliRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

CliRun runCli(const QStringList &args, const QProcessEnvironment &env)
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), args);
    // Spin the event loop: the callbook server lives in this process.
    QSignalSpy finished(&process, &QProcess::finished);
    if (!finished.wait(60000))
        process.kill();
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QByteArray fixture(const QString &name)
{
    return test::readBytes(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + name);
}

/// Callook's page for a call, found or not.
Answer callookPage(const QString &call, bool found, int delayMs = 0)
{
    Answer a;
    a.delayMs = delayMs;
    if (found) {
        a.body = fixture(u"callook_found.html"_qs)
                     .replace("ARRL HQ OPERATORS CLUB", QByteArray("OP " + call.toLatin1()))
                     .replace("W1AW", call.toLatin1());
    } else {
        a.body = fixture(u"callook_notfound.html"_qs).replace("W9XYZ", call.toLatin1());
    }
    return a;
}

} // namespace

class TestListRefresh : public QObject
{
    Q_OBJECT

private slots:
    void refreshedRecord_data();
    void refreshedRecord();
    void longListWithAQuotaStop();
    void cancelQuitAndResume();
    void pacing_data();
    void pacing();
    void recentRowsSkipped();
    void silentSeamTimesOutAndStops();
    void rowsDeletedMeanwhile();
    void writeFailureStops();
    void realLookupsAgainstALocalCallbook();
    void cliRefresh();
};

void TestListRefresh::refreshedRecord_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<LookupResult>("result");
    QTest::addColumn<QString>("after");

    LookupResult full;
    full.name = u"\u00A0John Smith "_qs;
    full.address1 = u" 1 Road"_qs;
    full.address2 = u"Town"_qs;
    full.country = u"UNITED STATES"_qs;
    full.latitude = 41;
    full.longitude = -72;
    QTest::newRow("a full answer; first name and Extra kept")
        << u"K1AA*Jack*1°*Old*Old St*Old City*Old Land*1.5*2.5*20000101000000*x"_qs << full
        << u"K1AA*Jack*65°*John Smith*1 Road*Town*USA*41*-72*STAMP*x"_qs;
    QTest::newRow("an empty answer blanks nothing")
        << u"K1AA*Jack*1°*Old*Old St*Old City*Old Land*1.5*2.5*20000101000000*x"_qs << LookupResult()
        << u"K1AA*Jack*96°*Old*Old St*Old City*Old Land*1.5*2.5*STAMP*x"_qs;
    QTest::newRow("no first name: the full name's first word")
        << u"K1AA*********20000101000000*"_qs << full << u"K1AA*John*65°*John Smith*1 Road*Town*USA*41*-72*STAMP*"_qs;
    QTest::newRow("no position anywhere: no azimuth")
        << u"K1AA*Jack*7°*Old*****0*20000101000000*"_qs << LookupResult()
        << u"K1AA*Jack**Old*****0*STAMP*"_qs;
}

void TestListRefresh::refreshedRecord()
{
    QFETCH(QString, before);
    QFETCH(LookupResult, result);
    QFETCH(QString, after);
    CallRecord row;
    const QStringList fields = before.split(u'*');
    for (int c = 0; c < lists::kColumnCount; ++c)
        row.fields[std::size_t(c)] = fields[c];
    const QDateTime now(QDate(2025, 3, 4), QTime(5, 6, 7));
    const CallRecord out = logs::refreshedRecord(row, result, kMe, now);
    QCOMPARE(out[Column::TimeStamp], u"20250304050607"_qs);
    QCOMPARE(withoutStamp(out.toLine()), after);
}

void TestListRefresh::longListWithAQuotaStop()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"List4.dat"_qs);
    CallListModel model;
    fill(model, 300);
    FakeCallbook callbook;
    for (int i = 7; i < 300; i += 10)
        callbook.replies.insert(callNo(i), FakeCallbook::Reply::NotFound);
    callbook.replies.insert(callNo(50), FakeCallbook::Reply::Fail);
    callbook.replies.insert(callNo(250), FakeCallbook::Reply::Quota);
    ListRefresh refresh(&model, path, callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(2);
    refresh.setOwnPosition(kMe);
    QSignalSpy written(&refresh, &ListRefresh::rowWritten);

    QList<Progress> progress;
    RefreshSummary s = runToEnd(refresh, &progress);
    QCOMPARE(s.end, RefreshEnd::QuotaUsedUp);
    QCOMPARE(s.total, 300);
    QCOMPARE(s.done, 250);
    QCOMPARE(s.updated, 224);
    QCOMPARE(s.notFound, 25);
    QCOMPARE(s.failed, 1);
    QCOMPARE(s.notReached, 50);
    QCOMPARE(s.message, u"daily limit reached"_qs);
    QCOMPARE(s.failures, QStringList{u"AA050: no answer within 12 s"_qs});
    QCOMPARE(written.size(), 224);
    QCOMPARE(summaryText(s), u"300 calls: 224 updated, 25 not found, 1 failed, 50 not reached; stopped: the daily "
                              "quota is used up (daily limit reached)"_qs);

    // "Call n of m" for every lookup started, the quota call included, in callsign order.
    QCOMPARE(progress.size(), 251);
    for (int k = 0; k < progress.size(); ++k) {
        QCOMPARE(progress[k].n, k + 1);
        QCOMPARE(progress[k].m, 300);
        QCOMPARE(progress[k].call, callNo(k));
        // Never less than the pace allows for the calls still to go.
        QVERIFY(progress[k].msLeft >= qint64(300 - k) * 2);
    }
    QCOMPARE(progress[0].msLeft, 600);

    for (int i = 0; i < 300; ++i) {
        const bool answered = i < 250 && i % 10 != 7 && i != 50;
        QCOMPARE(withoutStamp(lineOf(model, i)), answered ? refreshedLine(i) : oldLine(i));
    }
    // Each answer was saved as it came.
    QCOMPARE(test::readBytes(path), (model.lines().join(u"\r\n"_qs) + u"\r\n"_qs).toLatin1());
    QVERIFY(refresh.hasUnfinished());
    QCOMPARE(refresh.resumesAfter(), callNo(249));

    // The next day: on from the call that met the quota.
    callbook.replies.remove(callNo(250));
    callbook.asked.clear();
    progress.clear();
    s = runToEnd(refresh, &progress);
    QCOMPARE(s.end, RefreshEnd::Completed);
    QVERIFY(s.resumed);
    QCOMPARE(callbook.asked.first(), callNo(250));
    QCOMPARE(callbook.asked.size(), 50);
    QCOMPARE(progress.first().n, 251);
    QCOMPARE(progress.last().n, 300);
    QCOMPARE(s.total, 300);
    QCOMPARE(s.updated, 269);
    QCOMPARE(s.notFound, 30);
    QCOMPARE(s.failed, 1);
    QCOMPARE(s.notReached, 0);
    QVERIFY(!refresh.hasUnfinished());
    QCOMPARE(withoutStamp(lineOf(model, 299)), refreshedLine(299));
}

void TestListRefresh::cancelQuitAndResume()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"List1.dat"_qs);
    CallListModel model;
    fill(model, 40);
    QVERIFY(lists::saveList(model, path));
    FakeCallbook callbook;
    callbook.delayMs = 5;
    QStringList answered;

    {
        ListRefresh refresh(&model, path, callbook.seam());
        callbook.refresh = &refresh;
        refresh.setIntervalMs(0);
        refresh.setOwnPosition(kMe);
        // Cancel while the lookup of the twelfth call is under way.
        connect(&refresh, &ListRefresh::progress, &refresh, [&](int n) {
            if (n == 12)
                QTimer::singleShot(1, &refresh, &ListRefresh::cancel);
        });
        connect(&refresh, &ListRefresh::rowWritten, &refresh, [&](const QString &call) { answered << call; });
        const RefreshSummary s = runToEnd(refresh);
        QCOMPARE(s.end, RefreshEnd::Cancelled);
        QCOMPARE(s.done, 11);
        QCOMPARE(s.notReached, 29);
        // The answer that comes after Cancel changes nothing.
        QTest::qWait(30);
        QCOMPARE(lineOf(model, 11), oldLine(11));
        QCOMPARE(refresh.resumesAfter(), callNo(10));
        callbook.refresh = nullptr;
    }
    QCOMPARE(answered.size(), 11);

    // Going on, then quitting in the middle without a word: the state file
    // alone tells the next start where it was.
    {
        CallListModel reloaded;
        QVERIFY(reloaded.load(path, {kMe, {}, {}}).complete());
        auto refresh = std::make_unique<ListRefresh>(&reloaded, path, callbook.seam());
        callbook.refresh = refresh.get();
        refresh->setIntervalMs(0);
        refresh->setOwnPosition(kMe);
        QSignalSpy progress(refresh.get(), &ListRefresh::progress);
        connect(refresh.get(), &ListRefresh::rowWritten, refresh.get(), [&](const QString &call) { answered << call; });
        QVERIFY(refresh->start());
        QTRY_VERIFY(answered.size() >= 20);
        QCOMPARE(progress.first().at(0).toInt(), 12);
        refresh.reset();
        callbook.refresh = nullptr;
    }
    CallListModel last;
    QVERIFY(last.load(path, {kMe, {}, {}}).complete());
    ListRefresh refresh(&last, path, callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(0);
    refresh.setOwnPosition(kMe);
    connect(&refresh, &ListRefresh::rowWritten, &refresh, [&](const QString &call) { answered << call; });
    const RefreshSummary s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Completed);
    QCOMPARE(s.total, 40);
    QCOMPARE(s.updated, 40);
    QVERIFY(!refresh.hasUnfinished());
    // Every call written once; only those under way at Cancel and at quitting were asked twice.
    answered.sort();
    answered.removeDuplicates();
    QCOMPARE(answered.size(), 40);
    QVERIFY(callbook.asked.size() <= 42);
    for (int i = 0; i < 40; ++i)
        QCOMPARE(withoutStamp(lineOf(last, i)), refreshedLine(i));
}

void TestListRefresh::pacing_data()
{
    QTest::addColumn<int>("intervalMs");
    QTest::addColumn<int>("answerMs");
    QTest::newRow("answers at once") << 60 << -1;
    QTest::newRow("answers slower than the pace") << 20 << 60;
}

void TestListRefresh::pacing()
{
    QFETCH(int, intervalMs);
    QFETCH(int, answerMs);
    QTemporaryDir dir;
    CallListModel model;
    fill(model, 6);
    FakeCallbook callbook;
    callbook.delayMs = answerMs;
    ListRefresh refresh(&model, dir.filePath(u"List1.dat"_qs), callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(intervalMs);
    QCOMPARE(runToEnd(refresh).updated, 6);
    QCOMPARE(callbook.askedAt.size(), 6);
    for (int k = 1; k < 6; ++k) {
        const qint64 gap = callbook.askedAt[k] - callbook.askedAt[k - 1];
        QVERIFY2(gap >= std::max(intervalMs, answerMs), qPrintable(QString::number(gap)));
    }
}

void TestListRefresh::recentRowsSkipped()
{
    QTemporaryDir dir;
    CallListModel model;
    fill(model, 5);
    const QDateTime now = QDateTime::currentDateTime();
    const auto stamp = [&](int row, const QString &text) {
        CallRecord r = model.record(model.findCallsign(callNo(row)));
        r[Column::TimeStamp] = text;
        model.replaceRecord(model.findCallsign(callNo(row)), r);
    };
    stamp(0, lists::timeStamp(now.addDays(-1)));
    stamp(1, lists::timeStamp(now.addDays(-4)));
    stamp(2, u"garbage"_qs);
    stamp(3, lists::timeStamp(now.addSecs(-3 * 86400 + 60)));
    FakeCallbook callbook;
    ListRefresh refresh(&model, dir.filePath(u"List1.dat"_qs), callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(0);
    refresh.setSkipDays(3);
    const RefreshSummary s = runToEnd(refresh);
    QCOMPARE(callbook.asked, (QStringList{callNo(1), callNo(2), callNo(4)}));
    QCOMPARE(s.skippedRecent, 2);
    QCOMPARE(s.total, 3);
    QCOMPARE(s.updated, 3);
}

void TestListRefresh::silentSeamTimesOutAndStops()
{
    QTemporaryDir dir;
    CallListModel model;
    fill(model, 5);
    FakeCallbook callbook;
    for (int i = 0; i < 5; ++i)
        callbook.replies.insert(callNo(i), FakeCallbook::Reply::Silent);
    ListRefresh refresh(&model, dir.filePath(u"List1.dat"_qs), callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(0);
    refresh.setAnswerTimeoutMs(30);
    refresh.setFailuresInARow(3);
    RefreshSummary s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Failing);
    QCOMPARE(s.failed, 3);
    QCOMPARE(s.notReached, 2);
    QCOMPARE(s.failures.first(), u"AA000: no answer within 0.03 s"_qs);
    // Nothing was settled for good: the next start asks the same calls again.
    callbook.replies.clear();
    callbook.asked.clear();
    s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Completed);
    QCOMPARE(callbook.asked.first(), callNo(0));
    QCOMPARE(s.updated, 5);
    QCOMPARE(s.failed, 0);
}

void TestListRefresh::rowsDeletedMeanwhile()
{
    QTemporaryDir dir;
    CallListModel model;
    fill(model, 4);
    FakeCallbook callbook;
    callbook.delayMs = 5;
    ListRefresh refresh(&model, dir.filePath(u"List1.dat"_qs), callbook.seam());
    callbook.refresh = &refresh;
    refresh.setIntervalMs(0);
    // AA001 goes while its lookup is under way, AA003 before its turn.
    connect(&refresh, &ListRefresh::progress, &refresh, [&](int n) {
        if (n == 2) {
            model.removeRecord(model.findCallsign(callNo(1)));
            model.removeRecord(model.findCallsign(callNo(3)));
        }
    });
    const RefreshSummary s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Completed);
    QCOMPARE(callbook.asked, (QStringList{callNo(0), callNo(1), callNo(2)}));
    QCOMPARE(s.gone, 2);
    QCOMPARE(s.updated, 2);
    QCOMPARE(model.rowCount(), 2);
}

void TestListRefresh::writeFailureStops()
{
    QTemporaryDir dir;
    CallListModel model;
    fill(model, 3);
    FakeCallbook callbook;
    int commits = 0;
    ListRefresh refresh(&model, dir.filePath(u"List1.dat"_qs), callbook.seam(), [&](QString *why) {
        *why = u"disk full"_qs;
        return ++commits < 2;
    });
    callbook.refresh = &refresh;
    refresh.setIntervalMs(0);
    const RefreshSummary s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::WriteFailed);
    QCOMPARE(s.message, u"disk full"_qs);
    QCOMPARE(s.updated, 1);
    // The row that could not be saved is asked for again next time.
    QCOMPARE(refresh.resumesAfter(), callNo(0));
}

void TestListRefresh::realLookupsAgainstALocalCallbook()
{
    CallbookServer server;
    QVERIFY(server.isListening());
    for (int i = 0; i < 300; ++i) {
        const QString call = callNo(i);
        if (i == 150) {
            server.answer(u'/' + call, callookPage(call, true, 4000));
        } else if (i == 250) {
            Answer tooMany;
            tooMany.status = 429;
            tooMany.body = "Too many lookups today";
            server.answer(u'/' + call, {tooMany, callookPage(call, true)});
        } else {
            server.answer(u'/' + call, callookPage(call, i % 10 != 7));
        }
    }
    QTemporaryDir dir;
    const QString path = dir.filePath(u"List2.dat"_qs);
    CallListModel model;
    fill(model, 300);
    QNetworkAccessManager network;
    PageRefreshLookup page(&network, server.sourceSettings(), u"K1ABC"_qs, lookup::Source::Callook);
    page.setTimeoutMs(1000);
    ListRefresh refresh(&model, path, [&page](const QString &call) { page.start(call); });
    page.connectTo(&refresh);
    refresh.setIntervalMs(0);
    refresh.setOwnPosition(kMe);
    refresh.setSourceName(page.sourceName());

    // Cancelled as the hundredth call is about to go, then on until the quota stops it.
    QMetaObject::Connection cancelAt = connect(&refresh, &ListRefresh::progress, &refresh, [&](int n) {
        if (n == 100)
            refresh.cancel();
    });
    RefreshSummary s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Cancelled);
    QCOMPARE(s.done, 99);
    disconnect(cancelAt);
    s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::QuotaUsedUp);
    QVERIFY(s.resumed);
    QVERIFY(s.message.startsWith(u"HTTP 429"_qs));
    QCOMPARE(s.done, 250);
    QCOMPARE(s.failed, 1);
    QCOMPARE(s.failures, QStringList{u"AA150: no answer within 1 s"_qs});
    s = runToEnd(refresh);
    QCOMPARE(s.end, RefreshEnd::Completed);
    QCOMPARE(s.total, 300);
    QCOMPARE(s.updated, 269);
    QCOMPARE(s.notFound, 30);
    QCOMPARE(s.failed, 1);
    QVERIFY(!refresh.hasUnfinished());

    for (int i = 0; i < 300; ++i) {
        const QString call = callNo(i);
        // Only the call that met the quota was asked twice.
        QCOMPARE(server.hits(u'/' + call), i == 250 ? 2 : 1);
        const bool found = i % 10 != 7 && i != 150;
        const QString expected = found ? call + u"*Nick*44°*OP " + call
                + u"*225 MAIN ST*NEWINGTON, CT 06111*U.S.A.*41.714775*-72.72726*STAMP*extra"
                                       : oldLine(i);
        QCOMPARE(withoutStamp(lineOf(model, i)), expected);
    }
    CallListModel saved;
    QVERIFY(saved.load(path, {kMe, {}, {}}).complete());
    QCOMPARE(saved.lines(), model.lines());
}

void TestListRefresh::cliRefresh()
{
    CallbookServer server;
    QVERIFY(server.isListening());
    QTemporaryDir config;
    QTemporaryDir data;
    {
        QSettings store(config.filePath(u"Marvik/Marvik.conf"_qs), QSettings::IniFormat);
        server.sourceSettings().save(store);
        store.setValue(u"Refresh/IntervalMs"_qs, 0);
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_qs, config.path());
    Answer broken;
    broken.status = 500;
    server.answer(u"/AA000"_qs, callookPage(u"AA000"_qs, true));
    server.answer(u"/AA001"_qs, callookPage(u"AA001"_qs, false));
    server.answer(u"/AA002"_qs, broken);
    server.answer(u"/AA003"_qs, callookPage(u"AA003"_qs, true));
    CallListModel model;
    fill(model, 4);
    QVERIFY(lists::saveList(model, data.filePath(u"List3.dat"_qs)));

    CliRun r = runCli({u"--data-dir"_qs, data.path(), u"refresh"_qs, u"3"_qs, u"--source"_qs, u"callook"_qs}, env);
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, u"4 calls: 2 updated, 1 not found, 1 failed\n"_qs);
    QVERIFY2(r.err.startsWith(u"call 1 of 4: AA000 (about "_qs), qPrintable(r.err));
    QCOMPARE(r.err.count(u'\n'), 4);
    CallListModel saved;
    QVERIFY(saved.load(data.filePath(u"List3.dat"_qs), {kMe, {}, {}}).complete());
    QCOMPARE(withoutStamp(lineOf(saved, 1)), oldLine(1));
    QVERIFY(lineOf(saved, 3).contains(u"*OP AA003*"_qs));

    // An interrupted refresh goes on where it stopped.
    QVERIFY(test::writeBytes(data.filePath(u"List3.refresh"_qs),
                             R"({"version": 1, "after": "AA001", "done": 2, "updated": 1, "notFound": 1})"));
    r = runCli({u"--data-dir"_qs, data.path(), u"refresh"_qs, u"3"_qs, u"--source=callook"_qs}, env);
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, u"4 calls: 2 updated, 1 not found, 1 failed; resumed\n"_qs);
    QVERIFY2(r.err.contains(u"after AA001\ncall 3 of 4: AA002"_qs), qPrintable(r.err));
    QVERIFY(!QFile::exists(data.filePath(u"List3.refresh"_qs)));

    // Nothing could be refreshed: exit 1.
    server.answer(u"/AA000"_qs, broken);
    server.answer(u"/AA003"_qs, broken);
    server.answer(u"/AA001"_qs, broken);
    r = runCli({u"--data-dir"_qs, data.path(), u"refresh"_qs, u"3"_qs, u"--source"_qs, u"callook"_qs}, env);
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(r.out.startsWith(u"4 calls: 0 updated, 0 not found, 4 failed"_qs), qPrintable(r.out));

    r = runCli({u"--data-dir"_qs, data.path(), u"refresh"_qs, u"0"_qs}, env);
    QCOMPARE(r.exitCode, 2);
    r = runCli({u"--data-dir"_qs, data.path(), u"refresh"_qs, u"3"_qs, u"--source"_qs, u"qrzcd"_qs}, env);
    QCOMPARE(r.exitCode, 2);
}

QTEST_GUILESS_MAIN(TestListRefresh)
#include "tst_listrefresh.moc"
