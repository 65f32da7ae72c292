// The kernel's driver: lifecycle, sequences, the iteration loop and its stop
// tests, and the clocks and laws rebuilt from the parameters at each sequence.

#include "kernel/driver/Simulator.h"

#include "kernel/channel/Channel.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"
#include "kernel/parameters/TimeProcess.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <sstream>

namespace
{
constexpr const char* EXCEPTION_WITHOUT_TEXT = "Exception thrown: look at message window for more details";
constexpr unsigned int TECTO_STEP = 1000;
constexpr unsigned int ISBX_STEP = 100;
constexpr unsigned int MEAN_TOPO_STEP = 10000;

// A run asked to go on until a stop (the batch's LAUNCH_IT = -1) and aiming at
// an upper limit gives up after 100 times the iterations the forecast
// aggradation needs to reach the highest point of the limit, and never before
// 10000 iterations, so that a run the forecast misjudges still reaches its
// limit. A limit the forecast cannot reach within 1e8 iterations (none, or a
// null rate) is said to be out of reach before the run, which then gives up
// after those 10000 iterations.
constexpr unsigned int RUN_UNTIL_STOP = 4294967295u;
constexpr double LIMIT_BOUND_FACTOR = 100.;
constexpr double LIMIT_BOUND_MIN = 10000.;
constexpr double LIMIT_BOUND_MAX = 1e8;
constexpr double FORECAST_PER_ITERATION = 1e-4; // forecast rates are in m/10000 it

// A run stops when the errors of an iteration are all ones already seen, in
// this many iterations in a row: a failure that comes back at every turn is
// told a few times, not millions.
constexpr unsigned int MAX_REPEATED_FAILURES = 3;

bool skips_migration(int ag_type)
{
    return ag_type == AG_DRAPING || ag_type == AG_GHOST;
}

unsigned int half_interval(unsigned int age, const TimeProcess* process)
{
    return age + static_cast<unsigned int>(process != nullptr ? process->mean_interval() * 0.5 : 0.);
}
} // namespace

// ---------------------------------------------------------------------------
// Construction

Simulator::Simulator() : _initialSeed(SeedGenerator::_default_seed)
{
    allocate();
}

Simulator::~Simulator()
{
    destroy();
}

void Simulator::allocate()
{
    _tracer = std::make_unique<Tracer>();
    _parameters = std::make_unique<Parameters>(_tracer.get());
    _seedGenerator = std::make_unique<SeedGenerator>();
    _meanderCalculator = std::make_unique<MeanderCalculator>(_parameters.get(), _tracer.get());
    _uniform = std::make_unique<UniformDistributionGenerator>(_seedGenerator.get(), 0., 1.);
}

void Simulator::destroy()
{
    clear();
    _uniform.reset();
    _meanderCalculator.reset();
    _seedGenerator.reset();
    _parameters.reset();
    _tracer.reset();
}

void Simulator::duplicate(const Simulator& other)
{
    clear();
    _parameters->resetFrom(*other._parameters);
    _batchLauncher = other._batchLauncher;
    _tracer->resetFrom(*other._tracer);
    *_seedGenerator = *other._seedGenerator;
    _initialSeed = other._initialSeed;
    _upperLimit = other._upperLimit;
    _flattening = other._flattening;
    _userClasses = other._userClasses;
    if (!other.ready(false))
        return;
    if (init(true) != MP_STATUS_OK)
        return;
    _domain->resetFrom(*other._domain);
    _network->resetFrom(*other._network);
    *_massBalance = *other._massBalance;
    *_seedGenerator = *other._seedGenerator;
    _tectoActive = other._tectoActive;
    _currentEP = other._currentEP;
    _isbxHistory = other._isbxHistory;
    _overbankDecayLength = other._overbankDecayLength;
    _overbankMaxGrain = other._overbankMaxGrain;
    _nextLocalAllowed = other._nextLocalAllowed;
    _nextRegionalAllowed = other._nextRegionalAllowed;
}

void Simulator::printVersion() const
{
    // A line of its own, shown only to the most verbose trace.
    _tracer->trace("Sarvo (" + _parameters->getVersionStr() + ") / " + _parameters->getVersionDate() + "\n",
                   TRACE_ALL);
}

// ---------------------------------------------------------------------------
// Accessors

const iDomain* Simulator::getDomain() const
{
    return _domain.get();
}

iParameters* Simulator::getParameters() const
{
    return _parameters.get();
}

MeanderCalculator* Simulator::getMeanderCalculator() const
{
    return _meanderCalculator.get();
}

