# Regression case: a fluvial run on a small grid that stops when its deposits
# reach a flat upper limit 1 m above the start (LAUNCH_IT = -1).
[GLOBAL]
F2G_FILE = output/upper_limit.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 0
F2G_AGE = 1
TOPO_FILE = output/upper_limit_topo.f2g

[NEW_SEQ]
SIM_SEED = 20261126
DOMAIN_NX = 40
DOMAIN_NY = 30
LAUNCH_IT = -1
ZUL_TOPO = 1
