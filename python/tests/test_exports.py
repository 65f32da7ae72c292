"""The block's exports read back by the readers of the tools they are for
(VTK's own XML readers, the OPM deck parser) and compared with the F2G block
of the same run."""

import json
import os
import xml.etree.ElementTree as ElementTree

import numpy as np
import pytest
import sarvo
from conftest import BLOCK_LINES, batch_text, run_program

vtk = pytest.importorskip("vtk")
from vtk.util.numpy_support import vtk_to_numpy  # noqa: E402

KINDS = ["flat", "rotated"]


def f2g_block(directory):
    return sarvo.read_f2g(os.path.join(directory, "output", "block.f2g"))


def relative_to_geo(geometry, x, y):
    angle = np.radians(geometry["rotation"])
    ox, oy, _ = geometry["location"]
    return np.cos(angle) * x - np.sin(angle) * y + ox, np.sin(angle) * x + np.cos(angle) * y + oy


def cell_centres(geometry):
    """Geographic (x, y, z) of the F2G nodes, arrays [i, j, k]."""
    i, j, k = np.meshgrid(
        np.arange(geometry["nx"]), np.arange(geometry["ny"]), np.arange(geometry["nz"]), indexing="ij"
    )
    x, y = relative_to_geo(geometry, i * geometry["dx"], j * geometry["dy"])
    return x, y, geometry["origin"][2] + k * geometry["dz"]


def read_vtk(directory, kind):
    suffix = ".vti" if kind == "flat" else ".vts"
    path = os.path.join(directory, "output", "block" + suffix)
    assert os.path.exists(path), "the suffix follows the dataset"
    reader = vtk.vtkXMLImageDataReader() if kind == "flat" else vtk.vtkXMLStructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    return path, reader.GetOutput()


def as_ijk(values, geometry):
    return values.reshape(geometry["nz"], geometry["ny"], geometry["nx"]).transpose(2, 1, 0)


@pytest.mark.parametrize("kind", KINDS)
def test_vtk_arrays_and_geometry_match_the_f2g_block(program_run, kind):
    directory = program_run(kind)
    block = f2g_block(directory)
    geometry, variables = block["geometry"], block["variables"]
    path, data = read_vtk(directory, kind)
    assert data.GetNumberOfCells() == geometry["nx"] * geometry["ny"] * geometry["nz"]

    cells = data.GetCellData()
    arrays = {cells.GetArrayName(n): as_ijk(vtk_to_numpy(cells.GetArray(n)), geometry) for n in range(cells.GetNumberOfArrays())}
    empty = np.isnan(variables["Facies"])
    assert 0 < empty.sum() < empty.size, "the case must hold void and deposits"
    facies = arrays["Facies"].astype(float)
    facies[arrays["Facies"] == 255] = np.nan
    np.testing.assert_array_equal(facies, variables["Facies"])
    np.testing.assert_array_equal(arrays["GrainSize"], variables["Grain Size"])
    np.testing.assert_array_equal(arrays["Age"], variables["Age"])
    np.testing.assert_array_equal(arrays["vtkGhostType"] == 32, empty)
    grain_class = arrays["GrainSizeClass"][~empty].astype(int)
    assert np.all((grain_class >= 0) & (grain_class <= 15))

    # Cell centres where the F2G nodes stand, in geographic coordinates.
    # (hidden cells would be skipped: measure a copy without the ghost array)
    copy = data.NewInstance()
    copy.ShallowCopy(data)
    copy.GetCellData().RemoveArray("vtkGhostType")
    centres = vtk.vtkCellCenters()
    centres.SetInputData(copy)
    centres.Update()
    points = vtk_to_numpy(centres.GetOutput().GetPoints().GetData())
    for axis, expected in enumerate(cell_centres(geometry)):
        np.testing.assert_allclose(as_ijk(points[:, axis], geometry), expected, rtol=0, atol=1e-6)

    # Binary, compressed, appended: the header says so and holds no ascii data.
    with open(path, "rb") as stream:
        head = stream.read().split(b"  <AppendedData", 1)[0].decode()
    root = ElementTree.fromstring(head + "</VTKFile>")
    assert root.get("compressor") == "vtkZLibDataCompressor"
    arrays = root.iter("DataArray")
    assert {a.get("format") for a in arrays} == {"appended"}


def opm_state(path, geometry):
    from opm.io.ecl_state import EclipseState
    from opm.io.parser import Parser

    parser = Parser()
    for name, kind in (("FACIES", "INT"), ("GRAINSZ", "DOUBLE"), ("AGE", "DOUBLE")):
        parser.add_keyword(json.dumps({"name": name, "sections": ["GRID"], "data": {"value_type": kind}}))
    deck = parser.parse_string(
        "RUNSPEC\nDIMENS\n %d %d %d /\nGRID\nINCLUDE\n '%s' /\n" % (geometry["nx"], geometry["ny"], geometry["nz"], path)
    )
    return deck, EclipseState(deck)


