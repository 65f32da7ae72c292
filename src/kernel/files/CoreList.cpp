#include "kernel/files/CoreList.h"

Core* CoreList::find(const std::string& key)
{
    for (Core& core : _cores)
        if (core.key() == key)
            return &core;
    return nullptr;
}

const Core* CoreList::find(const std::string& key) const
{
    for (const Core& core : _cores)
        if (core.key() == key)
            return &core;
    return nullptr;
}

std::vector<double> CoreList::facies_heights() const
{
    std::vector<double> heights(CoreSample::MP_MAX_FACIES_ID + 1, 0.);
    for (const Core& core : _cores)
        for (const CoreSample& sample : core.getSamples())
            heights[sample.getFacies()] += sample.getHeight();
    return heights;
}
