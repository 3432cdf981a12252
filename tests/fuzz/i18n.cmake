# SPDX-License-Identifier: GPL-3.0-or-later
# The language-file reader.
marvik_add_fuzzer(fuzz_language ${CMAKE_CURRENT_LIST_DIR}/fuzz_language.cpp)
