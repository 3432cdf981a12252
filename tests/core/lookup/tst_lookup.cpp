// SPDX-License-Identifier: GPL-3.0-or-later
// Requests of the lookup control and the picture download against a local
// server that plays the five callbooks and the picture host, and the
// lookup commands of marvik-cli.
#include "support/CallbookServer.h"

#include "core/app/DataFolder.h"
#include "core/lookup/CookieJar.h"
#include "core/i18n/Texts.h"
#include "core/lookup/HtmlText.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"
#include "core/lookup/NamedDownloads.h"
#include "core/lookup/PictureDownloader.h"
#include "core/lookup/PictureFiles.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace marvik::lookup;
using Answer = CallbookServer::Answer;

namespace {

QByteArray fixture(const QString &file)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + file);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

Answer page(const QByteArray &body, int delayMs = 0)
{
    Answer a;
    a.body = body;
    a.delayMs = delayMs;
    return a;
}

Answer redirect(const QByteArray &location)
{
    Answer a;
    a.status = 302;
    a.headers = {{"Location", location}};
    return a;
}

/// A call page for W1AW that takes the page reader at least half a second
/// in this build, and how long it takes.
QByteArray slowPage(qint64 &readMs)
{
    QByteArray body = QByteArray("<p>x").repeated(50000);
    for (;;) {
        const QByteArray page = "<p>W1AW</p>" + body;
        QElapsedTimer timer;
        timer.start();
        decodePageText(page, {}, {});
        readMs = timer.elapsed();
        if (readMs >= 500 || page.size() * 2 > kPageSizeLimit)
            return page;
        body += body;
    }
}

} // namespace

class TestLookUp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void getPage_data();
    void getPage();
    void slashedZeroIsRequestedAsZero();
    void sameNameOnlyNewestArrives();
    void getSite_data();
    void getSite();
    void latLon();
    void updatesAndPictureRequests();
    void failedDownloads_data();
    void failedDownloads();
    void redirectToHttpIsFollowed();
    void redirects_data();
    void redirects();
    void httpsNeverRedirectsToHttp_data();
    void httpsNeverRedirectsToHttp();
    void tricklingAnswersEndAtTheirDeadline_data();
    void tricklingAnswersEndAtTheirDeadline();
    void pagesAreReadOffTheEventLoop();
    void pageNotReadInTimeFails();
    void pageOfASupersededRequestIsDropped();
    void eventsKeepTheOrderDownloadsEnded();
    void pictures_data();
    void pictures();
    void notAPicture();
    void samePictureNameOnlyNewestCompletes();
    void cookiesPersistOwnerOnly();
    void cliReadAndText();
    void cliLookup();

private:
    SourceSettings settingsFor(const CallbookServer &server) const;

    std::unique_ptr<CallbookServer> m_server;
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<LookUp> m_lookUp;
};

SourceSettings TestLookUp::settingsFor(const CallbookServer &server) const
{
    SourceSettings s;
    for (const SourceInfo &info : sourceTable())
        s.setHost(info.source, server.base());
    s.setPicturesHost(server.base() + u"/pics/"_qs);
    s.setUpdatesUrl(server.base() + u"/updates"_qs);
    return s;
}

void TestLookUp::init()
{
    m_lookUp.reset();
    m_server = std::make_unique<CallbookServer>();
    QVERIFY(m_server->isListening());
    m_network = std::make_unique<QNetworkAccessManager>();
    m_lookUp = std::make_unique<LookUp>(m_network.get(), settingsFor(*m_server), u"K1ABC"_qs);
}

