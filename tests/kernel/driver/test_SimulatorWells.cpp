#include "kernel/driver/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/UserClassList.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/wells/Well.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using testing_support::capture;
using testing_support::contains;
using testing_support::g_trace;

using testing_support::TempDir;

// A small fluvial domain of 40 x 30 nodes of 10 m whose origin is at (1000, 2000).
std::unique_ptr<Simulator> small_simulator(unsigned int seed = 165426111)
{
    auto sim = testing_support::simulator_on_grid(40, 30);
    iParameters* p = sim->getParameters();
    p->setParamDouble("DOMAIN_OX", 1000.);
    p->setParamDouble("DOMAIN_OY", 2000.);
    p->setParamDouble("DOMAIN_ZREF", 0.);
    p->setParamInt("SIM_SEED", static_cast<int>(seed));
    return sim;
}

// A vertical log at geographic (x, y) from its top down: pairs of facies and height.
Core vertical_log(const std::string& name, double x, double y, double top,
                  const std::vector<std::pair<unsigned char, double>>& samples)
{
    Core core(x, y, top, name);
    for (const auto& s : samples)
        core.add(s.first, s.second);
    return core;
}

std::vector<unsigned char> facies_of(const Core& core)
{
    std::vector<unsigned char> f;
    for (const CoreSample& s : core.getSamples())
        f.push_back(Facies::family(s.getFacies()));
    return f;
}

// Facies sequence with neighbours of one family joined, top first.
std::vector<unsigned char> joined_facies_of(const Core& core)
{
    std::vector<unsigned char> f;
    for (const CoreSample& s : core.getSamples())
        if (f.empty() || f.back() != Facies::family(s.getFacies()))
            f.push_back(Facies::family(s.getFacies()));
    return f;
}
} // namespace

TEST(SimulatorWells, AddDeleteAndInfosWithTheirMessages)
{
    auto sim = small_simulator();
    EXPECT_FALSE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.}}), "W1"));
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    CoreList none;
    EXPECT_FALSE(sim->getAllWells(none));

    // Node (10, 10) lies at (1100, 2100): a point bar over an overbank.
    ASSERT_TRUE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.5}, {8, 0.5}}), "W1"));
    ASSERT_TRUE(sim->addWell(vertical_log("ignored", 1200., 2150., 0., {{1, 1.}}), "W2"));
    EXPECT_FALSE(sim->addWell(vertical_log("W1", 1300., 2100., 0., {{1, 1.}}), "W1"));
    EXPECT_EQ(sim->getLastMessage(), "Cannot add well W1: a well of that name is already added");

    std::string infos;
    ASSERT_TRUE(sim->getWellInfos("W1", infos));
    EXPECT_TRUE(contains(infos, "Well W1 at [1100, 2100] (cell [10, 10])")) << infos;
    EXPECT_TRUE(contains(infos, "Bottom = -2m Top = 0m Height = 2m")) << infos;
    EXPECT_TRUE(contains(infos, "Honored units = 0 / 2")) << infos;
    ASSERT_TRUE(sim->getWellInfosAt(20, 15, infos));
    EXPECT_TRUE(contains(infos, "Well W2 at [1200, 2150] (cell [20, 15])")) << infos;
    EXPECT_FALSE(sim->getWellInfosAt(0, 0, infos));
    EXPECT_FALSE(sim->getWellInfos("W9", infos));
    EXPECT_EQ(sim->getLastMessage(), "Cannot find well W9");

    // A second log at one cell is linked under the first and answers at that cell too.
    ASSERT_TRUE(sim->addWell(vertical_log("W3", 1101., 2101., 0., {{8, 2.}}), "W3"));
    ASSERT_TRUE(sim->getWellInfosAt(10, 10, infos));
    EXPECT_TRUE(contains(infos, "Well W3 at [1101, 2101] (cell [10, 10]) linked to W1")) << infos;
    EXPECT_EQ(dynamic_cast<Well*>(sim->domain()->getObject(10, 10).well())->name(), "W1");

    CoreList cores;
    ASSERT_TRUE(sim->getAllWells(cores));
    ASSERT_EQ(cores.size(), 3);
    EXPECT_EQ(cores.at(0).getName(), "W1");
    EXPECT_EQ(facies_of(cores.at(0)), (std::vector<unsigned char>{2, 8}));
    EXPECT_DOUBLE_EQ(cores.at(0).bottom_elevation(), -2.);

    // Deleting the first well of a cell leaves the linked one on the column.
    EXPECT_FALSE(sim->deleteWell("W9"));
    EXPECT_EQ(sim->getLastMessage(), "Cannot delete well W9: no such well");
    ASSERT_TRUE(sim->deleteWell("W1"));
    EXPECT_FALSE(sim->getWellInfos("W1", infos));
    ASSERT_NE(sim->domain()->getObject(10, 10).well(), nullptr);
    EXPECT_EQ(dynamic_cast<Well*>(sim->domain()->getObject(10, 10).well())->name(), "W3");
    ASSERT_TRUE(sim->deleteWell("W3"));
    EXPECT_EQ(sim->domain()->getObject(10, 10).well(), nullptr);
    ASSERT_TRUE(sim->getAllWells(cores));
    EXPECT_EQ(cores.size(), 1);

    g_trace.clear();
    sim->printWells();
    EXPECT_TRUE(contains(g_trace, "    Info      : Conditioning wells: 1\n")) << g_trace;
    EXPECT_TRUE(contains(g_trace, "Well W2 at")) << g_trace;
}

