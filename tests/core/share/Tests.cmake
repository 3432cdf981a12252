# SPDX-License-Identifier: GPL-3.0-or-later
# Sharing with EasyPal: list text, map-view addresses, the paste sequence and
# marvik-cli list-text (run as built).
marvik_add_test(tst_share SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_share.cpp LABELS unit)
add_dependencies(tst_share marvik-cli)