void TestLookUp::getPage_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("call");
    QTest::addColumn<bool>("loggedIn");
    QTest::addColumn<LookupOutcome>("outcome");

    QTest::newRow("eHam, logged in") << dataBaseOf(Source::EHam) << u"/callbook/W1AW"_qs << u"eham_found.html"_qs << u"W1AW"_qs
                                     << true << LookupOutcome::Found;
    QTest::newRow("eHam, not found") << dataBaseOf(Source::EHam) << u"/callbook/W9XYZ"_qs << u"eham_notfound.html"_qs
                                     << u"W9XYZ"_qs << false << LookupOutcome::CallNotFound;
    QTest::newRow("QRZ, own call on the page") << dataBaseOf(Source::Qrz) << u"/db/W1AW"_qs << u"qrz_found.html"_qs << u"W1AW"_qs
                                               << true << LookupOutcome::Found;
    QTest::newRow("QRZ, log-in needed") << dataBaseOf(Source::Qrz) << u"/db/W1AW"_qs << u"qrz_login.html"_qs << u"W1AW"_qs << false
                                        << LookupOutcome::LoginRequired;
    QTest::newRow("QRZ, not found") << dataBaseOf(Source::Qrz) << u"/db/W9XYZ"_qs << u"qrz_notfound.html"_qs << u"W9XYZ"_qs
                                    << false << LookupOutcome::CallNotFound;
    // QRZCQ and HamCall never report a log-in, whatever their pages show.
    QTest::newRow("QRZCQ with a logout link") << dataBaseOf(Source::QrzCq) << u"/call/W1AW"_qs << u"qrzcq_found.html"_qs
                                              << u"W1AW"_qs << false << LookupOutcome::Found;
    QTest::newRow("QRZCQ, not found") << dataBaseOf(Source::QrzCq) << u"/call/W9XYZ"_qs << u"qrzcq_notfound.html"_qs
                                      << u"W9XYZ"_qs << false << LookupOutcome::CallNotFound;
    QTest::newRow("Callook") << dataBaseOf(Source::Callook) << u"/W1AW"_qs << u"callook_found.html"_qs << u"W1AW"_qs << false
                             << LookupOutcome::Found;
    QTest::newRow("Callook, not found") << dataBaseOf(Source::Callook) << u"/W9XYZ"_qs << u"callook_notfound.html"_qs
                                        << u"W9XYZ"_qs << false << LookupOutcome::CallNotFound;
    QTest::newRow("HamCall with Log Out") << dataBaseOf(Source::HamCall) << u"/call?callsign=W1AW"_qs << u"hamcall_found.html"_qs
                                          << u"W1AW"_qs << false << LookupOutcome::Found;
    QTest::newRow("HamCall, not found") << dataBaseOf(Source::HamCall) << u"/call?callsign=W9XYZ"_qs
                                        << u"hamcall_notfound.html"_qs << u"W9XYZ"_qs << false
                                        << LookupOutcome::CallNotFound;
    QTest::newRow("page without the call") << dataBaseOf(Source::Qrz) << u"/db/K2XX"_qs << u"qrz_found.html"_qs << u"K2XX"_qs
                                           << false << LookupOutcome::PageNotFound;
}

void TestLookUp::getPage()
{
    QFETCH(int, source);
    QFETCH(QString, path);
    QFETCH(QString, file);
    QFETCH(QString, call);
    QFETCH(bool, loggedIn);
    QFETCH(LookupOutcome, outcome);

    m_server->answer(path, page(fixture(file)));
    m_lookUp->setDataBase(source);
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy missing(m_lookUp.get(), &LookUp::PageNotFound);
    LookupResult result;
    result.outcome = LookupOutcome::PageNotFound;
    connect(m_lookUp.get(), &LookUp::GotPage, this,
            [&](const QString &subject) { result = readLookupResult(*m_lookUp, subject); });

    m_lookUp->GetPage(call + u'2');
    QCOMPARE(m_lookUp->pendingRequests(), QStringList{call + u'2'});
    QCOMPARE(m_lookUp->callSign(), call);
    QTRY_COMPARE(got.size() + missing.size(), 1);
    QCOMPARE(m_server->requests(), QStringList{path});
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
    if (outcome == LookupOutcome::PageNotFound) {
        QCOMPARE(missing.first().first().toString(), call);
        return;
    }
    QCOMPARE(got.size(), 1);
    QCOMPARE(got.first().at(1).toBool(), loggedIn);
    QCOMPARE(result.outcome, outcome);
}

void TestLookUp::slashedZeroIsRequestedAsZero()
{
    m_server->answer(u"/db/W0AW"_qs, page("<p>Search QRZ</p><p>W0AW</p>"));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy missing(m_lookUp.get(), &LookUp::PageNotFound);
    // The address takes the call in upper case with a plain zero; the page
    // is searched for the name as given.
    m_lookUp->GetPage(u"w\u00d8aw2"_qs);
    QCOMPARE(m_lookUp->callSign(), u"W\u00d8AW"_qs);
    QTRY_COMPARE(missing.size(), 1);
    QCOMPARE(missing.first().first().toString(), u"w\u00d8aw"_qs);
    QCOMPARE(m_server->requests(), QStringList{u"/db/W0AW"_qs});
}

void TestLookUp::sameNameOnlyNewestArrives()
{
    m_server->answer(u"/db/W1AW"_qs, {page("<p>W1AW first</p>", 700), page("<p>W1AW second</p>")});
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE(m_server->hits(u"/db/W1AW"_qs), 1);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QCOMPARE(m_lookUp->pendingRequests(), QStringList{u"W1AW2"_qs});
    QTRY_COMPARE(got.size(), 1);
    QTest::qWait(1000); // past the first answer's delay
    QCOMPARE(got.size(), 1);
    QCOMPARE(m_lookUp->html(), u"W1AW second"_qs);
    QCOMPARE(m_server->hits(u"/db/W1AW"_qs), 2);
}

