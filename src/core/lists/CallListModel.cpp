// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/CallListModel.h"

#include "core/app/Callsign.h"
#include "core/app/Number.h"
#include "core/app/TextFile.h"
#include "core/lists/ListReaders.h"
#include "core/lists/Thumbnails.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <bit>
#include <list>
#include <utility>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#include <immintrin.h>
#define MARVIK_X86_VECTORS 1
#endif

namespace marvik::lists {

QString azimuthOf(const maps::DistanceFromMe &fromMe, const CallRecord &row)
{
    // Either coordinate 0 means the row has no position, and no bearing.
    const double lat = app::val(row[Column::Latitude]);
    const double lon = app::val(row[Column::Longitude]);
    if (lat == 0 || lon == 0)
        return {};
    return maps::azimuthText(fromMe.bearing(lat, lon).degrees);
}

namespace {

#ifdef MARVIK_X86_VECTORS
__attribute__((target("avx"))) void zeroUpperHalves()
{
    _mm256_zeroupper();
}
#endif

/// Qt 6.4's seeded string hash (behind every QHash with QString keys)
/// leaves the upper halves of the 256-bit registers in use on processors
/// with the wide AES instructions, and a thread inherits that state from
/// the one that started it. Until something clears it, every SSE
/// instruction of the thread pays for merging those halves: a list reads
/// three times slower, its azimuths ten times. Clearing costs next to
/// nothing, and nothing the reader calls per row sets them again (see
/// ThumbnailIndex).
void clearUpperHalves()
{
#ifdef MARVIK_X86_VECTORS
    if (__builtin_cpu_supports("avx"))
        zeroUpperHalves();
#endif
}

/// Cuts a list-file line at its first eleven "*"s into `fields`, with
/// where each ends in the file's text (`lineStart` plus its end in the
/// line); returns how many there are, at most eleven. Eight characters are
/// compared at once: a character at a time was the largest single cost of
/// reading a list.
int cutFields(QStringView line, quint32 lineStart, std::array<QStringView, kColumnCount> &fields,
              std::array<quint32, kColumnCount> &ends)
{
    const char16_t *c = line.utf16();
    const qsizetype size = line.size();
    int count = 0;
    qsizetype from = 0;
    const auto cutAt = [&](qsizetype i) {
        fields[std::size_t(count)] = line.sliced(from, i - from);
        ends[std::size_t(count)] = lineStart + quint32(i);
        ++count;
        from = i + 1;
    };
    qsizetype i = 0;
#ifdef __SSE2__
    const __m128i star = _mm_set1_epi16(u'*');
    for (; i + 8 <= size && count < kColumnCount; i += 8) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i *>(c + i));
        // Two bits for each "*", one for each of its bytes.
        unsigned stars = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi16(eight, star)));
        while (stars && count < kColumnCount) {
            cutAt(i + qsizetype(std::countr_zero(stars)) / 2);
            stars &= stars - 1;
            stars &= stars - 1;
        }
    }
#endif
    for (; i <= size && count < kColumnCount; ++i) {
        if (i == size || c[i] == u'*')
            cutAt(i);
    }
    return count;
}

// The picture beside a thumbnail: Images/<name>.jpg for Images/Thumbs/<name>.jpg.
QString pictureOf(const QString &thumbnail)
{
    const QFileInfo thumb(thumbnail);
    return QFileInfo(thumb.path()).path() + u'/' + thumb.fileName();
}

} // namespace

QColor colourOf(CellMark mark)
{
    switch (mark) {
    case CellMark::Nickname: return kNicknameColour;
    case CellMark::Paste: return kMarkColour;
    case CellMark::Blink: return kBlinkColour;
    case CellMark::None: break;
    }
    return {};
}

CellMark markOf(const QColor &colour)
{
    if (colour == kNicknameColour)
        return CellMark::Nickname;
    if (colour == kMarkColour)
        return CellMark::Paste;
    if (colour == kBlinkColour)
        return CellMark::Blink;
    return CellMark::None;
}

// ---------------------------------------------------------------- StoredRow

