#include "kernel/driver/Simulator.h"

#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using testing_support::lines_of;
using testing_support::read_file;
using testing_support::silent;
using testing_support::TempDir;

namespace
{

std::vector<std::string> fields_of(const std::string& line)
{
    std::vector<std::string> fields;
    std::string::size_type start = 0;
    for (;;)
    {
        const std::string::size_type end = line.find(';', start);
        fields.push_back(line.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos)
            return fields;
        start = end + 1;
    }
}

double value_of(const std::vector<std::string>& header, const std::vector<std::string>& fields,
                const std::string& column)
{
    for (size_t k = 0; k < header.size() && k < fields.size(); ++k)
        if (header[k] == column)
            return std::strtod(fields[k].c_str(), nullptr);
    ADD_FAILURE() << "no column " << column;
    return 0.;
}

struct StatsRun
{
    std::string stats;
    std::string centerline;
    std::string grainsize;
    std::unique_ptr<Simulator> sim;
};

// A small fluvial run writing every kind of statistics every `interval` iterations.
StatsRun run_with_statistics(const TempDir& dir, bool proportions, int tier, unsigned int interval = 10)
{
    StatsRun run;
    run.sim = std::make_unique<Simulator>();
    Simulator& sim = *run.sim;
    sim.getParameters()->setUsingDistrib(tier);
    iTracer* tracer = sim.getTracer();
    tracer->setTraceFunction(silent);
    run.stats = dir.file(proportions ? "props.csv" : "stats.csv");
    run.centerline = dir.file("cl.csv");
    run.grainsize = dir.file("gr.csv");
    tracer->setGenerateStatsIteration(true);
    tracer->setGenerateStatsProps(proportions);
    tracer->setGenerateCenterlineStats(true);
    tracer->setGenerateGrainsizeStats(true);
    tracer->setStatsFile(run.stats);
    tracer->setCenterlineStatsFile(run.centerline);
    tracer->setGrainsizeStatsFile(run.grainsize);
    tracer->setStatsInterval(interval);
    iParameters* p = sim.getParameters();
    p->setParamInt("DOMAIN_NX", 100);
    p->setParamInt("DOMAIN_NY", 80);
    // Migration, cutoffs and floods only: the lines do not depend on the avulsion events.
    p->setParamInt("AV_LOC_FREQ", 0);
    p->setParamInt("AV_REG_FREQ", 0);
    EXPECT_EQ(sim.init(false), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.newSequence(), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.run(60), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.endSequence(), 0);
    return run;
}

// Every line has the header's number of columns, and the values are numbers.
void expect_well_formed(const std::string& path, const std::string& header, size_t min_lines)
{
    const std::vector<std::string> lines = lines_of(read_file(path));
    ASSERT_GE(lines.size(), min_lines + 1) << path;
    EXPECT_EQ(lines[0], header);
    const size_t columns = fields_of(header).size();
    for (size_t k = 1; k < lines.size(); ++k)
    {
        const std::vector<std::string> fields = fields_of(lines[k]);
        ASSERT_EQ(fields.size(), columns) << path << " line " << k << ": " << lines[k];
        for (const std::string& field : fields)
        {
            char* end = nullptr;
            std::strtod(field.c_str(), &end);
            EXPECT_TRUE(!field.empty() && *end == '\0') << path << " line " << k << ": '" << field << "'";
        }
    }
}

} // namespace

TEST(Statistics, EveryFileHasItsHeadersColumnsOnEveryLine)
{
    TempDir dir;
    for (bool proportions : {false, true})
    {
        StatsRun run = run_with_statistics(dir, proportions, 2);
        const std::string header = Tracer::statsHeader(proportions);
        EXPECT_EQ(fields_of(header).size(), proportions ? 50u : 38u);
        EXPECT_EQ(run.sim->statsLine(true), header);
        // One line every ten iterations.
        expect_well_formed(run.stats, header, 6);
        EXPECT_EQ(lines_of(read_file(run.stats)).size(), 7u);
        expect_well_formed(run.centerline, Tracer::centerlineStatsHeader(), 6);
        expect_well_formed(run.grainsize, Tracer::grainsizeStatsHeader(), 6);
    }
}

