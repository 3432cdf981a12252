#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a test program on a private X server with a window manager, for the
# tests that need real windows (focus, activation, screen grabs).
set -euo pipefail
if [ -n "${MARVIK_X11_INNER:-}" ]; then
  # MARVIK_X11_NO_WM: a bare X server, for what must work without a window manager.
  wm=""
  if [ -z "${MARVIK_X11_NO_WM:-}" ]; then
    openbox >/dev/null 2>&1 &
    wm=$!
    sleep 0.5
  fi
  status=0
  "$@" || status=$?
  if [ -n "$wm" ]; then kill "$wm" 2>/dev/null || true; fi
  exit "$status"
fi
export MARVIK_X11_INNER=1
unset QT_QPA_PLATFORM
# The private X server is the only display the test may see.
unset WAYLAND_DISPLAY
exec xvfb-run -a -s "-screen 0 1600x1000x24" "$0" "$@"
