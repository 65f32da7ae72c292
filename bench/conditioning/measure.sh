#!/bin/sh
# Runs the conditioning example with its wells and the same run without them,
# and prints the mean facies match at the wells for both: the share of each
# well's height where the simulated column has the well's facies.
# Usage: measure.sh [path/to/sarvo] [seed ...]
#   (default sarvo: build/sarvo/sarvo of the repository; default seed: the
#   example's own). With several seeds, each seed's line is printed and then
#   the mean over the seeds.
# The example's wells must exist (examples/conditioning/make-wells.sh).
set -e
here=$(cd "$(dirname "$0")" && pwd)
example=$here/../../examples/conditioning
sarvo=${1:-$here/../../build/sarvo/sarvo}
[ $# -gt 0 ] && shift
seeds=${*:-example}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for seed in $seeds; do
    for run in conditioned free; do
        dir=$work/$seed/$run
        mkdir -p "$dir/output"
        cp -r "$example/wells" "$dir/"
        if [ $run = conditioned ]; then
            cp "$example/conditioned.bat" "$dir/run.bat"
        else
            # The same batch with no well: only the extractions are kept.
            grep -v -e '^WELL_' -e '^STATS_COND_FILE' -e '^HISTO_' -e '^COND_' "$example/conditioned.bat" > "$dir/run.bat"
        fi
        [ "$seed" = example ] || sed -i "s/^SIM_SEED = .*/SIM_SEED = $seed/" "$dir/run.bat"
        "$sarvo" -b "$dir/run.bat" > "$dir/run.log" 2>&1 || { tail -5 "$dir/run.log"; exit 1; }
    done
done

python3 - "$work" $seeds <<'PY'
import sys, os

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

work, seeds = sys.argv[1], sys.argv[2:]
pairs = [('W1', 'EXP_WELL40_10.flw'), ('W2', 'EXP_WELL80_20.flw'), ('W3', 'EXP_WELL100_30.flw')]
totals = {'conditioned': [], 'free': []}
for seed in seeds:
    for run in ('conditioned', 'free'):
        dir = os.path.join(work, seed, run)
        matches = [facies_match(read_flw(os.path.join(dir, 'wells', w + '.flw')),
                                read_flw(os.path.join(dir, e))) for w, e in pairs]
        mean = sum(matches) / len(matches)
        totals[run].append(mean)
        print('seed %-8s %-12s mean facies_match = %.3f  (%s)' % (seed, run, mean,
              ', '.join('%s %.3f' % (p[0], m) for p, m in zip(pairs, matches))))
    stats = os.path.join(work, seed, 'conditioned', 'output', 'conditioned_stats.csv')
    lines = open(stats).read().split('\n')[1:]
    values = [float(l.split(';')[8]) for l in lines if l]
    print('seed %-8s kernel STATS_COND_FILE mean facies_match (conditioned) = %.3f' % (seed, sum(values) / len(values)))
if len(seeds) > 1:
    for run in ('conditioned', 'free'):
        print('over %d seeds %-12s mean facies_match = %.3f' % (len(seeds), run, sum(totals[run]) / len(seeds)))
PY
