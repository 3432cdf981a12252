// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/widgets/ButtonProperties.h"

#include <limits>

namespace marvik::widgets {

namespace {

const QString kBackColor = QStringLiteral("BCOL");
const QString kForeColor = QStringLiteral("FCOL");
const QString kButtonType = QStringLiteral("BTYPE");
const QString kCaption = QStringLiteral("TX");
const QString kEnabled = QStringLiteral("ENAB");
const QString kFont = QStringLiteral("FONT");
const QString kColorScheme = QStringLiteral("COLTYPE");
const QString kShowFocusRect = QStringLiteral("FOCUSR");

std::optional<QColor> readColour(const QVariant &value)
{
    QColor colour;
    if (value.metaType().id() == QMetaType::QColor)
        colour = value.value<QColor>();
    else if (value.metaType().id() == QMetaType::QString)
        colour = QColor::fromString(value.toString());
    if (!colour.isValid())
        return std::nullopt;
    return colour;
}

std::optional<QFont> readFont(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QFont)
        return value.value<QFont>();
    QFont font;
    if (value.metaType().id() == QMetaType::QString && font.fromString(value.toString()))
        return font;
    return std::nullopt;
}

std::optional<int> readInt(const QVariant &value, int low, int high)
{
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    if (!ok || number < low || number > high)
        return std::nullopt;
    return static_cast<int>(number);
}

std::optional<bool> readBool(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return value.toLongLong() != 0;
    case QMetaType::QString: {
        // A settings file hands booleans back as text, "true" or a number.
        const QString text = value.toString().trimmed();
        if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
            return true;
        if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return false;
        bool ok = false;
        const qlonglong number = text.toLongLong(&ok);
        if (ok)
            return number != 0;
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

} // namespace

ButtonProperties ButtonProperties::fromMap(const QVariantMap &map)
{
    ButtonProperties p;
    p.backColor = readColour(map.value(kBackColor));
    p.foreColor = readColour(map.value(kForeColor));
    p.buttonType = readInt(map.value(kButtonType), kFirstType, kLastType).value_or(kDefaultType);
    if (const QVariant caption = map.value(kCaption); caption.canConvert<QString>())
        p.caption = caption.toString();
    p.enabled = readBool(map.value(kEnabled)).value_or(true);
    p.font = readFont(map.value(kFont));
    p.colorScheme
        = readInt(map.value(kColorScheme), std::numeric_limits<qint16>::min(), std::numeric_limits<qint16>::max())
              .value_or(kDefaultScheme);
    p.showFocusRect = readBool(map.value(kShowFocusRect)).value_or(true);
    return p;
}

QVariantMap ButtonProperties::toMap() const
{
    QVariantMap map;
    if (backColor)
        map.insert(kBackColor, *backColor);
    if (foreColor)
        map.insert(kForeColor, *foreColor);
    map.insert(kButtonType, buttonType);
    map.insert(kCaption, caption);
    map.insert(kEnabled, enabled);
    if (font)
        map.insert(kFont, *font);
    map.insert(kColorScheme, colorScheme);
    map.insert(kShowFocusRect, showFocusRect);
    return map;
}

} // namespace marvik::widgets
