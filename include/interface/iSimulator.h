#pragma once
// The kernel's one door: the desktop application, the batch reader and the
// project store reach the simulation only through this driver. It builds a
// model, runs it iteration by iteration, changes it between two sequences,
// saves and reloads it, and hands out read-only views of it.

#include "interface/RunSummary.h"

#include <string>
#include <vector>

class iDomain;
class iChannel;
class iParameters;
class iTracer;
class MeanderCalculator;
class Centerline;
class Point2D;
class GridReal;
class Topo;
class EMap;
class TectoMap;
class Well;
class Core;
class CoreList;
class UserClassList;
class FaciesProportions;
class iImageWriter;
class RegularBlock;

// Results of the run operations. Code 4 is produced by no operation.
constexpr int MP_STATUS_OK = 0;
// An exception was caught or a statistics file could not be opened; the last message tells.
constexpr int MP_STATUS_FAILURE = 1;
constexpr int MP_STATUS_OUT_OF_RANGE = 2;
// No domain, no network or no open sequence.
constexpr int MP_STATUS_NOT_READY = 3;
constexpr int MP_STATUS_CONSISTENCY_WARNING = 5;
constexpr int MP_STATUS_INCONSISTENT = 6;
constexpr int MP_STATUS_UPPER_LIMIT = 7;
constexpr int MP_STATUS_WELLS_HONORED = 8;
// The progress function answered false.
constexpr int MP_STATUS_USER_STOP = 9;

class iSimulator
{
public:
    // The factory; defined beside the concrete driver.
    static iSimulator* createSimulator();
    static void deleteSimulator(iSimulator* simulator);
    // A new simulator holding a copy of the whole state of `simulator`.
    static iSimulator* duplicateSimulator(iSimulator const* simulator);

    virtual ~iSimulator() {}
    virtual void printVersion() const = 0;

    // --- Measures. Proportions are fractions in [0, 1]; rates are metres per
    // 10000 iterations. 1e30 answers a measure that has no sample yet.
    // 2147483647 without an upper limit; zero or less once it is reached.
    virtual double getUpperLimitRatio() = 0;
    virtual double getForecastSand() = 0;
    virtual double getForecastAggradationRate() = 0;
    virtual double getForecastMigrationRate() = 0;
    virtual double getForecastMeanVelocityPerturbation() = 0;
    virtual double getPBProportion() = 0;
    virtual double getSandProportion() = 0;
    virtual double getAggradationRate() = 0;
    virtual double getMigrationRate() = 0;
    virtual double getMeanVelocityPerturbation() = 0;
    virtual double getSinuosity() = 0;
    virtual double getTortuosity() = 0;
    virtual double getWavelength() = 0;
    virtual double getSandBodyExtension() = 0;
    virtual double getIsbx() = 0;
    virtual double getMeanIsbx() = 0;
    virtual unsigned int getNbCutoff() = 0;
    virtual double getMeanNbCutoff() = 0;

    // --- Accessors. The views are null before `init`.
    virtual const iDomain* getDomain() const = 0;
    virtual iParameters* getParameters() const = 0;
    virtual MeanderCalculator* getMeanderCalculator() const = 0;
    virtual iTracer* getTracer() const = 0;
    virtual const iChannel* getChannel() const = 0;
    virtual double getCurrentEP() const = 0;
    virtual int getCurrentSeed() const = 0;
    virtual int getInitialSeed() const = 0;
    virtual unsigned int getAge() const = 0;
    virtual void setAge(unsigned int age) = 0;

    // --- Channel actions. With `flag` the action counts as one iteration.
    virtual bool replaceCenterlineFromFile(const std::string& path, bool flag) = 0;
    virtual bool replaceCenterline(const Centerline& centerline, bool flag) = 0;
    virtual bool replaceCenterlineFromPoint(const Point2D& point, bool flag) = 0;
    virtual bool saveCenterline(const std::string& path) = 0;
    virtual bool saveCenterlineDisc(const std::string& path) = 0;
    virtual bool getCenterline(Centerline& centerline) const = 0;
    virtual bool abandonChannel() = 0;

