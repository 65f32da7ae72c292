#pragma once
// The application unit: reads the command line, settles the distribution
// tier, and takes the batch or the desktop path.

#include "CommandLine.h"

#include "interface/iTracer.h"

#include <string>

class iSimulator;
class iParameters;
class iTracer;

class Main
{
public:
    Main();
    ~Main();

    // The whole program; returns the process exit status.
    int run(int argc, char** argv);

    // The sink of all trace text: standard output. Level 1 is fatal and
    // throws the int -1 into whatever is running.
    static void trace_function(const char* text, TraceLevel level);

    // Exit statuses of the program.
    static constexpr int EXIT_DONE = 0;
    static constexpr int EXIT_LOAD_FAILED = 1;
    static constexpr int EXIT_LAUNCH_FAILED = 2;
    static constexpr int EXIT_REFUSED = 3;
    static constexpr int EXIT_WITH_ERRORS = 4;

    const iParameters& parameters() const;

private:
    // No licence server: the research tier unless the command line asks for less.
    void FixDistribution(const CommandLineOptions& options);
    int runBatch();
    // After a batch that ran to its end: done, or, when errors were traced on
    // the way, their summary (each text once) and the status "with errors".
    int closingStatus();
    int runDesktop(int argc, char** argv);

    // The kernel, reached only through its door.
    iSimulator* _simulator;
    iTracer* _tracer;
    iParameters* _parameters;
    std::string _batch_file;
    bool _no_splash = false;
};
