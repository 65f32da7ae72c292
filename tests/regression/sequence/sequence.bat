# Regression case: two sequences, the second changes the channel and the
# bank erodibility; the channel is read from a centerline file.
[GLOBAL]
F2G_FILE = output/sequence.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
TOPO_FILE = output/sequence_topo.f2g
SLICE_Z = -1.0
SLICE_FILE = output/sequence_slice.f2g

[NEW_SEQ]
SIM_SEED = 777
DOMAIN_NX = 90
DOMAIN_NY = 70
DOMAIN_DX = 10
DOMAIN_DY = 10
NEW_CL_FILE = centerline.txt
LAUNCH_IT = 150

[NEW_SEQ]
CHNL_WIDTH = 30
CHNL_MAX_DEPTH = 2.5
BANK_EROD_COEFF = 0.5
LAUNCH_IT = 150