StoredRow StoredRow::inText(const QString &text, quint32 start, const std::array<quint32, kColumnCount> &ends)
{
    StoredRow row;
    row.m_text = text;
    row.m_start = start;
    row.m_end = ends;
    return row;
}

QStringView StoredRow::field(Column column) const
{
    if (column == Column::Azimuth && m_azimuth != kAzimuthInText) {
        Q_ASSERT(m_azimuth != kAzimuthPending);
        return maps::sharedAzimuthText(m_azimuth);
    }
    const int c = int(column);
    // Fields are kept apart by one character, the "*" of the file's line.
    const quint32 start = c == 0 ? m_start : m_end[std::size_t(c - 1)] + 1;
    return QStringView(m_text).sliced(start, m_end[std::size_t(c)] - start);
}

void StoredRow::resolveAzimuth(const maps::DistanceFromMe &fromMe)
{
    if (m_azimuth != kAzimuthPending)
        return;
    // Either coordinate 0 means the row has no position, and no bearing.
    const double lat = app::val(field(Column::Latitude));
    const double lon = app::val(field(Column::Longitude));
    if (lat == 0 || lon == 0) {
        m_azimuth = kAzimuthNone;
        return;
    }
    const int degrees = fromMe.bearing(lat, lon).degrees;
    if (!maps::sharedAzimuthText(degrees).isEmpty()) {
        m_azimuth = qint16(degrees);
        return;
    }
    m_azimuth = kAzimuthInText;
    setField(Column::Azimuth, maps::azimuthText(degrees));
}

void StoredRow::setField(Column column, QStringView text)
{
    setFields(&text, 1, int(column));
}

void StoredRow::setFields(const QStringView *fields, int count, int from)
{
    std::array<QStringView, kColumnCount> all;
    for (int c = 0; c < kColumnCount; ++c)
        all[std::size_t(c)] = c >= from && c < from + count ? fields[c - from] : field(Column(c));
    qsizetype size = kColumnCount - 1;
    for (const QStringView f : all)
        size += f.size();
    QString text;
    text.reserve(size);
    for (int c = 0; c < kColumnCount; ++c) {
        if (c)
            text += u'*';
        text += all[std::size_t(c)];
        m_end[std::size_t(c)] = quint32(text.size());
    }
    m_text = std::move(text);
    m_start = 0;
    m_azimuth = kAzimuthInText;
}

// ---------------------------------------------------------------- reading

