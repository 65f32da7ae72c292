// What the driver measures on the block and the channel, what it forecasts
// from the parameters, the statistics lines built from both, and the door to
// the inference of expert parameters from simple requests.

#include "kernel/driver/Simulator.h"

#include "kernel/channel/Channel.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace
{
constexpr double PER_10000 = 10000.;
// The index counts, in tenths of a channel width, how much wider than the
// channel its sand body has grown: a straight channel gives 0, a channel
// that swept twenty widths gives 190.
constexpr double ISBX_SCALE = 10.;
constexpr int NB_FAMILIES = 14;
constexpr unsigned char FAMILY_POINT_BAR = 2;
constexpr unsigned char FAMILY_MUD_PLUG = 9;
constexpr unsigned char FAMILY_HEMIPELAGIC_PLUG = 10;

double undefined()
{
    return MP_UNDEF_REAL;
}

bool is_defined(double value)
{
    return std::isfinite(value) && value < MP_UNDEF_REAL;
}

// A measure that cannot be taken (no channel, a channel too short) is undefined.
double guarded(const std::function<double()>& measure)
{
    try
    {
        return measure();
    }
    catch (...)
    {
        return undefined();
    }
}

// A measure of the current channel; undefined without one or when it cannot be taken.
double channel_measure(const Network* network, const std::function<double(Channel*)>& measure)
{
    Channel* channel = network != nullptr ? network->channel() : nullptr;
    if (channel == nullptr)
        return undefined();
    return guarded([&measure, channel] { return measure(channel); });
}

double ratio(double numerator, double denominator)
{
    if (!is_defined(numerator) || !is_defined(denominator) || std::fabs(denominator) < 1e-30)
        return undefined();
    return numerator / denominator;
}

typedef std::pair<double, double> Position;

// Distance from p to the segment [a, b].
double segment_distance(const Position& p, const Position& a, const Position& b)
{
    const double abx = b.first - a.first;
    const double aby = b.second - a.second;
    const double apx = p.first - a.first;
    const double apy = p.second - a.second;
    const double length2 = abx * abx + aby * aby;
    double t = length2 > 0. ? (apx * abx + apy * aby) / length2 : 0.;
    t = std::max(0., std::min(1., t));
    const double dx = apx - t * abx;
    const double dy = apy - t * aby;
    return std::sqrt(dx * dx + dy * dy);
}

double polyline_distance(const Position& p, const std::vector<Position>& line)
{
    if (line.size() == 1)
        return std::hypot(p.first - line.front().first, p.second - line.front().second);
    double best = MP_MAX_REAL_VALUE;
    for (size_t k = 1; k < line.size(); ++k)
        best = std::min(best, segment_distance(p, line[k - 1], line[k]));
    return best;
}

// Semicolon-separated values, with ten significant digits.
class Line
{
public:
    Line() { _out.precision(10); }
    Line& operator<<(double value)
    {
        separate();
        _out << value;
        return *this;
    }
    Line& operator<<(const std::string& value)
    {
        separate();
        _out << value;
        return *this;
    }
    std::string str() const { return _out.str(); }

private:
    void separate()
    {
        if (!_first)
            _out << ';';
        _first = false;
    }
    std::ostringstream _out;
    bool _first = true;
};
} // namespace

// ---------------------------------------------------------------------------
// Block measures

std::vector<double> Simulator::familyThicknesses() const
{
    std::vector<double> sums(NB_FAMILIES + 2, 0.);
    if (!ready(false))
        return sums;
    const int nx = _domain->getNx();
    const int ny = _domain->getNy();
    for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i)
            for (const DepositionUnit& unit : _domain->getObject(i, j).units())
                sums[unit.facies().family()] += unit.thickness();
    const double nodes = static_cast<double>(nx) * ny;
    for (double& sum : sums)
        sum /= nodes;
    sums.resize(NB_FAMILIES);
    return sums;
}

namespace
{
// Everything the simulation laid down: the undefined family of the initial
// fills is not a deposit of the system.
double deposited(const std::vector<double>& families)
{
    double total = 0.;
    for (size_t f = 1; f < families.size(); ++f)
        total += families[f];
    return total;
}

double sand_thickness(const std::vector<double>& families)
{
    double sand = 0.;
    for (unsigned char f = 1; f < families.size(); ++f)
        if (Facies::is_sand(f))
            sand += families[f];
    return sand;
}
} // namespace

