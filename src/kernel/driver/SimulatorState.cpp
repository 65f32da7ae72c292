// Writing the simulation to files and taking it up again: parameters,
// block, wells and the dynamic state of the run. A run taken up from a
// snapshot must go on exactly as if it had never stopped, so everything the
// next iterations read is written at full precision.

#include "kernel/driver/Simulator.h"

#include "kernel/channel/Centerline.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/BinaryDump.h"
#include "kernel/common/Constants.h"
#include "kernel/common/StagedFile.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/EMap.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"
#include "kernel/files/SnapshotFolder.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"
#include "kernel/parameters/TimeProcess.h"
#include "kernel/wells/Well.h"

#include <charconv>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace
{
namespace fs = std::filesystem;

constexpr const char* STATE_EXCEPTION_WITHOUT_TEXT =
    "Exception thrown: look at message window for more details";
constexpr int FULL_PRECISION = std::numeric_limits<double>::max_digits10;

const char* const PARAMS_FILE = "/params.txt";
const char* const WELLS_FILE = "/wells.txt";
const char* const BLOCK_FILE = "/simu.dat";
const char* const EMAP_FILE = "/emap.txt";
const char* const CENTERLINE_FILE = "/centerline.txt";
const char* const TECTO_FILE = "/tecto.txt";
const char* const FLATTENING_FILE = "/flattening.txt";
const char* const DYNAMIC_FILE = "/dyparams.txt";
// The grid files above keep six digits: these keep the values themselves.
const char* const TECTO_EXACT_FILE = "/tecto.dat";
const char* const FLATTENING_EXACT_FILE = "/flattening.dat";
const char* const GRID_ORDER = "+Y +X +Z";

// The clocks in the order of the dynamic parameter file.
const char* const CLOCK_PREFIXES[] = {"EP", "AGG", "LAV", "RAV", "STATS"};

// Per-point state of the channel kept as auxiliary variables of the
// centerline file: the exact relative position and what the first
// iterations after a restart read before recomputing it.
enum ChannelColumn
{
    COL_X_REL,
    COL_Y_REL,
    COL_DS,
    COL_S,
    COL_CURVATURE,
    COL_NORMAL_X,
    COL_NORMAL_Y,
    COL_SLOPE,
    COL_HMEAN,
    COL_U1,
    COL_COUNT
};
const char* const CHANNEL_COLUMNS[COL_COUNT] = {"X_REL",    "Y_REL",    "DS",    "S",     "CURVATURE",
                                                "NORMAL_X", "NORMAL_Y", "SLOPE", "HMEAN", "U1"};

bool file_exists(const std::string& path)
{
    InDataFile file(path);
    return file.is_open();
}

// Writes reals so that they read back as the same doubles.
class ExactPrecision
{
public:
    explicit ExactPrecision(std::ostream& out) : _out(out), _old(out.precision(FULL_PRECISION)) {}
    ~ExactPrecision() { _out.precision(_old); }
    ExactPrecision(const ExactPrecision&) = delete;
    ExactPrecision& operator=(const ExactPrecision&) = delete;

private:
    std::ostream& _out;
    std::streamsize _old;
};

enum KeyState
{
    KEY_ABSENT,
    KEY_READ,
    KEY_BAD
};

// A key that may be missing; present with a value that does not convert is bad.
template <typename Value> KeyState read_optional(InDataFile& file, const std::string& key, Value& value)
{
    Value read{};
    if (file.get_key_value(key, read))
    {
        value = read;
        return KEY_READ;
    }
    return file.seek_keyword(key) ? KEY_BAD : KEY_ABSENT;
}

bool write_exact_values(const std::string& path, const std::vector<double>& values)
{
    std::ofstream out(path, std::ios::binary);
    if (!out)
        return false;
    dump::write_array(out, values);
    out.close();
    return static_cast<bool>(out);
}

bool read_exact_values(const std::string& path, size_t count, std::vector<double>& values)
{
    std::ifstream in(path, std::ios::binary);
    return in && dump::read_array(in, values) && values.size() == count &&
           in.peek() == std::ifstream::traits_type::eof();
}

// A folder a save may clear: missing, empty or a snapshot of its own.
bool clear_own_folder(const std::string& dir)
{
    std::string why;
    std::error_code ec;
    if (!SnapshotFolder::replaceable(dir, why))
        return false;
    fs::remove_all(dir, ec);
    return !ec;
}

std::string mean_text(const std::string& head, double mean)
{
    std::ostringstream text;
    text << head << mean << ")";
    return text.str();
}

// A value as the grid files write it, six significant digits, read back.
double as_written(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6).ptr;
    double read = value;
    std::from_chars(text, end, read);
    return read;
}

