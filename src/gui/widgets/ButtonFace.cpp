// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/widgets/ButtonFace.h"

#include "core/widgets/AccessKey.h"

#include <QFontMetricsF>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace marvik::gui {

namespace {

using widgets::ButtonShades;
using widgets::mix;

constexpr qreal kSoftRadius = 4;
constexpr qreal kOutlinedRadius = 6;
constexpr qreal kLiftedRadius = 4;
// How far a lifted face floats above its shadow in each look.
constexpr qreal kLiftNormal = 2;
constexpr qreal kLiftHot = 3;
constexpr qreal kLiftPressed = 0.5;
// The room the lifted style keeps below its face for the shadow.
constexpr qreal kLiftRoom = 4;

/// What a style tells the caption and focus painters about its face.
struct Face
{
    QRectF body; ///< where the caption is centred
    QPointF shift; ///< the caption's move while pressed
    QPainterPath focus; ///< the focus rectangle's outline
    bool etched = false; ///< a disabled caption is etched (3-D styles)
};

QColor fillFor(const ButtonShades &s, ButtonLook look)
{
    switch (look) {
    case ButtonLook::Hot:
        return s.hotFace;
    case ButtonLook::Pressed:
        return s.pressedFace;
    case ButtonLook::Normal:
        break;
    }
    return s.face;
}

/// The border of the rounded styles: it darkens as the button is
/// approached and pressed.
QColor borderFor(const ButtonShades &s, ButtonLook look)
{
    switch (look) {
    case ButtonLook::Hot:
        return mix(s.shadow, s.darkShadow, 0.5);
    case ButtonLook::Pressed:
        return s.darkShadow;
    case ButtonLook::Normal:
        break;
    }
    return s.shadow;
}

QColor withAlpha(QColor colour, int alpha)
{
    colour.setAlpha(alpha * colour.alpha() / 255);
    return colour;
}

QPainterPath roundedRect(const QRectF &r, qreal radius)
{
    const qreal rr = std::max<qreal>(0, std::min({radius, r.width() / 2, r.height() / 2}));
    QPainterPath path;
    path.addRoundedRect(r, rr, rr);
    return path;
}

qreal chiselCut(const QRectF &r)
{
    return std::clamp(std::min(r.width(), r.height()) / 4, 3.0, 7.0);
}

QPolygonF octagon(const QRectF &r, qreal cut)
{
    return QPolygonF {{r.left() + cut, r.top()}, {r.right() - cut, r.top()}, {r.right(), r.top() + cut},
        {r.right(), r.bottom() - cut}, {r.right() - cut, r.bottom()}, {r.left() + cut, r.bottom()},
        {r.left(), r.bottom() - cut}, {r.left(), r.top() + cut}};
}

// An octagon inset by `d` keeps its diagonals parallel to the outer ones
// only when its cut shrinks by d * (2 - sqrt 2).
QPolygonF insetOctagon(const QRectF &r, qreal d)
{
    return octagon(r.adjusted(d, d, -d, -d), chiselCut(r) - d * (2 - std::sqrt(2.0)));
}

QPainterPath pathOf(const QPolygonF &polygon)
{
    QPainterPath path;
    path.addPolygon(polygon);
    path.closeSubpath();
    return path;
}

/// A one-pixel frame just inside `r`: top and left in `topLeft`, bottom and
/// right in `bottomRight`. Filled rectangles stay sharp at any scale.
void frame(QPainter &p, const QRectF &r, const QColor &topLeft, const QColor &bottomRight)
{
    p.fillRect(QRectF(r.left(), r.top(), r.width() - 1, 1), topLeft);
    p.fillRect(QRectF(r.left(), r.top(), 1, r.height() - 1), topLeft);
    p.fillRect(QRectF(r.left(), r.bottom() - 1, r.width(), 1), bottomRight);
    p.fillRect(QRectF(r.right() - 1, r.top(), 1, r.height()), bottomRight);
}

QPainterPath dottedRect(const QRectF &r, qreal inset)
{
    QPainterPath path;
    path.addRect(r.adjusted(inset + 0.5, inset + 0.5, -inset - 0.5, -inset - 0.5));
    return path;
}

Face paintClassic(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    p.fillRect(r, fillFor(s, look));
    QRectF edge = r;
    // Hot and pressed buttons wear the dark outer frame of a default button.
    if (look != ButtonLook::Normal) {
        frame(p, edge, s.darkShadow, s.darkShadow);
        edge.adjust(1, 1, -1, -1);
    }
    if (look == ButtonLook::Pressed) {
        frame(p, edge, s.shadow, s.shadow);
    } else {
        frame(p, edge, s.highlight, s.darkShadow);
        frame(p, edge.adjusted(1, 1, -1, -1), s.light, s.shadow);
    }
    Face face;
    face.body = r.adjusted(4, 3, -4, -3);
    face.shift = look == ButtonLook::Pressed ? QPointF(1, 1) : QPointF();
    face.focus = dottedRect(r, 3);
    face.etched = true;
    return face;
}

Face paintFlat(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    p.fillRect(r, fillFor(s, look));
    const QColor line = look == ButtonLook::Pressed ? s.darkShadow
        : look == ButtonLook::Hot                   ? s.shadow
                                                    : mix(s.face, s.shadow, 0.5);
    frame(p, r, line, line);
    Face face;
    face.body = r.adjusted(4, 2, -4, -2);
    face.focus = dottedRect(r, 2);
    return face;
}

Face paintSoft(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    const QRectF edge = r.adjusted(0.5, 0.5, -0.5, -0.5);
    const QPainterPath path = roundedRect(edge, kSoftRadius);
    const QColor fill = fillFor(s, look);
    QLinearGradient gradient(edge.topLeft(), edge.bottomLeft());
    if (look == ButtonLook::Pressed) {
        // Lit from below once pushed in: the top falls into shadow.
        gradient.setColorAt(0, mix(fill, s.shadow, 0.35));
        gradient.setColorAt(0.4, fill);
        gradient.setColorAt(1, fill);
    } else {
        gradient.setColorAt(0, mix(fill, s.highlight, 0.6));
        gradient.setColorAt(1, fill);
    }
    p.setPen(Qt::NoPen);
    p.setBrush(gradient);
    p.drawPath(path);
    if (look != ButtonLook::Pressed) {
        p.setPen(QPen(withAlpha(s.highlight, 200), 1));
        p.drawLine(
            QPointF(edge.left() + kSoftRadius, edge.top() + 1), QPointF(edge.right() - kSoftRadius, edge.top() + 1));
    }
    p.setPen(QPen(borderFor(s, look), 1));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    Face face;
    face.body = r.adjusted(4, 2, -4, -2);
    face.shift = look == ButtonLook::Pressed ? QPointF(0, 1) : QPointF();
    face.focus = roundedRect(r.adjusted(3.5, 3.5, -3.5, -3.5), kSoftRadius - 2);
    return face;
}

Face paintPill(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    const QRectF edge = r.adjusted(0.5, 0.5, -0.5, -0.5);
    const QPainterPath path = roundedRect(edge, edge.height() / 2);
    p.setPen(Qt::NoPen);
    p.setBrush(fillFor(s, look));
    p.drawPath(path);
    p.save();
    p.setClipPath(path, Qt::IntersectClip);
    if (look == ButtonLook::Pressed) {
        QLinearGradient inner(edge.topLeft(), QPointF(edge.left(), edge.top() + edge.height() * 0.45));
        inner.setColorAt(0, withAlpha(s.darkShadow, 90));
        inner.setColorAt(1, withAlpha(s.darkShadow, 0));
        p.fillRect(edge, inner);
    } else {
        // The gloss: a smaller capsule over the upper half, in the face's
        // own lit shade, so it is a sheen on dark faces and not a white blot.
        const QRectF gloss(edge.left() + 3, edge.top() + 1.5, edge.width() - 6, edge.height() * 0.45);
        QLinearGradient sheen(gloss.topLeft(), gloss.bottomLeft());
        sheen.setColorAt(0, withAlpha(s.highlight, look == ButtonLook::Hot ? 150 : 110));
        sheen.setColorAt(1, withAlpha(s.highlight, 10));
        p.setBrush(sheen);
        p.drawPath(roundedRect(gloss, gloss.height() / 2));
    }
    p.restore();
    p.setPen(QPen(borderFor(s, look), 1));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    Face face;
    const qreal round = edge.height() / 4;
    face.body = r.adjusted(round + 2, 2, -round - 2, -2);
    face.shift = look == ButtonLook::Pressed ? QPointF(0, 1) : QPointF();
    const QRectF focus = r.adjusted(3.5, 3.5, -3.5, -3.5);
    face.focus = roundedRect(focus, focus.height() / 2);
    return face;
}

Face paintOutlined(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    // A two-pixel line centred one pixel in stays sharp at whole scales.
    const QRectF edge = r.adjusted(1, 1, -1, -1);
    const QPainterPath path = roundedRect(edge, kOutlinedRadius);
    if (look != ButtonLook::Normal) {
        p.setPen(Qt::NoPen);
        p.setBrush(look == ButtonLook::Pressed ? s.pressedFace : s.face);
        p.drawPath(path);
    }
    p.setPen(QPen(s.outline, 2));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    Face face;
    face.body = r.adjusted(5, 2, -5, -2);
    face.shift = look == ButtonLook::Pressed ? QPointF(0, 1) : QPointF();
    face.focus = roundedRect(r.adjusted(4.5, 4.5, -4.5, -4.5), kOutlinedRadius - 3);
    return face;
}

void octagonEdge(QPainter &p, const QPolygonF &o, const QColor &lit, const QColor &shaded)
{
    // Corners 0..7 run clockwise from the top edge's left end. The light
    // comes from the top left, so the two diagonals across it take the
    // half shade.
    const QColor half = mix(lit, shaded, 0.5);
    const QColor colours[8] = {lit, half, shaded, shaded, shaded, half, lit, lit};
    for (int i = 0; i < 8; ++i) {
        p.setPen(QPen(colours[i], 1, Qt::SolidLine, Qt::SquareCap));
        p.drawLine(o[i], o[(i + 1) % 8]);
    }
}

Face paintChiselled(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    p.setPen(Qt::NoPen);
    p.setBrush(fillFor(s, look));
    p.drawPath(pathOf(octagon(r, chiselCut(r))));
    // A dark contour first, so the cut corners read on any background;
    // the bevel runs inside it.
    p.setPen(QPen(mix(s.shadow, s.darkShadow, 0.5), 1));
    p.setBrush(Qt::NoBrush);
    p.drawPath(pathOf(insetOctagon(r, 0.5)));
    const bool down = look == ButtonLook::Pressed;
    octagonEdge(p, insetOctagon(r, 1.5), down ? s.shadow : s.highlight, down ? s.light : s.shadow);
    Face face;
    face.body = r.adjusted(chiselCut(r), 2, -chiselCut(r), -2);
    face.shift = down ? QPointF(1, 1) : QPointF();
    face.focus = pathOf(insetOctagon(r, 3.5));
    face.etched = true;
    return face;
}

Face paintLifted(QPainter &p, const QRectF &r, const ButtonShades &s, ButtonLook look)
{
    const qreal lift = look == ButtonLook::Hot ? kLiftHot : look == ButtonLook::Pressed ? kLiftPressed : kLiftNormal;
    // The face sits at the top of the room, minus its lift: a lifted face
    // rises, a pressed one sinks onto its shadow.
    const qreal top = kLiftRoom - lift - 1;
    const QRectF body(r.left() + 1, r.top() + top, r.width() - 2, r.height() - kLiftRoom);
    const QRectF edge = body.adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(Qt::NoPen);
    // Three widening layers of translucent black make a soft shadow whose
    // reach follows the lift. Black, not the face's dark shade: a shadow
    // darkens whatever it falls on, the dark dialog included.
    for (int k = 3; k >= 1; --k) {
        const qreal spread = k * 0.5 * lift / kLiftNormal;
        const QRectF layer = edge.translated(0, lift).adjusted(-spread, -spread * 0.5, spread, spread);
        p.setBrush(QColor(0, 0, 0, 26 + 14 * (3 - k)));
        p.drawPath(roundedRect(layer, kLiftedRadius + spread));
    }
    const QPainterPath path = roundedRect(edge, kLiftedRadius);
    const QColor fill = fillFor(s, look);
    p.setBrush(fill);
    p.drawPath(path);
    if (look != ButtonLook::Pressed) {
        p.setPen(QPen(withAlpha(s.highlight, 170), 1));
        p.drawLine(QPointF(edge.left() + kLiftedRadius, edge.top() + 1),
            QPointF(edge.right() - kLiftedRadius, edge.top() + 1));
    }
    p.setPen(QPen(mix(fill, s.darkShadow, 0.3), 1));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    Face face;
    face.body = body.adjusted(4, 1, -4, -1);
    face.focus = roundedRect(body.adjusted(3.5, 3.5, -3.5, -3.5), kLiftedRadius - 2);
    return face;
}

void paintCaption(QPainter &p, const Face &face, const FaceRequest &request)
{
    if (request.caption.isEmpty())
        return;
    const QString text = widgets::mnemonicText(request.caption);
    // One line, centred both ways, tabs expanded, the access key underlined
    // even before Alt is pressed.
    const int flags = Qt::AlignCenter | Qt::TextSingleLine | Qt::TextExpandTabs | Qt::TextShowMnemonic;
    const QRectF box = face.body.translated(face.shift);
    p.setFont(request.font);
    if (!request.enabled && face.etched && request.colours.etch.isValid()) {
        p.setPen(request.colours.etch);
        p.drawText(box.translated(1, 1), flags, text);
    }
    p.setPen(request.colours.text);
    p.drawText(box, flags, text);
}

} // namespace

