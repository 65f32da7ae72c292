// The checks of a sequence that need the batch as a whole: the registry as
// the earlier sequences leave it, and the grid in force when the sequence
// runs. They refuse at load what would otherwise fail only when the sequence
// starts, after the earlier ones have run.
#include "kernel/batch/NewJournalSequence.h"

#include "JournalSupport.h"
#include "kernel/channel/Centerline.h"
#include "kernel/files/EMap.h"
#include "kernel/files/SnapshotFolder.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

namespace
{
using journal_support::int_text;
using journal_support::is_set;

// The parameters that place and size the grid of the model.
const char* const GEOMETRY[] = {"DOMAIN_NX", "DOMAIN_NY", "DOMAIN_DX",       "DOMAIN_DY",
                                "DOMAIN_OX", "DOMAIN_OY", "DOMAIN_GRID_DIR", "DOMAIN_ZREF"};
// Beyond the registry's largest grid the geometry checks would only eat memory.
constexpr double MAX_CHECKED_NODES = 5000. * 5000.;

std::string grid_text(const GridParams& grid)
{
    return int_text(grid.getNx()) + " x " + int_text(grid.getNy()) + " nodes by " +
           NewJournalFile::text(grid.getDx()) + " x " + NewJournalFile::text(grid.getDy()) + " m";
}

bool checkable(const GridParams& grid)
{
    return grid.getNx() >= 1 && grid.getNy() >= 1 && grid.getDx() > 0. && grid.getDy() > 0. &&
           static_cast<double>(grid.getNx()) * grid.getNy() <= MAX_CHECKED_NODES;
}

// Why a value read from a surface cannot be used (empty when all can).
std::string value_problem(const GridReal& surface)
{
    const std::vector<double>& values = surface.getValues();
    const int nx = std::max(surface.getNx(), 1);
    const int ny = std::max(surface.getNy(), 1);
    for (size_t k = 0; k < values.size(); ++k)
    {
        const double v = values[k];
        // The readers clamp what lies beyond the bounds onto them: a bound read is such a value.
        if (v == MP_UNDEF_REAL || (std::isfinite(v) && v > MP_MIN_REAL_VALUE && v < MP_MAX_REAL_VALUE))
            continue;
        const int i = static_cast<int>(k % static_cast<size_t>(nx));
        const int j = static_cast<int>((k / static_cast<size_t>(nx)) % static_cast<size_t>(ny));
        return "the value " + NewJournalFile::text(v) + " at node (" + int_text(i) + ", " + int_text(j) +
               ") is not a usable value (values must lie strictly within [" +
               NewJournalFile::text(MP_MIN_REAL_VALUE) + ", " + NewJournalFile::text(MP_MAX_REAL_VALUE) +
               "])";
    }
    return "";
}

// How far from the reference elevation a surface may lie: deeper or higher than
// any basin, the deposits or erosion it asks for could not be held.
constexpr double MAX_RELIEF = 10000.;

std::string relief_problem(double value, double zref)
{
    if (std::fabs(value - zref) <= MAX_RELIEF)
        return "";
    return "the elevation " + NewJournalFile::text(value) + " lies more than " +
           NewJournalFile::text(MAX_RELIEF) +
           " m from the reference elevation of the domain (DOMAIN_ZREF = " + NewJournalFile::text(zref) + ")";
}

std::string relief_problem(const GridReal& surface, double zref)
{
    const std::vector<double>& values = surface.getValues();
    const int nx = std::max(surface.getNx(), 1);
    for (size_t k = 0; k < values.size(); ++k)
    {
        if (values[k] == MP_UNDEF_REAL)
            continue;
        const std::string problem = relief_problem(values[k], zref);
        if (!problem.empty())
            return problem + " at node (" + int_text(static_cast<int>(k % static_cast<size_t>(nx))) + ", " +
                   int_text(static_cast<int>(k / static_cast<size_t>(nx))) + ")";
    }
    return "";
}

// The iteration count kept in a snapshot, or a negative number when it cannot be read.
long long snapshot_age(const std::string& dir)
{
    std::ifstream file(dir + "/dyparams.txt");
    std::string row;
    while (std::getline(file, row))
    {
        row = NewJournalFile::trim(row);
        if (row.compare(0, 3, "AGE") != 0 || row.size() < 4 ||
            std::string(" \t=:").find(row[3]) == std::string::npos)
            continue;
        const std::string value = NewJournalFile::trim(row.substr(row.find_first_not_of(" \t=:", 3)));
        int age = 0;
        return NewJournalFile::toInt(value, age) && age >= 0 ? age : -1;
    }
    return -1;
}

} // namespace

