#pragma once
// What a run has done, for the short report at its end: counts of events
// since `init`, the share of sand in the block and how well each
// conditioning well is honoured.

#include <string>
#include <vector>

struct WellHonour
{
    std::string name;
    // Units of the log that the simulated column reproduces, out of `units`.
    unsigned int honored = 0;
    unsigned int units = 0;
};

struct RunSummary
{
    unsigned int iterations = 0;
    unsigned int cutoffs = 0;
    unsigned int avulsions = 0;
    unsigned int floods = 0;
    unsigned int splays = 0;
    // Sand thickness over deposited thickness; 1e30 before any deposit.
    double net_to_gross = 1e30;
    std::vector<WellHonour> wells;
};
