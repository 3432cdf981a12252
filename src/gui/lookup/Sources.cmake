# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  lookup/AccountsDialog.cpp lookup/AccountsDialog.h
  lookup/LoginWindow.cpp lookup/LoginWindow.h
  lookup/LookupController.cpp lookup/LookupController.h)
