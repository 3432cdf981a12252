# SPDX-License-Identifier: GPL-3.0-or-later
# Printing the list: a PDF read back with poppler-utils.
marvik_add_test(tst_listprinter SOURCES ${CMAKE_CURRENT_LIST_DIR}/tst_listprinter.cpp LIBS marvik_gui LABELS gui)