TEST(Statistics, ColumnsHoldTheMeasuresTheyName)
{
    TempDir dir;
    StatsRun run = run_with_statistics(dir, true, 2);
    Simulator& sim = *run.sim;
    const std::vector<std::string> lines = lines_of(read_file(run.stats));
    const std::vector<std::string> header = fields_of(lines[0]);
    const std::vector<std::string> last = fields_of(lines.back());
    auto value = [&](const std::string& column) { return value_of(header, last, column); };

    // The last line is written at the last iteration: the state measured now.
    EXPECT_EQ(value("Time"), 60.);
    EXPECT_NEAR(value("Abstract_Time"), 60. * 4e-08 * 0.001, 1e-15);
    EXPECT_NEAR(value("Obsv_Sand_prop"), sim.getSandProportion(), 1e-5);
    EXPECT_NEAR(value("Obsv_PB_prop"), sim.getPBProportion(), 1e-5);
    EXPECT_NEAR(value("Obsv_Aggrad_rate"), sim.getAggradationRate(), 1e-4 * sim.getAggradationRate());
    EXPECT_NEAR(value("Obsv_Sinuo"), sim.getSinuosity(), 1e-5);
    EXPECT_NEAR(value("Obsv_Wavelength"), sim.getWavelength(), 1e-3);
    EXPECT_NEAR(value("Obsv_sb_ext_on_wl"), sim.getSandBodyExtension() / 375., 1e-5);
    EXPECT_NEAR(value("Obsv_sb_ext_on_obsv_wl"), sim.getSandBodyExtension() / sim.getWavelength(), 1e-5);
    EXPECT_NEAR(value("Obsv_Mean_vp"), sim.getMeanVelocityPerturbation(), 1e-5);
    EXPECT_EQ(value("Obsv_Nb_cutoff"), static_cast<double>(sim.getNbCutoff()));
    EXPECT_EQ(value("Pred_Max_depth"), 3.);
    EXPECT_EQ(value("Pred_Wavelength"), 375.);
    MeanderCalculator* mc = sim.getMeanderCalculator();
    EXPECT_NEAR(value("Pred_Sand_prop"), mc->forecast_sand_proportion(), 1e-5);
    EXPECT_NEAR(value("Pred_Mig_rate"), mc->forecast_migration_rate(), 1e-3);
    EXPECT_EQ(value("Pred_Kmig"), MeanderCalculator::kmig_fitted());
    // The observed coefficient is the measure over the base its forecast multiplies.
    EXPECT_NEAR(value("Obsv_Kvp"), sim.getMeanVelocityPerturbation() / mc->velocity_perturbation_base(),
                1e-5);

    // The proportions of the families and of the point bars add up to the whole deposit.
    double sum = value("Obsv_PB_prop");
    for (const char* column :
         {"Obsv_CL_prop", "Obsv_SP_prop", "Obsv_CSI_prop", "Obsv_CCH_prop", "Obsv_CSII_prop", "Obsv_LV_prop",
          "Obsv_OB_prop", "Obsv_MP_prop", "Obsv_HP_prop", "Obsv_WL_prop", "Obsv_DR_prop", "Obsv_PL_prop"})
        sum += value(column);
    EXPECT_NEAR(sum, 1., 1e-4);

    // The centerline file: one line per channel point at each dump, the age first.
    const std::vector<std::string> cl = lines_of(read_file(run.centerline));
    const std::vector<std::string> points = lines_of(sim.clStatsLine(false));
    ASSERT_FALSE(points.empty());
    EXPECT_EQ(cl.back(), points.back());
    EXPECT_EQ(fields_of(cl.back())[0], "60");
}