void TestLookUp::getSite_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("subject");
    QTest::addColumn<bool>("found");
    QTest::addColumn<bool>("loggedIn");
    QTest::newRow("eHam") << dataBaseOf(Source::EHam) << u"/"_qs << QByteArray("<p>eHam.net</p><a>Log Out</a>") << u"eHam.net"_qs
                          << true << true;
    QTest::newRow("QRZ, logged in") << dataBaseOf(Source::Qrz) << u"/"_qs << QByteArray("QRZ.com user K1ABC") << u"QRZ"_qs << true
                                    << true;
    QTest::newRow("QRZ, logged out") << dataBaseOf(Source::Qrz) << u"/"_qs << QByteArray("QRZ.com <a>Login</a>") << u"QRZ"_qs
                                     << true << false;
    QTest::newRow("HamCall") << dataBaseOf(Source::HamCall) << u"/call"_qs << QByteArray("HamCall.net <a>Log Out</a>")
                             << u"HamCall"_qs << true << false;
    QTest::newRow("Callook, wrong page") << dataBaseOf(Source::Callook) << u"/"_qs << QByteArray("Callook.info") << u"callook"_qs
                                         << false << false;
}

void TestLookUp::getSite()
{
    QFETCH(int, source);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(QString, subject);
    QFETCH(bool, found);
    QFETCH(bool, loggedIn);
    m_server->answer(path, page(body));
    m_lookUp->setDataBase(source);
    QSignalSpy got(m_lookUp.get(), &LookUp::GotSite);
    QSignalSpy missing(m_lookUp.get(), &LookUp::SiteNotFound);
    m_lookUp->GetSite();
    QTRY_COMPARE(got.size() + missing.size(), 1);
    QCOMPARE(m_server->requests(), QStringList{path});
    if (found) {
        QCOMPARE(got.first().at(0).toString(), subject);
        QCOMPARE(got.first().at(1).toBool(), loggedIn);
    } else {
        QCOMPARE(missing.first().at(0).toString(), subject);
    }
}

void TestLookUp::latLon()
{
    m_server->answer(u"/db/W1AW"_qs, page(fixture(u"qrz_found.html"_qs)));
    m_server->answer(u"/db/K2XX"_qs, page("<p>K2XX</p><p>no position</p>"));
    QSignalSpy latLon(m_lookUp.get(), &LookUp::LatLon);
    m_lookUp->setDataBase(dataBaseOf(Source::EHam)); // ignored: the current source counts
    m_lookUp->setCurrentSource(Source::Qrz);
    m_lookUp->GetLatLon(u"W1AW4"_qs);
    QCOMPARE(m_lookUp->dataBase(), dataBaseOf(Source::Qrz));
    QCOMPARE(m_lookUp->pendingRequests(), QStringList{u"LatLon4"_qs});
    QTRY_COMPARE(latLon.size(), 1);
    QCOMPARE(latLon.first().at(0).toDouble(), 41.714775);
    QCOMPARE(latLon.first().at(1).toDouble(), -72.72726);

    // A page without "Latitude" raises nothing at all.
    m_lookUp->GetLatLon(u"K2XX4"_qs);
    QTRY_VERIFY(m_lookUp->pendingRequests().isEmpty());
    QCOMPARE(m_lookUp->html(), u"K2XX\r\n\r\nno position"_qs);
    QCOMPARE(latLon.size(), 1);

    // The CD callbooks request nothing.
    const int before = int(m_server->requests().size());
    m_lookUp->setCurrentSource(Source::QrzCd);
    m_lookUp->GetLatLon(u"W1AW4"_qs);
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
    QTest::qWait(100);
    QCOMPARE(m_server->requests().size(), before);
    QCOMPARE(latLon.size(), 1);
}

void TestLookUp::updatesAndPictureRequests()
{
    m_server->answer(u"/updates"_qs, page("<p>Marvik 3.13</p><p>is out</p>"));
    const QByteArray jpeg = CallbookServer::picture("jpeg");
    Answer picture = page(jpeg);
    picture.contentType = "image/jpeg";
    m_server->answer(u"/pics/w/w1aw/w1aw.jpg"_qs, picture);
    QSignalSpy updates(m_lookUp.get(), &LookUp::UpdateFound);
    QSignalSpy ready(m_lookUp.get(), &LookUp::PictureReady);
    m_lookUp->CheckUpdates();
    m_lookUp->GetPicture(pictureAddress(m_lookUp->settings().picturesHost(), u"W1AW"_qs), u"W1AW5"_qs);
    QTRY_COMPARE(updates.size(), 1);
    QTRY_COMPARE(ready.size(), 1);
    QCOMPARE(updates.first().first().toString(), u"Marvik 3.13\r\n\r\nis out"_qs);
    QCOMPARE(ready.first().first().toString(), u"W1AW"_qs);
    QCOMPARE(m_lookUp->bytes(), jpeg);

    SourceSettings none = m_lookUp->settings();
    none.setUpdatesUrl(QString());
    m_lookUp->setSettings(none);
    m_lookUp->CheckUpdates();
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
}

