// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/widgets/ButtonShades.h"

#include <algorithm>
#include <cmath>

namespace marvik::widgets {

namespace {

int blend(int a, int b, double t)
{
    return std::clamp(static_cast<int>(std::lround(a + (b - a) * t)), 0, 255);
}

} // namespace

QColor mix(const QColor &from, const QColor &to, double t)
{
    const QColor a = from.toRgb();
    const QColor b = to.toRgb();
    return QColor(blend(a.red(), b.red(), t), blend(a.green(), b.green(), t), blend(a.blue(), b.blue(), t),
        blend(a.alpha(), b.alpha(), t));
}

double luma(const QColor &colour)
{
    const QColor c = colour.toRgb();
    return (0.299 * c.red() + 0.587 * c.green() + 0.114 * c.blue()) / 255.0;
}

ButtonShades shadesFor(const QColor &face)
{
    const QColor white(255, 255, 255, face.alpha());
    const QColor black(0, 0, 0, face.alpha());
    const double l = luma(face);
    // A light face takes its lit edges close to white, as the system grey
    // does; a dark face would glare with those, so its lit edges rise less.
    const double lift = 0.3 + 0.5 * l;
    // Hot and pressed looks step away from the face's brightness: a step
    // toward white could not show on a white face, nor one toward black on
    // a black face.
    const QColor away = l > 0.5 ? black : white;

    ButtonShades s;
    s.face = face.toRgb();
    s.highlight = mix(face, white, lift);
    s.light = mix(face, white, lift * 0.45);
    s.shadow = mix(face, black, 0.35);
    s.darkShadow = mix(face, black, 0.62);
    s.hotFace = mix(face, away, 0.07);
    s.pressedFace = mix(face, away, 0.14);
    s.outline = mix(face, away, 0.5);
    return s;
}

QColor disabledFace(const QColor &face)
{
    const int grey = static_cast<int>(std::lround(luma(face) * 255));
    return mix(face, QColor(grey, grey, grey, face.alpha()), 0.7);
}

ColorScheme colorSchemeFrom(int value)
{
    switch (value) {
    case static_cast<int>(ColorScheme::Palette):
        return ColorScheme::Palette;
    case static_cast<int>(ColorScheme::Accent):
        return ColorScheme::Accent;
    default:
        return ColorScheme::OwnColours;
    }
}

ButtonColours buttonColours(ColorScheme scheme, const ColourSources &sources)
{
    QColor back = sources.back;
    QColor fore = sources.fore;
    if (scheme == ColorScheme::Palette) {
        back = sources.paletteButton;
        fore = sources.paletteButtonText;
    }
    ButtonColours c;
    if (!sources.enabled) {
        c.shades = shadesFor(disabledFace(back));
        // Halfway between caption and face reads as "not now" on light and
        // dark faces alike. A lit copy under it etches it into a light face;
        // on a dark face the copy would only blur it.
        c.text = mix(c.shades.face, fore, 0.45);
        if (luma(c.shades.face) > 0.5)
            c.etch = c.shades.highlight;
        c.focus = c.text;
        return c;
    }
    c.shades = shadesFor(back);
    c.text = fore.toRgb();
    c.focus = mix(fore, back, 0.2);
    if (scheme == ColorScheme::Accent && sources.paletteAccent.isValid()) {
        c.shades.hotFace = mix(back, sources.paletteAccent, 0.2);
        c.shades.pressedFace = mix(back, sources.paletteAccent, 0.4);
        c.shades.outline = sources.paletteAccent.toRgb();
        c.focus = sources.paletteAccent.toRgb();
    }
    return c;
}

} // namespace marvik::widgets
