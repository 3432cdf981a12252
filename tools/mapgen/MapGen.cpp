// SPDX-License-Identifier: GPL-3.0-or-later
// mapgen: draws Marvik's nine map images from the layers extract.mjs wrote,
// through the program's own map fits, so a mark lands exactly where its
// place is drawn.
//   mapgen LAYER_DIR OUT_DIR [MAP NAME ...]
#include "core/maps/Projection.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

using marvik::maps::mapPoint;

namespace {

using Line = QList<QPointF>; // longitude, latitude

struct Polygon
{
    int colour = 0;
    QList<Line> rings;
};

struct Layer
{
    QList<Polygon> polys;
    QList<Line> lines;
};

/// A longitude/latitude box: what a map draws of the world. Outside it a
/// fit stops making sense (it folds over or runs around its apex).
struct Box
{
    double lonMin, lonMax, latMin, latMax;
};

struct MapPlan
{
    QString name;
    QSize size;
    bool fineScale; ///< 1:10m data rather than 1:50m
    QList<Box> pieces; ///< each drawn on its own; the world map is cut at 170 W
    QList<double> shifts; ///< longitude added to the points of each piece before projecting
    double graticule; ///< degrees between grid lines
    double densify; ///< longest step in degrees before projecting
    double lineScale; ///< pen widths relative to the regional maps
};

// Calm colours: pale pastels for land, one soft blue for sea and lakes.
const QColor kWater(0xb4, 0xd2, 0xe6);
const QColor kOutside(0xf6, 0xf5, 0xf0);
const QColor kLand[] = {QColor(0xf3, 0xe7, 0xc9), QColor(0xe3, 0xeb, 0xc8), QColor(0xf2, 0xd9, 0xcb),
    QColor(0xea, 0xdc, 0xe3), QColor(0xf1, 0xed, 0xc4), QColor(0xdd, 0xe7, 0xcf)};
const QColor kCoast(0x4f, 0x7a, 0x9c);
const QColor kBorder(0x8c, 0x6c, 0x7c);
const QColor kAdmin(0xa9, 0x95, 0x9f);
const QColor kGrid(0x46, 0x6e, 0x96, 70);
const QColor kGridText(0x3c, 0x5a, 0x78);

Layer readLayer(const QString &dir, const QString &name)
{
    Layer layer;
    QFile f(dir + u'/' + name + u".json"_qs);
    if (!f.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "mapgen: cannot read %s\n", qPrintable(f.fileName()));
        std::exit(1);
    }
    const QJsonObject root = QJsonDocument::fromJson(f.readAll()).object();
    const auto toLine = [](const QJsonArray &a) {
        Line line;
        line.reserve(a.size());
        for (const QJsonValue &p : a) {
            const QJsonArray xy = p.toArray();
            line.append(QPointF(xy.at(0).toDouble(), xy.at(1).toDouble()));
        }
        return line;
    };
    for (const QJsonValue &v : root.value(u"polys"_qs).toArray()) {
        const QJsonObject o = v.toObject();
        Polygon poly;
        poly.colour = o.value(u"c"_qs).toInt();
        for (const QJsonValue &ring : o.value(u"rings"_qs).toArray())
            poly.rings.append(toLine(ring.toArray()));
        layer.polys.append(poly);
    }
    for (const QJsonValue &v : root.value(u"lines"_qs).toArray())
        layer.lines.append(toLine(v.toArray()));
    return layer;
}

// Clipping to a box in longitude/latitude, one edge at a time.
using Inside = std::function<bool(const QPointF &)>;
using Cross = std::function<QPointF(const QPointF &, const QPointF &)>;

QPointF atLongitude(const QPointF &a, const QPointF &b, double lon)
{
    const double t = (lon - a.x()) / (b.x() - a.x());
    return {lon, a.y() + t * (b.y() - a.y())};
}

QPointF atLatitude(const QPointF &a, const QPointF &b, double lat)
{
    const double t = (lat - a.y()) / (b.y() - a.y());
    return {a.x() + t * (b.x() - a.x()), lat};
}

struct Edge
{
    Inside inside;
    Cross cross;
};

QList<Edge> edgesOf(const Box &box)
{
    return {
        {[=](const QPointF &p) { return p.x() >= box.lonMin; },
            [=](const QPointF &a, const QPointF &b) { return atLongitude(a, b, box.lonMin); }},
        {[=](const QPointF &p) { return p.x() <= box.lonMax; },
            [=](const QPointF &a, const QPointF &b) { return atLongitude(a, b, box.lonMax); }},
        {[=](const QPointF &p) { return p.y() >= box.latMin; },
            [=](const QPointF &a, const QPointF &b) { return atLatitude(a, b, box.latMin); }},
        {[=](const QPointF &p) { return p.y() <= box.latMax; },
            [=](const QPointF &a, const QPointF &b) { return atLatitude(a, b, box.latMax); }},
    };
}

