# SPDX-License-Identifier: GPL-3.0-or-later
# Callbook lookups: requests, page text, page readers, pictures.
target_sources(marvik_core PRIVATE
  lookup/CookieJar.cpp lookup/CookieJar.h
  lookup/HtmlText.cpp lookup/HtmlText.h
  lookup/LookUp.cpp lookup/LookUp.h
  lookup/LookupResult.cpp lookup/LookupResult.h
  lookup/MarkupGuard.cpp lookup/MarkupGuard.h
  lookup/NamedDownloads.cpp lookup/NamedDownloads.h
  lookup/PageDecoder.cpp lookup/PageDecoder.h
  lookup/PageReader.cpp lookup/PageReader.h
  lookup/PageText.cpp lookup/PageText.h
  lookup/PictureDownloader.cpp lookup/PictureDownloader.h
  lookup/PictureFiles.cpp lookup/PictureFiles.h
  lookup/SourceSettings.cpp lookup/SourceSettings.h
  lookup/Sources.cpp lookup/Sources.h)
include(lookup/services/Sources.cmake)
