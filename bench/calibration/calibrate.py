#!/usr/bin/env python3
"""Fits the forecast coefficients and the typical values of the non-expert
inference on short runs of Sarvo itself.

One command runs the design, measures, fits, and rewrites the constants block
of src/kernel/parameters/MeanderCalculator.cpp, constants.txt, results.csv and
default_channel.csv beside this script:

    python3 bench/calibration/calibrate.py --sarvo build/sarvo/sarvo

(about eight minutes on one core). --refit fits again on the runs kept in
results.csv and default_channel.csv without running anything; --design tiny
runs three short simulations to check the chain in seconds; --no-write keeps
the tree as it is.

Each run is a batch file that asks the non-expert inference for the channel
and the grid of a depth (NEXUS_HMAX, NEXUS_GRID = 1: the runs are made on the
very grid and channel the inference gives), then sets the avulsion and flood
events of the design point as user parameters (applied after the inference).
The design is laid in the two numbers the inference steers: the widths the
channel migrates between two regional avulsions, and the ratio of the flood
rate to the sand rate. A one-iteration probe per depth reads the channel
width, the grid and the forecast migration rate from the trace.

Iteration statistics every STATS_EVERY iterations give, per line, each
measure and the base its forecast coefficient multiplies (Obsv_Kvp = mean
velocity perturbation over its base, and so on); the trace gives the net to
gross, the aggradation rate and the mean ISBX that a batch reports. The fits
need no copy of the kernel's hydraulics.
"""

import argparse
import csv
import math
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", ".."))
SOURCE = os.path.join(ROOT, "src", "kernel", "parameters", "MeanderCalculator.cpp")
BEGIN = "// -- calibrated constants --"
END = "// -- end calibrated constants --"
STATS_EVERY = 100
NB_CLASSES = 15
MAX_ISBX = 200.0
DEFAULT_DEPTH = 3.0
DEFAULT_INTENSITY = 0.1
DEFAULT_REGIONAL = 500
OB_PERIOD = 70
MIN_PERIOD = 10
# Local avulsions keep the default ratio 280/500 to the regional ones.
LOCAL_RATIO = 280.0 / 500.0
# The range of widths migrated between avulsions the forecasts clamp to.
MIN_WIDTHS = 0.05
MAX_WIDTHS = 200.0
NUMBER = r"([-+0-9.eE]+|NA)"


def design_points(kind):
    """Depth, widths migrated between avulsions (x) and flood to sand rate ratio (r)."""
    if kind == "tiny":
        return [
            dict(depth=3.0, x=3.0, r=1.0, seed=1),
            dict(depth=2.0, x=0.5, r=4.0, seed=2),
            dict(depth=5.0, x=15.0, r=0.25, seed=3),
        ], dict(iterations=300)
    points = []
    seed = 11
    for depth in (2.0, 5.0, 10.0):
        for x in (0.4, 2.0, 8.0, 30.0):
            for r in (0.2, 1.0, 5.0):
                points.append(dict(depth=depth, x=x, r=r, seed=seed))
                seed += 1
    return points, dict(iterations=8000)


def trace_value(text, label):
    found = re.findall(re.escape(label) + r"\s*=?\s*:?\s*" + NUMBER, text)
    if not found or found[-1] == "NA":
        return float("nan")
    return float(found[-1])


def run_batch(sarvo, workdir, name, lines):
    batch = os.path.join(workdir, name + ".bat")
    with open(batch, "w") as f:
        f.write("\n".join(lines) + "\n")
    result = subprocess.run([sarvo, "-s", "-b", batch], cwd=workdir, capture_output=True, text=True)
    text = result.stdout + result.stderr
    if result.returncode != 0:
        sys.exit("%s failed (%d):\n%s" % (name, result.returncode, text[-2000:]))
    return text