    // --- Surface actions; `mode` is a SurfMode, `facies` the filling family.
    virtual bool replaceTopoFromFile(const std::string& path, int mode, int facies, bool flag) = 0;
    virtual bool replaceTopo(const Topo& topo, int mode, int facies, bool flag) = 0;
    virtual bool replaceTopoFromCst(double value, int mode, int facies, bool flag) = 0;
    virtual bool replaceFacies(int facies, bool flag) = 0;
    virtual bool eraseFacies(double elevation, bool flag) = 0;
    virtual bool eraseFaciesFake(double elevation) = 0;
    // `format` is a GridFileFormat; `order` serves F2G only.
    virtual bool saveTopo(const std::string& path, int format, const std::string& order) = 0;
    // With an age other than 2147483647, the horizon of that age.
    virtual bool getTopo(Topo& topo, bool withWater, unsigned int age) const = 0;
    virtual bool saveExtraTopo(const std::string& path, int format, const std::string& order) = 0;

    // --- Erodibility map; a loaded map is converted by EROD_COEF and EROD_OFFSET.
    virtual bool loadEMapFromFile(const std::string& path, bool flag) = 0;
    virtual bool loadEMap(const EMap& map, bool flag) = 0;
    virtual bool loadEMapFromCst(double value, bool flag) = 0;
    virtual bool saveEMap(const std::string& path, int format, const std::string& order) = 0;
    virtual bool getEMap(EMap& map) const = 0;
    // A map marking the channel as erodible, its widths scaled by `ax` and `ay`.
    virtual bool saveEMapBuiltFromCenterline(const std::string& path, double ax, double ay, int format,
                                             const std::string& order) = 0;
    virtual bool getEMapBuiltFromCenterline(EMap& map, double ax, double ay) const = 0;

    // --- Upper limit; `type` becomes ZUL_TYPE.
    virtual bool loadUpperLimitFromFile(const std::string& path, int type) = 0;
    virtual bool loadUpperLimit(const Topo& topo, int type) = 0;
    virtual bool loadUpperLimitFromCst(double value, int type) = 0;
    virtual bool getUpperLimit(Topo& topo) const = 0;
    virtual void resetUpperLimit() = 0;

    // --- Tectonics.
    virtual bool loadTectoMapFromFile(const std::string& path) = 0;
    virtual bool loadTectoMap(const TectoMap& map) = 0;
    virtual void resetTectoMap() = 0;

    // --- Flattening surface.
    virtual bool loadFlatteningFromFile(const std::string& path) = 0;
    virtual bool loadFlattening(const Topo& topo) = 0;
    virtual bool getFlatteningMinMax(double& zmin, double& zmax) const = 0;
    virtual void resetFlattening() = 0;

    // --- Conditioning wells. An empty name lets the file name the well; the
    // trajectory serves deviated logs only.
    virtual bool addWellFromFile(const std::string& path, const std::string& trajectory,
                                 const std::string& name) = 0;
    virtual bool addWell(const Core& core, const std::string& name) = 0;
    virtual bool deleteWell(const std::string& name) = 0;
    // The log of column (i, j), cut to [zmin, zmax] (1e30 keeps that end).
    virtual bool extractWell(int i, int j, Core& core, double zmin, double zmax) const = 0;
    // The same at a geographic location.
    virtual bool extractWellAt(const Point2D& location, Core& core, double zmin, double zmax) const = 0;
    // The logs of all conditioning wells, in the order of their names.
    virtual bool getAllWells(CoreList& cores) const = 0;
    virtual bool getWellInfos(const std::string& name, std::string& infos) const = 0;
    virtual bool getWellInfosAt(int i, int j, std::string& infos) const = 0;
    virtual bool loadWell(const std::string& path) = 0;
    virtual bool saveWell(const std::string& name, const std::string& path) = 0;

    // --- Persistence: the block, the wells, the registry, the clocks and the
    // whole snapshot directory.
    virtual bool loadDomain(const std::string& path) = 0;
    virtual bool saveDomain(const std::string& path) = 0;
    virtual bool loadWells(const std::string& dir) = 0;
    virtual bool saveWells(const std::string& dir) = 0;
    virtual bool loadParams(const std::string& path) = 0;
    virtual bool saveParams(const std::string& path) = 0;
    virtual bool loadDynamicParams(const std::string& path) = 0;
    virtual bool saveDynamicParams(const std::string& path) = 0;
    virtual bool load(const std::string& dir) = 0;
    virtual bool save(const std::string& dir) = 0;
    // Facies by height of `cores`, `nz` steps of `dz`.
    virtual bool saveHistogram(const std::string& path, const CoreList& cores, double dz, int nz) = 0;
    virtual bool saveAgeHorizon(const std::string& path, unsigned int age, int format,
                                const std::string& order) = 0;

