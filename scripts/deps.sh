#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those that are missing.
# Usage: scripts/deps.sh [build|test]
set -euo pipefail

packages=(cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev
          qt6-base-dev libqscintilla2-qt6-dev libgl-dev dbus)
if [ "${1:-build}" = test ]; then
  # Reference tools the tests compare against, a display for GUI tests, and
  # clang with its libFuzzer runtime for the fuzz targets.
  packages+=(pasmo z80dasm srecord xvfb xauth clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
