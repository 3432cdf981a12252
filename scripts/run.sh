#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Marvik (installing what it needs) and starts it. Arguments go to Marvik.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMARVIK_TESTS=OFF -DMARVIK_BENCH=OFF >/dev/null
cmake --build build/release --target marvik marvik-cli marvik_data
exec build/release/bin/marvik "$@"
