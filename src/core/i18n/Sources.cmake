# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_core PRIVATE
  i18n/LanguageFile.cpp i18n/LanguageFile.h
  i18n/OwnTexts.cpp i18n/OwnTexts.h
  i18n/TextId.h
  i18n/Texts.cpp i18n/Texts.h)