/// Sutherland-Hodgman: a ring cut to the box stays one closed ring.
Line clipRing(Line ring, const Box &box)
{
    for (const Edge &e : edgesOf(box)) {
        if (ring.isEmpty())
            break;
        Line out;
        for (qsizetype i = 0; i < ring.size(); ++i) {
            const QPointF &cur = ring[i];
            const QPointF &prev = ring[(i + ring.size() - 1) % ring.size()];
            const bool ci = e.inside(cur);
            const bool pi = e.inside(prev);
            if (ci) {
                if (!pi)
                    out.append(e.cross(prev, cur));
                out.append(cur);
            } else if (pi) {
                out.append(e.cross(prev, cur));
            }
        }
        ring = out;
    }
    return ring;
}

/// A line cut to the box falls apart into the pieces inside it.
QList<Line> clipLine(const Line &line, const Box &box)
{
    QList<Line> pieces {line};
    for (const Edge &e : edgesOf(box)) {
        QList<Line> next;
        for (const Line &l : pieces) {
            Line cur;
            for (qsizetype i = 0; i < l.size(); ++i) {
                const bool in = e.inside(l[i]);
                if (i > 0 && in != e.inside(l[i - 1])) {
                    const QPointF x = e.cross(l[i - 1], l[i]);
                    cur.append(x);
                    if (!in) {
                        next.append(cur);
                        cur.clear();
                    }
                }
                if (in)
                    cur.append(l[i]);
            }
            if (cur.size() > 1)
                next.append(cur);
        }
        pieces = next;
    }
    pieces.removeIf([](const Line &l) { return l.size() < 2; });
    return pieces;
}

Line densified(const Line &line, double step, bool closed)
{
    Line out;
    const qsizetype n = line.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QPointF a = line[i];
        out.append(a);
        if (i + 1 == n && !closed)
            break;
        const QPointF b = line[(i + 1) % n];
        const int parts = int(std::ceil(std::max(std::fabs(b.x() - a.x()), std::fabs(b.y() - a.y())) / step));
        for (int k = 1; k < parts; ++k)
            out.append(a + (b - a) * (double(k) / parts));
    }
    return out;
}

/// A ring or line that crosses 180 degrees jumps from +180 to -180 between
/// two points; made continuous, it clips as one piece. A ring round a pole
/// (Antarctica) cannot be made continuous and stays as it is.
Line unwrapped(const Line &line, bool closed)
{
    Line out = line;
    double shift = 0;
    bool jumped = false;
    for (qsizetype i = 1; i < out.size(); ++i) {
        const double step = line[i].x() - line[i - 1].x();
        if (step > 180) {
            shift -= 360;
            jumped = true;
        } else if (step < -180) {
            shift += 360;
            jumped = true;
        }
        out[i].rx() += shift;
    }
    if (!jumped || (closed && shift != 0))
        return line;
    // Keep the bulk of it where the world's longitudes are.
    double west = out.first().x();
    double east = west;
    for (const QPointF &p : out) {
        west = std::min(west, p.x());
        east = std::max(east, p.x());
    }
    const double turn = 360 * std::round((west + east) / 2 / 360);
    for (QPointF &p : out)
        p.rx() -= turn;
    return out;
}

class Drawer
{
public:
    Drawer(const MapPlan &plan, QPainter &painter)
        : m_plan(plan)
        , m_p(painter)
    {
    }

    /// The map's pixel of a point of piece `piece`; empty where the fit has none.
    std::optional<QPointF> pixel(QPointF lonLat, int piece) const
    {
        lonLat.rx() += m_plan.shifts.value(piece);
        return mapPoint(m_plan.name, lonLat.y(), lonLat.x());
    }

    void fill(const Layer &layer, const std::function<QColor(int)> &colour)
    {
        for (const Polygon &poly : layer.polys) {
            for (int piece = 0; piece < m_plan.pieces.size(); ++piece) {
                QPainterPath path;
                path.setFillRule(Qt::OddEvenFill);
                for (const Line &ring : poly.rings) {
                    const Line cut = clipRing(unwrapped(ring, true), m_plan.pieces[piece]);
                    if (cut.size() < 3)
                        continue;
                    bool first = true;
                    for (const QPointF &ll : densified(cut, m_plan.densify, true)) {
                        const std::optional<QPointF> px = pixel(ll, piece);
                        if (!px)
                            continue;
                        if (first)
                            path.moveTo(*px);
                        else
                            path.lineTo(*px);
                        first = false;
                    }
                    path.closeSubpath();
                }
                if (!path.isEmpty())
                    m_p.fillPath(path, colour(poly.colour));
            }
        }
    }

