"""Sarvo from Python: the simulation kernel, readers of its files into numpy,
batch runs and ensembles of realisations on a Dask cluster.

    import sarvo
    sim = sarvo.Simulator()
    sim.set("DOMAIN_NX", 40)
    sim.init()
    sim.check_consistency(); sim.new_sequence(); sim.run(300); sim.end_sequence()
    block = sim.block(0.5)          # arrays indexed [i, j, k]

The batch file stays the way to describe a run: ``sarvo.run_batch(path)``.
"""

from ._sarvo import Simulator, facies_names, read_well
from .readers import read_f2g, read_gslib, read_flw, read_stats
from .batch import run_batch, batch_outputs
from .ensemble import ensemble, seed_batch



def _statistics(self):
    """The statistics recorded so far (see `record_statistics`) as {column: array}."""
    if not self.statistics_file:
        raise RuntimeError("No statistics recorded: call record_statistics before init")
    return read_stats(self.statistics_file)


Simulator.statistics = _statistics

STATUS_TEXT = {
    0: "ok",
    1: "failure",
    2: "parameters out of range",
    3: "not ready",
    5: "consistency warnings",
    6: "hard inconsistency",
    7: "upper limit reached",
    8: "all wells honored",
    9: "stopped by the user",
}

__all__ = [
    "Simulator",
    "facies_names",
    "read_well",
    "read_f2g",
    "read_gslib",
    "read_flw",
    "read_stats",
    "run_batch",
    "batch_outputs",
    "ensemble",
    "seed_batch",
    "STATUS_TEXT",
]