ParsedList readListFile(const QString &path, const LoadContext &context)
{
    ParsedList parsed;
    parsed.me = context.me;
    LoadReport &report = parsed.report;
    app::TextFileContent content = app::readTextFile(path);
    if (!content.ok) {
        report.errorString = content.errorString;
        return parsed;
    }
    report.opened = true;
    // Every row of the file is a stretch of this one text. Slashed zeros in
    // callsigns are made plain in it before any row shares it.
    QString text = std::move(content.text);
    QChar *chars = text.data();
    const qsizetype n = text.size();
    const QString now = context.now.isEmpty() ? timeStamp(QDateTime::currentDateTime()) : context.now;
    // A row for every 64 characters: a guess, not a count, which would cost
    // a pass over the text of its own. Generous, as a list of full entries
    // runs to about a hundred characters a line: room never used is never
    // touched, while growing once copied every row read so far.
    parsed.rows.reserve(n / 64 + 1);

    std::array<QStringView, kColumnCount> fields;
    std::array<quint32, kColumnCount> ends{};
    // The thumbnail names of the rows, looked up together at the end: views
    // of the callsigns as the file has them, or of the few names that are
    // not the callsign itself (kept in `ownNames`, whose strings never move).
    std::vector<QStringView> thumbnailNames;
    thumbnailNames.reserve(std::size_t(parsed.rows.capacity()));
    std::list<QString> ownNames;
    // The next line ends, found a stretch at a time rather than a character
    // at a time, and never searched for twice.
    qsizetype nextCr = -1;
    qsizetype nextLf = -1;
    const auto next = [&](qsizetype &pos, char16_t c, qsizetype from) {
        if (pos < from && pos != n) {
            pos = QStringView(text).indexOf(c, from);
            if (pos < 0)
                pos = n;
        }
        return pos;
    };
    qsizetype start = 0;
    while (start < n) {
        const qsizetype end = std::min(next(nextCr, u'\r', start), next(nextLf, u'\n', start));
        const QStringView line = QStringView(text).sliced(start, end - start);
        const qsizetype lineStart = start;
        start = end;
        // CR LF, or a lone CR or LF, ends a line.
        if (start < n && chars[start] == u'\r')
            ++start;
        if (start < n && chars[start] == u'\n')
            ++start;

        ++report.lines;
        if (report.lines % 256 == 0)
            giveWayToTheWindow();
        // An empty line splits into no fields at all.
        const int count = line.isEmpty() ? 0 : cutFields(line, quint32(lineStart), fields, ends);

        if (count < kColumnCount) {
            // The damaged line stops the load; the fields it gave are kept.
            std::array<QStringView, kColumnCount> values{};
            const QString plainCall = count > 0 ? callsign::plainZero(fields[0].toString()) : QString();
            values[0] = plainCall;
            for (int c = 1; c < count && c <= int(Column::Longitude); ++c)
                values[std::size_t(c)] = fields[std::size_t(c)];
            if (count > int(Column::TimeStamp)) {
                const QStringView stamp = fields[int(Column::TimeStamp)];
                values[int(Column::TimeStamp)] = stamp.isEmpty() ? QStringView(now) : stamp;
            }
            StoredRow row;
            row.setFields(values.data(), kColumnCount);
            parsed.rows.append(std::move(row));
            parsed.partialFields = count;
            report.badLine = report.lines;
            break;
        }

        // The thumbnail goes by the callsign as the file has it, slashed zero and all.
        const QStringView fileCall = fields[0];
        const qsizetype slashed = fileCall.indexOf(QChar(callsign::kSlashedZero));
        if (slashed >= 0 || !callsign::isOwnFileName(fileCall)) {
            thumbnailNames.push_back(ownNames.emplace_back(callsign::fileName(fileCall.toString())));
            for (qsizetype i = fileCall.data() - chars + std::max<qsizetype>(slashed, 0);
                 i < fileCall.data() - chars + fileCall.size(); ++i) {
                if (chars[i] == QChar(callsign::kSlashedZero))
                    chars[i] = u'0';
            }
        } else {
            thumbnailNames.push_back(fileCall);
        }

        StoredRow row;
        if (fields[int(Column::TimeStamp)].isEmpty()) {
            // A line without a time stamp gets the time of loading: that row
            // has a string of its own.
            fields[int(Column::TimeStamp)] = now;
            row.setFields(fields.data(), kColumnCount);
        } else {
            row = StoredRow::inText(text, quint32(lineStart), ends);
        }
        row.setAzimuthPending();
        if (isNicknameAtLoad(fields[int(Column::FullName)], fields[int(Column::FirstName)]))
            row.firstNameMark = CellMark::Nickname;
        parsed.rows.append(std::move(row));
    }
    // The folder is listed once per run, by the first reader to get here:
    // after its rows, so that the other readers build theirs meanwhile.
    parsed.thumbnails = ThumbnailIndex::forFolder(context.thumbsDir);
    const QList<int> thumbnails = parsed.thumbnails->find(thumbnailNames);
    for (qsizetype r = 0; r < thumbnails.size(); ++r)
        parsed.rows[r].thumbnail = thumbnails[r];
    return parsed;
}

// ---------------------------------------------------------------- model

CallListModel::CallListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