namespace
{

// Which statistics a run writes; all off is the run the others must match.
struct StatsSwitches
{
    const char* name;
    bool iteration;
    bool avulsion;
    bool proportions;
    bool centerline;
    bool grainsize;
    unsigned int interval;
};

// The same seed with avulsions, so that lines are also written before them;
// returns the dump of the block after 120 iterations.
std::string block_after_run(const TempDir& dir, const StatsSwitches& s)
{
    Simulator sim;
    sim.getParameters()->setUsingDistrib(2);
    iTracer* tracer = sim.getTracer();
    tracer->setTraceFunction(silent);
    tracer->setGenerateStatsIteration(s.iteration);
    tracer->setGenerateStatsAvulsion(s.avulsion);
    tracer->setGenerateStatsProps(s.proportions);
    tracer->setGenerateCenterlineStats(s.centerline);
    tracer->setGenerateGrainsizeStats(s.grainsize);
    tracer->setStatsFile(dir.file(std::string(s.name) + ".csv"));
    tracer->setCenterlineStatsFile(dir.file(std::string(s.name) + "_cl.csv"));
    tracer->setGrainsizeStatsFile(dir.file(std::string(s.name) + "_gr.csv"));
    tracer->setStatsInterval(s.interval);
    iParameters* p = sim.getParameters();
    p->setParamInt("DOMAIN_NX", 100);
    p->setParamInt("DOMAIN_NY", 80);
    p->setParamInt("SIM_SEED", 20240611);
    p->setParamInt("AV_LOC_FREQ", 1);
    p->setParamInt("AV_LOC_PERIOD", 35);
    p->setParamInt("AV_REG_FREQ", 1);
    p->setParamInt("AV_REG_PERIOD", 50);
    EXPECT_EQ(sim.init(false), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.newSequence(), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.run(120), 0) << sim.getLastMessage();
    EXPECT_EQ(sim.endSequence(), 0);
    const std::string block = dir.file(std::string(s.name) + ".dump");
    EXPECT_TRUE(sim.saveDomain(block));
    return read_file(block);
}

} // namespace

// Statistics only read the model: asking for them never gives another realisation.
TEST(Statistics, WritingThemLeavesTheBlockOfTheSeedUnchanged)
{
    const StatsSwitches cases[] = {
        {"every_10", true, false, false, false, false, 10},
        {"every_iteration", true, false, false, false, false, 1},
        {"proportions", true, false, true, false, false, 10},
        {"centerline", true, false, false, true, false, 10},
        {"grainsize", true, false, false, false, true, 10},
        {"avulsions", false, true, true, true, false, 10},
    };
    TempDir dir;
    const std::string without = block_after_run(dir, {"none", false, false, false, false, false, 10});
    ASSERT_FALSE(without.empty());
    for (const StatsSwitches& s : cases)
    {
        EXPECT_TRUE(block_after_run(dir, s) == without)
            << s.name << ": another block than without statistics";
        EXPECT_GE(lines_of(read_file(dir.file(std::string(s.name) + ".csv"))).size(), 2u)
            << s.name << ": no statistics line was written";
    }
}

TEST(Statistics, OnlyTheResearchTierWritesLines)
{
    TempDir dir;
    StatsRun run = run_with_statistics(dir, false, 1);
    // The header is written at init, and nothing after it.
    EXPECT_EQ(lines_of(read_file(run.stats)).size(), 1u);
}

TEST(Statistics, NoModelNoLine)
{
    Simulator sim;
    sim.getTracer()->setTraceFunction(silent);
    EXPECT_EQ(sim.statsLine(false), "");
    EXPECT_EQ(sim.clStatsLine(false), "");
    EXPECT_EQ(sim.grainsizeStatsLine(false), "");
    EXPECT_EQ(sim.grainsizeStatsLine(true), Tracer::grainsizeStatsHeader());
}