std::string without_trailing_slash(std::string dir)
{
    while (dir.size() > 1 && dir.back() == '/')
        dir.pop_back();
    return dir;
}

// Puts the staged snapshot in place of `dir`; the old content is removed
// only once the new one stands under the name.
bool commit_staging(const std::string& staging, const std::string& dir)
{
    std::error_code ec;
    const std::string previous = SnapshotFolder::previous(dir);
    if (!clear_own_folder(previous))
        return false;
    const bool had_old = fs::exists(dir, ec);
    if (had_old)
    {
        fs::rename(dir, previous, ec);
        if (ec)
            return false;
    }
    fs::rename(staging, dir, ec);
    if (ec)
    {
        if (had_old)
            fs::rename(previous, dir, ec);
        return false;
    }
    fs::remove_all(previous, ec);
    return true;
}
} // namespace

// ---------------------------------------------------------------------------
// Registry and block

bool Simulator::saveParams(const std::string& path)
{
    if (!_parameters->write(path))
        return fail("Cannot save parameters into file " + path, false);
    return true;
}

bool Simulator::loadParams(const std::string& path)
{
    if (!_parameters->read(path))
        return fail("Cannot load parameters from file " + path, false);
    return true;
}

bool Simulator::saveDomain(const std::string& path)
{
    if (!ready(true))
        return false;
    if (_network->ghost_channel() != nullptr)
        return fail(std::string("Cannot save simulation while the option 'Ghost Migration' is active."),
                    false);
    printout("Save simulation block");
    StagedFile staged(path);
    std::ofstream out(staged.path(), std::ios::binary);
    if (!out || !_domain->binary_output(out))
        return fail("Cannot save simulation block into file " + path, false);
    out.close();
    if (!out || !staged.commit())
        return fail("Cannot save simulation block into file " + path, false);
    return true;
}

bool Simulator::loadDomain(const std::string& path)
{
    if (!ready(true))
        return false;
    printout("Load simulation block");
    std::ifstream in(path, std::ios::binary);
    // A block with bytes left over was written for another grid.
    if (!in || !_domain->binary_input(in) || in.peek() != std::ifstream::traits_type::eof())
        return fail("Cannot load simulation block from file " + path, false);
    return true;
}

// ---------------------------------------------------------------------------
// Wells

bool Simulator::saveWells(const std::string& dir)
{
    const std::string message = "Cannot save wells into folder " + dir;
    // A well's record carries the logs linked to it at its cell: only the
    // first log of each cell gets a file of its own.
    std::vector<std::string> heads;
    for (const auto& well : _wells)
        if (well.second->parent() == nullptr)
            heads.push_back(well.first);
    for (const std::string& name : heads)
        if (!saveWell(name, dir + "/" + name + ".dat"))
            return fail(message, false);
    OutDataFile file(dir + WELLS_FILE);
    if (!file.is_open())
        return fail(message, false);
    file.key_value("NB_WELLS", static_cast<int>(heads.size()));
    int i = 1;
    for (const std::string& name : heads)
        file.key_value("WELL_" + std::to_string(i++), name);
    file.close();
    if (file.fail())
        return fail(message, false);
    return true;
}

bool Simulator::loadWells(const std::string& dir)
{
    const std::string path = dir + WELLS_FILE;
    InDataFile file(path);
    if (!file.is_open())
        return true;
    int count = 0;
    if (!file.get_key_value("NB_WELLS", count) || count < 0)
        return fail("Cannot read the list of wells from file " + path, false);
    std::vector<std::string> names;
    for (int i = 1; i <= count; ++i)
    {
        std::string name;
        if (!file.get_key_value("WELL_" + std::to_string(i), name))
            return fail("Cannot read the list of wells from file " + path, false);
        names.push_back(name);
    }
    for (const std::string& name : names)
        if (!loadWell(dir + "/" + name + ".dat"))
            return false;
    return true;
}

// ---------------------------------------------------------------------------
// Dynamic parameters