def probe(sarvo, workdir, depth):
    """The channel, the grid and the forecast migration rate the inference gives for a depth."""
    stats = os.path.join(workdir, "probe_stats.csv")
    text = run_batch(sarvo, workdir, "probe", [
        "[GLOBAL]", "FORCE_SIMU = 1", "STATS_IT = 1", "STATS_FILE = %s" % stats, "[NEW_SEQ]", "SIM_SEED = 1",
        "NEXUS_HMAX = %g" % depth, "NEXUS_GRID = 1", "LAUNCH_IT = 1"])
    values = dict(width=trace_value(text, "CHNL_WIDTH"), ny=trace_value(text, "DOMAIN_NY"),
                  dy=trace_value(text, "DOMAIN_DY"), migration=trace_value(text, "Forecast Migration Rate (m/10000 it):"))
    values["extent"] = (values["ny"] - 1) * values["dy"]
    if any(v != v for v in values.values()):
        sys.exit("probe of depth %g: cannot read the inferred channel from the trace" % depth)
    return values


def events_of(point, channel):
    """Periods and flood intensity of a design point on the channel of its depth."""
    regional = max(MIN_PERIOD, int(round(point["x"] * 10000.0 * channel["width"] / channel["migration"])))
    local = max(MIN_PERIOD, int(round(regional * LOCAL_RATIO)))
    period = max(1, min(OB_PERIOD, local))
    sand_base = point["depth"] * channel["migration"] / channel["extent"]
    intensity = point["r"] * sand_base * period / 10000.0
    return regional, local, period, intensity


def batch_lines(point, channel, grid, stats_file):
    regional, local, period, intensity = events_of(point, channel)
    lines = ["[GLOBAL]", "FORCE_SIMU = 1", "STATS_IT = %d" % STATS_EVERY, "STATS_PROPS = 1",
             "STATS_FILE = %s" % stats_file, "[NEW_SEQ]", "SIM_SEED = %d" % point["seed"],
             "NEXUS_HMAX = %g" % point["depth"], "NEXUS_GRID = 1"]
    for name, value in (("AV_REG_PERIOD", regional), ("AV_REG_POISSON", regional), ("AV_LOC_PERIOD", local),
                        ("AV_LOC_POISSON", local), ("AG_OB_PERIOD", period), ("AG_OB_POISSON", period)):
        lines.append("%s = %d" % (name, value))
    for name, value in (("AG_OB_CONST", intensity), ("AG_OB_NORM_MEAN", intensity),
                        ("AG_OB_NORM_STDEV", 0.3 * intensity), ("AG_OB_LOGNORM_MEAN", intensity),
                        ("AG_OB_LOGNORM_STDEV", 0.3 * intensity)):
        lines.append("%s = %.6g" % (name, value))
    lines.append("LAUNCH_IT = %d" % grid["iterations"])
    return lines


def undefined(value):
    return not math.isfinite(value) or value >= 1e29


def mean_of(rows, column, skip=0):
    values = [row[column] for row in rows[skip:] if not undefined(row[column])]
    return sum(values) / len(values) if values else float("nan")


def read_stats(path):
    with open(path) as f:
        reader = csv.reader(f, delimiter=";")
        header = next(reader)
        rows = [dict(zip(header, map(float, line))) for line in reader if line]
    return rows


def constant_in_source(name):
    """A calibrated constant of the source the simulator was built from (0 when absent)."""
    with open(SOURCE) as f:
        found = re.search(r"constexpr double CAL_%s = ([-+0-9.eE]+);" % name, f.read())
    return float(found.group(1)) if found else 0.0