    // The classes that translate log values of wells into facies.
    virtual bool setUserClassList(UserClassList const& classes) = 0;

    // --- The run. `init`, `clear` and the run operations catch everything and
    // answer a status (or false) with the reason in the last message.
    virtual int init(bool force) = 0;
    virtual bool clear() = 0;
    virtual bool ready(bool warn) const = 0;
    virtual int launch(unsigned int n) = 0;
    virtual int run(unsigned int n) = 0;
    // Runs at most `n` iterations of a run until a stop made of pieces (the
    // batch's LAUNCH_IT = -1 with F2G_IT): the give-up bound of a run to an
    // upper limit counts the iterations of all the pieces since `newSequence`.
    virtual int runPiece(unsigned int n) { return run(n); }
    virtual int newSequence() = 0;
    virtual int endSequence() = 0;
    virtual int checkConsistency() = 0;
    virtual const std::string& getLastMessage() const = 0;

    // --- Reports.
    virtual void printParams() const = 0;
    virtual void printWells() const = 0;
    virtual std::string getInferenceStats() = 0;
    virtual std::string getTauCutStats() const = 0;
    // One log per column of the range, cut to [zmin, zmax].
    virtual bool getVCollections(CoreList& cores, int imin, int imax, int jmin, int jmax, double zmin,
                                 double zmax) const = 0;

    // Reads and runs a whole batch file; 1 when it cannot be read.
    virtual int launchBatch(std::string const& file) = 0;

    // --- Exports and inference driven by the batch file.
    // The block sampled every `dz` between zmin and zmax (1e30 for the
    // block's own), written as F2G with the chosen variables.
    virtual bool saveSimuF2G(const std::string& path, double dz, bool facies, bool grain, bool age,
                             double zmin, double zmax, const std::string& order) = 0;
    // The same sampling as `saveSimuF2G` over the whole domain, for the other
    // exporters and the scripting bridge.
    virtual bool getRegularBlock(double dz, double zmin, double zmax, RegularBlock& block) const = 0;
    // The facies family of every node at geographic elevation z, i fastest,
    // 1e30 where nothing was deposited.
    virtual bool getSlice(double z, std::vector<double>& values) const = 0;
    virtual bool saveConditioningStats(const std::string& path) = 0;
    // Shares of the facies families: the block's vertical proportion curve by
    // slices of dz, its proportion matrix node by node, and the vertical
    // proportion curve of the conditioning wells' logs. False with the reason
    // in the last message.
    virtual bool getVerticalProportions(double dz, FaciesProportions& curve) const = 0;
    virtual bool getProportionMatrix(FaciesProportions& matrix) const = 0;
    virtual bool getWellVerticalProportions(double dz, FaciesProportions& curve) const = 0;
    virtual bool saveVerticalProportions(const std::string& path, double dz) = 0;
    virtual bool saveProportionMatrix(const std::string& path) = 0;
    virtual bool saveWellVerticalProportions(const std::string& path, double dz) = 0;
    // Non-expert inference from channel maximum depth, sand bodies extension
    // index and net to gross (1e30 where not given); `adaptGrid` lets it
    // resize the grid. False with the reason in `message`.
    virtual bool applyNexus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) = 0;
    virtual bool applyNeqsus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) = 0;
    // The three inputs of the inference, derived from logs.
    virtual bool nexusFromWells(const CoreList& cores, std::vector<double>& nexus, std::string& message) = 0;
    // -- previews --
    // The writer that turns rendered previews into files; not owned, may be null.
    virtual void setImageWriter(iImageWriter* writer) = 0;
    // Writes into `dir` (made when missing) "top.png", one "slice_<z>.png" per
    // elevation of `slices`, "section_x.png" and "section_y.png"; false with the
    // reason in the last message.
    virtual bool savePreviews(const std::string& dir, const std::vector<double>& slices) = 0;
    // -- end previews --
    // -- run summary --
    // The counts of the run so far; false, leaving `summary` as it was, before `init`.
    virtual bool getRunSummary(RunSummary& summary) = 0;
    // -- end run summary --
};
