// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProcessInfo.h"

#include <QFile>
#include <QSet>

#include <ctime>

namespace marvik::bench {

qint64 monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

qint64 peakMemoryKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

QStringList mappedLibraries(const QString &prefix)
{
    // /proc/self/maps lists every mapping of a library; each counts once.
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        return {QStringLiteral("?")};
    QStringList found;
    QSet<QString> seen;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const qsizetype slash = line.lastIndexOf('/');
        if (slash < 0)
            continue;
        const QString file = QString::fromLocal8Bit(line.mid(slash + 1));
        if (!file.startsWith(prefix))
            continue;
        const QString name = file.mid(prefix.size()).section(QStringLiteral(".so"), 0, 0);
        if (!seen.contains(name)) {
            seen.insert(name);
            found.append(name);
        }
    }
    found.sort();
    return found;
}

QString reportLine(const QList<std::pair<QString, QString>> &figures)
{
    QStringList parts;
    for (const auto &[key, value] : figures)
        parts.append(key + u'=' + value);
    return parts.join(u' ');
}

} // namespace marvik::bench