bool Simulator::saveDynamicParams(const std::string& path)
{
    if (!ready(true))
        return false;
    printout("Save dynamic parameters");
    OutDataFile file(path);
    if (!file.is_open())
        return fail("Cannot save dynamic parameters into file " + path, false);
    if (!_seedGenerator->serialize(file))
        return fail("Cannot serialize seeder into file " + path, false);
    ExactPrecision exact(file);
    file.key_value("AGE", getAge());
    file.key_value("EP", _currentEP);
    const TimeProcess* clocks[] = {_epProcess.get(), _overbankProcess.get(), _localAvulsionProcess.get(),
                                   _regionalAvulsionProcess.get(), _statsProcess.get()};
    for (size_t k = 0; k < std::size(clocks); ++k)
        if (clocks[k] != nullptr && !clocks[k]->serialize(CLOCK_PREFIXES[k], file))
            return fail("Cannot save dynamic parameters into file " + path, false);
    file.key_value("NEXT_LAV", _nextLocalAllowed);
    file.key_value("NEXT_RAV", _nextRegionalAllowed);
    file.key_value("LAST_OB", _network->last_flood_iter());
    file.key_value("NB_CUTOFF", _network->nb_cutoffs());
    file.key_value("NB_CHUTECUTOFF", _network->nb_chute_cutoffs());
    file.key_value("NB_AVULSION", _network->nb_avulsions());
    file.key_value("NB_CUTOFF_AVULS", _network->nb_cutoffs_avuls());
    file.key_value("NB_CUTOFF_SUM", _network->nb_cutoffs_total());
    file.key_value("TAU_CUT_AGE", _network->first_cutoff_iter());
    file.key_value("TAU_CUT_VALUE", _network->first_cutoff_time());
    file.key_value("TAU_CUT_SINUO", _network->first_cutoff_sinuosity());
    file.key_value("TAU_CUT_SINUO_A", _network->first_cutoff_allen());
    file.key_value("TAU_CUT_TORTUO", _network->first_cutoff_tortuosity());
    file.key_value("TAU_CUT_WAVELENGTH", _network->first_cutoff_wavelength());
    file.key_value("TAU_CUT_MEAN_SBEXT", _network->first_cutoff_extension());
    file.key_value("LAST_AV", _network->last_avulsion_iter());
    // Not read by older versions: statistics and the channel's own clock.
    file.key_value("INITIAL_SEED", _initialSeed);
    file.key_value("AV_ITER_SUM", _network->avulsion_iter_sum());
    if (const Channel* channel = _network->channel())
    {
        file.key_value("CHNL_BIRTH", channel->birth_iter());
        file.key_value("CHNL_CUR_WIDTH", channel->width());
    }
    file.close();
    if (file.fail())
        return fail("Cannot save dynamic parameters into file " + path, false);
    return true;
}

