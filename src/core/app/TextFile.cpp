// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/TextFile.h"

#include "core/app/TextCodec.h"

#include <QFile>
#include <QSaveFile>

namespace marvik::app {

TextFileContent readTextFile(const QString &path)
{
    TextFileContent content;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        content.errorString = file.errorString();
        return content;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        content.errorString = file.errorString();
        return content;
    }
    content.text = decodeTextFile(bytes);
    content.ok = true;
    return content;
}

QStringList splitLines(QStringView text)
{
    QStringList lines;
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c != u'\r' && c != u'\n')
            continue;
        lines.append(text.sliced(start, i - start).toString());
        if (c == u'\r' && i + 1 < n && text[i + 1] == u'\n')
            ++i;
        start = i + 1;
    }
    if (start < n)
        lines.append(text.sliced(start).toString());
    return lines;
}

qsizetype countLines(QByteArrayView bytes)
{
    qsizetype lines = 0;
    const qsizetype n = bytes.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char c = bytes[i];
        if (c == '\n' || (c == '\r' && (i + 1 == n || bytes[i + 1] != '\n')))
            ++lines;
    }
    if (n > 0 && bytes[n - 1] != '\n' && bytes[n - 1] != '\r')
        ++lines;
    return lines;
}

bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *errorString)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (errorString)
            *errorString = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}

bool writeTextLines(const QString &path, const QStringList &lines, QString *errorString)
{
    qsizetype size = 0;
    for (const QString &line : lines)
        size += line.size() + 2;
    QString text;
    text.reserve(size);
    for (const QString &line : lines) {
        text += line;
        text += QLatin1String("\r\n");
    }
    return writeFileAtomically(path, encodeTextFile(text), errorString);
}

} // namespace marvik::app
