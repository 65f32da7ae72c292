#pragma once
// Small helpers shared by the files of Network: the text of a grid node and of
// a course-finding attempt in traces, the rounding of positions to node
// indices, and the freeing of a chain of points that never became a channel.

#include "kernel/channel/ChannelPoint.h"

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

// "   Attempt for <what> Iter <it> #<n> from [i, j] to [i, j]".
inline std::string attempt_text(const char* what, unsigned int iteration, int attempt, int i0, int j0, int i1,
                                int j1)
{
    std::ostringstream text;
    text << "   Attempt for " << what << " Iter " << iteration << " #" << attempt << " from "
         << node_text(i0, j0) << " to " << node_text(i1, j1);
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
