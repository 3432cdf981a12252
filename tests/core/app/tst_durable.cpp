// SPDX-License-Identifier: GPL-3.0-or-later
// A list file is saved so that a power cut leaves the old file or the new
// one, whole: the system calls of a real save, watched with strace, must
// sync the new file before it is renamed over the old one, and the folder
// after the rename.
#include "support/TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

class TestDurable : public QObject
{
    Q_OBJECT

private slots:
    void saveIsSyncedBeforeAndAfterTheRename()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("strace")).isEmpty())
            QSKIP("strace is not installed (scripts/deps.sh --test installs it)");
        QTemporaryDir data;
        QVERIFY(data.isValid());
        QVERIFY(marvik::test::writeBytes(data.filePath(QStringLiteral("List2.dat")),
                                         "K1AA*A*********20190101000000*\r\n"));
        const QString trace = data.filePath(QStringLiteral("trace"));
        QProcess strace;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        // The leak checker cannot run under ptrace.
        env.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        strace.setProcessEnvironment(env);
        strace.start(QStringLiteral("strace"),
                     {QStringLiteral("-f"), QStringLiteral("-e"),
                      QStringLiteral("trace=openat,open,fsync,fdatasync,rename,renameat,renameat2"),
                      QStringLiteral("-o"), trace, QStringLiteral(MARVIK_BIN_DIR "/marvik-cli"),
                      QStringLiteral("--data-dir"), data.path(), QStringLiteral("import-adif"),
                      QStringLiteral(MARVIK_TEST_DATA "/adif/log.adx"), QStringLiteral("2")});
        QVERIFY(strace.waitForFinished(60000));
        QCOMPARE(strace.exitCode(), 0);

        const QString target = data.filePath(QStringLiteral("List2.dat"));
        const QStringList calls = QString::fromLocal8Bit(marvik::test::readBytes(trace)).split(u'\n');
        // The steps in the order they must come: temp file opened, synced,
        // renamed over the list, folder opened, folder synced.
        enum Step { Opened, Synced, Renamed, FolderOpened, FolderSynced, Done };
        Step step = Opened;
        QString temp;
        QString fd;
        for (const QString &call : calls) {
            QRegularExpressionMatch m;
            if (step == Opened
                && (m = QRegularExpression(QStringLiteral("open(?:at)?\\(.*\"(%1\\.tmp-[^\"]+)\".*O_CREAT.*= (\\d+)")
                                               .arg(QRegularExpression::escape(target))).match(call)).hasMatch()) {
                temp = m.captured(1);
                fd = m.captured(2);
                step = Synced;
            } else if (step == Synced && (call.contains(QStringLiteral("fsync(%1)").arg(fd))
                                          || call.contains(QStringLiteral("fdatasync(%1)").arg(fd)))) {
                step = Renamed;
            } else if (step == Synced && call.contains(u"rename")) {
                QFAIL(qPrintable(u"renamed before it was synced: "_qs + call));
            } else if (step == Renamed && call.contains(u"rename") && call.contains(temp)
                       && call.contains(u'"' + target + u'"')) {
                step = FolderOpened;
            } else if (step == FolderOpened
                       && (m = QRegularExpression(QStringLiteral("open(?:at)?\\(.*\"%1\".*O_DIRECTORY.*= (\\d+)")
                                                      .arg(QRegularExpression::escape(data.path()))).match(call)).hasMatch()) {
                fd = m.captured(1);
                step = FolderSynced;
            } else if (step == FolderSynced && call.contains(QStringLiteral("fsync(%1)").arg(fd))) {
                step = Done;
            }
        }
        QVERIFY2(step == Done, qPrintable(u"the save stopped short at step "_qs + QString::number(step)));
    }
};

QTEST_GUILESS_MAIN(TestDurable)
#include "tst_durable.moc"
