// SPDX-License-Identifier: GPL-3.0-or-later
// ADIF logs read and written, and lists imported from and exported to them,
// on files the way loggers write them, in the library and through marvik-cli.
// Runs in Berlin's time zone: a log's times are UTC, a list's are local.
#include "support/TestFiles.h"

#include "core/app/Config.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/logs/AdifExport.h"
#include "core/logs/AdifImport.h"
#include "core/logs/AdifReader.h"
#include "core/logs/AdifWriter.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <ctime>

using namespace marvik;
using namespace marvik::logs;
using lists::CallListModel;
using lists::CallRecord;
using lists::Column;
using test::readBytes;
using test::writeBytes;

Q_DECLARE_METATYPE(marvik::logs::AdifFormat)

namespace {

const maps::Position kMe{40, -75};
const QDateTime kNow(QDate(2025, 1, 1), QTime(12, 0), Qt::LocalTime);

QString fixture(const QString &name)
{
    return QStringLiteral(MARVIK_TEST_DATA "/adif/") + name;
}

QString escaped(QString text)
{
    return text.replace(u"\r"_qs, u"\\r"_qs).replace(u"\n"_qs, u"\\n"_qs);
}

/// Fields as "NAME=value" (with a ":T" for a type indicator), "|" between.
QString dump(const QList<AdifField> &fields)
{
    QStringList out;
    for (const AdifField &f : fields)
        out << f.name + (f.type.isNull() ? QString() : u":"_qs + f.type) + u'=' + escaped(f.value);
    return out.join(u'|');
}

QStringList dump(const QList<AdifRecord> &records)
{
    QStringList out;
    for (const AdifRecord &r : records)
        out << dump(r.fields);
    return out;
}

/// Problems as "Kind@line".
QStringList problems(const AdifLog &log)
{
    static const QHash<AdifProblemKind, QString> names = {
        {AdifProblemKind::BadLength, u"BadLength"_qs},
        {AdifProblemKind::BadName, u"BadName"_qs},
        {AdifProblemKind::CutShort, u"CutShort"_qs},
        {AdifProblemKind::UnclearLength, u"UnclearLength"_qs},
        {AdifProblemKind::MissingEndOfRecord, u"MissingEndOfRecord"_qs},
        {AdifProblemKind::LateHeaderEnd, u"LateHeaderEnd"_qs},
        {AdifProblemKind::NotAdx, u"NotAdx"_qs},
        {AdifProblemKind::XmlError, u"XmlError"_qs},
    };
    QStringList out;
    for (const AdifProblem &p : log.problems)
        out << names.value(p.kind) + u'@' + QString::number(p.line);
    return out;
}

/// A list row from its eleven fields.
CallRecord row(const QStringList &fields)
{
    CallRecord r;
    for (int c = 0; c < lists::kColumnCount; ++c)
        r.fields[std::size_t(c)] = fields.value(c);
    return r;
}

QStringList lines(const CallListModel &model)
{
    return model.lines();
}

struct CliRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

CliRun runCli(const QStringList &args)
{
    QProcess cli;
    cli.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), args);
    if (!cli.waitForFinished(30000))
        cli.kill();
    return {cli.exitCode(), QString::fromUtf8(cli.readAllStandardOutput()), QString::fromUtf8(cli.readAllStandardError())};
}

} // namespace

class TestAdif : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void read_data();
    void read();
    void loggerFiles_data();
    void loggerFiles();
    void writtenForm();
    void roundTrip_data();
    void roundTrip();
    void locations_data();
    void locations();
    void import_data();
    void import();
    void importFileSortsAndSavesOnce();
    void exportThenImport_data();
    void exportThenImport();
    void exportedFields();
    void cli_data();
    void cli();
};

