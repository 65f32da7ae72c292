// What the driver does with wells: conditioning wells given by the user,
// synthetic wells extracted from the block, and their reports.

#include "kernel/driver/Simulator.h"

#include "kernel/channel/Channel.h"
#include "kernel/channel/WellConfig.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesDescription.h"
#include "kernel/common/StagedFile.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/wells/Well.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace
{
// The column knows its well only as a column's well; the driver made every
// one of them a Well.
Well* well_of(const DepositionSet& column)
{
    return dynamic_cast<Well*>(column.well());
}

// The channel is steered by a well and by every log linked to it.
void steer_with(Channel& channel, Well* well)
{
    channel.add_well(well);
    for (const auto& child : well->children())
        channel.add_well(child.get());
}

template <typename Value>
std::string text_of(const std::string& head, Value value, const std::string& tail = ")")
{
    std::ostringstream text;
    text << head << value << tail;
    return text.str();
}

// The well and every well linked under it, depth first.
void collect(Well* well, std::vector<Well*>& wells)
{
    wells.push_back(well);
    for (const auto& child : well->children())
        collect(child.get(), wells);
}

std::string file_stem(const std::string& path)
{
    return std::filesystem::path(path).stem().string();
}
} // namespace

void Simulator::WellDeleter::operator()(Well* well) const
{
    delete well;
}

// ---------------------------------------------------------------------------
// The map of wells

bool Simulator::wellCell(const Well& well, int& i, int& j) const
{
    const Point2D node = _domain->getGridPointFromRel(well.location());
    i = static_cast<int>(node.get_abscissa());
    j = static_cast<int>(node.get_ordinate());
    return _domain->isValid(i, j);
}

void Simulator::setWellConfig()
{
    if (!_domain || _wells.empty())
        return;
    const WellConfig config = wellConfig();
    // A first well of a column hands the values to its linked wells.
    for (const auto& well : _wells)
        if (well.second->parent() == nullptr)
            well.second->set_well_config(config);
}

// The channel's size and the main flow direction, as the wells see them.
WellConfig Simulator::wellConfig() const
{
    const Vector2D flow = _domain->get_flow_direction();
    return WellConfig::from_parameters(*_parameters, flow.get_abscissa(), flow.get_ordinate());
}

void Simulator::attachWellsToChannel()
{
    if (!_network || !_network->has_channel() || _wells.empty())
        return;
    Channel* channel = _network->channel();
    if (channel->get_nb_well() > 0)
        return;
    for (const auto& well : _wells)
        if (well.second->parent() == nullptr)
            steer_with(*channel, well.second);
}

bool Simulator::registerWell(std::unique_ptr<Well> well, bool followColumn)
{
    int i = 0, j = 0;
    if (!wellCell(*well, i, j))
        return fail("Cannot add well " + well->name(), false);
    std::vector<Well*> named;
    collect(well.get(), named);
    for (Well* w : named)
        if (_wells.count(w->name()) != 0)
            return fail("Cannot add well " + w->name() + ": a well of that name is already added", false);

    DepositionSet& column = _domain->getObject(i, j);
    Well* raw = well.get();
    raw->set_well_config(wellConfig());
    if (column.well() != nullptr)
    {
        // A second log at one cell is told everything the first one is told.
        well_of(column)->add_child(std::move(well));
        raw->set_zul_rel(column.get_zul());
        raw->set_flat_delta(column.get_flat_delta());
        raw->set_wet(column.water_depth() != 0.);
    }
    else
    {
        column.well(raw);
        _wellStore.emplace_back(well.release());
    }
    if (followColumn)
    {
        // The column already standing over the bottom of the log counts as soon as it agrees.
        raw->zdom(column.get_topo_rel(false));
        raw->erode_down_to(column.get_topo_rel(false), column.water_depth(), &column);
    }
    if (_network && _network->has_channel() && _network->channel()->get_nb_well() > 0)
        steer_with(*_network->channel(), raw);
    for (Well* w : named)
        _wells[w->name()] = w;
    return true;
}

