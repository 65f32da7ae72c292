#!/usr/bin/env bash
# Rebuilds sarvo and rewrites doc/KEYWORDS.md from `sarvo --keywords`, the
# reference built from the parameter and keyword declarations. Commit the file
# with the change of declarations that moved it; a test fails while it is stale.
#
# Usage: scripts/update-keywords.sh [build directory, default build]
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build}"

# An existing build directory keeps its own configuration.
if [ -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" >/dev/null
else
  cmake -S . -B "$build" -G Ninja -DSARVO_GUI="${SARVO_GUI:-OFF}" >/dev/null
fi
cmake --build "$build" --target sarvo
"$build/sarvo/sarvo" --keywords > doc/KEYWORDS.md
echo "Wrote doc/KEYWORDS.md"
