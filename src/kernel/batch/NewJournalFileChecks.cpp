// The checks of the global section that need the grid the sequences give:
// they refuse at load what would otherwise fail only at launch or at the end.
#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/UserClassList.h"
#include "kernel/geometry/GridParams.h"

#include <climits>
#include <cmath>
#include <filesystem>
#include <unistd.h>

namespace
{
using journal_support::int_text;
using journal_support::is_set;
using journal_support::LAST_FACIES_FAMILY;

// Name of the file without its extension, directory kept.
std::string strip_extension(const std::string& path)
{
    const std::filesystem::path p(path);
    if (!p.has_extension())
        return path;
    return (p.parent_path() / p.stem()).string();
}
} // namespace

bool NewJournalFile::check_global_surfaces(const GridParams& grid)
{
    UserClassList classes;
    if (_hasUserClasses && !make_user_classes(classes))
        return false;
    if (!_flatteningFile.empty())
    {
        const std::string problem = NewJournalSequence::surfaceProblem(_flatteningFile, grid, true, true);
        if (!problem.empty())
            return fail("Cannot read flattening surface from input file: " + _flatteningFile + "\n" +
                        problem);
    }
    if (_basementTopo.empty())
        return true;
    if (GridReal::get_format(_basementTopo) != GRID_FORMAT_F2G)
        return fail("Basement topography file must be F2G format: " + _basementTopo);
    const std::string problem = NewJournalSequence::surfaceProblem(_basementTopo, grid, true, true);
    if (!problem.empty())
        return fail("Cannot read basement topography from input file: " + _basementTopo + "\n" + problem);
    return true;
}

bool NewJournalFile::check_extracted_wells_at_load(const GridParams& grid)
{
    const int nx = grid.getNx();
    const int ny = grid.getNy();
    for (const ExtractedWell& well : _extractedWells)
        if (well.i < 0 || well.i >= nx || well.j < 0 || well.j >= ny)
            return fail("Extract well indices [" + int_text(well.i) + ", " + int_text(well.j) +
                        "] out of range [" + int_text(nx - 1) + ", " + int_text(ny - 1) +
                        "] (the grid at the end of the batch)");
    return true;
}

bool NewJournalFile::check_sampling(const GridParams& grid)
{
    if (!journal_support::is_set(_f2gDz))
        return true;
    const bool bottom = journal_support::is_set(_f2gZbot);
    const bool top = journal_support::is_set(_f2gZtop);
    if (bottom && top && _f2gZbot >= _f2gZtop)
        return fail("F2G_ZBOT (" + text(_f2gZbot) + ") must be below F2G_ZTOP (" + text(_f2gZtop) + ")");
    if (!bottom || !top)
        return true;
    // The levels of the block, and the cells of one variable, must be counted by an int.
    const double levels = std::floor((_f2gZtop - _f2gZbot) / _f2gDz) + 1.;
    const double cells = levels * grid.getNx() * grid.getNy();
    if (!std::isfinite(levels) || levels > INT_MAX || cells > INT_MAX)
        return fail("The block between {" + text(_f2gZbot) + ", " + text(_f2gZtop) + "m} by " + text(_f2gDz) +
                    "m would need " + text(levels) + " levels (" + text(cells) +
                    " cells), more than can be held (" + int_text(INT_MAX) +
                    "): raise F2G_DZ or narrow F2G_ZBOT - F2G_ZTOP");
    return true;
}

// ---------------------------------------------------------------------------
// End-of-global checks

std::string NewJournalFile::base_name() const
{
    return strip_extension(_batchFile);
}

std::string NewJournalFile::f2g_file() const
{
    return _f2gFile.empty() ? base_name() + ".f2g" : _f2gFile;
}

std::string NewJournalFile::slice_file(size_t index) const
{
    if (index < _sliceFiles.size())
        return _sliceFiles[index];
    return base_name() + ".slice_z=" + text(_sliceZ[index]) + ".f2g";
}

std::string NewJournalFile::input_histogram_file() const
{
    return strip_extension(_histoFile.empty() ? _batchFile : _histoFile) + "_inw_histo.csv";
}

std::string NewJournalFile::extracted_histogram_file() const
{
    return strip_extension(_histoFile.empty() ? _batchFile : _histoFile) + "_outw_histo.csv";
}

std::string NewJournalFile::extracted_well_file(const ExtractedWell& well) const
{
    return filename("EXP_WELL" + int_text(well.i) + "_" + int_text(well.j) + ".flw");
}

void NewJournalFile::set_defaults()
{
    const bool stats = is_set(_statsIt) || is_set(_statsAv);
    if (stats && _statsFile.empty())
        _statsFile = base_name() + "_stats.csv";
    if (_statsCl == 1 && _statsClFile.empty())
        _statsClFile = strip_extension(_statsFile.empty() ? base_name() : _statsFile) + "_centerline.csv";
}

bool NewJournalFile::check_readable(const std::string& path, const std::string& what)
{
    if (isReadable(path))
        return true;
    return fail(what + path + " is not readable");
}

bool NewJournalFile::check_writable(const std::string& path, const std::string& what)
{
    if (isWritable(path))
        return true;
    return fail(what + path + " is not writable");
}

bool NewJournalFile::check_global()
{
    const bool inputs = check_inputs();
    const bool outputs = inputs && check_outputs();
    const bool exports = outputs && check_block_exports() && check_exports();
    return exports;
}