def run_point(sarvo, point, channel, grid, workdir, index):
    stats = os.path.join(workdir, "run%02d_stats.csv" % index)
    text = run_batch(sarvo, workdir, "run%02d" % index, batch_lines(point, channel, grid, stats))
    rows = read_stats(stats)
    if len(rows) < 3:
        sys.exit("run %d wrote too few statistics lines" % index)
    regional, local, period, intensity = events_of(point, channel)
    last = rows[-1]
    # The first lines measure the channel before it has settled.
    skip = len(rows) // 5
    return dict(
        depth=point["depth"],
        x_design=point["x"],
        r_design=point["r"],
        seed=point["seed"],
        width=channel["width"],
        extent=channel["extent"],
        regional=regional,
        intensity=intensity,
        ob_base=intensity * 10000.0 / period,
        ntg=trace_value(text, "Global Net to Gross (%):") / 100.0,
        aggradation=trace_value(text, "Global Aggradation Rate (m/10000 it):"),
        isbx=trace_value(text, "Mean Sand Bodies Extension Index:"),
        pb_share=last["Obsv_PB_prop"] / last["Obsv_Sand_prop"] if last["Obsv_Sand_prop"] > 0 else float("nan"),
        kvp=mean_of(rows, "Obsv_Kvp", skip),
        kmig=mean_of(rows, "Obsv_Kmig", skip),
        migration=mean_of(rows, "Obsv_Mig_rate", skip),
        avulsions=last["Obsv_Nb_av"],
        cutoffs=last["Obsv_Nb_cutoff"],
        pred_mig=last["Pred_Mig_rate"],
        old_kvp=last["Pred_Kvp"],
        old_kmig=last["Pred_Kmig"],
        old_kmig_exp=constant_in_source("KMIG_EXP"),
    )


def mean(values):
    values = [v for v in values if math.isfinite(v)]
    if not values:
        sys.exit("no usable measure to fit")
    return sum(values) / len(values)


def through_origin(xs, ys):
    pairs = [(x, y) for x, y in zip(xs, ys) if math.isfinite(x) and math.isfinite(y)]
    sxx = sum(x * x for x, _ in pairs)
    return sum(x * y for x, y in pairs) / sxx if sxx > 0 else float("nan")


def least_squares_2(xs1, xs2, ys):
    """y = a x1 + b x2, through the origin."""
    s11 = sum(a * a for a in xs1)
    s22 = sum(b * b for b in xs2)
    s12 = sum(a * b for a, b in zip(xs1, xs2))
    s1y = sum(a * y for a, y in zip(xs1, ys))
    s2y = sum(b * y for b, y in zip(xs2, ys))
    det = s11 * s22 - s12 * s12
    if det <= 0:
        return through_origin(xs1, ys), 0.0
    return (s1y * s22 - s2y * s12) / det, (s2y * s11 - s1y * s12) / det


def line_in_logs(pairs):
    """Slope and intercept of log y against log x."""
    logs = [(math.log(x), math.log(y)) for x, y in pairs if x > 0 and y > 0 and math.isfinite(y)]
    n = len(logs)
    mx = sum(lx for lx, _ in logs) / n
    my = sum(ly for _, ly in logs) / n
    sxx = sum((lx - mx) ** 2 for lx, _ in logs)
    if sxx <= 0:
        return 0.0, my
    b = sum((lx - mx) * (ly - my) for lx, ly in logs) / sxx
    return b, my - b * mx


def widths(regional, migration, width):
    return min(MAX_WIDTHS, max(MIN_WIDTHS, regional * migration / (10000.0 * width)))


def depth_factor(c, depth):
    """The fines per sand of a channel of this depth, relative to the default depth."""
    return (depth / DEFAULT_DEPTH) ** c.get("FINES_DEPTH_EXP", 0.0)


def fines_over_sand(c, x, r, depth):
    """Fines laid per thickness of channel sand, r being the flood base over the sand base."""
    return depth_factor(c, depth) * (c["KPLUG"] * x ** c["PLUG_EXP"] + c["KOB"] * r * x ** c["OB_EXP"]) / (
        c["KSAND"] * x ** c["SAND_EXP"])


def fit_fines(results):
    """q = (H / H0)^e (alpha x^p + beta r x^s), q the fines over the sands and H
    the depth, least squares on the net to gross.

    For each triple of exponents on a grid, alpha and beta come from linear
    least squares on q (H / H0)^-e weighted by NTG^4 (H / H0)^2e (dNTG =
    -NTG^2 dq); the triple kept is the one with the smallest squared error on
    the net to gross itself.
    """
    best = None
    for k in range(-20, 21):
        e = k * 0.05
        fit = fit_fines_at_depth_exponent(results, e)
        if fit is not None and (best is None or fit[0] < best[0]):
            best = fit
    if best is None:
        sys.exit("no positive fit of the fines")
    return best[1:]