void TestLookUp::failedDownloads_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<QString>("reason");
    Answer a;
    a.drop = true;
    QTest::newRow("dropped connection") << a << QString();
    QTest::newRow("slow answer") << page("<p>W1AW</p>", 3000) << u"no answer"_qs;
    QTest::newRow("huge answer") << page(QByteArray(kPageSizeLimit + 10, 'x')) << u"too large"_qs;
    a = page(QByteArray(kPageSizeLimit + 100000, 'x'));
    a.noLength = true;
    QTest::newRow("huge answer without a length") << a << u"larger than"_qs;
    a = page("<p>W1AW</p>");
    a.status = 404;
    QTest::newRow("HTTP error") << a << u"HTTP 404"_qs;
    a = page("");
    a.status = 302;
    a.headers = {{"Location", "file:///etc/hostname"}};
    QTest::newRow("redirect to a file") << a << QString();
}

void TestLookUp::failedDownloads()
{
    QFETCH(Answer, answer);
    QFETCH(QString, reason);
    m_server->answer(u"/db/W1AW"_qs, answer);
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    m_lookUp->setTransferTimeout(500);
    QSignalSpy failed(m_lookUp.get(), &LookUp::requestFailed);
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy missing(m_lookUp.get(), &LookUp::PageNotFound);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, 10000);
    QCOMPARE(failed.first().at(0).toString(), u"W1AW2"_qs);
    QVERIFY2(failed.first().at(1).toString().contains(reason), qPrintable(failed.first().at(1).toString()));
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
    QCOMPARE(got.size() + missing.size(), 0);
}

void TestLookUp::redirectToHttpIsFollowed()
{
    Answer moved = page("");
    moved.status = 301;
    moved.headers = {{"Location", m_server->base().toLatin1() + "/db/moved"}};
    m_server->answer(u"/db/W1AW"_qs, moved);
    m_server->answer(u"/db/moved"_qs, page("<p>W1AW moved</p>"));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE(got.size(), 1);
    QCOMPARE(m_lookUp->html(), u"W1AW moved"_qs);
}

void TestLookUp::redirects_data()
{
    QTest::addColumn<int>("hops");
    QTest::addColumn<QByteArray>("last"); ///< where the last hop goes; empty: the page
    QTest::addColumn<QString>("failure"); ///< empty: the page arrives
    QTest::newRow("one hop") << 1 << QByteArray() << QString();
    QTest::newRow("two hops") << 2 << QByteArray() << QString();
    QTest::newRow("ten hops, the limit") << kMaxRedirects << QByteArray() << QString();
    QTest::newRow("one hop too many") << kMaxRedirects + 1 << QByteArray() << u"too many redirects"_qs;
    QTest::newRow("fifty hops") << 50 << QByteArray() << u"too many redirects"_qs;
    QTest::newRow("a loop") << 3 << QByteArray("/db/W1AW") << u"too many redirects"_qs;
    QTest::newRow("relative address") << 2 << QByteArray("final") << QString();
    QTest::newRow("to a file") << 2 << QByteArray("file:///etc/hostname") << u"redirect to file:///etc/hostname refused"_qs;
    QTest::newRow("to ftp") << 1 << QByteArray("ftp://127.0.0.1/final") << u"refused"_qs;
}

void TestLookUp::redirects()
{
    QFETCH(int, hops);
    QFETCH(QByteArray, last);
    QFETCH(QString, failure);
    // /db/W1AW -> /hop/1 -> ... -> /hop/<hops - 1> -> /hop/final (or `last`)
    for (int i = 0; i < hops; ++i) {
        const QString from = i == 0 ? u"/db/W1AW"_qs : u"/hop/%1"_qs.arg(i);
        const QByteArray to = i + 1 < hops ? "/hop/" + QByteArray::number(i + 1) : last.isEmpty() ? "/hop/final" : last;
        m_server->answer(from, redirect(to.startsWith('/') ? m_server->base().toLatin1() + to : to));
    }
    m_server->answer(u"/hop/final"_qs, page("<p>W1AW moved</p>"));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy failed(m_lookUp.get(), &LookUp::requestFailed);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(got.size() + failed.size(), 1, 20000);
    if (failure.isEmpty()) {
        QCOMPARE(got.size(), 1);
        QCOMPARE(m_lookUp->html(), u"W1AW moved"_qs);
        QCOMPARE(m_server->requests().size(), hops + 1);
    } else {
        const QString reason = failed.first().at(1).toString();
        QVERIFY2(reason.contains(failure), qPrintable(reason));
        QVERIFY(m_server->requests().size() <= kMaxRedirects + 1);
        QCOMPARE(m_server->hits(u"/hop/final"_qs), 0);
    }
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
}

void TestLookUp::httpsNeverRedirectsToHttp_data()
{
    QTest::addColumn<bool>("fromTls");
    QTest::addColumn<bool>("toTls");
    QTest::addColumn<QString>("failure");
    QTest::newRow("https to https") << true << true << QString();
    QTest::newRow("http to https") << false << true << QString();
    QTest::newRow("https to http") << true << false << u"redirect from https to http refused"_qs;
}

