#!/usr/bin/env python3
"""Measures how well the non-expert inference (Nexus) delivers what it is asked.

One command runs a grid of requests, each a batch with NEXUS_HMAX, NEXUS_ISBX,
NEXUS_SAND and NEXUS_GRID = 1, reads what was obtained from the trace ("Global
Net to Gross (%)", "Mean Sand Bodies Extension Index") and writes a Markdown
table to doc/NEXUS_RESULTS.md:

    python3 bench/calibration/nexus_grid.py --sarvo build/sarvo/sarvo

Every run is seeded, so the table is reproducible. Each request runs with
several seeds (--seeds, 3 by default) and the table gives the mean and the
range of what they obtained: one run of a deep channel holds only a few
avulsions, and its net to gross alone scatters by about 8 points. Runs go
--jobs at a time (2 by default; the simulator uses one core).

Choices:
- ISBX 30, 80 and 150: a narrow belt (a channel that avulses before it has
  swept three widths), about the typical value of the default system (74),
  and a wide belt of about twelve widths, near the top of the usual range
  while leaving room below the bound of 200 for the scatter of one run.
- A fixed number of iterations (LAUNCH_IT, 10000 by default) rather than a
  run up to an upper limit: with an upper limit a request of high net to
  gross (weak floods, slow aggradation) would run several times longer than
  one of low net to gross, and one of low net to gross would stop before
  several avulsions. 10000 iterations hold several channel lives (regional
  and local avulsions together) for the longest avulsion interval of the
  grid (ISBX 150), and the whole grid stays near ten minutes on one core.
- The grid the inference chooses (NEXUS_GRID = 1: default node counts, lags
  following the channel width) is kept as it is: the forecasts the
  inference inverts depend on the extent of the grid across the flow, so
  shrinking it after the inference would measure another request.
"""

import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", ".."))
OUTPUT = os.path.join(ROOT, "doc", "NEXUS_RESULTS.md")

DEPTHS = (2.0, 6.0, 10.0)
SANDS = (0.2, 0.4, 0.6, 0.8)
ISBXS = (("low", 30.0), ("medium", 80.0), ("high", 150.0))
ITERATIONS = 10000
STATS_EVERY = 500
FIRST_SEED = 1001
# The k-th seed of a request is its first one plus k times this.
SEED_STEP = 1000
SEEDS = 3
JOBS = 2
NTG_TARGET = 10.0

NUMBER = r"([-+0-9.eE]+|NA)"
TRACE_VALUES = {
    "ntg": r"Global Net to Gross \(%\): " + NUMBER,
    "isbx": r"Mean Sand Bodies Extension Index: " + NUMBER,
    "forecast_ntg": r"Forecast Net to Gross \(%\): " + NUMBER,
    "forecast_isbx": r"Forecast Sand Bodies Extension Index: " + NUMBER,
    "regional": r"AV_REG_POISSON = " + NUMBER,
    "intensity": r"AG_OB_NORM_MEAN = " + NUMBER,
}


def batch_text(depth, sand, isbx, seed, iterations, stats_file):
    lines = [
        "[GLOBAL]",
        "FORCE_SIMU = 1",
        "STATS_IT = %d" % STATS_EVERY,
        "STATS_FILE = %s" % stats_file,
        "[NEW_SEQ]",
        "SIM_SEED = %d" % seed,
        "NEXUS_HMAX = %g" % depth,
        "NEXUS_ISBX = %g" % isbx,
        "NEXUS_SAND = %g" % sand,
        "NEXUS_GRID = 1",
        "LAUNCH_IT = %d" % iterations,
    ]
    return "\n".join(lines) + "\n"


def parse_trace(text):
    values = {}
    for key, pattern in TRACE_VALUES.items():
        found = re.findall(pattern, text)
        values[key] = float(found[-1]) if found and found[-1] != "NA" else float("nan")
    return values


def last_stats(path):
    """Avulsions and cutoffs of the last statistics line."""
    try:
        with open(path) as f:
            lines = [line.strip() for line in f if line.strip()]
    except OSError:
        return {}
    if len(lines) < 2:
        return {}
    row = dict(zip(lines[0].split(";"), lines[-1].split(";")))
    return {"avulsions": int(float(row.get("Obsv_Nb_av", "nan"))),
            "cutoffs": int(float(row.get("Obsv_Nb_cutoff", "nan")))}


