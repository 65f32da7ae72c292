// The user's inputs enter the project here: grids are converted to F2G,
// wells and centerlines copied, so that the directory alone can run the
// simulation again. The inputs chosen in the panels reach the simulator
// from the files of the project.

#include "gui/Project.h"

#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
const char* const IMPORTS_LOOK = "Look at the Message Window for more details.\n";
const char* const GRID_ORDER = "+Y +X +Z";
// An upper limit of this type makes the erodibility itself.
constexpr int ZUL_EMAP = 3;
// A well's ".dat" file in an iteration must not take the name of the block's.
const char* const RESERVED_WELL_NAMES[] = {"simu", "simulation"};

std::string file_name(const std::string& path)
{
    return fs::path(path).filename().string();
}

// The file name without its last extension only: "W1.v2.flw" names "W1.v2".
std::string stem(const std::string& path)
{
    return fs::path(path).stem().string();
}

bool same_file(const std::string& a, const std::string& b)
{
    std::error_code ec;
    return fs::exists(a, ec) && fs::exists(b, ec) && fs::equivalent(a, b, ec);
}
} // namespace

// ---------------------------------------------------------------------------
// Grids

bool Project::import_grid(const std::string& path, const std::string& noun, const std::string& shortNoun,
                          const std::string& dir, std::string& result)
{
    const std::string target = dir + "/" + stem(path) + ".f2g";
    debug("   Copying " + noun + " from " + path + " into " + target);
    const int format = GridReal::get_format(path);
    if (format == GRID_FORMAT_UNKNOWN || format == GRID_FORMAT_GRDECL)
        return error("Error: Unknown " + shortNoun + " file format: " + path);
    // Formats without a header take the geometry of the domain.
    GridReal grid;
    const iDomain* domain = _simulator->getDomain();
    if (domain != nullptr)
        grid = GridReal(domain->getGridParams());
    else
    {
        const iParameters* p = _simulator->getParameters();
        grid = GridReal(p->getParamDouble("DOMAIN_DX"), p->getParamDouble("DOMAIN_DY"),
                        p->getParamInt("DOMAIN_NX"), p->getParamInt("DOMAIN_NY"));
    }
    if (!grid.read(path) || !grid.write(target, tracer(), GRID_FORMAT_F2G, GRID_ORDER))
        return error("Error: Error while converting " + shortNoun + " file: " + path);
    result = target;
    return true;
}

bool Project::addTopography(const std::string& path, std::string& result)
{
    return import_grid(path, "Topography", "topo", getTopoPath(), result);
}

bool Project::addErodibilityMap(const std::string& path, std::string& result)
{
    return import_grid(path, "Erodibility", "emap", getErodPath(), result);
}

bool Project::addTectonic(const std::string& path, std::string& result)
{
    return import_grid(path, "Tectonic", "tecto", getTectoPath(), result);
}

bool Project::addFlattening(const std::string& path, std::string& result)
{
    return import_grid(path, "flattening", "flattening", getFlatteningPath(), result);
}

// ---------------------------------------------------------------------------
// Centerlines and wells

bool Project::addCenterline(const std::string& path, std::string& result)
{
    const std::string target = getCenterlinePath() + "/" + file_name(path);
    debug("   Copy Centerline from " + path + " into " + target);
    if (!same_file(path, target) && !copyFile(path, target))
        return false;
    result = target;
    return true;
}

bool Project::addWell(const std::string& path, const std::string& trajectory, std::string& result)
{
    if (Core::get_format(path) == WELL_FORMAT_UNKNOWN)
        return warning("Warning: Wrong format or file not found: " + path + "\nUnknown well file format");
    std::string name;
    if (!Core::get_name(path, stem(path), name))
        return error("Error: Error reading well file: " + path);
    if (std::find(std::begin(RESERVED_WELL_NAMES), std::end(RESERVED_WELL_NAMES), name) !=
        std::end(RESERVED_WELL_NAMES))
        return error("Error: Error importing well file: " + path + "\nThe well name " + name +
                     " is reserved");
    const std::string target = getWellsPath() + "/" + file_name(path);
    debug("   Copy Well from " + path + " into " + target);
    std::error_code ec;
    const bool copied = !same_file(path, target);
    const bool existed = fs::exists(target, ec);
    if (copied && !copyFile(path, target))
        return false;
    // A failed import leaves the directory as it was.
    const auto undo = [&]()
    {
        if (copied && !existed)
            fs::remove(target, ec);
    };
    Core core(name, tracer());
    if (!core.read(target, trajectory))
    {
        undo();
        return error("Error: Error reading well file: " + path);
    }
    if (_simulator->ready(false) && !_simulator->addWellFromFile(target, trajectory, name))
    {
        undo();
        return error("Error: Error importing well file: " + path);
    }
    _wells.erase(std::remove_if(_wells.begin(), _wells.end(), [&](const auto& w) { return w.first == name; }),
                 _wells.end());
    _wells.emplace_back(name, target);
    result = target;
    return true;
}

