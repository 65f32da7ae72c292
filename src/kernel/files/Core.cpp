#include "kernel/files/Core.h"

#include "CoreSupport.h"
#include "interface/iTracer.h"
#include "kernel/common/Facies.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/InDataFile.h"
#include "kernel/geometry/GridParams.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <sstream>
#include <stdexcept>

namespace
{
using core_support::ASCII_SECTIONS;
using core_support::CURVE_SECTIONS;
using core_support::seek_any_section;
using core_support::text_of;
using core_support::VERSION_SECTIONS;
using core_support::WELL_SECTIONS;

// Two sample ends closer than this are taken as one.
const double ADJACENCY_TOLERANCE = 1e-3;
// Overlap of [a, b] with [lo, hi].
double overlap(double a, double b, double lo, double hi)
{
    return std::max(0., std::min(b, hi) - std::max(a, lo));
}

bool is_defined(double z)
{
    return z > MP_MIN_REAL_VALUE && z < MP_MAX_REAL_VALUE;
}
} // namespace

Core::Core(const std::string& name, iTracer* tracer)
    : _name(name), _tracer(tracer), _topElevation(0.), _vertical(true), _standardFacies(true)
{
}

Core::Core(double x, double y, double z, const std::string& name, iTracer* tracer)
    : _name(name), _tracer(tracer), _topLocation(x, y), _topElevation(z), _vertical(true),
      _standardFacies(true)
{
}

bool Core::fail(const std::string& message) const
{
    _error = message;
    return false;
}

void Core::warn(const std::string& message) const
{
    if (_tracer != nullptr)
        _tracer->warning(message);
}

// --- Placement

Point3D Core::top() const
{
    return Point3D(_topLocation, _topElevation);
}

Point3D Core::bottom() const
{
    return Point3D(bottom_location(), bottom_elevation());
}

Point2D Core::bottom_location() const
{
    return _samples.empty() ? _topLocation : _samples.back().getLocation();
}

double Core::bottom_elevation() const
{
    return _samples.empty() ? _topElevation : _samples.back().getZ();
}

void Core::set_top(const Point3D& top)
{
    _topLocation = top;
    _topElevation = top.get_elevation();
}

bool Core::is_top_inside(const GridParams& domain) const
{
    return domain.is_on_grid(domain.geo2Grid(top_location(), true));
}

bool Core::is_bottom_inside(const GridParams& domain) const
{
    return domain.is_on_grid(domain.geo2Grid(bottom_location(), true));
}

bool Core::has_discrete_attribute() const
{
    for (const CoreSample& sample : _samples)
        if (sample.hasAttributeValue())
            return false;
    return true;
}

// --- Samples

bool Core::add_sample(const CoreSample& sample, int facies)
{
    if (facies > CoreSample::MP_MAX_FACIES_ID)
        return fail("Invalid facies for sample #" + std::to_string(_samples.size() + 1) +
                    " (unknown facies identifier: " + std::to_string(facies) + ")");
    _samples.push_back(sample);
    return true;
}

bool Core::add(unsigned char facies, double thickness, const CoreSampleTags& tags)
{
    return add(facies, thickness, thickness, tags);
}

bool Core::add(unsigned char facies, double thickness, double length, const CoreSampleTags& tags)
{
    const double height = std::max(thickness, CoreSample::MP_MIN_SAMPLE_HEIGHT);
    return add_sample(
        CoreSample(facies, height, length, bottom_elevation() - height, bottom_location(), tags), facies);
}

bool Core::add(unsigned char facies, double x, double y, double z, const CoreSampleTags& tags)
{
    const Point3D previous = bottom();
    const Point3D next(x, y, z);
    return add_sample(
        CoreSample(facies, previous.get_elevation() - z, previous.distance(next), z, Point2D(x, y), tags),
        facies);
}

// --- Formats

