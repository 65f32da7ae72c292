# Regression case: a fluvial run over a tectonic map that subsides the +Y side
# (applied every 1000 iterations), 1100 iterations on a small grid.
[GLOBAL]
F2G_FILE = output/tectonic.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 0
F2G_AGE = 0
TOPO_FILE = output/tectonic_topo.f2g

[NEW_SEQ]
SIM_SEED = 20261127
DOMAIN_NX = 50
DOMAIN_NY = 40
TECTO_FILE = tecto.f2g
LAUNCH_IT = 1100