double Simulator::getSandProportion()
{
    const std::vector<double> families = familyThicknesses();
    const double total = deposited(families);
    return total > 0. ? sand_thickness(families) / total : undefined();
}

double Simulator::getPBProportion()
{
    const std::vector<double> families = familyThicknesses();
    const double total = deposited(families);
    return total > 0. ? families[FAMILY_POINT_BAR] / total : undefined();
}

double Simulator::getAggradationRate()
{
    const unsigned int age = getAge();
    if (age == 0)
        return undefined();
    return deposited(familyThicknesses()) * PER_10000 / age;
}

// ---------------------------------------------------------------------------
// Channel measures

// Read from the points as the last flow computation left them: asking the
// channel to compute its perturbation again would integrate the flow once more
// and change the course of the next migration.
double Simulator::getMeanVelocityPerturbation()
{
    return channel_measure(_network.get(),
                           [](Channel* c)
                           {
                               double sum = 0.;
                               for (const ChannelPoint* cp = c->first(); cp != nullptr; cp = cp->next())
                                   sum += std::fabs(cp->flow().u1());
                               return sum / c->number_of_points();
                           });
}

double Simulator::getSinuosity()
{
    // Over the channel's own chord: the domain's reference points lie beyond the channel's ends.
    return channel_measure(_network.get(),
                           [](Channel* c) { return c->compute_real_sinuosity(false, nullptr); });
}

double Simulator::getTortuosity()
{
    return channel_measure(_network.get(),
                           [](Channel* c) { return c->compute_real_tortuosity(false, nullptr); });
}

double Simulator::getWavelength()
{
    return channel_measure(_network.get(), [](Channel* c) { return c->compute_real_wavelength(); });
}

double Simulator::getSandBodyExtension()
{
    return channel_measure(_network.get(), [](Channel* c) { return c->compute_sand_body_extension(); });
}

unsigned int Simulator::getNbCutoff()
{
    return _network ? _network->nb_cutoffs_total() : 0u;
}

// Cutoffs per channel life: the count of lives is one more than the avulsions.
double Simulator::getMeanNbCutoff()
{
    if (!_network)
        return undefined();
    return static_cast<double>(_network->nb_cutoffs_total()) / (_network->nb_avulsions() + 1.);
}

// ---------------------------------------------------------------------------
// Sand bodies extension index and migration

Simulator::Positions Simulator::channelPointsInDomain() const
{
    Positions points;
    const Channel* channel = _network ? _network->channel() : nullptr;
    if (channel == nullptr)
        return points;
    const double xmax = (_domain->getNx() - 1) * _domain->getDx();
    const double ymax = (_domain->getNy() - 1) * _domain->getDy();
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
    {
        const double x = cp->get_abscissa();
        const double y = cp->get_ordinate();
        if (x >= 0. && x <= xmax && y >= 0. && y <= ymax)
            points.emplace_back(x, y);
    }
    return points;
}

bool Simulator::sameChannelLife() const
{
    const Channel* channel = _network ? _network->channel() : nullptr;
    return channel != nullptr && channel == _beltChannel && channel->birth_iter() == _beltBirth &&
           _network->nb_avulsions() == _beltAvulsions && _network->getAge() >= _beltAge;
}

void Simulator::sweepBelt()
{
    const Channel* channel = _network ? _network->channel() : nullptr;
    if (channel == nullptr)
    {
        _belt.clear();
        _beltChannel = nullptr;
        return;
    }
    if (!sameChannelLife())
    {
        _belt.clear();
        _migrationSample.clear();
        _migrationRate = undefined();
        _beltChannel = channel;
        _beltBirth = channel->birth_iter();
        _beltAvulsions = _network->nb_avulsions();
    }
    _beltAge = _network->getAge();
    sweep(_belt);
}