int Core::get_format(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open() || !seek_any_section(file, ASCII_SECTIONS))
        return WELL_FORMAT_UNKNOWN;
    if (seek_any_section(file, VERSION_SECTIONS) && seek_any_section(file, WELL_SECTIONS) &&
        seek_any_section(file, CURVE_SECTIONS))
        return WELL_FORMAT_LAS;
    return file.seek_keyword("X_WELL") ? WELL_FORMAT_FLW : WELL_FORMAT_UNKNOWN;
}

std::string Core::get_format_label(int format)
{
    switch (format)
    {
    case WELL_FORMAT_FLW:
        return "FLW";
    case WELL_FORMAT_LAS:
        return "LAS";
    default:
        return "UNDEFINED";
    }
}

bool Core::get_name(const std::string& path, const std::string& defaultName, std::string& name)
{
    name = MP_UNDEF_STRING;
    switch (get_format(path))
    {
    case WELL_FORMAT_FLW:
        name = defaultName;
        return true;
    case WELL_FORMAT_LAS:
    {
        InDataFile file(path);
        file.setKeySeparator('.');
        return file.get_key_value("WELL", name, false);
    }
    default:
        return false;
    }
}

bool Core::read(const std::string& path, const std::string& trajectoryPath)
{
    _error.clear();
    try
    {
        switch (get_format(path))
        {
        case WELL_FORMAT_FLW:
            return _read_flw(path);
        case WELL_FORMAT_LAS:
            return _read_las(path, trajectoryPath);
        default:
            return fail("Unknown format of well file " + path);
        }
    }
    catch (const std::exception& failure)
    {
        return fail("Cannot read well file " + path + ": " + failure.what());
    }
}

// --- Geological edits

void Core::trim()
{
    while (!_samples.empty() && Facies::family(_samples.back().getFacies()) == 0)
        _samples.pop_back();
    while (!_samples.empty() && Facies::family(_samples.front().getFacies()) == 0)
    {
        _topElevation = _samples.front().getZ();
        _topLocation = _samples.front().getLocation();
        _samples.erase(_samples.begin());
    }
}

bool Core::make_downward()
{
    std::multimap<double, CoreSample, std::greater<double>> byElevation;
    for (const CoreSample& sample : _samples)
        byElevation.emplace(sample.getZ(), sample);
    _samples.clear();
    for (const auto& entry : byElevation)
        _samples.push_back(entry.second);
    for (size_t k = 0; k < _samples.size(); ++k)
    {
        if (k == 0 && std::fabs(_samples[0].getTop() - _topElevation) > ADJACENCY_TOLERANCE)
            return fail("Inconsistent top elevation in well " + _name);
        if (k > 0 && std::fabs(_samples[k].getTop() - _samples[k - 1].getZ()) > ADJACENCY_TOLERANCE)
            return fail("Non consecutive core samples in well " + _name);
    }
    return true;
}

void Core::closure(double threshold)
{
    size_t above = 0;
    while (above < _samples.size())
    {
        if (!_samples[above].isSand())
        {
            ++above;
            continue;
        }
        size_t below = above + 1;
        double gapHeight = 0.;
        double gapLength = 0.;
        while (below < _samples.size() && !_samples[below].isSand())
        {
            gapHeight += _samples[below].getHeight();
            gapLength += _samples[below].getLength();
            ++below;
        }
        if (below >= _samples.size())
            break;
        if (below > above + 1 && gapHeight > 0. && gapHeight < threshold)
        {
            // The thin gap is shared by the two sands in proportion to their heights,
            // the upper sand's bottom sliding down the straight line to the lower one.
            CoreSample& upper = _samples[above];
            CoreSample& lower = _samples[below];
            const CoreSample& gapBottom = _samples[below - 1];
            const double share = upper.getHeight() / (upper.getHeight() + lower.getHeight());
            upper.setZ(upper.getZ() + share * (gapBottom.getZ() - upper.getZ()));
            upper.setLocation(upper.getLocation() + (gapBottom.getLocation() - upper.getLocation()) * share);
            upper.setHeight(upper.getHeight() + share * gapHeight);
            lower.setHeight(lower.getHeight() + (1. - share) * gapHeight);
            upper.setLength(upper.getLength() + share * gapLength);
            lower.setLength(lower.getLength() + (1. - share) * gapLength);
            _samples.erase(_samples.begin() + static_cast<long>(above) + 1,
                           _samples.begin() + static_cast<long>(below));
            below = above + 1;
        }
        above = below;
    }
}

