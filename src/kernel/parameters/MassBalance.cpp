#include "kernel/parameters/MassBalance.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

MassBalance::MassBalance(bool active) : _active(active) {}

MassBalance::~MassBalance() = default;

void MassBalance::setMeshArea(double area)
{
    MP_ASSERT(area > 0.);
    _mesh_area = area;
}

void MassBalance::setInitialVolume(const std::vector<double>& volumes)
{
    MP_ASSERT(volumes.size() == static_cast<std::size_t>(MD_NB_CLASS_GR));
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
        _input[c] = volumes[c] / _mesh_area;
    resetVolume();
}

void MassBalance::setInitialVolume(double total, const std::vector<double>& proportions)
{
    MP_ASSERT(proportions.size() == static_cast<std::size_t>(MD_NB_CLASS_GR));
    std::vector<double> volumes(proportions);
    for (double& v : volumes)
        v *= total;
    setInitialVolume(volumes);
}

void MassBalance::resetVolume()
{
    _available = _input;
    _eroded.fill(0.);
    _deposited.fill(0.);
}

int MassBalance::checked_class(const Facies& facies)
{
    const int icl = facies.granulo_class();
    MP_ASSERT_TEXT(icl >= 0 && icl < MD_NB_CLASS_GR, "icl >= 0 && icl < MD_NB_CLASS_GR");
    return icl;
}

void MassBalance::eroded_accounts(double thickness, const Facies& facies)
{
    if (is_external(facies.family()))
        return;
    const int icl = checked_class(facies);
    MP_ASSERT_TEXT(thickness >= 0., "thickness >= 0.");
    // Eroded sediment joins the load whether or not channel fills draw on it.
    _eroded[icl] += thickness;
    _available[icl] += thickness;
}

void MassBalance::deposited_accounts(double thickness, const Facies& facies, GranuloList& list)
{
    if (!_active || is_external(facies.family()))
    {
        list.push_back(facies.granulo_value(), thickness);
        return;
    }
    if (facies.is_erodable())
    {
        withdraw_coarsest_first(thickness, list);
        return;
    }
    // Floods and splays keep the class they were asked for, available or not.
    const int icl = checked_class(facies);
    _deposited[icl] += thickness;
    _available[icl] -= thickness;
    list.push_back(facies.granulo_value(), thickness);
}

// A channel fill takes the coarsest sediment the load holds; what no class
// can supply is taken on the finest class, which then runs into debt.
void MassBalance::withdraw_coarsest_first(double thickness, GranuloList& list)
{
    if (thickness <= 0.)
        return;
    double remaining = thickness;
    for (int c = MD_NB_CLASS_GR - 1; c >= 0 && remaining > 0.; --c)
    {
        if (_available[c] <= 0.)
            continue;
        const double t = std::min(remaining, _available[c]);
        remaining -= t;
        _available[c] -= t;
        _deposited[c] += t;
        list.push_back(Facies::class_to_granulo(c), t);
    }
    if (remaining > 0.)
    {
        _deposited[0] += remaining;
        _available[0] -= remaining;
        list.push_back(Facies::class_to_granulo(0), remaining);
    }
}

std::ostream& operator<<(std::ostream& out, const MassBalance& mb)
{
    const std::ios_base::fmtflags flags = out.flags();
    const std::streamsize precision = out.precision();
    const double area = mb.getMeshArea();

    out << std::setw(13) << "Gr. Class |" << std::setw(13) << "Input Vol. |" << std::setw(13) << "Eroded |"
        << std::setw(13) << "Deposited |" << std::setw(13) << "Eroded-Dep.|" << std::setw(13) << "Avail. Vol."
        << "\n";
    out << std::setprecision(3);
    double sums[5] = {0., 0., 0., 0., 0.};
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
    {
        const double row[5] = {mb.getInput()[c] * area, mb.getEroded()[c] * area, mb.getDeposited()[c] * area,
                               (mb.getEroded()[c] - mb.getDeposited()[c]) * area,
                               mb.getAvailable()[c] * area};
        out << std::setw(11) << c;
        for (int k = 0; k < 5; ++k)
        {
            out << " |" << std::setw(11) << row[k];
            sums[k] += row[k];
        }
        out << "\n";
    }
    out << std::setw(11) << "All";
    for (double s : sums)
        out << " |" << std::setw(11) << s;
    out << "\n";

    out.flags(flags);
    out.precision(precision);
    return out;
}
