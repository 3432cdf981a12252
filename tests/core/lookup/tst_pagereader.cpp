// SPDX-License-Identifier: GPL-3.0-or-later
// The page readers of the five callbooks, their text primitives, and what
// the main window makes of a lookup result.
#include "core/lists/CallRecord.h"
#include "core/lookup/HtmlText.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"
#include "core/lookup/PageReader.h"
#include "core/lookup/PictureFiles.h"

#include <QDateTime>
#include <QFile>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTest>

using namespace marvik::lookup;
using marvik::lists::CallRecord;
namespace lists = marvik::lists;

namespace {

QString pageText(const QString &file)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/lookup/") + file);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return htmlDecode(decodePage(f.readAll()));
}

} // namespace

class TestPageReader : public QObject
{
    Q_OBJECT

private slots:
    void cut_data();
    void cut();
    void searches();
    void fixtures_data();
    void fixtures();
    void nameRules_data();
    void nameRules();
    void coordinates_data();
    void coordinates();
    void loginKeepsTheOldCursor();
    void missingEndMarkIsAReaderError();
    void unknownSourceReadsNothing();
    void pictureAddress_data();
    void pictureAddress();
    void thumbnailSize_data();
    void thumbnailSize();
    void writeResult();
    void writeResultKeepsWhatItLacks_data();
    void writeResultKeepsWhatItLacks();
    void positionFromLocator();

private:
    QNetworkAccessManager m_network; // never used: nothing is requested here
};

void TestPageReader::cut_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("result");
    QTest::addColumn<bool>("error");
    QTest::newRow("middle") << 2 << 3 << u"bcd"_qs << false;
    QTest::newRow("runs past the end") << 4 << 10 << u"def"_qs << false;
    QTest::newRow("starts past the end") << 9 << 2 << QString() << false;
    QTest::newRow("zero length") << 3 << 0 << QString() << false;
    QTest::newRow("negative length") << 3 << -1 << QString() << true;
    QTest::newRow("start 0") << 0 << 2 << QString() << true;
}

void TestPageReader::cut()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(QString, result);
    QFETCH(bool, error);
    if (error)
        QVERIFY_THROWS_EXCEPTION(ReaderError, pagetext::cut(u"abcdef", start, length));
    else
        QCOMPARE(pagetext::cut(u"abcdef", start, length), result);
}

void TestPageReader::searches()
{
    using namespace pagetext;
    const QString text = u"ab\r\ncd\r\nef"_qs;
    QCOMPARE(find(text, kCrLf, 1), 3);
    QCOMPARE(find(text, kCrLf, 4), 7);
    QCOMPARE(find(text, kCrLf, 8), 0);
    QCOMPARE(find(text, u"CD", 1), 0); // case-sensitive
    QCOMPARE(find(text, u"", 5), 5);
    QCOMPARE(find(text, u"x", 99), 0);
    QVERIFY_THROWS_EXCEPTION(ReaderError, find(text, u"a", 0));
    // Backwards: the match must lie within the first `upTo` characters.
    QCOMPARE(findBack(text, kCrLf, 6), 3);
    QCOMPARE(findBack(text, kCrLf, 8), 7);
    QCOMPARE(findBack(text, kCrLf, 7), 3);
    QCOMPARE(findBack(text, kCrLf, 99), 0);
    QVERIFY_THROWS_EXCEPTION(ReaderError, findBack(text, kCrLf, 0));
    QCOMPARE(trimBlanks(u"  a b\t "), u"a b\t"_qs);
}

