"""Shared runs of the Python tests: small seeded batch runs of the program
(40 x 30 nodes, 300 iterations), written once per session."""

import os
import shutil
import subprocess

import pytest

SEED = 20240611

SEQUENCE = """
[NEW_SEQ]
SIM_SEED = {seed}
DOMAIN_NX = 40
DOMAIN_NY = 30
DOMAIN_DX = 10
DOMAIN_DY = 10
DOMAIN_GRID_DIR = {rotation}
DOMAIN_OX = {ox}
DOMAIN_OY = {oy}
DOMAIN_ZREF = {zref}
LAUNCH_IT = 300
"""


def batch_text(global_lines, seed=SEED, rotation=0.0, ox=0.0, oy=0.0, zref=0.0):
    return "[GLOBAL]\n" + "\n".join(global_lines) + "\n" + SEQUENCE.format(
        seed=seed, rotation=rotation, ox=ox, oy=oy, zref=zref
    )


BLOCK_LINES = [
    "F2G_FILE = output/block.f2g",
    "F2G_DZ = 0.5",
    "F2G_FACIES = 1",
    "F2G_GRAIN = 1",
    "F2G_AGE = 1",
]


@pytest.fixture(scope="session")
def sarvo_exe():
    exe = os.environ.get("SARVO_EXE") or shutil.which("sarvo")
    if not exe:
        pytest.skip("SARVO_EXE is not set")
    return exe


def run_program(exe, directory, text, name="run.bat"):
    """Writes the batch into `directory` and runs it; (exit status, output)."""
    os.makedirs(os.path.join(directory, "output"), exist_ok=True)
    path = os.path.join(directory, name)
    with open(path, "w") as stream:
        stream.write(text)
    done = subprocess.run([exe, "-b", path], cwd=directory, capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


@pytest.fixture(scope="session")
def program_run(sarvo_exe, tmp_path_factory):
    """Runs of the program: "flat" (no rotation) and "rotated" (30 degrees,
    shifted location and reference elevation), each with every export."""

    def make(kind):
        directory = str(tmp_path_factory.mktemp(kind))
        lines = BLOCK_LINES + [
            "VTK_FILE = output/block.vtk",
            "GRDECL_FILE = output/block.grdecl",
            "GRDECL_PROPS = 2; 0.3; 700; 70",
            "TOPO_FILE = output/topo.f2g",
            "EXP_WELL = 20; 15; ;",
        ]
        options = {}
        if kind == "rotated":
            # Statistics change the run's course: they stay out of the "flat" run, redone in Python.
            lines += ["STATS_FILE = output/stats.csv", "STATS_IT = 50"]
            options = {"rotation": 30.0, "ox": 451000.0, "oy": 6780000.0, "zref": -1500.0}
        status, output = run_program(sarvo_exe, directory, batch_text(lines, **options))
        assert status == 0, output
        return directory

    runs = {}

    def get(kind):
        if kind not in runs:
            runs[kind] = make(kind)
        return runs[kind]

    return get
