# SPDX-License-Identifier: GPL-3.0-or-later
# Logs: ADIF read and written, lists imported and exported, whole lists
# refreshed, in the library and through marvik-cli.
set(_logs_tests ${CMAKE_CURRENT_LIST_DIR})
marvik_add_test(tst_adif SOURCES ${_logs_tests}/tst_adif.cpp LABELS unit)
target_compile_definitions(tst_adif PRIVATE MARVIK_VERSION="${PROJECT_VERSION}")
add_dependencies(tst_adif marvik-cli)
marvik_add_test(tst_listrefresh
  SOURCES ${_logs_tests}/tst_listrefresh.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.h
  LIBS Qt6::Network LABELS unit TIMEOUT 300)
add_dependencies(tst_listrefresh marvik-cli)
