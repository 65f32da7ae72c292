// What the driver offers between two sequences: new surfaces and maps, a new
// centerline, and exports of the block.

#include "kernel/driver/Simulator.h"

#include "kernel/channel/Centerline.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/CenterlineDisc.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/EMap.h"
#include "kernel/files/TectoMap.h"
#include "kernel/geometry/RegularBlock.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/Parameters.h"

#include <exception>
#include <fstream>
#include <sstream>

namespace
{
constexpr const char* ACTION_EXCEPTION_WITHOUT_TEXT =
    "Exception thrown: look at message window for more details";

template <typename Value>
std::string text_of(const std::string& head, Value value, const std::string& tail = ")")
{
    std::ostringstream text;
    text << head << value << tail;
    return text.str();
}

// A grid of the domain's geometry holding one value everywhere.
template <typename Grid> Grid constant_on(const Domain& domain, double value)
{
    Grid grid(domain.getGridParams());
    grid.fill(value);
    return grid;
}
} // namespace

template <typename Action> bool Simulator::guardedAction(const std::string& name, Action action)
{
    const std::string prefix = "Simulator::" + name + " : ";
    try
    {
        return action();
    }
    catch (const std::exception& e)
    {
        return fail(prefix + e.what(), false);
    }
    catch (const std::string& text)
    {
        return fail(prefix + text, false);
    }
    catch (...)
    {
        return fail(prefix + ACTION_EXCEPTION_WITHOUT_TEXT, false);
    }
}

void Simulator::countAsIteration(bool flag)
{
    if (flag && ready(false))
        _network->setAge(_network->getAge() + 1);
}

// ---------------------------------------------------------------------------
// Channel actions

bool Simulator::replaceCenterlineFromFile(const std::string& path, bool flag)
{
    Centerline centerline;
    if (!centerline.read(path))
        return fail("Cannot read centerline from file " + path, false);
    return replaceCenterline(centerline, flag);
}

bool Simulator::replaceCenterline(const Centerline& centerline, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    printout("Load centerline");
    if (!_network->load_centerline(centerline))
        return fail(std::string("Cannot replace centerline"), false);
    return true;
}

bool Simulator::replaceCenterlineFromPoint(const Point2D& point, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    printout(text_of("Load centerline from point {", point.get_abscissa(), ", ") +
             text_of("", point.get_ordinate(), "}"));
    if (!_network->load_centerline(point))
        return fail(std::string("Cannot replace centerline"), false);
    return true;
}

bool Simulator::saveCenterline(const std::string& path)
{
    Centerline centerline;
    if (!getCenterline(centerline))
        return false;
    if (!centerline.write(path))
        return fail("Cannot save centerline into file " + path, false);
    return true;
}

bool Simulator::saveCenterlineDisc(const std::string& path)
{
    if (!ready(true))
        return false;
    const Channel* channel = _network->channel();
    if (channel == nullptr)
        return fail(std::string("There is no channel to save"), false);
    CenterlineDisc disc;
    if (!_domain->getCenterlineDisc(disc, *channel) || !disc.write(path, _tracer.get(), GRID_FORMAT_F2G))
        return fail("Cannot save discrete centerline into file " + path, false);
    return true;
}

bool Simulator::getCenterline(Centerline& centerline) const
{
    if (!ready(true))
        return false;
    if (!_network->get_centerline(centerline))
        return fail(std::string("There is no channel centerline"), false);
    return true;
}

bool Simulator::abandonChannel()
{
    if (!ready(true))
        return false;
    _network->clear_channel();
    return true;
}

// ---------------------------------------------------------------------------
// Surface actions

bool Simulator::replaceTopoFromFile(const std::string& path, int mode, int facies, bool flag)
{
    Topo topo;
    if (!readSurface(topo, path))
        return fail("Cannot read topography from file " + path + "\n" + topo.getError(), false);
    return replaceTopo(topo, mode, facies, flag);
}