void TestLookUp::httpsNeverRedirectsToHttp()
{
    QFETCH(bool, fromTls);
    QFETCH(bool, toTls);
    QFETCH(QString, failure);
    CallbookServer::trustCertificate();
    CallbookServer tls(nullptr, CallbookServer::Transport::Tls);
    QVERIFY(tls.isListening());
    CallbookServer &from = fromTls ? tls : *m_server;
    CallbookServer &to = toTls ? tls : *m_server;
    from.answer(u"/db/W1AW"_qs, redirect(to.base().toLatin1() + "/final"));
    to.answer(u"/final"_qs, page("<p>W1AW safe</p>"));
    LookUp lookUp(m_network.get(), settingsFor(from), u"K1ABC"_qs);
    lookUp.setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(&lookUp, &LookUp::GotPage);
    QSignalSpy failed(&lookUp, &LookUp::requestFailed);
    lookUp.GetPage(u"W1AW2"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(got.size() + failed.size(), 1, 20000);
    if (failure.isEmpty()) {
        QCOMPARE(lookUp.html(), u"W1AW safe"_qs);
    } else {
        const QString reason = failed.first().at(1).toString();
        QVERIFY2(reason.contains(failure), qPrintable(reason));
        QCOMPARE(to.hits(u"/final"_qs), 0);
    }
}

void TestLookUp::tricklingAnswersEndAtTheirDeadline_data()
{
    QTest::addColumn<bool>("picture");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("deadlineMs");
    QTest::addColumn<bool>("completes");
    // A byte every 40 ms never stands still long enough for the transfer
    // time-out; only the deadline ends it.
    QTest::newRow("picture, past its deadline") << true << 60 << 600 << false;
    QTest::newRow("picture, within its deadline") << true << 16 << 5000 << true;
    QTest::newRow("page, past its deadline") << false << 60 << 600 << false;
    QTest::newRow("page, within its deadline") << false << 16 << 5000 << true;
}

void TestLookUp::tricklingAnswersEndAtTheirDeadline()
{
    QFETCH(bool, picture);
    QFETCH(int, bytes);
    QFETCH(int, deadlineMs);
    QFETCH(bool, completes);
    Answer trickling = page("<p>W1AW</p>" + QByteArray(bytes - 11, 'x'));
    trickling.trickleMs = 40;
    m_server->answer(u"/slow"_qs, trickling);
    m_server->answer(u"/db/W1AW"_qs, trickling);

    QSignalSpy *done = nullptr;
    QSignalSpy *failed = nullptr;
    PictureDownloader downloader(m_network.get());
    QSignalSpy pictureDone(&downloader, &PictureDownloader::DownloadComplete);
    QSignalSpy pictureFailed(&downloader, &PictureDownloader::downloadFailed);
    QSignalSpy progress(&downloader, &PictureDownloader::Progress);
    QSignalSpy pageDone(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy pageFailed(m_lookUp.get(), &LookUp::requestFailed);
    QElapsedTimer timer;
    timer.start();
    if (picture) {
        downloader.setTransferTimeout(1000);
        downloader.setDeadline(deadlineMs);
        downloader.DownloadFile(m_server->base() + u"/slow"_qs, PictureDownloader::kForceUpdate, u"W1AW"_qs);
        done = &pictureDone;
        failed = &pictureFailed;
    } else {
        m_lookUp->setTransferTimeout(1000);
        m_lookUp->setDeadlines(deadlineMs, deadlineMs);
        m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
        m_lookUp->GetPage(u"W1AW2"_qs);
        done = &pageDone;
        failed = &pageFailed;
    }
    QTRY_COMPARE_WITH_TIMEOUT(done->size() + failed->size(), 1, 20000);
    if (completes) {
        QCOMPARE(done->size(), 1);
        if (picture)
            QCOMPARE(downloader.bytes().size(), bytes);
        return;
    }
    const QString reason = failed->first().at(1).toString();
    QCOMPARE(reason, u"no complete answer within %1 s"_qs.arg(deadlineMs / 1000.0));
    // Ended at the deadline, not when the last byte came (2.4 s).
    QVERIFY2(timer.elapsed() < deadlineMs + 1200, qPrintable(QString::number(timer.elapsed())));
    if (picture)
        QVERIFY(progress.size() > 1);
}

void TestLookUp::pagesAreReadOffTheEventLoop()
{
    qint64 readMs = 0;
    m_server->answer(u"/db/W1AW"_qs, page(slowPage(readMs)));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    // A timer of the host's keeps firing while the page is read.
    QElapsedTimer sinceTick;
    qint64 longestGap = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, this, [&] { longestGap = std::max(longestGap, sinceTick.restart()); });
    sinceTick.start();
    ticker.start(10);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(got.size(), 1, 60000);
    QVERIFY2(longestGap < readMs / 2, qPrintable(u"gap of %1 ms, reading takes %2 ms"_qs.arg(longestGap).arg(readMs)));
    QVERIFY(m_lookUp->html().startsWith(u"W1AW\r\n\r\nx"_qs));
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
}

void TestLookUp::pageNotReadInTimeFails()
{
    qint64 readMs = 0;
    m_server->answer(u"/db/W1AW"_qs, page(slowPage(readMs)));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    m_lookUp->setDecodeDeadline(50);
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy missing(m_lookUp.get(), &LookUp::PageNotFound);
    QSignalSpy failed(m_lookUp.get(), &LookUp::requestFailed);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, 20000);
    QCOMPARE(failed.first().at(0).toString(), u"W1AW2"_qs);
    QCOMPARE(failed.first().at(1).toString(), u"page too complex: not read within 0.05 s"_qs);
    QVERIFY(m_lookUp->pendingRequests().isEmpty());
    QTest::qWait(int(readMs) + 200); // the reading, had it gone on, would be done
    QCOMPARE(got.size() + missing.size(), 0);
    QCOMPARE(failed.size(), 1);
}

