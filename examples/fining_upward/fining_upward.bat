# A fluvial belt whose point bars fine upward: the default fluvial parameters
# on a 1.5 x 1 km domain (151 x 101 nodes of 10 m, flow towards +X, channel
# 30 m wide and 3 m deep), with the grain size of the point bars worked out
# from what the flow carries at each height (GR_PB = 1): coarse sand where
# the flow is fast near the bed, finer sand up the bar where it slows.
# The block is run until its top reaches a flat upper limit two channel
# depths (6 m) above the initial surface. Outputs are written to output/,
# next to this file. Draw a section coloured by grain size with
#   scripts/render-grain-section.py output/fining_upward.f2g section.png
[GLOBAL]
# The block: facies, grain size and age, sampled every 0.1 m.
F2G_FILE = output/fining_upward.f2g
F2G_DZ = 0.1
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1
# Pictures of the top and two middle sections, by facies (see doc/PREVIEWS.md).
PNG_DIR = output/png

[NEW_SEQ]
DOMAIN_NX = 151
DOMAIN_NY = 101
# Variable point-bar grain size, from the Rouse profiles of the 15 classes.
GR_PB = 1
SIM_SEED = 20261125
LAUNCH_IT = -1
ZUL_TOPO = 6
