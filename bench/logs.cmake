# SPDX-License-Identifier: GPL-3.0-or-later
add_executable(bench_adif ${CMAKE_CURRENT_LIST_DIR}/bench_adif.cpp ${CMAKE_CURRENT_LIST_DIR}/BenchUtil.h)
target_link_libraries(bench_adif PRIVATE marvik_core)