void Simulator::unregisterWell(Well* well)
{
    int i = 0, j = 0;
    wellCell(*well, i, j);
    DepositionSet& column = _domain->getObject(i, j);
    if (_network && _network->has_channel())
        _network->channel()->erase_well(well);
    _wells.erase(well->name());
    std::vector<std::unique_ptr<Well>> orphans = well->release_children();
    Well* parent = well->parent();
    if (parent != nullptr)
    {
        std::vector<std::unique_ptr<Well>> siblings = parent->release_children();
        for (auto& sibling : siblings)
            if (sibling.get() != well)
                parent->add_child(std::move(sibling));
        for (auto& orphan : orphans)
            parent->add_child(std::move(orphan));
        return;
    }
    // The first linked well takes the column over.
    column.erase_well();
    if (!orphans.empty())
    {
        Well* heir = orphans.front().release();
        for (std::size_t k = 1; k < orphans.size(); ++k)
            heir->add_child(std::move(orphans[k]));
        column.well(heir);
        _wellStore.emplace_back(heir);
    }
    _wellStore.erase(std::remove_if(_wellStore.begin(), _wellStore.end(),
                                    [well](const std::unique_ptr<Well, WellDeleter>& w)
                                    { return w.get() == well; }),
                     _wellStore.end());
}

// ---------------------------------------------------------------------------
// Adding, removing, reading

bool Simulator::addWellFromFile(const std::string& path, const std::string& trajectory,
                                const std::string& name)
{
    if (!ready(true))
        return false;
    std::string wellName = name;
    if (wellName.empty() && !Core::get_name(path, file_stem(path), wellName))
        wellName = file_stem(path);
    Core core(wellName, _tracer.get());
    bool read = false;
    try
    {
        read = core.read(path, trajectory);
    }
    catch (const std::exception& e)
    {
        core.setError(std::string("Cannot read well file ") + path + ": " + e.what());
    }
    if (!read)
        return fail("Cannot add well " + wellName + ":\n" + core.getError(), false);
    core.setName(wellName);
    return addWell(core, wellName);
}

bool Simulator::addOneWell(const Core& core, const std::string& name, int number, CoreList* others)
{
    auto well = std::make_unique<Well>(_parameters.get(), _tracer.get());
    if (!well->load(_parameters.get(), _tracer.get(), name, core, _userClasses, *_domain, _domain->getZref(),
                    number, others))
    {
        _lastMessage = "Cannot add well " + name;
        return false;
    }
    return registerWell(std::move(well), true);
}

bool Simulator::addWell(const Core& core, const std::string& name)
{
    if (!ready(true))
        return false;
    const std::string wellName = !name.empty() ? name : core.getName();
    if (!_parameters->usingCondNewAlgo())
        return fail(
            "Cannot add well " + wellName +
                ": conditioning wells need COND_WELLS_NEW_ALGO = 1 (the former algorithm is not available)",
            false);
    if (_wells.count(wellName) != 0)
        return fail("Cannot add well " + wellName + ": a well of that name is already added", false);
    CoreList pieces;
    const int number = static_cast<int>(_wells.size()) + 1;
    const bool first = addOneWell(core, wellName, number, &pieces);
    // Each further column crossed by a deviated log is a well of its own.
    bool all = first;
    for (int k = 0; k < pieces.size(); ++k)
        all =
            addOneWell(pieces.at(k), wellName + "_" + std::to_string(k + 1), number + k + 1, nullptr) && all;
    return all;
}

bool Simulator::deleteWell(const std::string& name)
{
    if (!ready(true))
        return false;
    const auto found = _wells.find(name);
    if (found == _wells.end())
        return fail("Cannot delete well " + name + ": no such well", false);
    unregisterWell(found->second);
    printout("Well " + name + " deleted");
    return true;
}

bool Simulator::getAllWells(CoreList& cores) const
{
    cores.clear();
    for (const auto& well : _wells)
    {
        Core core(well.first, _tracer.get());
        well.second->to_core(core);
        cores.add(core);
    }
    return !cores.empty();
}

std::string Simulator::wellInfos(const Well& well) const
{
    int i = 0, j = 0;
    wellCell(well, i, j);
    std::ostringstream text;
    text << "Well " << well.name() << " at [" << well.geoLocation().get_abscissa() << ", "
         << well.geoLocation().get_ordinate() << "] (cell [" << i << ", " << j << "])";
    if (well.parent() != nullptr)
        text << " linked to " << well.parent()->name();
    text << "\nBottom = " << well.rel_to_geo(well.get_zbot())
         << "m Top = " << well.rel_to_geo(well.get_ztop()) << "m Height = " << well.height() << "m";
    text << "\nHonored units = " << well.nb_honored_units() << " / " << well.size();
    if (well.is_finished())
        text << " >> Well honored <<";
    else
        text << "\nActive level = " << well.rel_to_geo(well.active_level()) << "m in brick "
             << well.active_brick() << " (" << well.ab_nature().debug() << ")";
    return text.str();
}

