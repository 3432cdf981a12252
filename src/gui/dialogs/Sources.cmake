# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  dialogs/ImageViewer.cpp dialogs/ImageViewer.h)
