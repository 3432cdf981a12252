// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/CallListModel.h"

#include "core/app/Callsign.h"
#include "core/app/Number.h"
#include "core/app/TextFile.h"
#include "core/app/DataFolder.h"

#include <QDateTime>
#include <QDir>
#include <QImageReader>
#include <QSet>

#include <algorithm>
#include <vector>

namespace marvik::lists {

namespace {

QImage readThumbnail(const QString &path)
{
    // Thumbnails are bitmaps behind a ".jpg" name; trust the content.
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    return reader.read();
}

} // namespace

QString azimuthOf(const maps::DistanceFromMe &fromMe, const CallRecord &row)
{
    // Either coordinate 0 means the row has no position, and no bearing.
    const double lat = app::val(row[Column::Latitude]);
    const double lon = app::val(row[Column::Longitude]);
    if (lat == 0 || lon == 0)
        return {};
    return maps::azimuthText(fromMe.bearing(lat, lon).degrees);
}

CallListModel::CallListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

int CallListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int CallListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant CallListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size() || index.column() >= kColumnCount)
        return {};
    const CallRecord &r = m_rows.at(index.row());
    const auto column = Column(index.column());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return r[column];
    case Qt::TextAlignmentRole:
        return column == Column::Azimuth ? int(Qt::AlignRight | Qt::AlignVCenter) : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::BackgroundRole:
        if (column == Column::Callsign && r.callsignBack.isValid())
            return r.callsignBack;
        if (column == Column::FirstName && r.firstNameBack.isValid())
            return r.firstNameBack;
        return {};
    case Qt::ForegroundRole: {
        // The cell colours (paste mark, nickname, blink) are light or strong
        // on every theme; a dark theme's light text would vanish on them.
        const QColor back = column == Column::Callsign ? r.callsignBack
            : column == Column::FirstName              ? r.firstNameBack
                                                       : QColor();
        return back.isValid() ? QVariant(QColor(Qt::black)) : QVariant();
    }
    case ThumbnailPathRole:
        return column == Column::FirstName ? QVariant(r.thumbnail) : QVariant();
    case ThumbnailRole: {
        if (column != Column::FirstName || r.thumbnail.isEmpty())
            return {};
        auto it = m_thumbnailCache.find(r.thumbnail);
        if (it == m_thumbnailCache.end())
            it = m_thumbnailCache.insert(r.thumbnail, readThumbnail(r.thumbnail));
        return *it;
    }
    default:
        return {};
    }
}

int CallListModel::findCallsign(const QString &callsign) const
{
    for (int i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i][Column::Callsign] == callsign)
            return i;
    }
    return -1;
}

void CallListModel::setRecords(QList<CallRecord> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    m_thumbnailCache.clear();
    endResetModel();
}

void CallListModel::appendRecord(const CallRecord &record)
{
    const int row = int(m_rows.size());
    beginInsertRows({}, row, row);
    m_rows.append(record);
    endInsertRows();
}

void CallListModel::replaceRecord(int row, const CallRecord &record)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row] = record;
    m_thumbnailCache.remove(record.thumbnail);
    refreshRow(row);
}

void CallListModel::removeRecord(int row)
{
    if (row < 0 || row >= m_rows.size())
        return;
    beginRemoveRows({}, row, row);
    m_rows.removeAt(row);
    endRemoveRows();
}

void CallListModel::clear()
{
    setRecords({});
}

void CallListModel::setField(int row, Column column, const QString &text)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row][column] = text;
    emit dataChanged(index(row, column), index(row, column));
}

void CallListModel::setCellBackground(int row, Column column, const QColor &colour)
{
    if (row < 0 || row >= m_rows.size())
        return;
    (column == Column::Callsign ? m_rows[row].callsignBack : m_rows[row].firstNameBack) = colour;
    emit dataChanged(index(row, column), index(row, column), {Qt::BackgroundRole});
}

void CallListModel::setThumbnail(int row, const QString &path)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row].thumbnail = path;
    // A new download replaces the file under the same name.
    m_thumbnailCache.remove(path);
    emit dataChanged(index(row, Column::FirstName), index(row, Column::FirstName));
}

void CallListModel::recomputeAzimuths(const maps::Position &me)
{
    if (m_rows.isEmpty())
        return;
    const maps::DistanceFromMe fromMe(me);
    for (CallRecord &row : m_rows)
        row[Column::Azimuth] = azimuthOf(fromMe, row);
    emit dataChanged(index(0, Column::Azimuth), index(int(m_rows.size()) - 1, Column::Azimuth), {Qt::DisplayRole});
}

void CallListModel::refreshRow(int row)
{
    emit dataChanged(index(row, 0), index(row, kColumnCount - 1));
}