void TestAdif::initTestCase()
{
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

void TestAdif::read_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<AdifFormat>("format");
    QTest::addColumn<QString>("preamble");
    QTest::addColumn<QString>("header");
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<QStringList>("problems");

    const auto adi = AdifFormat::Adi;
    const auto adx = AdifFormat::Adx;
    QTest::newRow("no header") << QByteArray("<CALL:4>W1AW <EOR>\r\n<CALL:5>K1ABC<EOR>") << adi << QString() << QString()
                               << QStringList{u"CALL=W1AW"_qs, u"CALL=K1ABC"_qs} << QStringList{};
    QTest::newRow("header without free text")
        << QByteArray("<ADIF_VER:5>3.1.0<EOH><CALL:4>W1AW<EOR>") << adi << QString() << u"ADIF_VER=3.1.0"_qs
        << QStringList{u"CALL=W1AW"_qs} << QStringList{};
    QTest::newRow("stray < and bare tags in the free text")
        << QByteArray("\xEF\xBB\xBFLog <of> K1ABC < 3 <note: x>\r\n<PROGRAMID:4>Test\r\n<eoh>\r\n<call:4>W1AW<eor>") << adi
        << u"Log <of> K1ABC < 3 <note: x>"_qs << u"PROGRAMID=Test"_qs << QStringList{u"CALL=W1AW"_qs} << QStringList{};
    QTest::newRow("blanks in tags, type indicators, a zero length")
        << QByteArray("< call : 4 : s >W1AW < Qso_Date:8:d>20240501<NAME:0><freq:6:N>14.230< Eor >") << adi
        << QString() << QString() << QStringList{u"CALL:S=W1AW|QSO_DATE:D=20240501|NAME=|FREQ:N=14.230"_qs}
        << QStringList{};
    QTest::newRow("a multi-line value")
        << QByteArray("<CALL:4>W1AW<ADDRESS:24>225 Main St\r\nNewington\r\n<EOR>") << adi << QString() << QString()
        << QStringList{u"CALL=W1AW|ADDRESS=225 Main St\\r\\nNewington\\r\\n"_qs} << QStringList{};
    QTest::newRow("UTF-8 counted in characters")
        << QByteArray("<NAME:11>J\xC3\xB6rg M\xC3\xBCller<CALL:5>DL1AB<EOR>") << adi << QString() << QString()
        << QStringList{u"NAME=Jörg Müller|CALL=DL1AB"_qs} << QStringList{};
    QTest::newRow("UTF-8 counted in bytes")
        << QByteArray("<NAME:13>J\xC3\xB6rg M\xC3\xBCller<CALL:5>DL1AB<EOR>") << adi << QString() << QString()
        << QStringList{u"NAME=Jörg Müller|CALL=DL1AB"_qs} << QStringList{};
    // A character beyond the 16-bit plane counts two, as in Qt and .NET.
    QTest::newRow("emoji counted in UTF-16 units")
        << QByteArray("<NAME:4>Al\xF0\x9F\x93\xBB <CALL:4>W1AW <EOR>") << adi << QString() << QString()
        << QStringList{u"NAME=Al\U0001F4FB|CALL=W1AW"_qs} << QStringList{};
    QTest::newRow("bytes remembered for a value that fits either way")
        << QByteArray("<NAME:5>J\xC3\xB6rg<QTH:3>\xC3\xA9  <CALL:4>W1AW<EOR>") << adi << QString() << QString()
        << QStringList{u"NAME=Jörg|QTH=é |CALL=W1AW"_qs} << QStringList{};
    QTest::newRow("characters when both fit and nothing is known")
        << QByteArray("<QTH:3>\xC3\xA9  <CALL:4>W1AW<EOR>") << adi << QString() << QString()
        << QStringList{u"QTH=é  |CALL=W1AW"_qs} << QStringList{};
    QTest::newRow("Windows-1252") << QByteArray("<NAME:4>J\xF6rg <QTH:5>N\xEEmes <EOR>") << adi << QString()
                                  << QString() << QStringList{u"NAME=Jörg|QTH=Nîmes"_qs} << QStringList{};
    QTest::newRow("length not a number")
        << QByteArray("<CALL:4>W1AW\n<NAME:x>Hiram <QTH:9>Newington<EOR>") << adi << QString() << QString()
        << QStringList{u"CALL=W1AW|QTH=Newington"_qs} << QStringList{u"BadLength@2"_qs};
    QTest::newRow("length past the end")
        << QByteArray("<CALL:4>W1AW <EOR>\n<CALL:5>K1ABC\n<NAME:99999999999999999999>Bob<EOR>") << adi << QString()
        << QString() << QStringList{u"CALL=W1AW"_qs, u"CALL=K1ABC|NAME=Bob<EOR>"_qs}
        << QStringList{u"CutShort@3"_qs, u"MissingEndOfRecord@2"_qs};
    QTest::newRow("a field without a name, a header end too late")
        << QByteArray("<CALL:4>W1AW<EOR>\n<:3>abc<CALL:5>K1ABC<EOH><EOR>") << adi << QString() << QString()
        << QStringList{u"CALL=W1AW"_qs, u"CALL=K1ABC"_qs} << QStringList{u"BadName@2"_qs, u"LateHeaderEnd@2"_qs};
    QTest::newRow("neither count fits")
        << QByteArray("<NAME:3>J\xC3\xB6rg<CALL:4>W1AW<EOR>") << adi << QString() << QString()
        << QStringList{u"NAME=Jör|CALL=W1AW"_qs} << QStringList{u"UnclearLength@1"_qs};

    QTest::newRow("ADX, lower-case names, nested markup")
        << QByteArray("  <?xml version=\"1.0\"?>\n<adx><header><adif_ver>3.1.4</adif_ver></header>\n<records>\n"
                      "<record><call>W1AW</call><name>Hiram <b>P.</b> Maxim</name><skip/></record>\n"
                      "<record></record></records></adx>")
        << adx << QString() << u"ADIF_VER=3.1.4"_qs << QStringList{u"CALL=W1AW|NAME=Hiram  Maxim|SKIP="_qs}
        << QStringList{};
    QTest::newRow("ADX cut short in a record")
        << QByteArray("<?xml version=\"1.0\"?>\n<ADX><RECORDS><RECORD><CALL>W1AW</CALL>\n<NAME>Hir") << adx
        << QString() << QString() << QStringList{u"CALL=W1AW"_qs} << QStringList{u"XmlError@3"_qs};
    QTest::newRow("XML that is not ADX")
        << QByteArray("<?xml version=\"1.0\"?><log><RECORDS><RECORD><CALL>W1AW</CALL></RECORD></RECORDS></log>")
        << adx << QString() << QString() << QStringList{u"CALL=W1AW"_qs} << QStringList{u"NotAdx@1"_qs};
    QTest::newRow("ADX entity bomb")
        << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
                      "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\"><!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">]>"
                      "<ADX><RECORDS><RECORD><CALL>&f;</CALL></RECORD></RECORDS></ADX>")
        << adx << QString() << QString() << QStringList{} << QStringList{u"XmlError@1"_qs};
}

