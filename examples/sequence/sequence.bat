# A fluvial simulation in three sequences whose parameters change between
# them: a wide channel starts from a given centerline, then narrows, then
# widens again and erodes its banks more easily.
# Run it from this directory:  ../../build/sarvo/sarvo -b sequence.bat
# Outputs are written to output/, next to this file: about 8 MB, in under two
# seconds of one core.

# The global section says what to export at the end of the run: the block
# sampled every 0.25 m with its facies, grain size and age, the last
# topography, two horizontal slices, and pictures of the top, the slices and
# two middle sections (see doc/PREVIEWS.md).
[GLOBAL]
F2G_FILE = output/sequence.f2g
F2G_DZ = 0.25
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
TOPO_FILE = output/sequence_topo.f2g
SLICE_Z = -1.0
SLICE_FILE = output/sequence_slice_1m.f2g
SLICE_Z = -2.0
SLICE_FILE = output/sequence_slice_2m.f2g
PNG_DIR = output/png

# Sequence 1: the seed, the default domain (251 x 201 nodes of 10 m) and a
# channel 45 m wide and 3.5 m deep, read from centerline.txt (a point-set
# file: its x and y are geographic metres) instead of being traced
# automatically down the steepest slope. Levee breaches flood the plain
# without opening crevasse splays (AV_NO_SPLAY). 200 iterations.
[NEW_SEQ]
SIM_SEED = 31415926
AV_NO_SPLAY = 1
CHNL_WIDTH = 45
CHNL_MAX_DEPTH = 3.5
NEW_CL_FILE = centerline.txt
LAUNCH_IT = 200

# Sequence 2: the same channel goes on, narrower and shallower.
# Parameters not named here keep the values the previous sequence left.
[NEW_SEQ]
CHNL_WIDTH = 30
CHNL_MAX_DEPTH = 2.5
LAUNCH_IT = 150

# Sequence 3: wider again, with banks easier to erode, so that it migrates
# faster and cuts off more meanders (the coefficient lies between 0 and 1).
[NEW_SEQ]
CHNL_WIDTH = 40
CHNL_MAX_DEPTH = 3
BANK_EROD_COEFF = 0.8
LAUNCH_IT = 150