def fit_fines_at_depth_exponent(results, e):
    data = [(r["x"], r["r_base"], (1.0 / r["ntg"] - 1.0) / (r["depth"] / DEFAULT_DEPTH) ** e, r["ntg"],
             (r["depth"] / DEFAULT_DEPTH) ** e) for r in results if 0.0 < r["ntg"] < 1.0 and math.isfinite(r["r_base"])]
    best = None
    for i in range(-60, 21):
        p = i * 0.05
        for j in range(-60, 21):
            s = j * 0.05
            u = [x ** p for x, _, _, _, _ in data]
            v = [rb * x ** s for x, rb, _, _, _ in data]
            w = [(n ** 2 * f) ** 2 for _, _, _, n, f in data]
            suu = sum(wi * a * a for wi, a in zip(w, u))
            svv = sum(wi * b * b for wi, b in zip(w, v))
            suv = sum(wi * a * b for wi, a, b in zip(w, u, v))
            suq = sum(wi * a * d[2] for wi, a, d in zip(w, u, data))
            svq = sum(wi * b * d[2] for wi, b, d in zip(w, v, data))
            det = suu * svv - suv * suv
            if det <= 0:
                continue
            alpha = (suq * svv - svq * suv) / det
            beta = (svq * suu - suq * suv) / det
            # Both the abandoned channels and the floods bring fines.
            if alpha <= 0 or beta <= 0:
                continue
            sse = sum((d[3] - 1.0 / (1.0 + d[4] * (alpha * a + beta * b))) ** 2 for d, a, b in zip(data, u, v))
            if best is None or sse < best[0]:
                best = (sse, alpha, p, beta, s, e)
    return best


def isbx_of(c, x):
    return min(MAX_ISBX, c["ISBX_0"] + c["ISBX_A"] * x ** c["ISBX_B"])


def fit_isbx(results):
    """ISBX = I0 + A x^B: the belt a channel has at its birth, widened by what it sweeps.

    For each I0 on a grid below the smallest index measured, A and B come
    from least squares in logarithms of ISBX - I0 against x; the I0 kept is
    the one with the smallest squared error in logarithms of the index. The
    exponent must keep the index growing and not explode (within [0.3, 1.5]);
    without such a fit, a square root through the origin.
    """
    pairs = [(r["x"], r["isbx"]) for r in results if r["x"] > 0 and math.isfinite(r["isbx"]) and r["isbx"] > 0]
    best = None
    lowest = min(i for _, i in pairs)
    for k in range(0, 100):
        i0 = lowest * k / 100.0
        b, a = line_in_logs([(x, i - i0) for x, i in pairs])
        if not 0.3 <= b <= 1.5:
            continue
        sse = sum((math.log(i) - math.log(i0 + math.exp(a) * x ** b)) ** 2 for x, i in pairs)
        if best is None or sse < best[0]:
            best = (sse, i0, math.exp(a), b)
    if best is None:
        return 0.0, mean([i for _, i in pairs]) / mean([math.sqrt(x) for x, _ in pairs]), 0.5
    return best[1:]


def kmig_of(c, depth):
    return c["KMIG"] * (depth / DEFAULT_DEPTH) ** c["KMIG_EXP"]


