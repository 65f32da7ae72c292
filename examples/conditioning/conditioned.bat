# Conditioned run of the example: the domain and parameters of reference.bat
# with another seed, steered by the three wells extracted from the reference
# run (make-wells.sh makes them). Outputs go to output/, and the columns at
# the wells are extracted again next to this file (EXP_WELL*.flw), and
# pictures of the block go to output/png_conditioned. About a second of one
# core; the end of the run reports how many units of each well are honoured.
[GLOBAL]
PNG_DIR = output/png_conditioned
WELL_FILE = wells/W1.flw
WELL_NAME = W1
WELL_FILE = wells/W2.flw
WELL_NAME = W2
WELL_FILE = wells/W3.flw
WELL_NAME = W3
# Per well: honoured units and facies match of the simulated column.
STATS_COND_FILE = output/conditioned_stats.csv
# Thickness histograms of the input wells (_inw_histo.csv) and of the
# extracted ones (_outw_histo.csv): 8 classes of 0.5 m.
HISTO_FILE = output/conditioned.csv
HISTO_DZ = 0.5
HISTO_NZ = 8
EXP_WELL = 40; 10; ;
EXP_WELL = 80; 20; ;
EXP_WELL = 100; 30; ;

[NEW_SEQ]
SIM_SEED = 777
DOMAIN_NX = 120
DOMAIN_NY = 90
DOMAIN_DX = 10
DOMAIN_DY = 10
# Wells steer the banks within 7 channel widths, beyond the levees (6 widths)
# so that a levee in a log still attracts the channel, and attract new courses.
COND_MIG_WELLS_FACTOR = 7
COND_AV_WELLS = 1
# Thin non-sand gaps between sands and thin fills under fills need not be
# reproduced (closure of 0.3 m).
COND_WELL_CLOSURE_ON = 1
COND_WELL_CLOSURE = 0.3
# A well that asks to block an avulsion or an aggradation is always obeyed.
COND_WELL_RELAX = 0
LAUNCH_IT = 800
