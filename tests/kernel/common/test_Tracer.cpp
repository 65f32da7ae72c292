#include "kernel/common/Tracer.h"

#include "TestSupport.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

using testing_support::capture;
using testing_support::clear_trace;
using testing_support::g_trace;
using testing_support::g_trace_levels;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

int g_progress_sum = 0;

bool stop_at_three(int n)
{
    g_progress_sum += n;
    return g_progress_sum < 3;
}

struct Captured : ::testing::Test
{
    Captured()
    {
        clear_trace();
        tracer.setTraceFunction(&capture);
    }
    Tracer tracer;
};

const std::string STATS_HEADER =
    "Time;Abstract_Time;Obsv_Min_topo;Obsv_Nb_cutoff;Obsv_Nb_chutecutoff;Obsv_Nb_av;Obsv_Sinuo;Obsv_Tortuo;"
    "Obsv_sb_ext;Obsv_sb_ext_on_wl;Obsv_sb_ext_on_obsv_wl;Obsv_isbx;Obsv_Min_max_depth;Obsv_Max_max_depth;"
    "Obsv_PB_prop;Pred_PB_prop;Obsv_Sand_prop;Pred_Sand_prop;Obsv_Aggrad_rate;Pred_Aggrad_rate;"
    "Obsv_Sinuo_Allen;Pred_Sinuo;Obsv_Kob;Pred_Kob;Obsv_Kmig;Pred_Kmig;Obsv_Kvp;Pred_Kvp;Obsv_Max_depth;"
    "Pred_Max_depth;Obsv_Wavelength;Pred_Wavelength;Obsv_Velocity;Pred_Velocity;Obsv_Mean_vp;Pred_Mean_vp;"
    "Obsv_Mig_rate;Pred_Mig_rate";
const std::string PROPS_COLUMNS = "Obsv_CL_prop;Obsv_SP_prop;Obsv_CSI_prop;Obsv_CCH_prop;Obsv_CSII_prop;"
                                  "Obsv_LV_prop;Obsv_OB_prop;Obsv_MP_prop;Obsv_HP_prop;Obsv_WL_prop;"
                                  "Obsv_DR_prop;Obsv_PL_prop;";
const std::string CL_HEADER = "Iteration;Dist_previous;Curv_abscissa;Cart_abscissa;Cart_ordinate;Elevation;"
                              "Curvature;Vel_perturb;Velocity;Mean_depth;True_elevation";
const std::string GR_HEADER = "Side;Flow_Max_Thickness;Flow_Eff_Thickness;Flow_Super_Elev;Flow_Mean_Velocity;"
                              "Flow_Mean_Concent;Flow_Velocity_Perturb;Elevation;Curvature;Grainsize";

} // namespace

TEST_F(Captured, LevelsFilterWhatReachesTheFunction)
{
    EXPECT_EQ(tracer.getTraceLevel(), TRACE_INFO);
    tracer.info("shown");
    tracer.debug("hidden");
    EXPECT_EQ(g_trace, "    Info      : shown\n");

    g_trace.clear();
    tracer.setVerbose(false);
    EXPECT_EQ(tracer.getTraceLevel(), TRACE_WARNING);
    EXPECT_FALSE(tracer.traceLevel(TRACE_INFO));
    EXPECT_TRUE(tracer.traceLevel(TRACE_WARNING));
    tracer.info("never");
    tracer.trace("raw info\n", TRACE_INFO);
    tracer.warning("careful");
    tracer.error("broken");
    EXPECT_EQ(g_trace, "#  WARNING  # : careful\n##  ERROR  ## : broken\n");
    EXPECT_EQ(g_trace_levels.back(), TRACE_ERROR);

    tracer.setVerbose(true);
    EXPECT_EQ(tracer.getTraceLevel(), TRACE_INFO);

    // Out-of-range levels are brought back to the ends of the scale, and a
    // fatal line always reaches the function.
    tracer.setTraceLevel(0);
    EXPECT_EQ(tracer.getTraceLevel(), TRACE_FATAL);
    g_trace.clear();
    tracer.error("not at fatal level");
    tracer.trace("end\n", TRACE_FATAL);
    EXPECT_EQ(g_trace, "end\n");
    tracer.setTraceLevel(42);
    EXPECT_EQ(tracer.getTraceLevel(), TRACE_ALL);
    g_trace.clear();
    tracer.debug("deep");
    EXPECT_EQ(g_trace, "    Debug     : deep\n");
}

