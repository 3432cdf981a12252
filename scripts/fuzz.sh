#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the fuzz targets with clang and runs each for a short while
# (FUZZ_SECONDS, default 30) from its seed corpus. Any crash fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-30}
build=build/fuzz
CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DMARVIK_FUZZ=ON -DENABLE_SANITIZERS=ON -DMARVIK_WERROR=ON -DMARVIK_BENCH=OFF >/dev/null
fuzzers=$(cd tests/fuzz && ls fuzz_*.cpp | sed 's/\.cpp$//')
cmake --build "$build" --target $fuzzers
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=1
for f in $fuzzers; do
  corpus=tests/fuzz/corpus/${f#fuzz_}
  work=$(mktemp -d)
  [ -d "$corpus" ] && cp -r "$corpus"/. "$work"/
  echo "fuzzing $f for ${seconds}s"
  (cd "$work" && "$OLDPWD/$build/bin/$f" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=4096 \
     -timeout=20 -print_final_stats=0 . 2>&1 | tail -n 3)
  rm -rf "$work"
done
echo "fuzzing: $(echo $fuzzers | wc -w) targets, no crash"
