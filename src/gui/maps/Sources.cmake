# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  maps/MapController.cpp maps/MapController.h
  maps/MapWindow.cpp maps/MapWindow.h)
