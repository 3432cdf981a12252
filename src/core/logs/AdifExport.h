// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/AdifLog.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace marvik::lists {
class CallListModel;
}

namespace marvik::logs {

/// Marvik's own fields. ADIF has no place for a nickname or a list's Extra
/// field, and its LAT/LON keep a position to a thousandth of a minute only;
/// these carry the row as it stands, so a list exported and imported again
/// comes back the same. Other loggers keep or drop them as they like.
inline constexpr QStringView kAppFirstName = u"APP_MARVIK_FIRSTNAME";
inline constexpr QStringView kAppLatitude = u"APP_MARVIK_LATITUDE";
inline constexpr QStringView kAppLongitude = u"APP_MARVIK_LONGITUDE";
inline constexpr QStringView kAppExtra = u"APP_MARVIK_EXTRA";

/// The ADIF version the writers follow.
inline constexpr QStringView kAdifVersion = u"3.1.4";

/// How a list is written as a log.
struct ExportOptions
{
    AdifFormat format = AdifFormat::Adi;
    QString band;                    ///< BAND of every record ("20m"); empty: none
    QString mode = QStringLiteral("SSTV"); ///< MODE of every record; empty: none
    QDateTime created;               ///< CREATED_TIMESTAMP; invalid: now
};

/// Marvik's version, as the build names it ("3.12").
QString programVersion();

/// A band as ADIF writes it: a number and "m", "cm" or "mm" ("20m",
/// "1.25m", "70cm"), or "submm". Case does not matter.
bool isBandName(const QString &band);

/// ADIF's bands, from the longest wave to the shortest, as a logger's
/// band menu offers them.
const QStringList &bandNames();

/// A mode as ADIF writes it: letters, digits, "-" and "/" only.
bool isModeName(const QString &mode);

/// The list as a log: a header with ADIF_VER, PROGRAMID "Marvik",
/// PROGRAMVERSION and CREATED_TIMESTAMP, and one record per row with a
/// callsign: CALL, NAME, ADDRESS, QTH, COUNTRY, LAT, LON and a six-character
/// GRIDSQUARE (when the row has a position), QSO_DATE and TIME_ON from the
/// row's time stamp (local time, written as UTC), BAND, MODE, and Marvik's
/// own fields. In ADX, a text beyond ASCII goes into the _INTL field and
/// the plain field gets the text without its accents.
AdifLog listToLog(const lists::CallListModel &model, const ExportOptions &options);

/// Writes the list to `path` whole (atomically) in the chosen form. Returns
/// the number of records written, or -1 with the reason.
int exportAdifFile(const lists::CallListModel &model, const QString &path, const ExportOptions &options,
                   QString *errorString = nullptr);

/// A text beyond ASCII the way ADIF's plain fields want it: accents taken
/// off, a few letters spelt out ("ß" as "ss"), anything else left out.
QString asciiText(const QString &text);

} // namespace marvik::logs