bool Simulator::loadDynamicParams(const std::string& path)
{
    if (!ready(true))
        return false;
    printout("Load dynamic parameters");
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot load dynamic parameters from file " + path, false);
    auto bad_key = [&](const std::string& key)
    { return fail("Bad or missing value of " + key + " in dynamic parameters file " + path, false); };

    // Everything is read and checked before anything changes, so that a bad
    // file leaves the model as it was.
    SeedGenerator generator;
    if (!generator.deserialize(file))
        return fail("Cannot deserialize seeder from file " + path, false);
    unsigned int age = 0;
    if (!file.get_key_value("AGE", age))
        return bad_key("AGE");
    double ep = _currentEP;
    const KeyState ep_state = read_optional(file, "EP", ep);
    if (ep_state == KEY_BAD)
        return bad_key("EP");
    const bool current_project = ep_state == KEY_READ;
    if (current_project)
        for (const char* prefix : CLOCK_PREFIXES)
        {
            int draw = 0;
            unsigned int next = 0;
            if (!file.get_key_value(std::string(prefix) + "_INIT", draw))
                return bad_key(std::string(prefix) + "_INIT");
            if (!file.get_key_value(std::string(prefix) + "_NEXT", next))
                return bad_key(std::string(prefix) + "_NEXT");
        }
    unsigned int next_lav = 0, next_rav = 0, last_ob = 0, last_av = 0, tau_age = 0, av_sum = 0, birth = 0;
    unsigned int counters[5] = {0, 0, 0, 0, 0};
    double tau[6] = {0., 0., 0., 0., 0., 0.};
    double width = 0.;
    int initial_seed = _initialSeed;
    const char* const counter_keys[5] = {"NB_CUTOFF", "NB_CHUTECUTOFF", "NB_AVULSION", "NB_CUTOFF_AVULS",
                                         "NB_CUTOFF_SUM"};
    const char* const tau_keys[6] = {"TAU_CUT_VALUE",  "TAU_CUT_SINUO",      "TAU_CUT_SINUO_A",
                                     "TAU_CUT_TORTUO", "TAU_CUT_WAVELENGTH", "TAU_CUT_MEAN_SBEXT"};
    std::map<std::string, KeyState> states;
    states["NEXT_LAV"] = read_optional(file, "NEXT_LAV", next_lav);
    states["NEXT_RAV"] = read_optional(file, "NEXT_RAV", next_rav);
    states["LAST_OB"] = read_optional(file, "LAST_OB", last_ob);
    for (int k = 0; k < 5; ++k)
        states[counter_keys[k]] = read_optional(file, counter_keys[k], counters[k]);
    states["TAU_CUT_AGE"] = read_optional(file, "TAU_CUT_AGE", tau_age);
    for (int k = 0; k < 6; ++k)
        states[tau_keys[k]] = read_optional(file, tau_keys[k], tau[k]);
    states["LAST_AV"] = read_optional(file, "LAST_AV", last_av);
    states["INITIAL_SEED"] = read_optional(file, "INITIAL_SEED", initial_seed);
    states["AV_ITER_SUM"] = read_optional(file, "AV_ITER_SUM", av_sum);
    states["CHNL_BIRTH"] = read_optional(file, "CHNL_BIRTH", birth);
    states["CHNL_CUR_WIDTH"] = read_optional(file, "CHNL_CUR_WIDTH", width);
    for (const auto& state : states)
        if (state.second == KEY_BAD)
            return bad_key(state.first);

    *_seedGenerator = generator;
    resetTimeProcessors();
    _isbxHistory.clear();
    setAge(age);
    if (current_project)
    {
        _currentEP = ep;
        TimeProcess* clocks[] = {_epProcess.get(), _overbankProcess.get(), _localAvulsionProcess.get(),
                                 _regionalAvulsionProcess.get(), _statsProcess.get()};
        for (size_t k = 0; k < std::size(clocks); ++k)
            if (clocks[k] != nullptr && !clocks[k]->deserialize(CLOCK_PREFIXES[k], file))
                return bad_key(CLOCK_PREFIXES[k]);
    }
    else
    {
        const int seed = getInt("SIM_SEED");
        if (seed != _seedGenerator->getSeed())
            _seedGenerator->reset(seed);
        _currentEP = getDouble("AG_EP_INIT_ELEV");
        _tracer->warning("Old project detected (version is less than v4.200). Simulation may not be "
                         "reproducible! Don't use backward feature!");
    }
    _network->ep_elevation(_currentEP - _domain->getZref());
    auto is_read = [&](const char* key) { return states[key] == KEY_READ; };
    if (is_read("NEXT_LAV"))
        _nextLocalAllowed = next_lav;
    if (is_read("NEXT_RAV"))
        _nextRegionalAllowed = next_rav;
    if (is_read("LAST_OB"))
        _network->last_flood_iter(last_ob);
    _network->set_counters(is_read("NB_CUTOFF") ? counters[0] : _network->nb_cutoffs(),
                           is_read("NB_CHUTECUTOFF") ? counters[1] : _network->nb_chute_cutoffs(),
                           is_read("NB_AVULSION") ? counters[2] : _network->nb_avulsions(),
                           is_read("NB_CUTOFF_AVULS") ? counters[3] : _network->nb_cutoffs_avuls(),
                           is_read("NB_CUTOFF_SUM") ? counters[4] : _network->nb_cutoffs_total());
    if (is_read("TAU_CUT_AGE"))
        _network->set_first_cutoff(tau_age, tau[0], tau[1], tau[2], tau[3], tau[4], tau[5]);
    if (is_read("LAST_AV"))
        _network->last_avulsion_iter(last_av);
    if (is_read("INITIAL_SEED"))
        _initialSeed = initial_seed;
    if (is_read("AV_ITER_SUM"))
        _network->avulsion_iter_sum(av_sum);
    _snapHasChannel = is_read("CHNL_BIRTH") && is_read("CHNL_CUR_WIDTH");
    _snapChannelBirth = birth;
    _snapChannelWidth = width;
    return true;
}