void TestPageReader::fixtures_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("call");
    QTest::addColumn<LookupOutcome>("outcome");
    QTest::addColumn<QStringList>("fields"); // name, add1, add2, country, locator, class, born, web page
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");

    const double lat = 41.714775;
    const double lon = -72.72726;
    QTest::newRow("eHam found") << dataBaseOf(Source::EHam) << u"eham_found.html"_qs << u"W1AW"_qs << LookupOutcome::Found
                                << QStringList{u"Hiram Percy Maxim Memorial"_qs, u"225 Main Street"_qs,
                                               u"Newington, CT 06111"_qs, u"United States"_qs, {}, u"\tClub"_qs, {}, {}}
                                << lat << lon;
    QTest::newRow("eHam not found") << dataBaseOf(Source::EHam) << u"eham_notfound.html"_qs << u"W9XYZ"_qs
                                    << LookupOutcome::CallNotFound << QStringList(8) << 0.0 << 0.0;
    QTest::newRow("QRZ found") << dataBaseOf(Source::Qrz) << u"qrz_found.html"_qs << u"W1AW"_qs << LookupOutcome::Found
                               << QStringList{u"ARRL HQ Operators Club"_qs, u"225 Main St"_qs, u"Newington, CT 06111"_qs,
                                              u"USA"_qs, u"\tFN31pr"_qs, u"\tC"_qs, u"\t1914"_qs,
                                              u"\thttp://www.arrl.org/w1aw"_qs}
                               << lat << lon;
    QTest::newRow("QRZ login") << dataBaseOf(Source::Qrz) << u"qrz_login.html"_qs << u"W1AW"_qs << LookupOutcome::LoginRequired
                               << QStringList(8) << 0.0 << 0.0;
    QTest::newRow("QRZ not found") << dataBaseOf(Source::Qrz) << u"qrz_notfound.html"_qs << u"W9XYZ"_qs
                                   << LookupOutcome::CallNotFound << QStringList(8) << 0.0 << 0.0;
    QTest::newRow("QRZCQ found") << dataBaseOf(Source::QrzCq) << u"qrzcq_found.html"_qs << u"W1AW"_qs << LookupOutcome::Found
                                 << QStringList{u"Hiram Percy Maxim Memorial Station"_qs, u"225 Main St"_qs,
                                                u"Newington, CT 06111"_qs, u"United States"_qs, {}, u"Club"_qs, {}, {}}
                                 << lat << lon;
    QTest::newRow("QRZCQ not found") << dataBaseOf(Source::QrzCq) << u"qrzcq_notfound.html"_qs << u"W9XYZ"_qs
                                     << LookupOutcome::CallNotFound << QStringList(8) << 0.0 << 0.0;
    // Callook's country is a constant and its locator runs into the line break.
    QTest::newRow("Callook found") << dataBaseOf(Source::Callook) << u"callook_found.html"_qs << u"W1AW"_qs << LookupOutcome::Found
                                   << QStringList{u"ARRL HQ OPERATORS CLUB"_qs, u"225 MAIN ST"_qs,
                                                  u"NEWINGTON, CT 06111"_qs, u"U.S.A."_qs, u"FN31pr\r\n"_qs,
                                                  u"CLUB"_qs, {}, {}}
                                   << lat << lon;
    QTest::newRow("Callook not found") << dataBaseOf(Source::Callook) << u"callook_notfound.html"_qs << u"W9XYZ"_qs
                                       << LookupOutcome::CallNotFound << QStringList(8) << 0.0 << 0.0;
    // HamCall's second address line loses its last three characters.
    QTest::newRow("HamCall found") << dataBaseOf(Source::HamCall) << u"hamcall_found.html"_qs << u"W1AW"_qs << LookupOutcome::Found
                                   << QStringList{u"ARRL HQ Operators Club"_qs, u"225 Main St"_qs,
                                                  u"Newington, CT 06111 "_qs, u"UNITED STATES"_qs, {}, u"Club"_qs,
                                                  u"1914-05-04"_qs, {}}
                                   << lat << lon;
    QTest::newRow("HamCall not found") << dataBaseOf(Source::HamCall) << u"hamcall_notfound.html"_qs << u"W9XYZ"_qs
                                       << LookupOutcome::CallNotFound << QStringList(8) << 0.0 << 0.0;
}

void TestPageReader::fixtures()
{
    QFETCH(int, source);
    QFETCH(QString, file);
    QFETCH(QString, call);
    QFETCH(LookupOutcome, outcome);
    QFETCH(QStringList, fields);
    QFETCH(double, latitude);
    QFETCH(double, longitude);

    LookUp lookUp(&m_network, SourceSettings(), u"K1ABC"_qs);
    lookUp.setDataBase(source);
    lookUp.setHtml(pageText(file));
    QVERIFY(!lookUp.html().isEmpty());
    QSignalSpy notFound(&lookUp, &LookUp::CallNotFound);
    QSignalSpy login(&lookUp, &LookUp::LoginRequired);

    const LookupResult r = readPage(lookUp, call, true);
    QCOMPARE(r.outcome, outcome);
    QCOMPARE(notFound.size(), outcome == LookupOutcome::CallNotFound ? 1 : 0);
    QCOMPARE(login.size(), outcome == LookupOutcome::LoginRequired ? 1 : 0);
    const QStringList got{r.name, r.address1, r.address2, r.country, r.locator, r.licenceClass, r.dateOfBirth, r.webPage};
    QCOMPARE(got, fields);
    QCOMPARE(r.latitude, latitude);
    QCOMPARE(r.longitude, longitude);
    QCOMPARE(r.previousCall, QString());
    QVERIFY(!r.positionFromLocator);
}

