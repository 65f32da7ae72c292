#include "kernel/batch/KeywordDeclarations.h"

namespace
{

constexpr KeywordSection G = SECTION_GLOBAL;
constexpr KeywordSection S = SECTION_SEQUENCE;

const char* const UNSET = "none";

// clang-format off
const std::vector<KeywordDeclaration> KEYWORDS = {
    // [GLOBAL]: the run
    {"VERBOSE", G, "Run", "0 or 1", "1", "", TIER_FREE, "1 shows information messages, 0 only warnings and errors"},
    {"TRACE_LEVEL", G, "Run", "int", "4", "", TIER_FREE, "Detail of the messages: 1 fatal, 2 errors, 3 warnings, 4 information, 5 debug, 6 all"},
    {"USE_TURBIDITE", G, "Run", "0 or 1", "0", "", TIER_FREE, "1 for a turbiditic system, 0 for a fluvial one (2 is refused)"},
    {"FORCE_SIMU", G, "Run", "0 or 1", "0", "", TIER_FREE, "Whether a sequence runs despite inconsistent parameters"},
    // [GLOBAL]: inputs
    {"WELL_FILE", G, "Inputs", "path", UNSET, "", TIER_PREMIUM, "A conditioning well log (FLW or LAS); one line per well"},
    {"WELL_TRAJ", G, "Inputs", "path", UNSET, "", TIER_PREMIUM, "Trajectory of the well of the same rank; one line per well"},
    {"WELL_NAME", G, "Inputs", "text", "the file's name", "", TIER_PREMIUM, "Name of the well of the same rank; one line per well"},
    {"USER_CLASS_TYPE", G, "Inputs", "int", UNSET, "", TIER_PREMIUM, "How well log values become facies: 2 discrete codes, 3 continuous intervals"},
    {"USER_CLASS_FAC_ID", G, "Inputs", "list of int", UNSET, "", TIER_PREMIUM, "Facies family of each user class, separated by ;"},
    {"USER_CLASS_ATT", G, "Inputs", "list of int", UNSET, "", TIER_FREE, "Log code of each discrete class, separated by ;"},
    {"USER_CLASS_MIN_ITV", G, "Inputs", "list of real", UNSET, "log unit", TIER_PREMIUM, "Lower bound of each continuous class, separated by ;"},
    {"USER_CLASS_MAX_ITV", G, "Inputs", "list of real", UNSET, "log unit", TIER_PREMIUM, "Upper bound of each continuous class, separated by ;"},
    {"BASEMENT_TOPO", G, "Inputs", "path", UNSET, "", TIER_FREE, "Deprecated: use NEW_TOPO, NEW_TOPO_FACIES and NEW_TOPO_MODE = 1 in the first sequence"},
    {"BASEMENT_FACIES", G, "Inputs", "int", "0", "", TIER_FREE, "Facies family that fills below the basement surface (0 to 13)"},
    {"FLATTENING_FILE", G, "Inputs", "path", UNSET, "", TIER_PREMIUM, "Grid of the flattening surface that bends the block"},
    // [GLOBAL]: exports
    {"F2G_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Regular block written at the end of the run"},
    {"F2G_IT", G, "Exports", "int", UNSET, "iterations", TIER_FREE, "Write a block every this many iterations, named after F2G_FILE"},
    {"F2G_ZBOT", G, "Exports", "real", "base of the block", "m", TIER_FREE, "Geographic elevation of the bottom of the regular block"},
    {"F2G_ZTOP", G, "Exports", "real", "top of the block", "m", TIER_FREE, "Geographic elevation of the top of the regular block"},
    {"F2G_DZ", G, "Exports", "real", UNSET, "m", TIER_FREE, "Thickness of a cell of the regular block, above 0"},
    {"F2G_FACIES", G, "Exports", "0 or 1", "0", "", TIER_FREE, "Whether the block holds the facies"},
    {"F2G_GRAIN", G, "Exports", "0 or 1", "0", "", TIER_FREE, "Whether the block holds the grain size"},
    {"F2G_AGE", G, "Exports", "0 or 1", "0", "", TIER_FREE, "Whether the block holds the age of the deposits"},
    {"F2G_ORDER", G, "Exports", "text", "+Y +X +Z", "", TIER_FREE, "Order and sense of the axes in the block file"},
    {"TOPO_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Topography written at the end of the run"},
    {"SLICE_Z", G, "Exports", "real", UNSET, "m", TIER_FREE, "Geographic elevation of a horizontal slice of facies; one line per slice"},
    {"SLICE_FILE", G, "Exports", "path", "`<block name>.slice_z=<z>.f2g`", "", TIER_FREE, "File of the slice of the same rank"},
    {"HISTO_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Histograms of facies by height of the input and extracted wells"},
    {"HISTO_DZ", G, "Exports", "real", UNSET, "m", TIER_FREE, "Height of a class of the histograms, above 0"},
    {"HISTO_NZ", G, "Exports", "int", UNSET, "classes", TIER_FREE, "Number of classes of the histograms, above 0"},
    {"EXP_WELL", G, "Exports", "i; j; real; real", UNSET, "nodes", TIER_FREE, "A well extracted at grid node (i, j) at the end, written to `EXP_WELL<i>_<j>.flw`; one line per well"},
    {"PNG_DIR", G, "Exports", "path", UNSET, "", TIER_FREE, "Directory that receives PNG pictures of the block at the end"},
    {"VPC_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Vertical proportion curves of the block: share of each facies family by slice of VPC_DZ"},
    {"WELL_VPC_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Vertical proportion curves of the conditioning wells, by slice of VPC_DZ"},
    {"VPC_DZ", G, "Exports", "real", UNSET, "m", TIER_FREE, "Height of a slice of the proportion curves, above 0; required by VPC_FILE and WELL_VPC_FILE"},
    {"PM_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "Proportion matrix: share of each facies family over the column of every node"},
    {"VTK_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "The block for 3D viewers, VTK XML: `.vti`, or `.vts` on a rotated domain; sampled as F2G_DZ, F2G_ZBOT, F2G_ZTOP"},
    {"GRDECL_FILE", G, "Exports", "path", UNSET, "", TIER_FREE, "The block as a corner-point grid for reservoir simulators, with porosity and permeability by facies family"},
    {"GRDECL_PROPS", G, "Exports", "family; porosity; kh; kv", "see doc/EXPORTS.md", "-, mD", TIER_FREE, "Porosity and horizontal and vertical permeabilities of one facies family in GRDECL_FILE; one line per family"},
    {"STATS_FILE", G, "Statistics", "path", UNSET, "", TIER_RESEARCH, "Statistics of the run, semicolon-separated"},
    {"STATS_CL_FILE", G, "Statistics", "path", "`<statistics name>_centerline.csv`", "", TIER_RESEARCH, "Statistics of the centerline"},
    {"STATS_COND_FILE", G, "Statistics", "path", UNSET, "", TIER_PREMIUM, "Statistics of the conditioning wells"},
    {"STATS_IT", G, "Statistics", "int", UNSET, "iterations", TIER_RESEARCH, "Write statistics every this many iterations (1 to 1000)"},
    {"STATS_AV", G, "Statistics", "int", UNSET, "avulsions", TIER_RESEARCH, "Write statistics every this many regional avulsions (1 to 1000)"},
    {"STATS_PROPS", G, "Statistics", "0 or 1", "0", "", TIER_RESEARCH, "Whether the statistics hold the facies proportions"},
    {"STATS_CL", G, "Statistics", "0 or 1", "0", "", TIER_RESEARCH, "Whether the centerline statistics are written"},

    // [NEW_SEQ]: actions
    {"LAUNCH_IT", S, "Actions", "int", UNSET, "iterations", TIER_FREE, "Iterations the sequence runs; -1 runs until the upper limit is reached. Required"},
    {"LAUNCH_ZUL", S, "Actions", "", UNSET, "", TIER_FREE, "Deprecated: use LAUNCH_IT = -1 with ZUL_FILE or ZUL_TOPO"},
    {"NEW_TOPO", S, "Actions", "path or real", UNSET, "m", TIER_FREE, "New topography before the sequence: a grid file, or a constant geographic elevation"},
    {"NEW_TOPO_MODE", S, "Actions", "int", "1", "", TIER_FREE, "How the new topography replaces the old one: 1 erode and fill, 2 fill only, 3 erode only, 4 raise the base"},
    {"NEW_TOPO_FACIES", S, "Actions", "int", "0", "", TIER_FREE, "Facies family that fills below the new topography (0 to 13)"},
    {"NEW_CL_FILE", S, "Actions", "path", UNSET, "", TIER_FREE, "New channel centerline from a point file"},
    {"NEW_CL_POINT", S, "Actions", "x y", UNSET, "m", TIER_FREE, "New channel grown down the steepest slope from this point"},
    {"ZUL_FILE", S, "Actions", "path", UNSET, "", TIER_FREE, "Upper limit surface from a grid file"},
    {"ZUL_TOPO", S, "Actions", "real", UNSET, "m", TIER_FREE, "Upper limit at a constant geographic elevation"},
    {"ZUL_TYPE", S, "Actions", "int", "1", "", TIER_FREE, "What the upper limit does: 0 none, 1 stop there, 2 stop and erode down to it, 3 stratigraphic"},
    {"EMAP_FILE", S, "Actions", "path", UNSET, "", TIER_PREMIUM, "Erodibility map; ignored with a stratigraphic upper limit"},
    {"EMAP_OFFSET", S, "Actions", "real", UNSET, "", TIER_PREMIUM, "Offset added to the erodibility map"},
    {"TECTO_FILE", S, "Actions", "path", UNSET, "", TIER_RESEARCH, "Tectonic deformation map"},
    {"SNAP_LOAD_DIR", S, "Actions", "path", UNSET, "", TIER_RESEARCH, "Snapshot directory loaded before the sequence"},
    {"SNAP_SAVE_DIR", S, "Actions", "path", UNSET, "", TIER_RESEARCH, "Snapshot directory saved after the sequence"},
    {"ERASE_FACIES", S, "Actions", "real", UNSET, "m", TIER_FREE, "Erase the deposits up to this geographic elevation"},
    {"ERASE_FACIES_FK", S, "Actions", "real", UNSET, "m", TIER_FREE, "Forget the deposits up to this elevation without eroding them"},
    {"SED_LOAD_VOL", S, "Actions", "15 int; separated", "by system type", "%", TIER_PREMIUM, "Share of each of the 15 grain size classes in the load, finest first"},
    // [NEW_SEQ]: inference of the expert parameters from a few measures
    {"NEXUS_HMAX", S, "Inference", "real", UNSET, "m", TIER_FREE, "Channel maximum depth from which the expert parameters are derived"},
    {"NEXUS_ISBX", S, "Inference", "real", UNSET, "", TIER_FREE, "Sand bodies extension index from which they are derived"},
    {"NEXUS_SAND", S, "Inference", "real", UNSET, "%", TIER_FREE, "Net to gross from which they are derived"},
    {"NEXUS_GRID", S, "Inference", "0 or 1", "0", "", TIER_FREE, "Whether the inference may adapt the grid (only before the first run)"},
    {"NEQSUS_HMAX", S, "Inference", "real", UNSET, "m", TIER_FREE, "Channel maximum depth; only the event periods are derived"},
    {"NEQSUS_ISBX", S, "Inference", "real", UNSET, "", TIER_FREE, "Sand bodies extension index; only the event periods are derived"},
    {"NEQSUS_SAND", S, "Inference", "real", UNSET, "%", TIER_FREE, "Net to gross; only the event periods are derived"},
    {"NEQSUS_GRID", S, "Inference", "0 or 1", "0", "", TIER_FREE, "Whether this inference may adapt the grid (only before the first run)"},
    // [NEW_SEQ]: expert settings
    {"SINUOSITY_INTERVAL", S, "Expert", "int", "0 (not used)", "iterations", TIER_RESEARCH, "Interval between two measures of the real sinuosity, at most 1000"},
    {"CURVATURE_PTS_NB", S, "Expert", "int", "3", "points", TIER_RESEARCH, "Points on each side used to compute the curvature, 1 to 20"},
    {"SCOUR_FACTOR", S, "Expert", "real", "-1 (not used)", "", TIER_RESEARCH, "Scour factor of the flow in bends: the deeper the pool at the outer bank (7 when not set)"},
    {"FRICTION_COEFF", S, "Expert", "real", "-1 (not used)", "", TIER_RESEARCH, "Friction coefficient of the channel bed (derived from the channel when not set)"},
    {"BANK_EROD_COEFF", S, "Expert", "real", "not used", "", TIER_FREE, "Erodibility of the banks relative to the floodplain, 0 to 1"},
    {"TURB_AGG_HEIGHT_COEF", S, "Expert", "real", "1", "", TIER_PREMIUM, "Factor on the aggradation height of turbidites, above 0"},
    {"COND_MIG_WELLS_FACTOR", S, "Expert", "int", "not used", "channel widths", TIER_PREMIUM, "Distance up to which a well pulls on the migration, as a number of channel widths"},
    {"COND_AV_WELLS", S, "Expert", "0 or 1", "1", "", TIER_PREMIUM, "Whether the wells steer the avulsions"},
    {"COND_WELLS_NEW_ALGO", S, "Expert", "0 or 1", "1", "", TIER_PREMIUM, "Whether the newer conditioning method is used"},
    {"COND_WELLS_AV_MP", S, "Expert", "0 or 1", "0", "", TIER_PREMIUM, "Whether conditioned avulsions aim at the mean position of the wells"},
    {"COND_WELLS_BLOCK_AV", S, "Expert", "0 or 1", "1", "", TIER_PREMIUM, "Whether the wells may block an avulsion"},
};
// clang-format on

} // namespace

const std::vector<KeywordDeclaration>& KeywordDeclarations::all()
{
    return KEYWORDS;
}

const KeywordDeclaration* KeywordDeclarations::find(const std::string& name, KeywordSection section)
{
    for (const KeywordDeclaration& row : KEYWORDS)
    {
        if (row.section == section && name == row.name)
            return &row;
    }
    return nullptr;
}
