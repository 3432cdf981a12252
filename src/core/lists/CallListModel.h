// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallRecord.h"
#include "core/maps/Geometry.h"

#include <QAbstractTableModel>
#include <QList>

#include <array>
#include <memory>

namespace marvik::lists {

class ThumbnailIndex;

/// The azimuth column of a row: empty when either coordinate is 0, else the
/// bearing from Me with "°".
QString azimuthOf(const maps::DistanceFromMe &fromMe, const CallRecord &row);

/// What the list loader needs besides the file.
struct LoadContext
{
    maps::Position me;  ///< for the azimuth column
    QString thumbsDir;  ///< Images/Thumbs of the data folder
    QString now;        ///< stamp for lines without one; empty: the time of loading
};

/// How a load went.
struct LoadReport
{
    bool opened = false; ///< false: the file could not be read, the list is unchanged
    int lines = 0;       ///< lines taken (the damaged one included)
    int badLine = 0;     ///< 1-based line with fewer than eleven fields; 0 when none
    QString errorString;
    bool complete() const { return opened && badLine == 0; }
};

/// The colour a cell carries, as a code: a row holds a byte, not a colour.
enum class CellMark : quint8 { None, Nickname, Paste, Blink };
QColor colourOf(CellMark mark);
/// The mark of a colour; other colours than the program's marks have none.
CellMark markOf(const QColor &colour);

/// One list entry as the model keeps it: the eleven fields as stretches of
/// one string, two cell marks and a thumbnail number. A row read from a
/// list file shares the file's decoded text with every other row of it and
/// holds only where its fields lie; an edited row has a string of its own.
/// Either way a row costs little more than its line in the file.
class StoredRow
{
public:
    /// The row of one line of `text`: field c runs from one past the end of
    /// field c - 1 (or from `start`) to `ends[c]`.
    static StoredRow inText(const QString &text, quint32 start, const std::array<quint32, kColumnCount> &ends);

    /// Not for the azimuth of a row whose azimuth is still to be worked out.
    QStringView field(Column column) const;
    QString fieldText(Column column) const { return field(column).toString(); }
    void setField(Column column, QStringView text);
    /// Sets the fields from the start of `fields`; the rest stay.
    void setFields(const QStringView *fields, int count, int from = 0);

    /// The azimuth is worked out from the row's position when first needed:
    /// a list of thousands is read without thousands of bearings, most of
    /// them never shown.
    void setAzimuthPending() { m_azimuth = kAzimuthPending; }
    bool azimuthPending() const { return m_azimuth == kAzimuthPending; }
    /// Works a pending azimuth out by the loader's rule.
    void resolveAzimuth(const maps::DistanceFromMe &fromMe);

    CellMark callsignMark = CellMark::None;
    CellMark firstNameMark = CellMark::None;
    qint32 thumbnail = -1; ///< a number of the thumbnail index; -1: none

private:
    /// Where the azimuth's text is: a number of degrees (0 to 359, the
    /// shared text of that bearing), or one of these.
    static constexpr qint16 kAzimuthInText = -1; ///< in the row's string, as any field
    static constexpr qint16 kAzimuthNone = -2;   ///< empty: the row has no position
    static constexpr qint16 kAzimuthPending = -3;

    QString m_text;
    quint32 m_start = 0;
    std::array<quint32, kColumnCount> m_end{};
    qint16 m_azimuth = kAzimuthInText;
};

/// The rows a list file gives, read on any thread.
struct ParsedList
{
    QList<StoredRow> rows;
    maps::Position me; ///< from where the rows' azimuths are to be worked out
    LoadReport report;
    std::shared_ptr<ThumbnailIndex> thumbnails;
    /// Fields the damaged last row took from its line (it stops the load).
    int partialFields = 0;
};

/// Reads a list file as the Windows program did: one row per line, the
/// eleven fields cut at "*", the callsign's slashed zeros made plain, a
/// missing time stamp filled with now, the nickname mark, the azimuth from
/// Me, the thumbnail by the callsign as the file has it. Stops at a line
/// with fewer than eleven fields, keeping what it read up to there. Touches
/// nothing but the file: safe on a worker thread.
ParsedList readListFile(const QString &path, const LoadContext &context);

/// One list of stations, shown by the list grid. Cell texts are the eleven
/// fields; the nickname highlight, the paste mark and the thumbnail are model
/// data too, so every view shows the same state.
class CallListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The thumbnail image of the first-name cell (a QImage, null when none).
    static constexpr int ThumbnailRole = Qt::UserRole + 1;
    /// The thumbnail's file path (a QString, empty when none).
    static constexpr int ThumbnailPathRole = Qt::UserRole + 2;
    /// The operator's full picture beside the thumbnail, drawn from when a
    /// screen wants more pixels than the thumbnail has (a QString path).
    static constexpr int PicturePathRole = Qt::UserRole + 3;
    /// A cell shows at most this many characters; the row keeps all.
    static constexpr int kShownCharacters = 1000;

    explicit CallListModel(QObject *parent = nullptr);
    ~CallListModel() override;

    using QAbstractTableModel::index;
    /// The cell of a row's field.
    QModelIndex index(int row, Column column) const { return index(row, int(column)); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /// The row as an editable record (its fields, cell colours, thumbnail).
    CallRecord record(int row) const;
    QString field(int row, Column column) const;
    /// The first row whose callsign is exactly `callsign` (case-sensitive), or -1.
    int findCallsign(const QString &callsign) const;

    void setRecords(const QList<CallRecord> &rows);
    void appendRecord(const CallRecord &record);
    void replaceRecord(int row, const CallRecord &record);
    void removeRecord(int row);
    void clear();
    void setField(int row, Column column, const QString &text);
    /// Colours the callsign or first-name cell; an invalid colour gives the grid's own.
    void setCellBackground(int row, Column column, const QColor &colour);
    QColor cellBackground(int row, Column column) const;
    void setThumbnail(int row, const QString &path);
    /// Every row's azimuth from a new own position, by the loader's rule.
    void recomputeAzimuths(const maps::Position &me);

    /// Takes the rows a reader gave. An empty file leaves the rows as they
    /// are; otherwise the file's rows replace them, and a damaged first line
    /// writes over the old first row only as far as it goes, as the Windows
    /// program's grid did.
    void adopt(ParsedList &&parsed);
    /// Reads a list file here and now (see readListFile()).
    LoadReport load(const QString &path, const LoadContext &context);

    /// The list file's text: one line per row, CR LF after each.
    QStringList lines() const;

    /// Sorts stably: ascending by callsign for selector 0, otherwise
    /// descending by the column the selector names. The selector 1 is turned
    /// into 9 (the time stamp column) and the caller sees it, on purpose: the
    /// program's sort mode is passed here and comes back as 9.
    void sortList(qint16 &selector);

private:
    StoredRow toStored(const CallRecord &record);
    void refreshRow(int row);
    /// Row `row` with its azimuth worked out, for reading.
    const StoredRow &at(int row) const;
    /// Row `row` with its azimuth worked out, for a change: the bearing is
    /// the one from the position the row had when it was read.
    StoredRow &changing(int row);

    /// Works every pending azimuth out, before the rows are read in bulk.
    void resolveAzimuths() const;

    /// Rows are changed in reading only to work their azimuths out.
    mutable QList<StoredRow> m_rows;
    maps::DistanceFromMe m_fromMe{maps::Position{}};
    std::shared_ptr<ThumbnailIndex> m_thumbnails;
};

} // namespace marvik::lists