void TestPageReader::nameRules_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("name");
    QTest::addColumn<ReaderEvent>("event");

    const QString crlf = u"\r\n"_qs;
    QTest::newRow("eHam without Search Results")
        << dataBaseOf(Source::EHam) << u"Country\r\nW1AW\r\nName\r\n"_qs << QString() << ReaderEvent::CallNotFound;
    QTest::newRow("eHam empty name line") << dataBaseOf(Source::EHam) << u"Country\r\nSearch Results\r\nW1AW\r\n   \r\nx"_qs
                                          << QString() << ReaderEvent::CallNotFound;
    QTest::newRow("QRZ no results wins over login")
        << dataBaseOf(Source::Qrz) << u"Search QRZ\r\nW1AW produced no results\r\nLogin is required\r\n"_qs << QString()
        << ReaderEvent::CallNotFound;
    QTest::newRow("QRZ without Search QRZ") << dataBaseOf(Source::Qrz) << u"W1AW\r\nName, x\r\n"_qs << QString()
                                            << ReaderEvent::CallNotFound;
    QTest::newRow("QRZ name is untrimmed") << dataBaseOf(Source::Qrz) << u"Search QRZ\r\n  Ann Smith , x\r\n"_qs
                                           << u"  Ann Smith "_qs << ReaderEvent::None;
    QTest::newRow("QRZ comma at a line start") << dataBaseOf(Source::Qrz) << u"Search QRZ\r\n, x\r\n"_qs << QString()
                                               << ReaderEvent::CallNotFound;
    // The QRZCQ loop tries ten lines after the domain's line.
    QTest::newRow("QRZCQ nine empty lines") << dataBaseOf(Source::QrzCq) << u"QRZCQ.com"_qs + crlf.repeated(10) + u"Ann\r\nx"_qs
                                            << u"Ann"_qs << ReaderEvent::None;
    QTest::newRow("QRZCQ ten empty lines") << dataBaseOf(Source::QrzCq) << u"QRZCQ.com"_qs + crlf.repeated(11) + u"Ann\r\nx"_qs
                                           << QString() << ReaderEvent::None;
    QTest::newRow("QRZCQ eleven empty lines") << dataBaseOf(Source::QrzCq) << u"QRZCQ.com"_qs + crlf.repeated(12) + u"Ann\r\nx"_qs
                                              << QString() << ReaderEvent::None;
    QTest::newRow("QRZCQ Error anywhere") << dataBaseOf(Source::QrzCq) << u"QRZCQ.com\r\nAnn\r\nErrors: none\r\n"_qs << QString()
                                          << ReaderEvent::CallNotFound;
    QTest::newRow("Callook without Show Map, fresh cursor") << dataBaseOf(Source::Callook) << u"W1AW\r\nAnn\r\n"_qs << QString()
                                                            << ReaderEvent::CallNotFound;
    QTest::newRow("HamCall name after two characters")
        << dataBaseOf(Source::HamCall) << u"callsign database!\r\n12  Ann Smith, W1AW\r\n"_qs << u"Ann Smith"_qs << ReaderEvent::None;
}

void TestPageReader::nameRules()
{
    QFETCH(int, source);
    QFETCH(QString, text);
    QFETCH(QString, name);
    QFETCH(ReaderEvent, event);
    PageReader reader;
    reader.setDataBase(source);
    reader.setText(text);
    ReaderEvent got = ReaderEvent::None;
    QCOMPARE(reader.name(u"W1AW"_qs, got), name);
    QCOMPARE(got, event);
}

