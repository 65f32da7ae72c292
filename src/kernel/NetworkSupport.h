#pragma once
// Small helpers shared by the files of Network: the text of a grid node in
// traces, the rounding of positions to node indices, and the freeing of a
// chain of points that never became a channel.

#include "kernel/ChannelPoint.h"

#include <cmath>
#include <sstream>
#include <string>

namespace network_support
{

inline std::string node_text(int i, int j)
{
    std::ostringstream text;
    text << "[" << i << ", " << j << "]";
    return text.str();
}

inline int round_index(double v)
{
    return static_cast<int>(std::lround(v));
}

inline void delete_chain(ChannelPoint* head)
{
    while (head != nullptr)
    {
        ChannelPoint* next = head->next();
        delete head;
        head = next;
    }
}

} // namespace network_support