CallListModel::~CallListModel() = default;

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
    const StoredRow &r = at(index.row());
    const auto column = Column(index.column());
    const CellMark mark = column == Column::Callsign    ? r.callsignMark
                          : column == Column::FirstName ? r.firstNameMark
                                                        : CellMark::None;
    switch (role) {
    case Qt::DisplayRole: {
        // A field of megabytes would be laid out at every paint; the cell
        // shows its start, the row keeps it whole.
        const QStringView text = r.field(column);
        if (text.size() <= kShownCharacters)
            return text.toString();
        return QString(text.left(kShownCharacters).toString() + QChar(0x2026));
    }
    case Qt::EditRole:
        return r.fieldText(column);
    case Qt::TextAlignmentRole:
        return column == Column::Azimuth ? int(Qt::AlignRight | Qt::AlignVCenter)
                                         : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::BackgroundRole:
        return mark == CellMark::None ? QVariant() : QVariant(colourOf(mark));
    case Qt::ForegroundRole:
        // The marks are light colours; their text stays dark on a dark theme.
        if (mark == CellMark::Nickname || mark == CellMark::Paste)
            return QColor(Qt::black);
        if (mark == CellMark::Blink)
            return QColor(Qt::white);
        return {};
    case ThumbnailPathRole:
        return column == Column::FirstName && m_thumbnails ? QVariant(m_thumbnails->path(r.thumbnail)) : QVariant();
    case PicturePathRole:
        if (column != Column::FirstName || !m_thumbnails || r.thumbnail < 0)
            return {};
        return pictureOf(m_thumbnails->path(r.thumbnail));
    case ThumbnailRole:
        if (column != Column::FirstName || !m_thumbnails || r.thumbnail < 0)
            return {};
        return thumbnailCache::image(m_thumbnails->path(r.thumbnail));
    default:
        return {};
    }
}

CallRecord CallListModel::record(int row) const
{
    CallRecord out;
    if (row < 0 || row >= m_rows.size())
        return out;
    const StoredRow &r = at(row);
    for (int c = 0; c < kColumnCount; ++c)
        out.fields[std::size_t(c)] = r.fieldText(Column(c));
    out.callsignBack = colourOf(r.callsignMark);
    out.firstNameBack = colourOf(r.firstNameMark);
    if (m_thumbnails)
        out.thumbnail = m_thumbnails->path(r.thumbnail);
    return out;
}

QString CallListModel::field(int row, Column column) const
{
    return row >= 0 && row < m_rows.size() ? at(row).fieldText(column) : QString();
}

const StoredRow &CallListModel::at(int row) const
{
    StoredRow &r = m_rows[row];
    if (r.azimuthPending())
        r.resolveAzimuth(m_fromMe);
    return r;
}

StoredRow &CallListModel::changing(int row)
{
    at(row);
    return m_rows[row];
}

void CallListModel::resolveAzimuths() const
{
    clearUpperHalves();
    for (StoredRow &r : m_rows)
        r.resolveAzimuth(m_fromMe);
}

int CallListModel::findCallsign(const QString &callsign) const
{
    const QList<StoredRow> &rows = m_rows;
    for (int i = 0; i < rows.size(); ++i) {
        if (rows[i].field(Column::Callsign) == callsign)
            return i;
    }
    return -1;
}

StoredRow CallListModel::toStored(const CallRecord &record)
{
    StoredRow row;
    std::array<QStringView, kColumnCount> values;
    for (int c = 0; c < kColumnCount; ++c)
        values[std::size_t(c)] = record.fields[std::size_t(c)];
    row.setFields(values.data(), kColumnCount);
    row.callsignMark = markOf(record.callsignBack);
    row.firstNameMark = markOf(record.firstNameBack);
    if (!record.thumbnail.isEmpty()) {
        if (!m_thumbnails)
            m_thumbnails = ThumbnailIndex::forFolder(QFileInfo(record.thumbnail).path());
        row.thumbnail = m_thumbnails->fromPath(record.thumbnail);
    }
    return row;
}

void CallListModel::setRecords(const QList<CallRecord> &rows)
{
    beginResetModel();
    m_rows.clear();
    m_rows.reserve(rows.size());
    for (const CallRecord &r : rows)
        m_rows.append(toStored(r));
    endResetModel();
}

void CallListModel::appendRecord(const CallRecord &record)
{
    const int row = int(m_rows.size());
    beginInsertRows({}, row, row);
    m_rows.append(toStored(record));
    endInsertRows();
}

void CallListModel::replaceRecord(int row, const CallRecord &record)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row] = toStored(record);
    if (!record.thumbnail.isEmpty())
        thumbnailCache::forget(record.thumbnail);
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
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

void CallListModel::setField(int row, Column column, const QString &text)
{
    if (row < 0 || row >= m_rows.size())
        return;
    changing(row).setField(column, text);
    emit dataChanged(index(row, column), index(row, column));
}