bool NewJournalFile::check_inputs()
{
    if (!_wellNames.empty() && _wellNames.size() != _wellFiles.size())
        return fail("Please, provide the same number of well names than well files");
    if (!_wellTrajectories.empty() && _wellTrajectories.size() != _wellFiles.size())
        return fail("Please, provide the same number of well trajectories than well files");
    if (_hasUserClasses)
    {
        if (_userClassType != 2 && _userClassType != 3)
            return fail("Please, indicate the appropriate user class type (discrete (2) or continue (3))");
        if (_userClassType == 2 && _userClassFacies.size() != _userClassAttributes.size())
            return fail("Using user class type 2 (discrete), facies id and attribute sizes mismatch");
        if (_userClassType == 3 && (_userClassFacies.size() != _userClassMin.size() ||
                                    _userClassFacies.size() != _userClassMax.size()))
            return fail("Using user class type 3 (continue), facies id and interval sizes mismatch");
    }
    for (const std::string& file : _wellFiles)
        if (!check_readable(file, "Well file "))
            return false;
    for (const std::string& file : _wellTrajectories)
        if (!check_readable(file, "Well trajectory file "))
            return false;
    if (!_basementTopo.empty() && !check_readable(_basementTopo, "Basement topography file "))
        return false;
    if (!_flatteningFile.empty() && !check_readable(_flatteningFile, "Flattening surface file "))
        return false;
    if (is_set(_basementFacies) && (_basementFacies < 0 || _basementFacies > LAST_FACIES_FAMILY))
        return fail("Basement facies " + int_text(_basementFacies) + " is not valid");
    return true;
}

bool NewJournalFile::check_outputs()
{
    const bool block = is_set(_f2gDz) || is_set(_f2gIt);
    if (block && !check_writable(is_set(_f2gIt) ? base_name() + "_it0.f2g" : f2g_file(), "F2G_FILE "))
        return false;
    if (!_topoFile.empty() && !check_writable(_topoFile, "TOPO_FILE "))
        return false;
    if (!_statsFile.empty() && !check_writable(_statsFile, "STATS_FILE "))
        return false;
    if (!_statsClFile.empty() && !check_writable(_statsClFile, "STATS_CL_FILE "))
        return false;
    if (!_statsCondFile.empty() && !check_writable(_statsCondFile, "STATS_COND_FILE "))
        return false;
    for (const std::string& file : _sliceFiles)
        if (!check_writable(file, "SLICE_FILE "))
            return false;
    if (!_histoFile.empty() && !check_writable(_histoFile, "HISTO_FILE "))
        return false;
    const bool histogram = is_set(_histoDz) || is_set(_histoNz);
    if (histogram && !_wellFiles.empty() &&
        !check_writable(input_histogram_file(), "Input wells histogram file "))
        return false;
    if (histogram && !_extractedWells.empty() &&
        !check_writable(extracted_histogram_file(), "Extracted wells histogram file "))
        return false;
    for (const ExtractedWell& well : _extractedWells)
        if (!check_writable(extracted_well_file(well), "Extracted well file "))
            return false;
    if (std::string error; !_proportions.check(error))
        return fail(error);
    // The preview directory is made at the end when it does not exist yet.
    std::error_code code;
    if (!_pngDir.empty() &&
        !(std::filesystem::is_directory(_pngDir, code) && ::access(_pngDir.c_str(), W_OK) == 0) &&
        !isWritable(_pngDir))
        return fail("PNG_DIR " + _pngDir + " is not writable");
    return true;
}

bool NewJournalFile::check_exports()
{
    iTracer* tracer = _simulator->getTracer();
    if (is_set(_f2gIt) && !_f2gFile.empty())
        tracer->warning("F2G_FILE keyword is ignored while using F2G_IT.");
    if (is_set(_f2gIt) && !is_set(_f2gDz))
        return fail("Wrong F2G_DZ value (must be > 0.)");
    if (is_set(_f2gDz) && _f2gFacies != 1 && _f2gGrain != 1 && _f2gAge != 1)
        return fail("F2G_FACIES or F2G_GRAIN or F2G_AGE keyword is missing");
    const bool stats = is_set(_statsIt) || is_set(_statsAv);
    const bool statsAsked = !_statsFile.empty() || !_statsClFile.empty() || _statsProps == 1 || _statsCl == 1;
    if (statsAsked && !stats && _statsCondFile.empty())
        return fail("STATS_IT, STATS_AV or STATS_COND_FILE keyword is missing");
    if (is_set(_statsIt) && is_set(_statsAv))
        return fail("Only one out of STATS_IT or STATS_AV keyword must be used");
    if (!_statsCondFile.empty() && _wellFiles.empty())
        return fail(
            "You must import some wells using WELL_FILE keyword for exporting conditioning statistics");
    if (!_sliceFiles.empty() && _sliceFiles.size() != _sliceZ.size())
        return fail("Please, provide the same number of slices file name than required slices");
    if (is_set(_histoDz) != is_set(_histoNz))
        return fail("Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)");
    const bool anything = stats || !_sliceZ.empty() || is_set(_histoDz) || is_set(_histoNz) ||
                          is_set(_f2gDz) || !_extractedWells.empty() || !_statsCondFile.empty() ||
                          !_pngDir.empty() || _proportions.any();
    if (!anything)
        return fail("Nothing to export (please use STATS_IT, STATS_AV, SLICE_Z, HISTO_DZ, HISTO_NZ, F2G_DZ, "
                    "EXP_WELL or STATS_COND_FILE)");
    return true;
}
