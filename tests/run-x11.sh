#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a test program on a private X server with a window manager, for the
# tests that need real windows (focus, activation, screen grabs).
set -euo pipefail
if [ -n "${MARVIK_X11_INNER:-}" ]; then
  openbox >/dev/null 2>&1 &
  wm=$!
  sleep 0.5
  status=0
  "$@" || status=$?
  kill "$wm" 2>/dev/null || true
  exit "$status"
fi
export MARVIK_X11_INNER=1
unset QT_QPA_PLATFORM
exec xvfb-run -a -s "-screen 0 1600x1000x24" "$0" "$@"
