// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestFiles.h"
#include "core/app/TextCodec.h"
#include "core/lists/CallListModel.h"
#include "core/app/Session.h"
#include "core/lists/ListFile.h"
#include "core/lists/Thumbnails.h"
#include "core/app/Callsign.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <csignal>
#include <memory>

using namespace marvik::lists;
using marvik::test::readBytes;
using marvik::test::writeBytes;

namespace {

const marvik::maps::Position kMe{40, -75};
const QString kNow = QStringLiteral("20250101120000");

QByteArray line(const QStringList &fields)
{
    QByteArray out;
    marvik::app::toWindows1252(fields.join(u'*'), out);
    return out + "\r\n";
}

QStringList callsigns(const CallListModel &m)
{
    QStringList out;
    for (int row = 0; row < m.rowCount(); ++row)
        out << m.field(row, Column::Callsign);
    return out;
}

} // namespace

class TestLists : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void loadRows_data();
    void loadRows();
    void slashedZeroAndThumbnail();
    void bearingFromWhereTheRowStood_data();
    void bearingFromWhereTheRowStood();
    void everyLineEndEndsALine();
    void fieldsCutAtTheFirstElevenStars_data();
    void fieldsCutAtTheFirstElevenStars();
    void damagedLineStopsTheLoad_data();
    void damagedLineStopsTheLoad();
    void emptyFileKeepsRows();
    void reloadDropsOldRows();
    void savedFileIsByteExact();
    void emptyListSavesEmptyFile();
    void loadSaveRoundTrip();
    void sort_data();
    void sort();
    void sortKeepsSelectionOnItsEntry();
    void damagedCopyKept();
    void killedSaveNeverTearsTheFile();
    void thumbnailsFollowTheirRows_data();
    void thumbnailsFollowTheirRows();
    void thumbnailFolderListing_data();
    void thumbnailFolderListing();
    void thumbnailIndexSharedByReaders();
    void thumbnailDecodedByItsContent_data();
    void thumbnailDecodedByItsContent();

private:
    LoadReport loadBytes(CallListModel &model, const QByteArray &bytes);
    QTemporaryDir m_dir;
    LoadContext m_context;
};

void TestLists::init()
{
    QVERIFY(m_dir.isValid());
    QDir(m_dir.path()).mkpath(u"Images/Thumbs"_qs);
    m_context = {kMe, m_dir.filePath(u"Images/Thumbs"_qs), kNow};
}

LoadReport TestLists::loadBytes(CallListModel &model, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(u"List1.dat"_qs);
    writeBytes(path, bytes);
    return model.load(path, m_context);
}

void TestLists::loadRows_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("azimuths");
    QTest::addColumn<QList<bool>>("highlights");
    QTest::addColumn<QStringList>("stamps");

    QTest::newRow("three lines, stale bearing recomputed")
        << line({u"G4XYZ"_qs, u"John"_qs, u"123\u00B0"_qs, u"John Smith"_qs, u""_qs, u"London"_qs, u"England"_qs,
                 u"51.5"_qs, u"-0.12"_qs, u"20240101000000"_qs, u""_qs})
               + line({u"W2A"_qs, u"Bob"_qs, u""_qs, u"Robert Jones"_qs, u""_qs, u""_qs, u""_qs, u"41"_qs,
                       u"-75"_qs, u"20240102000000"_qs, u"x"_qs})
               + line({u"K1ABC"_qs, u"HANS"_qs, u""_qs, u"Hans Meyer"_qs, u""_qs, u""_qs, u""_qs, u"40"_qs,
                       u"-80"_qs, u"20240103000000"_qs, u""_qs})
        << QStringList{u"50\u00B0"_qs, u"0\u00B0"_qs, u"271\u00B0"_qs} << QList<bool>{false, true, false}
        << QStringList{u"20240101000000"_qs, u"20240102000000"_qs, u"20240103000000"_qs};
    QTest::newRow("either coordinate 0 means no position")
        << line({u"DL1ABC"_qs, u"Hansi"_qs, u"99\u00B0"_qs, u"Hans Meyer"_qs, u""_qs, u""_qs, u""_qs, u"0"_qs,
                 u"13.4"_qs, u""_qs, u""_qs})
               + line({u"DL2ABC"_qs, u""_qs, u"99\u00B0"_qs, u""_qs, u""_qs, u""_qs, u""_qs, u"52.5"_qs, u""_qs,
                       u"20240101000000"_qs, u""_qs})
        << QStringList{QString(), QString()} << QList<bool>{true, false}
        << QStringList{kNow, u"20240101000000"_qs};
    QTest::newRow("same place as me")
        << line({u"N3X"_qs, u"Al"_qs, u""_qs, u"Al"_qs, u""_qs, u""_qs, u""_qs, u"40"_qs, u"-75"_qs, u"1"_qs, u""_qs})
        << QStringList{u"0\u00B0"_qs} << QList<bool>{false} << QStringList{u"1"_qs};
    QTest::newRow("lenient positions, nickname compared in upper case")
        << line({u"F5AB"_qs, u"jean"_qs, u""_qs, u"JEAN Dupont"_qs, u""_qs, u""_qs, u""_qs, u" 48.85 N"_qs,
                 u"2.35E"_qs, u"2"_qs, u""_qs})
        << QStringList{u"53\u00B0"_qs} << QList<bool>{false} << QStringList{u"2"_qs};
}

