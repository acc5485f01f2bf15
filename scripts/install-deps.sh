#!/usr/bin/env bash
# Installs the Debian 12 packages Kestrelon builds, tests and runs with, and
# only those that are missing, so a second run costs nothing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build clang libclang-rt-14-dev
  libgtest-dev libgmock-dev
  qt6-base-dev qt6-base-dev-tools qt6-serialport-dev libgl-dev libx11-dev
  nlohmann-json3-dev libsndfile1-dev libzstd-dev
  libcodec2-dev codec2-examples libspeex-dev libsdl2-dev
  xvfb xauth sox imagemagick
  dpkg-dev desktop-file-utils appstream help2man
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
