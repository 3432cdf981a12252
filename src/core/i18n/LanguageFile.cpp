// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/i18n/LanguageFile.h"

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Log.h"
#include "core/app/TextFile.h"
#include "core/i18n/OwnTexts.h"

#include <QStringList>

#include <array>

namespace marvik::i18n {

namespace {

struct BuiltinLanguage
{
    const char16_t *fileName;
    const char16_t *wrongVersion;
    const char16_t *missing;
};

// Spanish and German have always shown the English messages; only French and
// Dutch have their own.
constexpr std::array<BuiltinLanguage, kLanguageCount> kLanguages = {{
    {u"Marvik_English.Language", u"Wrong language file version.", u"Language file not found or corrupt"},
    {u"Marvik_Spanish.Language", u"Wrong language file version.", u"Language file not found or corrupt"},
    {u"Marvik_German.Language", u"Wrong language file version.", u"Language file not found or corrupt"},
    {u"Marvik_French.Language", u"Mauvaise version de fichier langage.",
        u"Fichier langage non trouv\u00e9 ou corrompu."},
    {u"Marvik_Dutch.Language", u"Foute taalbestand versie.", u"Taalbestand ontbreekt of corrupt."},
}};

constexpr std::array<TextId, kLanguageCount> kLanguageNames = {
    TextId::LanguageEnglish,
    TextId::LanguageSpanish,
    TextId::LanguageGerman,
    TextId::LanguageFrench,
    TextId::LanguageDutch,
};

QString versionTag()
{
    return QString::fromUtf16(app::kVersionText);
}

// The tag starts with the product word; the check looks for its last
// occurrence, so a title before the tag may name the program too.
QString productWord()
{
    const QString tag = versionTag();
    return tag.left(tag.indexOf(u' '));
}

LanguageLoad failed(LanguageLoad load, LanguageLoad::Outcome outcome, const LanguageInfo &info, const QString &detail)
{
    load.outcome = outcome;
    load.message = outcome == LanguageLoad::Outcome::WrongVersion ? info.wrongVersionMessage : info.missingMessage;
    load.detail = detail;
    return load;
}

// What every load starts with, whether or not the file can be used.
LanguageLoad startLoad(const Texts &current)
{
    LanguageLoad load;
    load.texts = current;
    const Texts english = Texts::english();
    for (const TextId id : kLanguageNames)
        load.texts[id] = english[id];
    return load;
}

} // namespace

LanguageInfo languageInfo(int language)
{
    const BuiltinLanguage &l = kLanguages[std::size_t(language >= 0 && language < kLanguageCount ? language : 0)];
    return {QString::fromUtf16(l.fileName), QString::fromUtf16(l.wrongVersion), QString::fromUtf16(l.missing)};
}

bool isCurrentVersionLine(QStringView line)
{
    const qsizetype at = line.lastIndexOf(productWord());
    return at >= 0 && line.sliced(at) == versionTag();
}

QString lineValue(QStringView line)
{
    return line.sliced(line.lastIndexOf(u'=') + 1).trimmed().toString();
}

LanguageLoad readLanguageText(QStringView text, int language, const Texts &current)
{
    const LanguageInfo info = languageInfo(language);
    LanguageLoad load = startLoad(current);
    const QStringList lines = app::splitLines(text);
    if (lines.isEmpty())
        return failed(std::move(load), LanguageLoad::Outcome::MissingOrCorrupt, info, QStringLiteral("empty file"));
    if (!isCurrentVersionLine(lines.first()))
        return failed(std::move(load), LanguageLoad::Outcome::WrongVersion, info,
            QStringLiteral("line 1 does not end in \"%1\"").arg(versionTag()));
    // Values go by position, so a file that stops early would shift nothing
    // but leave the last ones stale: it is refused whole. Lines past the 57th
    // are not read.
    if (lines.size() - 1 < kLanguageFileValues)
        return failed(std::move(load), LanguageLoad::Outcome::MissingOrCorrupt, info,
            QStringLiteral("%1 of %2 values").arg(lines.size() - 1).arg(kLanguageFileValues));
    for (int i = 0; i < kLanguageFileValues; ++i)
        load.texts[TextId(i)] = lineValue(lines[i + 1]);
    // Marvik's own texts follow the file that loaded, so the headings and
    // dialogs change language with the menus, and English brings them back.
    applyOwnTexts(load.texts, language);
    load.outcome = LanguageLoad::Outcome::Loaded;
    return load;
}

LanguageLoad loadLanguageFile(const QString &path, int language, const Texts &current)
{
    const app::TextFileContent content = app::readTextFile(path);
    LanguageLoad load;
    if (content.ok) {
        load = readLanguageText(content.text, language, current);
    } else {
        load = failed(
            startLoad(current), LanguageLoad::Outcome::MissingOrCorrupt, languageInfo(language), content.errorString);
    }
    if (!load.loaded())
        qCWarning(lcI18n) << "language file" << path << "not used:" << load.detail;
    return load;
}

QString languageFilePath(const app::DataFolder &data, int language)
{
    return data.languagesDir() + u'/' + languageInfo(language).fileName;
}

LanguageLoad loadLanguage(const app::DataFolder &data, int language, const Texts &current)
{
    return loadLanguageFile(languageFilePath(data, language), language, current);
}

bool hasCurrentVersionLine(const QString &path)
{
    const app::TextFileContent content = app::readTextFile(path);
    if (!content.ok)
        return false;
    const QStringList lines = app::splitLines(content.text);
    return !lines.isEmpty() && isCurrentVersionLine(lines.first());
}

} // namespace marvik::i18n
