// The checks of the global section that need the grid the sequences give:
// they refuse at load what would otherwise fail only at launch or at the end.
#include "kernel/NewJournalFile.h"

#include "JournalSupport.h"
#include "kernel/GridParams.h"
#include "kernel/GridReal.h"
#include "kernel/UserClassList.h"

#include <climits>
#include <cmath>

namespace
{
using journal_support::int_text;
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
