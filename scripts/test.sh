#!/usr/bin/env bash
# Builds Sarvo and runs every test twice: a normal build, then the kernel and
# application tests under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
# The tests are independent (each regression case works in its own folder):
# they run on every core.
jobs="$(nproc)"
scripts/install-deps.sh

gui="${SARVO_GUI:-ON}"
# The Python package is built for Debian's interpreter (where its packages
# live), whatever python3 comes first on the PATH; its tests carry the label
# "python" in the run below.
python="${SARVO_PYTHON:-ON}"
# Both builds compile each library folder in a few batches (unity build):
# the headers are parsed once per batch rather than once per file.
cmake -S . -B build -G Ninja -DSARVO_GUI="$gui" -DSARVO_BENCH=ON -DSARVO_PYTHON="$python" \
  -DPython3_EXECUTABLE=/usr/bin/python3 -DCMAKE_UNITY_BUILD=ON
cmake --build build
ctest --test-dir build -j"$jobs" --output-on-failure

# The sanitized build is optimised lightly and keeps line tables only (-O1
# -g1): enough for the sanitizers' stack traces, at about half the compile time.
cmake -S . -B build-asan -G Ninja -DSARVO_GUI=OFF -DSARVO_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" -DSARVO_PYTHON=OFF -DCMAKE_UNITY_BUILD=ON
cmake --build build-asan
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
  ctest --test-dir build-asan -j"$jobs" --output-on-failure
