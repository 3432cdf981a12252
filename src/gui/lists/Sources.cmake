# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  lists/HeadingBar.cpp lists/HeadingBar.h
  lists/ListGrid.cpp lists/ListGrid.h
  lists/ListNamesDialog.cpp lists/ListNamesDialog.h
  lists/ListsController.cpp lists/ListsController.h
  lists/ThumbnailDelegate.cpp lists/ThumbnailDelegate.h)