def run_request(sarvo, workdir, index, depth, sand, isbx, seed, iterations):
    batch = os.path.join(workdir, "nexus%02d.bat" % index)
    stats = os.path.join(workdir, "nexus%02d_stats.csv" % index)
    with open(batch, "w") as f:
        f.write(batch_text(depth, sand, isbx, seed, iterations, stats))
    result = subprocess.run([sarvo, "-s", "-b", batch], cwd=workdir, capture_output=True, text=True)
    values = parse_trace(result.stdout + result.stderr)
    if result.returncode != 0 or values["ntg"] != values["ntg"]:
        sys.exit("run %d failed (%d):\n%s" % (index, result.returncode, (result.stdout + result.stderr)[-3000:]))
    values.update(last_stats(stats))
    return values


def ordered(rows):
    """For each depth and net to gross, whether the obtained ISBX follow the requests."""
    verdicts = []
    for depth in DEPTHS:
        for sand in SANDS:
            series = [r["isbx"] for r in rows if r["depth"] == depth and r["sand"] == sand]
            verdicts.append((depth, sand, all(a < b for a, b in zip(series, series[1:])), series))
    return verdicts


def markdown(rows, iterations, seeds, seconds, sarvo):
    errors = [abs(r["ntg"] - 100.0 * r["sand"]) for r in rows]
    run_errors = [abs(v - 100.0 * r["sand"]) for r in rows for v in r["ntg_runs"]]
    verdicts = ordered(rows)
    out = ["# Nexus: requested and obtained", "",
           "Written by `bench/calibration/nexus_grid.py`; do not edit by hand.", "",
           "Each line is one request, run as %d fluvial runs of %d iterations with seeds `seed`, `seed` + %d, ...: a "
           "batch with `NEXUS_HMAX`, `NEXUS_SAND`, `NEXUS_ISBX` as requested and `NEXUS_GRID = 1`. \"Obtained\" is "
           "what the batches printed at the end of the sequence (\"Global Net to Gross (%%)\", \"Mean Sand Bodies "
           "Extension Index\"): the mean over the seeds, and the range of the single runs; \"forecast\" is what the "
           "inference promised (\"Forecast ...\" lines). The regional avulsion period and the flood intensity are "
           "the two parameters the inference steers." % (seeds, iterations, SEED_STEP), "",
           "| depth (m) | NTG asked | ISBX asked | seed | AV_REG_POISSON | AG_OB_NORM_MEAN (m) | NTG forecast (%) "
           "| NTG obtained (%) | NTG range (%) | NTG error (pp) | ISBX forecast | ISBX obtained | ISBX range "
           "| avulsions | cutoffs |",
           "|---:|---:|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|"]
    for r in rows:
        out.append("| %g | %g | %s (%g) | %d | %g | %.4g | %.1f | %.1f | %.1f-%.1f | %+.1f | %.1f | %.1f | %.0f-%.0f "
                   "| %.0f | %.0f |" % (
                       r["depth"], r["sand"], r["level"], r["isbx_asked"], r["seed"], r["regional"], r["intensity"],
                       r["forecast_ntg"], r["ntg"], min(r["ntg_runs"]), max(r["ntg_runs"]),
                       r["ntg"] - 100.0 * r["sand"], r["forecast_isbx"], r["isbx"], min(r["isbx_runs"]),
                       max(r["isbx_runs"]), r["avulsions"], r["cutoffs"]))
    within = sum(1 for e in errors if e <= NTG_TARGET)
    runs_within = sum(1 for e in run_errors if e <= NTG_TARGET)
    nb_ordered = sum(1 for v in verdicts if v[2])
    # Requests the inference itself forecasts it cannot reach (it warns about them).
    reachable = [e for r, e in zip(rows, errors) if abs(r["forecast_ntg"] - 100.0 * r["sand"]) < 1.0]
    # Requests whose index the inference raised to reach the net to gross (it warns about them too).
    raised = [r for r in rows if r["forecast_isbx"] > 1.02 * r["isbx_asked"]]
    out += ["", "## Summary", "",
            "- NTG error of the mean over the seeds: max %.1f pp, mean %.1f pp; %d of %d requests within %g pp of "
            "the request." % (max(errors), sum(errors) / len(errors), within, len(rows), NTG_TARGET),
            "- NTG error of single runs: max %.1f pp, mean %.1f pp; %d of %d runs within %g pp." % (
                max(run_errors), sum(run_errors) / len(run_errors), runs_within, len(run_errors), NTG_TARGET)]
    if raised:
        out.append("- %d requests ask for more sand than the abandoned channels of the index asked leave room for: "
                   "the inference raised their index towards the smallest that can give it, keeping their order and "
                   "giving up at most 5 points of net to gross (it warns \"Sand bodies extension index raised from "
                   "...\"): %s." % (len(raised), "; ".join(
                       "depth %g m, NTG %g, ISBX %g to %.0f" % (r["depth"], r["sand"], r["isbx_asked"],
                                                                r["forecast_isbx"]) for r in raised)))
    if len(reachable) < len(rows):
        out.append("- %d requests are out of reach by the inference's own forecast (it warns \"Net to gross of ... "
                   "out of reach ...\" and lays no floods); over the %d others: NTG error max %.1f pp, mean %.1f "
                   "pp, %d within %g pp." % (len(rows) - len(reachable), len(reachable), max(reachable),
                                             sum(reachable) / len(reachable),
                                             sum(1 for e in reachable if e <= NTG_TARGET), NTG_TARGET))
    out.append("- ISBX (mean over the seeds) ordered low < medium < high for %d of %d (depth, NTG) pairs." % (
        nb_ordered, len(verdicts)))
    for depth, sand, ok, series in verdicts:
        if not ok:
            out.append("  - not ordered at depth %g m, NTG %g: %s" % (
                depth, sand, " / ".join("%.1f" % v for v in series)))
    per_level = []
    for level, value in ISBXS:
        obtained = [v for r in rows if r["level"] == level for v in r["isbx_runs"]]
        per_level.append("%s (%g): mean %.1f, single runs %.1f-%.1f" % (
            level, value, sum(obtained) / len(obtained), min(obtained), max(obtained)))
    out.append("- ISBX obtained by level: " + "; ".join(per_level) + ".")
    out += ["- Produced by `python3 bench/calibration/nexus_grid.py --sarvo %s` (%d requests, %d seeds each, "
            "%d runs of %d iterations) in %.0f s." % (sarvo, len(rows), seeds, len(run_errors), iterations,
                                                     seconds), ""]
    return "\n".join(out)