iTracer* Simulator::getTracer() const
{
    return _tracer.get();
}

const iChannel* Simulator::getChannel() const
{
    return _network ? _network->channel() : nullptr;
}

int Simulator::getCurrentSeed() const
{
    return _seedGenerator->getSeed();
}

// ---------------------------------------------------------------------------
// Small helpers

int Simulator::getInt(const std::string& name) const
{
    return _parameters->getParamInt(name);
}

double Simulator::getDouble(const std::string& name) const
{
    return _parameters->getParamDouble(name);
}

bool Simulator::getBool(const std::string& name) const
{
    return _parameters->getParamBool(name);
}

bool Simulator::fail(const std::string& text, bool result) const
{
    _lastMessage = text;
    _tracer->error(text);
    return result;
}

int Simulator::fail(const std::string& text, int result) const
{
    _lastMessage = text;
    _tracer->error(text);
    return result;
}

bool Simulator::readSurface(GridReal& grid, const std::string& path) const
{
    return _domain ? grid.read_on(path, _domain->getGridParams()) : grid.read(path);
}

void Simulator::printout(const std::string& text) const
{
    if (_network)
        _network->printout(text);
    else
        _tracer->info(text);
}

int Simulator::stopAt(int status, const std::string& reason)
{
    _lastMessage = reason;
    _tracer->info(reason);
    return status;
}

// ---------------------------------------------------------------------------
// Lifecycle

int Simulator::init(bool force)
{
    try
    {
        if (_parameters->check(_lastMessage))
        {
            _tracer->error(_lastMessage);
            if (!force)
                return MP_STATUS_OUT_OF_RANGE;
        }
        if ((_domain || _network) && !clear())
        {
            _lastMessage = "Memory problem during simulator creation";
            return MP_STATUS_OUT_OF_RANGE;
        }
        _currentEP = getDouble("AG_EP_INIT_ELEV");
        _massBalance = std::make_unique<MassBalance>(getBool("MASS_BAL_ACTIVE"));
        const double dx = getDouble("DOMAIN_DX");
        const double dy = getDouble("DOMAIN_DY");
        const int nx = getInt("DOMAIN_NX");
        const int ny = getInt("DOMAIN_NY");
        const double oy = getDouble("DOMAIN_OY");
        const double ox = getDouble("DOMAIN_OX");
        const double rotation = getDouble("DOMAIN_GRID_DIR");
        const double zref = getDouble("DOMAIN_ZREF");
        _domain = std::make_unique<Domain>(_meanderCalculator.get(), _seedGenerator.get(), _massBalance.get(),
                                           &_flattening, dx, dy, nx, ny, Point2D(ox, oy), rotation, zref, 0u,
                                           Facies());
        _network = std::make_unique<Network>(_meanderCalculator.get(), _parameters.get(), _domain.get(),
                                             _seedGenerator.get(), _massBalance.get(), _uniform.get());
        _network->init_network();
        _massBalance->setMeshArea(_domain->getDx() * _domain->getDy());
        resetTimeProcessors();
        resetDistGenerators();
        _tracer->resetStatsFiles();
        return MP_STATUS_OK;
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Simulator::init : ") + e.what(), MP_STATUS_OUT_OF_RANGE);
    }
    catch (const std::string& text)
    {
        return fail("Simulator::init : " + text, MP_STATUS_OUT_OF_RANGE);
    }
    catch (...)
    {
        return fail(std::string("Memory problem during simulator creation"), MP_STATUS_OUT_OF_RANGE);
    }
}

bool Simulator::clear()
{
    try
    {
        _network.reset();
        _domain.reset();
        // The channel points are gone: the wells have no point to tell of their going.
        _wells.clear();
        _wellStore.clear();
        _massBalance.reset();
        _userClasses = UserClassList();
        clearTimeProcessors();
        clearDistGenerators();
        _isbxHistory.clear();
        _upperLimit.clear();
        _flattening.clear();
        _tectoActive = false;
        _overbankDecayLength = 0.;
        // Statistics no sequence has completed are not the user's file yet.
        if (_tracer)
            _tracer->discardStatsFiles();
        return true;
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Simulator::clear : ") + e.what(), false);
    }
    catch (const std::string& text)
    {
        return fail("Simulator::clear : " + text, false);
    }
    catch (...)
    {
        return fail(std::string("Memory problem encountered during simulator deletion"), false);
    }
}

bool Simulator::ready(bool warn) const
{
    if (_network && _domain)
        return true;
    if (warn)
        _tracer->warning("Simulator not ready (call init method first)");
    return false;
}