bool Simulator::replaceTopo(const Topo& topo, int mode, int facies, bool flag)
{
    if (!ready(true))
        return false;
    return guardedAction(
        "replaceTopo",
        [&]()
        {
            countAsIteration(flag);
            const double mean = topo.get_mean();
            printout(text_of(mode == SURF_ERODE_BOTTOM ? "Erode up to given surface (mean="
                                                       : "Replace topography (mean=",
                             mean));
            _network->clear_channel();
            if (!_domain->load_topo(topo, mode, getAge(), static_cast<unsigned char>(facies)))
                return fail(std::string("Cannot replace topography"), false);
            _network->compute_pseudo_topo();
            return true;
        });
}

bool Simulator::replaceTopoFromCst(double value, int mode, int facies, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    printout(text_of(mode == SURF_ERODE_BOTTOM ? "Erode up to constant surface (val="
                                               : "Replace topography by constant one (val=",
                     value));
    _network->clear_channel();
    const Topo topo = constant_on<Topo>(*_domain, value);
    if (!_domain->load_topo(topo, mode, getAge(), static_cast<unsigned char>(facies)))
        return fail(std::string("Cannot replace topography by constant"), false);
    _network->compute_pseudo_topo();
    return true;
}

bool Simulator::replaceFacies(int facies, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    if (!_domain->replace_facies(static_cast<unsigned char>(facies)))
        return fail(std::string("Cannot replace current simulated facies"), false);
    return true;
}

bool Simulator::eraseFacies(double elevation, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    printout(text_of("Erase deposits up to elevation ", elevation, ""));
    const Topo topo = constant_on<Topo>(*_domain, elevation);
    if (!_domain->load_topo(topo, SURF_ERODE_BOTTOM, getAge(), 0))
        return fail(std::string("Cannot erase deposits"), false);
    return true;
}

bool Simulator::eraseFaciesFake(double elevation)
{
    if (!ready(true))
        return false;
    printout(text_of("(Fake) erase deposits up to elevation ", elevation, ""));
    _domain->forget_remaining();
    return true;
}

bool Simulator::saveTopo(const std::string& path, int format, const std::string& order)
{
    Topo topo;
    if (!getTopo(topo, false, MP_UNDEF_INT))
        return false;
    if (!topo.write(path, _tracer.get(), format, order))
        return fail("Cannot save topography into file " + path + "\n" + topo.getError(), false);
    return true;
}

bool Simulator::getTopo(Topo& topo, bool withWater, unsigned int age) const
{
    if (!ready(true))
        return false;
    _domain->getTopo(topo, withWater, age == static_cast<unsigned int>(MP_UNDEF_INT) ? 0u : age);
    return true;
}

bool Simulator::saveExtraTopo(const std::string& path, int format, const std::string& order)
{
    if (!ready(true))
        return false;
    Topo topo;
    try
    {
        _domain->get_extra_topo(topo);
    }
    catch (const std::string& reason)
    {
        return fail("Cannot extrapolate topography over the margins\n" + reason, false);
    }
    if (!topo.write(path, _tracer.get(), format, order))
        return fail("Cannot save extrapolated topography into file " + path + "\n" + topo.getError(), false);
    return true;
}

bool Simulator::saveAgeHorizon(const std::string& path, unsigned int age, int format,
                               const std::string& order)
{
    if (!ready(true))
        return false;
    Topo topo;
    _domain->get_age_horizon(topo, age);
    if (!topo.write(path, _tracer.get(), format, order))
        return fail("Cannot save age horizon into file " + path + "\n" + topo.getError(), false);
    return true;
}

// ---------------------------------------------------------------------------
// Erodibility map

bool Simulator::loadEMapFromFile(const std::string& path, bool flag)
{
    EMap map;
    if (!readSurface(map, path))
        return fail("Cannot load erodibility map\n" + map.getError(), false);
    return loadEMap(map, flag);
}