// A row's bearing is worked out from the position it had when it was read
// (or when Me last moved), whatever is done to it before anyone looks.
void TestLists::bearingFromWhereTheRowStood_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("azimuth");
    const QString fromRead = marvik::maps::azimuthText(marvik::maps::bearingFrom(kMe, 51.5, -0.12).degrees);
    const QString afterMove = marvik::maps::azimuthText(marvik::maps::bearingFrom({-33.9, 151.2}, 51.5, -0.12).degrees);
    QTest::newRow("position edited before the row is shown") << u"edit"_qs << fromRead;
    QTest::newRow("Me moved, then the position edited") << u"move, edit"_qs << afterMove;
    QTest::newRow("saved before the row is shown") << u"save"_qs << fromRead;
    QTest::newRow("another field edited first") << u"name"_qs << fromRead;
}

void TestLists::bearingFromWhereTheRowStood()
{
    QFETCH(QString, step);
    QFETCH(QString, azimuth);
    CallListModel model;
    QVERIFY(loadBytes(model, line({u"G4XYZ"_qs, u"John"_qs, u"1\u00B0"_qs, u"John Smith"_qs, u""_qs, u""_qs, u""_qs,
                                   u"51.5"_qs, u"-0.12"_qs, u"20240101000000"_qs, u""_qs}))
                .complete());
    if (step.startsWith(u"move"))
        model.recomputeAzimuths({-33.9, 151.2});
    if (step.endsWith(u"edit"))
        model.setField(0, Column::Latitude, u"-10"_qs);
    if (step == u"name")
        model.setField(0, Column::FirstName, u"Johnny"_qs);
    if (step == u"save") {
        QVERIFY(saveList(model, m_dir.filePath(u"List2.dat"_qs)));
        QByteArray bytes;
        QVERIFY(marvik::app::toWindows1252(QString(u"*John*"_qs + azimuth + u'*'), bytes));
        QVERIFY(readBytes(m_dir.filePath(u"List2.dat"_qs)).contains(bytes));
    }
    QCOMPARE(model.index(0, Column::Azimuth).data().toString(), azimuth);
    QCOMPARE(model.record(0)[Column::Azimuth], azimuth);
}

void TestLists::everyLineEndEndsALine()
{
    const QByteArray row = "K1ABC*Jim**James Taylor*45 Elm Rd*Boston*USA*42.36*-71.06*20240105093000*";
    CallListModel model;
    const LoadReport report = loadBytes(model, QByteArray(row).replace("K1ABC", "K1A") + "\r" + QByteArray(row).replace("K1ABC", "K1B")
                                                   + "\n" + QByteArray(row).replace("K1ABC", "K1C") + "\r\n"
                                                   + QByteArray(row).replace("K1ABC", "K1D") + "\n\r"
                                                   + QByteArray(row).replace("K1ABC", "K1E"));
    // LF CR is two line ends: the empty line between them has no fields and stops the load.
    QCOMPARE(report.badLine, 5);
    QCOMPARE(callsigns(model).mid(0, 4), (QStringList{u"K1A"_qs, u"K1B"_qs, u"K1C"_qs, u"K1D"_qs}));
    QCOMPARE(model.field(2, Column::Extra), QString());
    QCOMPARE(model.field(2, Column::TimeStamp), u"20240105093000"_qs);
}

