# SPDX-License-Identifier: GPL-3.0-or-later
add_executable(bench_startup bench_startup.cpp BenchUtil.h)
target_link_libraries(bench_startup PRIVATE marvik_gui)
