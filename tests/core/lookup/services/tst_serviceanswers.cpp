// SPDX-License-Identifier: GPL-3.0-or-later
// The four data services' answers read into lookup results: records, the
// errors each service words its own way, session keys and counters, and
// answers that are no answers at all.
#include "core/lookup/services/ServiceAnswer.h"

#include <QFile>
#include <QTest>

using namespace marvik::lookup;

namespace {

QByteArray sample(const QString &file)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/services/") + file);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestServiceAnswers : public QObject
{
    Q_OBJECT

private slots:
    void records_data();
    void records();
    void errors_data();
    void errors();
    void sessions_data();
    void sessions();
    void positions_data();
    void positions();
};

void TestServiceAnswers::records_data()
{
    QTest::addColumn<Source>("source");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("fields"); // name, first name, address 1, address 2, country, locator, class, previous call, born, web page, picture
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<bool>("limited");

    QTest::newRow("QRZ, subscriber")
        << Source::Qrz << u"qrz_w1aw.xml"_qs
        << QStringList{u"ARRL HQ OPERATORS CLUB"_qs, u"Hiram"_qs, u"225 MAIN ST"_qs, u"NEWINGTON, CT 06111"_qs,
                       u"United States"_qs, u"FN31pr"_qs, u"C"_qs, u"K1AW"_qs, u"1914"_qs,
                       u"http://www.arrl.org/w1aw"_qs, u"https://cdn-xml.qrz.com/w/w1aw/w1aw.jpg"_qs}
        << 41.714775 << -72.727260 << false;
    QTest::newRow("QRZ, non-subscriber: name and town only")
        << Source::Qrz << u"qrz_nonsubscriber.xml"_qs
        << QStringList{u"ARRL HQ OPERATORS CLUB"_qs, u"ARRL HQ"_qs, QString(), u"NEWINGTON"_qs, u"United States"_qs,
                       QString(), QString(), QString(), QString(), QString(), QString()}
        << 0.0 << 0.0 << true;
    QTest::newRow("HamQTH")
        << Source::HamQth << u"hamqth_w1aw.xml"_qs
        << QStringList{u"ARRL HQ Operators Club"_qs, u"Hiram"_qs, u"225 Main St"_qs, u"06111 Newington, CT"_qs,
                       u"United States"_qs, u"fn31pr"_qs, QString(), QString(), u"1914"_qs,
                       u"http://www.arrl.org/w1aw"_qs, u"https://www.hamqth.com/userfiles/w/w1/w1aw/_profile/w1aw.jpg"_qs}
        << 41.714775 << -72.72726 << false;
    QTest::newRow("QRZCQ, whole name in one field")
        << Source::QrzCq << u"qrzcq_w1aw.xml"_qs
        << QStringList{u"ARRL HQ Operators Club"_qs, QString(), u"225 Main St"_qs, u"Newington 06111"_qs,
                       u"United States"_qs, u"FN31PR"_qs, QString(), QString(), QString(),
                       u"http://www.arrl.org/w1aw"_qs, u"https://www.qrzcq.com/images/w1aw.jpg"_qs}
        << 41.714775 << -72.727260 << false;
    QTest::newRow("Callook, club")
        << Source::Callook << u"callook_w1aw.json"_qs
        << QStringList{u"ARRL HQ OPERATORS CLUB"_qs, QString(), u"225 MAIN ST"_qs, u"NEWINGTON, CT 06111"_qs,
                       u"USA"_qs, u"FN31pr"_qs, QString(), QString(), QString(), QString(), QString()}
        << 41.714775 << -72.727260 << false;
    // No coordinates: the centre of the locator's subsquare stands in.
    QTest::newRow("Callook, person, position from the locator")
        << Source::Callook << u"callook_person.json"_qs
        << QStringList{u"JANE Q SAMPLE"_qs, QString(), u"12 ELM RD"_qs, u"SPRINGFIELD, MA 01101"_qs, u"USA"_qs,
                       u"FN32qc"_qs, u"EXTRA"_qs, u"KB1ABC"_qs, QString(), QString(), QString()}
        << 42.1041666666667 << -72.625 << false;
}

void TestServiceAnswers::records()
{
    QFETCH(Source, source);
    QFETCH(QString, file);
    QFETCH(QStringList, fields);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(bool, limited);

    const ServiceAnswer a = parseServiceAnswer(source, sample(file));
    QCOMPARE(a.error, ServiceError::None);
    QVERIFY(a.record);
    QCOMPARE(a.limited, limited);
    const LookupResult &r = a.result;
    QCOMPARE(r.outcome, LookupOutcome::Found);
    const QStringList got{r.name,     r.firstName,    r.address1,     r.address2,    r.country,  r.locator,
                          r.licenceClass, r.previousCall, r.dateOfBirth, r.webPage, r.pictureUrl};
    QCOMPARE(got, fields);
    QVERIFY(qAbs(r.latitude - latitude) < 1e-9);
    QVERIFY(qAbs(r.longitude - longitude) < 1e-9);
}

void TestServiceAnswers::errors_data()
{
    QTest::addColumn<Source>("source");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<ServiceError>("error");
    QTest::addColumn<QString>("message");
    QTest::addColumn<LookupOutcome>("outcome");

    QTest::newRow("QRZ not found") << Source::Qrz << sample(u"qrz_notfound.xml"_qs) << ServiceError::NotFound
                                   << u"Not found: W9XYZ"_qs << LookupOutcome::CallNotFound;
    QTest::newRow("QRZ bad password") << Source::Qrz << sample(u"qrz_badlogin.xml"_qs) << ServiceError::BadLogin
                                      << u"Username/password incorrect"_qs << LookupOutcome::LoginRequired;
    QTest::newRow("QRZ session timeout") << Source::Qrz << sample(u"qrz_timeout.xml"_qs)
                                         << ServiceError::SessionExpired << u"Session Timeout"_qs
                                         << LookupOutcome::LoginRequired;
    QTest::newRow("QRZ day's lookups used up") << Source::Qrz << sample(u"qrz_quota.xml"_qs)
                                               << ServiceError::QuotaExceeded
                                               << u"Lookup limit exceeded: 100 lookups per day for this account"_qs
                                               << LookupOutcome::ReaderError;
    // A call made of the words the other errors are told by is still not found.
    QTest::newRow("QRZ not found, call that reads like a word")
        << Source::Qrz
        << QByteArray("<QRZDatabase><Session><Error>Not found: K3KEY</Error><Key>k</Key></Session></QRZDatabase>")
        << ServiceError::NotFound << u"Not found: K3KEY"_qs << LookupOutcome::CallNotFound;
    QTest::newRow("QRZ, no key and no record: log in again")
        << Source::Qrz << QByteArray("<QRZDatabase><Session><GMTime>now</GMTime></Session></QRZDatabase>")
        << ServiceError::SessionExpired << u"no session key in the answer"_qs << LookupOutcome::LoginRequired;
    QTest::newRow("HamQTH not found") << Source::HamQth << sample(u"hamqth_notfound.xml"_qs) << ServiceError::NotFound
                                     << u"Callsign not found"_qs << LookupOutcome::CallNotFound;
    QTest::newRow("HamQTH session expired") << Source::HamQth << sample(u"hamqth_expired.xml"_qs)
                                            << ServiceError::SessionExpired << u"Session does not exist or expired"_qs
                                            << LookupOutcome::LoginRequired;
    QTest::newRow("HamQTH bad password") << Source::HamQth << sample(u"hamqth_badlogin.xml"_qs)
                                         << ServiceError::BadLogin << u"Wrong user name or password"_qs
                                         << LookupOutcome::LoginRequired;
    QTest::newRow("QRZCQ not found") << Source::QrzCq << sample(u"qrzcq_notfound.xml"_qs) << ServiceError::NotFound
                                     << u"Callsign not found: W9XYZ"_qs << LookupOutcome::CallNotFound;
    QTest::newRow("QRZCQ bad password") << Source::QrzCq << sample(u"qrzcq_badlogin.xml"_qs)
                                        << ServiceError::BadLogin << u"Invalid username or password"_qs
                                        << LookupOutcome::LoginRequired;
    QTest::newRow("QRZCQ expired key") << Source::QrzCq << sample(u"qrzcq_expired.xml"_qs)
                                       << ServiceError::SessionExpired << u"Invalid session key"_qs
                                       << LookupOutcome::LoginRequired;
    QTest::newRow("Callook invalid") << Source::Callook << sample(u"callook_invalid.json"_qs)
                                     << ServiceError::NotFound << u"INVALID"_qs << LookupOutcome::CallNotFound;
    QTest::newRow("Callook updating") << Source::Callook << sample(u"callook_updating.json"_qs)
                                      << ServiceError::Updating << u"UPDATING"_qs << LookupOutcome::ReaderError;

    // Answers that are none.
    const QByteArray cut = sample(u"qrz_w1aw.xml"_qs).left(900);
    QTest::newRow("QRZ answer cut off") << Source::Qrz << cut << ServiceError::Malformed << QString()
                                        << LookupOutcome::ReaderError;
    QTest::newRow("an HTML error page") << Source::Qrz << QByteArray("<html><body>502 Bad Gateway</body></html>")
                                        << ServiceError::Malformed << u"not an answer of this service"_qs
                                        << LookupOutcome::ReaderError;
    QTest::newRow("another service's answer") << Source::QrzCq << sample(u"qrz_w1aw.xml"_qs)
                                              << ServiceError::Malformed << u"not an answer of this service"_qs
                                              << LookupOutcome::ReaderError;
    QTest::newRow("empty answer") << Source::HamQth << QByteArray() << ServiceError::Malformed << QString()
                                  << LookupOutcome::ReaderError;
    QTest::newRow("HamQTH with neither part") << Source::HamQth << QByteArray("<HamQTH version=\"2.8\"></HamQTH>")
                                              << ServiceError::Malformed
                                              << u"neither a session nor a record in the answer"_qs
                                              << LookupOutcome::ReaderError;
    QTest::newRow("entities that multiply")
        << Source::Qrz
        << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE q [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;"
                      "&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;"
                      "&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">]><QRZDatabase><Session><Error>&e;"
                      "</Error></Session></QRZDatabase>")
        << ServiceError::Malformed << QString() << LookupOutcome::ReaderError;
    QTest::newRow("Callook, not JSON") << Source::Callook << QByteArray("<html>callook</html>")
                                       << ServiceError::Malformed << QString() << LookupOutcome::ReaderError;
    QTest::newRow("Callook, JSON array") << Source::Callook << QByteArray("[1,2]") << ServiceError::Malformed
                                         << u"not an answer of this service"_qs << LookupOutcome::ReaderError;
    QTest::newRow("Callook, unknown status") << Source::Callook << QByteArray("{\"status\":\"PENDING\"}")
                                             << ServiceError::Malformed << u"PENDING"_qs << LookupOutcome::ReaderError;
    QTest::newRow("a source without a service") << Source::EHam << sample(u"qrz_w1aw.xml"_qs)
                                                << ServiceError::Malformed << u"eHam has no data service"_qs
                                                << LookupOutcome::ReaderError;
}