// ---------------------------------------------------------------------------
// Distribution laws

namespace
{
// One file per law, in the order ep, overbank, channel scale: a law may keep
// a state between two draws (the second value of a Gaussian pair).
const char* const DISTRIBUTION_FILES[] = {"/ep_distribution.txt", "/overbank_distribution.txt",
                                          "/scale_distribution.txt"};
} // namespace

bool Simulator::saveDistributions(const std::string& dir)
{
    const DistributionGenerator* laws[] = {_epDistribution.get(), _overbankDistribution.get(),
                                           _channelScaleDistribution.get()};
    for (size_t k = 0; k < std::size(laws); ++k)
    {
        if (laws[k] == nullptr)
            continue;
        const std::string path = dir + DISTRIBUTION_FILES[k];
        OutDataFile file(path);
        if (!file.is_open() || !laws[k]->serialize(file))
            return fail("Cannot serialize distribution into file " + path, false);
        file.close();
        if (file.fail())
            return fail("Cannot serialize distribution into file " + path, false);
    }
    return true;
}

bool Simulator::loadDistributions(const std::string& dir)
{
    DistributionGenerator* laws[] = {_epDistribution.get(), _overbankDistribution.get(),
                                     _channelScaleDistribution.get()};
    for (size_t k = 0; k < std::size(laws); ++k)
    {
        const std::string path = dir + DISTRIBUTION_FILES[k];
        InDataFile file(path);
        if (laws[k] == nullptr || !file.is_open())
            continue;
        if (!laws[k]->deserialize(file))
            return fail("Cannot deserialize distribution from file " + path, false);
    }
    return true;
}

// ---------------------------------------------------------------------------
// Channel

bool Simulator::saveChannelState(const std::string& path)
{
    const Channel* channel = _network->channel();
    Centerline geo;
    if (channel == nullptr || !_network->get_centerline(geo))
        return fail("Cannot save centerline into file " + path, false);
    OutDataFile file(path);
    if (!file.is_open())
        return fail("Cannot save centerline into file " + path, false);
    file.separator();
    file.comment("Centerline saved by Sarvo");
    file.comment("");
    file.comment("");
    file.comment("Dimension of points set (2D or 3D)");
    file.key_value("N_DIMENSIONS", 3);
    file.comment("Number of points");
    file.key_value("N_POINTS", geo.size());
    file.comment("Auxiliary variables");
    file.key_value("N_VARIABLES", static_cast<int>(COL_COUNT));
    for (int k = 0; k < COL_COUNT; ++k)
        file.key_value("VAR" + std::to_string(k + 1) + "_NAME", std::string(CHANNEL_COLUMNS[k]));
    file.section("Ascii");
    ExactPrecision exact(file);
    int index = 0;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next(), ++index)
    {
        double x = 0., y = 0., z = 0.;
        geo.get_at(index, x, y, z);
        const double values[COL_COUNT] = {cp->get_abscissa(),
                                          cp->get_ordinate(),
                                          cp->ds(),
                                          cp->s(),
                                          cp->curvature(),
                                          cp->normal().get_abscissa(),
                                          cp->normal().get_ordinate(),
                                          cp->slope(),
                                          cp->hmean(),
                                          cp->flow().u1()};
        file << x << ' ' << y << ' ' << z << ' ';
        for (double value : values)
            file << value << ' ';
        file << '\n';
    }
    file.close();
    if (file.fail())
        return fail("Cannot save centerline into file " + path, false);
    return true;
}

