# SPDX-License-Identifier: GPL-3.0-or-later
# The dialogs' rules without a window: where a call stands, how the boxes
# go into a row, the update page's version.
marvik_add_test(tst_dialogrules SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_dialogrules.cpp LABELS unit)
