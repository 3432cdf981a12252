// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/dialogs/OwnStation.h"

#include "core/i18n/Texts.h"
#include "core/maps/Geometry.h"

namespace marvik::dialogs {

std::optional<QString> gridLine(const QString &word, double latitude, double longitude)
{
    const QString locator = maps::toLocator(latitude, longitude);
    if (locator.isEmpty())
        return std::nullopt;
    return word + QStringLiteral(":   ") + locator;
}

i18n::TextId loginSuffix(lookup::Source source, bool loggedIn)
{
    using i18n::TextId;
    return source == lookup::Source::Callook ? TextId::LoginNotNeeded
           : loggedIn                        ? TextId::LoggedIn
                                             : TextId::LoginNeeded;
}

QString lookupStatus(const i18n::Texts &texts, lookup::Source source, bool loggedIn)
{
    return lookup::sourceInfo(source).caption.toString() + texts.padded(loginSuffix(source, loggedIn));
}

} // namespace marvik::dialogs