// ---------------------------------------------------------------------------
// Sequences

bool Simulator::openStatistics()
{
    bool ok = true;
    if (_tracer->generateStats())
        ok = _tracer->openStatsFile(std::ios::app) && ok;
    if (_tracer->generateCenterlineStats())
        ok = _tracer->openCenterlineStatsFile(std::ios::app) && ok;
    if (_tracer->generateGrainsizeStats())
        ok = _tracer->openGrainsizeStatsFile(std::ios::app) && ok;
    return ok;
}

void Simulator::closeStatistics()
{
    if (!_tracer)
        return;
    if (_tracer->generateStats())
        _tracer->closeStatsFile();
    if (_tracer->generateCenterlineStats())
        _tracer->closeCenterlineStatsFile();
    if (_tracer->generateGrainsizeStats())
        _tracer->closeGrainsizeStatsFile();
}

int Simulator::newSequence()
{
    try
    {
        int status = ready(true) ? MP_STATUS_OK : MP_STATUS_NOT_READY;
        _tracer->info("Launching system " + _parameters->getParamString("SIM_TYPE"));
        if (_tracer->traceLevel(TRACE_DEBUG))
            _tracer->debug(_parameters->getParamsDesc("  ", true));
        if (!openStatistics())
            status = MP_STATUS_FAILURE;
        _limitBound = 0;
        _limitTurns = 0;
        if (status == MP_STATUS_OK)
        {
            const int seed = getInt("SIM_SEED");
            if (seed != _seedGenerator->getSeed())
                _seedGenerator->reset(seed);
            if (getAge() == 0)
                _initialSeed = seed;
            resetTimeProcessors();
            resetDistGenerators();
            _currentEP = getDouble("AG_EP_INIT_ELEV");
            _network->ep_elevation(_currentEP - _domain->getZref());
        }
        const double width = getDouble("CHNL_WIDTH");
        const double wavelength = getDouble("CHNL_WAVELENGTH");
        const double levee = getDouble("AG_LV_WIDTH");
        const int grain_class = _parameters->usingTurbi() || _parameters->usingLobes() ? 9 : 8;
        _overbankMaxGrain = Facies::class_to_granulo(grain_class);
        const double g4 = Facies::class_to_granulo(4);
        // Overbank thickness decays exponentially away from the channel, down to the finest sand class.
        _overbankDecayLength =
            levee * width * std::log(0.37) / std::log((g4 + MP_EPSILON) / _overbankMaxGrain);
        if (_network)
        {
            _network->init_network();
            setWellConfig();
        }
        if (status == MP_STATUS_OK)
            setupMassBalance();
        if (2. * width > wavelength)
        {
            _tracer->error("Channel wavelength MUST be greater than 2 times channel width.\nThis CANNOT be "
                           "overridden!");
            status = MP_STATUS_INCONSISTENT;
        }
        return status;
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Simulator::newSequence : ") + e.what(), MP_STATUS_FAILURE);
    }
    catch (const std::string& text)
    {
        return fail("Simulator::newSequence : " + text, MP_STATUS_FAILURE);
    }
    catch (...)
    {
        return fail(std::string(EXCEPTION_WITHOUT_TEXT), MP_STATUS_FAILURE);
    }
}

void Simulator::setupMassBalance()
{
    _massBalance->setActive(getBool("MASS_BAL_ACTIVE"));
    const double width = getDouble("CHNL_WIDTH");
    const double c = std::fabs(std::cos(
        MeanderCalculator::relative_flow_direction(getDouble("DOMAIN_GRID_DIR"), getDouble("CHNL_FLW_DIR"))));
    const double flow_length =
        (getDouble("CHNL_MARGIN") * width + getInt("DOMAIN_NX") * getDouble("DOMAIN_DX")) * c;
    const double channel_volume = MeanderCalculator::hmean_from_hmax(getDouble("CHNL_MAX_DEPTH")) * width *
                                  flow_length * _network->channel_current_sinuosity();
    const double total = getDouble("SED_LOAD_MEAN") * getDouble("MASS_BAL_COEF") * channel_volume;
    std::vector<double> volumes = _parameters->getSedProportions();
    for (double& v : volumes)
        v *= total;
    _massBalance->setInitialVolume(volumes);
    if (_tracer->traceAggrad() && _tracer->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << "Initial Mass Balance:\n" << *_massBalance;
        _tracer->debug(text.str());
    }
}