void TestPageReader::coordinates_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::newRow("HamCall south and west") << dataBaseOf(Source::HamCall) << u"Latitude: 41.7 S, Longitude: 72.5 W, x"_qs << -41.7
                                            << -72.5;
    QTest::newRow("HamCall north and east") << dataBaseOf(Source::HamCall) << u"Latitude: 41.7 N, Longitude: 72.5 E, x"_qs << 41.7
                                            << 72.5;
    QTest::newRow("QRZ signed, no separator") << dataBaseOf(Source::Qrz) << u"Latitude-33.9 x Longitude151.2 y"_qs << -33.9 << 151.2;
    // eHam skips the character after the marker: the page's colon.
    QTest::newRow("eHam colon") << dataBaseOf(Source::EHam) << u"Latitude:-33.9\r\nLongitude: 151.2\r\n"_qs << -33.9 << 151.2;
    QTest::newRow("eHam without separator loses a digit") << dataBaseOf(Source::EHam) << u"Latitude41.5\r\nLongitude72.5\r\n"_qs << 1.5
                                                      << 2.5;
    QTest::newRow("hex overflow reads as no position")
        << dataBaseOf(Source::Callook) << u"Latitude: &H"_qs + QString(400, u'F') + u"\r\nLongitude: &H1F\r\n"_qs << 0.0 << 31.0;
    QTest::newRow("no marker") << dataBaseOf(Source::QrzCq) << u"Lat 41.7 "_qs << 0.0 << 0.0;
}

void TestPageReader::coordinates()
{
    QFETCH(int, source);
    QFETCH(QString, text);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    PageReader reader;
    reader.setDataBase(source);
    reader.setText(text);
    QCOMPARE(reader.latitude(), latitude);
    QCOMPARE(reader.longitude(), longitude);
}

void TestPageReader::loginKeepsTheOldCursor()
{
    // A page that asks for a log-in leaves the cursor where the last page's
    // name put it; the address readers go on from there in the new text.
    PageReader reader;
    reader.setDataBase(dataBaseOf(Source::Qrz));
    reader.setText(u"Search QRZ\r\nAnnabelle Smith-Jones, x\r\nOne\r\n"_qs);
    ReaderEvent event = ReaderEvent::None;
    QCOMPARE(reader.name(u"W1AW"_qs, event), u"Annabelle Smith-Jones"_qs);
    QCOMPARE(reader.cursor(), 34);
    reader.setText(u"Login is required for W1AW\r\nL2\r\nL3\r\nL4\r\n"_qs);
    QCOMPARE(reader.name(u"W1AW"_qs, event), QString());
    QCOMPARE(event, ReaderEvent::LoginRequired);
    QCOMPARE(reader.cursor(), 34);
    QCOMPARE(reader.address1(), u"L4"_qs);
}

void TestPageReader::missingEndMarkIsAReaderError()
{
    PageReader reader;
    reader.setDataBase(dataBaseOf(Source::EHam));
    reader.setText(u"x\r\nLatitude: 41.7"_qs);
    QVERIFY_THROWS_EXCEPTION(ReaderError, reader.latitude());

    // Through the lookup: the QRZ page whose last row is the web page.
    LookUp lookUp(&m_network, SourceSettings(), QString());
    lookUp.setDataBase(dataBaseOf(Source::Qrz));
    lookUp.setHtml(pageText(u"qrz_found.html"_qs).section(u"\r\nPage served"_qs, 0, 0));
    const LookupResult r = readPage(lookUp, u"W1AW"_qs, true);
    QCOMPARE(r.outcome, LookupOutcome::ReaderError);
    QCOMPARE(r.name, u"ARRL HQ Operators Club"_qs);
    QVERIFY(!r.error.isEmpty());
}

void TestPageReader::unknownSourceReadsNothing()
{
    LookUp lookUp(&m_network, SourceSettings(), QString());
    lookUp.setDataBase(6); // "QRZ CD"
    lookUp.setHtml(pageText(u"qrz_found.html"_qs));
    QSignalSpy notFound(&lookUp, &LookUp::CallNotFound);
    const LookupResult r = readPage(lookUp, u"W1AW"_qs, true);
    QCOMPARE(r.outcome, LookupOutcome::Found);
    QCOMPARE(r.name + r.address1 + r.address2 + r.country + r.locator + r.licenceClass + r.webPage, QString());
    QCOMPARE(r.latitude, 0.0);
    QCOMPARE(notFound.size(), 0);
}


void TestPageReader::pictureAddress_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("address");
    QTest::newRow("W1AW") << u"W1AW"_qs << u"https://files.qrz.com/w/w1aw/w1aw.jpg"_qs;
    QTest::newRow("slashed zero last") << u"W1A\u00d8"_qs << u"https://files.qrz.com/\u00f8/w1a0/w1a0.jpg"_qs;
    QTest::newRow("slashed zero inside") << u"W\u00d8AW"_qs << u"https://files.qrz.com/w/w0aw/w0aw.jpg"_qs;
}