// The reader compares a line's characters eight at a time: a "*" on
// either side of such a stretch, many or none in one, a long field and a
// line past its eleventh field must all cut where one at a time would.
void TestLists::fieldsCutAtTheFirstElevenStars_data()
{
    QTest::addColumn<QList<int>>("lengths");
    QTest::newRow("one character each") << QList<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    QTest::newRow("stars at 7 and 8") << QList<int>{7, 0, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    QTest::newRow("a star ending every stretch") << QList<int>{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
    QTest::newRow("a star starting every stretch") << QList<int>{8, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
    QTest::newRow("all empty") << QList<int>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    QTest::newRow("a long field") << QList<int>{3, 2, 0, 41, 1, 0, 17, 9, 8, 16, 5};
    QTest::newRow("fourteen fields, the eleventh ending in a stretch")
        << QList<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    QTest::newRow("fourteen fields, the last ones long") << QList<int>{2, 3, 0, 4, 5, 1, 0, 1, 2, 3, 4, 30, 9, 12};
    QTest::newRow("twelfth field empty: the line ends in a star")
        << QList<int>{5, 4, 0, 9, 0, 6, 7, 2, 3, 14, 6, 0};
}

void TestLists::fieldsCutAtTheFirstElevenStars()
{
    QFETCH(QList<int>, lengths);
    QStringList fields;
    for (qsizetype c = 0; c < lengths.size(); ++c)
        fields << QString(lengths[c], QChar(char16_t(u'A' + c)));
    const QString text = fields.join(u'*');
    const QStringList expected = text.split(u'*').mid(0, kColumnCount);
    CallListModel model;
    // Twice, so the second row's fields stand well inside the file's text.
    const LoadReport report = loadBytes(model, line(fields) + line(fields));
    QVERIFY(report.complete());
    QCOMPARE(model.rowCount(), 2);
    for (int r = 0; r < 2; ++r) {
        for (int c = 0; c < kColumnCount; ++c) {
            // Letters give no position, so no bearing; no time stamp is now.
            const QString want = c == int(Column::Azimuth)                               ? QString()
                                 : c == int(Column::TimeStamp) && expected[c].isEmpty() ? kNow
                                                                                         : expected[c];
            QCOMPARE(model.field(r, Column(c)), want);
        }
    }
}

void TestLists::loadRows()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, azimuths);
    QFETCH(QList<bool>, highlights);
    QFETCH(QStringList, stamps);
    CallListModel model;
    const LoadReport report = loadBytes(model, file);
    QVERIFY(report.complete());
    QCOMPARE(model.rowCount(), azimuths.size());
    for (int r = 0; r < model.rowCount(); ++r) {
        QCOMPARE(model.record(r)[Column::Azimuth], azimuths[r]);
        QCOMPARE(model.index(r, Column::FirstName).data(Qt::BackgroundRole).isValid(), highlights[r]);
        if (highlights[r])
            QCOMPARE(model.index(r, Column::FirstName).data(Qt::BackgroundRole).value<QColor>(), QColor(187, 238, 255));
        QCOMPARE(model.record(r)[Column::TimeStamp], stamps[r]);
        QCOMPARE(model.index(r, Column::Azimuth).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
    }
}

void TestLists::slashedZeroAndThumbnail()
{
    // The thumbnail was saved under the callsign as typed, slashed zero and all.
    QImage thumb(32, 16, QImage::Format_RGB32);
    thumb.fill(Qt::red);
    QVERIFY(thumb.save(m_context.thumbsDir + u"/PA\u00D8ABC.jpg"_qs, "BMP"));
    CallListModel model;
    QVERIFY(loadBytes(model, "PA\xD8" "ABC*Jan******52.1*5.3*20240101000000*\r\n"
                             "PA0XYZ*Piet******52.1*5.3*20240101000000*\r\n")
                .complete());
    QCOMPARE(model.record(0)[Column::Callsign], u"PA0ABC"_qs);
    const QImage shown = model.index(0, Column::FirstName).data(CallListModel::ThumbnailRole).value<QImage>();
    QCOMPARE(shown.size(), QSize(32, 16));
    QVERIFY(model.index(1, Column::FirstName).data(CallListModel::ThumbnailRole).isNull());
}

void TestLists::damagedLineStopsTheLoad_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("badLine");
    QTest::addColumn<QString>("lastCallsign");
    const QByteArray good = "A1*a*********\r\n";
    QTest::newRow("short line in the middle") << good + "B2*b*c\r\n" + good << 2 << 2 << u"B2"_qs;
    QTest::newRow("empty line at the end") << good + "\r\n" << 2 << 2 << QString();
    QTest::newRow("ten fields") << QByteArray("C3*1*2*3*4*5*6*7*8*9\r\n") << 1 << 1 << u"C3"_qs;
    QTest::newRow("twelve fields are fine") << QByteArray("D4*1*2*3*4*5*6*7*8*9*10*11\r\n") << 1 << 0 << u"D4"_qs;
}

void TestLists::damagedLineStopsTheLoad()
{
    QFETCH(QByteArray, file);
    QFETCH(int, rows);
    QFETCH(int, badLine);
    QFETCH(QString, lastCallsign);
    CallListModel model;
    const LoadReport report = loadBytes(model, file);
    QVERIFY(report.opened);
    QCOMPARE(report.badLine, badLine);
    QCOMPARE(model.rowCount(), rows);
    QCOMPARE(model.record(rows - 1)[Column::Callsign], lastCallsign);
}

void TestLists::emptyFileKeepsRows()
{
    CallListModel model;
    QVERIFY(loadBytes(model, "A1*a*********\r\n").complete());
    QVERIFY(loadBytes(model, "").complete());
    QCOMPARE(model.rowCount(), 1);
}

void TestLists::reloadDropsOldRows()
{
    CallListModel model;
    QVERIFY(loadBytes(model, "A1*a*********\r\nB2*b*********\r\nC3*c*********\r\n").complete());
    QCOMPARE(model.rowCount(), 3);
    // A short first line writes over the first row field by field: what the
    // line lacks stays from before, and the other rows go.
    const LoadReport report = loadBytes(model, "Z9*z\r\n");
    QCOMPARE(report.badLine, 1);
    QCOMPARE(callsigns(model), QStringList{u"Z9"_qs});
    QCOMPARE(model.record(0)[Column::FirstName], u"z"_qs);
}

void TestLists::savedFileIsByteExact()
{
    CallListModel model;
    CallRecord r;
    r[Column::Callsign] = u"OZ1ABC"_qs;
    r[Column::FirstName] = u"S\u00F8ren"_qs;
    r[Column::Azimuth] = u"34\u00B0"_qs;
    r[Column::City] = u"K\u00F8benhavn"_qs;
    r[Column::Latitude] = u"55.68"_qs;
    r[Column::Longitude] = u"12.57"_qs;
    r[Column::TimeStamp] = u"20240101000000"_qs;
    model.appendRecord(r);
    CallRecord only;
    only[Column::Callsign] = u"W1AW"_qs;
    only[Column::FirstName] = u"Hiram"_qs;
    only[Column::TimeStamp] = u"20231231235959"_qs;
    model.appendRecord(only);
    const QString path = m_dir.filePath(u"List2.dat"_qs);
    QVERIFY(saveList(model, path));
    QCOMPARE(readBytes(path), QByteArray("OZ1ABC*S\xF8ren*34\xB0***K\xF8" "benhavn**55.68*12.57*20240101000000*\r\n"
                                         "W1AW*Hiram********20231231235959*\r\n"));
}

void TestLists::emptyListSavesEmptyFile()
{
    CallListModel model;
    const QString path = m_dir.filePath(u"List3.dat"_qs);
    QVERIFY(writeBytes(path, "old contents\r\n"));
    QVERIFY(saveList(model, path));
    QVERIFY(QFile::exists(path));
    QCOMPARE(readBytes(path), QByteArray());
    CallListModel back;
    QVERIFY(back.load(path, m_context).complete());
    QCOMPARE(back.rowCount(), 0);
}

void TestLists::loadSaveRoundTrip()
{
    // Everything but the derived azimuth comes back byte for byte, including
    // bytes Windows-1252 leaves undefined and an Column::Extra field.
    const QByteArray file = "SM5\x81XY*\xC5sa*1\xB0*\xC5sa Berg*Gatan 1*Stockholm*Sweden*59.33*18.06*20240101000000*note\r\n"
                            "JA1ZZZ*Taro*****Japan*0*0*20240101000001*\r\n";
    CallListModel model;
    QVERIFY(loadBytes(model, file).complete());
    const QString path = m_dir.filePath(u"List4.dat"_qs);
    QVERIFY(saveList(model, path));
    QByteArray expected = file;
    expected.replace("*1\xB0*", "*37\xB0*"); // recomputed from Me at 40 N, 75 W
    QCOMPARE(readBytes(path), expected);
}

void TestLists::sort_data()
{
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("stamps");
    QTest::addColumn<int>("selector");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("selectorAfter");
    const QStringList stamps{u"20240102000000"_qs, u"20231231000000"_qs, u"20240102000000"_qs, u"20240101000000"_qs};
    QTest::newRow("by callsign, case-sensitive")
        << QStringList{u"K1ABC"_qs, u"dl1abc"_qs, u"DL1ABC"_qs, u"G4XYZ"_qs} << stamps << 0
        << QStringList{u"DL1ABC"_qs, u"G4XYZ"_qs, u"K1ABC"_qs, u"dl1abc"_qs} << 0;
    // Newest first; equal stamps keep their order.
    QTest::newRow("by date/time turns the selector into 9")
        << QStringList{u"A"_qs, u"B"_qs, u"C"_qs, u"D"_qs} << stamps << 1
        << QStringList{u"A"_qs, u"C"_qs, u"D"_qs, u"B"_qs} << 9;
    QTest::newRow("a 9 stays 9") << QStringList{u"A"_qs, u"B"_qs, u"C"_qs, u"D"_qs} << stamps << 9
                                 << QStringList{u"A"_qs, u"C"_qs, u"D"_qs, u"B"_qs} << 9;
}

void TestLists::sort()
{
    QFETCH(QStringList, calls);
    QFETCH(QStringList, stamps);
    QFETCH(int, selector);
    CallListModel model;
    for (int i = 0; i < calls.size(); ++i) {
        CallRecord r;
        r[Column::Callsign] = calls[i];
        r[Column::TimeStamp] = stamps[i];
        model.appendRecord(r);
    }
    auto s = qint16(selector);
    model.sortList(s);
    QTEST(callsigns(model), "expected");
    QTEST(int(s), "selectorAfter");
}

void TestLists::sortKeepsSelectionOnItsEntry()
{
    CallListModel model;
    for (const QString &c : {u"C"_qs, u"A"_qs, u"B"_qs}) {
        CallRecord r;
        r[Column::Callsign] = c;
        model.appendRecord(r);
    }
    QPersistentModelIndex current = model.index(0, 0); // "C"
    qint16 mode = 0;
    model.sortList(mode);
    QCOMPARE(current.row(), 2);
    QCOMPARE(current.data().toString(), u"C"_qs);
}

void TestLists::damagedCopyKept()
{
    const QString path = m_dir.filePath(u"List5.dat"_qs);
    QVERIFY(writeBytes(path, "bad*line\r\n"));
    const QString copy = marvik::app::keepDamagedCopy(path);
    QVERIFY(copy.startsWith(path + u".damaged-"_qs));
    QCOMPARE(readBytes(copy), QByteArray("bad*line\r\n"));
    QVERIFY(marvik::app::keepDamagedCopy(path) != copy);
}

void TestLists::killedSaveNeverTearsTheFile()
{
    // A child process saves two different large lists over and over; killing
    // it at random moments must always leave one of them whole.
    const QString path = m_dir.filePath(u"List1.dat"_qs);
    QByteArray versions[2];
    for (int v = 0; v < 2; ++v) {
        CallListModel model;
        for (int i = 0; i < 20000; ++i) {
            CallRecord r;
            r[Column::Callsign] = QStringLiteral("K%1V%2").arg(i).arg(v);
            r[Column::FullName] = QStringLiteral("Operator number %1").arg(i);
            model.appendRecord(r);
        }
        QVERIFY(saveList(model, path));
        versions[v] = readBytes(path);
    }
    auto *rng = QRandomGenerator::global();
    for (int round = 0; round < 12; ++round) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {u"--save-loop"_qs, path});
        QVERIFY(child.waitForStarted());
        QVERIFY(child.waitForReadyRead(10000)); // the child says when it has begun saving
        QTest::qWait(int(rng->bounded(5, 120)));
        ::kill(pid_t(child.processId()), SIGKILL);
        QVERIFY(child.waitForFinished());
        const QByteArray now = readBytes(path);
        QVERIFY2(now == versions[0] || now == versions[1], "the list file was torn by a killed save");
    }
}