void TestLookUp::pageOfASupersededRequestIsDropped()
{
    qint64 readMs = 0;
    m_server->answer(u"/db/W1AW"_qs, {page(slowPage(readMs)), page("<p>W1AW again</p>")});
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    QSignalSpy answered(m_server.get(), &CallbookServer::answered);
    m_lookUp->GetPage(u"W1AW2"_qs);
    // Ask again while the first page is being read.
    QTRY_COMPARE(answered.size(), 1);
    QTest::qWait(100);
    QCOMPARE(got.size(), 0);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QCOMPARE(m_lookUp->pendingRequests(), QStringList{u"W1AW2"_qs});
    QTRY_COMPARE(got.size(), 1);
    QCOMPARE(m_lookUp->html(), u"W1AW again"_qs);
    QTest::qWait(int(readMs) + 200);
    QCOMPARE(got.size(), 1);
    QCOMPARE(m_lookUp->html(), u"W1AW again"_qs);
}

void TestLookUp::eventsKeepTheOrderDownloadsEnded()
{
    // The first page takes long to read, the second (arriving later) none:
    // its event still waits for the first one's.
    qint64 readMs = 0;
    m_server->answer(u"/db/W1AW"_qs, page(slowPage(readMs)));
    m_server->answer(u"/db/K2XX"_qs, page("<p>nobody</p>", 400));
    m_server->answer(u"/pics/k2xx.jpg"_qs, page("jpeg", 450));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QStringList events;
    connect(m_lookUp.get(), &LookUp::GotPage, this, [&](const QString &call) { events << u"GotPage "_qs + call; });
    connect(m_lookUp.get(), &LookUp::PageNotFound, this, [&](const QString &call) { events << u"PageNotFound "_qs + call; });
    connect(m_lookUp.get(), &LookUp::PictureReady, this, [&](const QString &call) { events << u"PictureReady "_qs + call; });
    m_lookUp->GetPage(u"W1AW2"_qs);
    m_lookUp->GetPage(u"K2XX2"_qs);
    m_lookUp->GetPicture(m_server->base() + u"/pics/k2xx.jpg"_qs, u"K2XX5"_qs);
    QTRY_COMPARE_WITH_TIMEOUT(events.size(), 3, 60000);
    QCOMPARE(events, (QStringList{u"GotPage W1AW"_qs, u"PageNotFound K2XX"_qs, u"PictureReady K2XX"_qs}));
}

void TestLookUp::pictures_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("thumbnail");
    QTest::newRow("JPEG") << QByteArray("jpeg") << QSize(200, 100) << QSize(32, 16);
    QTest::newRow("PNG") << QByteArray("png") << QSize(640, 480) << QSize(21, 16);
    QTest::newRow("GIF") << QByteArray("gif") << QSize(100, 200) << QSize(8, 16);
}

