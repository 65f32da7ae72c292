// How the channel leaves its bed: regional avulsions that trace a new course
// from an entry point, and local ones that breach a levee.

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