void TestAdif::read()
{
    QFETCH(QByteArray, bytes);
    QFETCH(AdifFormat, format);
    QFETCH(QString, preamble);
    QFETCH(QString, header);
    QFETCH(QStringList, records);
    QFETCH(QStringList, problems);
    const AdifLog log = readAdif(bytes);
    QCOMPARE(log.format, format);
    QCOMPARE(log.preamble, preamble);
    QCOMPARE(dump(log.header), header);
    QCOMPARE(dump(log.records), records);
    QCOMPARE(::problems(log), problems);
}

void TestAdif::loggerFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("header");
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<QList<int>>("recordLines");

    QTest::newRow("characters, a Qt logger")
        << u"characters.adi"_qs << u"ADIF_VER=3.1.4|PROGRAMID=QLog|CREATED_TIMESTAMP=20240601 120000"_qs
        << QStringList{u"CALL=W1AW|QSO_DATE:D=20240501|TIME_ON:T=210000|BAND=20m|MODE=SSTV|NAME=Hiram P. Maxim|"
                       "QTH=Newington|GRIDSQUARE=FN31pr|APP_QLOG_RIG=IC-7300"_qs,
                       u"CALL=DL1AB|QSO_DATE:D=20230110|TIME_ON=0915|NAME=Jörg|COUNTRY=Germany"_qs,
                       u"CALL=DL1AB|QSO_DATE:D=20240301|TIME_ON=1800|NAME=Jörg Müller|QTH=Köln|LAT=N050 56.250|"
                       "LON=E006 57.500"_qs,
                       u"CALL=DL1AB|QSO_DATE:D=20220101|TIME_ON=0000|NAME=Jürgi|ADDRESS=Domplatz 1\\r\\n50667 Köln"_qs,
                       u"CALL=RA3ABC|QSO_DATE:D=20240415|TIME_ON=0600|NAME=Иван Петров"_qs,
                       u"QSO_DATE:D=20240416|TIME_ON=0700|NAME=Bob|COMMENT=call lost in a crash"_qs}
        << QList<int>{6, 8, 10, 12, 15, 17};
    QTest::newRow("bytes, values against the next tag")
        << u"bytes.adi"_qs << QString()
        << QStringList{u"CALL=SP5XYZ|QSO_DATE=20240201|TIME_ON=1200|NAME=Łukasz Żółkiewski|QTH=Łódź|GRIDSQUARE=KO01"_qs,
                       u"CALL=OK1AA|NAME=Václav Novák"_qs}
        << QList<int>{3, 4};
    QTest::newRow("ADX with Unicode, APP and user fields")
        << u"log.adx"_qs << u"ADIF_VER=3.1.4|PROGRAMID=SomeLogger|USERDEF1:N=EPC"_qs
        << QStringList{u"CALL=JA1XYZ|QSO_DATE=20240320|TIME_ON=0330|NAME=Taro Yamada|NAME_INTL=山田 太郎|QTH_INTL=東京|"
                       "GRIDSQUARE=PM95|APP_SOMELOGGER_RIG:S=FT-991A|EPC=1234"_qs,
                       u"CALL=VK2ABC|QSO_DATE=20240321|NAME=Bruce|LAT=S033 52.000|LON=E151 12.500"_qs}
        << QList<int>{9, 20};
}