void TestLists::thumbnailsFollowTheirRows_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("thumbnailFiles");
    QTest::addColumn<QStringList>("expected"); ///< the thumbnail's name per row, empty for none
    const QByteArray rows = "G4AAA*a*********\r\nG4BBB*b*********\r\nG4CCC*c*********\r\n";
    QTest::newRow("every other row") << rows << QStringList{u"G4AAA"_qs, u"G4CCC"_qs}
                                     << QStringList{u"G4AAA"_qs, QString(), u"G4CCC"_qs};
    QTest::newRow("only the last") << rows << QStringList{u"G4CCC"_qs} << QStringList{QString(), QString(), u"G4CCC"_qs};
    // The damaged line's row is kept without a thumbnail, as it always was.
    QTest::newRow("damaged last line") << rows + "G4DDD*d\r\n" << QStringList{u"G4BBB"_qs, u"G4DDD"_qs}
                                       << QStringList{QString(), u"G4BBB"_qs, QString(), QString()};
}

void TestLists::thumbnailsFollowTheirRows()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, thumbnailFiles);
    QFETCH(QStringList, expected);
    // A folder of its own: the index of a folder is listed once per run.
    m_context.thumbsDir = m_dir.filePath(u"Thumbs-%1"_qs.arg(QString::fromLatin1(QTest::currentDataTag())));
    QVERIFY(QDir().mkpath(m_context.thumbsDir));
    for (const QString &name : thumbnailFiles)
        writeBytes(m_context.thumbsDir + u'/' + name + u".jpg"_qs, "BM");
    CallListModel model;
    loadBytes(model, file);
    QCOMPARE(model.rowCount(), expected.size());
    for (int r = 0; r < model.rowCount(); ++r) {
        const QString path = model.index(r, Column::FirstName).data(CallListModel::ThumbnailPathRole).toString();
        QCOMPARE(path, expected[r].isEmpty() ? QString() : m_context.thumbsDir + u'/' + expected[r] + u".jpg"_qs);
    }
}

