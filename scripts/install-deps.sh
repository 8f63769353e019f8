#!/usr/bin/env bash
# Installs every system package the project needs. Safe to run again: packages
# already present are skipped, and apt is only asked when something is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev libxkbcommon-dev
  libopenimageio-dev openimageio-tools libimath-dev libgif-dev libtiff-dev libpng-dev libdeflate-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev llvm
  xvfb xauth x11-apps fonts-dejavu-core libxcb1-dev
  python3 python3-numpy python3-pil python3-dev pybind11-dev
  desktop-file-utils appstream
  python3-skimage python-matplotlib-data
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
