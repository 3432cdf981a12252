#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Marvik with warnings as errors and the address and undefined-behaviour
# sanitizers, runs every test, then runs the fuzz targets for a short while.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh --test
build=build/test
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DENABLE_SANITIZERS=ON -DMARVIK_WERROR=ON >/dev/null
cmake --build "$build"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
(cd "$build" && ctest --output-on-failure --timeout 600 -j2)
FUZZ_SEED=${FUZZ_SEED:-1} bash scripts/fuzz.sh "${FUZZ_SECONDS:-20}"
