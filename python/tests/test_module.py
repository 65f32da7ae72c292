"""The kernel through Python: the same parameters and seed give the same
arrays as the program's files; the readers agree with the kernel's own data."""

import os

import numpy as np
import pytest
import sarvo
from conftest import SEED

SMALL = {"SIM_SEED": SEED, "DOMAIN_NX": 40, "DOMAIN_NY": 30, "DOMAIN_DX": 10, "DOMAIN_DY": 10}


def output(directory, name):
    return os.path.join(directory, "output", name)


@pytest.fixture(scope="module")
def simulated():
    """The "flat" run of the program, done again through the module."""
    sim = sarvo.Simulator()
    sim.set_trace_level(2)
    for name, value in SMALL.items():
        sim.set(name, value)
    assert sim.init() == 0
    sim.check_consistency()
    assert sim.new_sequence() == 0
    assert sim.run(300) == 0
    assert sim.end_sequence() == 0
    return sim


def test_module_arrays_equal_the_program_files(simulated, program_run):
    directory = program_run("flat")
    block = sarvo.read_f2g(output(directory, "block.f2g"))["variables"]
    mine = simulated.block(0.5)
    facies = mine["facies"].astype(float)
    facies[mine["facies"] == 255] = np.nan
    np.testing.assert_array_equal(facies, block["Facies"])
    np.testing.assert_array_equal(mine["grain"], block["Grain Size"])
    np.testing.assert_array_equal(mine["age"], block["Age"])
    topo = sarvo.read_f2g(output(directory, "topo.f2g"))["variables"]["Var"]
    np.testing.assert_allclose(simulated.topography(), topo, rtol=1e-6)
    assert simulated.age == 300


def test_run_batch_returns_outputs_and_summary(program_run):
    directory = program_run("flat")
    result = sarvo.run_batch(os.path.join(directory, "run.bat"), trace_level=2)
    assert result["status"] == 0
    assert set(result["outputs"]) == {"F2G_FILE", "VTK_FILE", "GRDECL_FILE", "TOPO_FILE"}
    assert result["outputs"]["VTK_FILE"] == [output(directory, "block.vti")]
    summary = result["summary"]
    assert sum(summary["facies_proportions"].values()) == pytest.approx(1.0)
    assert 0.0 < summary["net_to_gross"] < 1.0
    assert summary["isbx"] > 0.0 and summary["wall_time"] > 0.0


def test_readers_agree_with_the_block(simulated, program_run):
    directory = program_run("flat")
    mine = simulated.block(0.5)
    z0 = mine["geometry"]["z0"]
    well = sarvo.read_flw(os.path.join(directory, "EXP_WELL20_15.flw"))
    assert len(well["facies"]) > 0
    # Each log sample holds the block's family at the samples inside it.
    for family, base, top in zip(well["facies"], well["base"], well["top"]):
        k = np.arange(mine["facies"].shape[2])
        inside = (z0 + k * 0.5 > base + 0.01) & (z0 + k * 0.5 < top - 0.01)
        assert np.all(mine["facies"][20, 15, inside] == family)


def test_statistics_recorded_as_the_batch_does(program_run, tmp_path):
    directory = program_run("rotated")
    sim = sarvo.Simulator()
    sim.set_trace_level(2)
    rotated = {"DOMAIN_GRID_DIR": 30, "DOMAIN_OX": 451000, "DOMAIN_OY": 6780000, "DOMAIN_ZREF": -1500}
    for name, value in dict(SMALL, **rotated).items():
        sim.set(name, value)
    sim.record_statistics(str(tmp_path / "stats.csv"), 50)
    assert sim.init() == 0
    sim.check_consistency()
    assert (sim.new_sequence(), sim.run(300), sim.end_sequence()) == (0, 0, 0)
    with open(output(directory, "stats.csv")) as theirs, open(tmp_path / "stats.csv") as mine:
        assert mine.read() == theirs.read()
    stats = sim.statistics()
    np.testing.assert_array_equal(stats["Time"], np.arange(50, 301, 50))
    assert stats["Obsv_Sand_prop"][-1] == pytest.approx(sim.measures()["sand_proportion"], rel=1e-9)
    assert np.isnan(stats["Obsv_Kmig"][0]), "1e30 reads as NaN"
    block = sarvo.read_f2g(output(directory, "block.f2g"))["variables"]
    np.testing.assert_array_equal(sim.block(0.5)["age"], block["Age"])


def test_grid_readers_follow_the_order_and_undefined_text(tmp_path):
    # Two variables on 2 x 3 x 2 nodes, y descending fastest, then x, then z.
    values = {(i, j, k): 100 * k + 10 * j + i for i in range(2) for j in range(3) for k in range(2)}
    lines = ["F2G_DIM 3", "F2G_VERSION 1", "F2G_LOCATION 0 0 0", "F2G_ROTATION 0", "F2G_ORIGIN 0 0 0",
             "F2G_NB_NODES 2 3 2", "F2G_LAGS 1 1 1", "F2G_ORDER -Y +X +Z", "F2G_NB_VARIABLES 2",
             "F2G_VARIABLE_1 A", "F2G_UNDEFINED_1 NA", "F2G_VARIABLE_2 B", "F2G_UNDEFINED_2 -99", "F2G_VALUES "]
    for k in range(2):
        for i in range(2):
            for j in reversed(range(3)):
                first = "NA" if (i, j, k) == (1, 2, 0) else str(values[i, j, k])
                lines.append("%s %d" % (first, -values[i, j, k]))
    (tmp_path / "g.f2g").write_text("\n".join(lines) + "\n")
    grid = sarvo.read_f2g(str(tmp_path / "g.f2g"))["variables"]
    expected = np.array([[[values[i, j, k] for k in range(2)] for j in range(3)] for i in range(2)], float)
    np.testing.assert_array_equal(grid["B"], -expected)
    expected[1, 2, 0] = np.nan
    np.testing.assert_array_equal(grid["A"], expected)

    gslib = ["GSLIB file generated by Sarvo: NXxNYxNZ=2x3x2", "1", "A"]
    gslib += [str(values[i, j, k]) for k in range(2) for j in range(3) for i in range(2)]
    (tmp_path / "g.gslib").write_text("\n".join(gslib) + "\n")
    np.testing.assert_array_equal(sarvo.read_gslib(str(tmp_path / "g.gslib"), 2, 3, 2)["A"], -grid["B"])


def test_failures_are_statuses_and_messages():
    sim = sarvo.Simulator()
    sim.set_trace_level(1)
    with pytest.raises(ValueError, match="NO_SUCH_PARAMETER"):
        sim.set("NO_SUCH_PARAMETER", 1)
    assert sim.run(10) == 3 and sim.status == 3
    assert sim.last_message
    sim.set("DOMAIN_NX", 5)
    assert sim.init() == 2 and "DOMAIN_NX" in sim.last_message
    with pytest.raises(RuntimeError, match="init"):
        sim.topography()
    assert sarvo.run_batch("/nonexistent/run.bat", trace_level=1)["status"] == 1