void Core::concatenate(bool computedFacies)
{
    std::vector<CoreSample> joined;
    for (const CoreSample& sample : _samples)
    {
        if (!joined.empty())
        {
            CoreSample& upper = joined.back();
            const bool sameFacies = Facies::family(upper.getFacies()) == Facies::family(sample.getFacies());
            const bool sameAttribute = upper.getAttributeText() == sample.getAttributeText() &&
                                       upper.getAttributeValue() == sample.getAttributeValue();
            if (sameFacies && (computedFacies || sameAttribute))
            {
                upper.setHeight(upper.getHeight() + sample.getHeight());
                upper.setLength(upper.getLength() + sample.getLength());
                upper.setZ(sample.getZ());
                upper.setLocation(sample.getLocation());
                continue;
            }
        }
        joined.push_back(sample);
    }
    _samples.swap(joined);
}

void Core::clean_attributes(bool computedFacies)
{
    if (!computedFacies)
        return;
    for (CoreSample& sample : _samples)
    {
        const FaciesDescription description = Facies::description(sample.getFacies());
        sample.setAttributeText(description.short_name());
        sample.setAttributeValue(MP_UNDEF_REAL);
        sample.setAttributeName(description.long_name());
    }
    _standardFacies = true;
}

bool Core::cut(double zb, double zt)
{
    const bool hasBottom = is_defined(zb);
    const bool hasTop = is_defined(zt);
    if (hasBottom && hasTop && zb > zt)
        return fail("Wrong arguments: zb > zt");
    std::vector<CoreSample> kept;
    Point3D head = top();
    Point3D upper = top();
    for (const CoreSample& sample : _samples)
    {
        const Point3D lower(sample.getLocation(), sample.getZ());
        const double hi = upper.get_elevation();
        const double lo = lower.get_elevation();
        const double newHi = hasTop ? std::min(hi, zt) : hi;
        const double newLo = hasBottom ? std::max(lo, zb) : lo;
        // The point of the sample's straight course at elevation z.
        auto at = [&](double z)
        { return hi - lo > 0. ? upper + (lower - upper) * ((hi - z) / (hi - lo)) : lower; };
        if (newHi - newLo >= MP_EPSILON)
        {
            if (kept.empty())
                head = at(newHi);
            CoreSample part(sample);
            const Point3D bottomPoint = at(newLo);
            part.setZ(newLo);
            part.setLocation(bottomPoint);
            part.setHeight(newHi - newLo);
            if (hi - lo > 0.)
                part.setLength(sample.getLength() * (newHi - newLo) / (hi - lo));
            kept.push_back(part);
        }
        upper = lower;
    }
    if (kept.empty() && hasTop)
        head.set_elevation(std::min(head.get_elevation(), zt));
    set_top(head);
    _samples.swap(kept);
    return true;
}

bool Core::split(const GridParams& domain, CoreList& cores) const
{
    cores.clear();
    if (!is_top_inside(domain))
        return fail("Head of well " + _name + " not inside the grid. Well split aborted.");
    Core current(_name, _tracer);
    bool started = false;
    int number = 0;
    int column[2] = {0, 0};
    Point3D upper = top();
    for (const CoreSample& sample : _samples)
    {
        // A sample belongs to the column under its middle.
        const Point2D middle = (Point2D(upper) + sample.getLocation()) * 0.5;
        const Point2D node = domain.geo2Grid(middle, true);
        const int i = static_cast<int>(node.get_abscissa());
        const int j = static_cast<int>(node.get_ordinate());
        if (!started || i != column[0] || j != column[1])
        {
            if (started)
                _merge(cores, current, number, domain);
            ++number;
            started = true;
            column[0] = i;
            column[1] = j;
            current = Core(_name, _tracer);
            current.setStandardFacies(_standardFacies);
            current.set_top(Point3D(domain.grid2Geo(i, j), upper.get_elevation()));
        }
        // A sample with no extent along the hole adds nothing to a column.
        if (sample.getLength() >= MP_EPSILON)
        {
            CoreSample part(sample);
            part.setLocation(current.top_location());
            current._samples.push_back(part);
        }
        upper = Point3D(sample.getLocation(), sample.getZ());
    }
    if (started)
        _merge(cores, current, number, domain);
    return true;
}

