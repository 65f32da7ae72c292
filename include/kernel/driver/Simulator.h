#pragma once
// The kernel's driver: it owns every kernel object, opens and closes the
// sequences of a simulation, turns the iteration loop that fixes the order of
// the geological events, and decides when a run stops.

#include "interface/iSimulator.h"
#include "kernel/files/Topo.h"
#include "kernel/files/UserClassList.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class Domain;
class Network;
class Parameters;
class Tracer;
class SeedGenerator;
class MassBalance;
class TimeProcess;
class DistributionGenerator;
class UniformDistributionGenerator;
struct TimeProcessParamType;
struct WellConfig;
struct DistGenParamType;

class Simulator : public iSimulator
{
public:
    Simulator();
    ~Simulator() override;
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // Takes the whole state of `other`: parameters, tracer settings, generator and model.
    void duplicate(const Simulator& other);

    void printVersion() const override;

    // --- Measures
    double getUpperLimitRatio() override;
    double getForecastSand() override;
    double getForecastAggradationRate() override;
    double getForecastMigrationRate() override;
    double getForecastMeanVelocityPerturbation() override;
    double getPBProportion() override;
    double getSandProportion() override;
    double getAggradationRate() override;
    double getMigrationRate() override;
    double getMeanVelocityPerturbation() override;
    double getSinuosity() override;
    double getTortuosity() override;
    double getWavelength() override;
    double getSandBodyExtension() override;
    double getIsbx() override;
    double getMeanIsbx() override;
    unsigned int getNbCutoff() override;
    double getMeanNbCutoff() override;

    // --- Accessors
    const iDomain* getDomain() const override;
    iParameters* getParameters() const override;
    MeanderCalculator* getMeanderCalculator() const override;
    iTracer* getTracer() const override;
    const iChannel* getChannel() const override;
    double getCurrentEP() const override { return _currentEP; }
    int getCurrentSeed() const override;
    int getInitialSeed() const override { return _initialSeed; }
    unsigned int getAge() const override;
    void setAge(unsigned int age) override;

    // --- Channel actions
    bool replaceCenterlineFromFile(const std::string& path, bool flag) override;
    bool replaceCenterline(const Centerline& centerline, bool flag) override;
    bool replaceCenterlineFromPoint(const Point2D& point, bool flag) override;
    bool saveCenterline(const std::string& path) override;
    bool saveCenterlineDisc(const std::string& path) override;
    bool getCenterline(Centerline& centerline) const override;
    bool abandonChannel() override;

    // --- Surface actions
    bool replaceTopoFromFile(const std::string& path, int mode, int facies, bool flag) override;
    bool replaceTopo(const Topo& topo, int mode, int facies, bool flag) override;
    bool replaceTopoFromCst(double value, int mode, int facies, bool flag) override;
    bool replaceFacies(int facies, bool flag) override;
    bool eraseFacies(double elevation, bool flag) override;
    bool eraseFaciesFake(double elevation) override;
    bool saveTopo(const std::string& path, int format, const std::string& order) override;
    bool getTopo(Topo& topo, bool withWater, unsigned int age) const override;
    bool saveExtraTopo(const std::string& path, int format, const std::string& order) override;

    // --- Erodibility map
    bool loadEMapFromFile(const std::string& path, bool flag) override;
    bool loadEMap(const EMap& map, bool flag) override;
    bool loadEMapFromCst(double value, bool flag) override;
    bool saveEMap(const std::string& path, int format, const std::string& order) override;
    bool getEMap(EMap& map) const override;
    bool saveEMapBuiltFromCenterline(const std::string& path, double ax, double ay, int format,
                                     const std::string& order) override;
    bool getEMapBuiltFromCenterline(EMap& map, double ax, double ay) const override;

    // --- Upper limit
    bool loadUpperLimitFromFile(const std::string& path, int type) override;
    bool loadUpperLimit(const Topo& topo, int type) override;
    bool loadUpperLimitFromCst(double value, int type) override;
    bool getUpperLimit(Topo& topo) const override;
    void resetUpperLimit() override;

