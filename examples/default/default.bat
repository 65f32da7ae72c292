# Default fluvial simulation: every parameter at its default on the default
# domain (251 x 201 nodes of 10 m, flow towards +X, channel 30 m wide and
# 3 m deep). The channel migrates, cuts off its loops, floods, breaks its
# levees into crevasse splays and avulses, rising with its floods until the
# top of the block reaches a flat upper limit three channel depths (9 m)
# above the initial surface (about 17000 iterations, 13 s of one core,
# 0.18 GB of memory). Outputs are written to output/, next to this file: about
# 84 MB, nearly all of it the block.
[GLOBAL]
# The block: facies, grain size and age, sampled every 0.1 m.
F2G_FILE = output/default.f2g
F2G_DZ = 0.1
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
# The last topography and a horizontal slice halfway up the block.
TOPO_FILE = output/default_topo.f2g
SLICE_Z = 4.5
SLICE_FILE = output/default_slice.f2g
# Pictures of the top, the slice and two middle sections (see doc/PREVIEWS.md).
PNG_DIR = output/png

[NEW_SEQ]
SIM_SEED = 165426111
# Run until the upper limit is reached everywhere.
LAUNCH_IT = -1
ZUL_TOPO = 9
