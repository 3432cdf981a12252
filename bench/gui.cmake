# SPDX-License-Identifier: GPL-3.0-or-later
add_executable(bench_startup bench_startup.cpp BenchUtil.h)
target_link_libraries(bench_startup PRIVATE marvik_gui)
add_executable(bench_map bench_map.cpp BenchUtil.h)
target_link_libraries(bench_map PRIVATE marvik_gui)
add_dependencies(bench_map marvik_data)