bool Simulator::restoreChannel(const std::string& path)
{
    Centerline centerline;
    if (!centerline.read(path))
        return fail("Cannot read centerline from file " + path + "\n" + centerline.get_message(), false);
    int columns[COL_COUNT];
    bool complete = _snapHasChannel && _snapChannelWidth > 0. && centerline.is_3d() && centerline.size() >= 3;
    for (int k = 0; k < COL_COUNT; ++k)
    {
        columns[k] = -1;
        for (int v = 0; v < centerline.get_nb_variables(); ++v)
            if (centerline.get_name(v) == CHANNEL_COLUMNS[k])
                columns[k] = v;
        complete = complete && columns[k] >= 0;
    }
    // A plain centerline: the channel is rebuilt on the present topography.
    if (!complete)
        return replaceCenterline(centerline, false);

    printout("Load centerline");
    std::vector<Point3D> points;
    std::vector<std::vector<double>> states;
    for (int i = 0; i < centerline.size(); ++i)
    {
        double x = 0., y = 0., z = 0.;
        std::vector<double> values;
        centerline.get_at(i, x, y, z, values);
        std::vector<double> state(COL_COUNT);
        for (int k = 0; k < COL_COUNT; ++k)
            state[k] = values[static_cast<size_t>(columns[k])];
        points.emplace_back(state[COL_X_REL], state[COL_Y_REL], z);
        states.push_back(state);
    }
    // A throwaway channel gives the scalars in force (width, flow) so that the
    // points are born with the width they had.
    Channel shape(_meanderCalculator.get(), points);
    shape.init_geom(getDouble("CHNL_MAX_DEPTH"), _snapChannelWidth, getDouble("CHNL_WAVELENGTH"),
                    getDouble("DOMAIN_SLOPE"));
    shape.init_flow();
    shape.birth_iter(_snapChannelBirth);
    auto channel = std::make_unique<Channel>(_meanderCalculator.get(), shape, points);
    size_t i = 0;
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next(), ++i)
    {
        const std::vector<double>& state = states[i];
        cp->ds(state[COL_DS]);
        cp->s(state[COL_S]);
        cp->curvature(state[COL_CURVATURE]);
        cp->normal(Vector2D(state[COL_NORMAL_X], state[COL_NORMAL_Y]));
        cp->slope(state[COL_SLOPE]);
        cp->hmean(state[COL_HMEAN]);
        cp->flow().u1(state[COL_U1]);
    }
    channel->update_bounding_box();
    channel->update_min_max_elevations();
    _network->adopt_channel(channel.release());
    _network->create_intersection_grid();
    return true;
}

// ---------------------------------------------------------------------------
// Whole snapshot

bool Simulator::writeSnapshot(const std::string& dir)
{
    if (!saveParams(dir + PARAMS_FILE) || !saveWells(dir) || !saveDomain(dir + BLOCK_FILE) ||
        !saveEMap(dir + EMAP_FILE, GRID_FORMAT_F2G, GRID_ORDER))
        return false;
    if (_network->has_channel() && !saveChannelState(dir + CENTERLINE_FILE))
        return false;
    if (_tectoActive)
    {
        TectoMap map;
        _domain->get_tecto_map(map);
        std::vector<double> rates;
        for (int j = 0; j < _domain->getNy(); ++j)
            for (int i = 0; i < _domain->getNx(); ++i)
                rates.push_back(_domain->getObject(i, j).get_tecto());
        if (!map.write(dir + TECTO_FILE, _tracer.get(), GRID_FORMAT_F2G, GRID_ORDER) ||
            !write_exact_values(dir + TECTO_EXACT_FILE, rates))
            return fail("Cannot save tectonic deformation map into file " + dir + TECTO_FILE + "\n" +
                            map.getError(),
                        false);
    }
    std::vector<double> flattening;
    for (int j = 0; j < _flattening.getNy(); ++j)
        for (int i = 0; i < _flattening.getNx(); ++i)
        {
            double v = MP_UNDEF_REAL;
            _flattening.get_at(i, j, v);
            flattening.push_back(v);
        }
    if (_flattening.has_values() &&
        (!_flattening.write(dir + FLATTENING_FILE, _tracer.get(), GRID_FORMAT_F2G, GRID_ORDER) ||
         !write_exact_values(dir + FLATTENING_EXACT_FILE, flattening)))
        return fail("Cannot save flattening surface into file " + dir + FLATTENING_FILE + "\n" +
                        _flattening.getError(),
                    false);
    return saveDynamicParams(dir + DYNAMIC_FILE) && saveDistributions(dir);
}