TEST(SimulatorWells, BadWellsAreRefusedAndTheOthersStillLoad)
{
    TempDir dir;
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);

    // Off the grid: the head is told in geographic metres.
    EXPECT_FALSE(sim->addWell(vertical_log("FAR", 5000., 2100., 3., {{2, 1.}}), "FAR"));
    EXPECT_TRUE(
        contains(g_trace, "##  ERROR  ## : Well FAR head at [5000, 2100, 3]m is not inside the grid!\n"))
        << g_trace;
    EXPECT_EQ(sim->getLastMessage(), "Cannot add well FAR");

    // A file that is no well file, then a good one.
    testing_support::write_file(dir.file("bad.flw"), "nothing to read here\n");
    EXPECT_FALSE(sim->addWellFromFile(dir.file("bad.flw"), "", ""));
    EXPECT_TRUE(contains(sim->getLastMessage(), "Cannot add well bad:")) << sim->getLastMessage();
    const Core good = vertical_log("", 1050., 2050., 0., {{1, 0.5}, {8, 1.}});
    ASSERT_TRUE(good.write(dir.file("good.flw"), "test"));
    ASSERT_TRUE(sim->addWellFromFile(dir.file("good.flw"), "", ""));
    std::string infos;
    EXPECT_TRUE(sim->getWellInfos("good", infos));

    // A log of user attributes without classes is empty once translated.
    Core attributes(1150., 2150., 0., "ATT");
    CoreSampleTags sand;
    sand.attributeText = "sand";
    attributes.add(0, 1., sand);
    attributes.setStandardFacies(false);
    g_trace.clear();
    EXPECT_FALSE(sim->addWell(attributes, "ATT"));
    EXPECT_TRUE(contains(g_trace, "#  WARNING  # : Empty well ignored #2\n"
                                  "              : Did you forget to define user classes?\n"))
        << g_trace;
    // With a class for it, the same log is a point bar.
    UserClassList classes;
    std::string error;
    ASSERT_TRUE(classes.addDiscrete(2, "sand", error)) << error;
    ASSERT_TRUE(sim->setUserClassList(classes));
    ASSERT_TRUE(sim->addWell(attributes, "ATT"));
    CoreList cores;
    ASSERT_TRUE(sim->getAllWells(cores));
    ASSERT_EQ(cores.size(), 2);
    EXPECT_EQ(facies_of(cores.at(0)), (std::vector<unsigned char>{2}));
}

TEST(SimulatorWells, WellsNeedTheCurrentAlgorithm)
{
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    std::string message;
    EXPECT_TRUE(sim->checkWells(message));
    ASSERT_TRUE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.}}), "W1"));
    EXPECT_TRUE(sim->checkWells(message));
    sim->getParameters()->setCondNewAlgo(false);
    EXPECT_FALSE(sim->checkWells(message));
    EXPECT_EQ(message,
              "Conditioning wells need COND_WELLS_NEW_ALGO = 1: the former algorithm is not available");
    EXPECT_FALSE(sim->addWell(vertical_log("W2", 1200., 2100., 0., {{2, 1.}}), "W2"));
    EXPECT_EQ(sim->getLastMessage(),
              "Cannot add well W2: conditioning wells need COND_WELLS_NEW_ALGO = 1 (the "
              "former algorithm is not available)");
}

