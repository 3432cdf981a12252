// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CliCommands.h"

#include "cli/AdifCommands.h"
#include "cli/LookupCommands.h"
#include "cli/ShareCommands.h"

#include "core/maps/Geometry.h"
#include "core/maps/Projection.h"

#include <QHash>

#include <functional>
#include <optional>

namespace marvik::cli {

namespace {

struct Command
{
    int arguments; ///< how many arguments follow the command's name; -1: the command checks them
    QString usage;
    std::function<int(const QStringList &, const QString &, QTextStream &, QTextStream &)> run;
};

/// A coordinate given on the command line: a plain decimal number, with a
/// decimal comma taken as a point. Anything else is a bad argument.
std::optional<double> coordinate(QString text)
{
    text.replace(u',', u'.');
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

QString number(double value)
{
    return QString::number(value, 'g', 15);
}

int distance(const QStringList &a, const QString &, QTextStream &out, QTextStream &err)
{
    std::optional<double> v[4];
    for (int i = 0; i < 4; ++i) {
        v[i] = coordinate(a[i]);
        if (!v[i]) {
            err << "marvik-cli: not a number: " << a[i] << '\n';
            return BadArguments;
        }
    }
    const maps::Bearing b = maps::bearingFrom({*v[0], *v[1]}, *v[2], *v[3]);
    out << b.miles << ' ' << b.degrees << '\n';
    return Success;
}

int locator(const QStringList &a, const QString &, QTextStream &out, QTextStream &err)
{
    const auto lat = coordinate(a[0]);
    const auto lon = coordinate(a[1]);
    if (!lat || !lon) {
        err << "marvik-cli: not a number: " << (lat ? a[1] : a[0]) << '\n';
        return BadArguments;
    }
    const QString text = maps::toLocator(*lat, *lon);
    if (text.isEmpty()) {
        err << "marvik-cli: position outside -90..90, -180..180\n";
        return WorkFailed;
    }
    out << text << '\n';
    return Success;
}

int position(const QStringList &a, const QString &, QTextStream &out, QTextStream &err)
{
    maps::Position p;
    if (!maps::fromLocator(a[0], p)) {
        err << "marvik-cli: not a six-character locator: " << a[0] << '\n';
        return WorkFailed;
    }
    out << number(p.latitude) << ' ' << number(p.longitude) << '\n';
    return Success;
}

int project(const QStringList &a, const QString &, QTextStream &out, QTextStream &err)
{
    const auto lat = coordinate(a[1]);
    auto lon = coordinate(a[2]);
    if (!lat || !lon) {
        err << "marvik-cli: not a number: " << (lat ? a[2] : a[1]) << '\n';
        return BadArguments;
    }
    qint32 x = 0;
    qint32 y = 0;
    switch (maps::projectToMap(a[0], *lat, *lon, x, y)) {
    case maps::ProjectionStatus::Projected:
        out << x << ' ' << y << '\n';
        return Success;
    case maps::ProjectionStatus::NoProjection:
        out << "none\n";
        return Success;
    case maps::ProjectionStatus::Failed:
        break;
    }
    err << "marvik-cli: " << a[0] << " has no pixel for " << a[1] << ", " << a[2] << '\n';
    return WorkFailed;
}

const QHash<QString, Command> &commands()
{
    static const QHash<QString, Command> table = {
        {QStringLiteral("distance"), {4, QStringLiteral("distance ME_LAT ME_LON LAT LON"), distance}},
        {QStringLiteral("locator"), {2, QStringLiteral("locator LAT LON"), locator}},
        {QStringLiteral("position"), {1, QStringLiteral("position LOCATOR"), position}},
        {QStringLiteral("project"), {3, QStringLiteral("project MAP LAT LON"), project}},
        {QStringLiteral("html2text"), {1, QStringLiteral("html2text FILE"), html2text}},
        {QStringLiteral("read"), {3, QStringLiteral("read SOURCE CALLSIGN FILE"), readPage}},
        {QStringLiteral("lookup"), {-1, QStringLiteral("lookup [--source SOURCE] CALLSIGN"), lookup}},
        {QStringLiteral("list-text"), {1, QStringLiteral("list-text LIST"), listText}},
        {QStringLiteral("read-service"), {3, QStringLiteral("read-service SERVICE CALLSIGN FILE"), readService}},
        {QStringLiteral("clear-cache"), {0, QStringLiteral("clear-cache"), clearCache}},
        {QStringLiteral("import-adif"), {2, QStringLiteral("import-adif FILE LIST"), importAdif}},
        {QStringLiteral("export-adif"),
         {-1, QStringLiteral("export-adif LIST FILE [--adx] [--band BAND] [--mode MODE]"), exportAdif}},
        {QStringLiteral("refresh"), {-1, QStringLiteral("refresh LIST [--source SOURCE]"), refresh}},
    };
    return table;
}

} // namespace

int run(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    if (args.isEmpty()) {
        err << "marvik-cli: no command given; commands: " << commands().keys().join(QStringLiteral(", ")) << '\n';
        return BadArguments;
    }
    const auto it = commands().constFind(args.first());
    if (it == commands().constEnd()) {
        err << "marvik-cli: unknown command: " << args.first() << '\n';
        return BadArguments;
    }
    const QStringList rest = args.mid(1);
    if (it->arguments >= 0 && rest.size() != it->arguments) {
        err << "marvik-cli: usage: marvik-cli [--data-dir DIR] " << it->usage << '\n';
        return BadArguments;
    }
    return it->run(rest, dataDir, out, err);
}

} // namespace marvik::cli
