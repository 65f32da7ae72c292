#include "kernel/channel/CutOff.h"

CutOff::CutOff(ChannelPoint* upstream, ChannelPoint* downstream)
    : _upstream(upstream), _downstream(downstream)
{
}
