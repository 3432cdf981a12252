# SPDX-License-Identifier: GPL-3.0-or-later
# Sharing with EasyPal: printing the list.
find_package(Qt6 6.4 REQUIRED COMPONENTS PrintSupport)
target_link_libraries(marvik_gui PUBLIC Qt6::PrintSupport)
target_sources(marvik_gui PRIVATE
  share/ListPrinter.cpp share/ListPrinter.h)
# The sharing part wired into the main window, and the capture window.
target_sources(marvik_gui PRIVATE
  share/CaptureWindow.cpp share/CaptureWindow.h
  share/ShareController.cpp share/ShareController.h)
