# SPDX-License-Identifier: GPL-3.0-or-later
add_executable(bench_cache ${CMAKE_CURRENT_LIST_DIR}/bench_cache.cpp ${CMAKE_CURRENT_LIST_DIR}/BenchUtil.h)
target_link_libraries(bench_cache PRIVATE marvik_core)
