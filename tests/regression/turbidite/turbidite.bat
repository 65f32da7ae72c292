# Regression case: the turbidite defaults on a small grid of 200 m nodes,
# one seeded sequence of 300 iterations (levees, overbank turbidites, splays).
[GLOBAL]
USE_TURBIDITE = 1
F2G_FILE = output/turbidite.f2g
F2G_DZ = 4
F2G_FACIES = 1
F2G_GRAIN = 0
F2G_AGE = 1
TOPO_FILE = output/turbidite_topo.f2g

[NEW_SEQ]
SIM_SEED = 20261125
DOMAIN_NX = 60
DOMAIN_NY = 40
LAUNCH_IT = 300