    // --- Tectonics
    bool loadTectoMapFromFile(const std::string& path) override;
    bool loadTectoMap(const TectoMap& map) override;
    void resetTectoMap() override;

    // --- Flattening
    bool loadFlatteningFromFile(const std::string& path) override;
    bool loadFlattening(const Topo& topo) override;
    bool getFlatteningMinMax(double& zmin, double& zmax) const override;
    void resetFlattening() override;

    // --- Conditioning wells
    bool addWellFromFile(const std::string& path, const std::string& trajectory,
                         const std::string& name) override;
    bool addWell(const Core& core, const std::string& name) override;
    bool deleteWell(const std::string& name) override;
    bool extractWell(int i, int j, Core& core, double zmin, double zmax) const override;
    bool extractWellAt(const Point2D& location, Core& core, double zmin, double zmax) const override;
    bool getAllWells(CoreList& cores) const override;
    bool getWellInfos(const std::string& name, std::string& infos) const override;
    bool getWellInfosAt(int i, int j, std::string& infos) const override;
    bool loadWell(const std::string& path) override;
    bool saveWell(const std::string& name, const std::string& path) override;

    // --- Persistence
    bool loadDomain(const std::string& path) override;
    bool saveDomain(const std::string& path) override;
    bool loadWells(const std::string& dir) override;
    bool saveWells(const std::string& dir) override;
    bool loadParams(const std::string& path) override;
    bool saveParams(const std::string& path) override;
    bool loadDynamicParams(const std::string& path) override;
    bool saveDynamicParams(const std::string& path) override;
    bool load(const std::string& dir) override;
    bool save(const std::string& dir) override;
    bool saveHistogram(const std::string& path, const CoreList& cores, double dz, int nz) override;
    bool saveAgeHorizon(const std::string& path, unsigned int age, int format,
                        const std::string& order) override;

    bool setUserClassList(UserClassList const& classes) override;

    // --- The run
    int init(bool force) override;
    bool clear() override;
    bool ready(bool warn) const override;
    int launch(unsigned int n) override;
    int run(unsigned int n) override;
    int runPiece(unsigned int n) override;
    int newSequence() override;
    int endSequence() override;
    int checkConsistency() override;
    const std::string& getLastMessage() const override { return _lastMessage; }

    // --- Reports
    void printParams() const override;
    void printWells() const override;
    std::string getInferenceStats() override;
    std::string getTauCutStats() const override;
    bool getVCollections(CoreList& cores, int imin, int imax, int jmin, int jmax, double zmin,
                         double zmax) const override;

    // The batch reader sits above the driver: whoever assembles the simulator
    // hands it the reader's launch (the factory of iSimulator does).
    using BatchLauncher = std::function<int(iSimulator&, std::string const&)>;
    void setBatchLauncher(BatchLauncher launcher) { _batchLauncher = std::move(launcher); }
    int launchBatch(std::string const& file) override;

