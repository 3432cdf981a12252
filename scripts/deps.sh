#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian packages Marvik builds, runs and tests with. Quiet and
# quick when they are all there already.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkgconf
  qt6-base-dev qt6-base-dev-tools qt6-webengine-dev qt6-image-formats-plugins libgl-dev
  libgumbo-dev libxdo-dev
  fonts-liberation  # the list text is measured in Arial and printed in Courier New: their metric twins
  libqt6sql6-sqlite qtkeychain-qt6-dev libsecret-1-0
)
test_packages=(
  clang libclang-rt-14-dev libbenchmark-dev
  xvfb xauth openbox xdotool x11-utils strace poppler-utils fonts-liberation imagemagick
  dbus-daemon gnome-keyring
  tzdata
  fonts-dejavu-core  # the translated headings are measured in the default desktop font
)

want=("${packages[@]}")
[ "${1:-}" = "--test" ] && want+=("${test_packages[@]}")

missing=()
for p in "${want[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