bool Project::scan_wells()
{
    _wells.clear();
    std::vector<std::string> files;
    std::error_code ec;
    for (const fs::directory_entry& entry : fs::directory_iterator(getWellsPath(), ec))
        if (entry.is_regular_file(ec))
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    for (const std::string& file : files)
    {
        std::string name;
        if (Core::get_name(file, stem(file), name))
            _wells.emplace_back(name, file);
    }
    return true;
}

bool Project::loadAllWells()
{
    for (const auto& well : _wells)
        if (!_simulator->addWellFromFile(well.second, "", well.first))
            return error("Error: Error importing well file: " + well.second);
    return true;
}

bool Project::extractWells(CoreList& list)
{
    list.clear();
    for (const auto& well : _wells)
    {
        Core core(well.first, tracer());
        if (!core.read(well.second))
            return error("Error: Error while reading well file: " + well.second);
        list.add(core);
    }
    return true;
}

bool Project::getWellsBox(Point2D& min, Point2D& max)
{
    CoreList list;
    if (!extractWells(list) || list.empty())
        return false;
    min = max = list.at(0).top_location();
    for (const Core& core : list)
    {
        const Point2D& p = core.top_location();
        min = Point2D(std::min(min.get_abscissa(), p.get_abscissa()),
                      std::min(min.get_ordinate(), p.get_ordinate()));
        max = Point2D(std::max(max.get_abscissa(), p.get_abscissa()),
                      std::max(max.get_ordinate(), p.get_ordinate()));
    }
    return true;
}

// ---------------------------------------------------------------------------
// Inputs chosen in the panels

void Project::selectErodibilityMap(const std::string& path)
{
    _emap = {path, true};
}

void Project::selectUpperLimit(const std::string& path, int type)
{
    _zul = {path, true};
    _zulType = type;
}

void Project::selectTectonic(const std::string& path)
{
    _tecto = {path, true};
}

void Project::selectFlattening(const std::string& path)
{
    _flattening = {path, true};
}

bool Project::loadEmap()
{
    if (_emap.path.empty())
        return true;
    _emap.changed = false;
    if (_simulator->getParameters()->getParamInt("ZUL_TYPE") == ZUL_EMAP)
    {
        warning("Warning: Upper limit is stratigraphic. EMap file will be ignored\n");
        return true;
    }
    if (!_simulator->loadEMapFromFile(_emap.path, false))
        return error(std::string("Error: Problem when reading the erodibility map file\n") + IMPORTS_LOOK);
    return true;
}

bool Project::loadZul()
{
    if (_zul.path.empty())
        return true;
    _zul.changed = false;
    if (!_simulator->loadUpperLimitFromFile(_zul.path, _zulType))
        return error(std::string("Error: Problem when reading the upper limit file.\n") + IMPORTS_LOOK);
    return true;
}

bool Project::loadTecto()
{
    if (_tecto.path.empty())
        return true;
    _tecto.changed = false;
    if (!_simulator->loadTectoMapFromFile(_tecto.path))
        return error(std::string("Error: Problem when reading the tectonic deformation file.\n") +
                     IMPORTS_LOOK);
    return true;
}

bool Project::loadFlattening()
{
    if (_flattening.path.empty())
        return true;
    _flattening.changed = false;
    if (!_simulator->loadFlatteningFromFile(_flattening.path))
        return error(std::string("Error: Problem when reading the flattening surface file.\n") +
                     IMPORTS_LOOK);
    return true;
}