void TestServiceAnswers::errors()
{
    QFETCH(Source, source);
    QFETCH(QByteArray, bytes);
    QFETCH(ServiceError, error);
    QFETCH(QString, message);
    QFETCH(LookupOutcome, outcome);

    const ServiceAnswer a = parseServiceAnswer(source, bytes);
    QCOMPARE(a.error, error);
    QVERIFY(!a.record);
    QCOMPARE(a.result.outcome, outcome);
    QVERIFY(a.result.name.isEmpty());
    // A malformed answer says why in the reader's words; the others give the
    // service's own.
    if (!message.isEmpty() || error != ServiceError::Malformed)
        QCOMPARE(a.message, message);
    else
        QVERIFY(!a.message.isEmpty());
}

void TestServiceAnswers::sessions_data()
{
    QTest::addColumn<Source>("source");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("login");
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("subscription");

    QTest::newRow("QRZ log-in") << Source::Qrz << sample(u"qrz_login.xml"_qs) << true << u"2331uf894c4bd29f3923f3bacf02c532d7bd9"_qs
                                << 123 << u"Wed Jan 1 12:34:03 2031"_qs;
    QTest::newRow("QRZ lookup keeps the counters") << Source::Qrz << sample(u"qrz_w1aw.xml"_qs) << false
                                                   << u"2331uf894c4bd29f3923f3bacf02c532d7bd9"_qs << 124
                                                   << u"Wed Jan 1 12:34:03 2031"_qs;
    QTest::newRow("QRZ not found keeps them too") << Source::Qrz << sample(u"qrz_notfound.xml"_qs) << false
                                                  << u"2331uf894c4bd29f3923f3bacf02c532d7bd9"_qs << 125
                                                  << u"Wed Jan 1 12:34:03 2031"_qs;
    QTest::newRow("QRZ non-subscriber") << Source::Qrz << sample(u"qrz_nonsubscriber.xml"_qs) << false
                                        << u"2331uf894c4bd29f3923f3bacf02c532d7bd9"_qs << 17 << u"non-subscriber"_qs;
    QTest::newRow("QRZ, a count below zero is no count")
        << Source::Qrz << QByteArray("<QRZDatabase><Session><Key>K</Key><Count>-25</Count></Session></QRZDatabase>") << true << u"K"_qs
        << -1
        << QString();
    QTest::newRow("QRZ refused log-in") << Source::Qrz << sample(u"qrz_badlogin.xml"_qs) << false << QString() << -1 << QString();
    QTest::newRow("HamQTH log-in") << Source::HamQth << sample(u"hamqth_login.xml"_qs) << true
                                   << u"09b0ae90050be03c452ad235a1f2915ad684393c"_qs << -1 << QString();
    QTest::newRow("QRZCQ log-in") << Source::QrzCq << sample(u"qrzcq_login.xml"_qs) << true
                                  << u"c2a8f73e61d94b0f9f3e0d1b2a7c6e55"_qs << 8 << u"2031-06-30"_qs;
}

