// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallRecord.h"
#include "core/maps/Geometry.h"

#include <QAbstractTableModel>
#include <QImage>
#include <QHash>
#include <QList>


namespace marvik::lists {

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

    explicit CallListModel(QObject *parent = nullptr);

    using QAbstractTableModel::index;
    /// The cell of a row's field.
    QModelIndex index(int row, Column column) const { return index(row, int(column)); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    const CallRecord &record(int row) const { return m_rows.at(row); }
    const QList<CallRecord> &records() const { return m_rows; }
    /// The first row whose callsign is exactly `callsign` (case-sensitive), or -1.
    int findCallsign(const QString &callsign) const;

    void setRecords(QList<CallRecord> rows);
    void appendRecord(const CallRecord &record);
    void replaceRecord(int row, const CallRecord &record);
    void removeRecord(int row);
    void clear();
    void setField(int row, Column column, const QString &text);
    /// Colours the callsign or first-name cell; an invalid colour gives the grid's own.
    void setCellBackground(int row, Column column, const QColor &colour);
    void setThumbnail(int row, const QString &path);
    /// Every row's azimuth from a new own position, by the loader's rule.
    void recomputeAzimuths(const maps::Position &me);

    /// Reads a list file as the Windows program did (see ListFile.h for the
    /// rules). Stops at a line with fewer than eleven fields, keeping what
    /// was read up to there.
    LoadReport load(const QString &path, const LoadContext &context);

    /// The list file's text: one line per row, CR LF after each.
    QStringList lines() const;

    /// Sorts stably: ascending by callsign for selector 0, otherwise
    /// descending by the column the selector names. The selector 1 is turned
    /// into 9 (the time stamp column) and the caller sees it, on purpose: the
    /// program's sort mode is passed here and comes back as 9.
    void sortList(qint16 &selector);

private:
    void refreshRow(int row);

    QList<CallRecord> m_rows;
    mutable QHash<QString, QImage> m_thumbnailCache;
};

} // namespace marvik::lists
