// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace marvik::widgets {

/// The stored properties of a dialog button, read from and written to a
/// property map under the keys the form files use.
struct ButtonProperties
{
    static constexpr int kFirstType = 1;
    static constexpr int kLastType = 7;
    static constexpr int kDefaultType = 2;
    static constexpr int kDefaultScheme = 1;

    /// Empty: the palette's button colour.
    std::optional<QColor> backColor;
    /// Empty: the palette's button text colour.
    std::optional<QColor> foreColor;
    int buttonType = kDefaultType;
    QString caption;
    bool enabled = true;
    /// Empty: the container's font.
    std::optional<QFont> font;
    int colorScheme = kDefaultScheme;
    bool showFocusRect = true;

    /// Reads "BCOL", "FCOL", "BTYPE", "TX", "ENAB", "FONT", "COLTYPE" and
    /// "FOCUSR". A missing key, or a value that is no value of its kind
    /// (a ButtonType outside 1..7, a ColorScheme beyond 16 bits, a colour or
    /// font that does not read), gives that property's default.
    static ButtonProperties fromMap(const QVariantMap &map);

    /// Writes every key except the colours and the font while they follow
    /// the palette and the container: a missing key reads back as that.
    QVariantMap toMap() const;

    bool operator==(const ButtonProperties &) const = default;
};

} // namespace marvik::widgets
