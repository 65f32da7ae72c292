#include "kernel/driver/Simulator.h"
#include "kernel/network/Network.h"

bool Simulator::getRunSummary(RunSummary& summary)
{
    if (!ready(false))
        return false;
    RunSummary out;
    out.iterations = _network->getAge();
    out.cutoffs = _network->nb_cutoffs_total();
    out.avulsions = _network->nb_avulsions();
    out.floods = _network->nb_floods();
    out.splays = _network->nb_splays();
    out.net_to_gross = getSandProportion();
    for (const WellStats& stats : getWellStats())
        out.wells.push_back({stats.name, stats.honored, stats.units});
    summary = out;
    return true;
}
