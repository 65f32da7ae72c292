// The assembly of a simulator: the driver with the batch reader above it, as
// every program and the Python package get it.

#include "interface/iSimulator.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/common/Constants.h"
#include "kernel/driver/Simulator.h"

namespace
{
int launch_batch(iSimulator& simulator, std::string const& file)
{
    NewJournalFile journal(&simulator);
    if (!journal.load(file))
        return MP_STATUS_FAILURE;
    return journal.launch();
}
} // namespace

iSimulator* iSimulator::createSimulator()
{
    auto* simulator = new Simulator();
    simulator->setBatchLauncher(launch_batch);
    return simulator;
}

void iSimulator::deleteSimulator(iSimulator* simulator)
{
    delete simulator;
}

iSimulator* iSimulator::duplicateSimulator(iSimulator const* simulator)
{
    const auto* source = dynamic_cast<const Simulator*>(simulator);
    if (source == nullptr)
        return nullptr;
    auto* copy = new Simulator();
    copy->duplicate(*source);
    return copy;
}