void TestPageReader::pictureAddress()
{
    QFETCH(QString, call);
    QFETCH(QString, address);
    QCOMPARE(marvik::lookup::pictureAddress(u"https://files.qrz.com/"_qs, call), address);
}

void TestPageReader::thumbnailSize_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("thumbnail");
    QTest::newRow("200x100") << QSize(200, 100) << QSize(32, 16);
    QTest::newRow("640x480") << QSize(640, 480) << QSize(21, 16);
    QTest::newRow("portrait") << QSize(100, 200) << QSize(8, 16);
    QTest::newRow("very tall") << QSize(1, 1000) << QSize(1, 16);
    QTest::newRow("very wide") << QSize(100000, 1) << QSize(kThumbnailMaxWidth, 16);
    QTest::newRow("empty") << QSize(0, 10) << QSize();
}

void TestPageReader::thumbnailSize()
{
    QFETCH(QSize, picture);
    QFETCH(QSize, thumbnail);
    QCOMPARE(marvik::lookup::thumbnailSize(picture), thumbnail);
}

void TestPageReader::writeResult()
{
    LookupResult r;
    r.name = u"\u00a0Hiram Percy Maxim \u00a0"_qs;
    r.address1 = u"\t225 Main St"_qs;
    r.address2 = u"Newington, CT 06111 "_qs;
    r.country = u"UNITED STATES\u00a0"_qs;
    r.latitude = 41.714775;
    r.longitude = -72.7;
    const QDateTime now(QDate(2024, 3, 9), QTime(7, 5, 3));
    const marvik::maps::Position me{51.5, -0.12};

    CallRecord fresh;
    writeLookupResult(fresh, false, u"W1AW"_qs, r, me, now);
    QCOMPARE(fresh[lists::Column::Callsign], u"W1AW"_qs);
    QCOMPARE(fresh[lists::Column::FullName], u"Hiram Percy Maxim"_qs);
    QCOMPARE(fresh[lists::Column::FirstName], u"Hiram"_qs);
    QCOMPARE(fresh[lists::Column::Address], u"225 Main St"_qs);
    QCOMPARE(fresh[lists::Column::City], u"Newington, CT 06111"_qs);
    QCOMPARE(fresh[lists::Column::Country], u"USA"_qs);
    // eHam's spelling; other countries stay as written.
    for (const auto &[given, stored] : {std::pair{u"United States"_qs, u"USA"_qs},
                                        std::pair{u"United Kingdom"_qs, u"United Kingdom"_qs},
                                        std::pair{u"United States Virgin Islands"_qs, u"United States Virgin Islands"_qs}}) {
        LookupResult other = r;
        other.country = given;
        CallRecord row;
        writeLookupResult(row, false, u"W1AW"_qs, other, me, now);
        QCOMPARE(row[lists::Column::Country], stored);
    }
    QCOMPARE(fresh[lists::Column::Latitude], u"41.714775"_qs);
    QCOMPARE(fresh[lists::Column::Longitude], u"-72.7"_qs);
    QCOMPARE(fresh[lists::Column::TimeStamp], u"20240309070503"_qs);
    QCOMPARE(fresh[lists::Column::Azimuth],
             marvik::maps::azimuthText(marvik::maps::bearingFrom(me, r.latitude, r.longitude).degrees));
    QVERIFY(fresh[lists::Column::Azimuth] != u"0\u00b0"_qs);
    QCOMPARE(fresh[lists::Column::Extra], QString());

    // An update keeps what the user gave the row.
    CallRecord kept;
    kept[lists::Column::Callsign] = u"W1AW"_qs;
    kept[lists::Column::FirstName] = u"Percy"_qs;
    kept[lists::Column::Extra] = u"QSL via bureau"_qs;
    kept[lists::Column::FullName] = u"old"_qs;
    writeLookupResult(kept, true, u"W1AW"_qs, r, me, now);
    QCOMPARE(kept[lists::Column::FirstName], u"Percy"_qs);
    QCOMPARE(kept[lists::Column::Extra], u"QSL via bureau"_qs);
    QCOMPARE(kept[lists::Column::FullName], u"Hiram Percy Maxim"_qs);
    QCOMPARE(kept.firstNameBack, lists::kNicknameColour);
}

