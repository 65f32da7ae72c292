# Regression case: a fluvial run whose banks are harder on the -Y side
# (an erodibility map), 400 iterations on a small grid.
[GLOBAL]
F2G_FILE = output/erodibility.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 0
F2G_AGE = 1
TOPO_FILE = output/erodibility_topo.f2g

[NEW_SEQ]
SIM_SEED = 20261128
DOMAIN_NX = 50
DOMAIN_NY = 40
EMAP_FILE = emap.f2g
LAUNCH_IT = 400