int Simulator::endSequence()
{
    _parameters->setParamInt("SIM_SEED", _seedGenerator->getSeed());
    _parameters->setParamDouble("AG_EP_INIT_ELEV", _currentEP);
    if (_network)
        _network->restore_channel_scale();
    int status = MP_STATUS_OK;
    if (!ready(true))
        status = MP_STATUS_NOT_READY;
    else if (_tracer->traceAggrad() && _tracer->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << "Final Mass Balance:\n" << *_massBalance;
        _tracer->debug(text.str());
    }
    closeStatistics();
    return status;
}

int Simulator::checkConsistency()
{
    if (_parameters->check(_lastMessage) || !checkWells(_lastMessage))
    {
        _tracer->error(_lastMessage);
        return MP_STATUS_INCONSISTENT;
    }
    int result = _meanderCalculator->check_consistency();
    if (result != MP_STATUS_OK)
    {
        _lastMessage = "Some parameters are out of the usual range of values:" + MeanderCalculator::_msg;
        if (_parameters->usingResearch() && _tracer->traceLevel(TRACE_DEBUG))
        {
            _lastMessage.clear();
            return MP_STATUS_OK;
        }
        if (result == MP_STATUS_CONSISTENCY_WARNING)
            _tracer->warning(_lastMessage);
        else
            _tracer->error(_lastMessage);
    }
    return result;
}

int Simulator::launch(unsigned int n)
{
    try
    {
        int status = checkConsistency();
        if (status == MP_STATUS_INCONSISTENT)
            return status;
        status = newSequence();
        if (status == MP_STATUS_OK)
            status = run(n);
        if (status == MP_STATUS_OK || status == MP_STATUS_UPPER_LIMIT)
            return endSequence();
        return status;
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Simulator::launch : ") + e.what(), MP_STATUS_FAILURE);
    }
    catch (const std::string& text)
    {
        return fail("Simulator::launch : " + text, MP_STATUS_FAILURE);
    }
    catch (...)
    {
        return fail(std::string(EXCEPTION_WITHOUT_TEXT), MP_STATUS_FAILURE);
    }
}

int Simulator::launchBatch(std::string const& file)
{
    if (!_batchLauncher)
        return fail("Cannot launch batch file " + file +
                        ": this simulator was built without the batch reader",
                    MP_STATUS_FAILURE);
    return _batchLauncher(*this, file);
}

// ---------------------------------------------------------------------------
// The run

int Simulator::run(unsigned int n)
{
    return runTurns(n, n == RUN_UNTIL_STOP);
}

int Simulator::runPiece(unsigned int n)
{
    return runTurns(n, true);
}

int Simulator::runTurns(unsigned int n, bool until_stop)
{
    try
    {
        if (!ready(true) && sequenceOpen())
            return MP_STATUS_NOT_READY;
        if (!sequenceOpen())
            return fail(std::string("Simulator::run : not ready ! Call newSequence first"),
                        MP_STATUS_NOT_READY);
        int status = prepareRun();
        const bool bounded = until_stop && status == MP_STATUS_OK && getInt("ZUL_TYPE") != ZUL_NONE;
        const unsigned int turns = bounded ? std::min(n, turnsToLimit()) : n;
        unsigned int repeats = 0;
        for (unsigned int count = 0; count < turns && status == MP_STATUS_OK; ++count)
        {
            const unsigned int errors = _tracer->getErrorCount();
            const size_t known = _tracer->getDistinctErrors().size();
            status = oneLoop();
            if (bounded)
                ++_limitTurns;
            if (!_tracer->progress(1))
                status = MP_STATUS_USER_STOP;
            if (status == MP_STATUS_OK && failureRepeats(errors, known, repeats))
                return fail(repeatedFailure(), MP_STATUS_FAILURE);
        }
        if (bounded && status == MP_STATUS_OK && _limitTurns >= _limitBound)
            return fail(upperLimitMissed(_limitBound), MP_STATUS_FAILURE);
        return status;
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Simulator::run : ") + e.what(), MP_STATUS_FAILURE);
    }
    catch (const std::string& text)
    {
        return fail("Simulator::run : " + text, MP_STATUS_FAILURE);
    }
    catch (...)
    {
        return fail(std::string(EXCEPTION_WITHOUT_TEXT), MP_STATUS_FAILURE);
    }
}

unsigned int Simulator::turnsToLimit()
{
    if (_limitBound == 0)
    {
        _limitBound = upperLimitBound();
        _limitTurns = 0;
    }
    return _limitBound - std::min(_limitTurns, _limitBound);
}

