// What the driver measures on the block and the channel, forecasts from the
// parameters, and the inference of expert parameters from simple requests.

#include "kernel/Simulator.h"

#include "kernel/Constants.h"
#include "kernel/Core.h"
#include "kernel/CoreList.h"
#include "kernel/Domain.h"
#include "kernel/Network.h"
#include "kernel/Parameters.h"
#include "kernel/Tracer.h"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{
double no_measure()
{
    return MP_UNDEF_REAL;
}
} // namespace

#define SARVO_MEASURE_NOT_AVAILABLE(name)                                                                    \
    double Simulator::name()                                                                                 \
    {                                                                                                        \
        _tracer->warning(#name " is not available yet");                                                     \
        return no_measure();                                                                                 \
    }

SARVO_MEASURE_NOT_AVAILABLE(getForecastSand)
SARVO_MEASURE_NOT_AVAILABLE(getForecastAggradationRate)
SARVO_MEASURE_NOT_AVAILABLE(getForecastMigrationRate)
SARVO_MEASURE_NOT_AVAILABLE(getForecastMeanVelocityPerturbation)
SARVO_MEASURE_NOT_AVAILABLE(getPBProportion)
SARVO_MEASURE_NOT_AVAILABLE(getSandProportion)
SARVO_MEASURE_NOT_AVAILABLE(getAggradationRate)
SARVO_MEASURE_NOT_AVAILABLE(getMigrationRate)
SARVO_MEASURE_NOT_AVAILABLE(getMeanVelocityPerturbation)
SARVO_MEASURE_NOT_AVAILABLE(getSinuosity)
SARVO_MEASURE_NOT_AVAILABLE(getTortuosity)
SARVO_MEASURE_NOT_AVAILABLE(getWavelength)
SARVO_MEASURE_NOT_AVAILABLE(getSandBodyExtension)
SARVO_MEASURE_NOT_AVAILABLE(getIsbx)
SARVO_MEASURE_NOT_AVAILABLE(getMeanIsbx)
SARVO_MEASURE_NOT_AVAILABLE(getMeanNbCutoff)

#undef SARVO_MEASURE_NOT_AVAILABLE

void Simulator::dumpStats()
{
    // Statistics lines are written by the research tier only, and their values are not measured yet.
    if (!_parameters->usingResearch())
        return;
}

unsigned int Simulator::getNbCutoff()
{
    _tracer->warning("getNbCutoff is not available yet");
    return 0;
}

std::string Simulator::getInferenceStats()
{
    notAvailable("getInferenceStats");
    return std::string();
}

std::string Simulator::getTauCutStats() const
{
    notAvailable("getTauCutStats");
    return std::string();
}

bool Simulator::applyNexus(const std::vector<double>&, bool, std::string& message)
{
    message = "applyNexus is not available yet";
    return notAvailable("applyNexus");
}

bool Simulator::applyNeqsus(const std::vector<double>&, bool, std::string& message)
{
    message = "applyNeqsus is not available yet";
    return notAvailable("applyNeqsus");
}

bool Simulator::nexusFromWells(const CoreList&, std::vector<double>&, std::string& message)
{
    message = "nexusFromWells is not available yet";
    return notAvailable("nexusFromWells");
}
