#!/usr/bin/env bash
# Builds Sarvo and runs every test twice: a normal build, then the kernel and
# application tests under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

gui="${SARVO_GUI:-ON}"
cmake -S . -B build -G Ninja -DSARVO_GUI="$gui" -DSARVO_BENCH=ON
cmake --build build
ctest --test-dir build --output-on-failure

cmake -S . -B build-asan -G Ninja -DSARVO_GUI=OFF -DSARVO_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build-asan
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
  ctest --test-dir build-asan --output-on-failure
