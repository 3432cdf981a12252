# SPDX-License-Identifier: GPL-3.0-or-later
# The start-up benchmark and its baseline: a bare window linked with Qt
# Widgets alone, so its start carries no part of Marvik.
add_executable(bench_bare_window bench_bare_window.cpp ProcessInfo.cpp ProcessInfo.h)
target_link_libraries(bench_bare_window PRIVATE Qt6::Widgets)
add_executable(bench_startup bench_startup.cpp ProcessInfo.cpp ProcessInfo.h BenchUtil.h)
target_link_libraries(bench_startup PRIVATE marvik_gui)
# The tests' way of pointing the callbooks at a closed port.
target_include_directories(bench_startup PRIVATE ${CMAKE_SOURCE_DIR}/tests)
# Started by bench_startup from beside it; the shipped data (icons, the
# default Marvik.cfg) as an installation has it.
add_dependencies(bench_startup bench_bare_window marvik_data)
add_executable(bench_map bench_map.cpp BenchUtil.h)
target_link_libraries(bench_map PRIVATE marvik_gui)
add_dependencies(bench_map marvik_data)
