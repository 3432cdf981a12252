# SPDX-License-Identifier: GPL-3.0-or-later
# The ADIF readers, tagged and XML.
marvik_add_fuzzer(fuzz_adif ${CMAKE_CURRENT_LIST_DIR}/fuzz_adif.cpp)