bool Simulator::failureRepeats(unsigned int errors, size_t known, unsigned int& repeats) const
{
    const bool repeated = _tracer->getErrorCount() > errors && _tracer->getDistinctErrors().size() == known;
    repeats = repeated ? repeats + 1 : 0;
    return repeats >= MAX_REPEATED_FAILURES;
}

std::string Simulator::repeatedFailure() const
{
    return "Simulator::run : the same error came back in " + std::to_string(MAX_REPEATED_FAILURES) +
           " iterations in a row: the run is stopped at iteration " + std::to_string(getAge());
}

double Simulator::upperLimitGap() const
{
    double gap = 0.;
    for (int j = 0; j < _domain->getNy(); ++j)
        for (int i = 0; i < _domain->getNx(); ++i)
        {
            const DepositionSet& ds = _domain->getObject(i, j);
            if (ds.get_zul() != MP_UNDEF_REAL)
                gap = std::max(gap, ds.get_zul() - ds.get_topo_rel(true));
        }
    return gap;
}

unsigned int Simulator::upperLimitBound()
{
    const double rate = getForecastAggradationRate() * FORECAST_PER_ITERATION;
    const double needed = rate > 0. ? upperLimitGap() / rate : MP_MAX_REAL_VALUE;
    const double bound = LIMIT_BOUND_FACTOR * needed;
    if (bound <= LIMIT_BOUND_MAX)
        return static_cast<unsigned int>(std::ceil(std::max(bound, LIMIT_BOUND_MIN)));
    std::ostringstream text;
    text << "The upper limit (highest point " << upperLimitGap() << " m above the topography) cannot be "
         << "reached by the forecast aggradation (" << getForecastAggradationRate()
         << " m/10000 it): the run stops with a failure after " << LIMIT_BOUND_MIN
         << " iterations if the limit is not reached by then";
    _tracer->warning(text.str());
    return static_cast<unsigned int>(LIMIT_BOUND_MIN);
}

std::string Simulator::upperLimitMissed(unsigned int turns) const
{
    std::ostringstream text;
    text << "The upper limit was not reached after " << turns << " iterations (it stands " << upperLimitGap()
         << " m above the topography at its highest): the run is stopped";
    return text.str();
}

void Simulator::erodeToUpperLimit()
{
    Topo limit;
    if (!getUpperLimit(limit) || !replaceTopo(limit, SURF_ERODE, FILL_NONE, true))
        _tracer->warning("Cannot erode down to upper limit surface");
}

int Simulator::prepareRun()
{
    int status = MP_STATUS_OK;
    if (!_overbankProcess || !_localAvulsionProcess || !_regionalAvulsionProcess || !_overbankDistribution ||
        !_channelScaleDistribution)
    {
        _tracer->error("Sequence is not ready! Call newSequence before!");
        status = MP_STATUS_NOT_READY;
    }
    if (zulReached())
    {
        if (getInt("ZUL_TYPE") == ZUL_ERODE)
            erodeToUpperLimit();
        stopAt(MP_STATUS_UPPER_LIMIT, "Upper limit has been reached");
        if (!allWellsHonored())
            return MP_STATUS_UPPER_LIMIT;
        return stopAt(MP_STATUS_WELLS_HONORED, "All wells are honored");
    }
    if (allWellsHonored())
        return stopAt(MP_STATUS_WELLS_HONORED, "All wells are honored");
    if (status != MP_STATUS_OK)
        return status;
    if (!_network->has_channel() && getInt("AG_TYPE") != AG_DRAPING)
    {
        if (!_network->create_channel(_lastMessage))
            return fail(std::string(_lastMessage), MP_STATUS_FAILURE);
    }
    if (_network->has_channel())
    {
        attachWellsToChannel();
        _network->update_channel();
    }
    return status;
}

// One iteration is the list of its steps. Their order, and the order of the
// draws inside each, is behaviour: a run repeats from its seed only so.
int Simulator::oneLoop()
{
    _massBalance->resetVolume();
    _network->incrementAge();
    const unsigned int it = _network->getAge();
    const unsigned int age = getAge();
    tickClocks(it, age);
    const int ag_type = getInt("AG_TYPE");
    moveAndDeposit(ag_type, age);
    const bool av_stats = _tracer->generateStatsAv();
    forceAvulsions(ag_type, age, av_stats);
    flood(ag_type, age);
    clockedAvulsions(ag_type, age, av_stats);
    if (_tracer->generateStatsIt() && _statsProcess->occurs(age))
        dumpStats();
    return stopTests();
}

