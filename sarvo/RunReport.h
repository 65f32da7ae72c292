#pragma once
// The short report at the end of a batch run: what happened, what the block
// holds, how well the wells are honoured, how long it took and what it wrote.

#include "interface/RunSummary.h"

#include <string>
#include <vector>

class NewJournalFile;
class iSimulator;

class RunReport
{
public:
    // Launches the batch with the live line on a terminal, then traces the
    // report at info level; the status is the launch's.
    static int launch(NewJournalFile& batch, iSimulator* simulator);
    // Iterations the batch asks for, 0 when one of its sequences runs to the upper limit.
    static unsigned int planned_iterations(const NewJournalFile& batch);
    // Lines without trace prefixes, the first one a title.
    static std::string text(const RunSummary& summary, double wall_seconds,
                            const std::vector<std::string>& files);
};
