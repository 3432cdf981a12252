# SPDX-License-Identifier: GPL-3.0-or-later
# Language files: the reader's rules, the five shipped files, and their
# installation into the data folder.
marvik_add_test(tst_languages SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_languages.cpp LABELS unit)
target_compile_definitions(tst_languages PRIVATE MARVIK_SHIPPED_DATA="${CMAKE_SOURCE_DIR}/data")