TEST_F(Captured, ErrorsAreCountedAndKeptOnceEvenWhenHidden)
{
    tracer.error("first\nsecond");
    tracer.setTracerId(3);
    tracer.error("first\nsecond");
    tracer.warning("not an error");
    tracer.setTraceLevel(TRACE_FATAL);
    tracer.error("hidden");
    EXPECT_EQ(g_trace.find("hidden"), std::string::npos);
    EXPECT_EQ(tracer.getErrorCount(), 3u);
    EXPECT_EQ(tracer.getDistinctErrors(), (std::vector<std::string>{"first\nsecond", "hidden"}));
    // Texts that change at every turn are counted, but their list is bounded.
    for (int k = 0; k < 300; ++k)
        tracer.error("node " + std::to_string(k));
    EXPECT_EQ(tracer.getErrorCount(), 303u);
    EXPECT_EQ(tracer.getDistinctErrors().size(), Tracer::MP_MAX_DISTINCT_ERRORS);
    tracer.resetErrors();
    EXPECT_EQ(tracer.getErrorCount(), 0u);
    EXPECT_TRUE(tracer.getDistinctErrors().empty());
}

TEST_F(Captured, TracerIdPrecedesTheLine)
{
    EXPECT_EQ(tracer.getTracerId(), 2147483647);
    tracer.error("a");
    tracer.setTracerId(7);
    tracer.error("b");
    tracer.setTracerId(0);
    tracer.warning("c");
    EXPECT_EQ(g_trace, "##  ERROR  ## : a\n[7] ##  ERROR  ## : b\n[0] #  WARNING  # : c\n");
}

TEST_F(Captured, MultiLineTextsUseTheContinuationPrefix)
{
    tracer.error("first\nsecond\nthird");
    EXPECT_EQ(g_trace, "##  ERROR  ## : first\n"
                       "              : second\n"
                       "              : third\n");
    g_trace.clear();
    tracer.info("only one\n");
    tracer.info("");
    EXPECT_EQ(g_trace, "    Info      : only one\n    Info      : \n");
    for (const char* prefix : {MP_TRACE_PREFIX_ERROR, MP_TRACE_PREFIX_WARNING, MP_TRACE_PREFIX_INFO,
                               MP_TRACE_PREFIX_DEBUG, MP_TRACE_PREFIX_CONT})
        EXPECT_EQ(std::string(prefix).size(), 16u) << prefix;
}

TEST_F(Captured, CallMarksOnlyAtDebugLevel)
{
    tracer.traceCallIn("quiet");
    tracer.traceCallOut("quiet");
    EXPECT_EQ(g_trace, "");
    tracer.setTraceLevel(TRACE_DEBUG);
    tracer.traceCallIn("find_new_course");
    EXPECT_EQ(tracer.getCallDepth(), 1);
    tracer.traceCallOut("find_new_course");
    EXPECT_EQ(tracer.getCallDepth(), 0);
    const std::string spaces(16, ' ');
    EXPECT_EQ(g_trace, spaces + " => find_new_course\n" + spaces + " ## find_new_course\n");
    EXPECT_EQ(g_trace_levels, std::vector<TraceLevel>({TRACE_DEBUG, TRACE_DEBUG}));
}

TEST(Tracer, WithoutFunctionsNothingIsPrintedAndRunsGoOn)
{
    Tracer tracer;
    tracer.setTraceLevel(TRACE_ALL);
    g_trace.clear();
    tracer.error("lost");
    tracer.trace("lost\n", TRACE_FATAL);
    tracer.traceCallIn("x");
    EXPECT_EQ(g_trace, "");
    EXPECT_TRUE(tracer.progress(1));
    EXPECT_TRUE(tracer.progress(-100));

    tracer.setTraceFunction(&capture);
    tracer.setTraceFunction(nullptr);
    tracer.error("lost again");
    EXPECT_EQ(g_trace, "");

    g_progress_sum = 0;
    tracer.setProgressFunction(&stop_at_three);
    EXPECT_EQ(tracer.getProgressFunction(), &stop_at_three);
    EXPECT_TRUE(tracer.progress(1));
    EXPECT_TRUE(tracer.progress(1));
    EXPECT_FALSE(tracer.progress(1));
    EXPECT_EQ(g_progress_sum, 3);
    tracer.setProgressFunction(nullptr);
    EXPECT_TRUE(tracer.progress(1));
}

