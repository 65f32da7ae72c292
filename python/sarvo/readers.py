"""Readers of Sarvo's grid, well and statistics files into numpy arrays.

Grids come back indexed [i, j] (2D) or [i, j, k] (3D), whatever the order of
the file, with NaN where the file holds its undefined text.
"""

import numpy as np

from ._sarvo import read_well


def _axes(order):
    """The order text ("+Y +X +Z") as (axis index, ascending) from fastest to slowest."""
    terms = order.split()
    if len(terms) != 3:
        raise ValueError("Order string is not valid: " + order)
    axes = []
    for term in terms:
        term = term.upper()
        if len(term) != 2 or term[0] not in "+-" or term[1] not in "XYZ":
            raise ValueError("Order string is not valid: " + order)
        axes.append(("XYZ".index(term[1]), term[0] == "+"))
    if len({a for a, _ in axes}) != 3:
        raise ValueError("Order string is not valid: " + order)
    return axes


def _to_ijk(values, counts, order):
    """File-ordered values (fastest axis first) as an array [i, j, k]."""
    axes = _axes(order)
    shape = tuple(counts[a] for a, _ in reversed(axes))
    grid = values.reshape(shape)
    # Axes of `grid` run slowest first; put them as x, y, z.
    grid = np.transpose(grid, [len(axes) - 1 - [a for a, _ in axes].index(x) for x in range(3)])
    for axis, ascending in axes:
        if not ascending:
            grid = np.flip(grid, axis=axis)
    return np.ascontiguousarray(grid)


def _numbers(tokens, undefined):
    out = np.empty(len(tokens))
    for n, token in enumerate(tokens):
        out[n] = np.nan if token == undefined else float(token)
    return out


def read_f2g(path):
    """An F2G grid: {"geometry": {...}, "variables": {name: array}} in file order of variables."""
    header = {}
    with open(path) as stream:
        lines = stream.read().splitlines()
    start = None
    for n, line in enumerate(lines):
        fields = line.split()
        if not fields:
            continue
        if fields[0] == "F2G_VALUES":
            start = n + 1
            break
        header[fields[0]] = (fields[1:], line.split(None, 1)[1] if len(fields) > 1 else "")
    if start is None or "F2G_DIM" not in header:
        raise ValueError("Invalid F2G file: " + path)
    dim = int(header["F2G_DIM"][0][0])
    nodes = [int(v) for v in header["F2G_NB_NODES"][0]] + ([1] if dim == 2 else [])
    lags = [float(v) for v in header["F2G_LAGS"][0]]
    origin = [float(v) for v in header["F2G_ORIGIN"][0]]
    count = int(header["F2G_NB_VARIABLES"][0][0])
    names = [header["F2G_VARIABLE_%d" % (k + 1)][1].strip() for k in range(count)]
    undefined = [header["F2G_UNDEFINED_%d" % (k + 1)][0][0] for k in range(count)]
    total = nodes[0] * nodes[1] * nodes[2]
    rows = [line.split() for line in lines[start : start + total]]
    if len(rows) != total:
        raise ValueError("Invalid F2G file: wrong number of values in " + path)
    variables = {}
    order = header["F2G_ORDER"][1].strip()
    for k, name in enumerate(names):
        values = _numbers([row[k] for row in rows], undefined[k])
        grid = _to_ijk(values, nodes, order)
        variables[name] = grid[:, :, 0] if dim == 2 else grid
    geometry = {
        "dim": dim,
        "nx": nodes[0],
        "ny": nodes[1],
        "nz": nodes[2],
        "dx": lags[0],
        "dy": lags[1],
        "dz": lags[2] if dim == 3 else None,
        "origin": tuple(origin),
        "location": tuple(float(v) for v in header["F2G_LOCATION"][0]),
        "rotation": float(header["F2G_ROTATION"][0][0]),
        "order": order,
    }
    return {"geometry": geometry, "variables": variables}


def read_gslib(path, nx, ny, nz=1):
    """A GSLIB grid of the given node counts (x fastest): {name: array [i, j, k]}; "NA" reads as NaN."""
    with open(path) as stream:
        stream.readline()
        count = int(stream.readline().split()[0])
        names = [stream.readline().strip() for _ in range(count)]
        tokens = stream.read().split()
    total = nx * ny * nz
    if len(tokens) != total * count:
        raise ValueError("Invalid GSLIB file: %d values for %d expected in %s" % (len(tokens), total * count, path))
    values = _numbers(tokens, "NA").reshape(total, count)
    return {name: _to_ijk(values[:, k], [nx, ny, nz], "+X +Y +Z") for k, name in enumerate(names)}


def read_flw(path):
    """A well log (FLW, or LAS with its trajectory alongside) as arrays, top sample first."""
    return read_well(path)


def read_stats(path):
    """A statistics file (semicolon-separated, one header line) as {column: array}; 1e30 reads as NaN."""
    with open(path) as stream:
        names = [name.strip() for name in stream.readline().rstrip("\n").split(";")]
        rows = [line.rstrip("\n").split(";") for line in stream if line.strip()]
    columns = {}
    for k, name in enumerate(names):
        if not name:
            continue
        cells = [row[k].strip() if k < len(row) else "" for row in rows]
        try:
            values = np.array([float(c) if c else np.nan for c in cells])
            # 1e30 marks a measure with no sample yet.
            values[values >= 1e30] = np.nan
            columns[name] = values
        except ValueError:
            columns[name] = np.array(cells)
    return columns