void TestLists::thumbnailFolderListing_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("plain call") << u"G4XYZ.jpg"_qs << u"G4XYZ"_qs << true;
    QTest::newRow("slashed zero") << u"PA\u00D8ABC.jpg"_qs << u"PA\u00D8ABC"_qs << true;
    QTest::newRow("escaped call") << marvik::callsign::fileName(u"G4XYZ/P"_qs) + u".jpg"_qs
                                  << marvik::callsign::fileName(u"G4XYZ/P"_qs) << true;
    QTest::newRow("extension in capitals") << u"K1ABC.JPG"_qs << u"K1ABC"_qs << true;
    QTest::newRow("hidden file") << u".N0CALL.jpg"_qs << u".N0CALL"_qs << true;
    QTest::newRow("names keep their case") << u"dl1abc.jpg"_qs << u"DL1ABC"_qs << false;
    QTest::newRow("not a thumbnail") << u"W1AW.txt"_qs << u"W1AW"_qs << false;
    QTest::newRow("a folder so named") << u"VK2ABC.jpg/"_qs << u"VK2ABC"_qs << false;
    // Links count as what they point to, as they did for QDir.
    QTest::newRow("link to a thumbnail") << u"W2LNK.jpg>DL0XX.jpg"_qs << u"W2LNK"_qs << true;
    QTest::newRow("link to nothing") << u"W2DEAD.jpg>gone.jpg"_qs << u"W2DEAD"_qs << false;
    QTest::newRow("link to a folder") << u"W2DIR.jpg>sub"_qs << u"W2DIR"_qs << false;
}

