// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/widgets/ButtonShades.h"

#include <QFont>
#include <QPainterPath>
#include <QRectF>
#include <QRegion>
#include <QString>

class QFontMetricsF;
class QPainter;

namespace marvik::gui {

/// The seven button styles, by their ButtonType number (see docs/button.md).
enum class ButtonStyle : int {
    Classic = 1, ///< the raised two-pixel bevel of desktop dialogs
    Soft = 2, ///< a rounded face with a gentle gradient: the everyday button
    Flat = 3, ///< a plain face with a hairline frame
    Pill = 4, ///< a capsule with a glossy upper half
    Outlined = 5, ///< a frame only, filled when hot
    Chiselled = 6, ///< an octagon with cut corners and a bevel along them
    Lifted = 7, ///< a face floating on a soft shadow, sinking when pressed
};

/// Reads a ButtonType number; anything outside 1..7 is the default style.
ButtonStyle buttonStyleFrom(int type);

/// The three looks every style has.
enum class ButtonLook { Normal, Hot, Pressed };

/// Everything one button face is painted from.
struct FaceRequest
{
    ButtonStyle style = ButtonStyle::Soft;
    ButtonLook look = ButtonLook::Normal;
    widgets::ButtonColours colours;
    bool enabled = true;
    bool focusRect = false;
    QString caption; ///< with its "&" marks
    QFont font;
};

/// The outline of a button of that style filling `rect`.
QPainterPath buttonShape(ButtonStyle style, const QRectF &rect);

/// The window shape of a button: empty for the rectangular styles, else
/// every pixel its outline touches.
QRegion buttonMask(ButtonStyle style, const QSize &size);

/// Paints a whole button (face, edges, caption, focus rectangle) into
/// `rect`, in device-independent pixels.
void paintButtonFace(QPainter &painter, const QRectF &rect, const FaceRequest &request);

/// A size that shows the caption whole with room around it, and never
/// smaller than a standard dialog button (75 x 23).
QSize buttonSizeHint(ButtonStyle style, const QFontMetricsF &metrics, const QString &caption);

} // namespace marvik::gui
