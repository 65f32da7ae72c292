#pragma once
// A simulator door that records every call made through it and answers as
// told, on a real tracer and a real parameter registry. Batch and interface
// tests drive it instead of a whole simulation.

#include "TestSupport.h"
#include "interface/iDomain.h"
#include "interface/iSimulator.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/Topo.h"
#include "kernel/files/UserClassList.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/parameters/Parameters.h"

#include <algorithm>
#include <climits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace testing_support
{

class FakeDomain : public iDomain
{
public:
    FakeDomain() : _grid(10., 10., 5, 4, 0., 0.) {}
    const GridParams& getGridParams() const override { return _grid; }
    int getMarginX() const override { return 0; }
    int getMarginY() const override { return 0; }
    double getFlowAngle() const override { return 0.; }
    double getSlope() const override { return 0.; }
    double getZref() const override { return 0.; }
    double getTopoRel(int, int, bool) const override { return 0.; }
    double getTopoGeo(int, int, bool) const override { return 0.; }
    double getWaterDepth(int, int) const override { return 0.; }
    double getErodibility(int, int) const override { return 0.; }
    double getUpperLimitGeo(int, int) const override { return MP_UNDEF_REAL; }
    double get_topo_extrapolated(bool, bool, int, int, int, int, bool) const override { return 0.; }
    std::vector<DepositUnit> getStack(int, int) const override { return {}; }
    bool getSliceInfo(int, int, double, unsigned char&, unsigned int&) const override { return false; }
    double min_elevation_rel() const override { return 0.; }
    double max_elevation_rel() const override { return 1.; }
    void min_and_max_elevation_rel(double& zmin, double& zmax) const override { zmin = 0., zmax = 1.; }
    void min_and_max_elevation_geo(double& zmin, double& zmax) const override { zmin = 0., zmax = 1.; }
    double mean_topo_geo(bool) const override { return 12.5; }
    unsigned int oldest_age() const override { return 0; }

private:
    GridParams _grid;
};

class FakeSimulator : public iSimulator
{
public:
    // Tier: 0 Free, 1 Premium, 2 Research.
    explicit FakeSimulator(int tier = 2) : _parameters(&_tracer)
    {
        clear_trace();
        _tracer.setTraceFunction(capture);
        _parameters.setUsingDistrib(tier);
    }

    // --- What the test sets
    // Operations named here answer false (or status 1).
    std::set<std::string> failing;
    // Status answered by the run operations, by name ("init", "checkConsistency", ...).
    std::map<std::string, int> statuses;
    // run stops with 7 when the age reaches this value.
    unsigned int limitAge = UINT_MAX;
    size_t sliceSize = 20;

    // --- What the test reads
    mutable std::vector<std::string> calls;
    std::vector<double> nexusGiven;
    bool isReady = false;

    Tracer& tracer() { return _tracer; }
    Parameters& parameters() { return _parameters; }
    // Names of the calls, in order, without their arguments.
    std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (const std::string& call : calls)
            result.push_back(call.substr(0, call.find('(')));
        return result;
    }
    bool called(const std::string& prefix) const
    {
        return std::any_of(calls.begin(), calls.end(),
                           [&prefix](const std::string& call) { return call.rfind(prefix, 0) == 0; });
    }

    // --- The door
    void printVersion() const override {}
    double getUpperLimitRatio() override { return 1.; }
    double getForecastSand() override { return 0.25; }
    double getForecastAggradationRate() override { return 1.5; }
    double getForecastMigrationRate() override { return 2.5; }
    double getForecastMeanVelocityPerturbation() override { return 0.; }
    double getPBProportion() override { return 0.; }
    double getSandProportion() override { return 0.5; }
    double getAggradationRate() override { return 3.; }
    double getMigrationRate() override { return 0.; }
    double getMeanVelocityPerturbation() override { return 0.; }
    double getSinuosity() override { return 1.; }
    double getTortuosity() override { return 1.; }
    double getWavelength() override { return 0.; }
    double getSandBodyExtension() override { return 0.; }
    double getIsbx() override { return 0.; }
    double getMeanIsbx() override { return MP_UNDEF_REAL; }
    unsigned int getNbCutoff() override { return 0; }
    double getMeanNbCutoff() override { return 0.; }

    const iDomain* getDomain() const override { return isReady ? &_domain : nullptr; }
    iParameters* getParameters() const override { return &_parameters; }
    MeanderCalculator* getMeanderCalculator() const override { return nullptr; }
    iTracer* getTracer() const override { return &_tracer; }
    const iChannel* getChannel() const override { return nullptr; }
    double getCurrentEP() const override { return 0.; }
    int getCurrentSeed() const override { return 0; }
    int getInitialSeed() const override { return 0; }
    unsigned int getAge() const override { return _age; }
    void setAge(unsigned int age) override { _age = age; }

    bool replaceCenterlineFromFile(const std::string& path, bool flag) override
    {
        return record("replaceCenterlineFromFile", path, flag);
    }
    bool replaceCenterline(const Centerline&, bool flag) override
    {
        return record("replaceCenterline", "", flag);
    }
    bool replaceCenterlineFromPoint(const Point2D& point, bool flag) override
    {
        return record("replaceCenterlineFromPoint", point.debug(), flag);
    }
    bool saveCenterline(const std::string& path) override { return record("saveCenterline", path); }
    bool saveCenterlineDisc(const std::string& path) override { return record("saveCenterlineDisc", path); }
    bool getCenterline(Centerline&) const override { return false; }
    bool abandonChannel() override { return record("abandonChannel", ""); }

    bool replaceTopoFromFile(const std::string& path, int mode, int facies, bool flag) override
    {
        return record("replaceTopoFromFile", path + "," + std::to_string(mode) + "," + std::to_string(facies),
                      flag);
    }
    bool replaceTopo(const Topo& topo, int mode, int facies, bool flag) override
    {
        return record("replaceTopo",
                      num(topo.get_mean()) + "," + std::to_string(mode) + "," + std::to_string(facies), flag);
    }
    bool replaceTopoFromCst(double value, int mode, int facies, bool flag) override
    {
        return record("replaceTopoFromCst",
                      num(value) + "," + std::to_string(mode) + "," + std::to_string(facies), flag);
    }
    bool replaceFacies(int facies, bool flag) override
    {
        return record("replaceFacies", std::to_string(facies), flag);
    }
    bool eraseFacies(double elevation, bool flag) override
    {
        return record("eraseFacies", num(elevation), flag);
    }
    bool eraseFaciesFake(double elevation) override { return record("eraseFaciesFake", num(elevation)); }
    bool saveTopo(const std::string& path, int format, const std::string& order) override
    {
        return record("saveTopo", path + "," + std::to_string(format) + "," + order);
    }
    bool getTopo(Topo&, bool, unsigned int) const override { return false; }
    bool saveExtraTopo(const std::string& path, int, const std::string&) override
    {
        return record("saveExtraTopo", path);
    }

    bool loadEMapFromFile(const std::string& path, bool flag) override
    {
        return record("loadEMapFromFile", path, flag);
    }
    bool loadEMap(const EMap&, bool flag) override
    {
        return record("loadEMap", num(_parameters.getParamDouble("EROD_OFFSET")), flag);
    }
    bool loadEMapFromCst(double value, bool flag) override
    {
        return record("loadEMapFromCst", num(value), flag);
    }
    bool saveEMap(const std::string& path, int, const std::string&) override
    {
        return record("saveEMap", path);
    }
    bool getEMap(EMap&) const override { return false; }
    bool saveEMapBuiltFromCenterline(const std::string& path, double, double, int,
                                     const std::string&) override
    {
        return record("saveEMapBuiltFromCenterline", path);
    }
    bool getEMapBuiltFromCenterline(EMap&, double, double) const override { return false; }

    bool loadUpperLimitFromFile(const std::string& path, int type) override
    {
        return record("loadUpperLimitFromFile", path + "," + std::to_string(type));
    }
    bool loadUpperLimit(const Topo& topo, int type) override
    {
        return record("loadUpperLimit", num(topo.get_mean()) + "," + std::to_string(type));
    }
    bool loadUpperLimitFromCst(double value, int type) override
    {
        return record("loadUpperLimitFromCst", num(value) + "," + std::to_string(type));
    }
    bool getUpperLimit(Topo&) const override { return false; }
    void resetUpperLimit() override { calls.push_back("resetUpperLimit()"); }

    bool loadTectoMapFromFile(const std::string& path) override
    {
        return record("loadTectoMapFromFile", path);
    }
    bool loadTectoMap(const TectoMap&) override { return record("loadTectoMap", ""); }
    void resetTectoMap() override { calls.push_back("resetTectoMap()"); }

    bool loadFlatteningFromFile(const std::string& path) override
    {
        return record("loadFlatteningFromFile", path);
    }
    bool loadFlattening(const Topo& topo) override { return record("loadFlattening", num(topo.get_mean())); }
    bool getFlatteningMinMax(double&, double&) const override { return false; }
    void resetFlattening() override { calls.push_back("resetFlattening()"); }

    bool addWellFromFile(const std::string& path, const std::string& trajectory,
                         const std::string& name) override
    {
        if (!record("addWellFromFile", path + "," + trajectory + "," + name))
            return false;
        _wells.push_back(name);
        return true;
    }
    bool addWell(const Core&, const std::string& name) override { return record("addWell", name); }
    bool deleteWell(const std::string& name) override { return record("deleteWell", name); }
    bool extractWell(int i, int j, Core& core, double zmin, double zmax) const override
    {
        calls.push_back("extractWell(" + std::to_string(i) + "," + std::to_string(j) + "," + num(zmin) + "," +
                        num(zmax) + ")");
        if (failing.count("extractWell"))
            return false;
        core.clear();
        core.set_top_location(Point2D(10. * i, 10. * j));
        core.set_top_elevation(10.);
        core.add(2, 4.);
        core.add(8, 6.);
        return true;
    }
    bool extractWellAt(const Point2D&, Core&, double, double) const override { return false; }
    bool getAllWells(CoreList& cores) const override
    {
        calls.push_back("getAllWells()");
        cores.clear();
        for (size_t k = 0; k < _wells.size(); ++k)
            cores.add(Core(_wells[k]));
        return !failing.count("getAllWells");
    }
    bool getWellInfos(const std::string&, std::string&) const override { return false; }
    bool getWellInfosAt(int, int, std::string&) const override { return false; }
    bool loadWell(const std::string& path) override { return record("loadWell", path); }
    bool saveWell(const std::string& name, const std::string& path) override
    {
        return record("saveWell", name + "," + path);
    }

    bool loadDomain(const std::string& path) override { return record("loadDomain", path); }
    bool saveDomain(const std::string& path) override { return record("saveDomain", path); }
    bool loadWells(const std::string& dir) override { return record("loadWells", dir); }
    bool saveWells(const std::string& dir) override { return record("saveWells", dir); }
    bool loadParams(const std::string& path) override { return record("loadParams", path); }
    bool saveParams(const std::string& path) override { return record("saveParams", path); }
    bool loadDynamicParams(const std::string& path) override { return record("loadDynamicParams", path); }
    bool saveDynamicParams(const std::string& path) override { return record("saveDynamicParams", path); }
    bool load(const std::string& dir) override { return record("load", dir); }
    bool save(const std::string& dir) override { return record("save", dir); }
    bool saveHistogram(const std::string& path, const CoreList& cores, double dz, int nz) override
    {
        return record("saveHistogram",
                      path + "," + std::to_string(cores.size()) + "," + num(dz) + "," + std::to_string(nz));
    }
    bool saveAgeHorizon(const std::string& path, unsigned int, int, const std::string&) override
    {
        return record("saveAgeHorizon", path);
    }
    bool setUserClassList(UserClassList const& classes) override
    {
        return record("setUserClassList",
                      std::to_string(classes.getType()) + "," + std::to_string(classes.size()));
    }

    int init(bool force) override
    {
        calls.push_back(std::string("init(") + (force ? "1" : "0") + ")");
        const int status = answer("init");
        isReady = status == MP_STATUS_OK;
        return status;
    }
    bool clear() override { return record("clear", ""); }
    bool ready(bool) const override { return isReady; }
    int launch(unsigned int n) override
    {
        calls.push_back("launch(" + std::to_string(n) + ")");
        return answer("launch");
    }
    int run(unsigned int n) override
    {
        calls.push_back("run(" + std::to_string(n) + ")");
        const int status = answer("run");
        if (status != MP_STATUS_OK)
            return status;
        if (static_cast<unsigned long long>(_age) + n >= limitAge)
        {
            _age = limitAge;
            return MP_STATUS_UPPER_LIMIT;
        }
        _age += n;
        return MP_STATUS_OK;
    }
    int newSequence() override
    {
        calls.push_back("newSequence()");
        return answer("newSequence");
    }
    int endSequence() override
    {
        calls.push_back("endSequence()");
        return answer("endSequence");
    }
    int checkConsistency() override
    {
        calls.push_back("checkConsistency()");
        const int status = answer("checkConsistency");
        _lastMessage = status ? "Some parameters are out of the usual range of values:\n- width" : "";
        return status;
    }
    const std::string& getLastMessage() const override { return _lastMessage; }

    void printParams() const override {}
    void printWells() const override {}
    std::string getInferenceStats() override { return ""; }
    std::string getTauCutStats() const override { return ""; }
    bool getVCollections(CoreList&, int, int, int, int, double, double) const override { return false; }
    int launchBatch(std::string const&) override { return 1; }

    bool saveSimuF2G(const std::string& path, double dz, bool facies, bool grain, bool age, double zmin,
                     double zmax, const std::string& order) override
    {
        return record("saveSimuF2G", path + "," + num(dz) + "," + (facies ? "F" : "-") + (grain ? "G" : "-") +
                                         (age ? "A" : "-") + "," + num(zmin) + "," + num(zmax) + "," + order);
    }
    bool getRegularBlock(double dz, double, double, RegularBlock&) const override
    {
        calls.push_back("getRegularBlock(" + num(dz) + ")");
        return false;
    }
    bool getSlice(double z, std::vector<double>& values) const override
    {
        calls.push_back("getSlice(" + num(z) + ")");
        values.assign(sliceSize, 3.);
        return !failing.count("getSlice");
    }
    bool saveConditioningStats(const std::string& path) override
    {
        return record("saveConditioningStats", path);
    }
    bool getVerticalProportions(double, FaciesProportions&) const override { return false; }
    bool getProportionMatrix(FaciesProportions&) const override { return false; }
    bool getWellVerticalProportions(double, FaciesProportions&) const override { return false; }
    bool saveVerticalProportions(const std::string& path, double dz) override
    {
        return record("saveVerticalProportions", path + "," + num(dz));
    }
    bool saveProportionMatrix(const std::string& path) override
    {
        return record("saveProportionMatrix", path);
    }
    bool saveWellVerticalProportions(const std::string& path, double dz) override
    {
        return record("saveWellVerticalProportions", path + "," + num(dz));
    }
    bool applyNexus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) override
    {
        nexusGiven = nexus;
        message = "Following parameters are out of range:\n- Net to gross (2)";
        return record("applyNexus", adaptGrid ? "grid" : "");
    }
    bool applyNeqsus(const std::vector<double>& nexus, bool adaptGrid, std::string& message) override
    {
        nexusGiven = nexus;
        message = "Following parameters are out of range:\n- Net to gross (2)";
        return record("applyNeqsus", adaptGrid ? "grid" : "");
    }
    void setImageWriter(iImageWriter*) override { calls.push_back("setImageWriter()"); }
    bool savePreviews(const std::string& dir, const std::vector<double>& slices) override
    {
        std::string heights;
        for (double z : slices)
            heights += (heights.empty() ? "" : ";") + num(z);
        return record("savePreviews", dir + "," + heights);
    }
    bool getRunSummary(RunSummary&) override { return record("getRunSummary", ""); }
    bool nexusFromWells(const CoreList& cores, std::vector<double>& nexus, std::string& message) override
    {
        nexus = {2.5, 3., 0.4};
        message = "no sand in wells";
        return record("nexusFromWells", std::to_string(cores.size()));
    }

private:
    static std::string num(double value)
    {
        std::ostringstream out;
        out << value;
        return out.str();
    }
    bool record(const std::string& name, const std::string& arguments) const
    {
        calls.push_back(name + "(" + arguments + ")");
        return !failing.count(name);
    }
    bool record(const std::string& name, const std::string& arguments, bool flag) const
    {
        return record(name, arguments + (arguments.empty() ? "" : ",") + (flag ? "1" : "0"));
    }
    int answer(const std::string& name) const
    {
        if (failing.count(name))
            return MP_STATUS_FAILURE;
        const auto found = statuses.find(name);
        return found == statuses.end() ? MP_STATUS_OK : found->second;
    }

    mutable Tracer _tracer;
    mutable Parameters _parameters;
    FakeDomain _domain;
    unsigned int _age = 0;
    std::string _lastMessage;
    std::vector<std::string> _wells;
};

} // namespace testing_support