// The periodic chores, the base level and the erodibility under the upper limit.
void Simulator::tickClocks(unsigned int it, unsigned int age)
{
    if (it % MEAN_TOPO_STEP == 0)
    {
        std::ostringstream text;
        text << "Mean topo (Struct.): " << _domain->mean_topo_geo(true) << "m";
        printout(text.str());
    }
    if (it % ISBX_STEP == 0)
        sampleChannelMeasures();
    if (_tectoActive && it % TECTO_STEP == 0)
    {
        printout("Apply tectonic deformation");
        _network->apply_tecto(TECTO_STEP);
    }
    if (getObPeriod() == 0)
        _network->last_flood_iter(it);
    if (_epProcess->occurs(age))
    {
        _currentEP += (*_epDistribution)();
        _network->ep_elevation(_currentEP - _domain->getZref());
    }
    if (getInt("ZUL_TYPE") == ZUL_STRATIGRAPHIC)
        _domain->build_emap_zul(getDouble("EROD_COEF"));
}

// The channel moves (or its ghost does), or the drape falls. The move lays its
// deposits in Network::migrate_with -> channel_points_moved -> update_domain,
// through channel_points_created again when the ends had to be rebuilt.
void Simulator::moveAndDeposit(int ag_type, unsigned int age)
{
    if (_parameters->usingTurbi() && _network->has_channel())
    {
        if (ag_type == AG_GHOST)
            _network->make_ghost_migration(1,
                                           _overbankDistribution->mean() / _overbankProcess->mean_interval());
        else if (_network->ghost_channel() != nullptr)
        {
            _network->end_ghost_migration();
            _overbankProcess->reset(age);
        }
    }
    if (!skips_migration(ag_type))
    {
        if (!_wells.empty())
            _network->migrate_conditioning(1);
        else
            _network->migrate(1);
    }
    if (ag_type == AG_DRAPING && _overbankProcess->occurs(age))
    {
        printout("Draping");
        _network->make_draping((*_overbankDistribution)(), getInt("AG_DRAP"));
    }
}

// The avulsions the wells ask for; a forced local one leaves no room for a
// forced regional one in the same iteration.
void Simulator::forceAvulsions(int ag_type, unsigned int age, bool av_stats)
{
    if (skips_migration(ag_type))
        return;
    if (wantLocalAvulsion())
    {
        if (av_stats)
            dumpStats();
        printout("Local Avulsion Forced by Conditioning");
        _network->local_avulsion(getBool("AV_NO_SPLAY"), getDouble("AV_LOC_PROB1"), getDouble("AV_LOC_PROB2"),
                                 true);
        _localAvulsionProcess->reset(age);
        _nextLocalAllowed = half_interval(age, _localAvulsionProcess.get());
        return;
    }
    if (wantRegionalAvulsion())
    {
        printout("Regional Avulsion Forced by Conditioning");
        if (av_stats)
            dumpStats();
        // Only this forced path rounds the scale to a whole number; the clocked
        // one does not. With the default scale of 100 both give 1.
        _network->regional_avulsion(std::round((*_channelScaleDistribution)() / 100.));
        _regionalAvulsionProcess->reset(age);
        _nextRegionalAllowed = half_interval(age, _regionalAvulsionProcess.get());
    }
}

// The overbank flood (with its peat, drape and breaches) or the incision.
void Simulator::flood(int ag_type, unsigned int age)
{
    if (ag_type == AG_OVERBANK && _overbankProcess->occurs(age))
    {
        printout("Overbank Flow");
        prepareOverbank();
        if (_parameters->usingFluvi() && getDouble("AG_OB_PEAT") > 0.)
            _network->make_wetland(getDouble("AG_OB_PEAT") / 100.);
        if (getDouble("AG_OB_PEL_DRAP_INT") > 0.)
            _network->make_pel_drap(getDouble("AG_OB_PEL_DRAP_INT"));
        _network->make_overbank(getDouble("AG_EXP_DEC_THICK"), _overbankDecayLength, _overbankMaxGrain,
                                _overbankDistribution->mean(), getBool("AG_RAND_LAMBDA"));
        if (getBool("AV_LV_OB"))
        {
            printout("Levee Breaches during Overbank Flow");
            _network->local_avulsion(getBool("AV_NO_SPLAY"), getDouble("AV_LOC_PROB1"),
                                     getDouble("AV_LOC_PROB2"), false);
        }
    }
    if (ag_type == AG_EROSIVE && _overbankProcess->occurs(age))
    {
        if (getDouble("AG_OB_PEL_DRAP_INT") > 0.)
            _network->make_pel_drap(getDouble("AG_OB_PEL_DRAP_INT"));
        printout("Incision");
        _network->make_incision((*_overbankDistribution)());
    }
}