    // --- Exports and inference
    bool saveSimuF2G(const std::string& path, double dz, bool facies, bool grain, bool age, double zmin,
                     double zmax, const std::string& order) override;
    bool getRegularBlock(double dz, double zmin, double zmax, RegularBlock& block) const override;
    bool getSlice(double z, std::vector<double>& values) const override;
    bool saveConditioningStats(const std::string& path) override;
    bool getVerticalProportions(double dz, FaciesProportions& curve) const override;
    bool getProportionMatrix(FaciesProportions& matrix) const override;
    bool getWellVerticalProportions(double dz, FaciesProportions& curve) const override;
    bool saveVerticalProportions(const std::string& path, double dz) override;
    bool saveProportionMatrix(const std::string& path) override;
    bool saveWellVerticalProportions(const std::string& path, double dz) override;
    bool applyNexus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) override;
    bool applyNeqsus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) override;
    bool nexusFromWells(const CoreList& cores, std::vector<double>& nexus, std::string& message) override;

    // --- Driver steps, not part of the door
    void allocate();
    void destroy();
    int prepareRun();
    int oneLoop();
    bool wantLocalAvulsion();
    bool wantRegionalAvulsion();
    bool canAvulse();
    bool canAggrade();
    bool overruleWells();
    bool zulReached();
    bool allWellsHonored() const;
    // Mean interval of the overbank events, 0 unless AG_TYPE is 2.
    unsigned int getObPeriod() const;
    double getObDistMean() const;
    void resetTimeProcessors();
    void resetDistGenerators();
    void clearTimeProcessors();
    void clearDistGenerators();
    void setWellConfig();
    // One line of the iteration statistics (research tier only).
    void dumpStats();

    // Read-only views for tests and the batch reader.
    Domain* domain() const { return _domain.get(); }
    const MassBalance* massBalance() const { return _massBalance.get(); }
    Network* network() const { return _network.get(); }
    Tracer* tracer() const { return _tracer.get(); }
    Parameters* parameters() const { return _parameters.get(); }
    const TimeProcess* overbankProcess() const { return _overbankProcess.get(); }
    const TimeProcess* localAvulsionProcess() const { return _localAvulsionProcess.get(); }
    const TimeProcess* regionalAvulsionProcess() const { return _regionalAvulsionProcess.get(); }
    const TimeProcess* epProcess() const { return _epProcess.get(); }
    const TimeProcess* statsProcess() const { return _statsProcess.get(); }
    const DistributionGenerator* overbankDistribution() const { return _overbankDistribution.get(); }
    const DistributionGenerator* channelScaleDistribution() const { return _channelScaleDistribution.get(); }
    const DistributionGenerator* epDistribution() const { return _epDistribution.get(); }
    double getOverbankDecayLength() const { return _overbankDecayLength; }
    // A sequence is open once newSequence has computed a positive overbank
    // decay length; clear() sets the length back to 0, which closes it.
    bool sequenceOpen() const { return _overbankDecayLength > 0.; }
    double getOverbankMaxGrain() const { return _overbankMaxGrain; }
    unsigned int getNextLocalAllowed() const { return _nextLocalAllowed; }
    unsigned int getNextRegionalAllowed() const { return _nextRegionalAllowed; }
    const std::vector<double>& getIsbxHistory() const { return _isbxHistory; }
    // Takes the channel samples behind the ISBX and the migration rate, and
    // records the ISBX; the loop does it every 100 iterations. Reading the
    // measures changes nothing, so how often they are read changes no value.
    void sampleChannelMeasures();

