#!/usr/bin/env bash
# Rebuilds sarvo and rewrites the committed references of the regression tier
# (tests/regression/reference/) from the tree as it is.
#
# The references pin the exports of small seeded runs byte for byte. Any change
# of results they reveal must be intended: commit the new references together
# with the change that causes it, and explain in that commit why results moved.
#
# Usage: scripts/regenerate-references.sh [build directory, default build]
set -euo pipefail
cd "$(dirname "$0")/.."
root="$(pwd)"
build="${1:-build}"

# An existing build directory keeps its own configuration.
if [ -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" >/dev/null
else
  cmake -S . -B "$build" -G Ninja -DSARVO_GUI="${SARVO_GUI:-OFF}" >/dev/null
fi
cmake --build "$build" --target sarvo

for case_dir in tests/regression/*/; do
  name="$(basename "$case_dir")"
  [ "$name" = reference ] && continue
  [ -f "$case_dir/$name.bat" ] || continue
  cmake -DSARVO="$root/$build/sarvo/sarvo" \
        -DCASE_DIR="$root/tests/regression/$name" \
        -DCASE="$name" \
        -DREFERENCE_DIR="$root/tests/regression/reference/$name" \
        -DWORK_DIR="$root/$build/regression-update/$name" \
        -DUPDATE=ON \
        -P tests/regression/run_case.cmake
done
rm -rf "$build/regression-update"
echo "References rewritten; review them with git diff --stat tests/regression/reference"
