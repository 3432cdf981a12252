#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Draws the nine map images anew into data/Maps: the Natural Earth packages
# from npm (pinned by package-lock.json), their geometry extracted by Node,
# drawn by mapgen through Marvik's own map fits.
#   bash tools/mapgen/regenerate.sh [BUILD_DIR]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${1:-$root/build/mapgen}
for tool in node npm cmake; do
  command -v "$tool" >/dev/null || { echo "regenerate.sh: $tool is missing (Debian: nodejs, npm, cmake)" >&2; exit 1; }
done

(cd "$here" && npm ci --no-audit --no-fund)
node "$here/extract.mjs" "$build/layers"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DMARVIK_TESTS=OFF -DMARVIK_BENCH=OFF >/dev/null
cmake --build "$build" --target mapgen
"$build/bin/mapgen" "$build/layers" "$root/data/Maps"