TEST_F(Captured, StatsIntervalAbove1000IsRefused)
{
    EXPECT_TRUE(tracer.setStatsInterval(1000));
    EXPECT_EQ(tracer.statsInterval(), 1000u);
    EXPECT_EQ(g_trace, "");
    EXPECT_FALSE(tracer.setStatsInterval(1001));
    EXPECT_EQ(tracer.statsInterval(), Tracer::MP_DEFAULT_STATS_INTERVAL);
    EXPECT_EQ(g_trace, "##  ERROR  ## : Stats interval > 1000 -> Use default\n");
}

TEST(Tracer, SwitchesAreIndependent)
{
    using Setter = void (Tracer::*)(bool);
    using Getter = bool (Tracer::*)() const;
    const std::vector<std::pair<Setter, Getter>> switches = {
        {&Tracer::setTraceAvuls, &Tracer::traceAvuls},
        {&Tracer::setTraceConstruct, &Tracer::traceConstruct},
        {&Tracer::setTraceAggrad, &Tracer::traceAggrad},
        {&Tracer::setTraceMigrat, &Tracer::traceMigrat},
        {&Tracer::setTraceCond, &Tracer::traceCond},
        {&Tracer::setTraceMgmt, &Tracer::traceMgmt},
        {&Tracer::setGenerateStatsIteration, &Tracer::generateStatsIt},
        {&Tracer::setGenerateStatsAvulsion, &Tracer::generateStatsAv},
        {&Tracer::setGenerateStatsProps, &Tracer::generateStatsProps},
        {&Tracer::setGenerateCenterlineStats, &Tracer::generateCenterlineStats},
        {&Tracer::setGenerateGrainsizeStats, &Tracer::generateGrainsizeStats}};
    for (size_t k = 0; k < switches.size(); ++k)
    {
        Tracer tracer;
        (tracer.*switches[k].first)(true);
        for (size_t m = 0; m < switches.size(); ++m)
            EXPECT_EQ((tracer.*switches[m].second)(), k == m) << k << " " << m;
        (tracer.*switches[k].first)(false);
        EXPECT_FALSE((tracer.*switches[k].second)()) << k;
    }

    Tracer tracer;
    EXPECT_FALSE(tracer.generateStats());
    tracer.setGenerateStatsAvulsion(true);
    EXPECT_TRUE(tracer.generateStats());
    tracer.setGenerateStatsAvulsion(false);
    tracer.setGenerateStatsIteration(true);
    EXPECT_TRUE(tracer.generateStats());
    tracer.setGenerateStatsProps(true);
    tracer.setGenerateStatsIteration(false);
    EXPECT_FALSE(tracer.generateStats());
}

TEST(Tracer, HeadersAreExact)
{
    TempDir dir;
    Tracer tracer;
    tracer.setStatsFile(dir.file("stats.csv"));
    tracer.setCenterlineStatsFile(dir.file("stats_centerline.csv"));
    tracer.setGrainsizeStatsFile(dir.file("stats_grain.csv"));
    tracer.setGenerateStatsIteration(true);
    tracer.setGenerateCenterlineStats(true);
    tracer.setGenerateGrainsizeStats(true);
    ASSERT_TRUE(tracer.resetStatsFiles());
    tracer.closeStatsFile();
    tracer.closeCenterlineStatsFile();
    tracer.closeGrainsizeStatsFile();
    EXPECT_EQ(read_file(dir.file("stats.csv")), STATS_HEADER + "\n");
    EXPECT_EQ(read_file(dir.file("stats_centerline.csv")), CL_HEADER + "\n");
    EXPECT_EQ(read_file(dir.file("stats_grain.csv")), GR_HEADER + "\n");
    EXPECT_EQ(std::count(STATS_HEADER.begin(), STATS_HEADER.end(), ';'), 37);

    tracer.setGenerateStatsProps(true);
    ASSERT_TRUE(tracer.resetStatsFiles());
    tracer.closeStatsFile();
    std::string with_props = STATS_HEADER;
    with_props.insert(with_props.find("Obsv_PB_prop"), PROPS_COLUMNS);
    EXPECT_EQ(read_file(dir.file("stats.csv")), with_props + "\n");
    EXPECT_EQ(Tracer::statsHeader(true), with_props);
    EXPECT_EQ(std::count(with_props.begin(), with_props.end(), ';'), 49);
}