LoadReport CallListModel::load(const QString &path, const LoadContext &context)
{
    LoadReport report;
    const app::TextFileContent content = app::readTextFile(path);
    if (!content.ok) {
        report.errorString = content.errorString;
        return report;
    }
    report.opened = true;
    const QStringList lines = app::splitLines(content.text);
    if (lines.isEmpty())
        return report; // an empty file leaves the grid as it was

    // One listing of the thumbnail folder instead of a look-up per row; the
    // set holds the names less their ".jpg".
    QSet<QString> thumbs;
    if (!context.thumbsDir.isEmpty()) {
        const QStringList names =
            QDir(context.thumbsDir).entryList({QStringLiteral("*.jpg")}, QDir::Files | QDir::Hidden);
        for (const QString &name : names)
            thumbs.insert(name.chopped(4));
    }
    const QString now = context.now.isEmpty() ? timeStamp(QDateTime::currentDateTime()) : context.now;
    const QString thumbsPrefix = context.thumbsDir + u'/';
    const maps::DistanceFromMe fromMe(context.me);

    beginResetModel();
    m_thumbnailCache.clear();
    // The first line sets the row count to 1: the first row is written over,
    // every other old row goes.
    m_rows.resize(1);
    m_rows.reserve(lines.size());
    for (int r = 0; r < lines.size(); ++r) {
        if (r > 0)
            m_rows.append(CallRecord{});
        CallRecord &row = m_rows[r];
        const QString &line = lines[r];
        ++report.lines;
        // An empty line splits into no fields at all.
        const QList<QStringView> fields = line.isEmpty() ? QList<QStringView>() : QStringView(line).split(u'*');
        const int n = int(fields.size());
        if (n > 0)
            row[Column::Callsign] = callsign::plainZero(fields[0].toString());
        for (int c = 1; c <= int(Column::Longitude) && c < n; ++c)
            row.fields[std::size_t(c)] = fields[c].toString();
        if (n > int(Column::TimeStamp))
            row[Column::TimeStamp] = fields[int(Column::TimeStamp)].isEmpty() ? now : fields[int(Column::TimeStamp)].toString();
        if (n > int(Column::Extra))
            row[Column::Extra] = fields[int(Column::Extra)].toString();
        if (n < kColumnCount) {
            report.badLine = r + 1;
            break;
        }

        row.callsignBack = QColor();
        row.firstNameBack = isNicknameAtLoad(row[Column::FullName], row[Column::FirstName]) ? kNicknameColour : QColor();

        row[Column::Azimuth] = azimuthOf(fromMe, row);

        // The thumbnail goes by the callsign as the file has it, slashed zero and all.
        row.thumbnail.clear();
        if (!thumbs.isEmpty()) {
            const QString thumbName = callsign::fileName(fields[0].toString());
            if (thumbs.contains(thumbName))
                row.thumbnail = thumbsPrefix + thumbName + QStringLiteral(".jpg");
        }
    }
    endResetModel();
    return report;
}

QStringList CallListModel::lines() const
{
    QStringList out;
    out.reserve(m_rows.size());
    for (const CallRecord &r : m_rows)
        out.append(r.toLine());
    return out;
}

void CallListModel::sortList(qint16 &selector)
{
    if (m_rows.isEmpty())
        return;
    if (selector == 1)
        selector = 9;
    const int column = selector;
    if (column < 0 || column >= kColumnCount)
        return;
    // Sort row numbers, not rows, so selections and the current row follow
    // their entries through the sort.
    std::vector<int> order(std::size_t(m_rows.size()));
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = int(i);
    const auto key = [this, column](int row) { return QStringView(m_rows[row].fields[std::size_t(column)]); };
    const auto before = [&](int a, int b) {
        const int c = key(a).compare(key(b));
        return column == int(Column::Callsign) ? c < 0 : c > 0;
    };
    // A list comes back from its file in the order it was saved in, which is
    // nearly always sorted already: then there is nothing to move.
    if (std::is_sorted(order.begin(), order.end(), before))
        return;
    std::stable_sort(order.begin(), order.end(), before);

    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    QList<CallRecord> sorted;
    sorted.reserve(m_rows.size());
    std::vector<int> newRowOf(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        sorted.append(std::move(m_rows[order[i]]));
        newRowOf[std::size_t(order[i])] = int(i);
    }
    m_rows = std::move(sorted);
    const QModelIndexList from = persistentIndexList();
    QModelIndexList to;
    to.reserve(from.size());
    for (const QModelIndex &i : from)
        to.append(index(newRowOf[std::size_t(i.row())], i.column()));
    changePersistentIndexList(from, to);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

} // namespace marvik::lists