ButtonStyle buttonStyleFrom(int type)
{
    if (type < static_cast<int>(ButtonStyle::Classic) || type > static_cast<int>(ButtonStyle::Lifted))
        return ButtonStyle::Soft;
    return static_cast<ButtonStyle>(type);
}

QPainterPath buttonShape(ButtonStyle style, const QRectF &rect)
{
    switch (style) {
    case ButtonStyle::Classic:
    case ButtonStyle::Flat:
        break;
    case ButtonStyle::Soft:
        return roundedRect(rect, kSoftRadius);
    case ButtonStyle::Pill:
        return roundedRect(rect, rect.height() / 2);
    case ButtonStyle::Outlined:
        return roundedRect(rect, kOutlinedRadius);
    case ButtonStyle::Chiselled:
        return pathOf(octagon(rect, chiselCut(rect)));
    case ButtonStyle::Lifted:
        return roundedRect(rect, kLiftedRadius);
    }
    QPainterPath path;
    path.addRect(rect);
    return path;
}

QRegion buttonMask(ButtonStyle style, const QSize &size)
{
    if (style == ButtonStyle::Classic || style == ButtonStyle::Flat || size.isEmpty())
        return {};
    // Every pixel the smoothed edge touches at all belongs to the button, so
    // the edge is never cut off, at any scale: a device pixel that the edge
    // touches lies in a touched pixel.
    QImage coverage(size, QImage::Format_Alpha8);
    coverage.fill(0);
    QPainter p(&coverage);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.fillPath(buttonShape(style, QRectF(QPointF(0, 0), QSizeF(size))), Qt::black);
    p.end();
    QRegion region;
    for (int y = 0; y < size.height(); ++y) {
        const uchar *line = coverage.constScanLine(y);
        int x = 0;
        while (x < size.width()) {
            if (line[x] == 0) {
                ++x;
                continue;
            }
            const int start = x;
            while (x < size.width() && line[x] != 0)
                ++x;
            region += QRect(start, y, x - start, 1);
        }
    }
    return region;
}