void TestLists::thumbnailFolderListing()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    QFETCH(bool, found);
    const QString folder = m_dir.filePath(u"Thumbs-%1"_qs.arg(QString::fromLatin1(QTest::currentDataTag())));
    QVERIFY(QDir().mkpath(folder));
    if (file.endsWith(u'/')) {
        QVERIFY(QDir(folder).mkdir(file.chopped(1)));
    } else if (const qsizetype arrow = file.indexOf(u'>'); arrow >= 0) {
#ifndef Q_OS_UNIX
        QSKIP("symbolic links are a Unix matter here");
#endif
        QVERIFY(QDir(folder).mkpath(u"sub"_qs));
        QVERIFY(QFile::link(file.mid(arrow + 1), folder + u'/' + file.left(arrow)));
        file.truncate(arrow);
    } else {
        writeBytes(folder + u'/' + file, "BM");
    }
    // A folder of many thumbnails, the one looked for among them.
    for (int i = 0; i < 300; ++i)
        writeBytes(folder + u"/DL%1XX.jpg"_qs.arg(i), "BM");

    ThumbnailIndex index(folder);
    const int id = index.find(name);
    QCOMPARE(id >= 0, found);
    QSet<int> ids;
    for (int i = 0; i < 300; ++i)
        ids.insert(index.find(u"DL%1XX"_qs.arg(i)));
    QCOMPARE(ids.size(), 300);
    QVERIFY(!ids.contains(-1));
    QCOMPARE(index.find(u"DL300XX"_qs), -1);
    if (found && file.endsWith(u".jpg"_qs))
        QVERIFY(QFileInfo::exists(index.path(id)));
    // A thumbnail Marvik writes later is found from then on, under one number.
    const int added = index.add(u"ON4NEW"_qs);
    QCOMPARE(index.find(u"ON4NEW"_qs), added);
    QCOMPARE(index.add(u"ON4NEW"_qs), added);
    QCOMPARE(index.fromPath(folder + u"/ON4NEW.jpg"_qs), added);
    QCOMPARE(index.path(added), folder + u"/ON4NEW.jpg"_qs);
}

