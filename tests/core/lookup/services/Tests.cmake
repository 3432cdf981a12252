# SPDX-License-Identifier: GPL-3.0-or-later
# Data services: answer parsers, clients against the local server, the
# lookup cache, the keyring and the lookup that falls back between sources.
set(_services_tests ${CMAKE_CURRENT_LIST_DIR})
marvik_add_test(tst_serviceanswers SOURCES ${_services_tests}/tst_serviceanswers.cpp LABELS unit)
set(_service_server
  ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.cpp ${CMAKE_SOURCE_DIR}/tests/support/CallbookServer.h
  ${CMAKE_SOURCE_DIR}/tests/support/ServicePlayer.cpp ${CMAKE_SOURCE_DIR}/tests/support/ServicePlayer.h)
marvik_add_test(tst_serviceclient SOURCES ${_services_tests}/tst_serviceclient.cpp ${_service_server}
  LIBS Qt6::Network LABELS unit TIMEOUT 120)
marvik_add_test(tst_lookupcache SOURCES ${_services_tests}/tst_lookupcache.cpp LABELS unit)
marvik_add_test(tst_callbooklookup SOURCES ${_services_tests}/tst_callbooklookup.cpp ${_service_server}
  LIBS Qt6::Network LABELS unit TIMEOUT 180)
# No test may reach a user's real keyring: the session bus is out of reach.
set_property(TEST tst_callbooklookup APPEND PROPERTY ENVIRONMENT DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent)
marvik_add_test(tst_servicecli SOURCES ${_services_tests}/tst_servicecli.cpp ${_service_server}
  LIBS Qt6::Network LABELS unit TIMEOUT 300)
add_dependencies(tst_servicecli marvik-cli)
# Twice: with no session bus (no keyring: the run-only path), and inside a
# private session with a real, unlocked keyring.
marvik_add_test(tst_credentials SOURCES ${_services_tests}/tst_credentials.cpp ${_service_server}
  LIBS Qt6::Network LABELS unit TIMEOUT 180)
add_dependencies(tst_credentials marvik-cli)
set_property(TEST tst_credentials APPEND PROPERTY ENVIRONMENT DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent)
add_test(NAME tst_credentials_keyring COMMAND ${CMAKE_SOURCE_DIR}/tests/run-keyring.sh $<TARGET_FILE:tst_credentials>)
get_property(_credentials_env TEST tst_credentials PROPERTY ENVIRONMENT)
list(FILTER _credentials_env EXCLUDE REGEX "^DBUS_SESSION_BUS_ADDRESS=")
set_tests_properties(tst_credentials_keyring PROPERTIES LABELS unit TIMEOUT 180
  ENVIRONMENT "${_credentials_env};MARVIK_KEYRING_EXPECTED=1")
