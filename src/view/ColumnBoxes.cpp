#include "view/ColumnBoxes.h"

#include "kernel/domain/DepositionSet.h"

void ColumnBoxes::append(const DepositionSet& set, const FaciesColorMap& colors, int coding,
                         std::vector<ColumnBox>& out)
{
    const std::vector<DepositionUnit>& units = set.units();
    // The stack keeps the age of its top; the ages below follow from the deltas.
    uint32_t age = set.get_age();
    for (const DepositionUnit& u : units)
        age -= u.age_delta();
    double z = set.get_zbot();
    const size_t first = out.size();
    for (const DepositionUnit& u : units)
    {
        age += u.age_delta();
        const double zbot = z;
        z += u.thickness();
        if (u.thickness_steps() == 0 || u.facies().family() == 0)
            continue;
        const ViewColor color = colors.facies_color(u.facies(), age, coding);
        if (out.size() > first)
        {
            ColumnBox& last = out.back();
            if (last.facies == u.facies() && last.color == color && last.ztop >= zbot - 1e-9)
            {
                last.ztop = z;
                last.age = age;
                continue;
            }
        }
        out.push_back(ColumnBox{zbot, z, u.facies(), age, color});
    }
}

void ColumnBoxes::top_info(const DepositionSet& set, Facies& facies, uint32_t& age)
{
    age = set.get_age();
    const std::vector<DepositionUnit>& units = set.units();
    for (auto it = units.rbegin(); it != units.rend(); ++it)
    {
        if (it->thickness_steps() > 0 && it->facies().family() != 0)
        {
            facies = it->facies();
            return;
        }
        age -= it->age_delta();
    }
    facies = Facies();
}
