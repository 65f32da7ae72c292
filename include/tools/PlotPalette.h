#pragma once
// The colours of the plots, in one place: a fixed colour per facies family
// (dark enough for a thin curve on white), colours by rank for other
// series, and the ramp of maps.

struct PlotColour
{
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
};

class PlotPalette
{
public:
    // Families 0 to 13; any other code is grey.
    static PlotColour facies(int family);
    static PlotColour by_rank(int rank);
    // The colour of a series: its facies family's, or its rank's.
    static PlotColour series(int colour, int rank);
    // From pale yellow (t = 0) through orange to dark brown (t = 1): sandier is darker.
    static PlotColour ramp(double t);
};