void TestAdif::loggerFiles()
{
    QFETCH(QString, file);
    QFETCH(QString, header);
    QFETCH(QStringList, records);
    QFETCH(QList<int>, recordLines);
    AdifLog log;
    QString why;
    QVERIFY2(readAdifFile(fixture(file), log, &why), qPrintable(why));
    QCOMPARE(dump(log.header), header);
    QCOMPARE(dump(log.records), records);
    QList<int> at;
    for (const AdifRecord &r : log.records)
        at << r.line;
    QCOMPARE(at, recordLines);
    QCOMPARE(::problems(log), QStringList{});
    QVERIFY(!readAdifFile(fixture(u"missing.adi"_qs), log, &why));
    QVERIFY(!why.isEmpty());
}

void TestAdif::writtenForm()
{
    AdifLog log;
    log.preamble = u"<not a tag first"_qs;
    log.header = {{u"ADIF_VER"_qs, u"3.1.4"_qs, {}}};
    log.records = {{{{u"CALL"_qs, u"DL1AB"_qs, {}}, {u"NAME"_qs, u"Jörg"_qs, u'S'}, {u"QTH"_qs, QString(), {}}}, 0}};
    // Lengths in characters, the text in UTF-8, the free text kept from starting with "<".
    QCOMPARE(writeAdi(log), QByteArray("ADIF log <not a tag first\r\n<ADIF_VER:5>3.1.4\r\n<EOH>\r\n"
                                       "<CALL:5>DL1AB <NAME:4:S>J\xC3\xB6rg <QTH:0> <EOR>\r\n"));
}

void TestAdif::roundTrip_data()
{
    QTest::addColumn<AdifFormat>("format");
    QTest::newRow("ADI") << AdifFormat::Adi;
    QTest::newRow("ADX") << AdifFormat::Adx;
}

void TestAdif::roundTrip()
{
    QFETCH(AdifFormat, format);
    AdifLog log;
    log.format = format;
    log.preamble = u"Test log"_qs;
    log.header = {{u"ADIF_VER"_qs, u"3.1.4"_qs, {}}, {u"PROGRAMID"_qs, u"Marvik"_qs, {}}};
    const QList<AdifField> tricky = {
        {u"CALL"_qs, u"DL1AB"_qs, {}},
        {u"NAME"_qs, u"Jörg Müller"_qs, {}},
        {u"COMMENT"_qs, u"<EOR> inside, & and \"quotes\" > too"_qs, {}},
        {u"QTH"_qs, u"  blanks around  "_qs, {}},
        {u"NOTES"_qs, u"Line one\nLine two"_qs, {}},
        {u"NAME_INTL"_qs, u"Иван Петров \U0001F4FB"_qs, {}},
        {u"APP_MARVIK_EXTRA"_qs, u"x*y"_qs, {}},
        {u"EMPTY"_qs, QString(), {}},
    };
    log.records = {{tricky, 0}, {{{u"CALL"_qs, u"W1AW"_qs, {}}}, 0}};
    const QByteArray bytes = format == AdifFormat::Adi ? writeAdi(log) : writeAdx(log);
    const AdifLog back = readAdif(bytes);
    QCOMPARE(back.format, format);
    QCOMPARE(::problems(back), QStringList{});
    QCOMPARE(dump(back.header), dump(log.header));
    // ADX gives APP fields a type, as it must.
    QStringList expected = dump(log.records);
    if (format == AdifFormat::Adx)
        expected[0].replace(u"APP_MARVIK_EXTRA="_qs, u"APP_MARVIK_EXTRA:S="_qs);
    QCOMPARE(dump(back.records), expected);
}

void TestAdif::locations_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("latitude");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QString>("written"); ///< how locationText() writes `degrees`; empty: not checked

    QTest::newRow("north") << u"N041 42.887"_qs << true << true << 41 + 42.887 / 60 << u"N041 42.887"_qs;
    QTest::newRow("west, small") << u"W000 07.200"_qs << false << true << -0.12 << u"W000 07.200"_qs;
    QTest::newRow("south, lower case, short") << u"s33 52"_qs << true << true << -(33 + 52.0 / 60)
                                              << u"S033 52.000"_qs;
    QTest::newRow("east, no blank") << u"E15112.500"_qs << false << true << 151 + 12.5 / 60 << u"E151 12.500"_qs;
    QTest::newRow("minutes that round up to a degree") << u"N089 59.99996"_qs << true << true
                                                       << 89 + 59.99996 / 60 << u"N090 00.000"_qs;
    QTest::newRow("east for a latitude") << u"E041 42.887"_qs << true << false << 0.0 << QString();
    QTest::newRow("beyond the pole") << u"N090 00.001"_qs << true << false << 0.0 << QString();
    QTest::newRow("sixty minutes") << u"N041 60.000"_qs << true << false << 0.0 << QString();
    QTest::newRow("letters in the minutes") << u"N041 4a.000"_qs << true << false << 0.0 << QString();
    QTest::newRow("two points") << u"N041 42.8.7"_qs << true << false << 0.0 << QString();
}