bool Simulator::getWellInfos(const std::string& name, std::string& infos) const
{
    infos.clear();
    const auto found = _wells.find(name);
    if (found == _wells.end())
        return fail("Cannot find well " + name, false);
    infos = wellInfos(*found->second);
    return true;
}

bool Simulator::getWellInfosAt(int i, int j, std::string& infos) const
{
    infos.clear();
    if (!ready(true))
        return false;
    if (!_domain->isValid(i, j) || _domain->getObject(i, j).well() == nullptr)
        return false;
    std::vector<Well*> linked;
    collect(well_of(_domain->getObject(i, j)), linked);
    for (const Well* well : linked)
        infos += (infos.empty() ? "" : "\n") + wellInfos(*well);
    return true;
}

bool Simulator::saveWell(const std::string& name, const std::string& path)
{
    const auto found = _wells.find(name);
    if (found == _wells.end())
        return fail("Cannot save well " + name + ": no such well", false);
    StagedFile staged(path);
    std::ofstream out(staged.path(), std::ios::binary);
    if (!out)
        return fail("Cannot save well " + name + " into binary file " + path, false);
    found->second->binary_output(out);
    out.close();
    if (!out || !staged.commit())
        return fail("Cannot save well " + name + " into binary file " + path, false);
    return true;
}

bool Simulator::loadWell(const std::string& path)
{
    printout("Load well");
    if (!ready(true))
        return false;
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return fail("Cannot open well from binary file " + path, false);
    auto well = std::make_unique<Well>(_parameters.get(), _tracer.get());
    if (!well->binary_input(in))
        return fail("Binary well file " + path + " format not correct", false);
    if (_wells.count(well->name()) != 0)
    {
        _tracer->warning("   Well " + well->name() + " already added");
        return true;
    }
    const std::string name = well->name();
    Well* raw = well.get();
    if (!registerWell(std::move(well), false))
        return fail("Cannot add well " + name, false);
    // A placed well has always heard from its column (placing one erodes down to it).
    int i = 0, j = 0;
    if (wellCell(*raw, i, j))
        raw->set_column(&_domain->getObject(i, j));
    return true;
}

bool Simulator::setUserClassList(UserClassList const& classes)
{
    _userClasses = classes;
    return true;
}

// ---------------------------------------------------------------------------
// Synthetic wells

bool Simulator::extractWell(int i, int j, Core& core, double zmin, double zmax) const
{
    if (!ready(true))
        return false;
    if (!_domain->to_core(i, j, core, zmin, zmax))
        return fail(text_of("Cannot extract well at indices [", i, ", ") + text_of("", j, "]"), false);
    return true;
}

bool Simulator::extractWellAt(const Point2D& location, Core& core, double zmin, double zmax) const
{
    if (!ready(true))
        return false;
    const Point2D node = _domain->getGridPointFromGeo(location);
    return extractWell(static_cast<int>(node.get_abscissa()), static_cast<int>(node.get_ordinate()), core,
                       zmin, zmax);
}

// ---------------------------------------------------------------------------
// What the iteration loop asks

namespace
{
using WellQuestion = bool (Well::*)() const;

// Every well heading its cell is asked, even after a yes: each answer may
// leave its line in the debug trace.
bool any_of_all_asked(const std::map<std::string, Well*>& wells, WellQuestion question)
{
    bool any = false;
    for (const auto& well : wells)
        if (well.second->parent() == nullptr)
            any = (well.second->*question)() || any;
    return any;
}

// The wells heading their cells are asked in map order; the first yes ends the search.
bool first_yes(const std::map<std::string, Well*>& wells, WellQuestion question)
{
    for (const auto& well : wells)
        if (well.second->parent() == nullptr && (well.second->*question)())
            return true;
    return false;
}
} // namespace

bool Simulator::wellsWantRegionalAvulsion() const
{
    return any_of_all_asked(_wells, &Well::want_reg_avulsion);
}

bool Simulator::wellsWantLocalAvulsion() const
{
    return any_of_all_asked(_wells, &Well::want_loc_avulsion);
}

bool Simulator::wellsBlockAvulsion() const
{
    return first_yes(_wells, &Well::block_avulsion);
}

bool Simulator::wellsBlockAggradation() const
{
    return first_yes(_wells, &Well::block_aggradation);
}

bool Simulator::wellsHonored() const
{
    for (const auto& well : _wells)
        if (well.second->nb_honored_units() != well.second->size())
            return false;
    return true;
}

