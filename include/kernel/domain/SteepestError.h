#pragma once
// Why the search for a new channel course stopped; Domain::steepest_error gives the text.

enum SteepestError
{
    STEEPEST_CUTOFF = -1,           // the new course met the old channel
    STEEPEST_OK = 0,                // the course reached its margin
    STEEPEST_SELF_INTERSECTION = 1, // the walk came back on its own path
    STEEPEST_EXIT_WRONG_MARGIN = 2, // the walk left through the other margin
    STEEPEST_TOO_SHORT = 3,         // the course holds too few nodes
    STEEPEST_DEPRESSION_TRAP = 4,   // no neighbour left to go to
    STEEPEST_OUTSIDE_DOMAIN = 5,    // the walk left the extrapolated grid
    STEEPEST_BOTH_IN_MARGINS = 6,   // old and new courses both outside the domain proper
    STEEPEST_INCOMPLETE = 7,        // the course could not be completed to the margins
};
