#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the fuzz targets with clang and runs each for SECONDS seconds (the
# first argument, else FUZZ_SECONDS, else 10) from its seed corpus, then
# prints the executions per target. A crash fails the run once every target
# has had its turn; the input that crashed is kept in build/fuzz/artifacts/.
#   bash scripts/fuzz.sh 120     # two minutes per target
# FUZZ_SEED fixes libFuzzer's seed: the test command sets it, so its short
# run mutates the same way on every machine and a clean run here means the
# same inputs pass there (a faster machine goes a little further). Without
# it every run explores anew.
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
failed=""
for f in $fuzzers; do
  corpus=tests/fuzz/corpus/${f#fuzz_}
  work=$(mktemp -d)
  [ -d "$corpus" ] && cp -r "$corpus"/. "$work"/
  echo "fuzzing $f for ${seconds}s"
  log="$build/artifacts/$f.log"
  if ! (cd "$work" && "$OLDPWD/$build/bin/$f" ${FUZZ_SEED:+-seed="$FUZZ_SEED"} -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=4096 \
          -timeout=20 -print_final_stats=1 -artifact_prefix="$OLDPWD/$build/artifacts/$f-" . >"$OLDPWD/$log" 2>&1); then
    grep -E '^(==[0-9]+==ERROR|SUMMARY)|Test unit written' "$log" || tail -n 20 "$log"
    failed+=" $f"
  fi
  rm -rf "$work"
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  summary+=$(printf '%-16s %10s executions in %ss (%s/s)%s' "$f" "${runs:-?}" "$seconds" "$((${runs:-0} / seconds))" \
    "$(grep -q 'Test unit written' "$log" && echo ', CRASHED')")$'\n'
done
printf '%s' "$summary"
if [ -n "$failed" ]; then
  echo "fuzzing: crashes in$failed; see $build/artifacts/"
  exit 1
fi
echo "fuzzing: $(echo $fuzzers | wc -w) targets, no crash"