TEST(Tracer, AppendKeepsAndTruncateClears)
{
    TempDir dir;
    const std::string path = dir.file("stats.csv");
    Tracer tracer;
    tracer.setStatsFile(path);
    tracer.setGenerateStatsAvulsion(true);
    ASSERT_TRUE(tracer.resetStatsFiles());

    // Two sequences, each opening in append mode.
    ASSERT_TRUE(tracer.openStatsFile(std::ios::app));
    EXPECT_TRUE(tracer.dumpStats("1;a"));
    tracer.closeStatsFile();
    ASSERT_TRUE(tracer.openStatsFile(std::ios::app));
    EXPECT_TRUE(tracer.dumpStats("2;b\n"));
    EXPECT_TRUE(tracer.dumpStats(""));
    // Flushed at once: readable while the stream is still open.
    EXPECT_EQ(read_file(path), STATS_HEADER + "\n1;a\n2;b\n");
    tracer.closeStatsFile();
    tracer.closeStatsFile();
    EXPECT_EQ(read_file(path), STATS_HEADER + "\n1;a\n2;b\n");

    ASSERT_TRUE(tracer.openStatsFile(std::ios::trunc));
    EXPECT_EQ(read_file(path), "");
    EXPECT_TRUE(tracer.dumpStats(""));
    EXPECT_EQ(read_file(path), "");
    EXPECT_TRUE(tracer.dumpStats("3;c"));
    tracer.closeStatsFile();
    EXPECT_EQ(read_file(path), "3;c\n");

    // Reset while open starts a new run (the file is replaced when a sequence
    // ends), and leaves files switched off alone.
    const std::string other = dir.file("cl.csv");
    write_file(other, "kept\n");
    tracer.setCenterlineStatsFile(other);
    ASSERT_TRUE(tracer.openStatsFile(std::ios::app));
    ASSERT_TRUE(tracer.resetStatsFiles());
    EXPECT_EQ(read_file(path), "3;c\n");
    tracer.closeStatsFile();
    EXPECT_EQ(read_file(path), STATS_HEADER + "\n");
    EXPECT_EQ(read_file(other), "kept\n");
    EXPECT_TRUE(tracer.dumpCenterlineStats("4;d"));
    EXPECT_TRUE(tracer.dumpGrainsizeStats(""));
    tracer.closeCenterlineStatsFile();
    EXPECT_EQ(read_file(other), "kept\n4;d\n");
}

// A run's statistics go to a temporary beside the file until its first
// sequence ends: a run that never ends one keeps the user's previous file.
TEST(Tracer, StatisticsFilesAreStagedUntilASequenceEnds)
{
    enum Ending
    {
        SEQUENCE_ENDS,
        RUN_DROPPED,
        TRACER_GONE
    };
    struct Row
    {
        const char* what;
        Ending ending;
        std::string expected; // in each file once the run is over
    };
    const std::string lines = "1;a\n";
    const Row rows[] = {
        {"a sequence ends", SEQUENCE_ENDS, ""},
        {"the run is cleared first", RUN_DROPPED, "old\n"},
        {"the program stops first", TRACER_GONE, "old\n"},
    };
    const std::string headers[] = {STATS_HEADER, CL_HEADER, GR_HEADER};
    for (const Row& row : rows)
    {
        TempDir dir;
        const std::string files[] = {dir.file("s.csv"), dir.file("cl.csv"), dir.file("gr.csv")};
        for (const std::string& file : files)
            write_file(file, "old\n");
        auto tracer = std::make_unique<Tracer>();
        tracer->setStatsFile(files[0]);
        tracer->setCenterlineStatsFile(files[1]);
        tracer->setGrainsizeStatsFile(files[2]);
        tracer->setGenerateStatsIteration(true);
        tracer->setGenerateCenterlineStats(true);
        tracer->setGenerateGrainsizeStats(true);
        ASSERT_TRUE(tracer->resetStatsFiles());
        ASSERT_TRUE(tracer->openStatsFile(std::ios::app));
        EXPECT_TRUE(tracer->dumpStats(lines));
        EXPECT_TRUE(tracer->dumpCenterlineStats(lines));
        EXPECT_TRUE(tracer->dumpGrainsizeStats(lines));
        for (const std::string& file : files)
            EXPECT_EQ(read_file(file), "old\n") << row.what << ": replaced while the sequence runs";
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 6) << row.what;
        if (row.ending == SEQUENCE_ENDS)
        {
            tracer->closeStatsFile();
            tracer->closeCenterlineStatsFile();
            tracer->closeGrainsizeStatsFile();
            // The next sequence appends to the run's own file, readable as it goes.
            EXPECT_TRUE(tracer->dumpStats("2;b"));
            EXPECT_EQ(read_file(files[0]), headers[0] + "\n" + lines + "2;b\n") << row.what;
            tracer->discardStatsFiles();
        }
        else if (row.ending == RUN_DROPPED)
            tracer->discardStatsFiles();
        else
            tracer.reset();
        for (int f = 0; f < 3; ++f)
        {
            const std::string expected = row.expected.empty() ? headers[f] + "\n" + lines : row.expected;
            EXPECT_EQ(read_file(files[f]), expected + (row.ending == SEQUENCE_ENDS && f == 0 ? "2;b\n" : ""))
                << row.what;
        }
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 3)
            << row.what << ": a temporary is left";
    }
}