void TestAdif::locations()
{
    QFETCH(QString, text);
    QFETCH(bool, latitude);
    QFETCH(bool, valid);
    QFETCH(double, degrees);
    QFETCH(QString, written);
    double read = 0;
    QCOMPARE(readLocation(text, latitude, read), valid);
    if (valid)
        QVERIFY2(std::fabs(read - degrees) < 1e-12, qPrintable(QString::number(read, 'g', 17)));
    if (!written.isEmpty())
        QCOMPARE(locationText(degrees, latitude), written);
}

void TestAdif::import_data()
{
    QTest::addColumn<QStringList>("before"); ///< list lines
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QString>("summary");

    QTest::newRow("the same call on several dates")
        << QStringList{}
        << QByteArray("<CALL:5>DL1AB<QSO_DATE:8>20230110<TIME_ON:4>0915<NAME:4>Jörg<COUNTRY:7>Germany<EOR>"
                      "<CALL:5>DL1AB<QSO_DATE:8>20240301<TIME_ON:6>180005<NAME:11>Jörg Müller<EOR>"
                      "<CALL:5>DL1AB<QSO_DATE:8>20220101<NAME:5>Jürgi<ADDRESS:10>Domplatz 1<EOR>"
                      "<CALL:5>DL1AB<NAME:7>Undated<QTH:4>Köln<EOR>")
        << QStringList{u"DL1AB*Jörg**Jörg Müller*Domplatz 1*Köln*Germany***20240301190005*"_qs}
        << u"4 contacts: 1 added, 0 already in the list, 0 skipped"_qs;
    QTest::newRow("UTC in summer and winter, no time, no date")
        << QStringList{}
        << QByteArray("<CALL:4>K1AA<QSO_DATE:8>20240701<TIME_ON:4>2300<EOR><CALL:4>K1AB<QSO_DATE:8>20240101<EOR>"
                      "<CALL:4>K1AC<QSO_DATE:8>20241301<TIME_ON:4>1200<EOR><CALL:4>K1AD<TIME_ON:4>1200<EOR>")
        << QStringList{u"K1AA*********20240702010000*"_qs, u"K1AB*********20240101010000*"_qs,
                       u"K1AC*********20250101120000*"_qs, u"K1AD*********20250101120000*"_qs}
        << u"4 contacts: 4 added, 0 already in the list, 0 skipped"_qs;
    QTest::newRow("a call in the list keeps its row and only gains what it lacked")
        << QStringList{u"W1AW*Hi**Hiram Maxim****0*0*20200101000000*keep"_qs,
                       u"K2XX*Bob*44°*Robert*1 Road*Town*USA*41*-74*20200101000000*"_qs}
        << QByteArray("<CALL:4>W1AW<QSO_DATE:8>20240501<NAME:5>Other<ADDRESS:11>225 Main St<QTH:9>Newington"
                      "<GRIDSQUARE:6>FN31pr<EOR><CALL:4>K2XX<NAME:3>Rob<QTH:5>Other<GRIDSQUARE:4>FN20<EOR>")
        << QStringList{u"K2XX*Bob*44°*Robert*1 Road*Town*USA*41*-74*20200101000000*"_qs,
                       u"W1AW*Hi*44°*Hiram Maxim*225 Main St*Newington**41.729166666666686*-72.70833333333333*"
                       "20200101000000*keep"_qs}
        << u"2 contacts: 0 added, 2 already in the list (1 gained fields), 0 skipped"_qs;
    QTest::newRow("case counts, a slashed zero does not")
        << QStringList{u"DL0AB*********20200101000000*"_qs}
        << QByteArray("<CALL:6>DL\xC3\x98" "AB<NAME:3>Ann<EOR><CALL:5>dl0ab<NAME:3>Bea<EOR><CALL:7> DL0AB <EOR>")
        << QStringList{u"DL0AB*Ann**Ann******20200101000000*"_qs, u"dl0ab*Bea**Bea******20250101120000*"_qs}
        << u"3 contacts: 1 added, 1 already in the list (1 gained fields), 0 skipped"_qs;
    QTest::newRow("records that give no row")
        << QStringList{}
        << QByteArray("<NAME:3>Bob<EOR><CALL:0><EOR><CALL:5>W1 AW<EOR><CALL:5>W1*AW<EOR><CALL:4>K1AA<EOR>")
        << QStringList{u"K1AA*********20250101120000*"_qs}
        << u"5 contacts: 1 added, 0 already in the list, 4 skipped (2 without a call, 2 not a callsign)"_qs;
    QTest::newRow("positions: LAT and LON before the grid square, four and six characters")
        << QStringList{}
        << QByteArray("<CALL:4>K1AA<LAT:11>N050 56.250<LON:11>E006 57.500<GRIDSQUARE:4>FN31<EOR>"
                      "<CALL:4>K1AB<LAT:11>X050 56.250<LON:11>E006 57.500<GRIDSQUARE:4>KO01<EOR>"
                      "<CALL:4>K1AC<GRIDSQUARE:8>FN31pr45<EOR><CALL:4>K1AD<GRIDSQUARE:3>FN3<EOR>"
                      "<CALL:4>K1AE<LAT:11>N050 56.250<LON:11>E006 57.500"
                      "<APP_MARVIK_LATITUDE:7>50.9375<APP_MARVIK_LONGITUDE:5>6.959<EOR>")
        << QStringList{u"K1AA**49°*****50.9375*6.958333333333333*20250101120000*"_qs,
                       u"K1AB**44°*****51.5*21*20250101120000*"_qs,
                       u"K1AC**44°*****41.729166666666686*-72.70833333333333*20250101120000*"_qs,
                       u"K1AD*********20250101120000*"_qs,
                       u"K1AE**49°*****50.9375*6.958333333333333*20250101120000*"_qs}
        << u"5 contacts: 5 added, 0 already in the list, 0 skipped"_qs;
    QTest::newRow("Unicode fields first, lines joined, no star")
        << QStringList{}
        << QByteArray("<CALL:6>JA1XYZ<NAME:11>Taro Yamada<NAME_INTL:5>\xE5\xB1\xB1\xE7\x94\xB0 \xE5\xA4\xAA\xE9\x83\x8E"
                      "<ADDRESS:25>1-2-3 Ginza*\r\n\r\nChuo-ku\r\n<QTH:5>Tokyo<COUNTRY_INTL:0><COUNTRY:5>Japan<EOR>")
        << QStringList{u"JA1XYZ*山田**山田 太郎*1-2-3 Ginza, Chuo-ku*Tokyo*Japan***20250101120000*"_qs}
        << u"1 contacts: 1 added, 0 already in the list, 0 skipped"_qs;
}

