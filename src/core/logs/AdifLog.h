// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/Geometry.h"

#include <QChar>
#include <QList>
#include <QString>

namespace marvik::logs {

/// The two forms of an ADIF log: tagged text (.adi) and XML (.adx).
enum class AdifFormat { Adi, Adx };

/// One field of a header or a record. Names are kept in upper case, as the
/// format compares them without regard to case.
struct AdifField
{
    QString name;
    QString value;
    QChar type; ///< the data type indicator ("S", "N", "D" ...); null when none was given
};

/// One contact of a log.
struct AdifRecord
{
    QList<AdifField> fields;
    int line = 0; ///< where the record starts in its file, 1-based

    /// The value of the first field named `name` (upper case); empty when
    /// the record has none.
    QString value(QStringView name) const;
    bool contains(QStringView name) const;
};

/// What can be wrong at one place of a log file.
enum class AdifProblemKind {
    BadLength,       ///< a field's length is not a number
    BadName,         ///< a field whose name is empty or longer than kMaxNameLength
    CutShort,        ///< the file ends inside a value
    UnclearLength,   ///< neither counting bytes nor characters fits what follows a value
    MissingEndOfRecord, ///< the file ends after fields that no <EOR> closes
    LateHeaderEnd,   ///< an <EOH> after the first record
    NotAdx,          ///< the XML is not an ADX document
    XmlError,        ///< the XML is malformed; reading stopped there
};

/// One place where a log file is malformed.
struct AdifProblem
{
    AdifProblemKind kind;
    int line = 0;   ///< 1-based
    QString detail; ///< the field's name, or the XML parser's message
};

/// The longest field name read or written, in characters: ADIF's own are
/// under 30, and a bound keeps a reader's tag search short.
inline constexpr qsizetype kMaxNameLength = 100;

/// A whole log as read from a file or about to be written.
struct AdifLog
{
    /// The most problems kept; the rest are only counted.
    static constexpr int kMaxProblems = 100;

    AdifFormat format = AdifFormat::Adi;
    QString preamble; ///< the free text an ADI header starts with
    QList<AdifField> header;
    bool headerEnded = false; ///< an <EOH> (or an ADX header) was seen
    QList<AdifRecord> records;
    QList<AdifProblem> problems; ///< the first kMaxProblems
    int problemCount = 0;        ///< all of them

    /// The value of a header field (upper-case name); empty when missing.
    QString headerValue(QStringView name) const;
    /// Nothing that looks like ADIF at all: no field, no header end.
    bool isEmpty() const { return records.isEmpty() && header.isEmpty() && !headerEnded; }
    void addProblem(AdifProblemKind kind, int line, const QString &detail = {});
};

/// A problem in English, for logs and the command line:
/// "line 12: the length of NAME is not a number".
QString problemText(const AdifProblem &problem);

/// A latitude or longitude in the log's "XDDD MM.MMM" form: N or S, E or W,
/// whole degrees (three digits), a blank, minutes with three decimals.
QString locationText(double degrees, bool latitude);

/// Reads a "XDDD MM.MMM" location; `latitude` says which letters are wanted.
/// Forgiving about case, the number of degree digits and a missing blank;
/// false for anything out of range or malformed.
bool readLocation(QStringView text, bool latitude, double &degrees);

/// The centre of a grid square of four or six characters (longer ones are
/// cut to six). False for anything else.
bool gridSquareCentre(QStringView text, maps::Position &position);

} // namespace marvik::logs
