"""Batch runs from Python: the batch file describes the run, as for
``sarvo -b``; the result tells the status, the files written and a summary."""

import os
import time

import numpy as np

from ._sarvo import Simulator, facies_names

# Keywords of the global section that name a file (or directory) written by the run.
OUTPUT_KEYWORDS = (
    "F2G_FILE",
    "VTK_FILE",
    "GRDECL_FILE",
    "TOPO_FILE",
    "SLICE_FILE",
    "STATS_FILE",
    "STATS_CL_FILE",
    "STATS_COND_FILE",
    "HISTO_FILE",
    "PNG_DIR",
)


def _global_lines(path):
    """(keyword, value) of the global section, in order."""
    pairs = []
    with open(path) as stream:
        section = None
        for raw in stream:
            line = raw.strip()
            if not line or line.startswith("#"):
                continue
            if line.startswith("["):
                section = line
                continue
            if section == "[GLOBAL]" and "=" in line:
                key, value = line.split("=", 1)
                pairs.append((key.strip(), value.strip()))
    return pairs


def batch_outputs(path):
    """The outputs the batch file asks for: {keyword: [absolute paths]} (VTK without its final suffix)."""
    directory = os.path.dirname(os.path.abspath(path))
    outputs = {}
    if not os.path.isfile(path):
        return outputs
    for key, value in _global_lines(path):
        if key in OUTPUT_KEYWORDS:
            outputs.setdefault(key, []).append(os.path.normpath(os.path.join(directory, value)))
    return outputs


def _existing(outputs):
    found = {}
    for key, paths in outputs.items():
        for path in paths:
            if key == "VTK_FILE":
                stem = os.path.splitext(path)[0]
                candidates = [stem + ".vti", stem + ".vts"]
            else:
                candidates = [path]
            found.setdefault(key, []).extend(p for p in candidates if os.path.exists(p))
    return {key: paths for key, paths in found.items() if paths}


def summary(sim):
    """Net to gross, facies proportions (by family short name), ISBX of the model held by `sim`."""
    proportions = sim.facies_proportions()
    names = facies_names()
    measures = sim.measures()
    return {
        "net_to_gross": measures["sand_proportion"],
        "facies_proportions": {names[k]: float(p) for k, p in enumerate(proportions) if p > 0.0},
        "isbx": measures["isbx"],
        "age": measures["age"],
    }


def run_batch(path, trace_level=None):
    """Runs a batch file; returns {"status", "message", "outputs", "summary", "wall_time"}.

    `outputs` maps each output keyword to the files written; `status` is the
    kernel's (0 done, 1 the batch could not be loaded, others as the run's)."""
    sim = Simulator()
    if trace_level is not None:
        sim.set_trace_level(trace_level)
    start = time.perf_counter()
    status = sim.run_batch(os.path.abspath(path))
    wall = time.perf_counter() - start
    result = {
        "status": status,
        "message": sim.last_message,
        "outputs": _existing(batch_outputs(path)),
        "wall_time": wall,
    }
    try:
        result["summary"] = dict(summary(sim), wall_time=wall)
    except RuntimeError:
        result["summary"] = {"wall_time": wall}
    return result