GridParams NewJournalSequence::gridOf(const iParameters& registry)
{
    GridParams grid(registry.getParamDouble("DOMAIN_DX"), registry.getParamDouble("DOMAIN_DY"),
                    registry.getParamInt("DOMAIN_NX"), registry.getParamInt("DOMAIN_NY"));
    grid.setLocation(Point3D(registry.getParamDouble("DOMAIN_OX"), registry.getParamDouble("DOMAIN_OY"),
                             registry.getParamDouble("DOMAIN_ZREF")));
    grid.setRotation(registry.getParamDouble("DOMAIN_GRID_DIR"));
    return grid;
}

std::string NewJournalSequence::surfaceProblem(const std::string& path, const GridParams& grid, bool strict,
                                               bool elevation)
{
    // Read as the sequence will read it at launch: GSLIB and plain ascii files
    // carry no geometry and take the grid's.
    Topo topo;
    if (!(checkable(grid) ? topo.read_on(path, grid) : topo.read(path)))
        return journal_support::grid_reason(topo.getError());
    std::string problem = value_problem(topo);
    if (problem.empty() && elevation)
        problem = relief_problem(topo, grid.getLocation().get_elevation());
    if (!problem.empty() || !strict || !checkable(grid))
        return problem;
    if (!topo.has_values())
        return "it has no defined value";
    if (topo.is3D())
        return "it is a 3D grid where a surface is expected";
    Topo target;
    target.reset(grid);
    if (!target.migrate(topo, true, false, nullptr))
        return "it does not cover the grid (" + grid_text(grid) + "): " + target.getError();
    return "";
}

bool NewJournalSequence::checkAgainst(Parameters& registry, iTracer* quiet, bool force, bool& started,
                                      GridParams& grid)
{
    const bool snapshot = !_snapLoadDir.empty();
    bool ok = true;
    if (snapshot)
        ok = check_snapshot(registry, started);
    ok = ok && check_inference(registry, quiet, started);
    std::vector<double> before;
    for (const char* key : GEOMETRY)
        before.push_back(registry.getParam(key));
    for (const auto& entry : _userParams)
        registry.setParam(entry.first, entry.second);
    if (!_sedVolumes.empty())
        registry.setSedVolumes(_sedVolumes);
    if (is_set(_emapOffset))
        registry.setParam("EROD_OFFSET", _emapOffset);
    ok = ok && check_ranges(registry, quiet, force);
    if (ok && started && !snapshot)
    {
        // The model is built by the first sequence; a later grid would be ignored.
        for (size_t k = 0; k < before.size(); ++k)
            if (registry.getParam(GEOMETRY[k]) != before[k])
                ok = refuse(std::string(GEOMETRY[k]) + " = " +
                            NewJournalFile::text(registry.getParam(GEOMETRY[k])) + at(GEOMETRY[k]) +
                            ": the grid cannot change once the simulation has started (it is set by the "
                            "first sequence or by a snapshot)");
    }
    else if (ok)
        grid = gridOf(registry);
    if (ok && checkable(grid))
        ok = check_surfaces(registry, grid) && check_centerline(grid);
    // Even an upper limit already reached counts the sequence as a step of the run.
    started = true;
    return ok;
}

