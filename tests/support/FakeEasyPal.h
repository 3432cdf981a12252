// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace marvik::test {

/// The stand-in EasyPal (tests/x11/fake_easypal) as a test drives it: start
/// it with a title, then read what its window went through from its log.
class FakeEasyPal
{
public:
    struct Options
    {
        QString title = QStringLiteral("EasyPal");
        bool minimise = false;
        QString colour = QStringLiteral("magenta");
    };

    explicit FakeEasyPal(const Options &options)
    {
        m_log = m_dir.filePath(QStringLiteral("fake.log"));
        QStringList args {QStringLiteral("--log"), m_log, QStringLiteral("--title"), options.title,
            QStringLiteral("--colour"), options.colour};
        if (options.minimise)
            args << QStringLiteral("--minimise");
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral(MARVIK_BIN_DIR "/fake_easypal"), args);
    }
    ~FakeEasyPal()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    FakeEasyPal(const FakeEasyPal &) = delete;
    FakeEasyPal &operator=(const FakeEasyPal &) = delete;

    /// The log's lines so far.
    QList<QByteArray> lines() const
    {
        QFile f(m_log);
        if (!f.open(QIODevice::ReadOnly))
            return {};
        QList<QByteArray> out = f.readAll().split('\n');
        if (!out.isEmpty() && out.last().isEmpty())
            out.removeLast();
        return out;
    }
    bool logged(const QByteArray &line) const { return lines().contains(line); }
    /// The words after `key` on the last line that starts with it, or empty.
    QByteArray value(const QByteArray &key) const
    {
        const QList<QByteArray> all = lines();
        const QByteArray prefix = key + ' ';
        for (auto it = all.crbegin(); it != all.crend(); ++it) {
            if (it->startsWith(prefix))
                return it->mid(key.size() + 1);
        }
        return {};
    }
    /// The X window it logged once shown; 0 before.
    quint64 windowId() const { return value("window").toULongLong(); }

private:
    QTemporaryDir m_dir;
    QString m_log;
    QProcess m_process;
};

} // namespace marvik::test
