#!/usr/bin/env bash
# Builds Sarvo and runs the default batch simulation of examples/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja -DSARVO_GUI="${SARVO_GUI:-ON}"
cmake --build build --target sarvo
cd examples/default
mkdir -p output
../../build/sarvo/sarvo -b default.bat