bool NewJournalSequence::check_snapshot(Parameters& registry, bool& started)
{
    // A snapshot an earlier sequence saves holds the state reached here.
    if (std::find(_savedBefore.begin(), _savedBefore.end(), _snapLoadDir) != _savedBefore.end())
        return true;
    // An interrupted save is taken from beside its name, as the load will.
    std::string why;
    std::string dir = SnapshotFolder::locate(_snapLoadDir, false, why);
    if (dir.empty())
        dir = _snapLoadDir;
    for (const char* name : {"/params.txt", "/simu.dat", "/dyparams.txt"})
        if (!NewJournalFile::isReadable(dir + name))
            return refuse("Snapshot directory " + _snapLoadDir + " does not hold " + std::string(name + 1) +
                          at("SNAP_LOAD_DIR"));
    if (!registry.read(dir + "/params.txt"))
        return refuse("Cannot read the parameters of snapshot " + _snapLoadDir + at("SNAP_LOAD_DIR"));
    const long long age = snapshot_age(dir);
    if (age < 0)
        return refuse("Snapshot directory " + _snapLoadDir +
                      ": dyparams.txt does not hold an AGE that is a count of iterations (0 or more)" +
                      at("SNAP_LOAD_DIR"));
    started = age > 0;
    return true;
}

bool NewJournalSequence::check_inference(Parameters& registry, iTracer* quiet, bool started)
{
    for (const bool nexus : {true, false})
    {
        if (!(nexus ? _hasNexus : _hasNeqsus))
            continue;
        const bool adapt = (nexus ? _nexusGrid : _neqsusGrid) == 1;
        const std::string name = nexus ? "Nexus" : "Neqsus";
        if (adapt && started)
            return refuse(name + " cannot update grid (simulation is started, please use " +
                          (nexus ? "NEXUS_GRID" : "NEQSUS_GRID") + " = 0)" +
                          at(nexus ? "NEXUS_GRID" : "NEQSUS_GRID"));
        std::string message;
        const bool applied = nexus
                                 ? MeanderCalculator::apply_nexus(&registry, quiet, _nexus, adapt, message)
                                 : MeanderCalculator::apply_neqsus(&registry, quiet, _neqsus, adapt, message);
        if (!applied)
            return refuse("Error calculating " + name + ":\n" + message);
    }
    return true;
}

bool NewJournalSequence::check_ranges(Parameters& registry, iTracer* quiet, bool force)
{
    // FORCE_SIMU lets the run go on with values out of range: the launch reports them.
    if (force)
        return true;
    std::string message;
    if (registry.check(message))
    {
        for (const auto& entry : _userParams)
            if (message.find("- " + entry.first + " = ") != std::string::npos)
                message += "\n  " + entry.first + " is set" + at(entry.first);
        return refuse(message);
    }
    iTracer* tracer = _simulator->getTracer();
    const MeanderCalculator calculator(&registry, quiet);
    // As the launch does: on the research tier at debug level the usual ranges are not enforced.
    if (registry.usingResearch() && tracer->traceLevel(TRACE_DEBUG))
        return true;
    if (calculator.check_consistency() == MP_STATUS_INCONSISTENT)
        return refuse("Consistency errors in sequence #" + int_text(_index) + "!... Batch stops!\n" +
                      "Some parameters are out of the usual range of values:" + MeanderCalculator::_msg +
                      "\nUse FORCE_SIMU = 1 if you want to ignore consistency errors");
    return true;
}