void TestLookUp::pictures()
{
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    QFETCH(QSize, thumbnail);
    const QByteArray bytes = CallbookServer::picture(format.constData(), size);
    QCOMPARE(QImage::fromData(bytes).size(), size);
    m_server->answer(u"/pics/w/ve3%2Fw1aw/ve3%2Fw1aw.jpg"_qs, page(bytes));

    PictureDownloader downloader(m_network.get());
    QSignalSpy complete(&downloader, &PictureDownloader::DownloadComplete);
    QSignalSpy progress(&downloader, &PictureDownloader::Progress);
    // A call with "/" must neither change the address's shape nor leave Images/.
    QString address = pictureAddress(m_lookUp->settings().picturesHost(), u"VE3/W1AW"_qs);
    address.replace(u"ve3/w1aw"_qs, u"ve3%2Fw1aw"_qs);
    downloader.DownloadFile(address, PictureDownloader::kForceUpdate, u"VE3/W1AW"_qs);
    QTRY_COMPARE(complete.size(), 1);
    QCOMPARE(complete.first().first().toString(), u"VE3/W1AW"_qs);
    QVERIFY(!progress.isEmpty());
    QCOMPARE(progress.last().at(0).toLongLong(), qint64(bytes.size()));
    QCOMPARE(progress.last().at(2).toString(), u"VE3/W1AW"_qs);
    QCOMPARE(downloader.bytes(), bytes);

    QTemporaryDir dir;
    const marvik::app::DataFolder folder(dir.path());
    const StoredPicture stored = storePicture(folder, u"VE3/W1AW"_qs, downloader.bytes());
    QCOMPARE(stored.status, PictureStatus::Saved);
    QCOMPARE(stored.picturePath, dir.path() + u"/Images/VE3%2FW1AW.jpg"_qs);
    QCOMPARE(stored.thumbnailPath, dir.path() + u"/Images/Thumbs/VE3%2FW1AW.jpg"_qs);
    QFile picture(stored.picturePath);
    QVERIFY(picture.open(QIODevice::ReadOnly));
    QCOMPARE(picture.readAll(), bytes);
    QFile thumb(stored.thumbnailPath);
    QVERIFY(thumb.open(QIODevice::ReadOnly));
    const QByteArray bmp = thumb.readAll();
    QVERIFY(bmp.startsWith("BM"));
    const QImage read = QImage::fromData(bmp);
    QCOMPARE(read.size(), thumbnail);
    // Drawn from the picture, not left white.
    QVERIFY(qAbs(qBlue(read.pixel(thumbnail.width() / 2, 8)) - 200) < 16);
}

void TestLookUp::notAPicture()
{
    QTemporaryDir dir;
    const marvik::app::DataFolder folder(dir.path());
    const QByteArray html = fixture(u"qrz_login.html"_qs);
    const StoredPicture stored = storePicture(folder, u"W1AW"_qs, html);
    QCOMPARE(stored.status, PictureStatus::NotAPicture);
    QFile picture(folder.picturePath(u"W1AW"_qs));
    QVERIFY(picture.open(QIODevice::ReadOnly));
    QCOMPARE(picture.readAll(), html);
    QVERIFY(stored.thumbnailPath.isEmpty());
    QVERIFY(!QFile::exists(folder.thumbnailPath(u"W1AW"_qs)));
    const marvik::i18n::Texts texts = marvik::i18n::Texts::english();
    QCOMPARE(texts[marvik::i18n::TextId::CorruptImage1] + marvik::i18n::kMessageJoint
                 + texts[marvik::i18n::TextId::CorruptImage2],
             u"The image may be corrupt\nand can not be displayed."_qs);
}

void TestLookUp::samePictureNameOnlyNewestCompletes()
{
    m_server->answer(u"/a.jpg"_qs, page("first", 600));
    m_server->answer(u"/b.jpg"_qs, page("second"));
    Answer huge = page(QByteArray(kPictureSizeLimit + 1, 'x'));
    m_server->answer(u"/huge.jpg"_qs, huge);
    PictureDownloader downloader(m_network.get());
    QSignalSpy complete(&downloader, &PictureDownloader::DownloadComplete);
    QSignalSpy failed(&downloader, &PictureDownloader::downloadFailed);
    downloader.DownloadFile(m_server->base() + u"/a.jpg"_qs, PictureDownloader::kForceUpdate, u"W1AW"_qs);
    downloader.DownloadFile(m_server->base() + u"/b.jpg"_qs, PictureDownloader::kForceUpdate, u"W1AW"_qs);
    downloader.DownloadFile(m_server->base() + u"/huge.jpg"_qs, PictureDownloader::kForceUpdate, u"K2XX"_qs);
    QCOMPARE(downloader.pendingDownloads(), (QStringList{u"W1AW"_qs, u"K2XX"_qs}));
    QTRY_COMPARE(complete.size(), 1);
    QTRY_COMPARE(failed.size(), 1);
    QTest::qWait(800);
    QCOMPARE(complete.size(), 1);
    QCOMPARE(downloader.bytes(), QByteArray("second"));
    QCOMPARE(failed.first().first().toString(), u"K2XX"_qs);
    QVERIFY(downloader.pendingDownloads().isEmpty());
}

void TestLookUp::cookiesPersistOwnerOnly()
{
    QTemporaryDir dir;
    Answer login = page("<p>W1AW</p>");
    login.headers = {{"Set-Cookie", "session=abc123; Max-Age=3600; Path=/"}, {"Set-Cookie", "tab=1; Path=/"}};
    m_server->answer(u"/db/W1AW"_qs, login);
    m_network->setCookieJar(new CookieJar(dir.path()));
    m_lookUp->setDataBase(dataBaseOf(Source::Qrz));
    QSignalSpy got(m_lookUp.get(), &LookUp::GotPage);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE(got.size(), 1);
    m_lookUp->GetPage(u"W1AW2"_qs);
    QTRY_COMPARE(got.size(), 2);
    QCOMPARE(m_server->cookies().value(0), QByteArray());
    QVERIFY(m_server->cookies().value(1).contains("session=abc123"));

    const QString file = dir.filePath(u"Cookies.txt"_qs);
    const QFileDevice::Permissions ownerGroupOther(0x7077); // the "user" bits repeat the owner's
    QCOMPARE(QFile::permissions(file) & ownerGroupOther, QFile::ReadOwner | QFile::WriteOwner);
    // A new jar on the folder has the lasting cookie but not the session one.
    CookieJar again(dir.path());
    QStringList names;
    for (const QNetworkCookie &c : again.cookies())
        names << QString::fromLatin1(c.name());
    QCOMPARE(names, QStringList{u"session"_qs});
}