bool Simulator::loadEMap(const EMap& map, bool flag)
{
    if (!ready(true))
        return false;
    // The erodibility map has always reported its failures under the topography's name.
    return guardedAction("replaceTopo",
                         [&]()
                         {
                             countAsIteration(flag);
                             printout(text_of("Load erodibility map (mean=", map.get_mean()));
                             EMap converted(map);
                             if (!converted.convert(getDouble("EROD_COEF"), getDouble("EROD_OFFSET")))
                                 return fail(std::string("Cannot convert erodibility map"), false);
                             if (!_domain->load_emap(converted))
                                 return fail(std::string("Cannot load erodibility map"), false);
                             return true;
                         });
}

bool Simulator::loadEMapFromCst(double value, bool flag)
{
    if (!ready(true))
        return false;
    countAsIteration(flag);
    printout(text_of("Load erodibility map (val=", value));
    if (!_domain->load_emap(constant_on<EMap>(*_domain, value)))
        return fail(std::string("Cannot load constant erodibility map"), false);
    return true;
}

bool Simulator::saveEMap(const std::string& path, int format, const std::string& order)
{
    EMap map;
    if (!getEMap(map))
        return false;
    if (!map.write(path, _tracer.get(), format, order))
        return fail("Cannot save erodibility map into file " + path + "\n" + map.getError(), false);
    return true;
}

bool Simulator::getEMap(EMap& map) const
{
    if (!ready(true))
        return false;
    _domain->get_emap(map);
    return true;
}

bool Simulator::saveEMapBuiltFromCenterline(const std::string& path, double ax, double ay, int format,
                                            const std::string& order)
{
    EMap map;
    if (!getEMapBuiltFromCenterline(map, ax, ay))
        return false;
    if (!map.write(path, _tracer.get(), format, order))
        return fail("Cannot save erodibility map into file " + path + "\n" + map.getError(), false);
    return true;
}

bool Simulator::getEMapBuiltFromCenterline(EMap& map, double ax, double ay) const
{
    if (!ready(true))
        return false;
    const Channel* channel = _network->channel();
    if (channel == nullptr)
        return fail(std::string("There is no channel to build an erodibility map from"), false);
    _domain->get_emap_built_CP(map, *channel, getDouble("EROD_COEF"), ax, ay);
    return true;
}

// ---------------------------------------------------------------------------
// Upper limit

bool Simulator::loadUpperLimitFromFile(const std::string& path, int type)
{
    Topo topo;
    if (!readSurface(topo, path))
        return fail("Cannot load upper limit\n" + topo.getError(), false);
    return loadUpperLimit(topo, type);
}

bool Simulator::loadUpperLimit(const Topo& topo, int type)
{
    if (!ready(true))
        return false;
    return guardedAction("loadUpperLimit",
                         [&]()
                         {
                             printout(text_of("Load upper limit (mean=", topo.get_mean()));
                             if (!_domain->load_zul(topo))
                                 return fail(std::string("Cannot load upper limit"), false);
                             _upperLimit = topo;
                             _parameters->setParamInt("ZUL_TYPE", type);
                             return true;
                         });
}

bool Simulator::loadUpperLimitFromCst(double value, int type)
{
    if (!ready(true))
        return false;
    Topo topo = constant_on<Topo>(*_domain, value);
    return loadUpperLimit(topo, type);
}

bool Simulator::getUpperLimit(Topo& topo) const
{
    if (!ready(true))
        return false;
    _domain->get_zul(topo);
    return true;
}

void Simulator::resetUpperLimit()
{
    _upperLimit.clear();
    _parameters->setParamInt("ZUL_TYPE", ZUL_NONE);
}

// ---------------------------------------------------------------------------
// Tectonics

bool Simulator::loadTectoMapFromFile(const std::string& path)
{
    TectoMap map;
    if (!readSurface(map, path))
        return fail("Cannot load tectonic deformation map\n" + map.getError(), false);
    return loadTectoMap(map);
}

bool Simulator::loadTectoMap(const TectoMap& map)
{
    if (!ready(true))
        return false;
    return guardedAction("loadTectoMap",
                         [&]()
                         {
                             printout(text_of("Load tectonic deformation map (mean=", map.get_mean()));
                             if (!_domain->load_tecto(map))
                                 return fail(std::string("Cannot load tectonic deformation map"), false);
                             _tectoActive = true;
                             return true;
                         });
}

