# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_core PRIVATE
  dialogs/AddEdit.cpp dialogs/AddEdit.h
  dialogs/NewVersion.cpp dialogs/NewVersion.h
  dialogs/OwnStation.cpp dialogs/OwnStation.h)
