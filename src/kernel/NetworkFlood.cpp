// What the river lays outside its channel: overbank floods, background
// draping and pelagic rain, and peat in the low parts of the floodplain.

#include "kernel/Network.h"

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