void Simulator::resetTectoMap()
{
    _tectoActive = false;
    if (!ready(false))
        return;
    for (int j = 0; j < _domain->getNy(); ++j)
        for (int i = 0; i < _domain->getNx(); ++i)
            _domain->getObject(i, j).set_tecto(0.);
}

// ---------------------------------------------------------------------------
// Flattening

bool Simulator::loadFlatteningFromFile(const std::string& path)
{
    Topo topo;
    if (!readSurface(topo, path))
        return fail("Cannot load flattening surface\n" + topo.getError(), false);
    return loadFlattening(topo);
}

bool Simulator::loadFlattening(const Topo& topo)
{
    if (!ready(true))
        return false;
    return guardedAction("loadFlattening",
                         [&]()
                         {
                             printout(text_of("Load flattening surface (mean=", topo.get_mean()));
                             Topo migrated(_domain->getGridParams());
                             if (!migrated.migrate(topo, true, true, _tracer.get()))
                                 return fail(std::string("Cannot migrate flattening surface"), false);
                             _flattening = migrated;
                             _domain->updateFlattening();
                             return true;
                         });
}

bool Simulator::getFlatteningMinMax(double& zmin, double& zmax) const
{
    if (!_flattening.has_values())
        return false;
    zmin = _flattening.get_min();
    zmax = _flattening.get_max();
    return true;
}

void Simulator::resetFlattening()
{
    _flattening.clear();
    if (!ready(false))
        return;
    for (int j = 0; j < _domain->getNy(); ++j)
        for (int i = 0; i < _domain->getNx(); ++i)
            _domain->getObject(i, j).set_flat_delta(0.);
}

// ---------------------------------------------------------------------------
// Logs and exports of the block

bool Simulator::getVCollections(CoreList& cores, int imin, int imax, int jmin, int jmax, double zmin,
                                double zmax) const
{
    if (!ready(true))
        return false;
    return _domain->vcollections(cores, imin, imax, jmin, jmax, zmin, zmax);
}

bool Simulator::saveSimuF2G(const std::string& path, double dz, bool facies, bool grain, bool age,
                            double zmin, double zmax, const std::string& order)
{
    if (!ready(true))
        return false;
    try
    {
        if (!_domain->saveF2G(path, dz, facies, grain, age, zmin, zmax, order))
            return fail("Cannot save the simulation in " + path, false);
        return true;
    }
    catch (const std::string& text)
    {
        return fail("Simulator::saveSimuF2G : " + text, false);
    }
}

bool Simulator::getRegularBlock(double dz, double zmin, double zmax, RegularBlock& block) const
{
    if (!ready(true))
        return false;
    try
    {
        if (!_domain->getRegularBlock(0, _domain->getNx() - 1, 0, _domain->getNy() - 1, dz, zmin, zmax,
                                      block))
            return fail("Cannot sample the block", false);
        return true;
    }
    catch (const std::string& text)
    {
        return fail("Simulator::getRegularBlock : " + text, false);
    }
}

bool Simulator::getSlice(double z, std::vector<double>& values) const
{
    if (!ready(true))
        return false;
    values.assign(static_cast<size_t>(_domain->getNx()) * static_cast<size_t>(_domain->getNy()),
                  MP_UNDEF_REAL);
    size_t k = 0;
    for (int j = 0; j < _domain->getNy(); ++j)
        for (int i = 0; i < _domain->getNx(); ++i, ++k)
        {
            unsigned char facies = 0;
            unsigned int age = 0;
            if (_domain->getSliceInfo(i, j, z, facies, age))
                values[k] = Facies::family(facies);
        }
    return true;
}

// ---------------------------------------------------------------------------
// Registry

void Simulator::printParams() const
{
    _tracer->info(_parameters->getParamsDesc("  ", true));
}