void Simulator::sweep(Belt& belt) const
{
    // Reaches of one wavelength along the flow, counted from the upstream end
    // of the grid; only whole reaches inside the grid are kept.
    const Vector2D flow = _domain->get_flow_direction();
    const double fx = flow.get_abscissa();
    const double fy = flow.get_ordinate();
    const double xmax = (_domain->getNx() - 1) * _domain->getDx();
    const double ymax = (_domain->getNy() - 1) * _domain->getDy();
    double amin = MP_MAX_REAL_VALUE;
    double amax = MP_MIN_REAL_VALUE;
    for (const Point2D& corner : {Point2D(0., 0.), Point2D(xmax, 0.), Point2D(0., ymax), Point2D(xmax, ymax)})
    {
        const double along = corner.get_abscissa() * fx + corner.get_ordinate() * fy;
        amin = std::min(amin, along);
        amax = std::max(amax, along);
    }
    const double reach = std::max(_network->channel()->width(), getDouble("CHNL_WAVELENGTH"));
    const int reaches = std::max(1, static_cast<int>(std::floor((amax - amin) / reach)));
    for (const Position& p : channelPointsInDomain())
    {
        const double along = p.first * fx + p.second * fy;
        const double across = p.second * fx - p.first * fy;
        const int k = std::min(reaches - 1, static_cast<int>(std::floor((along - amin) / reach)));
        auto found = belt.find(k);
        if (found == belt.end())
            belt[k] = std::make_pair(across, across);
        else
        {
            found->second.first = std::min(found->second.first, across);
            found->second.second = std::max(found->second.second, across);
        }
    }
}

// Mean lateral extent of the sand body swept since the last avulsion, in
// channel widths beyond the channel's own, tenfold.
double Simulator::isbxOf(const Belt& belt) const
{
    const Channel* channel = _network->channel();
    if (channel == nullptr || belt.empty() || channel->width() <= 0.)
        return undefined();
    double sum = 0.;
    for (const auto& entry : belt)
        sum += entry.second.second - entry.second.first;
    const double extent = sum / belt.size();
    return ISBX_SCALE * extent / channel->width();
}

void Simulator::sampleChannelMeasures()
{
    if (!ready(false))
        return _isbxHistory.push_back(undefined());
    sweepBelt();
    sampleMigration();
    _isbxHistory.push_back(isbxOf(_belt));
}

double Simulator::getIsbx()
{
    if (!ready(false) || _network->channel() == nullptr)
        return undefined();
    // The belt sampled so far, and where the channel stands now.
    Belt belt = sameChannelLife() ? _belt : Belt();
    sweep(belt);
    return isbxOf(belt);
}

double Simulator::getMeanIsbx()
{
    double sum = 0.;
    int count = 0;
    for (double value : _isbxHistory)
        if (is_defined(value))
        {
            sum += value;
            ++count;
        }
    return count > 0 ? sum / count : undefined();
}

// Mean distance from the channel to where it was, per 10000 iterations.
double Simulator::measuredMigration(const Positions& before, unsigned int ageBefore) const
{
    const unsigned int age = _network->getAge();
    const Positions now = channelPointsInDomain();
    if (before.empty() || now.empty() || age <= ageBefore)
        return undefined();
    double sum = 0.;
    for (const Position& p : now)
        sum += polyline_distance(p, before);
    return sum / now.size() * PER_10000 / (age - ageBefore);
}

void Simulator::sampleMigration()
{
    const unsigned int age = _network->getAge();
    if (!_migrationSample.empty() && age > _migrationAge)
        _migrationRate = measuredMigration(_migrationSample, _migrationAge);
    _migrationSample = channelPointsInDomain();
    _migrationAge = age;
}

double Simulator::getMigrationRate()
{
    if (!ready(false) || !sameChannelLife())
        return undefined();
    if (is_defined(_migrationRate))
        return _migrationRate;
    return measuredMigration(_migrationSample, _migrationAge);
}

// ---------------------------------------------------------------------------
// Forecasts

double Simulator::getForecastSand()
{
    return _meanderCalculator->forecast_sand_proportion();
}

double Simulator::getForecastAggradationRate()
{
    return _meanderCalculator->forecast_aggradation_rate();
}

double Simulator::getForecastMigrationRate()
{
    return _meanderCalculator->forecast_migration_rate();
}

double Simulator::getForecastMeanVelocityPerturbation()
{
    return _meanderCalculator->forecast_mean_velocity_perturbation();
}

// ---------------------------------------------------------------------------
// Statistics lines