TEST(SimulatorWells, BinaryWellFilesRoundTrip)
{
    TempDir dir;
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    ASSERT_TRUE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.5}, {8, 0.5}, {1, 1.}}), "W1"));
    ASSERT_TRUE(sim->addWell(vertical_log("W2", 1100., 2100., 0., {{8, 3.}}), "W2"));
    EXPECT_FALSE(sim->saveWell("W9", dir.file("w9.dat")));
    ASSERT_TRUE(sim->saveWell("W1", dir.file("w1.dat")));
    std::string before;
    ASSERT_TRUE(sim->getWellInfosAt(10, 10, before));

    auto other = small_simulator();
    ASSERT_EQ(other->init(false), MP_STATUS_OK);
    g_trace.clear();
    ASSERT_TRUE(other->loadWell(dir.file("w1.dat")));
    EXPECT_TRUE(contains(g_trace, "Load well")) << g_trace;
    std::string after;
    ASSERT_TRUE(other->getWellInfosAt(10, 10, after));
    EXPECT_EQ(after, before);
    CoreList cores;
    ASSERT_TRUE(other->getAllWells(cores));
    EXPECT_EQ(cores.size(), 2);

    g_trace.clear();
    EXPECT_TRUE(other->loadWell(dir.file("w1.dat")));
    EXPECT_TRUE(contains(g_trace, "   Well W1 already added")) << g_trace;
    EXPECT_FALSE(other->loadWell(dir.file("none.dat")));
    EXPECT_EQ(other->getLastMessage(), "Cannot open well from binary file " + dir.file("none.dat"));
    const std::string bytes = testing_support::read_file(dir.file("w1.dat"));
    testing_support::write_file(dir.file("cut.dat"), bytes.substr(0, bytes.size() / 2));
    EXPECT_FALSE(other->loadWell(dir.file("cut.dat")));
    EXPECT_EQ(other->getLastMessage(), "Binary well file " + dir.file("cut.dat") + " format not correct");
}

TEST(SimulatorWells, HistogramCountsSamplesByHeightClass)
{
    TempDir dir;
    auto sim = small_simulator();
    CoreList cores;
    cores.add(vertical_log("A", 0., 0., 0., {{2, 0.5}, {8, 1.2}, {2, 3.}}));
    cores.add(vertical_log("B", 0., 0., 0., {{2, 0.99}}));
    EXPECT_FALSE(sim->saveHistogram(dir.file("h.csv"), cores, 0., 3));
    EXPECT_EQ(sim->getLastMessage(), "Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)");
    // A family beyond the register has no column: left out, never counted past the table.
    CoreList odd;
    odd.add(vertical_log("C", 0., 0., 0., {{15, 0.5}}));
    EXPECT_TRUE(sim->saveHistogram(dir.file("odd.csv"), odd, 1., 2));
    ASSERT_TRUE(sim->saveHistogram(dir.file("h.csv"), cores, 1., 2));
    std::istringstream lines(testing_support::read_file(dir.file("h.csv")));
    std::string header, first, second, extra;
    std::getline(lines, header);
    std::getline(lines, first);
    std::getline(lines, second);
    EXPECT_FALSE(std::getline(lines, extra));
    EXPECT_EQ(header.substr(0, 21), "height_min;height_max");
    const auto field = [](const std::string& line, int n)
    {
        std::istringstream s(line);
        std::string f;
        for (int k = 0; k <= n; ++k)
            std::getline(s, f, ';');
        return f;
    };
    // Columns: 2 bounds, 14 counts, 14 heights; point bar is family 2, overbank 8.
    EXPECT_EQ(field(first, 0), "0");
    EXPECT_EQ(field(first, 1), "1");
    EXPECT_EQ(field(first, 2 + 2), "2");
    EXPECT_EQ(field(first, 16 + 2), "1.49");
    EXPECT_EQ(field(second, 2 + 2), "1");
    EXPECT_EQ(field(second, 2 + 8), "1");
    EXPECT_EQ(field(second, 16 + 2), "3");
    EXPECT_EQ(field(second, 16 + 8), "1.2");
}