def fit(results, default_channel):
    c = {}
    c["KVP"] = mean([r["kvp"] for r in results])
    # Banks of deeper channels retreat less for the same base: a power of the depth.
    c["KMIG_EXP"], intercept = line_in_logs([(r["depth"] / DEFAULT_DEPTH, r["kmig"]) for r in results])
    c["KMIG"] = math.exp(intercept)
    c["KPB"] = mean([r["pb_share"] for r in results])
    for r in results:
        scale = (c["KVP"] * kmig_of(c, r["depth"])) / (
            r["old_kvp"] * r["old_kmig"] * (r["depth"] / DEFAULT_DEPTH) ** r.get("old_kmig_exp", 0.0))
        r["forecast_migration"] = r["pred_mig"] * scale
        r["sand_base"] = r["depth"] * r["forecast_migration"] / r["extent"]
        r["r_base"] = r["ob_base"] / r["sand_base"]
        r["sand_rate"] = r["ntg"] * r["aggradation"]
        r["x"] = widths(r["regional"], r["forecast_migration"], r["width"])
    # Channel sands: the point bar sweep, thinned when the channel avulses
    # before it has migrated a few widths (a power of those widths).
    exponent, intercept = line_in_logs([(r["x"], r["sand_rate"] / r["sand_base"]) for r in results])
    c["SAND_EXP"] = exponent
    c["KSAND"] = math.exp(intercept)
    # Fines: the mud the abandoned channels trap, and the floods on the
    # floodplain, both as powers of the widths migrated between avulsions
    # (the more often the channel avulses, the more it recuts the floodplain).
    alpha, p, beta, s, c["FINES_DEPTH_EXP"] = fit_fines(results)
    c["KPLUG"] = alpha * c["KSAND"]
    c["PLUG_EXP"] = p + c["SAND_EXP"]
    c["KOB"] = beta * c["KSAND"]
    c["OB_EXP"] = s + c["SAND_EXP"]
    c["ISBX_0"], c["ISBX_A"], c["ISBX_B"] = fit_isbx(results)
    for r in results:
        r["forecast_ntg"] = 1.0 / (1.0 + fines_over_sand(c, r["x"], r["r_base"], r["depth"]))
        r["forecast_isbx"] = isbx_of(c, r["x"])
    # The typical values are the forecasts of the default system (3 m deep,
    # floods of 0.1 m every 70 iterations, regional avulsions every 500), so
    # that a request of them gives it back; the grain size of the load
    # leaves the geometry of the deposits unchanged, so every class gets the
    # same value.
    d = default_channel
    migration = d["migration"] * (c["KVP"] * c["KMIG"]) / (d["kvp"] * d["kmig"])  # at the default depth
    x = widths(DEFAULT_REGIONAL, migration, d["width"])
    r_base = (DEFAULT_INTENSITY * 10000.0 / OB_PERIOD) / (DEFAULT_DEPTH * migration / d["extent"])
    c["DEFAULT_ISBX"] = min(MAX_ISBX, max(1.0, isbx_of(c, x)))
    c["DEFAULT_SAND"] = min(0.95, max(0.05, 1.0 / (1.0 + fines_over_sand(c, x, r_base, DEFAULT_DEPTH))))
    return c


def block_text(c):
    isbx = ", ".join("%.4g" % c["DEFAULT_ISBX"] for _ in range(NB_CLASSES))
    sand = ", ".join("%.4g" % c["DEFAULT_SAND"] for _ in range(NB_CLASSES))
    lines = [BEGIN]
    for name in ("KVP", "KMIG", "KMIG_EXP", "KOB", "KSAND", "KPB", "ISBX_0", "ISBX_A", "ISBX_B", "SAND_EXP", "KPLUG",
                 "PLUG_EXP", "OB_EXP", "FINES_DEPTH_EXP"):
        lines.append("constexpr double CAL_%s = %.6g;" % (name, c[name]))
    lines.append("constexpr double CAL_DEFAULT_ISBX[15] = {%s};" % isbx)
    lines.append("constexpr double CAL_DEFAULT_SAND[15] = {%s};" % sand)
    lines.append(END)
    return "\n".join(lines)


def rewrite_source(c):
    with open(SOURCE) as f:
        text = f.read()
    pattern = re.compile(re.escape(BEGIN) + ".*?" + re.escape(END), re.S)
    if not pattern.search(text):
        sys.exit("no calibrated constants block in " + SOURCE)
    with open(SOURCE, "w") as f:
        f.write(pattern.sub(lambda _: block_text(c), text))


def quality(results, observed, forecast):
    pairs = [(r[observed], r[forecast]) for r in results if math.isfinite(r[observed])]
    if not pairs:
        return float("nan"), float("nan")
    mean_obs = sum(o for o, _ in pairs) / len(pairs)
    ss_res = sum((o - f) ** 2 for o, f in pairs)
    ss_tot = sum((o - mean_obs) ** 2 for o, _ in pairs)
    r2 = 1.0 - ss_res / ss_tot if ss_tot > 0 else float("nan")
    mae = sum(abs(o - f) for o, f in pairs) / len(pairs)
    return r2, mae