bool Simulator::checkWells(std::string& message) const
{
    if (_wells.empty() || _parameters->usingCondNewAlgo())
        return true;
    message = "Conditioning wells need COND_WELLS_NEW_ALGO = 1: the former algorithm is not available";
    return false;
}

// ---------------------------------------------------------------------------
// Reports

void Simulator::printWells() const
{
    if (_wells.empty())
    {
        _tracer->info("No conditioning well");
        return;
    }
    _tracer->info(text_of("Conditioning wells: ", _wells.size(), ""));
    for (const auto& well : _wells)
        _tracer->info(wellInfos(*well.second));
}

std::vector<Simulator::WellStats> Simulator::getWellStats() const
{
    std::vector<WellStats> stats;
    if (!ready(false))
        return stats;
    for (const auto& entry : _wells)
    {
        const Well& well = *entry.second;
        WellStats s;
        s.name = entry.first;
        s.x = well.geoLocation().get_abscissa();
        s.y = well.geoLocation().get_ordinate();
        wellCell(well, s.i, s.j);
        s.honored = static_cast<unsigned int>(well.nb_honored_units());
        s.units = static_cast<unsigned int>(well.size());
        Core log(s.name);
        well.to_core(log);
        Core column(s.name);
        if (_domain->isValid(s.i, s.j) && _domain->to_core(s.i, s.j, column, MP_UNDEF_REAL, MP_UNDEF_REAL))
            s.faciesMatch = column.empty() ? 0. : column.facies_match(log, MP_UNDEF_REAL, MP_UNDEF_REAL);
        stats.push_back(s);
    }
    return stats;
}

bool Simulator::saveConditioningStats(const std::string& path)
{
    if (!ready(true))
        return false;
    StagedFile staged(path);
    std::ofstream out(staged.path());
    if (!out)
        return fail("Cannot open conditioning statistics file " + path, false);
    out << "name;x;y;i;j;honored_units;units;honored_ratio;facies_match\n";
    out << std::setprecision(10);
    for (const WellStats& s : getWellStats())
        out << s.name << ";" << s.x << ";" << s.y << ";" << s.i << ";" << s.j << ";" << s.honored << ";"
            << s.units << ";" << (s.units > 0 ? static_cast<double>(s.honored) / s.units : 0.) << ";"
            << s.faciesMatch << "\n";
    out.close();
    return (out && staged.commit()) || fail("Cannot write conditioning statistics file " + path, false);
}

bool Simulator::saveHistogram(const std::string& path, const CoreList& cores, double dz, int nz)
{
    if (!(dz > 0.) || nz <= 0)
        return fail("Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)", false);
    const int nf = CoreSample::MP_MAX_FACIES_ID + 1;
    std::vector<std::vector<int>> counts(static_cast<std::size_t>(nz), std::vector<int>(nf, 0));
    std::vector<std::vector<double>> heights(static_cast<std::size_t>(nz), std::vector<double>(nf, 0.));
    for (const Core& core : cores)
        for (const CoreSample& sample : core.getSamples())
        {
            // Thicker samples than the classes reach fall in the last class.
            const int k =
                std::min(nz - 1, static_cast<int>(std::floor(sample.getHeight() / dz + MP_EPSILON)));
            const int f = Facies::family(sample.getFacies());
            // A family beyond the register has no column.
            if (f >= nf)
                continue;
            counts[static_cast<std::size_t>(k)][static_cast<std::size_t>(f)] += 1;
            heights[static_cast<std::size_t>(k)][static_cast<std::size_t>(f)] += sample.getHeight();
        }
    StagedFile staged(path);
    std::ofstream out(staged.path());
    if (!out)
        return fail("Cannot open histogram file " + path, false);
    out << "height_min;height_max";
    for (int f = 0; f < nf; ++f)
        out << ";count_" << Facies::description(static_cast<unsigned char>(f)).short_name();
    for (int f = 0; f < nf; ++f)
        out << ";height_" << Facies::description(static_cast<unsigned char>(f)).short_name();
    out << "\n" << std::setprecision(10);
    for (int k = 0; k < nz; ++k)
    {
        out << k * dz << ";" << (k + 1) * dz;
        for (int f = 0; f < nf; ++f)
            out << ";" << counts[static_cast<std::size_t>(k)][static_cast<std::size_t>(f)];
        for (int f = 0; f < nf; ++f)
            out << ";" << heights[static_cast<std::size_t>(k)][static_cast<std::size_t>(f)];
        out << "\n";
    }
    out.close();
    return (out && staged.commit()) || fail("Cannot write histogram file " + path, false);
}
