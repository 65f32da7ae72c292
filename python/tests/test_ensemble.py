"""Realisations on a local Dask cluster: each seed in its own folder, the same
files as the program's run with that seed, a failed seed reported without
stopping the others."""

import filecmp
import os

import pytest
import sarvo
from conftest import BLOCK_LINES, batch_text, run_program

pytest.importorskip("dask.distributed")


def test_ensemble_on_a_local_cluster(sarvo_exe, tmp_path):
    base = tmp_path / "base"
    base.mkdir()
    batch = base / "ens.bat"
    batch.write_text(batch_text(BLOCK_LINES + ["TOPO_FILE = output/topo.f2g"], seed=1))
    # SIM_SEED has to stay below the generator's modulus: this seed fails at launch.
    bad = 2**31
    seeds = [11, bad, 12]
    results = sarvo.ensemble(str(batch), seeds, output_dir=str(tmp_path / "runs"), workers=2)

    assert [r["seed"] for r in results] == seeds
    failed = results[1]
    assert failed["status"] != 0 and str(bad) in failed["folder"] and failed["error"]
    for result in (results[0], results[2]):
        assert result["status"] == 0, result.get("error")
        assert result["outputs"]["F2G_FILE"] == [os.path.join(result["folder"], "output", "block.f2g")]
        summary = result["summary"]
        assert 0 < summary["net_to_gross"] < 1 and summary["isbx"] > 0 and summary["wall_time"] > 0
        assert sum(summary["facies_proportions"].values()) == pytest.approx(1.0)
    assert results[0]["summary"]["facies_proportions"] != results[2]["summary"]["facies_proportions"]

    # The program with the same seed writes the same block, byte for byte.
    alone = tmp_path / "alone"
    status, output = run_program(sarvo_exe, str(alone), batch_text(BLOCK_LINES, seed=12))
    assert status == 0, output
    assert filecmp.cmp(str(alone / "output" / "block.f2g"), results[2]["outputs"]["F2G_FILE"][0], shallow=False)
