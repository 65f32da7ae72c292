// Events of the network that change the channel's course or lay deposits
// beyond it: avulsions, floods, draping, peat, aggradation and ghost
// migration. None of them is simulated yet: each entry point leaves the
// network and the domain untouched and returns a neutral value.

#include "kernel/Network.h"

bool Network::regional_avulsion(double /*scale*/)
{
    // Regional avulsion is not simulated yet.
    return false;
}

void Network::local_avulsion(bool /*no_splay*/, double /*p_splay2*/, double /*p_distrib*/, bool /*forced*/)
{
    // Local avulsion is not simulated yet.
}

void Network::make_overbank(double /*extension*/, double /*grdec*/, double /*gr*/, double /*h0*/,
                            bool /*rand*/)
{
    // Overbank flooding is not simulated yet.
}

double Network::next_extension(double extension, bool /*rand*/)
{
    // Random flood extension is not simulated yet: the extension is kept.
    return extension;
}

void Network::make_pel_drap(double /*interval*/)
{
    // Pelagic and draping background deposits are not simulated yet.
}

void Network::make_draping(double /*thickness*/, int /*family*/)
{
    // Uniform draping is not simulated yet.
}

void Network::make_wetland(double /*fraction*/)
{
    // Wetland peat is not simulated yet.
}

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
