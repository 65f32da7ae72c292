#include "RunReport.h"

#include "ProgressReport.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/NewJournalFile.h"

#include <chrono>

#include <cmath>
#include <iomanip>
#include <sstream>

namespace
{

std::string percent(double fraction)
{
    std::ostringstream out;
    out << std::fixed << std::setprecision(1) << 100. * fraction << " %";
    return out.str();
}

} // namespace

std::string RunReport::text(const RunSummary& summary, double wall_seconds,
                            const std::vector<std::string>& files)
{
    std::ostringstream out;
    out << "Run summary\n";
    out << "Iterations: " << summary.iterations << "\n";
    out << "Events: " << summary.cutoffs << " cutoffs, " << summary.avulsions << " avulsions, "
        << summary.floods << " floods, " << summary.splays << " splays\n";
    out << "Net to gross: " << (summary.net_to_gross <= 1. ? percent(summary.net_to_gross) : "no deposit")
        << "\n";
    for (const WellHonour& well : summary.wells)
    {
        out << "Well " << well.name << ": " << well.honored << " of " << well.units << " units honoured";
        if (well.units > 0)
            out << " (" << percent(static_cast<double>(well.honored) / well.units) << ")";
        out << "\n";
    }
    out << "Wall time: " << ProgressReport::duration(wall_seconds) << "\n";
    out << "Files written: " << files.size();
    for (const std::string& file : files)
        out << "\n  " << file;
    return out.str();
}

unsigned int RunReport::planned_iterations(const NewJournalFile& batch)
{
    unsigned int total = 0;
    for (const NewJournalSequence& sequence : batch.getSequences())
    {
        // Runs to the upper limit, or a count left unset.
        if (sequence.getLaunchIt() < 0 || sequence.getLaunchIt() == 2147483647)
            return 0;
        total += static_cast<unsigned int>(sequence.getLaunchIt());
    }
    return total;
}

int RunReport::launch(NewJournalFile& batch, iSimulator* simulator)
{
    const auto start = std::chrono::steady_clock::now();
    ProgressReport::install(simulator, planned_iterations(batch));
    const int status = batch.launch();
    ProgressReport::finish();
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    RunSummary summary;
    iTracer* tracer = simulator->getTracer();
    if (tracer->traceLevel(TRACE_INFO) && simulator->getRunSummary(summary))
        tracer->info(text(summary, wall, batch.writtenFiles()));
    return status;
}