std::string Simulator::statsLine(bool header)
{
    const bool props = _tracer->generateStatsProps();
    if (header)
        return Tracer::statsHeader(props);
    if (!ready(false))
        return std::string();
    const MeanderCalculator& mc = *_meanderCalculator;
    Channel* channel = _network->channel();

    const unsigned int age = getAge();
    const std::vector<double> families = familyThicknesses();
    const double total = deposited(families);
    const double wavelength = getWavelength();
    const double extension = getSandBodyExtension();
    // As getAggradationRate, without scanning the block again.
    const double aggradation = age > 0 ? total * PER_10000 / age : undefined();
    const double sand = total > 0. ? sand_thickness(families) / total : undefined();
    const double sand_rate = age > 0 ? sand_thickness(families) * PER_10000 / age : undefined();
    // The floods' share of the fines: the abandoned channels' plugs are forecast apart.
    const double plug_rate =
        age > 0 ? (families[FAMILY_MUD_PLUG] + families[FAMILY_HEMIPELAGIC_PLUG]) * PER_10000 / age
                : undefined();
    const double mean_vp = getMeanVelocityPerturbation();
    const double migration = getMigrationRate();
    double lo = undefined();
    double hi = undefined();
    if (channel != nullptr)
        channel->max_depth_limits(lo, hi);
    const double forecast_sand = mc.forecast_sand_proportion();

    Line line;
    // Abstract time counts how far meanders have grown: erodibility times slope per iteration.
    line << static_cast<double>(age) << age * getDouble("EROD_COEF") * getDouble("DOMAIN_SLOPE")
         << _domain->min_elevation_geo() << static_cast<double>(_network->nb_cutoffs_total())
         << static_cast<double>(_network->nb_chute_cutoffs()) << static_cast<double>(_network->nb_avulsions())
         << getSinuosity() << getTortuosity() << extension << ratio(extension, getDouble("CHNL_WAVELENGTH"))
         << ratio(extension, wavelength) << getIsbx() << lo << hi;
    if (props)
        for (int f = 1; f < NB_FAMILIES; ++f)
            if (f != FAMILY_POINT_BAR)
                line << (total > 0. ? families[f] / total : undefined());
    line << (total > 0. ? families[FAMILY_POINT_BAR] / total : undefined())
         << forecast_sand * MeanderCalculator::kpb_fitted() << sand << forecast_sand << aggradation
         << mc.forecast_aggradation_rate()
         << channel_measure(_network.get(), [](Channel* c) { return c->compute_real_sinuosity_allen(); })
         << mc.default_sinuo(false)
         << ratio(is_defined(aggradation) && is_defined(sand_rate)
                      ? aggradation - sand_rate - plug_rate - getDouble("AG_OB_PEL_DRAP_INT")
                      : undefined(),
                  mc.overbank_base())
         << mc.overbank_factor() << ratio(migration, mc.migration_base(mean_vp))
         << MeanderCalculator::kmig_fitted() << ratio(mean_vp, mc.velocity_perturbation_base())
         << MeanderCalculator::kvp_fitted() << _network->channel_current_max_depth()
         << getDouble("CHNL_MAX_DEPTH") << wavelength << getDouble("CHNL_WAVELENGTH")
         << channel_measure(_network.get(), [](Channel* c) { return c->mean_flow_velocity(); })
         << mc.forecast_velocity() << mean_vp << mc.forecast_mean_velocity_perturbation() << migration
         << mc.forecast_migration_rate();
    return line.str();
}

std::string Simulator::clStatsLine(bool header)
{
    if (header)
        return Tracer::centerlineStatsHeader();
    const Channel* channel = ready(false) ? _network->channel() : nullptr;
    if (channel == nullptr)
        return std::string();
    const double age = getAge();
    const double zref = _domain->getZref();
    std::string lines;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
    {
        const Point2D geo = _domain->rel2Geo(Point2D(cp->get_abscissa(), cp->get_ordinate()));
        const double previous = cp->prev() != nullptr ? cp->distance2D(*cp->prev()) : 0.;
        Line line;
        line << age << previous << cp->s() << geo.get_abscissa() << geo.get_ordinate() << cp->get_elevation()
             << cp->curvature() << cp->flow().u1() << cp->flow().u0() << cp->hmean()
             << zref + cp->get_elevation();
        lines += line.str() + "\n";
    }
    return lines;
}

