# SPDX-License-Identifier: GPL-3.0-or-later
add_executable(bench_lookup ${CMAKE_CURRENT_LIST_DIR}/bench_lookup.cpp ${CMAKE_CURRENT_LIST_DIR}/BenchUtil.h)
# gumbo itself, for the baseline of a parse alone.
target_link_libraries(bench_lookup PRIVATE marvik_core PkgConfig::GUMBO)
add_executable(bench_pages ${CMAKE_CURRENT_LIST_DIR}/bench_pages.cpp)
target_link_libraries(bench_pages PRIVATE marvik_core)