// The avulsions of the clocks, which the wells may still block.
void Simulator::clockedAvulsions(int ag_type, unsigned int age, bool av_stats)
{
    if (skips_migration(ag_type))
        return;
    if (_localAvulsionProcess->occurs(age))
    {
        printout("Levee Breaches (others)");
        if (canAvulse())
            _network->local_avulsion(getBool("AV_NO_SPLAY"), getDouble("AV_LOC_PROB1"),
                                     getDouble("AV_LOC_PROB2"), false);
        else
            _tracer->info("   Local Avulsion Blocked by Conditioning");
    }
    if (_regionalAvulsionProcess->occurs(age))
    {
        printout("Regional Avulsion");
        if (canAvulse())
        {
            if (av_stats)
                dumpStats();
            _network->regional_avulsion((*_channelScaleDistribution)() / 100.);
        }
        else
            _tracer->info("   Regional Avulsion Blocked by Conditioning");
    }
}

int Simulator::stopTests()
{
    if (zulReached())
    {
        if (getInt("ZUL_TYPE") == ZUL_ERODE)
            erodeToUpperLimit();
        return stopAt(MP_STATUS_UPPER_LIMIT, "Upper limit has been reached");
    }
    if (allWellsHonored())
        return stopAt(MP_STATUS_WELLS_HONORED, "All wells are honored");
    return MP_STATUS_OK;
}

void Simulator::prepareOverbank()
{
    double x = (*_overbankDistribution)();
    if (x == 0.)
        _tracer->debug("Maximum intensity of Overbank Flow is zero: there will be no deposit");
    if (!canAggrade())
    {
        _tracer->info("   Aggradation Blocked by Conditioning");
        x = 0.;
    }
    // The channel rises (or not) before the flood spreads.
    _network->make_channel_lag(x);
}

// ---------------------------------------------------------------------------
// Stop and conditioning tests

bool Simulator::wantRegionalAvulsion()
{
    if (_nextRegionalAllowed > getAge())
        return false;
    // Every well is asked, even when the clock then says no: each answer may
    // leave its line in the debug trace.
    const bool any = wellsWantRegionalAvulsion();
    if (!_regionalAvulsionProcess || _regionalAvulsionProcess->mean_interval() == 0.)
        return false;
    return any;
}

bool Simulator::wantLocalAvulsion()
{
    if (_nextLocalAllowed > getAge())
        return false;
    const bool any = wellsWantLocalAvulsion();
    if (!_localAvulsionProcess)
        return false;
    if (_localAvulsionProcess->mean_interval() == 0.)
        return getBool("AV_LV_OB") && any;
    return any;
}

bool Simulator::canAvulse()
{
    return !wellsBlockAvulsion() || overruleWells();
}

bool Simulator::canAggrade()
{
    return !wellsBlockAggradation() || overruleWells();
}

// A blocking well is overruled with the relaxation probability (a percentage).
bool Simulator::overruleWells()
{
    return getDouble("COND_WELL_RELAX") / 100. >= (*_uniform)();
}

bool Simulator::allWellsHonored() const
{
    if (!getBool("COND_WELL_STOP_HONORED"))
        return false;
    return wellsHonored();
}

double Simulator::getUpperLimitRatio()
{
    if (getInt("ZUL_TYPE") == ZUL_NONE || !ready(false))
        return MP_UNDEF_INT;
    return _domain->upper_limit_zul();
}

bool Simulator::zulReached()
{
    // Same answer as getUpperLimitRatio() <= 0, without counting every node.
    if (getInt("ZUL_TYPE") == ZUL_NONE || !ready(false))
        return false;
    return _domain->upper_limit_reached();
}

unsigned int Simulator::getAge() const
{
    return ready(false) ? _network->getAge() : 0u;
}

void Simulator::setAge(unsigned int age)
{
    if (ready(false))
        _network->setAge(age);
}

// ---------------------------------------------------------------------------
// Clocks and laws

unsigned int Simulator::getObPeriod() const
{
    if (getInt("AG_TYPE") != AG_OVERBANK)
        return 0;
    switch (getInt("AG_OB_FREQ"))
    {
    case MP_PROCESS_PERIODIC:
        return static_cast<unsigned int>(getInt("AG_OB_PERIOD"));
    case MP_PROCESS_POISSON:
        return static_cast<unsigned int>(getInt("AG_OB_POISSON"));
    default:
        return 0;
    }
}

