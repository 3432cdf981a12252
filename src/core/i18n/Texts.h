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

    /// The built-in English texts.
    static Texts english();
};

/// Replaces every "xxx" of a template; the inserted text is never searched
/// again, so a list called "xxx" stays as it is.
QString fillIn(const QString &templ, const QString &xxx, const QString &questionMarks = {});

} // namespace marvik::i18n
