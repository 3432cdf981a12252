// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/i18n/Texts.h"

#include <QStringList>

namespace marvik::i18n {

Texts Texts::english()
{
    Texts t;
    t.listWord = QStringLiteral("List");
    t.alreadyInList = QStringLiteral("Already in list");
    t.clearListPrompt = QStringLiteral("Delete all entries in xxx?");
    t.renamePrompt = QStringLiteral("New first name for xxx in every list:");
    t.menuName = QStringLiteral("Change first name of xxx");
    t.menuAddCall = QStringLiteral("Add xxx to");
    t.menuUpdate = QStringLiteral("Update xxx from ???");
    t.menuManUpdate = QStringLiteral("Update xxx manually");
    t.menuStreetView = QStringLiteral("Google Street View of xxx (if available)");
    t.menuSatellite = QStringLiteral("Google satellite view of xxx");
    t.noOnlineSource = QStringLiteral("No online source selected");
    t.lookupUnavailable = QStringLiteral("Online lookups are not available yet");
    t.notFound = QStringLiteral("xxx not found");
    t.loginRequired = QStringLiteral("Details require a log-in to QRZ.com");
    t.pageUnreadable = QStringLiteral("The page of xxx on ??? could not be read");
    t.networkFailure = QStringLiteral("xxx not found: ???");
    t.noPicture = QStringLiteral("No picture of xxx: ???");
    t.loggedIn = QStringLiteral("  (Logged in)");
    t.loginNeeded = QStringLiteral("  (Login required)");
    t.loginNotNeeded = QStringLiteral("  (Login not required)");
    t.menuLogin = QStringLiteral("Log in to ???\u2026");
    return t;
}

QString fillIn(const QString &templ, const QString &xxx, const QString &questionMarks)
{
    // Split first, then join: a replacement that itself holds "xxx" or "???"
    // must not be replaced again.
    QString out;
    const QStringList parts = templ.split(QStringLiteral("xxx"));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i)
            out += xxx;
        QString part = parts[i];
        out += questionMarks.isNull() ? part : part.replace(QStringLiteral("???"), questionMarks);
    }
    return out;
}

} // namespace marvik::i18n
