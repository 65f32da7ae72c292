#pragma once
// The live line of a batch run on a terminal: the iteration, the top of the
// block against the upper limit and the time left, redrawn in place on
// standard error a few times a second. Nothing is shown when standard error
// is not a terminal, and standard output is never touched.

#include <string>

class iSimulator;

class ProgressReport
{
public:
    // Becomes the progress function of the simulator's tracer when standard
    // error is a terminal; `planned` is the number of iterations the batch
    // asks for, 0 when it runs to the upper limit. False when nothing is shown.
    static bool install(iSimulator* simulator, unsigned int planned);
    // Clears the line and gives the progress function back.
    static void finish();
    // Clears the line, if one is shown, so that a trace line starts on a clean one.
    static void erase();

    // The text of the line. `done` of `planned` iterations (0: unknown),
    // elevations in metres (1e30: none), seconds left (negative: unknown).
    static std::string line(unsigned int iteration, unsigned int done, unsigned int planned, double mean_top,
                            double lowest_top, double limit, double seconds_left);
    // "42 s", "3 min 05 s", "2 h 07 min".
    static std::string duration(double seconds);

private:
    static bool on_progress(int n);
    static void draw();
};
