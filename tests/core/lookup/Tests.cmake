# SPDX-License-Identifier: GPL-3.0-or-later
# Lookup tests: page text, page readers, and requests against a local server
# that plays the callbooks and the picture host (nothing leaves 127.0.0.1).
set(_lookup_tests ${CMAKE_CURRENT_LIST_DIR})
marvik_add_test(tst_htmltext SOURCES ${_lookup_tests}/tst_htmltext.cpp LABELS unit)
marvik_add_test(tst_pagereader SOURCES ${_lookup_tests}/tst_pagereader.cpp LABELS unit)
marvik_add_test(tst_lookup
  SOURCES ${_lookup_tests}/tst_lookup.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.h
  LIBS Qt6::Network LABELS unit TIMEOUT 120)
# The command-line tests run the built marvik-cli.
add_dependencies(tst_lookup marvik-cli)
include(${CMAKE_CURRENT_LIST_DIR}/services/Tests.cmake)