bool NewJournalSequence::check_surfaces(const iParameters& registry, const GridParams& grid)
{
    bool ok = true;
    auto check = [&](bool given, const std::string& path, const std::string& reading, const std::string& key,
                     bool strict, bool elevation = false)
    {
        if (!given || path.empty())
            return;
        const std::string problem = surfaceProblem(path, grid, strict, elevation);
        if (!problem.empty())
            ok = refuse(reading + path + at(key) + "\n" + problem);
    };
    check(_hasTopo && !_topoFile.empty(), _topoFile, "Cannot read topography from input file: ", "NEW_TOPO",
          true, true);
    const double zref = grid.getLocation().get_elevation();
    if (_hasTopo && _topoFile.empty() && is_set(_topoValue) && !relief_problem(_topoValue, zref).empty())
        ok = refuse("NEW_TOPO = " + NewJournalFile::text(_topoValue) + at("NEW_TOPO") + ": " +
                    relief_problem(_topoValue, zref));
    if (is_set(_eraseFacies) && !relief_problem(_eraseFacies, zref).empty())
        ok = refuse("ERASE_FACIES = " + NewJournalFile::text(_eraseFacies) + at("ERASE_FACIES") + ": " +
                    relief_problem(_eraseFacies, zref));
    check(_hasZulFile, _zulFile, "Cannot read upper limit topography from input file: ", "ZUL_FILE", true);
    check(_hasTectoFile, _tectoFile, "Cannot read tectonic deformation map from input file: ", "TECTO_FILE",
          false);
    if (_hasEmapFile && !_emapFile.empty())
    {
        EMap map;
        std::string problem;
        if (!(checkable(grid) ? map.read_on(_emapFile, grid) : map.read(_emapFile)))
            problem = journal_support::grid_reason(map.getError());
        else if (!map.has_values())
            problem = "it has no defined value";
        else
            problem = value_problem(map);
        if (!problem.empty())
            ok = refuse("Cannot read erodibility map from input file: " + _emapFile + at("EMAP_FILE") + "\n" +
                        problem);
        else
        {
            // The conversion the launch makes, with the coefficients the sequence will have.
            EMap trial(map);
            trial.setError("");
            if (!trial.convert(registry.getParamDouble("EROD_COEF"),
                               registry.getParamDouble("EROD_OFFSET")) ||
                !trial.getError().empty())
                ok = refuse("Cannot convert erodibility map from input file: " + _emapFile + at("EMAP_FILE") +
                            (trial.getError().empty() ? "" : "\n" + trial.getError()));
        }
    }
    return ok;
}

bool NewJournalSequence::check_centerline(const GridParams& grid)
{
    auto inside = [&grid](double x, double y)
    {
        const Point2D at = grid.geo2Grid(Point2D(x, y), false);
        const double i = at.get_abscissa();
        const double j = at.get_ordinate();
        return i >= -MP_EPSILON && j >= -MP_EPSILON && i <= grid.getNx() - 1 + MP_EPSILON &&
               j <= grid.getNy() - 1 + MP_EPSILON;
    };
    if (_hasClPoint && !inside(_clX, _clY))
        return refuse("NEW_CL_POINT " + NewJournalFile::text(_clX) + " " + NewJournalFile::text(_clY) +
                      at("NEW_CL_POINT") + " lies outside the domain (" + grid_text(grid) + ")");
    if (!_hasClFile || _clFile.empty())
        return true;
    Centerline centerline;
    if (!centerline.read(_clFile))
        return refuse("Cannot read centerline from input file: " + _clFile + at("NEW_CL_FILE") + "\n" +
                      centerline.get_message());
    const int count = centerline.size();
    int in = 0;
    for (int k = 0; k < count; ++k)
    {
        double x = 0.;
        double y = 0.;
        if (centerline.get_at(k, x, y) && inside(x, y))
            ++in;
    }
    if (count < 2)
        return refuse("Centerline file " + _clFile + at("NEW_CL_FILE") + " has " + int_text(count) +
                      " point(s): a channel needs at least 2");
    if (in < 2)
        return refuse("Centerline file " + _clFile + at("NEW_CL_FILE") +
                      " lies outside the domain: " + int_text(in) + " of its " + int_text(count) +
                      " points are inside the grid (" + grid_text(grid) + ")");
    return true;
}