// List readers look names up in batches, a few hundred to a lock, while the
// window draws and Marvik records thumbnails it has just written.
void TestLists::thumbnailIndexSharedByReaders()
{
    const QString folder = m_dir.filePath(u"Thumbs-shared"_qs);
    QVERIFY(QDir().mkpath(folder));
    constexpr int kListed = 1500;
    for (int i = 0; i < kListed; ++i)
        writeBytes(folder + u"/G%1AA.jpg"_qs.arg(i), "BM");
    ThumbnailIndex index(folder);

    // Every third name is missing, so that batch edges fall on both kinds.
    QStringList names;
    QList<int> expected;
    for (int i = 0; i < 2 * kListed; ++i) {
        const bool listed = i % 3 != 2;
        names.append(listed ? u"G%1AA"_qs.arg((i / 3 * 2 + i % 3) % kListed) : u"M%1ZZ"_qs.arg(i));
        expected.append(index.find(names.last()));
    }
    QCOMPARE(expected.count(-1), 2 * kListed / 3);
    QCOMPARE(index.find(names), expected);

    std::atomic<bool> stop = false;
    std::atomic<int> wrong = 0;
    std::atomic<int> batches = 0;
    auto reader = [&] {
        while (!stop) {
            if (index.find(names) != expected)
                ++wrong;
            ++batches;
        }
    };
    std::unique_ptr<QThread> readers[] = {std::unique_ptr<QThread>(QThread::create(reader)),
                                          std::unique_ptr<QThread>(QThread::create(reader))};
    for (auto &r : readers)
        r->start();
    // Meanwhile: thumbnails written (the table grows several times over)
    // and drawn.
    QList<int> added;
    for (int i = 0; i < 3000; ++i) {
        added.append(index.add(u"ON%1NEW"_qs.arg(i)));
        QCOMPARE(index.path(added.last()), folder + u"/ON%1NEW.jpg"_qs.arg(i));
    }
    QTRY_VERIFY(batches >= 4);
    stop = true;
    for (auto &r : readers)
        QVERIFY(r->wait(10000));
    QCOMPARE(wrong.load(), 0);
    for (int i = 0; i < added.size(); ++i)
        QCOMPARE(index.find(u"ON%1NEW"_qs.arg(i)), added[i]);
    QCOMPARE(QSet<int>(added.begin(), added.end()).size(), added.size());
}

