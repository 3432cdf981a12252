// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace marvik::app {

/// Result of reading one of Marvik's text files.
struct TextFileContent
{
    bool ok = false;     ///< false when the file could not be opened or read
    QString text;        ///< the decoded text
    QString errorString; ///< why it could not be read
};

/// Reads a whole file's bytes; false with `errorString` when it cannot.
bool readFileBytes(const QString &path, QByteArray &bytes, QString *errorString = nullptr);

/// Reads and decodes a whole text file (see decodeTextFile()).
TextFileContent readTextFile(const QString &path);

/// Splits a text into lines the way the Windows program read them (CR LF), but
/// also taking a lone CR or LF as a line end, so a file touched by a Linux
/// editor reads the same. A final line end does not start another line.
QStringList splitLines(QStringView text);

/// The number of lines splitLines() would give for a file's bytes, counted
/// without decoding (line ends are the same bytes in both encodings).
qsizetype countLines(QByteArrayView bytes);

/// Writes bytes to a file through an atomic replace: a reader, or a crash in
/// the middle, sees either the old file or the new one, never a torn one.
/// Returns false and fills `errorString` when the file could not be written.
bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *errorString = nullptr);

/// Encodes (encodeTextFile) and writes lines, each ended by CR LF, atomically.
bool writeTextLines(const QString &path, const QStringList &lines, QString *errorString = nullptr);

} // namespace marvik::app