void TestAdif::import()
{
    QFETCH(QStringList, before);
    QFETCH(QByteArray, log);
    QFETCH(QStringList, after);
    QFETCH(QString, summary);
    CallListModel model;
    for (const QString &line : before)
        model.appendRecord(row(line.split(u'*')));
    const ImportSummary s = importLog(readAdif(log), model, {kMe, {}, kNow});
    qint16 mode = 0;
    model.sortList(mode);
    QCOMPARE(lines(model), after);
    QCOMPARE(summaryText(s), summary);
}

void TestAdif::importFileSortsAndSavesOnce()
{
    QTemporaryDir dir;
    const QString list = dir.filePath(u"List1.dat"_qs);
    CallListModel model;
    model.appendRecord(row({u"ZZ9ZZ"_qs, {}, {}, {}, {}, {}, {}, {}, {}, u"20200101000000"_qs, {}}));
    qint16 mode = 1;
    ImportSummary summary;
    QString why;
    QVERIFY2(importAdifFile(fixture(u"characters.adi"_qs), model, list, mode, {kMe, {}, kNow}, summary, &why),
             qPrintable(why));
    // The program's sort mode 1 comes back as 9: newest first.
    QCOMPARE(mode, qint16(9));
    CallListModel saved;
    QVERIFY(saved.load(list, {kMe, {}, {}}).complete());
    QStringList calls;
    for (int r = 0; r < saved.rowCount(); ++r)
        calls << saved.record(r)[Column::Callsign] + u' ' + saved.record(r)[Column::TimeStamp];
    QCOMPARE(calls, (QStringList{u"W1AW 20240501230000"_qs, u"RA3ABC 20240415080000"_qs, u"DL1AB 20240301190000"_qs,
                                 u"ZZ9ZZ 20200101000000"_qs}));
    QCOMPARE(summary.skippedRecords.size(), 1);
    QCOMPARE(summary.skippedRecords[0].line, 17);

    // A file that is no log, or none at all, leaves the list and its file alone.
    const QByteArray before = readBytes(list);
    const QString text = dir.filePath(u"notes.txt"_qs);
    QVERIFY(writeBytes(text, "Dear diary, today I worked W1AW.\n"));
    for (const QString &path : {text, dir.filePath(u"missing.adi"_qs)}) {
        ImportSummary none;
        QVERIFY(!importAdifFile(path, model, list, mode, {kMe, {}, kNow}, none, &why));
        QVERIFY(!why.isEmpty());
        QCOMPARE(model.rowCount(), 4);
        QCOMPARE(readBytes(list), before);
    }
}

void TestAdif::exportThenImport_data()
{
    QTest::addColumn<AdifFormat>("format");
    QTest::newRow("ADI") << AdifFormat::Adi;
    QTest::newRow("ADX") << AdifFormat::Adx;
}

