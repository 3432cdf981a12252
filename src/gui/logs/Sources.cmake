# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  logs/ExportDialog.cpp logs/ExportDialog.h
  logs/LogTexts.cpp logs/LogTexts.h
  logs/LogsController.cpp logs/LogsController.h
  logs/RefreshProgress.cpp logs/RefreshProgress.h)
