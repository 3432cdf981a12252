// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/Texts.h"

#include <QString>
#include <QStringView>

namespace marvik::app {
class DataFolder;
}

namespace marvik::i18n {

/// The languages of the language menu, by their index there and in Marvik.cfg.
inline constexpr int kLanguageCount = 5;

/// What the program itself knows of a language: its file's name and the two
/// messages shown when that file cannot be used. The messages are built in,
/// so they come in the chosen language even when its file is gone.
struct LanguageInfo
{
    QString fileName; ///< e.g. "Marvik_German.Language"
    QString wrongVersionMessage; ///< the file is there but of another version
    QString missingMessage; ///< the file is missing, unreadable or short
};

/// The language with index `language`; an index outside 0..4 is taken as
/// English, as Marvik.cfg's reader already does.
LanguageInfo languageInfo(int language);

/// True when a language file's first line ends in the program's version tag:
/// the text from the last "Marvik" to the end of the line must equal
/// "Marvik  3.12" exactly. Whatever stands before it is free.
bool isCurrentVersionLine(QStringView line);

/// The value a line of a language file carries: the text after its last "="
/// (the whole line when it has none), trimmed of white space.
QString lineValue(QStringView line);

/// The outcome of loading a language file.
struct LanguageLoad
{
    enum class Outcome {
        Loaded, ///< all 57 values were read
        WrongVersion, ///< line 1 lacks the exact version tag
        MissingOrCorrupt, ///< no file, an unreadable one, or fewer than 57 values
    };

    Outcome outcome = Outcome::MissingOrCorrupt;
    /// The texts to put in place whatever the outcome: the set the load began
    /// from with its five language names back in English (that much happens
    /// before the file is opened) and, when loaded, the 57 values of the file
    /// and Marvik's own texts in its language (see OwnTexts.h).
    Texts texts;
    /// Unless loaded: the message to show (title "Marvik", exclamation icon),
    /// in the language that was asked for.
    QString message;
    /// Unless loaded: why, in English, for the log.
    QString detail;

    bool loaded() const { return outcome == Outcome::Loaded; }
};

/// Reads a language file's decoded text over `current`.
LanguageLoad readLanguageText(QStringView text, int language, const Texts &current);

/// Reads the language file at `path` (Windows-1252, or UTF-8 behind a
/// byte-order mark) over `current`.
LanguageLoad loadLanguageFile(const QString &path, int language, const Texts &current);

/// Where a language's file lies: the data folder's Languages/ and its name.
QString languageFilePath(const app::DataFolder &data, int language);

/// Loads the file of `language` from the data folder over `current`: what
/// the language menu and the start-up do.
LanguageLoad loadLanguage(const app::DataFolder &data, int language, const Texts &current);

/// True when the file at `path` can be read and its first line carries the
/// program's version tag.
bool hasCurrentVersionLine(const QString &path);

} // namespace marvik::i18n