RAW_COLUMNS = ["depth", "x_design", "r_design", "seed", "width", "extent", "regional", "intensity", "ob_base", "ntg",
               "aggradation", "isbx", "pb_share", "kvp", "kmig", "migration", "pred_mig", "old_kvp", "old_kmig",
               "old_kmig_exp", "avulsions", "cutoffs"]
FORECAST_COLUMNS = ["x", "forecast_migration", "forecast_ntg", "forecast_isbx"]


def write_outputs(c, results, design, default_channel):
    with open(os.path.join(HERE, "results.csv"), "w", newline="") as f:
        writer = csv.writer(f, delimiter=";")
        writer.writerow(RAW_COLUMNS + FORECAST_COLUMNS)
        for r in results:
            writer.writerow(["%.10g" % r[k] if isinstance(r[k], float) else r[k] for k in RAW_COLUMNS + FORECAST_COLUMNS])
    with open(os.path.join(HERE, "default_channel.csv"), "w", newline="") as f:
        writer = csv.writer(f, delimiter=";")
        writer.writerow(sorted(default_channel))
        writer.writerow(["%.10g" % default_channel[k] for k in sorted(default_channel)])
    r2_ntg, mae_ntg = quality(results, "ntg", "forecast_ntg")
    r2_isbx, mae_isbx = quality(results, "isbx", "forecast_isbx")
    with open(os.path.join(HERE, "constants.txt"), "w") as f:
        f.write("# Written by calibrate.py (design: %s, %d runs)\n" % (design, len(results)))
        for name in sorted(c):
            f.write("%s = %.6g\n" % (name, c[name]))
        f.write("# net to gross: R2 = %.3f, mean absolute error = %.3f\n" % (r2_ntg, mae_ntg))
        f.write("# ISBX: R2 = %.3f, mean absolute error = %.3g\n" % (r2_isbx, mae_isbx))


def run_design(sarvo, design):
    points, grid = design_points(design)
    results = []
    with tempfile.TemporaryDirectory(prefix="sarvo_calibration_") as workdir:
        channels = {}
        for depth in sorted({p["depth"] for p in points} | {DEFAULT_DEPTH}):
            channels[depth] = probe(sarvo, workdir, depth)
        for k, point in enumerate(points):
            results.append(run_point(sarvo, point, channels[point["depth"]], grid, workdir, k))
            r = results[-1]
            print("run %2d/%d: depth %g, x %g, r %g -> NTG %.3f, ISBX %.1f, %d avulsions" % (
                k + 1, len(points), point["depth"], point["x"], point["r"], r["ntg"], r["isbx"],
                r["avulsions"]), flush=True)
    default_channel = dict(channels[DEFAULT_DEPTH], kvp=results[0]["old_kvp"], kmig=results[0]["old_kmig"])
    return results, default_channel


def read_outputs():
    def rows_of(name):
        with open(os.path.join(HERE, name)) as f:
            return [{k: float(v) for k, v in row.items()} for row in csv.DictReader(f, delimiter=";")]
    results = [{k: row.get(k, 0.0) for k in RAW_COLUMNS} for row in rows_of("results.csv")]
    return results, rows_of("default_channel.csv")[0]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sarvo", default=os.path.join(ROOT, "build", "sarvo", "sarvo"))
    parser.add_argument("--design", choices=("full", "tiny"), default="full")
    parser.add_argument("--no-write", action="store_true", help="report only, change no file")
    parser.add_argument("--refit", action="store_true",
                        help="fit again on the runs of results.csv and default_channel.csv, running nothing")
    args = parser.parse_args()
    if not args.refit and not os.access(args.sarvo, os.X_OK):
        sys.exit("no executable " + args.sarvo + " (build the sarvo target, or give --sarvo)")
    if args.refit:
        results, default_channel = read_outputs()
    else:
        results, default_channel = run_design(os.path.abspath(args.sarvo), args.design)
    c = fit(results, default_channel)
    print(block_text(c))
    if not args.no_write:
        rewrite_source(c)
        write_outputs(c, results, args.design, default_channel)
        print("constants written to " + SOURCE)


if __name__ == "__main__":
    main()
