# Reference run of the conditioning example: a free simulation whose columns
# at three nodes become the example's conditioning wells. make-wells.sh runs
# it and moves the three extracted wells into wells/ (W1, W2, W3).
# Domain: 120 x 90 nodes of 10 m; fluvial defaults with overbank flows.
# About a second of one core; pictures of the block go to output/png_reference.
[GLOBAL]
PNG_DIR = output/png_reference
EXP_WELL = 40; 10; ;
EXP_WELL = 80; 20; ;
EXP_WELL = 100; 30; ;

[NEW_SEQ]
SIM_SEED = 20241
DOMAIN_NX = 120
DOMAIN_NY = 90
DOMAIN_DX = 10
DOMAIN_DY = 10
LAUNCH_IT = 800
