// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/AdifLog.h"
#include "core/maps/Geometry.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace marvik::lists {
class CallListModel;
}

namespace marvik::logs {

/// What an import needs besides the log and the list.
struct ImportContext
{
    maps::Position me;  ///< for the azimuth column
    QString thumbsDir;  ///< Images/Thumbs of the data folder: new rows get their thumbnail
    QDateTime now;      ///< the stamp of a call none of whose contacts has a date; invalid: the time of the import
};

/// Why a record of a log gave no row.
enum class SkipReason {
    NoCall,  ///< no CALL field, or an empty one
    BadCall, ///< a CALL a list cannot hold (a blank inside, "*", a control character)
};

/// One record that gave no row.
struct SkippedRecord
{
    int line = 0;
    SkipReason reason = SkipReason::NoCall;
    QString call; ///< the CALL as the log has it (for BadCall)
};

/// How an import went.
struct ImportSummary
{
    /// The most skipped records listed one by one; the rest are only counted.
    static constexpr int kMaxListed = 20;

    int records = 0;      ///< contacts read from the log
    int calls = 0;        ///< distinct callsigns among them
    int added = 0;        ///< new rows
    int alreadyThere = 0; ///< calls the list had already
    int filled = 0;       ///< of those, rows that gained a field they lacked
    int noCall = 0;
    int badCall = 0;
    QList<SkippedRecord> skippedRecords; ///< the first kMaxListed
    QList<AdifProblem> problems;         ///< where the file is malformed (from the reader)
    int problemCount = 0;

    int skipped() const { return noCall + badCall; }
    bool changed() const { return added > 0 || filled > 0; }
};

/// Merges the contacts of a log into a list: one row per distinct callsign
/// (exact and case-sensitive after the slashed zero became "0", the list's
/// own duplicate rule). The latest contact gives the time stamp, and each
/// field comes from the latest contact that has it. A call the list has
/// already keeps its row and only gains the fields it lacked. Neither sorts
/// nor saves.
ImportSummary importLog(const AdifLog &log, lists::CallListModel &model, const ImportContext &context);

/// Reads an ADIF file (.adi or .adx), merges it into `model`, sorts the list
/// with the program's sort mode (which the sort may turn from 1 into 9) and
/// saves it to `listPath` once. False, with the reason, when the log cannot
/// be read or holds no ADIF at all (the list is then untouched), or when the
/// list cannot be saved.
bool importAdifFile(const QString &adifPath, lists::CallListModel &model, const QString &listPath, qint16 &sortMode,
                    const ImportContext &context, ImportSummary &summary, QString *errorString = nullptr);

/// The one-line summary in English, as marvik-cli prints it.
QString summaryText(const ImportSummary &summary);

/// A contact's date and time as a list's time stamp: QSO_DATE (yyyymmdd)
/// and TIME_ON (hhmm or hhmmss) are UTC, a list's stamps are local time.
/// Invalid when the date is missing or malformed; a missing time is 00:00.
QDateTime contactTime(const QString &qsoDate, const QString &timeOn);

} // namespace marvik::logs
