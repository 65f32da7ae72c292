#!/usr/bin/env python3
"""Conditioning measured over many reference realisations, not only the example's.

For each reference seed, runs examples/conditioning/reference.bat with that
seed, takes its three extracted columns as wells, then runs conditioned.bat
(with those wells) and the same batch without wells for each conditioned
seed, and prints the mean facies match at the wells for both. The example's
own figure (measure.sh) is one cell of this table; this one says how much of
it is the method and how much the wells drawn.

Usage: realisations.py [--sarvo PATH] [--refs 1-20] [--seeds 777,1,2,3]
                       [--relax PERCENT] [--set KEY=VALUE ...] [--work DIR]
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
from flw import read_flw, facies_match  # noqa: E402

EXAMPLE = os.path.join(HERE, '..', '..', 'examples', 'conditioning')
EXTRACTED = ['EXP_WELL40_10.flw', 'EXP_WELL80_20.flw', 'EXP_WELL100_30.flw']


def seed_list(text):
    seeds = []
    for part in text.split(','):
        if '-' in part:
            lo, hi = part.split('-')
            seeds += [str(s) for s in range(int(lo), int(hi) + 1)]
        else:
            seeds.append(part)
    return seeds


def run(sarvo, workdir, batch_text):
    with open(os.path.join(workdir, 'run.bat'), 'w') as f:
        f.write(batch_text)
    done = subprocess.run([sarvo, '-b', 'run.bat'], cwd=workdir, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit('sarvo failed in %s:\n%s' % (workdir, done.stdout[-2000:]))
    return done.stdout


def batch(name, seed, **settings):
    """The example's batch with this seed; each setting replaces its key or,
    when the batch has none, is added to its last sequence."""
    text = open(os.path.join(EXAMPLE, name)).read()
    text = re.sub(r'^SIM_SEED = .*$', 'SIM_SEED = %s' % seed, text, flags=re.M)
    for key, value in settings.items():
        line = '%s = %s' % (key, value)
        text, found = re.subn(r'^%s = .*$' % key, line, text, flags=re.M)
        if not found:
            text = text.rstrip('\n') + '\n' + line + '\n'
    return text


def without_wells(text):
    return '\n'.join(l for l in text.split('\n') if not re.match(r'^(WELL_|STATS_COND|HISTO_|COND_)', l))


def mean_match(wells, workdir):
    return sum(facies_match(w, read_flw(os.path.join(workdir, e))) for w, e in zip(wells, EXTRACTED)) / len(wells)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('--sarvo', default=os.path.join(HERE, '..', '..', 'build', 'sarvo', 'sarvo'))
    parser.add_argument('--refs', default='1-20')
    parser.add_argument('--seeds', default='777,1,2,3')
    parser.add_argument('--relax', default=None, help='COND_WELL_RELAX of the conditioned runs')
    parser.add_argument('--set', action='append', default=[], metavar='KEY=VALUE',
                        help='a keyword of the conditioned runs (repeatable)')
    parser.add_argument('--work', default=None)
    args = parser.parse_args()
    sarvo = os.path.abspath(args.sarvo)
    work = args.work or tempfile.mkdtemp()
    seeds = seed_list(args.seeds)
    replace = {} if args.relax is None else {'COND_WELL_RELAX': args.relax}
    for setting in args.set:
        key, value = setting.split('=', 1)
        replace[key.strip()] = value.strip()
    totals = {'conditioned': [], 'free': []}
    print('reference floods  conditioned  free   (conditioned by seed %s)' % ','.join(seeds))
    for ref in seed_list(args.refs):
        workdir = os.path.join(work, 'ref%s' % ref)
        shutil.rmtree(workdir, ignore_errors=True)
        os.makedirs(os.path.join(workdir, 'wells'))
        os.makedirs(os.path.join(workdir, 'output'))
        floods = run(sarvo, workdir, batch('reference.bat', ref)).count('Overbank Flow')
        wells = [read_flw(os.path.join(workdir, e)) for e in EXTRACTED]
        for k, e in enumerate(EXTRACTED):
            shutil.move(os.path.join(workdir, e), os.path.join(workdir, 'wells', 'W%d.flw' % (k + 1)))
        by_seed = {'conditioned': [], 'free': []}
        for seed in seeds:
            conditioned = batch('conditioned.bat', seed, **replace)
            for kind, text in (('conditioned', conditioned), ('free', without_wells(conditioned))):
                run(sarvo, workdir, text)
                by_seed[kind].append(mean_match(wells, workdir))
        means = {k: sum(v) / len(v) for k, v in by_seed.items()}
        for k in totals:
            totals[k].append(means[k])
        print('%9s %6d  %11.3f  %5.3f  (%s)' % (ref, floods, means['conditioned'], means['free'],
                                               ' '.join('%.2f' % m for m in by_seed['conditioned'])), flush=True)
    count = len(totals['free'])
    print('mean over %d references: conditioned %.3f, free %.3f' % (
        count, sum(totals['conditioned']) / count, sum(totals['free']) / count))
    if args.work is None:
        shutil.rmtree(work)


if __name__ == '__main__':
    main()
