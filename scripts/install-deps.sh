#!/usr/bin/env bash
# Installs the Debian packages Sarvo needs, and only those missing.
# SARVO_GUI=OFF skips the desktop libraries (servers that only run batches).
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config clang-format libgtest-dev libgmock-dev libbenchmark-dev libpng-dev)
if [ "${SARVO_GUI:-ON}" != "OFF" ]; then
  packages+=(libwxgtk3.2-dev libgl1-mesa-dev libglu1-mesa-dev freeglut3-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