bool Simulator::save(const std::string& target)
{
    const std::string dir = without_trailing_slash(target);
    const std::string staging = SnapshotFolder::staging(dir);
    try
    {
        if (!ready(true))
            return fail("Cannot save snapshot into folder " + dir + ": the simulator is not initialised",
                        false);
        if (_network->ghost_channel() != nullptr)
            return fail(std::string("Cannot save simulation while the option 'Ghost Migration' is active."),
                        false);
        // A snapshot replaces only what a snapshot may: never a folder of the user's.
        std::string why;
        if (!SnapshotFolder::replaceable(dir, why))
            return fail("Cannot save snapshot: " + why, false);
        // The snapshot is written aside and takes the place of `dir` only when
        // complete; the mark without its list of files tells a save that stopped.
        std::error_code ec;
        if (!clear_own_folder(staging))
            return fail("Cannot save snapshot: cannot clear folder " + staging, false);
        if (!fs::create_directories(staging, ec) || !SnapshotFolder::markIncomplete(staging))
        {
            fs::remove_all(staging, ec);
            return fail("Cannot create snapshot folder " + staging, false);
        }
        if (!writeSnapshot(staging))
        {
            fs::remove_all(staging, ec);
            return false;
        }
        if (!SnapshotFolder::markComplete(staging))
        {
            fs::remove_all(staging, ec);
            return fail("Cannot write the list of snapshot files into folder " + staging, false);
        }
        if (!commit_staging(staging, dir))
        {
            fs::remove_all(staging, ec);
            return fail("Cannot move snapshot into folder " + dir, false);
        }
        return true;
    }
    catch (const std::exception& e)
    {
        std::error_code ec;
        fs::remove_all(staging, ec);
        return fail(std::string("Simulator::save : ") + e.what(), false);
    }
    catch (const std::string& text)
    {
        std::error_code ec;
        fs::remove_all(staging, ec);
        return fail("Simulator::save : " + text, false);
    }
    catch (...)
    {
        std::error_code ec;
        fs::remove_all(staging, ec);
        return fail(std::string(STATE_EXCEPTION_WITHOUT_TEXT), false);
    }
}

bool Simulator::readSnapshot(const std::string& dir)
{
    if (!loadDomain(dir + BLOCK_FILE))
        return false;
    if (file_exists(dir + FLATTENING_FILE) && !restoreFlattening(dir))
        return false;
    if (!loadWells(dir))
        return false;
    const bool has_centerline = file_exists(dir + CENTERLINE_FILE);
    const bool has_tecto = file_exists(dir + TECTO_FILE);
    if (!file_exists(dir + DYNAMIC_FILE))
        return fail("Cannot load dynamic parameters from file " + dir + DYNAMIC_FILE, false);
    if (!loadDynamicParams(dir + DYNAMIC_FILE))
        return false;
    setWellConfig();
    if (!loadDistributions(dir))
        return false;
    if (file_exists(dir + EMAP_FILE) && !restoreEMap(dir + EMAP_FILE))
        return false;
    if (has_centerline && !restoreChannel(dir + CENTERLINE_FILE))
        return false;
    return !has_tecto ||
           (loadTectoMapFromFile(dir + TECTO_FILE) && restoreExactTecto(dir + TECTO_EXACT_FILE));
}

// The stacks of the block already stand where the flattening puts them: the
// flattening is taken without moving them.
bool Simulator::restoreFlattening(const std::string& dir)
{
    const std::string path = dir + FLATTENING_FILE;
    Topo topo;
    if (!topo.read(path))
        return fail("Cannot load flattening surface\n" + topo.getError(), false);
    printout(mean_text("Load flattening surface (mean=", topo.get_mean()));
    Topo migrated(_domain->getGridParams());
    if (!migrated.migrate(topo, true, true, _tracer.get()))
        return fail(std::string("Cannot migrate flattening surface"), false);
    _flattening = migrated;
    if (!restoreExactFlattening(dir + FLATTENING_EXACT_FILE))
        return false;
    _domain->adoptFlattening();
    return true;
}

// The erodibility in force is part of the block, at full precision and in
// depth, and the map beside it is that erodibility at six digits: a map that
// says the same leaves the block's own; a map that says otherwise was given
// by the user and replaces it.
bool Simulator::restoreEMap(const std::string& path)
{
    EMap map;
    if (!map.read(path))
        return fail("Cannot load erodibility map\n" + map.getError(), false);
    EMap current;
    _domain->get_emap(current);
    bool same = map.getNx() == current.getNx() && map.getNy() == current.getNy() && map.getNz() == 1;
    for (int j = 0; same && j < map.getNy(); ++j)
        for (int i = 0; same && i < map.getNx(); ++i)
        {
            double given = MP_UNDEF_REAL, held = MP_UNDEF_REAL;
            map.get_at(i, j, given);
            current.get_at(i, j, held);
            same = given == as_written(held);
        }
    if (same)
        return true;
    printout(mean_text("Load erodibility map (mean=", map.get_mean()));
    if (!_domain->load_emap(map))
        return fail(std::string("Cannot load erodibility map"), false);
    return true;
}

