#pragma once
// The file form of a channel: its points in geographic coordinates, elevation
// as z, saved under the title "Centerline".

#include "kernel/files/PointsSet.h"

#include <string>

class Centerline : public PointsSet
{
public:
    Centerline() = default;
    ~Centerline() override = default;
    Centerline(const Centerline&) = default;
    Centerline& operator=(const Centerline&) = default;

    using PointsSet::write;
    bool write(const std::string& path);
};
