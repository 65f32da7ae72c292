// How the channel rises and sinks towards its equilibrium elevation, and how a
// flood thickness spreads from the channel over the land.

#include "kernel/Network.h"

void Network::create_aggrad_map(int& ny_below, std::vector<ChannelGridPoint>& points)
{
    // The flood map is not simulated yet: no map, no wet point.
    ny_below = 0;
    points.clear();
    _amap.reset();
}

void Network::compute_aggrad_map(int /*ny_below*/, const std::vector<ChannelGridPoint>& /*points*/)
{
    // Flood spreading is not simulated yet.
}

bool Network::compute_deposit(AggradInfo* /*local*/)
{
    // Flood spreading is not simulated yet: no deposit.
    return false;
}

void Network::danielsson(Grid2D<IPos>& /*vectors*/) const
{
    // The distance transform is not simulated yet.
}

void Network::go_to_ep(double /*step*/)
{
    // Moves towards the equilibrium elevation are not simulated yet.
}

void Network::make_channel_lag(double /*step*/)
{
    // Channel lag and aggradation are not simulated yet.
}

void Network::make_incision(double /*step*/)
{
    // Incision is not simulated yet.
}

void Network::make_ghost_migration(unsigned int /*years*/, double /*thickness*/)
{
    // Ghost migration is not simulated yet: no ghost channel is made.
}

void Network::end_ghost_migration()
{
    // Ghost migration is not simulated yet: there is never a ghost to end.
}