void paintButtonFace(QPainter &painter, const QRectF &rect, const FaceRequest &request)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    const ButtonShades &s = request.colours.shades;
    // A disabled button neither lights up nor goes down.
    const ButtonLook look = request.enabled ? request.look : ButtonLook::Normal;
    // In ButtonType order.
    using StylePainter = Face (*)(QPainter &, const QRectF &, const ButtonShades &, ButtonLook);
    static constexpr StylePainter kPainters[]
        = {paintClassic, paintSoft, paintFlat, paintPill, paintOutlined, paintChiselled, paintLifted};
    static_assert(std::size(kPainters) == static_cast<std::size_t>(ButtonStyle::Lifted));
    const int index = static_cast<int>(buttonStyleFrom(static_cast<int>(request.style))) - 1;
    const Face face = kPainters[index](painter, rect, s, look);
    paintCaption(painter, face, request);
    if (request.focusRect && request.enabled) {
        painter.setPen(QPen(request.colours.focus, 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(face.focus.translated(face.shift));
    }
    painter.restore();
}

QSize buttonSizeHint(ButtonStyle style, const QFontMetricsF &metrics, const QString &caption)
{
    const QString shown = widgets::captionText(caption).text;
    qreal height = std::ceil(metrics.height()) + 10;
    if (style == ButtonStyle::Lifted)
        height += kLiftRoom;
    qreal width = metrics.horizontalAdvance(shown) + 24;
    if (style == ButtonStyle::Pill)
        width += height / 2;
    if (style == ButtonStyle::Chiselled)
        width += 2 * chiselCut(QRectF(0, 0, width, height));
    return QSize(std::max(75, static_cast<int>(std::ceil(width))), std::max(23, static_cast<int>(std::ceil(height))));
}

} // namespace marvik::gui
