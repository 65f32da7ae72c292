#!/bin/sh
# Runs the conditioning example with its wells and the same run without them,
# and prints the mean facies match at the wells for both: the share of each
# well's height where the simulated column has the well's facies.
# Usage: measure.sh [path/to/sarvo]   (default: build/sarvo/sarvo of the repository)
# The example's wells must exist (examples/conditioning/make-wells.sh).
set -e
here=$(cd "$(dirname "$0")" && pwd)
example=$here/../../examples/conditioning
sarvo=${1:-$here/../../build/sarvo/sarvo}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for run in conditioned free; do
    mkdir -p "$work/$run/output"
    cp -r "$example/wells" "$work/$run/"
    if [ $run = conditioned ]; then
        cp "$example/conditioned.bat" "$work/$run/run.bat"
    else
        # The same batch with no well: only the extractions are kept.
        grep -v -e '^WELL_' -e '^STATS_COND_FILE' -e '^HISTO_' -e '^COND_' "$example/conditioned.bat" > "$work/$run/run.bat"
    fi
    "$sarvo" -b "$work/$run/run.bat" > "$work/$run/run.log" 2>&1 || { tail -5 "$work/$run/run.log"; exit 1; }
done

python3 - "$work" <<'PY'
import sys, os, re

def read_flw(path):
    keys, rows, data = {}, [], False
    for line in open(path):
        line = line.strip()
        if line.startswith('~A'):
            data = True
            continue
        if not line or line.startswith('#'):
            continue
        if data:
            rows.append(line.split())
        elif '=' in line:
            k, v = line.split('=', 1)
            keys[k.strip()] = v.strip()
    top = float(keys['Z_TOP'])
    # Top first: facies, depth of the bottom below the top, height.
    return [(int(r[0]), top - float(r[1]), top - float(r[1]) + float(r[2])) for r in rows]

def facies_match(well, column):
    zb = min(s[1] for s in well)
    zt = max(s[2] for s in well)
    same = 0.
    for f, b, t in well:
        for g, cb, ct in column:
            if f == g:
                same += max(0., min(t, ct) - max(b, cb))
    return same / (zt - zb) if zt > zb else 0.

work = sys.argv[1]
pairs = [('W1', 'EXP_WELL40_10.flw'), ('W2', 'EXP_WELL80_20.flw'), ('W3', 'EXP_WELL100_30.flw')]
for run in ('conditioned', 'free'):
    matches = []
    for well, extracted in pairs:
        w = read_flw(os.path.join(work, run, 'wells', well + '.flw'))
        c = read_flw(os.path.join(work, run, extracted))
        matches.append(facies_match(w, c))
    print('%-12s mean facies_match = %.3f  (%s)' % (run, sum(matches) / len(matches),
          ', '.join('%s %.3f' % (p[0], m) for p, m in zip(pairs, matches))))
stats = os.path.join(work, 'conditioned', 'output', 'conditioned_stats.csv')
lines = open(stats).read().split('\n')[1:]
values = [float(l.split(';')[8]) for l in lines if l]
print('kernel STATS_COND_FILE mean facies_match (conditioned) = %.3f' % (sum(values) / len(values)))
PY
