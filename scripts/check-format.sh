#!/usr/bin/env bash
# Fails when a tracked C++ file differs from what clang-format makes of it
# (the rules are in .clang-format); `clang-format -i FILE` mends one.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run -Werror
echo "clang-format: every tracked C++ file is formatted"
