"""FLW logs as the conditioning measures read them, and their facies match."""


def read_flw(path):
    """Samples of an FLW log as (facies, bottom, top), in elevations."""
    keys, rows, data = {}, [], False
    for line in open(path):
        line = line.strip()
        if line.startswith('~A'):
            data = True
            continue
        if not line or line.startswith('#'):
            continue
        if data:
            rows.append(line.split())
        elif '=' in line:
            k, v = line.split('=', 1)
            keys[k.strip()] = v.strip()
    top = float(keys['Z_TOP'])
    # Top first: facies, depth of the bottom below the top, height.
    return [(int(r[0]), top - float(r[1]), top - float(r[1]) + float(r[2])) for r in rows]


def facies_match(well, column):
    """Share of the well's height where the column has the well's facies."""
    zb = min(s[1] for s in well)
    zt = max(s[2] for s in well)
    same = 0.
    for f, b, t in well:
        for g, cb, ct in column:
            if f == g:
                same += max(0., min(t, ct) - max(b, cb))
    return same / (zt - zb) if zt > zb else 0.