bool Simulator::restoreExactTecto(const std::string& path)
{
    std::vector<double> rates;
    if (!file_exists(path))
        return true;
    const int nx = _domain->getNx();
    if (!read_exact_values(path, static_cast<size_t>(nx) * static_cast<size_t>(_domain->getNy()), rates))
        return fail("Cannot load tectonic deformation map from file " + path, false);
    for (size_t k = 0; k < rates.size(); ++k)
        _domain->getObject(static_cast<int>(k) % nx, static_cast<int>(k) / nx).set_tecto(rates[k]);
    return true;
}

bool Simulator::restoreExactFlattening(const std::string& path)
{
    std::vector<double> values;
    if (!file_exists(path))
        return true;
    // A fresh grid: the one read from the text file keeps its own extremes.
    Topo exact(_domain->getGridParams());
    const int nx = exact.getNx();
    if (!read_exact_values(path, static_cast<size_t>(nx) * static_cast<size_t>(exact.getNy()), values))
        return fail("Cannot load flattening surface from file " + path, false);
    for (size_t k = 0; k < values.size(); ++k)
        if (values[k] != MP_UNDEF_REAL)
            exact.set_at(static_cast<int>(k) % nx, static_cast<int>(k) / nx, values[k]);
    _flattening = exact;
    return true;
}

bool Simulator::abandonLoad(const std::string& dir)
{
    const std::string reason = _lastMessage;
    clear();
    _lastMessage = reason;
    _tracer->error("Snapshot " + dir + " could not be loaded: the simulator has been cleared");
    return false;
}

bool Simulator::load(const std::string& source)
{
    const std::string asked = without_trailing_slash(source);
    std::string dir = asked;
    try
    {
        // A save that was stopped between its renames leaves the snapshot
        // beside its name; a damaged snapshot is refused before anything changes.
        std::string why;
        const SnapshotFolder::State state = SnapshotFolder::state(asked, true, why);
        if (state == SnapshotFolder::DAMAGED)
            return fail("Cannot load snapshot: " + why, false);
        if (state == SnapshotFolder::MISSING || state == SnapshotFolder::INCOMPLETE)
        {
            const std::string found = SnapshotFolder::locate(asked, true, why);
            // A folder marked but never completed holds nothing to trust.
            if (found.empty() && state == SnapshotFolder::INCOMPLETE)
                return fail("Cannot load snapshot: " + why, false);
            if (!found.empty())
            {
                dir = found;
                _tracer->warning("Snapshot folder " + asked +
                                 " is missing or incomplete (a save was interrupted): loading the complete "
                                 "snapshot in " +
                                 dir);
            }
        }
        // Nothing is touched before the three files every snapshot has are there.
        for (const char* name : {PARAMS_FILE, BLOCK_FILE, DYNAMIC_FILE})
            if (!file_exists(dir + name))
                return fail("Cannot load snapshot: file " + dir + name + " is missing", false);
        Parameters kept(_tracer.get());
        kept.resetFrom(*_parameters);
        if (!loadParams(dir + PARAMS_FILE))
        {
            _parameters->resetFrom(kept);
            return false;
        }
        if (init(false) != MP_STATUS_OK)
        {
            // A refusal before the model was dropped leaves it as it was.
            if (ready(false))
                _parameters->resetFrom(kept);
            return false;
        }
        _snapHasChannel = false;
        if (!readSnapshot(dir))
            return abandonLoad(dir);
        return true;
    }
    catch (const std::exception& e)
    {
        fail(std::string("Simulator::load : ") + e.what(), false);
    }
    catch (const std::string& text)
    {
        fail("Simulator::load : " + text, false);
    }
    catch (...)
    {
        fail(std::string(STATE_EXCEPTION_WITHOUT_TEXT), false);
    }
    return abandonLoad(dir);
}