    void stroke(const QList<Line> &lines, const QPen &pen)
    {
        QPainterPath path;
        for (const Line &line : lines)
            addLine(path, line);
        m_p.strokePath(path, pen);
    }

    /// Adds a line; where consecutive points jump apart on the map (the
    /// fit's edge, the world map's cut) the line is broken, not bridged.
    void addLine(QPainterPath &path, const Line &line)
    {
        const double jump = 12;
        for (int piece = 0; piece < m_plan.pieces.size(); ++piece) {
            for (const Line &cut : clipLine(unwrapped(line, false), m_plan.pieces[piece])) {
                std::optional<QPointF> last;
                for (const QPointF &ll : densified(cut, m_plan.densify, false)) {
                    const std::optional<QPointF> px = pixel(ll, piece);
                    if (px && last && QLineF(*last, *px).length() < jump)
                        path.lineTo(*px);
                    else if (px)
                        path.moveTo(*px);
                    last = px;
                }
            }
        }
    }

private:
    const MapPlan &m_plan;
    QPainter &m_p;
};

QString degrees(double value, char16_t positive, char16_t negative)
{
    const double v = std::fabs(value);
    const QString number = v == std::floor(v) ? QString::number(int(v)) : QString::number(v, 'f', 1);
    return number + u'\u00b0' + (value > 0 ? QString(positive) : value < 0 ? QString(negative) : QString());
}

