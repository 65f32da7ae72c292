#include "kernel/network/EntryPoints.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/DistributionGenerator.h"

#include <algorithm>
#include <cmath>

void EntryPoints::clear()
{
    std::vector<PairTopoIndex>::clear();
    _lower = 0.;
    _sum = 0.;
}

// The entry side is the grid edge facing the flow: one row or one column of
// the domain proper, along the axis the flow crosses most directly.
void EntryPoints::calculate(const Domain& domain, bool /*channel_exists*/)
{
    clear();
    const Vector2D f = domain.get_flow_direction();
    const double fx = f.get_abscissa();
    const double fy = f.get_ordinate();
    const int nx = domain.getNx();
    const int ny = domain.getNy();
    const bool along_x =
        std::fabs(fy) < MP_EPSILON || (std::fabs(fx) >= MP_EPSILON && std::fabs(fx) >= std::fabs(fy));
    PairTopoIndex entry;
    if (along_x)
    {
        entry.ix = fx >= 0. ? 0 : nx - 1;
        for (int j = 0; j < ny; j++)
        {
            entry.iy = j;
            push_back(entry);
        }
    }
    else
    {
        entry.iy = fy >= 0. ? 0 : ny - 1;
        for (int i = 0; i < nx; i++)
        {
            entry.ix = i;
            push_back(entry);
        }
    }
}

// Lower cells are likelier; `value` keeps the highest cell drawable.
void EntryPoints::valuate(const Domain& domain, double value)
{
    MP_ASSERT_TEXT(!empty(), "!empty()");
    double highest = MP_MIN_REAL_VALUE;
    for (PairTopoIndex& e : *this)
    {
        e.weight = domain.get_topo_extrapolated(true, true, e.ix, e.iy);
        e.selected = false;
        e.tried = false;
        highest = std::max(highest, e.weight);
    }
    const double top = highest + 0.01 * value;
    _lower = 0.;
    _sum = 0.;
    for (PairTopoIndex& e : *this)
    {
        e.weight = top - e.weight;
        _sum += e.weight;
    }
}

bool EntryPoints::select_next(SeedGenerator* seed, PairTopoIndex& entry)
{
    if (empty())
        return false;
    UniformDistributionGenerator uniform(seed, _lower, _sum);
    for (std::size_t draw = 0; draw < size(); draw++)
    {
        const double alea = uniform();
        double tot = 0.;
        std::size_t k = 0;
        for (; k < size(); k++)
        {
            tot += (*this)[k].weight;
            if (tot >= alea)
                break;
        }
        MP_ASSERT_TEXT(tot >= alea, "tot >= alea");
        PairTopoIndex& e = (*this)[k];
        if (!e.tried)
        {
            e.tried = true;
            e.selected = true;
            entry = e;
            return true;
        }
    }
    return false;
}
