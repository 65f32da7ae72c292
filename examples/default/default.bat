# Default fluvial simulation: the default parameters on the default domain
# (251 x 201 nodes of 10 m), one sequence of 500 iterations.
# Outputs are written to output/, next to this file.
[GLOBAL]
F2G_FILE = output/default.f2g
F2G_DZ = 0.1
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
TOPO_FILE = output/default_topo.f2g
SLICE_Z = -1.5
SLICE_FILE = output/default_slice.f2g

[NEW_SEQ]
SIM_SEED = 165426111
LAUNCH_IT = 500
