#pragma once
// The cells of the upstream edge of the domain where a new channel may enter,
// each rated so that low cells are likelier, and the draw among them.

#include <vector>

class Domain;
class SeedGenerator;

// One entry cell: its weight in the draw, its grid indices and its flags.
struct PairTopoIndex
{
    double weight = 0.;
    int ix = 0;
    int iy = 0;
    bool selected = false;
    bool tried = false;
};

class EntryPoints : public std::vector<PairTopoIndex>
{
public:
    // Lists the cells of the grid edge that the flow enters, inside the margins.
    void calculate(const Domain& domain, bool channel_exists);
    // Weights each entry by its depth below the highest entry plus 0.01 * value; clears the flags.
    void valuate(const Domain& domain, double value);
    // Draws an entry not tried yet, marks it and copies it; false when none is drawn.
    bool select_next(SeedGenerator* seed, PairTopoIndex& entry);
    // Empties the list and the bounds of the draw.
    void clear();

    double lower_bound() const { return _lower; }
    double upper_bound() const { return _sum; }

private:
    double _lower = 0.;
    double _sum = 0.;
};