private:
    // The steps of one iteration, in the order oneLoop takes them.
    void tickClocks(unsigned int it, unsigned int age);
    void moveAndDeposit(int ag_type, unsigned int age);
    void forceAvulsions(int ag_type, unsigned int age, bool av_stats);
    void flood(int ag_type, unsigned int age);
    void clockedAvulsions(int ag_type, unsigned int age, bool av_stats);
    int stopTests();
    void prepareOverbank();
    void setupMassBalance();
    // Erodes the block down to the upper limit surface (warns when it cannot).
    void erodeToUpperLimit();
    // Counts the iterations in a row whose errors were all seen before
    // (`errors` and `known` taken before the iteration); true at the bound.
    bool failureRepeats(unsigned int errors, size_t known, unsigned int& repeats) const;
    std::string repeatedFailure() const;
    // The highest height of the upper limit above the topography, 0 when reached.
    double upperLimitGap() const;
    // How many iterations a run until a stop may take to reach the upper limit;
    // warns when the forecast aggradation cannot reach it.
    unsigned int upperLimitBound();
    // Runs `n` iterations, or when `until_stop`, at most what is left of the
    // sequence's bound to reach the upper limit.
    int runTurns(unsigned int n, bool until_stop);
    // The turns a run until a stop may still take in this sequence (the bound
    // is taken at its first piece).
    unsigned int turnsToLimit();
    std::string upperLimitMissed(unsigned int turns) const;
    // Stores the stop reason at info level.
    int stopAt(int status, const std::string& reason);
    void printout(const std::string& text) const;
    // Store the failure, trace it as an error and answer `result`.
    bool fail(const std::string& text, bool result) const;
    int fail(const std::string& text, int result) const;
    // Runs an action of the model's surfaces and maps, turning whatever it
    // throws into the failure "Simulator::<name> : <what it said>".
    template <typename Action> bool guardedAction(const std::string& name, Action action);
    // Reads a surface or map for the domain: GSLIB and plain ascii files, which
    // carry no geometry, are read on the domain's.
    bool readSurface(GridReal& grid, const std::string& path) const;
    TimeProcessParamType processParams(const std::string& type, const std::string& period,
                                       const std::string& poisson) const;
    DistGenParamType distParams(const std::string& prefix) const;
    void renewProcess(std::unique_ptr<TimeProcess>& process, const TimeProcessParamType& param,
                      bool& renewed);
    void renewDistribution(std::unique_ptr<DistributionGenerator>& generator, const DistGenParamType& param,
                           bool positive);
    bool openStatistics();
    void closeStatistics();
    int getInt(const std::string& name) const;
    double getDouble(const std::string& name) const;
    bool getBool(const std::string& name) const;
    void countAsIteration(bool flag);

    std::unique_ptr<Network> _network;
    std::unique_ptr<Domain> _domain;
    std::unique_ptr<Parameters> _parameters;
    std::unique_ptr<Tracer> _tracer;
    std::unique_ptr<SeedGenerator> _seedGenerator;
    std::unique_ptr<MeanderCalculator> _meanderCalculator;
    int _initialSeed;
    BatchLauncher _batchLauncher;
    bool _tectoActive = false;
    Topo _upperLimit;
    std::unique_ptr<UniformDistributionGenerator> _uniform;
    std::unique_ptr<TimeProcess> _overbankProcess;
    std::unique_ptr<TimeProcess> _localAvulsionProcess;
    std::unique_ptr<TimeProcess> _regionalAvulsionProcess;
    std::unique_ptr<DistributionGenerator> _overbankDistribution;
    std::unique_ptr<DistributionGenerator> _channelScaleDistribution;
    std::unique_ptr<TimeProcess> _statsProcess;
    std::unique_ptr<MassBalance> _massBalance;
    mutable std::string _lastMessage;
    std::vector<double> _isbxHistory;
    std::unique_ptr<TimeProcess> _epProcess;
    std::unique_ptr<DistributionGenerator> _epDistribution;
    double _currentEP = 0.;
    // Conditioning is in force while this map is not empty.
    std::map<std::string, Well*> _wells;
    UserClassList _userClasses;
    unsigned int _nextRegionalAllowed = 0;
    unsigned int _nextLocalAllowed = 0;
    bool _firstReset = true;
    // Also tells whether a sequence is open: read that through sequenceOpen().
    double _overbankDecayLength = 0.;
    // The bound of a run until a stop in this sequence (0 until its first
    // piece) and the iterations its pieces have run.
    unsigned int _limitBound = 0;
    unsigned int _limitTurns = 0;
    double _overbankMaxGrain = 0.;
    // The flattening surface the domain reads; empty when none is loaded.
    Topo _flattening;

    // -- wells --
public:
    // What the iteration loop asks the conditioning wells. Every well is asked
    // for avulsions, since each one keeps its own account; a block is decided
    // by the first well, in name order, that asks for it.
    bool wellsWantRegionalAvulsion() const;
    bool wellsWantLocalAvulsion() const;
    bool wellsBlockAvulsion() const;
    bool wellsBlockAggradation() const;
    // Every well has all its units honoured; true with no well.
    bool wellsHonored() const;
    // Hands the channel geometry and the main flow direction to every well.
    WellConfig wellConfig() const;
    // Gives every well to the channel when it holds none yet.
    void attachWellsToChannel();
    // False, with the reason in `message`, when wells are held under settings
    // in which they cannot steer.
    bool checkWells(std::string& message) const;

    // How well the simulated column at a well agrees with its log.
    struct WellStats
    {
        std::string name;
        double x = 0.;
        double y = 0.;
        int i = 0;
        int j = 0;
        unsigned int honored = 0;
        unsigned int units = 0;
        // Share of the log's height where the column has the log's facies; -1 when unknown.
        double faciesMatch = -1.;
    };
    std::vector<WellStats> getWellStats() const;
    const std::map<std::string, Well*>& wells() const { return _wells; }

