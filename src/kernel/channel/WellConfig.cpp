#include "kernel/channel/WellConfig.h"

#include "interface/iParameters.h"

WellConfig WellConfig::from_parameters(const iParameters& parameters, double flowX, double flowY)
{
    WellConfig config;
    config.channelDepth = parameters.getParamDouble("CHNL_MAX_DEPTH");
    config.channelWidth = parameters.getParamDouble("CHNL_WIDTH");
    config.leveeWidth = parameters.getParamDouble("AG_LV_WIDTH");
    config.flowX = flowX;
    config.flowY = flowY;
    config.closure = parameters.getParamBool("COND_WELL_CLOSURE_ON")
                         ? parameters.getParamDouble("COND_WELL_CLOSURE")
                         : -1.;
    config.influence = parameters.getCondMigWellsFactor() * config.channelWidth;
    return config;
}