void Core::_merge(CoreList& cores, Core& core, int number, const GridParams& domain) const
{
    const std::string which = "core #" + std::to_string(number) + " of well " + _name;
    if (core.empty())
    {
        warn("Core #" + std::to_string(number) + " of well " + _name + " is empty. Core ignored");
        return;
    }
    if (!core.is_top_inside(domain))
    {
        warn("Top of " + which + " is not inside the grid. Core ignored");
        return;
    }
    if (!core.is_bottom_inside(domain))
    {
        warn("Bottom of " + which + " is not inside the grid. Core ignored");
        return;
    }
    if (!core.make_downward())
    {
        warn(core.getError());
        return;
    }
    Core* twin = cores.find(core.key());
    if (twin == nullptr)
    {
        cores.add(core);
        return;
    }
    // Elevation ranges, whichever way the well ran through them.
    const double newLo = std::min(core.bottom_elevation(), core.top_elevation());
    const double newHi = std::max(core.bottom_elevation(), core.top_elevation());
    const double oldLo = std::min(twin->bottom_elevation(), twin->top_elevation());
    const double oldHi = std::max(twin->bottom_elevation(), twin->top_elevation());
    const bool below = newHi <= oldLo + ADJACENCY_TOLERANCE;
    const bool above = newLo >= oldHi - ADJACENCY_TOLERANCE;
    if (!below && !above)
    {
        warn("Core #" + std::to_string(number) + " of well " + _name + " overlaps around " +
             text_of(core.top_elevation()) + " at cell " + core.key());
        return;
    }
    // The well came back to a column it had left: what lies between is unknown.
    const Core& lower = below ? core : *twin;
    const Core& higher = below ? *twin : core;
    const double gap = higher.bottom_elevation() - lower.top_elevation();
    std::vector<CoreSample> samples = higher._samples;
    if (gap > ADJACENCY_TOLERANCE)
    {
        const FaciesDescription undefined;
        CoreSampleTags tags;
        tags.attributeText = undefined.short_name();
        tags.attributeName = undefined.long_name();
        CoreSample filler(0, gap, gap, lower.top_elevation(), core.top_location(), tags);
        filler.setHeight(gap);
        samples.push_back(filler);
    }
    samples.insert(samples.end(), lower._samples.begin(), lower._samples.end());
    const double topElevation = higher.top_elevation();
    twin->_samples.swap(samples);
    twin->set_top_elevation(topElevation);
    if (!twin->make_downward())
        warn(twin->getError());
}

int Core::facies_at(double z) const
{
    for (const CoreSample& sample : _samples)
        if (z >= sample.getZ() && z < sample.getTop())
            return Facies::family(sample.getFacies());
    return -1;
}