void TestAdif::exportThenImport()
{
    QFETCH(AdifFormat, format);
    const QStringList rows = {
        u"DL1AB*Jürgi*49°*Jörg Müller*Domplatz 1*Köln*Germany*50.9375*6.958333333333333*20240301190005*extra text"_qs,
        u"K1AB**60°*Bob Jones****41.2*-72.1*20240101010000*"_qs,
        u"K1AC*Chuck********20240701120000*"_qs,
        u"RA3ABC*Иван*34°*Иван Петров***Россия*55.75*37.62*20240415080000*"_qs,
        u"W1AW*Hiram*44°*Hiram P. Maxim*225 Main St*Newington, CT*USA*41.714775*-72.72726*20240501230000*"_qs,
    };
    CallListModel model;
    for (const QString &line : rows)
        model.appendRecord(row(line.split(u'*')));
    QTemporaryDir dir;
    const QString file = dir.filePath(format == AdifFormat::Adx ? u"out.adx"_qs : u"out.adi"_qs);
    QString why;
    QCOMPARE(exportAdifFile(model, file, {format, u"20m"_qs, u"SSTV"_qs, {}}, &why), rows.size());

    CallListModel back;
    qint16 mode = 0;
    ImportSummary summary;
    QVERIFY2(importAdifFile(file, back, dir.filePath(u"List1.dat"_qs), mode, {kMe, {}, kNow}, summary, &why),
             qPrintable(why));
    QCOMPARE(summary.problemCount, 0);
    QCOMPARE(lines(back), rows);
}

void TestAdif::exportedFields()
{
    CallListModel model;
    model.appendRecord(row({u"W1AW"_qs, u"Hiram"_qs, {}, u"Hiram P. Maxim"_qs, {}, {}, {}, u"41.714775"_qs,
                            u"-72.72726"_qs, u"20240501230000"_qs, {}}));
    model.appendRecord(row({u"DL1AB"_qs, u"Jörg"_qs, {}, u"Jörg Müller"_qs, {}, u"Köln"_qs, {}, {}, {},
                            u"not a stamp"_qs, {}}));
    model.appendRecord(row({u"RA3ABC"_qs, u"Иван"_qs, {}, u"Иван Петров"_qs, {}, {}, {}, {}, {}, {}, {}}));
    const ExportOptions options{AdifFormat::Adx, u"70CM"_qs, u"sstv"_qs,
                                QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5), Qt::UTC)};
    const AdifLog log = readAdif(writeAdx(listToLog(model, options)));
    QCOMPARE(::problems(log), QStringList{});
    QCOMPARE(dump(log.header), u"ADIF_VER=3.1.4|PROGRAMID=Marvik|PROGRAMVERSION=" MARVIK_VERSION
                               "|CREATED_TIMESTAMP=20250102 030405"_qs);
    // A logger takes a record in with its call, date, time, band and mode;
    // in ADX the plain fields are ASCII, the Unicode text in the _INTL twins.
    QCOMPARE(dump(log.records),
             (QStringList{u"CALL=W1AW|NAME=Hiram P. Maxim|LAT=N041 42.887|LON=W072 43.636|GRIDSQUARE=FN31pr|"
                          "QSO_DATE=20240501|TIME_ON=210000|BAND=70cm|MODE=SSTV|APP_MARVIK_LATITUDE:N=41.714775|"
                          "APP_MARVIK_LONGITUDE:N=-72.72726"_qs,
                          u"CALL=DL1AB|NAME=Jorg Muller|NAME_INTL=Jörg Müller|QTH=Koln|QTH_INTL=Köln|BAND=70cm|MODE=SSTV"_qs,
                          u"CALL=RA3ABC|NAME_INTL=Иван Петров|BAND=70cm|MODE=SSTV"_qs}));
    QVERIFY(isBandName(u"1.25m"_qs) && isBandName(u"SUBMM"_qs) && !isBandName(u"20"_qs) && !isBandName(u"20 m"_qs));
    QVERIFY(isModeName(u"MFSK"_qs) && isModeName(u"JT9-1"_qs) && !isModeName(u"SS TV"_qs) && !isModeName(QString()));
}