void TestServiceAnswers::sessions()
{
    QFETCH(Source, source);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, login);
    QFETCH(QString, key);
    QFETCH(int, count);
    QFETCH(QString, subscription);

    const ServiceAnswer a = parseServiceAnswer(source, bytes);
    QCOMPARE(a.sessionKey, key);
    QCOMPARE(a.lookupsToday, count);
    QCOMPARE(a.subscription, subscription);
    if (login)
        QCOMPARE(a.error, ServiceError::None);
}

void TestServiceAnswers::positions_data()
{
    QTest::addColumn<Source>("source");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");

    const auto qrz = [](const char *fields) -> QByteArray {
        return QByteArray("<QRZDatabase><Callsign><call>W1AW</call>") + fields + "</Callsign></QRZDatabase>";
    };
    QTest::newRow("given position wins over the locator") << Source::Qrz
                                                          << qrz("<lat>41.5</lat><lon>-72.5</lon><grid>JO62qm</grid>")
                                                          << 41.5 << -72.5;
    QTest::newRow("position off the globe: the locator's instead")
        << Source::Qrz << qrz("<lat>95</lat><lon>-72.5</lon><grid>JO62qm</grid>") << 52.5208333333333
        << 13.375;
    QTest::newRow("not a number") << Source::Qrz << qrz("<lat>north</lat><lon>east</lon>") << 0.0 << 0.0;
    // Letters past R and X make no locator, though the setup dialog's
    // reader would take them.
    QTest::newRow("Callook, locator with a stray character")
        << Source::Callook
        << QByteArray("{\"status\":\"VALID\",\"name\":\"J\",\"location\":{\"latitude\":\"\",\"gridsquare\":\"F~32qc\"}}")
        << 0.0 << 0.0;
    QTest::newRow("Callook, field letter past R") << Source::Callook
        << QByteArray("{\"status\":\"VALID\",\"name\":\"J\",\"location\":{\"gridsquare\":\"ZZ32qc\"}}")
        << 0.0 << 0.0;
    QTest::newRow("Callook, numbers as numbers") << Source::Callook
        << QByteArray("{\"status\":\"VALID\",\"name\":\"J\",\"location\":{\"latitude\":41.25,\"longitude\":-72.5}}")
        << 41.25 << -72.5;
}

void TestServiceAnswers::positions()
{
    QFETCH(Source, source);
    QFETCH(QByteArray, bytes);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    const ServiceAnswer a = parseServiceAnswer(source, bytes);
    QVERIFY(a.record);
    QVERIFY(qAbs(a.result.latitude - latitude) < 1e-9);
    QVERIFY(qAbs(a.result.longitude - longitude) < 1e-9);
}

QTEST_GUILESS_MAIN(TestServiceAnswers)
#include "tst_serviceanswers.moc"