void CallListModel::setCellBackground(int row, Column column, const QColor &colour)
{
    if (row < 0 || row >= m_rows.size() || (column != Column::Callsign && column != Column::FirstName))
        return;
    (column == Column::Callsign ? m_rows[row].callsignMark : m_rows[row].firstNameMark) = markOf(colour);
    emit dataChanged(index(row, column), index(row, column), {Qt::BackgroundRole, Qt::ForegroundRole});
}

QColor CallListModel::cellBackground(int row, Column column) const
{
    if (row < 0 || row >= m_rows.size())
        return {};
    if (column == Column::Callsign)
        return colourOf(m_rows[row].callsignMark);
    if (column == Column::FirstName)
        return colourOf(m_rows[row].firstNameMark);
    return {};
}

void CallListModel::setThumbnail(int row, const QString &path)
{
    if (row < 0 || row >= m_rows.size())
        return;
    if (!m_thumbnails && !path.isEmpty())
        m_thumbnails = ThumbnailIndex::forFolder(QFileInfo(path).path());
    m_rows[row].thumbnail = m_thumbnails ? m_thumbnails->fromPath(path) : -1;
    // A new download replaces the files under the same name.
    if (!path.isEmpty()) {
        thumbnailCache::forget(path);
        thumbnailCache::forget(pictureOf(path));
    }
    emit dataChanged(index(row, Column::FirstName), index(row, Column::FirstName));
}

void CallListModel::recomputeAzimuths(const maps::Position &me)
{
    if (m_rows.isEmpty())
        return;
    // Worked out again from where each row stands now, when next needed.
    m_fromMe = maps::DistanceFromMe(me);
    for (StoredRow &row : m_rows)
        row.setAzimuthPending();
    emit dataChanged(index(0, Column::Azimuth), index(int(m_rows.size()) - 1, Column::Azimuth), {Qt::DisplayRole});
}

void CallListModel::refreshRow(int row)
{
    emit dataChanged(index(row, 0), index(row, kColumnCount - 1));
}

void CallListModel::adopt(ParsedList &&parsed)
{
    if (!parsed.report.opened || parsed.rows.isEmpty())
        return; // an unreadable or empty file leaves the grid as it was
    beginResetModel();
    if (parsed.thumbnails)
        m_thumbnails = parsed.thumbnails;
    if (parsed.report.badLine == 1 && !m_rows.isEmpty()) {
        // The grid kept its first row when the file's first line was too
        // short: the line wrote only the cells it had.
        // The old row's bearing is the one from where Me stood before.
        StoredRow merged = at(0);
        const StoredRow &line = parsed.rows.first();
        const int count = parsed.partialFields;
        for (int c = 0; c < std::min(count, int(Column::TimeStamp)); ++c)
            merged.setField(Column(c), line.field(Column(c)));
        if (count > int(Column::TimeStamp))
            merged.setField(Column::TimeStamp, line.field(Column::TimeStamp));
        parsed.rows.first() = merged;
    }
    m_rows = std::move(parsed.rows);
    m_fromMe = maps::DistanceFromMe(parsed.me);
    endResetModel();
}

LoadReport CallListModel::load(const QString &path, const LoadContext &context)
{
    ParsedList parsed = readListFile(path, context);
    const LoadReport report = parsed.report;
    adopt(std::move(parsed));
    return report;
}

QStringList CallListModel::lines() const
{
    resolveAzimuths();
    QStringList out;
    out.reserve(m_rows.size());
    for (const StoredRow &r : m_rows) {
        QString line;
        line.reserve(r.field(Column::Extra).size() + 200);
        for (int c = 0; c < kColumnCount; ++c) {
            if (c)
                line += u'*';
            line += r.field(Column(c));
        }
        out.append(line);
    }
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
    if (column == int(Column::Azimuth))
        resolveAzimuths();
    // Sort row numbers, not rows, so selections and the current row follow
    // their entries through the sort.
    std::vector<int> order(std::size_t(m_rows.size()));
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = int(i);
    const auto key = [this, column](int row) { return m_rows[row].field(Column(column)); };
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
    QList<StoredRow> sorted;
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
