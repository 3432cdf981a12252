// SPDX-License-Identifier: GPL-3.0-or-later
// marvik-cli's calculation commands, run as a user runs them: output, the
// one-line message on stderr and the exit code.
#include <QProcess>
#include <QTest>

class TestCli : public QObject
{
    Q_OBJECT

private slots:
    void commands_data();
    void commands();
};

void TestCli::commands_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("out");
    QTest::addColumn<int>("exitCode");

    // The worked figures, Me first.
    QTest::newRow("north") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"41"_qs, u"-75"_qs} << u"69 0\n"_qs
                           << 0;
    QTest::newRow("south") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"39"_qs, u"-75"_qs} << u"69 180\n"_qs
                           << 0;
    QTest::newRow("west") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"40"_qs, u"-80"_qs} << u"265 271\n"_qs
                          << 0;
    QTest::newRow("London") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"51.5"_qs, u"-0.12"_qs}
                            << u"3540 50\n"_qs << 0;
    QTest::newRow("Sydney to Tokyo") << QStringList{u"distance"_qs, u"-33.9"_qs, u"151.2"_qs, u"35.7"_qs, u"139.7"_qs}
                                     << u"4851 350\n"_qs << 0;
    QTest::newRow("Me unset") << QStringList{u"distance"_qs, u"0"_qs, u"0"_qs, u"51.5"_qs, u"-0.12"_qs} << u"0 0\n"_qs
                              << 0;
    QTest::newRow("same place") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"40"_qs, u"-75"_qs}
                                << u"0 0\n"_qs << 0;
    QTest::newRow("decimal comma") << QStringList{u"distance"_qs, u"40"_qs, u"-75"_qs, u"51,5"_qs, u"-0,12"_qs}
                                   << u"3540 50\n"_qs << 0;
    QTest::newRow("data folder given") << QStringList{u"--data-dir"_qs, u"/nonexistent"_qs, u"locator"_qs, u"41.714775"_qs,
                                                      u"-72.727260"_qs}
                                       << u"FN31pr\n"_qs << 0;
    QTest::newRow("position") << QStringList{u"position"_qs, u"fn31PR"_qs} << u"41.7291666666667 -72.7083333333333\n"_qs
                              << 0;

    // Pixels on the shipped maps; a map of the user's own has no fit.
    QTest::newRow("world map centre") << QStringList{u"project"_qs, u"World Map"_qs, u"0"_qs, u"0"_qs} << u"1322 706\n"_qs
                                      << 0;
    QTest::newRow("world map 45 N 90 E") << QStringList{u"project"_qs, u"World Map"_qs, u"45"_qs, u"90"_qs}
                                         << u"1946 317\n"_qs << 0;
    QTest::newRow("North America") << QStringList{u"project"_qs, u"North America Map"_qs, u"40"_qs, u"-95"_qs}
                                   << u"661 471\n"_qs << 0;
    QTest::newRow("own map") << QStringList{u"project"_qs, u"Garden Map"_qs, u"40"_qs, u"-95"_qs} << u"none\n"_qs << 0;
    QTest::newRow("names are case-sensitive") << QStringList{u"project"_qs, u"world map"_qs, u"0"_qs, u"0"_qs}
                                              << u"none\n"_qs << 0;
    QTest::newRow("world map at the pole") << QStringList{u"project"_qs, u"World Map"_qs, u"90"_qs, u"0"_qs} << QString()
                                           << 1;
    QTest::newRow("projection overflows") << QStringList{u"project"_qs, u"North America Map"_qs, u"40"_qs, u"1e6"_qs}
                                          << QString() << 1;
    QTest::newRow("project: not a number") << QStringList{u"project"_qs, u"World Map"_qs, u"north"_qs, u"0"_qs}
                                           << QString() << 2;
    QTest::newRow("latitude out of range") << QStringList{u"locator"_qs, u"91"_qs, u"0"_qs} << QString() << 1;
    QTest::newRow("malformed locator") << QStringList{u"position"_qs, u"FN3Xpr"_qs} << QString() << 1;
    QTest::newRow("not a number") << QStringList{u"distance"_qs, u"40"_qs, u"west"_qs, u"41"_qs, u"-75"_qs}
                                  << QString() << 2;
    QTest::newRow("too few arguments") << QStringList{u"distance"_qs, u"40"_qs} << QString() << 2;
    QTest::newRow("unknown command") << QStringList{u"teleport"_qs} << QString() << 2;
    QTest::newRow("no command") << QStringList{} << QString() << 2;
}

void TestCli::commands()
{
    QFETCH(QStringList, args);
    QFETCH(QString, out);
    QFETCH(int, exitCode);
    QProcess cli;
    cli.start(QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"), args);
    QVERIFY(cli.waitForFinished(20000));
    QCOMPARE(cli.exitStatus(), QProcess::NormalExit);
    QCOMPARE(cli.exitCode(), exitCode);
    QCOMPARE(QString::fromUtf8(cli.readAllStandardOutput()), out);
    const QString err = QString::fromUtf8(cli.readAllStandardError()).trimmed();
    if (exitCode == 0) {
        QVERIFY2(err.isEmpty(), qPrintable(err));
    } else {
        // One line that says what went wrong.
        QVERIFY(err.startsWith(u"marvik-cli: "_qs));
        QVERIFY(!err.contains(u'\n'));
    }
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