double Simulator::getObDistMean() const
{
    switch (getInt("AG_OB_DIST"))
    {
    case MP_DIST_CONSTANT:
        return getDouble("AG_OB_CONST");
    case MP_DIST_UNIFORM:
        return (getDouble("AG_OB_MIN") + getDouble("AG_OB_MAX")) * 0.5;
    case MP_DIST_GAUSSIAN:
        return getDouble("AG_OB_NORM_MEAN");
    case MP_DIST_LOGNORMAL:
        return getDouble("AG_OB_LOGNORM_MEAN");
    default:
        return 0.;
    }
}

TimeProcessParamType Simulator::processParams(const std::string& type, const std::string& period,
                                              const std::string& poisson) const
{
    TimeProcessParamType param;
    param._type = getInt(type);
    param._period = static_cast<unsigned int>(getInt(period));
    param._poisson_mean = static_cast<unsigned int>(getInt(poisson));
    return param;
}

void Simulator::renewProcess(std::unique_ptr<TimeProcess>& process, const TimeProcessParamType& param,
                             bool& renewed)
{
    if (process && *process != param)
        process.reset();
    renewed = !process;
    if (renewed)
        process = TimeProcess::createInstance(_seedGenerator.get(), param, getAge());
}

void Simulator::resetTimeProcessors()
{
    if (_firstReset)
    {
        clearTimeProcessors();
        _firstReset = false;
    }
    _nextRegionalAllowed = 0;
    _nextLocalAllowed = 0;
    bool renewed = false;
    renewProcess(_epProcess, processParams("AG_EP_FREQ", "AG_EP_PERIOD", "AG_EP_POISSON"), renewed);
    TimeProcessParamType overbank = processParams("AG_OB_FREQ", "AG_OB_PERIOD", "AG_OB_POISSON");
    if (getInt("AG_TYPE") == AG_NONE)
        overbank._type = MP_PROCESS_NEVER;
    renewProcess(_overbankProcess, overbank, renewed);
    renewProcess(_localAvulsionProcess, processParams("AV_LOC_FREQ", "AV_LOC_PERIOD", "AV_LOC_POISSON"),
                 renewed);
    if (renewed)
        _nextLocalAllowed = half_interval(getAge(), _localAvulsionProcess.get());
    renewProcess(_regionalAvulsionProcess, processParams("AV_REG_FREQ", "AV_REG_PERIOD", "AV_REG_POISSON"),
                 renewed);
    if (renewed)
        _nextRegionalAllowed = half_interval(getAge(), _regionalAvulsionProcess.get());
    TimeProcessParamType stats;
    stats._type = MP_PROCESS_PERIODIC;
    stats._period = _tracer->statsInterval();
    renewProcess(_statsProcess, stats, renewed);
}

DistGenParamType Simulator::distParams(const std::string& prefix) const
{
    DistGenParamType param;
    param._type = getInt(prefix + "_DIST");
    param._constant = getDouble(prefix + "_CONST");
    param._min = getDouble(prefix + "_MIN");
    param._max = getDouble(prefix + "_MAX");
    param._norm_mean = getDouble(prefix + "_NORM_MEAN");
    param._norm_stdev = getDouble(prefix + "_NORM_STDEV");
    param._lognorm_mean = getDouble(prefix + "_LOGNORM_MEAN");
    param._lognorm_stdev = getDouble(prefix + "_LOGNORM_STDEV");
    return param;
}

void Simulator::renewDistribution(std::unique_ptr<DistributionGenerator>& generator,
                                  const DistGenParamType& param, bool positive)
{
    if (generator && *generator != param)
        generator.reset();
    if (!generator)
        generator = DistributionGenerator::createInstance(_seedGenerator.get(), param, positive);
}

void Simulator::resetDistGenerators()
{
    // The equilibrium profile may go down: its steps keep their sign.
    renewDistribution(_epDistribution, distParams("AG_EP"), false);
    renewDistribution(_overbankDistribution, distParams("AG_OB"), true);
    renewDistribution(_channelScaleDistribution, distParams("CHNL_SCALE"), true);
}

void Simulator::clearTimeProcessors()
{
    _overbankProcess.reset();
    _localAvulsionProcess.reset();
    _regionalAvulsionProcess.reset();
    _statsProcess.reset();
    _epProcess.reset();
}

void Simulator::clearDistGenerators()
{
    _overbankDistribution.reset();
    _channelScaleDistribution.reset();
    _epDistribution.reset();
}
