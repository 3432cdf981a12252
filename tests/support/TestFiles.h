// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace marvik::test {

/// Writes raw bytes to a file, for preparing data folders byte by byte.
inline bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

inline QByteArray readBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

/// What a program prints, for reading files back with outside tools
/// (pdftotext, marvik-cli); "(<program> failed)" when it did not run or
/// did not end with exit code 0.
inline QString runProgram(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return QStringLiteral("(%1 failed)").arg(program);
    return QString::fromUtf8(p.readAllStandardOutput());
}

} // namespace marvik::test
