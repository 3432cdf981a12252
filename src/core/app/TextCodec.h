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

/// How a text file of Marvik's is decoded: a UTF-8 byte-order mark before
/// well-formed UTF-8 means UTF-8 (the writers' fallback for texts
/// Windows-1252 cannot hold); anything else is Windows-1252, which takes
/// every byte back unchanged.
QString decodeTextFile(QByteArrayView bytes);

/// True when the bytes are well-formed UTF-8 (no overlong forms, no
/// surrogates), so decoding them loses nothing.
bool isValidUtf8(QByteArrayView bytes);

/// The bytes a text file of Marvik's is written as: Windows-1252 when every
/// character fits and the bytes do not begin like a byte-order mark, else
/// UTF-8 behind a byte-order mark.
QByteArray encodeTextFile(QStringView text);

} // namespace marvik::app
