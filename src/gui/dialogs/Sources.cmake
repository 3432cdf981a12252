# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  dialogs/AddEditDialog.cpp dialogs/AddEditDialog.h
  dialogs/Beep.cpp dialogs/Beep.h
  dialogs/DialogButtons.cpp dialogs/DialogButtons.h
  dialogs/DialogsController.cpp dialogs/DialogsController.h
  dialogs/ImageViewer.cpp dialogs/ImageViewer.h
  dialogs/NewVersionDialog.cpp dialogs/NewVersionDialog.h
  dialogs/SetupDialog.cpp dialogs/SetupDialog.h)
