#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the fuzz targets with clang and runs each for SECONDS seconds (the
# first argument, else FUZZ_SECONDS, else 10) from its seed corpus, then
# prints the executions per target. Any crash fails the run; the input that
# crashed is kept in build/fuzz/artifacts/.
#   bash scripts/fuzz.sh 120     # two minutes per target
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-${FUZZ_SECONDS:-10}}
build=build/fuzz
CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DMARVIK_FUZZ=ON -DENABLE_SANITIZERS=ON -DMARVIK_WERROR=ON -DMARVIK_BENCH=OFF >/dev/null
fuzzers=$(cd tests/fuzz && ls fuzz_*.cpp | sed 's/\.cpp$//')
cmake --build "$build" --target $fuzzers
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=1
mkdir -p "$build/artifacts"
summary=""
for f in $fuzzers; do
  corpus=tests/fuzz/corpus/${f#fuzz_}
  work=$(mktemp -d)
  [ -d "$corpus" ] && cp -r "$corpus"/. "$work"/
  echo "fuzzing $f for ${seconds}s"
  log="$build/artifacts/$f.log"
  if ! (cd "$work" && "$OLDPWD/$build/bin/$f" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=4096 \
          -timeout=20 -print_final_stats=1 -artifact_prefix="$OLDPWD/$build/artifacts/$f-" . >"$OLDPWD/$log" 2>&1); then
    tail -n 30 "$log"
    rm -rf "$work"
    echo "fuzzing: $f failed; see $log and $build/artifacts/"
    exit 1
  fi
  rm -rf "$work"
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  summary+=$(printf '%-16s %10s executions in %ss (%s/s)' "$f" "$runs" "$seconds" "$((runs / seconds))")$'\n'
done
printf '%s' "$summary"
echo "fuzzing: $(echo $fuzzers | wc -w) targets, no crash"
