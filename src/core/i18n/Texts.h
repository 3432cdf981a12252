// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace marvik::i18n {

/// The program-wide texts a language file replaces: built-in English until
/// one is loaded. Texts with "xxx" get a callsign or a list name put in, and
/// "???" the name of the current lookup source.
struct Texts
{
    QString listWord;         ///< the word for "list" in the default list names
    QString alreadyInList;    ///< the status line while an entry blinks
    QString clearListPrompt;  ///< confirmation before a list is emptied ("xxx": list name)
    QString renamePrompt;     ///< the first-name input box ("xxx": callsign)
    QString menuName;         ///< row menu: change first name ("xxx")
    QString menuAddCall;      ///< row menu: copy to another list ("xxx")
    QString menuUpdate;       ///< row menu: look up again ("xxx", "???")
    QString menuManUpdate;    ///< row menu: edit by hand ("xxx")
    QString menuStreetView;   ///< row menu: street view ("xxx")
    QString menuSatellite;    ///< row menu: satellite view ("xxx")
    QString noOnlineSource;   ///< status line when a CD source is chosen
    QString lookupUnavailable; ///< status line when no lookup is wired in
    QString notFound;         ///< status line: no such call, or no answer in time ("xxx")
    QString loginRequired;    ///< status line: the callbook shows details to logged-in users only
    QString pageUnreadable;   ///< status line: a callbook page not in the shape expected ("xxx", "???")
    QString networkFailure;   ///< status line: the callbook could not be reached ("xxx", "???": why)
    QString noPicture;        ///< status line: no picture for a call ("xxx", "???": why)
    QString loggedIn;         ///< Database menu suffix
    QString loginNeeded;      ///< Database menu suffix
    QString loginNotNeeded;   ///< Database menu suffix for a source without log-ins
    QString menuLogin;        ///< Database menu: open the source's site to log in ("???")

    /// The built-in English texts.
    static Texts english();
};

/// Replaces every "xxx" of a template; the inserted text is never searched
/// again, so a list called "xxx" stays as it is.
QString fillIn(const QString &templ, const QString &xxx, const QString &questionMarks = {});

} // namespace marvik::i18n
