# Regression case: a fluvial run steered by two wells, 300 iterations on a
# grid of 110 x 40 nodes; the columns at the wells are extracted again.
[GLOBAL]
WELL_FILE = W1.flw
WELL_NAME = W1
WELL_FILE = W2.flw
WELL_NAME = W2
STATS_COND_FILE = output/conditioned_stats.csv
TOPO_FILE = output/conditioned_topo.f2g
HISTO_FILE = output/conditioned.csv
HISTO_DZ = 0.5
HISTO_NZ = 8
EXP_WELL = 40; 10; ;
EXP_WELL = 80; 20; ;

[NEW_SEQ]
SIM_SEED = 20261129
DOMAIN_NX = 110
DOMAIN_NY = 40
COND_MIG_WELLS_FACTOR = 7
COND_AV_WELLS = 1
LAUNCH_IT = 300