// The child of killedSaveNeverTearsTheFile().
static int saveLoop(const QString &path)
{
    CallListModel models[2];
    for (int v = 0; v < 2; ++v) {
        for (int i = 0; i < 20000; ++i) {
            CallRecord r;
            r[Column::Callsign] = QStringLiteral("K%1V%2").arg(i).arg(v);
            r[Column::FullName] = QStringLiteral("Operator number %1").arg(i);
            models[v].appendRecord(r);
        }
    }
    fputs("saving\n", stdout);
    fflush(stdout);
    for (int n = 0;; ++n)
        saveList(models[n % 2], path);
}

void TestLists::thumbnailDecodedByItsContent_data()
{
    QTest::addColumn<QByteArray>("format"); // as written behind the ".jpg" name
    QTest::addColumn<int>("height");        // asked for; 0: as stored
    QTest::addColumn<QSize>("size");        // decoded; empty: nothing
    QTest::newRow("JPEG") << QByteArray("JPEG") << 0 << QSize(24, 16);
    QTest::newRow("JPEG at half height") << QByteArray("JPEG") << 8 << QSize(12, 8);
    QTest::newRow("PNG") << QByteArray("PNG") << 0 << QSize(24, 16);
    QTest::newRow("bitmap") << QByteArray("BMP") << 0 << QSize(24, 16);
    QTest::newRow("bitmap at twice its height") << QByteArray("BMP") << 32 << QSize(48, 32);
    QTest::newRow("PPM, known only to the readers") << QByteArray("PPM") << 0 << QSize(24, 16);
    QTest::newRow("a bitmap's mark on no bitmap") << QByteArray("BM broken") << 0 << QSize(0, 0);
    QTest::newRow("no picture at all") << QByteArray("text") << 16 << QSize(0, 0);
}

void TestLists::thumbnailDecodedByItsContent()
{
    QFETCH(QByteArray, format);
    QFETCH(int, height);
    QFETCH(QSize, size);
    const QString path = m_dir.filePath(u"thumb-%1.jpg"_qs.arg(QString::fromLatin1(QTest::currentDataTag())));
    QImage picture(24, 16, QImage::Format_RGB32);
    picture.fill(QColor(220, 20, 20));
    if (size.isEmpty()) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(format) == format.size());
    } else {
        QVERIFY(picture.save(path, format.constData()));
    }
    const QImage decoded = thumbnailCache::image(path, height);
    QCOMPARE(decoded.size(), size);
    if (!size.isEmpty()) {
        const QColor centre = decoded.pixelColor(size.width() / 2, size.height() / 2);
        QVERIFY2(centre.red() > 180 && centre.green() < 70, qPrintable(centre.name()));
    }
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--save-loop") == 0)
        return saveLoop(QString::fromLocal8Bit(argv[2]));
    TestLists test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_lists.moc"
