// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/AdifImport.h"

#include "core/app/Callsign.h"
#include "core/app/Number.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/logs/AdifExport.h"
#include "core/logs/AdifReader.h"

#include <QDir>
#include <QHash>
#include <QSet>

#include <array>
#include <cmath>
#include <limits>

namespace marvik::logs {

using lists::CallRecord;
using lists::Column;

namespace {

/// Half a thousandth of a minute: how far LAT and LON may lie from the
/// exact figures Marvik wrote beside them and still be the same place.
constexpr double kLocationSlack = 0.5 / 60000 + 1e-9;

/// Which contact is newer: a dated one beats an undated one, a later time
/// an earlier one, and between equals the one further down the file.
struct Rank
{
    qint64 time = std::numeric_limits<qint64>::min();
    int order = -1;
    bool operator<(const Rank &o) const { return time != o.time ? time < o.time : order < o.order; }
};

/// A field of a call together with the contact it came from.
struct Slot
{
    QString value;
    Rank rank;
    bool present = false; ///< some contact gave the field, if only empty

    void offer(const QString &v, const Rank &r)
    {
        if (!v.isEmpty())
            offerEvenEmpty(v, r);
    }
    void offerEvenEmpty(const QString &v, const Rank &r)
    {
        if (rank < r) {
            value = v;
            rank = r;
            present = true;
        }
    }
};

struct PositionSlot
{
    QString latitude;
    QString longitude;
    Rank rank;
    bool set = false;
};

/// Everything the contacts of one call tell.
struct Station
{
    QString call;
    Rank latest;
    QDateTime when; ///< of the latest dated contact, UTC
    Slot fullName;
    Slot firstName;
    Slot address;
    Slot city;
    Slot country;
    Slot extra;
    PositionSlot position;
};

/// A value as a list field can hold it: the lines of a multi-line value
/// joined by ", ", and no "*" (the list file's separator) or control
/// character left.
QString listText(QString value)
{
    const auto unfit = [](QChar c) { return c == u'*' || c.unicode() < 0x20 || c.unicode() == 0x7F; };
    // Nearly every value is fine as it is: look before writing, which would copy it.
    if (std::none_of(value.cbegin(), value.cend(), unfit))
        return value.trimmed();
    for (QChar &c : value) {
        if (unfit(c) && c != u'\r' && c != u'\n')
            c = u' ';
    }
    if (!value.contains(u'\n') && !value.contains(u'\r'))
        return value.trimmed();
    value.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    QStringList parts;
    for (const QStringView line : QStringView(value).tokenize(u'\n')) {
        const QString part = line.trimmed().toString();
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts.join(QStringLiteral(", "));
}

/// The fields of a record the import reads.
enum Field {
    Call,
    QsoDate,
    TimeOn,
    Name,
    NameIntl,
    Address,
    AddressIntl,
    Qth,
    QthIntl,
    Country,
    CountryIntl,
    Lat,
    Lon,
    GridSquare,
    AppFirstName,
    AppLatitude,
    AppLongitude,
    AppExtra,
    FieldCount
};

/// A record's fields that matter here, found in one pass over it (a big
/// log has a million fields; a search per name would visit each a dozen
/// times). The first of a name wins, as AdifRecord::value() has it.
class Picked
{
public:
    explicit Picked(const AdifRecord &r)
    {
        // Compared by length first: most fields of a log (FREQ, RST_SENT
        // ...) are not wanted and fall out on their length or first letter.
        static const std::array<QStringView, FieldCount> wanted = {
            u"CALL", u"QSO_DATE", u"TIME_ON", u"NAME", u"NAME_INTL", u"ADDRESS", u"ADDRESS_INTL",
            u"QTH", u"QTH_INTL", u"COUNTRY", u"COUNTRY_INTL", u"LAT", u"LON", u"GRIDSQUARE",
            kAppFirstName, kAppLatitude, kAppLongitude, kAppExtra,
        };
        for (const AdifField &f : r.fields) {
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                const QStringView w = wanted[i];
                if (w.size() == f.name.size() && w.front() == f.name.front() && w == f.name) {
                    if (!m_values[i])
                        m_values[i] = &f.value;
                    break;
                }
            }
        }
    }

    const QString &operator[](Field f) const
    {
        static const QString none;
        const QString *v = m_values[std::size_t(f)];
        return v ? *v : none;
    }
    bool has(Field f) const { return m_values[std::size_t(f)] != nullptr; }

private:
    std::array<const QString *, FieldCount> m_values{};
};

/// The Unicode field when the log has one (ADX writes both), else the plain one.
QString textOf(const Picked &r, Field name, Field intlName)
{
    const QString intl = listText(r[intlName]);
    return intl.isEmpty() ? listText(r[name]) : intl;
}

bool isCallsign(const QString &call)
{
    return std::none_of(call.begin(), call.end(),
                        [](QChar c) { return c.isSpace() || c == u'*' || c.unicode() < 0x20 || c.unicode() == 0x7F; });
}

/// Marvik's exact figure when it still names the place LAT or LON give.
QString exactFigure(const Picked &r, Field name, double degrees)
{
    const QString text = r[name].trimmed();
    const bool plain = !text.isEmpty() && text.count(u'.') <= 1
        && std::all_of(text.begin(), text.end(), [](QChar c) { return (c >= u'0' && c <= u'9') || c == u'.' || c == u'-'; })
        && text.lastIndexOf(u'-') <= 0;
    if (!plain)
        return app::shortestDecimal(degrees);
    const double exact = app::val(text);
    return std::fabs(exact - degrees) <= kLocationSlack ? text : app::shortestDecimal(degrees);
}

bool positionOf(const Picked &r, QString &latitude, QString &longitude)
{
    double lat = 0;
    double lon = 0;
    if (readLocation(r[Lat], true, lat) && readLocation(r[Lon], false, lon)) {
        latitude = exactFigure(r, AppLatitude, lat);
        longitude = exactFigure(r, AppLongitude, lon);
        return true;
    }
    maps::Position p;
    if (gridSquareCentre(r[GridSquare], p)) {
        latitude = app::shortestDecimal(p.latitude);
        longitude = app::shortestDecimal(p.longitude);
        return true;
    }
    return false;
}

bool hasPosition(const CallRecord &row)
{
    return app::val(row[Column::Latitude]) != 0 && app::val(row[Column::Longitude]) != 0;
}

QString azimuthOf(const CallRecord &row, const maps::DistanceFromMe &fromMe)
{
    if (!hasPosition(row))
        return {};
    return maps::azimuthText(fromMe.bearing(app::val(row[Column::Latitude]), app::val(row[Column::Longitude])).degrees);
}

void fillIfEmpty(CallRecord &row, Column column, const QString &value, bool &changed)
{
    if (row[column].isEmpty() && !value.isEmpty()) {
        row[column] = value;
        changed = true;
    }
}

} // namespace

QDateTime contactTime(const QString &qsoDate, const QString &timeOn)
{
    // By hand rather than QDate::fromString(): a big log has tens of
    // thousands of these, and the format parser costs microseconds each.
    const auto number = [](QStringView digits, int &value) {
        value = 0;
        for (const QChar c : digits) {
            if (c < u'0' || c > u'9')
                return false;
            value = value * 10 + (c.unicode() - '0');
        }
        return true;
    };
    const QStringView date = QStringView(qsoDate).trimmed();
    int year = 0;
    int month = 0;
    int day = 0;
    if (date.size() != 8 || !number(date.left(4), year) || !number(date.mid(4, 2), month)
        || !number(date.mid(6, 2), day) || !QDate::isValid(year, month, day))
        return {};
    const QStringView time = QStringView(timeOn).trimmed();
    int hour = 0;
    int minute = 0;
    int second = 0;
    if ((time.size() == 4 || time.size() == 6) && number(time.left(2), hour) && number(time.mid(2, 2), minute)
        && (time.size() == 4 || number(time.mid(4, 2), second)) && QTime::isValid(hour, minute, second)) {
        return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
    }
    return QDateTime(QDate(year, month, day), QTime(0, 0), Qt::UTC);
}

ImportSummary importLog(const AdifLog &log, lists::CallListModel &model, const ImportContext &context)
{
    ImportSummary summary;
    summary.records = int(log.records.size());
    summary.problems = log.problems;
    summary.problemCount = log.problemCount;

    const auto skip = [&](int line, SkipReason reason, const QString &call) {
        (reason == SkipReason::NoCall ? summary.noCall : summary.badCall)++;
        if (summary.skippedRecords.size() < ImportSummary::kMaxListed)
            summary.skippedRecords.append({line, reason, call});
    };

    // Gather each call's contacts; the stations keep the order in which the
    // log names them first.
    QList<Station> stations;
    QHash<QString, qsizetype> stationOf;
    stationOf.reserve(log.records.size());
    for (int i = 0; i < log.records.size(); ++i) {
        const Picked r(log.records[i]);
        const int line = log.records[i].line;
        const QString &written = r[Call];
        const QString call = callsign::plainZero(written.trimmed());
        if (call.isEmpty()) {
            skip(line, SkipReason::NoCall, written);
            continue;
        }
        if (!isCallsign(call)) {
            skip(line, SkipReason::BadCall, written);
            continue;
        }
        auto it = stationOf.constFind(call);
        if (it == stationOf.constEnd()) {
            it = stationOf.insert(call, stations.size());
            stations.append(Station{});
            stations.last().call = call;
        }
        Station &s = stations[*it];
        const QDateTime when = contactTime(r[QsoDate], r[TimeOn]);
        const Rank rank{when.isValid() ? when.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min(), i};
        if (s.latest < rank) {
            s.latest = rank;
            if (when.isValid())
                s.when = when;
        }
        s.fullName.offer(textOf(r, Name, NameIntl), rank);
        // Marvik writes its first-name field even empty: an empty first name
        // beside a full name is part of the row.
        if (r.has(AppFirstName))
            s.firstName.offerEvenEmpty(listText(r[AppFirstName]), rank);
        s.address.offer(textOf(r, Address, AddressIntl), rank);
        s.city.offer(textOf(r, Qth, QthIntl), rank);
        s.country.offer(textOf(r, Country, CountryIntl), rank);
        s.extra.offer(listText(r[AppExtra]), rank);
        QString lat;
        QString lon;
        if (s.position.rank < rank && positionOf(r, lat, lon))
            s.position = {lat, lon, rank, true};
    }
    summary.calls = int(stations.size());

    QHash<QString, int> rowOf;
    rowOf.reserve(model.rowCount());
    // Backwards, so the first row of a call that stands twice wins, as a search finds it.
    for (int row = model.rowCount() - 1; row >= 0; --row)
        rowOf[model.record(row)[Column::Callsign]] = row;

    // One listing of the thumbnail folder, as the list loader does.
    QSet<QString> thumbs;
    if (!context.thumbsDir.isEmpty()) {
        const QStringList names =
            QDir(context.thumbsDir).entryList({QStringLiteral("*.jpg")}, QDir::Files | QDir::Hidden);
        for (const QString &name : names)
            thumbs.insert(name.chopped(4));
    }
    const maps::DistanceFromMe fromMe(context.me);
    const QString undated =
        lists::timeStamp(context.now.isValid() ? context.now.toLocalTime() : QDateTime::currentDateTime());

    for (const Station &s : std::as_const(stations)) {
        const auto existing = rowOf.constFind(s.call);
        if (existing != rowOf.constEnd()) {
            ++summary.alreadyThere;
            CallRecord row = model.record(*existing);
            bool changed = false;
            fillIfEmpty(row, Column::FullName, s.fullName.value, changed);
            fillIfEmpty(row, Column::FirstName,
                        s.firstName.present ? s.firstName.value : lists::firstWord(row[Column::FullName]), changed);
            fillIfEmpty(row, Column::Address, s.address.value, changed);
            fillIfEmpty(row, Column::City, s.city.value, changed);
            fillIfEmpty(row, Column::Country, s.country.value, changed);
            fillIfEmpty(row, Column::Extra, s.extra.value, changed);
            if (s.when.isValid())
                fillIfEmpty(row, Column::TimeStamp, lists::timeStamp(s.when.toLocalTime()), changed);
            if (!hasPosition(row) && s.position.set) {
                row[Column::Latitude] = s.position.latitude;
                row[Column::Longitude] = s.position.longitude;
                row[Column::Azimuth] = azimuthOf(row, fromMe);
                changed = true;
            }
            if (changed) {
                ++summary.filled;
                row.firstNameBack = lists::isNicknameAtLoad(row[Column::FullName], row[Column::FirstName])
                    ? lists::kNicknameColour
                    : QColor();
                model.replaceRecord(*existing, row);
            }
            continue;
        }

        CallRecord row;
        row[Column::Callsign] = s.call;
        row[Column::FullName] = s.fullName.value;
        row[Column::FirstName] = s.firstName.present ? s.firstName.value : lists::firstWord(s.fullName.value);
        row[Column::Address] = s.address.value;
        row[Column::City] = s.city.value;
        row[Column::Country] = s.country.value;
        if (s.position.set) {
            row[Column::Latitude] = s.position.latitude;
            row[Column::Longitude] = s.position.longitude;
            row[Column::Azimuth] = azimuthOf(row, fromMe);
        }
        row[Column::TimeStamp] = s.when.isValid() ? lists::timeStamp(s.when.toLocalTime()) : undated;
        row[Column::Extra] = s.extra.value;
        row.firstNameBack = lists::isNicknameAtLoad(row[Column::FullName], row[Column::FirstName])
            ? lists::kNicknameColour
            : QColor();
        const QString thumbName = callsign::fileName(s.call);
        if (thumbs.contains(thumbName))
            row.thumbnail = QDir(context.thumbsDir).filePath(thumbName + QStringLiteral(".jpg"));
        model.appendRecord(row);
        ++summary.added;
    }
    return summary;
}

bool importAdifFile(const QString &adifPath, lists::CallListModel &model, const QString &listPath, qint16 &sortMode,
                    const ImportContext &context, ImportSummary &summary, QString *errorString)
{
    AdifLog log;
    QString why;
    if (!readAdifFile(adifPath, log, &why)) {
        if (errorString)
            *errorString = why;
        return false;
    }
    if (log.isEmpty()) {
        if (errorString) {
            *errorString = log.problems.isEmpty() ? QStringLiteral("no ADIF data in the file")
                                                  : problemText(log.problems.first());
        }
        return false;
    }
    summary = importLog(log, model, context);
    model.sortList(sortMode);
    return lists::saveList(model, listPath, errorString);
}

QString summaryText(const ImportSummary &s)
{
    QString text = QStringLiteral("%1 contacts: %2 added, %3 already in the list").arg(s.records).arg(s.added).arg(s.alreadyThere);
    if (s.alreadyThere > 0)
        text += QStringLiteral(" (%1 gained fields)").arg(s.filled);
    text += QStringLiteral(", %1 skipped").arg(s.skipped());
    QStringList why;
    if (s.noCall > 0)
        why << QStringLiteral("%1 without a call").arg(s.noCall);
    if (s.badCall > 0)
        why << QStringLiteral("%1 not a callsign").arg(s.badCall);
    if (!why.isEmpty())
        text += QStringLiteral(" (") + why.join(QStringLiteral(", ")) + u')';
    if (s.problemCount > 0)
        text += QStringLiteral("; %1 problems in the file").arg(s.problemCount);
    return text;
}

} // namespace marvik::logs