void TestAdif::cli_data()
{
    QTest::addColumn<QStringList>("args"); ///< %DATA%: the data folder, %FIX%: the test logs
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("errHas");
    QTest::addColumn<QStringList>("listAfter"); ///< callsigns of List2.dat, in file order

    const QStringList before{u"W1AW"_qs, u"ZZ9ZZ"_qs};
    QTest::newRow("import")
        << QStringList{u"import-adif"_qs, u"%FIX%/characters.adi"_qs, u"2"_qs} << 0
        << u"6 contacts: 2 added, 1 already in the list (1 gained fields), 1 skipped (1 without a call)\n"_qs
        << u"characters.adi: line 17: record skipped: no call"_qs
        << QStringList{u"DL1AB"_qs, u"RA3ABC"_qs, u"W1AW"_qs, u"ZZ9ZZ"_qs};
    QTest::newRow("import ADX") << QStringList{u"import-adif"_qs, u"%FIX%/log.adx"_qs, u"2"_qs} << 0
                                << u"2 contacts: 2 added, 0 already in the list, 0 skipped\n"_qs << QString()
                                << QStringList{u"JA1XYZ"_qs, u"VK2ABC"_qs, u"W1AW"_qs, u"ZZ9ZZ"_qs};
    QTest::newRow("export") << QStringList{u"export-adif"_qs, u"2"_qs, u"%DATA%/out.adi"_qs, u"--mode=PD120"_qs} << 0
                            << u"2 records written to %DATA%/out.adi\n"_qs << QString() << before;
    QTest::newRow("import a malformed log")
        << QStringList{u"import-adif"_qs, u"%DATA%/bad.adi"_qs, u"2"_qs} << 0
        << u"2 contacts: 1 added, 1 already in the list (0 gained fields), 0 skipped; 1 problems in the file\n"_qs
        << u"bad.adi: line 2: the length of NAME is not a number"_qs
        << QStringList{u"K1ABC"_qs, u"W1AW"_qs, u"ZZ9ZZ"_qs};
    QTest::newRow("not a log") << QStringList{u"import-adif"_qs, u"%DATA%/Marvik.cfg"_qs, u"2"_qs} << 1 << QString()
                               << u"no ADIF data"_qs << before;
    QTest::newRow("damaged list") << QStringList{u"import-adif"_qs, u"%FIX%/log.adx"_qs, u"3"_qs} << 1 << QString()
                                  << u"damaged at line 2"_qs << before;
    QTest::newRow("list 6") << QStringList{u"import-adif"_qs, u"%FIX%/log.adx"_qs, u"6"_qs} << 2 << QString()
                            << u"not a list number"_qs << before;
    QTest::newRow("bad band") << QStringList{u"export-adif"_qs, u"2"_qs, u"%DATA%/x.adi"_qs, u"--band"_qs, u"20"_qs}
                              << 2 << QString() << u"not an ADIF band"_qs << before;
    QTest::newRow("unwritable") << QStringList{u"export-adif"_qs, u"2"_qs, u"%DATA%/no/such/x.adi"_qs} << 1 << QString()
                                << u"cannot write"_qs << before;
}

void TestAdif::cli()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QString, out);
    QFETCH(QString, errHas);
    QFETCH(QStringList, listAfter);

    QTemporaryDir data;
    app::Settings settings;
    settings.me = kMe;
    QVERIFY(app::writeConfig(data.filePath(u"Marvik.cfg"_qs), settings));
    QVERIFY(writeBytes(data.filePath(u"List2.dat"_qs), "W1AW*Hiram*44\xB0*Hiram P. Maxim****41.714775*-72.72726*"
                                                       "20200101000000*\r\nZZ9ZZ*Zed*****Nowhere***20190101000000*\r\n"));
    QVERIFY(writeBytes(data.filePath(u"List3.dat"_qs), "K1AA*A*********20190101000000*\r\nK1AB*B*\r\n"));
    QVERIFY(writeBytes(data.filePath(u"bad.adi"_qs), "<CALL:4>W1AW <EOR>\n<CALL:5>K1ABC <NAME:?>Bob <EOR>\n"));
    for (QString &a : args)
        a.replace(u"%DATA%"_qs, data.path()).replace(u"%FIX%"_qs, QStringLiteral(MARVIK_TEST_DATA "/adif"));
    out.replace(u"%DATA%"_qs, data.path());

    const CliRun r = runCli(QStringList{u"--data-dir"_qs, data.path()} + args);
    QCOMPARE(r.exitCode, exitCode);
    QCOMPARE(r.out, out);
    QVERIFY2(r.err.contains(errHas), qPrintable(r.err));
    if (exitCode != 0)
        QCOMPARE(r.err.count(u'\n'), 1);

    CallListModel list;
    QVERIFY(list.load(data.filePath(u"List2.dat"_qs), {kMe, {}, {}}).complete());
    QStringList calls;
    for (int i = 0; i < list.rowCount(); ++i)
        calls << list.record(i)[Column::Callsign];
    QCOMPARE(calls, listAfter);

    if (args.first() == u"export-adif" && exitCode == 0) {
        AdifLog log;
        QVERIFY(readAdifFile(args.at(2), log));
        QCOMPARE(log.records.size(), 2);
        QCOMPARE(log.records[0].value(u"MODE"), u"PD120"_qs);
        QCOMPARE(log.records[0].value(u"GRIDSQUARE"), u"FN31pr"_qs);
    }
}

QTEST_GUILESS_MAIN(TestAdif)
#include "tst_adif.moc"