def mean(values):
    return sum(values) / len(values)


def requests():
    for depth in DEPTHS:
        for sand in SANDS:
            for level, isbx in ISBXS:
                yield depth, sand, level, isbx


def run_grid(sarvo, workdir, iterations, seeds, jobs):
    """One row a request, with the means and the single runs over its seeds."""
    grid = list(requests())
    with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
        futures = {}
        for index, (depth, sand, level, isbx) in enumerate(grid):
            for k in range(seeds):
                seed = FIRST_SEED + index + k * SEED_STEP
                futures[(index, k)] = pool.submit(run_request, sarvo, workdir, index * seeds + k, depth, sand, isbx,
                                                  seed, iterations)
        rows = []
        for index, (depth, sand, level, isbx) in enumerate(grid):
            runs = [futures[(index, k)].result() for k in range(seeds)]
            row = dict(runs[0])
            row.update(depth=depth, sand=sand, level=level, isbx_asked=isbx, seed=FIRST_SEED + index,
                       ntg_runs=[r["ntg"] for r in runs], isbx_runs=[r["isbx"] for r in runs])
            row.update(ntg=mean(row["ntg_runs"]), isbx=mean(row["isbx_runs"]),
                       avulsions=mean([r.get("avulsions", float("nan")) for r in runs]),
                       cutoffs=mean([r.get("cutoffs", float("nan")) for r in runs]))
            rows.append(row)
            print("%2d: depth %g, NTG %g, ISBX %g -> NTG %s %%, ISBX %s" % (
                index + 1, depth, sand, isbx, " ".join("%.1f" % v for v in row["ntg_runs"]),
                " ".join("%.1f" % v for v in row["isbx_runs"])), flush=True)
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sarvo", default=os.path.join(ROOT, "build", "sarvo", "sarvo"))
    parser.add_argument("--iterations", type=int, default=ITERATIONS)
    parser.add_argument("--seeds", type=int, default=SEEDS)
    parser.add_argument("--jobs", type=int, default=JOBS)
    parser.add_argument("--output", default=OUTPUT)
    args = parser.parse_args()
    if not os.access(args.sarvo, os.X_OK):
        sys.exit("no executable " + args.sarvo + " (build the sarvo target, or give --sarvo)")
    sarvo = os.path.abspath(args.sarvo)
    start = time.time()
    with tempfile.TemporaryDirectory(prefix="sarvo_nexus_") as workdir:
        rows = run_grid(sarvo, workdir, args.iterations, args.seeds, args.jobs)
    seconds = time.time() - start
    text = markdown(rows, args.iterations, args.seeds, seconds, args.sarvo)
    with open(args.output, "w") as f:
        f.write(text)
    print(text[text.index("## Summary"):])


if __name__ == "__main__":
    main()
