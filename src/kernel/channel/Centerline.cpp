#include "kernel/channel/Centerline.h"

bool Centerline::write(const std::string& path)
{
    return PointsSet::write(path, "Centerline");
}
