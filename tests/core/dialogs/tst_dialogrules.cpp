// SPDX-License-Identifier: GPL-3.0-or-later
// The dialogs' rules that need no window: the add/edit dialog's search and
// writing, and the update page's version.
#include "support/TestFiles.h"

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/dialogs/AddEdit.h"
#include "core/dialogs/NewVersion.h"
#include "core/lists/ListStore.h"

#include <QTemporaryDir>
#include <QTest>

using namespace marvik;
using lists::Column;

namespace {

const maps::Position kMe{51.5, -0.12};

lists::CallRecord record(const QString &line)
{
    lists::CallRecord r;
    const QStringList parts = line.split(u'*');
    for (int i = 0; i < lists::kColumnCount; ++i)
        r.fields[std::size_t(i)] = parts.value(i);
    return r;
}

} // namespace

class TestDialogRules : public QObject
{
    Q_OBJECT

private slots:
    void membershipAcrossTheLists()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(test::writeBytes(dir.filePath(QStringLiteral("List2.dat")),
                                 "DL1ABC*Hansi**Hans Meyer*Hauptstr. 1*Berlin*Germany*52.52*13.405*20240102101500*\r\n"
                                 "DL1ABC*Twin**Hans Twin*******\r\n"));
        QVERIFY(test::writeBytes(dir.filePath(QStringLiteral("List3.dat")),
                                 "dl1abc*Lower**Lower Case*******\r\n"));
        QVERIFY(test::writeBytes(dir.filePath(QStringLiteral("List5.dat")),
                                 "K1ABC*Jim**James Taylor*******\r\n"
                                 "DL1ABC*Hans**Hans Meyer*Ring 2*Potsdam*Germany*52.4*13.06*20240301080000*\r\n"));
        app::DataFolder data(dir.path());
        app::Settings settings;
        lists::ListStore store(data, settings);
        // The lists are still being read: the search must wait for them.
        store.loadAtStartUp(1);
        QVERIFY(store.isReading());

        const dialogs::Membership m = dialogs::findInLists(store, QStringLiteral("DL1ABC"));
        QCOMPARE(m.mark, QStringLiteral("02005"));
        QCOMPARE(m.lists(), (QList<int>{2, 5}));
        QCOMPARE(dialogs::listNumbers(m.mark), QStringLiteral("2,5"));
        // The later list's entry is the one the boxes show.
        QVERIFY(m.found());
        QCOMPARE((*m.shown)[Column::City], QStringLiteral("Potsdam"));

