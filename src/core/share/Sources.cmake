# SPDX-License-Identifier: GPL-3.0-or-later
# Sharing with EasyPal: the list text, the map-view addresses and driving
# EasyPal's window.
target_sources(marvik_core PRIVATE
  share/ListText.cpp share/ListText.h
  share/PasteToEasyPal.cpp share/PasteToEasyPal.h
  share/StationView.cpp share/StationView.h
  share/TransmitterWindow.cpp share/TransmitterWindow.h)

# The X11 backend: libxdo has no pkg-config file, so the libraries are linked
# by name. Without them Marvik still builds and leaves the F7 to the user.
if(UNIX AND NOT APPLE)
  find_path(XDO_INCLUDE_DIR xdo.h)
  find_library(XDO_LIBRARY xdo)
  find_library(X11_LIBRARY X11)
  if(XDO_INCLUDE_DIR AND XDO_LIBRARY AND X11_LIBRARY)
    target_sources(marvik_core PRIVATE share/XdoSession.cpp share/XdoSession.h)
    target_compile_definitions(marvik_core PRIVATE MARVIK_HAVE_XDO)
    target_link_libraries(marvik_core PRIVATE ${XDO_LIBRARY} ${X11_LIBRARY})
  else()
    message(WARNING "libxdo or Xlib not found (libxdo-dev): Marvik cannot drive EasyPal's window")
  endif()
endif()