private:
    // Puts a built well on its column (linked under the well already there),
    // hands it to the channel and names it in the map.
    bool registerWell(std::unique_ptr<Well> well, bool followColumn);
    // Removes one well, its linked wells staying on the column.
    void unregisterWell(Well* well);
    // Loads one vertical piece of a log as a well; the further pieces of a deviated log go to `others`.
    bool addOneWell(const Core& core, const std::string& name, int number, CoreList* others);
    bool wellCell(const Well& well, int& i, int& j) const;
    std::string wellInfos(const Well& well) const;

    // Deletes a well where its class is known.
    struct WellDeleter
    {
        void operator()(Well* well) const;
    };
    // The wells placed on columns; linked wells belong to their first well.
    std::vector<std::unique_ptr<Well, WellDeleter>> _wellStore;
    // -- end wells --

    // -- state --
private:
    // Writes every file of a snapshot into `dir`, which exists.
    bool writeSnapshot(const std::string& dir);
    // Reads a snapshot into the freshly initialised model; false at the first failure.
    bool readSnapshot(const std::string& dir);
    // Drops a half-loaded model and says so.
    bool abandonLoad(const std::string& dir);
    // The channel with the per-point state the next iterations depend on, at full precision.
    bool saveChannelState(const std::string& path);
    // Rebuilds the channel written by saveChannelState; other centerline files go
    // through replaceCenterline.
    bool restoreChannel(const std::string& path);
    bool saveDistributions(const std::string& dir);
    bool loadDistributions(const std::string& dir);
    // The maps at full precision over what their grid files gave back.
    bool restoreExactTecto(const std::string& path);
    bool restoreExactFlattening(const std::string& path);
    // The flattening of a block just read back, whose stacks it does not move.
    bool restoreFlattening(const std::string& dir);
    // The snapshot's erodibility map, when it says other than the block.
    bool restoreEMap(const std::string& path);

    // What the dynamic parameter file tells about the channel, for restoreChannel.
    bool _snapHasChannel = false;
    unsigned int _snapChannelBirth = 0;
    double _snapChannelWidth = 0.;
    // -- end state --

    // -- measures --
public:
    // One line of the iteration statistics, its values in the order of the
    // header (the header itself with `header`).
    std::string statsLine(bool header);
    // One line per channel point, upstream first; empty without a channel.
    std::string clStatsLine(bool header);
    // One line per grid node under the channel; empty without a channel.
    std::string grainsizeStatsLine(bool header);
    // Thickness of deposits of each facies family over the block, as a mean
    // over the nodes in metres (index = family).
    std::vector<double> familyThicknesses() const;

private:
    // Lateral range swept by the channel across each reach of one wavelength
    // since the last avulsion; the reaches are counted along the flow.
    typedef std::map<int, std::pair<double, double>> Belt;
    void sweepBelt();
    // Adds the channel's present positions to a belt.
    void sweep(Belt& belt) const;
    double isbxOf(const Belt& belt) const;
    // Channel position sample behind the migration rate.
    void sampleMigration();
    // Whether the channel is still the one the belt and the samples were taken on.
    bool sameChannelLife() const;
    // Plane positions (relative frame) of the channel points inside the grid.
    typedef std::vector<std::pair<double, double>> Positions;
    double measuredMigration(const Positions& before, unsigned int ageBefore) const;
    Positions channelPointsInDomain() const;

    Belt _belt;
    const void* _beltChannel = nullptr;
    unsigned int _beltBirth = 0;
    unsigned int _beltAvulsions = 0;
    unsigned int _beltAge = 0;
    Positions _migrationSample;
    unsigned int _migrationAge = 0;
    // 1e30 while no rate is measured.
    double _migrationRate = 1e30;
    // -- end measures --

    // -- previews --
public:
    void setImageWriter(iImageWriter* writer) override { _imageWriter = writer; }
    bool getRunSummary(RunSummary& summary) override;
    bool savePreviews(const std::string& dir, const std::vector<double>& slices) override;

private:
    iImageWriter* _imageWriter = nullptr;
    // -- end previews --
};
