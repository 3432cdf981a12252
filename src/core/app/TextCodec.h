// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace marvik::app {

/// Windows-1252 both ways, by our own table: every one of the 256 bytes maps
/// to one character and back, so a file from the Windows program comes back
/// byte for byte (the five bytes the code page leaves undefined travel as the
/// C1 control characters of the same number).
QString fromWindows1252(QByteArrayView bytes);

/// Encodes to Windows-1252. Returns false (and leaves `out` unspecified) when
/// a character has no place in the code page, so nothing is replaced silently.
bool toWindows1252(QStringView text, QByteArray &out);

/// How a text file of Marvik's is decoded: a UTF-8 byte-order mark means
/// UTF-8 (the writers' fallback for texts Windows-1252 cannot hold), anything
/// else is Windows-1252.
QString decodeTextFile(QByteArrayView bytes);

/// The bytes a text file of Marvik's is written as: Windows-1252 when every
/// character fits, else UTF-8 behind a byte-order mark.
QByteArray encodeTextFile(QStringView text);

} // namespace marvik::app