namespace {

struct CliRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

CliRun runCli(const QStringList &args, const QProcessEnvironment &env = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), args);
    // Spin the event loop, not just wait: the server lives in this process.
    QSignalSpy finished(&process, &QProcess::finished);
    if (!finished.wait(30000))
        process.kill();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

void TestLookUp::cliReadAndText()
{
    const QString data = QStringLiteral(MARVIK_TEST_DATA "/lookup/");
    CliRun r = runCli({u"html2text"_qs, data + u"callook_notfound.html"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("callook.info - W9XYZ\r\n\r\nINVALID: W9XYZ is not in the license database.\r\n\r\n"
                               "callook.info by Joshua Dick"));

    r = runCli({u"read"_qs, u"callook"_qs, u"w1aw"_qs, data + u"callook_found.html"_qs});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.err, QByteArray());
    const QJsonObject o = QJsonDocument::fromJson(r.out).object();
    QCOMPARE(o.value(u"event"_qs).toString(), u"GotPage"_qs);
    QCOMPARE(o.value(u"name"_qs).toString(), u"ARRL HQ OPERATORS CLUB"_qs);
    QCOMPARE(o.value(u"country"_qs).toString(), u"U.S.A."_qs);
    QCOMPARE(o.value(u"locator"_qs).toString(), u"FN31pr\r\n"_qs);
    QCOMPARE(o.value(u"latitude"_qs).toDouble(), 41.714775);
    QCOMPARE(o.keys().size(), 12);

    r = runCli({u"read"_qs, u"5"_qs, u"W9XYZ"_qs, data + u"hamcall_notfound.html"_qs});
    QCOMPARE(QJsonDocument::fromJson(r.out).object().value(u"event"_qs).toString(), u"CallNotFound"_qs);

    r = runCli({u"read"_qs, u"qrz"_qs, u"K2XX"_qs, data + u"qrz_found.html"_qs});
    QCOMPARE(QJsonDocument::fromJson(r.out).object().value(u"event"_qs).toString(), u"PageNotFound"_qs);

    r = runCli({u"read"_qs, u"qrzcd"_qs, u"W1AW"_qs, data + u"qrz_found.html"_qs});
    QCOMPARE(r.exitCode, 2);
    QCOMPARE(r.err.count('\n'), 1);
    r = runCli({u"read"_qs, u"qrz"_qs, u"W1AW"_qs, data + u"missing.html"_qs});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.err.count('\n'), 1);
    r = runCli({u"html2text"_qs});
    QCOMPARE(r.exitCode, 2);
}

void TestLookUp::cliLookup()
{
    QTemporaryDir config;
    QTemporaryDir data;
    {
        QSettings store(config.filePath(u"Marvik/Marvik.conf"_qs), QSettings::IniFormat);
        SourceSettings s = settingsFor(*m_server);
        s.setHost(Source::HamCall, u"http://127.0.0.1:1"_qs); // nothing listens there
        s.save(store);
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_qs, config.path());
    m_server->answer(u"/db/W1AW"_qs, page(fixture(u"qrz_found.html"_qs)));

    CliRun r = runCli({u"--data-dir"_qs, data.path(), u"lookup"_qs, u"--source"_qs, u"qrz"_qs, u"de w1aw-5"_qs}, env);
    QCOMPARE(r.exitCode, 0);
    const QJsonObject o = QJsonDocument::fromJson(r.out).object();
    QCOMPARE(o.value(u"event"_qs).toString(), u"GotPage"_qs);
    QCOMPARE(o.value(u"name"_qs).toString(), u"ARRL HQ Operators Club"_qs);
    QCOMPARE(m_server->requests(), QStringList{u"/db/W1AW"_qs});

    r = runCli({u"--data-dir"_qs, data.path(), u"lookup"_qs, u"--source=hamcall"_qs, u"W1AW"_qs}, env);
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.err.count('\n'), 1);
    QVERIFY(r.out.isEmpty());

    r = runCli({u"--data-dir"_qs, data.path(), u"lookup"_qs, u"--source"_qs, u"9"_qs, u"W1AW"_qs}, env);
    QCOMPARE(r.exitCode, 2);
    r = runCli({u"--data-dir"_qs, data.path(), u"lookup"_qs}, env);
    QCOMPARE(r.exitCode, 2);
}

QTEST_MAIN(TestLookUp)
#include "tst_lookup.moc"