def as_ijk_from_top(values, geometry):
    """GRDECL cells (i fastest, layers from the top) as [i, j, k] with k from the bottom."""
    return as_ijk(np.asarray(values, dtype=float), geometry)[:, :, ::-1]


@pytest.mark.parametrize("kind", KINDS)
def test_grdecl_read_by_opm_matches_the_f2g_block(program_run, kind):
    pytest.importorskip("opm.io")
    directory = program_run(kind)
    block = f2g_block(directory)
    geometry, variables = block["geometry"], block["variables"]
    deck, state = opm_state(os.path.join(directory, "output", "block.grdecl"), geometry)
    grid = state.grid()
    assert (grid.nx, grid.ny, grid.nz) == (geometry["nx"], geometry["ny"], geometry["nz"])
    active = ~np.isnan(variables["Facies"])
    assert grid.nactive == active.sum()

    x, y, z = cell_centres(geometry)
    nz = geometry["nz"]
    for i, j, k in [(0, 0, 0), (geometry["nx"] - 1, geometry["ny"] - 1, nz - 1), (17, 9, nz // 2)]:
        assert grid.getCellDepth(i, j, nz - 1 - k) == pytest.approx(-z[i, j, k], abs=1e-6)
    corners = np.array(deck["COORD"].get_raw_array()).reshape(geometry["ny"] + 1, geometry["nx"] + 1, 6)
    first = relative_to_geo(geometry, -geometry["dx"] / 2, -geometry["dy"] / 2)
    np.testing.assert_allclose(corners[0, 0, :2], first, atol=1e-3)

    facies = as_ijk_from_top(deck["FACIES"].get_int_array(), geometry)
    np.testing.assert_array_equal(facies[active], variables["Facies"][active])
    assert np.all(facies[~active] == -1)
    grain = as_ijk_from_top(deck["GRAINSZ"].get_raw_array(), geometry)
    np.testing.assert_allclose(grain[active], variables["Grain Size"][active], rtol=1e-6)
    age = as_ijk_from_top(deck["AGE"].get_raw_array(), geometry)
    np.testing.assert_array_equal(age[active], variables["Age"][active])

    # Rock properties by family: the default table, point bars (2) as the batch file says.
    props = state.field_props()
    poro = props.get_double_array("PORO")
    permx = props.get_double_array("PERMX")
    permz = props.get_double_array("PERMZ")
    assert len(poro) == grid.nactive
    by_cell = facies.transpose(2, 1, 0)[::-1].ravel()  # i fastest, layers from the top
    by_cell = by_cell[by_cell >= 0]
    expected = {1: (0.22, 800, 80), 2: (0.3, 700, 70), 7: (0.12, 5, 0.5), 9: (0.05, 0.01, 0.001)}
    seen = set(np.unique(by_cell).astype(int))
    assert 2 in seen
    millidarcy = 9.869233e-16
    for family, (porosity, kh, kv) in expected.items():
        cells = by_cell == family
        if cells.any():
            np.testing.assert_allclose(poro[cells], porosity)
            np.testing.assert_allclose(permx[cells], kh * millidarcy, rtol=1e-6)
            np.testing.assert_allclose(permz[cells], kv * millidarcy, rtol=1e-6)


@pytest.mark.parametrize(
    "lines, message",
    [
        (["VTK_FILE = output/b.vti", "TOPO_FILE = output/t.f2g", "STATS_IT = 10"], "VTK_FILE and GRDECL_FILE need F2G_DZ"),
        (BLOCK_LINES + ["GRDECL_FILE = output/b.grdecl", "GRDECL_PROPS = 2; 1.5; 10; 1"], "Wrong GRDECL_PROPS value"),
        (BLOCK_LINES + ["GRDECL_FILE = output/b.grdecl", "GRDECL_PROPS = 2; 0.2; 10"], "Bad formated line for GRDECL_PROPS"),
        (BLOCK_LINES + ["GRDECL_FILE = output/t.f2g", "TOPO_FILE = output/t.f2g"], "would both write the file"),
    ],
)
def test_export_keywords_refuse_bad_values(sarvo_exe, tmp_path, lines, message):
    status, output = run_program(sarvo_exe, str(tmp_path), batch_text(lines))
    assert status == 1
    assert message in output
    assert not os.path.exists(tmp_path / "output" / "b.grdecl")
