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

python3 - "$here" "$work" $seeds <<'PY'
import sys, os
sys.path.insert(0, sys.argv[1])
from flw import read_flw, facies_match

work, seeds = sys.argv[2], sys.argv[3:]
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
