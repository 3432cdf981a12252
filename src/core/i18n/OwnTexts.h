// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/Texts.h"

#include <span>

namespace marvik::i18n {

/// One of Marvik's own texts in a language other than English.
struct OwnText
{
    TextId id;
    const char16_t *text;
};

/// The built-in translation of Marvik's own texts (the ids after
/// `LanguageFileCount`) into `language`, 1..4 as in the language menu;
/// empty for English and for any other index.
std::span<const OwnText> ownTranslation(int language);

/// Puts Marvik's own texts in `language` into `texts` and leaves the
/// language file's 57 alone: the built-in translation for 1..4, the
/// built-in English for 0 and any other index. An id the translation lacks
/// gets its English text, never one left over from the language before.
void applyOwnTexts(Texts &texts, int language);

} // namespace marvik::i18n
