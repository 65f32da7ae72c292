#pragma once
// The tick step of the scales of the 2D views: a power of ten subdivided by
// 0.5, 0.5, 0.4 in turn (steps 1, 0.5, 0.25, 0.1 of each power) while the
// ticks stay far enough apart on the screen.

class ScaleSteps
{
public:
    static constexpr double factors[3] = {0.5, 0.5, 0.4};

    // `range` metres shown over `pixels` pixels; ticks no closer than `min_gap` pixels.
    static double tick_step(double range, double pixels, double min_gap);
};
