// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

namespace marvik::widgets {

/// A blend of two colours, alpha included: t = 0 gives `from`, 1 gives `to`.
QColor mix(const QColor &from, const QColor &to, double t);

/// Perceived brightness, from 0 (black) to 1 (white).
double luma(const QColor &colour);

/// The colours a button is drawn with, all derived from its face colour.
/// The light falls from the top left, as on every desktop since the first
/// 3-D buttons.
struct ButtonShades
{
    QColor face;
    QColor light; ///< inner edge on the lit side (top, left)
    QColor highlight; ///< outer edge on the lit side
    QColor shadow; ///< inner edge on the shaded side (bottom, right)
    QColor darkShadow; ///< outer edge on the shaded side
    QColor hotFace; ///< the face under the mouse or with the focus
    QColor pressedFace; ///< the face while the button is down
    QColor outline; ///< a line that stands out from the face, light or dark
};

/// The shades of a face colour. Edges keep the face's hue; the hot and
/// pressed faces move away from the face's own brightness (darker on light
/// faces, lighter on dark ones), so they show on white and on black too.
ButtonShades shadesFor(const QColor &face);

/// The face of a disabled button: most of the colour taken out, the
/// brightness kept, so it still sits well on its dialog.
QColor disabledFace(const QColor &face);

/// How a button picks its colours (the ColorScheme property).
enum class ColorScheme : int {
    OwnColours = 1, ///< face and caption from BackColor and ForeColor
    Palette = 2, ///< face and caption from the palette: follows the desktop theme
    Accent
    = 3, ///< face and caption from BackColor and ForeColor, hot and pressed looks and focus in the palette's accent
};

/// Reads a ColorScheme number; a value that names no scheme means OwnColours.
ColorScheme colorSchemeFrom(int value);

/// What a button's colours are made from.
struct ColourSources
{
    QColor back; ///< BackColor
    QColor fore; ///< ForeColor
    QColor paletteButton;
    QColor paletteButtonText;
    QColor paletteAccent;
    bool enabled = true;
};

/// Everything a button face is painted with in one colour scheme.
struct ButtonColours
{
    ButtonShades shades;
    QColor text; ///< the caption
    QColor etch; ///< the lit copy under a disabled caption on a light face; else invalid
    QColor focus; ///< the focus rectangle
};

ButtonColours buttonColours(ColorScheme scheme, const ColourSources &sources);

} // namespace marvik::widgets
