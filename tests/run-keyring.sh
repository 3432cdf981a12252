#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a test program in a private D-Bus session with a GNOME keyring of its
# own, unlocked, in a throw-away home: the tests that store passwords use a
# real keyring and never the user's.
set -euo pipefail
if [ -n "${MARVIK_KEYRING_INNER:-}" ]; then
  printf 'marvik-test-keyring' | gnome-keyring-daemon --daemonize --unlock --components=secrets >/dev/null
  exec "$@"
fi
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
export HOME="$home" XDG_RUNTIME_DIR="$home/run" XDG_DATA_HOME="$home/.local/share" \
  XDG_CONFIG_HOME="$home/.config" MARVIK_KEYRING_INNER=1
# The keyring backend is chosen by the desktop; a KDE session would pick KWallet.
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION KDE_SESSION_VERSION
dbus-run-session -- "$0" "$@" 2> >(grep -v "Failed to set fd limit" >&2)
