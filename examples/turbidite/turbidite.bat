# Default turbidite simulation: every parameter at its turbidite default
# (251 x 201 nodes of 200 m, channel 800 m wide and 40 m deep, floods every
# 24 iterations on average). The channel builds levees, spills overbank
# turbidites, breaks its levees into splays and avulses, while its course
# rises by about 2 m at each flood. 2000 iterations (about 4 s of one core,
# 0.27 GB of memory). Outputs are written to output/, next to this file:
# about 170 MB, nearly all of it the block.
[GLOBAL]
USE_TURBIDITE = 1
F2G_FILE = output/turbidite.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
TOPO_FILE = output/turbidite_topo.f2g
SLICE_Z = 10
SLICE_FILE = output/turbidite_slice.f2g
# Pictures of the top, the slice and two middle sections (see doc/PREVIEWS.md).
PNG_DIR = output/png

[NEW_SEQ]
SIM_SEED = 165426111
LAUNCH_IT = 2000
