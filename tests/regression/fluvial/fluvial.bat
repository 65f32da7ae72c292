# Regression case: the default fluvial parameters on a small grid,
# one seeded sequence of 300 iterations.
[GLOBAL]
F2G_FILE = output/fluvial.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
TOPO_FILE = output/fluvial_topo.f2g
SLICE_Z = -1.5
SLICE_FILE = output/fluvial_slice.f2g

[NEW_SEQ]
SIM_SEED = 20240611
DOMAIN_NX = 90
DOMAIN_NY = 70
DOMAIN_DX = 10
DOMAIN_DY = 10
LAUNCH_IT = 300
