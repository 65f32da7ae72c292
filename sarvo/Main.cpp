#include "Main.h"

#include "PngWriter.h"
#include "ProgressReport.h"
#include "RunReport.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "kernel/batch/KeywordReference.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/common/Tracer.h"

#ifdef SARVO_WITH_GUI
#include "gui/Desktop.h"
#endif

#include <iostream>
#include <string>
#include <vector>

namespace
{
constexpr int TIER_FREE = 0;
constexpr int TIER_PREMIUM = 1;
constexpr int TIER_RESEARCH = 2;

// Holds no state, so one writer serves every simulator of the process.
PngWriter& png_writer()
{
    static PngWriter writer;
    return writer;
}
} // namespace

Main::Main()
    : _simulator(iSimulator::createSimulator()), _tracer(_simulator->getTracer()),
      _parameters(_simulator->getParameters())
{
    _simulator->setImageWriter(&png_writer());
    _parameters->setUsingFluvi();
    _parameters->setUsingDistrib(TIER_FREE);
}

Main::~Main()
{
    iSimulator::deleteSimulator(_simulator);
}

const iParameters& Main::parameters() const
{
    return *_parameters;
}

void Main::trace_function(const char* text, TraceLevel level)
{
    ProgressReport::erase();
    if (text)
        std::cout << text << std::flush;
    else
        std::cout.setstate(std::ios::badbit);
    if (level == TRACE_FATAL)
        throw -1;
}

void Main::FixDistribution(const CommandLineOptions& options)
{
    if (options.free)
        _parameters->setUsingDistrib(TIER_FREE);
    else if (options.premium)
        _parameters->setUsingDistrib(TIER_PREMIUM);
    else
        _parameters->setUsingDistrib(TIER_RESEARCH);
}

int Main::run(int argc, char** argv)
{
    CommandLineOptions options;
    std::string error;
    const std::string program = argc > 0 ? argv[0] : "sarvo";
    if (!CommandLine::parse(argc, argv, options, error))
    {
        std::cout << error << "\n" << CommandLine::usage(program);
        return EXIT_REFUSED;
    }
    if (options.help)
    {
        std::cout << CommandLine::usage(program);
        return EXIT_DONE;
    }
    if (options.verbose)
        _tracer->setTraceLevel(TRACE_ALL);
    _no_splash = options.no_splash;
    _batch_file = options.batch_file;
    _tracer->setTraceFunction(trace_function);
    _simulator->printVersion();
    FixDistribution(options);
    if (options.version || options.keywords)
    {
        std::cout << (options.version ? "Sarvo " + _parameters->getFullVersion() + "\n"
                                      : KeywordReference::markdown());
        return EXIT_DONE;
    }
    _tracer->info("Sarvo " + _parameters->getFullVersion());

    try
    {
        return _batch_file.empty() ? runDesktop(argc, argv) : runBatch();
    }
    catch (int)
    {
        // A fatal trace already told the user why.
        return EXIT_LAUNCH_FAILED;
    }
}

int Main::runBatch()
{
    if (_parameters->usingFree())
    {
        _tracer->error("Batch mode is not available in Free version!");
        return EXIT_REFUSED;
    }
    NewJournalFile batch(_simulator);
    if (!batch.load(_batch_file))
    {
        _tracer->error("Error loading batch file!");
        return EXIT_LOAD_FAILED;
    }
    if (RunReport::launch(batch, _simulator) != 0)
    {
        _tracer->error("Error launching batch!");
        return EXIT_LAUNCH_FAILED;
    }
    return closingStatus();
}

int Main::closingStatus()
{
    const unsigned int count = _tracer->getErrorCount();
    if (count == 0)
        return EXIT_DONE;
    const std::vector<std::string> errors = _tracer->getDistinctErrors();
    std::string text = "The batch ran to its end with errors (" + std::to_string(count) + " error line" +
                       (count > 1 ? "s" : "") + ", " + std::to_string(errors.size()) + " distinct):";
    for (std::string error : errors)
    {
        // The lines of one error stay under its dash.
        for (size_t at = error.find('\n'); at != std::string::npos; at = error.find('\n', at + 1))
            error.insert(at + 1, "    ");
        text += "\n  - " + error;
    }
    if (errors.size() >= Tracer::MP_MAX_DISTINCT_ERRORS)
        text += "\n  - (further distinct errors are not listed)";
    _tracer->error(text);
    return EXIT_WITH_ERRORS;
}

int Main::runDesktop(int argc, char** argv)
{
#ifdef SARVO_WITH_GUI
    return ::runDesktop(_simulator, argc, argv, _no_splash);
#else
    (void)argc;
    (void)argv;
    _tracer->error(
        "This build has no desktop application (built with SARVO_GUI=OFF): run a batch file with -b <file>.");
    return EXIT_REFUSED;
#endif
}
