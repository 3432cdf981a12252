# SPDX-License-Identifier: GPL-3.0-or-later
# Logs: ADIF read and written, lists imported from and exported to a
# logger, and refreshing a whole list from the callbooks.
target_sources(marvik_core PRIVATE
  logs/AdifExport.cpp logs/AdifExport.h
  logs/AdifImport.cpp logs/AdifImport.h
  logs/AdifLog.cpp logs/AdifLog.h
  logs/AdifReader.cpp logs/AdifReader.h
  logs/AdifWriter.cpp logs/AdifWriter.h
  logs/ListRefresh.cpp logs/ListRefresh.h
  logs/PageRefreshLookup.cpp logs/PageRefreshLookup.h
  logs/RefreshSettings.cpp logs/RefreshSettings.h)
# PROGRAMVERSION of an exported log comes from the project's version.
set_property(SOURCE logs/AdifExport.cpp APPEND PROPERTY COMPILE_DEFINITIONS MARVIK_VERSION="${PROJECT_VERSION}")
