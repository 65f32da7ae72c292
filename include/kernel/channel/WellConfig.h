#pragma once
// The channel and flow values a conditioning well steers with, set on a well
// and on all its linked wells whenever one of them changes.

class iParameters;

struct WellConfig
{
    double channelDepth = 0.;
    double channelWidth = 0.;
    double leveeWidth = 0.;
    // Unit vector of the main flow direction.
    double flowX = 1.;
    double flowY = 0.;
    // Thinnest gap between sands that the log keeps; -1 keeps them all.
    double closure = -1.;
    // Farthest distance from the bank at which a well steers migration.
    double influence = 0.;

    // The values the registry holds now, with the given flow direction.
    static WellConfig from_parameters(const iParameters& parameters, double flowX, double flowY);
};