void TestPageReader::writeResultKeepsWhatItLacks_data()
{
    QTest::addColumn<bool>("existing");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected"); // full name, address, city, country, latitude, longitude
    QTest::addColumn<bool>("azimuth");
    const QStringList old{u"Old Name"_qs, u"Old St"_qs, u"Old Town"_qs, u"USA"_qs, u"41.7"_qs, u"-72.7"_qs};
    // A new row without a position stores none and has no bearing, where
    // it used to get 0/0 and the bearing to the Gulf of Guinea.
    QTest::newRow("new, no position") << false << 0.0 << 0.0 << u"Hiram Maxim"_qs
                                      << QStringList{u"Hiram Maxim"_qs, {}, {}, {}, {}, {}} << false;
    // The list loader's rule: either coordinate 0 is no position.
    QTest::newRow("new, latitude 0") << false << 0.0 << 10.0 << u"Hiram Maxim"_qs
                                     << QStringList{u"Hiram Maxim"_qs, {}, {}, {}, {}, {}} << false;
    QTest::newRow("new, position") << false << -33.9 << 18.4 << u"Hiram Maxim"_qs
                                   << QStringList{u"Hiram Maxim"_qs, {}, {}, {}, u"-33.9"_qs, u"18.4"_qs} << true;
    // An update from a source that tells less keeps what the row had.
    QTest::newRow("update, nothing told") << true << 0.0 << 0.0 << QString() << old << true;
    QTest::newRow("update, name only") << true << 0.0 << 0.0 << u" New Name "_qs
                                       << QStringList{u"New Name"_qs, u"Old St"_qs, u"Old Town"_qs, u"USA"_qs,
                                                      u"41.7"_qs, u"-72.7"_qs}
                                       << true;
    QTest::newRow("update, new position") << true << 51.5 << -0.1 << QString()
                                          << QStringList{u"Old Name"_qs, u"Old St"_qs, u"Old Town"_qs, u"USA"_qs,
                                                         u"51.5"_qs, u"-0.1"_qs}
                                          << true;
}

void TestPageReader::writeResultKeepsWhatItLacks()
{
    QFETCH(bool, existing);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(QString, name);
    QFETCH(QStringList, expected);
    QFETCH(bool, azimuth);
    const marvik::maps::Position me{51.5, -0.12};
    CallRecord row;
    row[lists::Column::Callsign] = u"W1AW"_qs;
    row[lists::Column::FullName] = u"Old Name"_qs;
    row[lists::Column::Address] = u"Old St"_qs;
    row[lists::Column::City] = u"Old Town"_qs;
    row[lists::Column::Country] = u"USA"_qs;
    row[lists::Column::Latitude] = u"41.7"_qs;
    row[lists::Column::Longitude] = u"-72.7"_qs;
    LookupResult r;
    r.name = name;
    r.latitude = latitude;
    r.longitude = longitude;
    writeLookupResult(row, existing, u"W1AW"_qs, r, me, QDateTime(QDate(2024, 3, 9), QTime(7, 5, 3)));

    const QStringList got{row[lists::Column::FullName], row[lists::Column::Address], row[lists::Column::City],
                          row[lists::Column::Country], row[lists::Column::Latitude], row[lists::Column::Longitude]};
    QCOMPARE(got, expected);
    const double lat = expected.at(4).toDouble();
    const double lon = expected.at(5).toDouble();
    QCOMPARE(row[lists::Column::Azimuth],
             azimuth ? marvik::maps::azimuthText(marvik::maps::bearingFrom(me, lat, lon).degrees) : QString());
    QCOMPARE(row[lists::Column::TimeStamp], u"20240309070503"_qs);
}

void TestPageReader::positionFromLocator()
{
    // A QRZ page without coordinates: the grid square gives the position.
    LookUp lookUp(&m_network, SourceSettings(), QString());
    lookUp.setDataBase(dataBaseOf(Source::Qrz));
    QString text = pageText(u"qrz_found.html"_qs);
    text.replace(u"Latitude"_qs, u"Lat"_qs).replace(u"Longitude"_qs, u"Lon"_qs);
    lookUp.setHtml(text);
    const LookupResult r = readPage(lookUp, u"W1AW"_qs, false);
    QCOMPARE(r.outcome, LookupOutcome::Found);
    QVERIFY(r.positionFromLocator);
    QVERIFY(qAbs(r.latitude - 41.7291667) < 1e-6);
    QVERIFY(qAbs(r.longitude - -72.7083333) < 1e-6);
}

QTEST_GUILESS_MAIN(TestPageReader)
#include "tst_pagereader.moc"
