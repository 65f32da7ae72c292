#!/usr/bin/python3
"""Draws a vertical section of a block exported with F2G_GRAIN = 1 as a PNG
picture coloured by grain size, with no library beyond Python's own:

    scripts/render-grain-section.py output/block.f2g section.png [--column I] [--row J]

By default the section runs along Y through the middle column (across a flow
along X). Each grain-size class has its colour: browns for clay and silt,
yellows for very fine to medium sand, gold and orange for coarse sand, reds
for granules, purple for pebbles; cells with no deposit are white. The colour
bar on the right holds the sixteen classes, finest at the bottom."""

import argparse
import struct
import zlib

# Grain values are (class + 1) / 16; one colour per class: dark browns for
# clay (0 to 3), olive browns for silt (4 to 6), pale to bright yellow for very
# fine to medium sand (7 to 9), gold and orange for coarse and very coarse
# sand (10, 11), reds for granules (12, 13), purples for pebbles (14, 15).
CLASSES = [
    (40, 30, 25),
    (60, 45, 35),
    (95, 70, 50),
    (125, 95, 65),
    (150, 120, 80),
    (170, 150, 95),
    (185, 175, 110),
    (200, 195, 120),
    (230, 225, 130),
    (250, 240, 100),
    (250, 200, 60),
    (245, 155, 40),
    (225, 100, 30),
    (180, 50, 30),
    (120, 30, 60),
    (80, 20, 80),
]
WHITE = (255, 255, 255)


def colour(grain):
    return CLASSES[min(15, max(0, int(round(grain * 16.0)) - 1))]


def read_block(path):
    header = {}
    with open(path) as stream:
        for line in stream:
            fields = line.split()
            if not fields:
                continue
            if fields[0] == "F2G_VALUES":
                break
            header[fields[0]] = line[len(fields[0]) :].strip()
        names = [header["F2G_VARIABLE_%d" % (k + 1)] for k in range(int(header["F2G_NB_VARIABLES"]))]
        if "Grain Size" not in names:
            raise SystemExit(path + " has no grain size: export it with F2G_GRAIN = 1")
        if header["F2G_ORDER"].split() != ["+Y", "+X", "+Z"]:
            raise SystemExit(path + ": only the order +Y +X +Z is drawn")
        column = names.index("Grain Size")
        undefined = header["F2G_UNDEFINED_%d" % (column + 1)]
        values = []
        for line in stream:
            fields = line.split()
            if fields:
                token = fields[column]
                values.append(None if token == undefined else float(token))
    nx, ny, nz = (int(v) for v in header["F2G_NB_NODES"].split())
    if len(values) != nx * ny * nz:
        raise SystemExit(path + ": wrong number of values")
    return nx, ny, nz, values


def write_png(path, width, height, rows):
    raw = b"".join(b"\x00" + bytes(v for pixel in row for v in pixel) for row in rows)

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    with open(path, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n")
        out.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        out.write(chunk(b"IDAT", zlib.compress(raw, 9)))
        out.write(chunk(b"IEND", b""))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("block", help="an F2G block written with F2G_GRAIN = 1")
    parser.add_argument("picture", help="the PNG file to write")
    parser.add_argument("--column", type=int, help="section along Y through this column i")
    parser.add_argument("--row", type=int, help="section along X through this row j")
    parser.add_argument("--pixels", type=int, default=3, help="pixels per node along the section")
    parser.add_argument("--cell-height", type=int, default=3, help="pixels per cell in height")
    args = parser.parse_args()

    nx, ny, nz, values = read_block(args.block)
    if args.row is not None:
        count, at = nx, lambda n, k: values[args.row + ny * (n + nx * k)]
    else:
        i = nx // 2 if args.column is None else args.column
        count, at = ny, lambda n, k: values[n + ny * (i + nx * k)]
    # The colour bar: the sixteen classes, finest at the bottom.
    bar = [CLASSES[min(15, k * 16 // nz)] for k in range(nz)]
    rows = []
    for k in reversed(range(nz)):
        row = []
        for n in range(count):
            grain = at(n, k)
            row.extend([WHITE if grain is None else colour(grain)] * args.pixels)
        row.extend([WHITE] * 6 + [bar[k]] * 12)
        rows.extend([row] * args.cell_height)
    write_png(args.picture, len(rows[0]), len(rows), rows)


if __name__ == "__main__":
    main()