void drawText(QPainter &p, const QPointF &at, const QString &text, Qt::Alignment align)
{
    const QFontMetricsF fm(p.font());
    QRectF r(QPointF(0, 0), QSizeF(fm.horizontalAdvance(text) + 2, fm.height()));
    if (align & Qt::AlignRight)
        r.moveRight(at.x());
    else if (align & Qt::AlignHCenter)
        r.moveLeft(at.x() - r.width() / 2);
    else
        r.moveLeft(at.x());
    if (align & Qt::AlignBottom)
        r.moveBottom(at.y());
    else if (align & Qt::AlignVCenter)
        r.moveTop(at.y() - r.height() / 2);
    else
        r.moveTop(at.y());
    // A soft halo keeps the figures readable over land, sea and lines.
    QPainterPath path;
    path.addText(r.left() + 1, r.top() + fm.ascent(), p.font(), text);
    p.strokePath(path, QPen(QColor(255, 255, 255, 190), 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.fillPath(path, kGridText);
}

/// Parallels and meridians every `plan.graticule` degrees, with their
/// degrees written where they leave the picture (or, on the world map, along
/// its rim and the equator).
void drawGraticule(const MapPlan &plan, QPainter &p, bool world)
{
    const double step = plan.graticule;
    const Box all {plan.pieces.first().lonMin, world ? 190 : plan.pieces.first().lonMax, plan.pieces.first().latMin,
        plan.pieces.first().latMax};
    QPainterPath grid;
    QList<std::pair<Line, double>> parallels;
    QList<std::pair<Line, double>> meridians;
    for (double lat = std::ceil(all.latMin / step) * step; lat <= all.latMax; lat += step) {
        if (std::fabs(lat) >= 89.9)
            continue;
        Line l;
        for (double lon = all.lonMin; lon <= all.lonMax + 1e-9; lon += plan.densify)
            l.append({lon, lat});
        parallels.append({l, lat});
    }
    for (double lon = std::ceil(all.lonMin / step) * step; lon <= all.lonMax; lon += step) {
        Line l;
        const double top = world ? 89.99 : all.latMax;
        const double bottom = world ? -89.99 : all.latMin;
        for (double lat = bottom; lat <= top + 1e-9; lat += plan.densify)
            l.append({lon, lat});
        meridians.append({l, lon});
    }
    const auto pixelOf = [&](const QPointF &ll) {
        // The world map's grid is drawn east of its cut as it is labelled.
        return mapPoint(plan.name, ll.y(), ll.x());
    };
    const auto path = [&](const Line &l) {
        QPainterPath pp;
        bool first = true;
        for (const QPointF &ll : l) {
            const std::optional<QPointF> px = pixelOf(ll);
            if (!px)
                continue;
            if (first)
                pp.moveTo(*px);
            else
                pp.lineTo(*px);
            first = false;
        }
        return pp;
    };
    for (const auto &[l, lat] : parallels)
        grid.addPath(path(l));
    for (const auto &[l, lon] : meridians)
        grid.addPath(path(l));
    p.strokePath(grid, QPen(kGrid, 0.8 * plan.lineScale));

    QFont font(u"Liberation Sans"_qs);
    font.setPixelSize(world ? 11 : 12);
    p.setFont(font);
    const QRectF frame(QPointF(0, 0), QSizeF(plan.size));
    if (world) {
        for (const auto &[l, lat] : parallels) {
            if (const auto west = mapPoint(plan.name, lat, -170))
                drawText(p, *west + QPointF(4, 0), degrees(lat, u'N', u'S'), Qt::AlignLeft | Qt::AlignBottom);
        }
        for (const auto &[l, lon] : meridians) {
            if (std::fmod(std::fabs(lon), 30) != 0 || lon >= 190)
                continue;
            const double shown = lon > 180 ? lon - 360 : lon;
            if (const auto at = mapPoint(plan.name, 0, lon))
                drawText(p, *at + QPointF(3, 0), degrees(shown, u'E', u'W'), Qt::AlignLeft | Qt::AlignTop);
        }
        return;
    }
    // Regional maps: the figures sit where each line leaves the picture, at
    // the left edge for parallels and the bottom edge for meridians.
    for (const auto &[l, lat] : parallels) {
        std::optional<QPointF> prev;
        for (const QPointF &ll : l) {
            const auto px = pixelOf(ll);
            if (px && prev && prev->x() < 0 && px->x() >= 0 && px->y() > 14 && px->y() < frame.height() - 14) {
                drawText(p, QPointF(3, px->y() - 1), degrees(lat, u'N', u'S'), Qt::AlignLeft | Qt::AlignBottom);
                break;
            }
            prev = px;
        }
    }
    for (const auto &[l, lon] : meridians) {
        std::optional<QPointF> prev;
        for (const QPointF &ll : l) {
            const auto px = pixelOf(ll);
            if (px && prev && prev->y() > frame.height() && px->y() <= frame.height() && px->x() > 30
                && px->x() < frame.width() - 30) {
                drawText(p, QPointF(px->x() + 3, frame.height() - 3), degrees(lon, u'E', u'W'),
                    Qt::AlignLeft | Qt::AlignBottom);
                break;
            }
            prev = px;
        }
    }
}

QImage drawMap(const MapPlan &plan, const QString &layers)
{
    const bool world = plan.name == u"World Map"_qs;
    const QString scale = plan.fineScale ? u"10m"_qs : u"50m"_qs;
    const Layer countries = readLayer(layers, u"countries"_qs + scale);
    const Layer borders = readLayer(layers, u"borders"_qs + scale);
    const Layer coast = readLayer(layers, u"coast"_qs + scale);
    const Layer lakes = readLayer(layers, u"lakes50m"_qs);
    const Layer admin = readLayer(layers, u"admin1"_qs);

    QImage image(plan.size, QImage::Format_RGB32);
    image.fill(world ? kOutside : kWater);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    Drawer drawer(plan, p);

    Line outline;
    if (world) {
        // The sea fills the world's outline; outside it is paper.
        for (double lat = -89.99; lat <= 89.99; lat += 0.25)
            outline.append({190, lat});
        for (double lat = 89.99; lat >= -89.99; lat -= 0.25)
            outline.append({-170, lat});
        Layer globe;
        globe.polys.append({0, {outline}});
        drawer.fill(globe, [](int) { return kWater; });
    }
    const double w = plan.lineScale;
    drawer.fill(countries, [](int c) { return kLand[c % std::size(kLand)]; });
    // First-level borders end at a lake's shore; a country's border crosses
    // the lake, as the Great Lakes' does.
    drawer.stroke(admin.lines, QPen(kAdmin, 0.8 * w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawer.fill(lakes, [](int) { return kWater; });
    drawGraticule(plan, p, world);
    drawer.stroke(borders.lines, QPen(kBorder, 1.1 * w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QList<Line> lakeShores;
    for (const Polygon &lake : lakes.polys)
        for (const Line &ring : lake.rings)
            lakeShores.append(ring + Line {ring.first()});
    drawer.stroke(lakeShores, QPen(kCoast, 0.7 * w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawer.stroke(coast.lines, QPen(kCoast, 1.0 * w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));

    if (world) {
        QPainterPath path;
        bool first = true;
        for (const QPointF &ll : outline) {
            const auto px = mapPoint(plan.name, ll.y(), ll.x());
            if (!px)
                continue;
            if (first)
                path.moveTo(*px);
            else
                path.lineTo(*px);
            first = false;
        }
        path.closeSubpath();
        p.strokePath(path, QPen(kCoast, 1.2));
    }

    QFont small(u"Liberation Sans"_qs);
    small.setPixelSize(10);
    p.setFont(small);
    drawText(p, QPointF(plan.size.width() - 4, plan.size.height() - 2), u"Natural Earth"_qs,
        Qt::AlignRight | Qt::AlignBottom);
    return image;
}

/// The picture with 256 colours: the flat colours of land, sea and lines,
/// their blends along the edges (lines are thin, so their own colour is
/// rare and must be reserved), then the most used of the rest. A map needs
/// no more, and the file gets much smaller.
QImage withPalette(const QImage &image)
{
    QList<QRgb> table;
    const auto close = [&](QRgb c) {
        return std::any_of(table.cbegin(), table.cend(), [c](QRgb t) {
            return std::abs(qRed(t) - qRed(c)) + std::abs(qGreen(t) - qGreen(c)) + std::abs(qBlue(t) - qBlue(c)) < 6;
        });
    };
    const auto add = [&](QRgb c) {
        if (table.size() < 256 && !close(c))
            table.append(c | 0xff000000);
    };
    QList<QColor> grounds {kWater, kOutside};
    for (const QColor &c : kLand)
        grounds.append(c);
    const QList<QColor> inks {kCoast, kBorder, kAdmin, kGridText, Qt::white};
    for (const QColor &g : grounds)
        add(g.rgb());
    for (const QColor &i : inks)
        add(i.rgb());
    for (const QColor &i : inks) {
        for (const QColor &g : grounds) {
            for (double t : {0.5, 0.25, 0.75}) {
                add(qRgb(int(std::lround(i.red() * t + g.red() * (1 - t))),
                    int(std::lround(i.green() * t + g.green() * (1 - t))),
                    int(std::lround(i.blue() * t + g.blue() * (1 - t)))));
            }
        }
    }
    QHash<QRgb, qsizetype> counts;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            ++counts[line[x] | 0xff000000];
    }
    QList<std::pair<qsizetype, QRgb>> byUse;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        byUse.append({it.value(), it.key()});
    std::sort(byUse.begin(), byUse.end(), [](const auto &a, const auto &b) { return a > b; });
    for (const auto &[count, colour] : byUse)
        add(colour);
    return image.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither | Qt::AvoidDither);
}

QList<MapPlan> mapPlans()
{
    // Sizes: each bitmap starts at the fit's origin and reaches far enough to
    // hold its region (docs/maps.md lists them).
    return {
        {u"World Map"_qs, {2800, 1412}, false,
            {{-170, 190, -89.99, 89.99}, {-540, -170, -89.99, 89.99}, {190, 540, -89.99, 89.99}}, {0, 360, -360}, 10,
            0.1, 0.9},
        {u"North America Map"_qs, {1332, 940}, true, {{-179.99, -40, 5, 84}}, {0}, 5, 0.02, 1},
        {u"Australia Map"_qs, {1380, 1290}, true, {{95, 170, -50, 0}}, {0}, 5, 0.02, 1},
        {u"UK Map"_qs, {1020, 1230}, true, {{-15, 10, 45, 64}}, {0}, 1, 0.005, 1.2},
        {u"Europe Map"_qs, {1400, 1300}, true, {{-35, 75, 25, 82}}, {0}, 5, 0.02, 1},
        {u"New Zealand Map"_qs, {1060, 1440}, true, {{160, 180, -53, -28}}, {0}, 2, 0.005, 1.2},
        {u"Japan Map"_qs, {1000, 1250}, true, {{115, 160, 18, 52}}, {0}, 2, 0.01, 1.1},
        {u"Asia Map"_qs, {1650, 1100}, true, {{20, 180, -20, 75}}, {0}, 10, 0.02, 0.9},
        {u"N-Nederland Map"_qs, {800, 600}, true, {{2, 9, 51, 54.5}}, {0}, 0.5, 0.002, 1.3},
    };
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: mapgen LAYER_DIR OUT_DIR [MAP NAME ...]\n");
        return 2;
    }
    QDir().mkpath(args[1]);
    const QStringList only = args.mid(2);
    for (const MapPlan &plan : mapPlans()) {
        if (!only.isEmpty() && !only.contains(plan.name))
            continue;
        const QImage image = withPalette(drawMap(plan, args[0]));
        const QString file = args[1] + u'/' + plan.name + u".png"_qs;
        if (!image.save(file, "PNG", 0)) {
            std::fprintf(stderr, "mapgen: cannot write %s\n", qPrintable(file));
            return 1;
        }
        std::printf("%s %dx%d\n", qPrintable(file), image.width(), image.height());
    }
    return 0;
}
