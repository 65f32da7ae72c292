#!/usr/bin/env bash
# Installs the Debian packages Sarvo needs, and only those missing.
# SARVO_GUI=OFF skips the desktop libraries (servers that only run batches).
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config clang-format libgtest-dev libgmock-dev libbenchmark-dev libpng-dev)
# zlib compresses the VTK export of the block.
packages+=(zlib1g-dev)
# The Python package and its tests, in Debian's own interpreter: pybind11 and
# numpy to build it, pytest, VTK's and OPM's readers for the exports, Dask for
# ensembles, and a virtual display to render pictures with VTK.
# SARVO_PYTHON=OFF skips them.
if [ "${SARVO_PYTHON:-ON}" != "OFF" ]; then
  packages+=(python3 pybind11-dev python3-numpy python3-pytest python3-vtk9 python3-opm-common
             python3-distributed xvfb xauth)
fi
if [ "${SARVO_GUI:-ON}" != "OFF" ]; then
  packages+=(libwxgtk3.2-dev libgl1-mesa-dev libglu1-mesa-dev freeglut3-dev)
  # The desktop and block view tests draw on a virtual display with Mesa's software OpenGL.
  packages+=(xvfb xauth libgl1-mesa-dri)
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
