// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/AdifLog.h"

#include <QByteArrayView>

namespace marvik::logs {

/// ADX when the bytes start (after a byte-order mark and blanks) with an
/// XML declaration or an <ADX> element; ADI otherwise.
AdifFormat detectFormat(QByteArrayView bytes);

/// Reads a log in the form detectFormat() finds. Never fails: whatever can
/// be read is read, and every place where the file is malformed is listed in
/// the log's problems.
AdifLog readAdif(QByteArrayView bytes);

/// Reads tagged ADIF text. Field names in any case; fields the reader does
/// not know are kept like all others; text between fields is ignored. A
/// value's length is counted the way its writer counted it: loggers built on
/// Qt or .NET count characters (UTF-16 units), others count UTF-8 bytes, and
/// the two differ only for values beyond ASCII. For such a value the reader
/// takes the count after which the file goes on with the next tag, and
/// remembers which count the file uses for values where both would fit. A
/// value that is not UTF-8 is read as Windows-1252.
AdifLog readAdi(QByteArrayView bytes);

/// Reads the XML form through QXmlStreamReader. APP fields become
/// "APP_<PROGRAMID>_<FIELDNAME>", user-defined fields their own name, as in
/// tagged files.
AdifLog readAdx(QByteArrayView bytes);

/// Reads a log file. False, with the reason, when the file cannot be read.
bool readAdifFile(const QString &path, AdifLog &log, QString *errorString = nullptr);

} // namespace marvik::logs
