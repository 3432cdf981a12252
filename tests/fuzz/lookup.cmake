# SPDX-License-Identifier: GPL-3.0-or-later
# Lookup fuzzers: the page decoder and innerText, and the readers of all
# five callbooks.
marvik_add_fuzzer(fuzz_innertext ${CMAKE_CURRENT_LIST_DIR}/fuzz_innertext.cpp)
marvik_add_fuzzer(fuzz_readers ${CMAKE_CURRENT_LIST_DIR}/fuzz_readers.cpp)
# The data services' answer parsers, one target each.
foreach(_service qrz hamqth qrzcq callook)
  marvik_add_fuzzer(fuzz_${_service}answer ${CMAKE_CURRENT_LIST_DIR}/fuzz_${_service}answer.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ServiceAnswerFuzz.h)
endforeach()
