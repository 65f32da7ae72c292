#!/usr/bin/env python3
"""Measures how well the non-expert inference (Nexus) delivers what it is asked.

One command runs a grid of requests, each a batch with NEXUS_HMAX, NEXUS_ISBX,
NEXUS_SAND and NEXUS_GRID = 1, reads what was obtained from the trace ("Global
Net to Gross (%)", "Mean Sand Bodies Extension Index") and writes a Markdown
table to doc/NEXUS_RESULTS.md:

    python3 bench/calibration/nexus_grid.py --sarvo build/sarvo/sarvo

Every run is seeded, so the table is reproducible. Runs are made one at a
time (the simulator uses one core).

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


def markdown(rows, iterations, seconds, sarvo):
    errors = [abs(r["ntg"] - 100.0 * r["sand"]) for r in rows]
    verdicts = ordered(rows)
    out = ["# Nexus: requested and obtained", "",
           "Written by `bench/calibration/nexus_grid.py`; do not edit by hand.", "",
           "Each line is one fluvial run: a batch with `NEXUS_HMAX`, `NEXUS_SAND`, `NEXUS_ISBX` as requested and "
           "`NEXUS_GRID = 1`, run for %d iterations. \"Obtained\" is what the batch printed at the end of the "
           "sequence (\"Global Net to Gross (%%)\", \"Mean Sand Bodies Extension Index\"); \"forecast\" is what the "
           "inference promised (\"Forecast ...\" lines). The regional avulsion period and the flood intensity are "
           "the two parameters the inference steers." % iterations, "",
           "| depth (m) | NTG asked | ISBX asked | seed | AV_REG_POISSON | AG_OB_NORM_MEAN (m) | NTG forecast (%) "
           "| NTG obtained (%) | NTG error (pp) | ISBX forecast | ISBX obtained | avulsions | cutoffs |",
           "|---:|---:|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|"]
    for r, error in zip(rows, errors):
        out.append("| %g | %g | %s (%g) | %d | %g | %.4g | %.1f | %.1f | %+.1f | %.1f | %.1f | %s | %s |" % (
            r["depth"], r["sand"], r["level"], r["isbx_asked"], r["seed"], r["regional"], r["intensity"],
            r["forecast_ntg"], r["ntg"], r["ntg"] - 100.0 * r["sand"], r["forecast_isbx"], r["isbx"],
            r.get("avulsions", "?"), r.get("cutoffs", "?")))
    within = sum(1 for e in errors if e <= NTG_TARGET)
    nb_ordered = sum(1 for v in verdicts if v[2])
    # Requests the inference itself forecasts it cannot reach (it warns about them).
    reachable = [e for r, e in zip(rows, errors) if abs(r["forecast_ntg"] - 100.0 * r["sand"]) < 1.0]
    # Requests whose index the inference raised to reach the net to gross (it warns about them too).
    raised = [r for r in rows if r["forecast_isbx"] > 1.02 * r["isbx_asked"]]
    out += ["", "## Summary", "",
            "- NTG error: max %.1f pp, mean %.1f pp; %d of %d requests within %g pp of the request." % (
                max(errors), sum(errors) / len(errors), within, len(rows), NTG_TARGET)]
    if raised:
        out.append("- %d requests ask for more sand than the abandoned channels of the index asked leave room for: "
                   "the inference raised their index to the smallest that can give it (it warns \"Sand bodies "
                   "extension index raised from ...\"): %s." % (len(raised), "; ".join(
                       "depth %g m, NTG %g, ISBX %g to %.0f" % (r["depth"], r["sand"], r["isbx_asked"],
                                                                r["forecast_isbx"]) for r in raised)))
    if len(reachable) < len(rows):
        out.append("- %d requests are out of reach by the inference's own forecast (it warns \"Net to gross of ... "
                   "out of reach ...\" and lays no floods); over the %d others: NTG error max %.1f pp, mean %.1f "
                   "pp, %d within %g pp." % (len(rows) - len(reachable), len(reachable), max(reachable),
                                             sum(reachable) / len(reachable),
                                             sum(1 for e in reachable if e <= NTG_TARGET), NTG_TARGET))
    out.append("- ISBX ordered low < medium < high for %d of %d (depth, NTG) pairs." % (nb_ordered, len(verdicts)))
    for depth, sand, ok, series in verdicts:
        if not ok:
            out.append("  - not ordered at depth %g m, NTG %g: %s" % (
                depth, sand, " / ".join("%.1f" % v for v in series)))
    per_level = []
    for level, value in ISBXS:
        obtained = [r["isbx"] for r in rows if r["level"] == level]
        per_level.append("%s (%g): mean %.1f, range %.1f-%.1f" % (
            level, value, sum(obtained) / len(obtained), min(obtained), max(obtained)))
    out.append("- ISBX obtained by level: " + "; ".join(per_level) + ".")
    out += ["- Produced by `python3 bench/calibration/nexus_grid.py --sarvo %s` (%d runs of %d iterations, "
            "one seed each, run one at a time) in %.0f s." % (sarvo, len(rows), iterations, seconds), ""]
    return "\n".join(out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sarvo", default=os.path.join(ROOT, "build", "sarvo", "sarvo"))
    parser.add_argument("--iterations", type=int, default=ITERATIONS)
    parser.add_argument("--output", default=OUTPUT)
    args = parser.parse_args()
    if not os.access(args.sarvo, os.X_OK):
        sys.exit("no executable " + args.sarvo + " (build the sarvo target, or give --sarvo)")
    sarvo = os.path.abspath(args.sarvo)
    rows = []
    start = time.time()
    with tempfile.TemporaryDirectory(prefix="sarvo_nexus_") as workdir:
        index = 0
        for depth in DEPTHS:
            for sand in SANDS:
                for level, isbx in ISBXS:
                    seed = FIRST_SEED + index
                    values = run_request(sarvo, workdir, index, depth, sand, isbx, seed, args.iterations)
                    values.update(depth=depth, sand=sand, level=level, isbx_asked=isbx, seed=seed)
                    rows.append(values)
                    index += 1
                    print("%2d: depth %g, NTG %g, ISBX %g -> NTG %.1f %%, ISBX %.1f (%s avulsions)" % (
                        index, depth, sand, isbx, values["ntg"], values["isbx"], values.get("avulsions", "?")),
                        flush=True)
    seconds = time.time() - start
    text = markdown(rows, args.iterations, seconds, args.sarvo)
    with open(args.output, "w") as f:
        f.write(text)
    print(text[text.index("## Summary"):])


if __name__ == "__main__":
    main()