        // Callsigns are compared as they stand.
        const dialogs::Membership lower = dialogs::findInLists(store, QStringLiteral("dl1abc"));
        QCOMPARE(lower.mark, QStringLiteral("00300"));
        const dialogs::Membership none = dialogs::findInLists(store, QStringLiteral("DL1AB"));
        QVERIFY(!none.found());
        QCOMPARE(none.mark, QStringLiteral("00000"));
        QCOMPARE(dialogs::listNumbers(none.mark), QString());
    }

    void writingTheBoxes_data()
    {
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("nickname");
        QTest::addColumn<QString>("azimuth");
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        QTest::addColumn<bool>("markedBefore");
        QTest::addColumn<QString>("firstName");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<QString>("azimuthCell");

        const QString old = QStringLiteral("DL1ABC*Hansi*45\u00B0*Hans Meyer*a*b*c*52.52*13.405*20240102101500*extra");
        const QString bare = QStringLiteral("DL1ABC**********");
        const QString deg45 = QStringLiteral("45\u00B0");
        const QString toBerlin = maps::azimuthText(maps::bearingFrom(kMe, 52.52, 13.405).degrees);
        QTest::newRow("empty nickname keeps the first name")
            << old << "Hans Meyer" << "" << "45" << "52.52" << "13.405" << false << "Hansi" << true << deg45;
        QTest::newRow("nickname written, first word alike")
            << old << "Hans Meyer" << "Hans" << "45" << "52.52" << "13.405" << false << "Hans" << false << deg45;
        QTest::newRow("full name without a blank, alike")
            << old << "Hans" << "Hans" << "45" << "52.52" << "13.405" << false << "Hans" << false << deg45;
        QTest::newRow("full name without a blank, longer")
            << old << "Hansi" << "Hans" << "45" << "52.52" << "13.405" << false << "Hans" << true << deg45;
        QTest::newRow("a mark once given stays")
            << old << "Hans Meyer" << "Hans" << "45" << "52.52" << "13.405" << true << "Hans" << true << deg45;
        QTest::newRow("typed azimuth wins") << old << "Hans Meyer" << "" << "300" << "52.52" << "13.405" << false
                                            << "Hansi" << true << QStringLiteral("300\u00B0");
        QTest::newRow("empty box keeps the row's azimuth")
            << old << "Hans Meyer" << "" << "" << "52.52" << "13.405" << false << "Hansi" << true << deg45;
        QTest::newRow("empty box, empty cell: worked out")
            << bare << "Hans Meyer" << "Hans" << "" << "52.52" << "13.405" << false << "Hans" << false << toBerlin;
        QTest::newRow("no position, no bearing")
            << bare << "Hans Meyer" << "Hans" << "" << "" << "" << false << "Hans" << false << "";
    }
    void writingTheBoxes()
    {
        QFETCH(QString, row);
        QFETCH(QString, name);
        QFETCH(QString, nickname);
        QFETCH(QString, azimuth);
        QFETCH(QString, latitude);
        QFETCH(QString, longitude);
        QFETCH(bool, markedBefore);
        QFETCH(QString, firstName);
        QFETCH(bool, marked);
        QFETCH(QString, azimuthCell);

        lists::CallRecord r = record(row);
        if (markedBefore)
            r.firstNameBack = lists::kNicknameColour;
        dialogs::EditedFields f;
        f.callsign = QStringLiteral("DL1ABC");
        f.nickname = nickname;
        f.azimuth = azimuth;
        f.name = name;
        f.address = QStringLiteral("Ring 2");
        f.city = QStringLiteral("Potsdam");
        f.country = QStringLiteral("Germany");
        f.latitude = latitude;
        f.longitude = longitude;
        dialogs::writeFields(r, f, kMe);

        QCOMPARE(r[Column::FirstName], firstName);
        QCOMPARE(r.firstNameBack == lists::kNicknameColour, marked);
        QCOMPARE(r[Column::Azimuth], azimuthCell);
        QCOMPARE(r[Column::FullName], name);
        QCOMPARE(r[Column::City], QStringLiteral("Potsdam"));
        QCOMPARE(r[Column::Latitude], latitude);
        // What the dialog has no box for stays as it was.
        QCOMPARE(r[Column::TimeStamp], record(row)[Column::TimeStamp]);
        QCOMPARE(r[Column::Extra], record(row)[Column::Extra]);
    }

    void azimuthBox_data()
    {
        QTest::addColumn<double>("meLat");
        QTest::addColumn<double>("meLon");
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        QTest::addColumn<QString>("sameAs"); // "lat,lon" read with a point, or a literal result
        QTest::newRow("Me itself") << 51.5 << -0.12 << "51.5" << "-0.12" << "=0";
        QTest::newRow("no own position") << 0.0 << 0.0 << "52.52" << "13.405" << "=0";
        QTest::newRow("both boxes empty") << 51.5 << -0.12 << "" << "" << "=";
        QTest::newRow("text after the number") << 51.5 << -0.12 << "52.52 N" << "13.405E" << "52.52,13.405";
        // The add/edit dialog takes a point only: "52,5" is 52.
        QTest::newRow("comma ends the number") << 51.5 << -0.12 << "52,5" << "13" << "52,13";
    }
    void azimuthBox()
    {
        QFETCH(double, meLat);
        QFETCH(double, meLon);
        QFETCH(QString, latitude);
        QFETCH(QString, longitude);
        QFETCH(QString, sameAs);
        const QString box = dialogs::azimuthBoxText({meLat, meLon}, latitude, longitude);
        if (sameAs.startsWith(u'=')) {
            QCOMPARE(box, sameAs.mid(1));
        } else {
            const QStringList at = sameAs.split(u',');
            const int degrees = maps::bearingFrom({meLat, meLon}, at[0].toDouble(), at[1].toDouble()).degrees;
            QVERIFY(degrees != 0);
            QCOMPARE(box, QString::number(degrees));
        }
    }

    void updatePage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("newer"); // empty: no question
        QTest::newRow("the next minor version") << "Marvik  3.13" << "3.13";
        QTest::newRow("the same version") << "Marvik  3.12" << "";
        QTest::newRow("parts compare as numbers") << "Marvik 3.2" << "";
        QTest::newRow("a trailing zero is no news") << "Marvik 3.12.0" << "";
        QTest::newRow("a patch release") << "Marvik 3.12.1" << "3.12.1";
        QTest::newRow("a new major version") << "Marvik 4.0 is out!" << "4.0";
        QTest::newRow("older") << "Marvik 2.99" << "";
        QTest::newRow("in a page's text") << "Downloads\r\nMarvik\u00A03.13\tWindows and Linux" << "3.13";
        QTest::newRow("the first mention with a number counts")
            << "Get Marvik here.\r\nMarvik  3.14\r\nMarvik 3.13" << "3.14";
        QTest::newRow("other words between") << "Marvik Calls 3.13" << "";
        QTest::newRow("no blank") << "Marvik3.13" << "";
        QTest::newRow("one part only") << "Marvik 4" << "";
        QTest::newRow("no word") << "3.13" << "";
        QTest::newRow("case counts") << "MARVIK 3.13" << "";
        QTest::newRow("absurd number") << "Marvik 12345678.1" << "";
        QTest::newRow("empty page") << "" << "";
    }
    void updatePage()
    {
        QFETCH(QString, page);
        QFETCH(QString, newer);
        const std::optional<QVersionNumber> found = dialogs::newerVersion(page, QVersionNumber(3, 12));
        QCOMPARE(found ? found->toString() : QString(), newer);
    }

    void ownVersionIsTheVersionText()
    {
        // The version the check compares with is the one the window shows.
        const QString text = QString::fromUtf16(app::kVersionText);
        QCOMPARE(dialogs::reportedVersion(text), std::optional<QVersionNumber>(dialogs::ownVersion()));
        QVERIFY(dialogs::ownVersion().segmentCount() >= 2);
    }
};

QTEST_GUILESS_MAIN(TestDialogRules)
#include "tst_dialogrules.moc"