double Core::facies_match(const Core& other, double zb, double zt) const
{
    if (zb == MP_UNDEF_REAL)
        zb = other.bottom_elevation();
    if (zt == MP_UNDEF_REAL)
        zt = other.top_elevation();
    if (zb > zt)
    {
        fail("Wrong arguments: zb > zt");
        return -1.;
    }
    if (!_vertical || !other._vertical)
        return -1.;
    const double lo = std::max(zb, std::max(bottom_elevation(), other.bottom_elevation()));
    const double hi = std::min(zt, std::min(_topElevation, other._topElevation));
    if (zt - zb < MP_EPSILON || hi - lo < MP_EPSILON)
        return 0.;
    // Both logs must cover the common interval alike before they are compared.
    double mine = 0.;
    double theirs = 0.;
    std::vector<double> limits = {lo, hi};
    for (const CoreSample& sample : _samples)
    {
        mine += overlap(sample.getZ(), sample.getTop(), lo, hi);
        limits.push_back(sample.getZ());
        limits.push_back(sample.getTop());
    }
    for (const CoreSample& sample : other._samples)
    {
        theirs += overlap(sample.getZ(), sample.getTop(), lo, hi);
        limits.push_back(sample.getZ());
        limits.push_back(sample.getTop());
    }
    if (std::fabs(mine - theirs) > MP_EPSILON)
    {
        fail("Wrong intersection length size");
        return -1.;
    }
    std::sort(limits.begin(), limits.end());
    double matched = 0.;
    for (size_t k = 0; k + 1 < limits.size(); ++k)
    {
        const double a = std::max(limits[k], lo);
        const double b = std::min(limits[k + 1], hi);
        if (b - a <= 0.)
            continue;
        const double middle = 0.5 * (a + b);
        const int facies = facies_at(middle);
        if (facies >= 0 && facies == other.facies_at(middle))
            matched += b - a;
    }
    return matched / (zt - zb);
}

double Core::match_non_sand_height(double zb, double zt) const
{
    if (zb == MP_UNDEF_REAL)
        zb = bottom_elevation();
    if (zt == MP_UNDEF_REAL)
        zt = _topElevation;
    double height = 0.;
    for (const CoreSample& sample : _samples)
        if (!sample.isSand())
            height += overlap(sample.getZ(), sample.getTop(), zb, zt);
    return height;
}

bool Core::min_and_max_height(double& hmin, double& hmax, bool sandOnly) const
{
    hmin = MP_MAX_REAL_VALUE;
    hmax = MP_MIN_REAL_VALUE;
    for (const CoreSample& sample : _samples)
    {
        if (sandOnly && !sample.isSand())
            continue;
        hmin = std::min(hmin, sample.getHeight());
        hmax = std::max(hmax, sample.getHeight());
    }
    return hmin <= hmax;
}

double Core::min_height(bool sandOnly) const
{
    double hmin = 0.;
    double hmax = 0.;
    min_and_max_height(hmin, hmax, sandOnly);
    return hmin;
}

double Core::max_height(bool sandOnly) const
{
    double hmin = 0.;
    double hmax = 0.;
    min_and_max_height(hmin, hmax, sandOnly);
    return hmax;
}

bool Core::shift(const GridReal& topo, double sign, const std::string& operation)
{
    const double zmin = topo.get_min();
    if (!(zmin < MP_MAX_REAL_VALUE))
        return fail(operation + ": Cannot get minimum value from the given topography");
    const std::string place =
        text_of(_topLocation.get_abscissa()) + ", " + text_of(_topLocation.get_ordinate()) + "]";
    const Point2D node = topo.geo2Grid(_topLocation, true);
    if (!topo.is_on_grid(node))
        return fail(operation + ": [" + place + " not in the given topography");
    double value = MP_UNDEF_REAL;
    if (!topo.get_at(static_cast<int>(node.get_abscissa()), static_cast<int>(node.get_ordinate()), value))
        return fail(operation + ": Cannot get a value at [" + place);
    if (value == MP_UNDEF_REAL)
        return fail(operation + ": Value is undefined at [" + place);
    const double delta = sign * (value - zmin);
    _topElevation += delta;
    for (CoreSample& sample : _samples)
        sample.setZ(sample.getZ() + delta);
    return true;
}

bool Core::shift_down(const GridReal& topo)
{
    return shift(topo, -1., "Core::shift_down");
}

bool Core::shift_up(const GridReal& topo)
{
    return shift(topo, 1., "Core::shift_up");
}

std::string Core::debug() const
{
    std::ostringstream out;
    out << "Core " << _name << " at " << key() << " [" << bottom_elevation() << ", " << _topElevation << "] "
        << _samples.size() << " samples" << (_vertical ? "" : ", deviated")
        << (_standardFacies ? "" : ", user attributes");
    for (const CoreSample& sample : _samples)
        out << "\n  " << sample.debug();
    return out.str();
}
