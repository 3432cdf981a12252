# SPDX-License-Identifier: GPL-3.0-or-later
# Printing the list: a PDF read back with poppler-utils.
marvik_add_test(tst_listprinter SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_listprinter.cpp LIBS marvik_gui LABELS gui)
# The sharing commands through the real main window.
marvik_add_test(tst_sharecontroller SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_sharecontroller.cpp
  ${CMAKE_SOURCE_DIR}/tests/support/GuiTestUtil.h LIBS marvik_gui LABELS gui)
# Paste to EasyPal from the main window's menu, into the stand-in EasyPal.
marvik_add_test(tst_pastefrommenu SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_pastefrommenu.cpp
  ${CMAKE_SOURCE_DIR}/tests/support/FakeEasyPal.h X11 LIBS marvik_gui LABELS x11 TIMEOUT 180)
add_dependencies(tst_pastefrommenu fake_easypal)
# The capture window: a real web page on an X server, where the browser paints.
marvik_add_test(tst_capturewindow SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_capturewindow.cpp
  ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.h
  ${CMAKE_SOURCE_DIR}/tests/support/FakeEasyPal.h ${CMAKE_SOURCE_DIR}/tests/support/GuiTestUtil.h
  X11 LIBS marvik_gui Qt6::Network LABELS x11 TIMEOUT 240)
# Chromium frees some objects through a base type of another size; that is
# inside Qt WebEngine, not Marvik.
set_property(TEST tst_capturewindow APPEND PROPERTY ENVIRONMENT ASAN_OPTIONS=new_delete_type_mismatch=0:fast_unwind_on_malloc=0)
add_dependencies(tst_capturewindow marvik_web fake_easypal)
add_dependencies(tst_sharecontroller marvik-cli)