std::string Simulator::grainsizeStatsLine(bool header)
{
    if (header)
        return Tracer::grainsizeStatsHeader();
    if (!ready(false) || !_network->has_channel())
        return std::string();
    std::string lines;
    for (const ChannelGridPoint& point : _network->grid_points())
    {
        if (!_domain->isValid(point.ix, point.iy))
            continue;
        const std::vector<DepositionUnit>& units = _domain->getObject(point.ix, point.iy).units();
        const double grain = units.empty() ? undefined() : units.back().facies().granulo_value();
        const Flow& flow = point.flow;
        Line line;
        line << static_cast<double>(point.side) << flow.hflow_max()
             << guarded([&flow] { return flow.get_effective_height(); }) << flow.superelevation() << flow.u0()
             << flow.cmean() << flow.u1() << point.z << point.curvature << grain;
        lines += line.str() + "\n";
    }
    return lines;
}

void Simulator::dumpStats()
{
    // Statistics lines are written by the research tier only.
    if (!_parameters->usingResearch())
        return;
    const std::string line = statsLine(false);
    if (!line.empty())
        _tracer->dumpStats(line);
    if (_tracer->generateCenterlineStats())
        _tracer->dumpCenterlineStats(clStatsLine(false));
    if (_tracer->generateGrainsizeStats())
        _tracer->dumpGrainsizeStats(grainsizeStatsLine(false));
}

// ---------------------------------------------------------------------------
// Reports and inference

std::string Simulator::getInferenceStats()
{
    std::ostringstream out;
    out << "Forecast Net to Gross (%): " << getForecastSand() * 100. << "\n"
        << "Forecast Aggradation Rate (m/10000 it): " << getForecastAggradationRate() << "\n"
        << "Forecast Migration Rate (m/10000 it): " << getForecastMigrationRate() << "\n"
        << "Forecast Sand Bodies Extension Index: " << _meanderCalculator->forecast_isbx() << "\n";
    if (ready(false))
        out << "Global Net to Gross (%): " << getSandProportion() * 100. << "\n"
            << "Global Aggradation Rate (m/10000 it): " << getAggradationRate() << "\n"
            << "Migration Rate (m/10000 it): " << getMigrationRate() << "\n"
            << "Mean Sand Bodies Extension Index: " << getMeanIsbx() << "\n";
    return out.str();
}

std::string Simulator::getTauCutStats() const
{
    std::ostringstream out;
    out << "Forecast First Cutoff Abstract Time: " << _meanderCalculator->default_tau_cut() << "\n";
    if (!ready(false))
        return out.str();
    // The record is empty until the first meander cutoff of the run.
    if (_network->first_cutoff_time() == 0.)
    {
        out << "No meander cutoff yet\n";
        return out.str();
    }
    out << "First Cutoff Iteration: " << _network->first_cutoff_iter() << "\n"
        << "First Cutoff Abstract Time: " << _network->first_cutoff_time() << "\n"
        << "Sinuosity at First Cutoff: " << _network->first_cutoff_sinuosity() << "\n"
        << "Allen Sinuosity at First Cutoff: " << _network->first_cutoff_allen() << "\n"
        << "Tortuosity at First Cutoff: " << _network->first_cutoff_tortuosity() << "\n"
        << "Wavelength at First Cutoff (m): " << _network->first_cutoff_wavelength() << "\n"
        << "Sand Bodies Extension at First Cutoff: " << _network->first_cutoff_extension() << "\n";
    return out.str();
}

bool Simulator::applyNexus(const std::vector<double>& nexus, bool adaptGrid, std::string& message)
{
    return MeanderCalculator::apply_nexus(_parameters.get(), _tracer.get(), nexus, adaptGrid, message);
}

bool Simulator::applyNeqsus(const std::vector<double>& nexus, bool adaptGrid, std::string& message)
{
    return MeanderCalculator::apply_neqsus(_parameters.get(), _tracer.get(), nexus, adaptGrid, message);
}

bool Simulator::nexusFromWells(const CoreList& cores, std::vector<double>& nexus, std::string& message)
{
    return MeanderCalculator::nexus_from_wells(_parameters.get(), cores, nexus, message);
}