// Runs `iterations` of a small fluvial simulation, the wells given to the channel.
int run_small(Simulator& sim, unsigned int iterations)
{
    if (sim.checkConsistency() == MP_STATUS_INCONSISTENT || sim.newSequence() != MP_STATUS_OK)
        return -1;
    int status = sim.run(0);
    sim.setWellConfig();
    sim.attachWellsToChannel();
    for (unsigned int k = 0; k < iterations && status == MP_STATUS_OK; ++k)
    {
        status = sim.run(1);
        sim.attachWellsToChannel();
    }
    return status;
}

TEST(SimulatorWells, ExtractedWellKeepsTheColumnFaciesSequence)
{
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    ASSERT_EQ(run_small(*sim, 150), MP_STATUS_OK) << sim->getLastMessage();
    int tested = 0;
    for (int i = 1; i < 40; i += 3)
        for (int j = 1; j < 30; j += 2)
        {
            Core column;
            ASSERT_TRUE(sim->domain()->to_core(i, j, column, MP_UNDEF_REAL, MP_UNDEF_REAL));
            Core extracted;
            ASSERT_TRUE(sim->extractWell(i, j, extracted, MP_UNDEF_REAL, MP_UNDEF_REAL));
            EXPECT_EQ(facies_of(extracted), facies_of(column));
            // Through a conditioning well and back, the sequence survives with undefined ends trimmed.
            extracted.trim();
            if (extracted.empty())
                continue;
            const std::string name = "E" + std::to_string(i) + "_" + std::to_string(j);
            ASSERT_TRUE(sim->addWell(extracted, name)) << sim->getLastMessage();
            CoreList wells;
            ASSERT_TRUE(sim->getAllWells(wells));
            const Core* back = nullptr;
            for (const Core& c : wells)
                if (c.getName() == name)
                    back = &c;
            ASSERT_NE(back, nullptr);
            EXPECT_EQ(joined_facies_of(*back), joined_facies_of(extracted)) << name;
            EXPECT_NEAR(back->top_elevation(), extracted.top_elevation(), 1e-6);
            EXPECT_NEAR(back->bottom_elevation(), extracted.bottom_elevation(), 1e-6);
            ++tested;
        }
    EXPECT_GT(tested, 5);
    // The wells stand on the column they came from: what is there already honours them.
    for (const auto& s : sim->getWellStats())
        EXPECT_NEAR(s.faciesMatch, 1., 1e-6) << s.name;
}

TEST(SimulatorWells, ConditioningHonoursAConstructedWellBetter)
{
    // A point bar under the surface at node (20, 10), off the course a free channel takes.
    unsigned int observed = 0, conditioned = 0;
    double observed_match = 0., conditioned_match = 0.;
    for (unsigned int seed : {11u, 22u, 33u})
    {
        // The same well only watches the column when its steering is off.
        for (bool steer : {false, true})
        {
            auto sim = small_simulator(seed);
            sim->getParameters()->setCondMigWells(steer ? 4 : 0);
            sim->getParameters()->setCondAvWells(steer);
            ASSERT_EQ(sim->init(false), MP_STATUS_OK);
            const double top = sim->domain()->getTopoGeo(20, 10, false);
            ASSERT_TRUE(sim->addWell(vertical_log("V", 1200., 2100., top, {{2, 2.4}}), "V"))
                << sim->getLastMessage();
            ASSERT_EQ(run_small(*sim, 200), MP_STATUS_OK) << sim->getLastMessage();
            const auto stats = sim->getWellStats();
            ASSERT_EQ(stats.size(), 1u);
            (steer ? conditioned : observed) += stats.front().honored;
            (steer ? conditioned_match : observed_match) += stats.front().faciesMatch;
        }
    }
    // Avulsions and floods still happen around a steering well: most, not all, of its column matches.
    EXPECT_GE(conditioned, observed);
    EXPECT_GT(conditioned_match / 3., 0.9);
    EXPECT_LT(observed_match / 3., 0.5);
}

TEST(SimulatorWells, ANewModelForgetsTheWells)
{
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    ASSERT_TRUE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.}}), "W1"));
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    CoreList cores;
    EXPECT_FALSE(sim->getAllWells(cores));
    EXPECT_TRUE(sim->wellsHonored());
    ASSERT_TRUE(sim->addWell(vertical_log("W1", 1100., 2100., 0., {{2, 1.}}), "W1"));
    EXPECT_FALSE(sim->wellsHonored());
    EXPECT_EQ(dynamic_cast<Well*>(sim->domain()->getObject(10, 10).well())->name(), "W1");
}
