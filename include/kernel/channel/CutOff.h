#pragma once
// The two ends of a loop of the channel that is about to be cut off.

class ChannelPoint;

class CutOff
{
public:
    CutOff(ChannelPoint* upstream, ChannelPoint* downstream);

    ChannelPoint* upstream() const { return _upstream; }
    ChannelPoint* downstream() const { return _downstream; }
    void downstream(ChannelPoint* cp) { _downstream = cp; }

private:
    ChannelPoint* _upstream;
    ChannelPoint* _downstream;
};