TEST_F(Captured, FilesThatCannotBeUsedAreReported)
{
    TempDir dir;
    const std::string bad = dir.file("missing_dir/stats.csv");
    tracer.setStatsFile(bad);
    EXPECT_FALSE(tracer.openStatsFile(std::ios::app));
    EXPECT_EQ(g_trace, "##  ERROR  ## : Error opening CSV file:" + bad + "\n");
    g_trace.clear();
    EXPECT_FALSE(tracer.dumpStats("1;2"));
    EXPECT_EQ(g_trace, "##  ERROR  ## : Error opening CSV file:" + bad + "\n");

    g_trace.clear();
    EXPECT_FALSE(tracer.openCenterlineStatsFile(std::ios::app));
    EXPECT_FALSE(tracer.openGrainsizeStatsFile(std::ios::trunc));
    EXPECT_EQ(g_trace, "##  ERROR  ## : Centerline statistics file is not defined\n"
                       "##  ERROR  ## : Grain size statistics file is not defined\n");

    g_trace.clear();
    tracer.setStatsFile("");
    tracer.setGenerateStatsIteration(true);
    tracer.setGenerateGrainsizeStats(true);
    tracer.setGrainsizeStatsFile(dir.file("gr.csv"));
    EXPECT_FALSE(tracer.resetStatsFiles());
    EXPECT_EQ(g_trace, "##  ERROR  ## : Statistics file is not defined\n");
    // The failure of one file does not keep the others from being reset.
    tracer.closeGrainsizeStatsFile();
    EXPECT_EQ(read_file(dir.file("gr.csv")), GR_HEADER + "\n");
}

TEST_F(Captured, ResetFromCopiesSettingsNotStreams)
{
    TempDir dir;
    Tracer source;
    source.setTracerId(3);
    source.setTraceLevel(TRACE_DEBUG);
    source.setTraceConstruct(true);
    source.setGenerateCenterlineStats(true);
    source.setStatsInterval(25);
    source.setCenterlineStatsFile(dir.file("cl.csv"));
    source.setProgressFunction(&stop_at_three);
    source.setTraceFunction(&capture);

    Tracer copy;
    copy.resetFrom(source);
    EXPECT_EQ(copy.getTracerId(), 3);
    EXPECT_EQ(copy.getTraceLevel(), TRACE_DEBUG);
    EXPECT_TRUE(copy.traceConstruct());
    EXPECT_TRUE(copy.traceSteepest());
    EXPECT_TRUE(copy.generateCenterlineStats());
    EXPECT_FALSE(copy.generateStats());
    EXPECT_EQ(copy.statsInterval(), 25u);
    EXPECT_EQ(copy.getCenterlineStatsFile(), dir.file("cl.csv"));
    EXPECT_EQ(copy.getProgressFunction(), &stop_at_three);
    g_trace.clear();
    copy.info("hello");
    EXPECT_EQ(g_trace, "[3]     Info      : hello\n");

    copy.setTraceLevel(TRACE_INFO);
    EXPECT_FALSE(copy.traceSteepest());
}
