#!/bin/sh
# Regenerates wells/W1.flw, W2.flw and W3.flw from the reference run.
# Usage: make-wells.sh [path/to/sarvo]   (default: build/sarvo/sarvo of the repository)
set -e
here=$(cd "$(dirname "$0")" && pwd)
sarvo=${1:-$here/../../build/sarvo/sarvo}
cd "$here"
rm -f EXP_WELL40_10.flw EXP_WELL80_20.flw EXP_WELL100_30.flw
mkdir -p wells output
"$sarvo" -b reference.bat > output/reference.log
mv EXP_WELL40_10.flw wells/W1.flw
mv EXP_WELL80_20.flw wells/W2.flw
mv EXP_WELL100_30.flw wells/W3.flw
echo "wells/W1.flw wells/W2.flw wells/W3.flw made from reference.bat (trace in output/reference.log)"
