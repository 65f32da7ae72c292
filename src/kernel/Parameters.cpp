#include "kernel/Parameters.h"

#include "interface/iTracer.h"
#include "kernel/Constants.h"
#include "kernel/InDataFile.h"
#include "kernel/OutDataFile.h"
#include "kernel/SeedGenerator.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <sstream>

namespace
{

// Integer enumerations have no range: they span every int.
constexpr int ANY_MIN = INT_MIN;
constexpr int ANY_MAX = INT_MAX;
constexpr double HUGE_REAL = MP_MAX_REAL_VALUE;

const std::string SIM_TYPE = "SIM_TYPE";
const std::string GR_PB = "GR_PB";
const std::string GR_PB_OPTIM = "GR_PB_OPTIM";
const std::string GR_PB_PROXY = "GR_PB_PROXY";
const std::string FLUVIAL = "Fluvial";
const std::string TURBIDITE = "Turbidite";
const std::string LOBES = "Lobes";
const std::string SED_LOAD_VOL = "SED_LOAD_VOL";

const int SED_VOL_FLUVIAL[MD_NB_CLASS_GR] = {0, 0, 0, 0, 2, 3, 6, 13, 27, 26, 10, 8, 5, 0, 0};
const int SED_VOL_TURBIDITIC[MD_NB_CLASS_GR] = {0, 1, 2, 3, 4, 8, 17, 25, 22, 8, 5, 3, 2, 0, 0};

const char* const VERSION_STR = "8.502";
const char* const VERSION_DATE = "2024-03-15";
const char* const DISTRIB_NAMES[] = {"Free", "Premium", "Research"};

// Expert settings that have a default to fall back on when refused.
constexpr unsigned int DEF_SINUO_INTERVAL = 0;
constexpr int DEF_CURVATURE_POINTS = 3;
constexpr double DEF_TURB_AGG_HEIGHT_COEFF = 1.;
constexpr double DEF_UNSET_FACTOR = -1.;
constexpr int DEF_MIN_GRAINSIZE = 6;
constexpr int DEF_MAX_GRAINSIZE = 13;

std::string indexed(const std::string& name, int index)
{
    std::ostringstream s;
    s << name << '_' << index;
    return s.str();
}

template <typename Map> const typename Map::mapped_type* find_entry(const Map& map, const std::string& name)
{
    const auto it = map.find(name);
    return it == map.end() ? nullptr : &it->second;
}

template <typename Map> typename Map::mapped_type* find_entry(Map& map, const std::string& name)
{
    const auto it = map.find(name);
    return it == map.end() ? nullptr : &it->second;
}

// Truncation towards zero, held inside the int range so that a huge or
// undefined real never overflows the conversion.
int truncate_to_int(double value)
{
    if (value != value)
        return MP_UNDEF_INT;
    if (value >= static_cast<double>(INT_MAX))
        return INT_MAX;
    if (value <= static_cast<double>(INT_MIN))
        return INT_MIN;
    return static_cast<int>(value);
}

const char* yes_no(bool on)
{
    return on ? "Yes" : "No";
}

std::string trim_blanks(const std::string& text)
{
    const char* blanks = " \t\r\n";
    const std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return std::string();
    const std::string::size_type last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

// Lists out-of-range entries of one map, skipping those whose controlling
// integer parameter does not hold their control value.
template <typename Map>
void check_map(const Map& map, const std::map<std::string, tint>& controls, std::ostringstream& lines,
               bool& found)
{
    for (const auto& [name, entry] : map)
    {
        if (!entry.control.empty())
        {
            const auto ctrl = controls.find(entry.control);
            const int ctrl_value = ctrl == controls.end() ? MP_UNDEF_INT : ctrl->second.value;
            if (ctrl_value != entry.control_value)
                continue;
        }
        if (entry.value >= entry.min && entry.value <= entry.max)
            continue;
        lines << "\n  - " << name << " = " << entry.value << " out of [" << entry.min << ", " << entry.max
              << "]";
        found = true;
    }
}

} // namespace

Parameters::Parameters(iTracer* tracer)
    : _tracer(tracer), _sinuo_interval(DEF_SINUO_INTERVAL), _curvature_points(DEF_CURVATURE_POINTS),
      _cond_mig_wells(MP_UNDEF_INT), _cond_av_wells(true), _cond_new_algo(true), _cond_av_mp(false),
      _cond_block_av(true), _dry_channel(false), _old_filling(false), _bank_erod_coeff(MP_UNDEF_REAL),
      _turb_agg_height_coeff(DEF_TURB_AGG_HEIGHT_COEFF), _scour_factor(DEF_UNSET_FACTOR),
      _friction_coeff(DEF_UNSET_FACTOR), _min_grainsize(DEF_MIN_GRAINSIZE), _max_grainsize(DEF_MAX_GRAINSIZE),
      _version_str(VERSION_STR), _version(0.), _version_date(VERSION_DATE), _distrib(0)
{
    char* rest = nullptr;
    _version = std::strtod(_version_str.c_str(), &rest);
    if (rest == nullptr || *rest != '\0')
        traceError("Wrong version: " + _version_str);
    updateFullVersion();
    resetString(SIM_TYPE, FLUVIAL);
    reset(true);
}

void Parameters::resetFrom(const Parameters& other)
{
    _strings = other._strings;
    _bools = other._bools;
    _ints = other._ints;
    _doubles = other._doubles;
    _sinuo_interval = other._sinuo_interval;
    _curvature_points = other._curvature_points;
    _cond_mig_wells = other._cond_mig_wells;
    _cond_av_wells = other._cond_av_wells;
    _cond_new_algo = other._cond_new_algo;
    _cond_av_mp = other._cond_av_mp;
    _cond_block_av = other._cond_block_av;
    _dry_channel = other._dry_channel;
    _old_filling = other._old_filling;
    _bank_erod_coeff = other._bank_erod_coeff;
    _turb_agg_height_coeff = other._turb_agg_height_coeff;
    _scour_factor = other._scour_factor;
    _friction_coeff = other._friction_coeff;
    _min_grainsize = other._min_grainsize;
    _max_grainsize = other._max_grainsize;
    // A copy runs under the same licence as its original.
    _distrib = other._distrib;
    _expiration_date = other._expiration_date;
    updateFullVersion();
}

void Parameters::updateFullVersion()
{
    _full_version = _version_str + " " + getDistribStr() + " (" + _version_date + ")";
    if (!_expiration_date.empty())
        _full_version += " - expires " + _expiration_date;
}

void Parameters::traceError(const std::string& text) const
{
    if (_tracer != nullptr)
        _tracer->error(text);
}

// ---------------------------------------------------------------- setters

bool Parameters::setParamString(const std::string& name, const std::string& value)
{
    tstring* entry = find_entry(_strings, name);
    if (entry == nullptr)
        return false;
    entry->value = value;
    return true;
}

bool Parameters::setParam(const std::string& name, double value)
{
    if (setParamDouble(name, value))
        return true;
    if (setParamInt(name, truncate_to_int(value)))
        return true;
    return setParamBool(name, value != 0.);
}

bool Parameters::setParamBool(const std::string& name, bool value)
{
    tbool* entry = find_entry(_bools, name);
    if (entry == nullptr)
        return false;
    entry->value = value;
    return true;
}

bool Parameters::setParamInt(const std::string& name, int value)
{
    tint* entry = find_entry(_ints, name);
    if (entry == nullptr)
        return false;
    entry->value = value;
    return true;
}

bool Parameters::setParamIntIdx(const std::string& name, int index, int value)
{
    return setParamInt(indexed(name, index), value);
}

bool Parameters::setParamDouble(const std::string& name, double value)
{
    tdouble* entry = find_entry(_doubles, name);
    if (entry == nullptr)
        return false;
    entry->value = value;
    return true;
}

bool Parameters::setParamDoubleIdx(const std::string& name, int index, double value)
{
    return setParamDouble(indexed(name, index), value);
}

// ---------------------------------------------------------------- getters

std::string Parameters::getParamString(const std::string& name) const
{
    const tstring* entry = find_entry(_strings, name);
    return entry == nullptr ? std::string(MP_UNDEF_STRING) : entry->value;
}

double Parameters::getParam(const std::string& name) const
{
    if (const tdouble* real = find_entry(_doubles, name))
        return real->value;
    if (const tint* integer = find_entry(_ints, name))
        return integer->value;
    if (const tbool* boolean = find_entry(_bools, name))
        return boolean->value ? 1. : 0.;
    return MP_UNDEF_REAL;
}

bool Parameters::getParamBool(const std::string& name) const
{
    const tbool* entry = find_entry(_bools, name);
    return entry != nullptr && entry->value;
}

int Parameters::getParamInt(const std::string& name) const
{
    const tint* entry = find_entry(_ints, name);
    return entry == nullptr ? MP_UNDEF_INT : entry->value;
}

int Parameters::getParamIntIdx(const std::string& name, int index) const
{
    return getParamInt(indexed(name, index));
}

double Parameters::getParamDouble(const std::string& name) const
{
    const tdouble* entry = find_entry(_doubles, name);
    return entry == nullptr ? MP_UNDEF_REAL : entry->value;
}

double Parameters::getParamDoubleIdx(const std::string& name, int index) const
{
    return getParamDouble(indexed(name, index));
}

std::string Parameters::getParamDefString(const std::string& name) const
{
    const tstring* entry = find_entry(_strings, name);
    return entry == nullptr ? std::string(MP_UNDEF_STRING) : entry->def;
}

bool Parameters::getParamDefBool(const std::string& name) const
{
    const tbool* entry = find_entry(_bools, name);
    return entry != nullptr && entry->def;
}

int Parameters::getParamDefInt(const std::string& name) const
{
    const tint* entry = find_entry(_ints, name);
    return entry == nullptr ? MP_UNDEF_INT : entry->def;
}

int Parameters::getParamDefIntIdx(const std::string& name, int index) const
{
    return getParamDefInt(indexed(name, index));
}

double Parameters::getParamDefDouble(const std::string& name) const
{
    const tdouble* entry = find_entry(_doubles, name);
    return entry == nullptr ? MP_UNDEF_REAL : entry->def;
}

double Parameters::getParamDefDoubleIdx(const std::string& name, int index) const
{
    return getParamDefDouble(indexed(name, index));
}

int Parameters::getParamMinInt(const std::string& name) const
{
    const tint* entry = find_entry(_ints, name);
    return entry == nullptr ? MP_UNDEF_INT : entry->min;
}

int Parameters::getParamMinIntIdx(const std::string& name, int index) const
{
    return getParamMinInt(indexed(name, index));
}

double Parameters::getParamMinDouble(const std::string& name) const
{
    const tdouble* entry = find_entry(_doubles, name);
    return entry == nullptr ? MP_UNDEF_REAL : entry->min;
}

double Parameters::getParamMinDoubleIdx(const std::string& name, int index) const
{
    return getParamMinDouble(indexed(name, index));
}

int Parameters::getParamMaxInt(const std::string& name) const
{
    const tint* entry = find_entry(_ints, name);
    return entry == nullptr ? MP_UNDEF_INT : entry->max;
}

int Parameters::getParamMaxIntIdx(const std::string& name, int index) const
{
    return getParamMaxInt(indexed(name, index));
}

double Parameters::getParamMaxDouble(const std::string& name) const
{
    const tdouble* entry = find_entry(_doubles, name);
    return entry == nullptr ? MP_UNDEF_REAL : entry->max;
}

double Parameters::getParamMaxDoubleIdx(const std::string& name, int index) const
{
    return getParamMaxDouble(indexed(name, index));
}

// ---------------------------------------------------------------- reset

void Parameters::resetDouble(const std::string& name, double def, double min, double max,
                             const std::string& control, int value)
{
    tdouble& entry = _doubles[name];
    entry.value = def;
    entry.def = def;
    entry.min = min;
    entry.max = max;
    entry.control = control;
    entry.control_value = value;
}

void Parameters::resetInt(const std::string& name, int def, int min, int max, const std::string& control,
                          int value)
{
    tint& entry = _ints[name];
    entry.value = def;
    entry.def = def;
    entry.min = min;
    entry.max = max;
    entry.control = control;
    entry.control_value = value;
}

void Parameters::resetIntIdx(const std::string& name, int index, int def, int min, int max)
{
    resetInt(indexed(name, index), def, min, max);
}

void Parameters::resetBool(const std::string& name, bool def)
{
    tbool& entry = _bools[name];
    entry.value = def;
    entry.def = def;
}

void Parameters::resetString(const std::string& name, const std::string& def)
{
    tstring& entry = _strings[name];
    entry.value = def;
    entry.def = def;
}

void Parameters::reset(bool full)
{
    const bool turbiditic = usingTurbiOrLobes();
    if (full)
        resetGeometry(turbiditic);
    resetCommon();
    resetSedLoad(turbiditic);
    if (turbiditic)
        resetTurbiditic();
}

void Parameters::resetGeometry(bool turbiditic)
{
    resetDouble("DOMAIN_OX", 0., -HUGE_REAL, HUGE_REAL);
    resetDouble("DOMAIN_OY", 0., -HUGE_REAL, HUGE_REAL);
    resetInt("DOMAIN_NX", 251, 20, 5000);
    resetInt("DOMAIN_NY", 201, 20, 5000);
    resetDouble("DOMAIN_DX", turbiditic ? 200. : 10., 1., HUGE_REAL);
    resetDouble("DOMAIN_DY", turbiditic ? 200. : 10., 1., HUGE_REAL);
    resetDouble("DOMAIN_GRID_DIR", 0., -360., 360.);
    resetDouble("DOMAIN_ZREF", 0., -HUGE_REAL, HUGE_REAL);
}

void Parameters::resetCommon()
{
    // The congruence stays at 0 forever from a seed equal to its modulus.
    resetInt("SIM_SEED", 165426111, 1, SeedGenerator::_modulus - 1);
    resetDouble("DOMAIN_SLOPE", 0.001, 0.0001, 0.1);
    resetDouble("CHNL_WIDTH", 30., 5., 500.);
    resetDouble("CHNL_MAX_DEPTH", 3., 0.5, 15.);
    resetDouble("CHNL_WAVELENGTH", 375., 10., 10000.);
    resetDouble("CHNL_MARGIN", 12., 1., 100.);
    resetDouble("CHNL_FLW_DIR", 90., -360., 360.);
    resetInt("CHNL_SCALE_DIST", 0, ANY_MIN, ANY_MAX);
    resetDouble("CHNL_SCALE_CONST", 100., 80., 120., "CHNL_SCALE_DIST", 0);
    resetDouble("CHNL_SCALE_MIN", 80., 50., 100., "CHNL_SCALE_DIST", 1);
    resetDouble("CHNL_SCALE_MAX", 120., 100., 150., "CHNL_SCALE_DIST", 1);
    resetDouble("CHNL_SCALE_NORM_MEAN", 100., 90., 110., "CHNL_SCALE_DIST", 2);
    resetDouble("CHNL_SCALE_NORM_STDEV", 20., 0., 40., "CHNL_SCALE_DIST", 2);
    resetDouble("CHNL_SCALE_LOGNORM_MEAN", 100., 90., 110., "CHNL_SCALE_DIST", 3);
    resetDouble("CHNL_SCALE_LOGNORM_STDEV", 20., 0., 40., "CHNL_SCALE_DIST", 3);
    resetDouble("EROD_COEF", 4e-08, 0., 2e-07);
    resetDouble("EROD_OFFSET", 0., -HUGE_REAL, HUGE_REAL);
    resetInt("ZUL_TYPE", 0, ANY_MIN, ANY_MAX);
    resetInt("AV_LOC_FREQ", 2, ANY_MIN, ANY_MAX);
    resetInt("AV_LOC_PERIOD", 280, 1, ANY_MAX, "AV_LOC_FREQ", 1);
    resetInt("AV_LOC_POISSON", 280, 1, ANY_MAX, "AV_LOC_FREQ", 2);
    resetDouble("AV_LOC_PROB1", 0.5, 0., 1.);
    resetDouble("AV_LOC_PROB2", 0.9, 0., 1.);
    resetInt("AV_REG_FREQ", 2, ANY_MIN, ANY_MAX);
    resetInt("AV_REG_PERIOD", 500, 1, ANY_MAX, "AV_REG_FREQ", 1);
    resetInt("AV_REG_POISSON", 500, 1, ANY_MAX, "AV_REG_FREQ", 2);
    resetInt("AG_TYPE", 2, ANY_MIN, ANY_MAX);
    resetInt("AG_DRAP", 12, ANY_MIN, ANY_MAX);
    resetDouble("AG_EXP_DEC_THICK", 919., 5., HUGE_REAL);
    resetDouble("AG_LV_WIDTH", 6., 0.05, HUGE_REAL);
    resetInt("AG_OB_FREQ", 2, ANY_MIN, ANY_MAX);
    resetInt("AG_OB_PERIOD", 70, 1, ANY_MAX, "AG_OB_FREQ", 1);
    resetInt("AG_OB_POISSON", 70, 1, ANY_MAX, "AG_OB_FREQ", 2);
    resetInt("AG_OB_DIST", 2, ANY_MIN, ANY_MAX);
    resetDouble("AG_OB_CONST", 0.1, 0., HUGE_REAL, "AG_OB_DIST", 0);
    resetDouble("AG_OB_MIN", 0.07, 0., HUGE_REAL, "AG_OB_DIST", 1);
    resetDouble("AG_OB_MAX", 0.13, 0.03, HUGE_REAL, "AG_OB_DIST", 1);
    resetDouble("AG_OB_NORM_MEAN", 0.1, 0., HUGE_REAL, "AG_OB_DIST", 2);
    resetDouble("AG_OB_NORM_STDEV", 0.03, 0., HUGE_REAL, "AG_OB_DIST", 2);
    resetDouble("AG_OB_LOGNORM_MEAN", 0.1, 0., HUGE_REAL, "AG_OB_DIST", 3);
    resetDouble("AG_OB_LOGNORM_STDEV", 0.03, 0., HUGE_REAL, "AG_OB_DIST", 3);
    resetDouble("AG_OB_PEAT", 0., 0., 99.);
    resetDouble("AG_OB_PEL_DRAP_INT", 0., 0., 100.);
    resetDouble("AG_EP_INIT_ELEV", 9999., -HUGE_REAL, HUGE_REAL);
    resetInt("AG_EP_FREQ", 0, ANY_MIN, ANY_MAX);
    resetInt("AG_EP_PERIOD", 70, 1, ANY_MAX, "AG_EP_FREQ", 1);
    resetInt("AG_EP_POISSON", 70, 1, ANY_MAX, "AG_EP_FREQ", 2);
    resetInt("AG_EP_DIST", 0, ANY_MIN, ANY_MAX);
    resetDouble("AG_EP_CONST", 0.1, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 0);
    resetDouble("AG_EP_MIN", 0.07, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 1);
    resetDouble("AG_EP_MAX", 0.13, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 1);
    resetDouble("AG_EP_NORM_MEAN", 0.1, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 2);
    resetDouble("AG_EP_NORM_STDEV", 0.03, 0., HUGE_REAL, "AG_EP_DIST", 2);
    resetDouble("AG_EP_LOGNORM_MEAN", 0.1, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 3);
    resetDouble("AG_EP_LOGNORM_STDEV", 0.03, 0., HUGE_REAL, "AG_EP_DIST", 3);
    resetDouble("COND_WELL_RELAX", 20., 0., 100.);
    resetDouble("COND_WELL_CLOSURE", 0.1, 0.01, 1.);
    resetDouble("SED_LOAD_MEAN", 0.01, 0.001, 0.5);
    resetDouble("MASS_BAL_COEF", 0.2, 0., HUGE_REAL);
    resetDouble("GR_THRESHOLD", 0.75, 0.05, 0.95);
    resetInt("GR_PB_OPTIM_MIN", 6, 1, 10);
    resetInt("GR_PB_OPTIM_MAX", 13, 3, 13);
    resetDouble("GR_PB_OPTIM_ALPHA", 0.25, 0.05, 0.95);

    resetBool("AV_LV_OB", false);
    resetBool("AV_NO_SPLAY", false);
    resetBool("AG_RAND_LAMBDA", true);
    resetBool("COND_WELL_CLOSURE_ON", false);
    resetBool("COND_WELL_STOP_HONORED", false);
    resetBool("MASS_BAL_ACTIVE", false);
    resetBool("GR_PB", false);
    resetBool("GR_QUICK_C0", false);
    resetBool("GR_PB_PROXY", false);
    resetBool("GR_PB_OPTIM", false);
}

void Parameters::resetSedLoad(bool turbiditic)
{
    const int* volumes = turbiditic ? SED_VOL_TURBIDITIC : SED_VOL_FLUVIAL;
    for (int i = 0; i < MD_NB_CLASS_GR; i++)
        resetIntIdx(SED_LOAD_VOL, i, volumes[i], 0, 100);
}

void Parameters::resetTurbiditic()
{
    resetDouble("DOMAIN_SLOPE", 0.005, 0.0001, 0.5);
    resetDouble("CHNL_WIDTH", 800., 20., 4000.);
    resetDouble("CHNL_MAX_DEPTH", 40., 10., 500.);
    resetDouble("CHNL_WAVELENGTH", 4000., 100., 20000.);
    resetDouble("CHNL_MARGIN", 5., 1., 100.);
    resetDouble("EROD_COEF", 4e-08, 0., 2e-07);
    resetInt("AV_LOC_PERIOD", 288, 1, ANY_MAX, "AV_LOC_FREQ", 1);
    resetInt("AV_LOC_POISSON", 288, 1, ANY_MAX, "AV_LOC_FREQ", 2);
    resetInt("AV_REG_PERIOD", 470, 1, ANY_MAX, "AV_REG_FREQ", 1);
    resetInt("AV_REG_POISSON", 470, 1, ANY_MAX, "AV_REG_FREQ", 2);
    resetInt("AG_DRAP", 13, ANY_MIN, ANY_MAX);
    resetDouble("AG_EXP_DEC_THICK", 8107., 100., HUGE_REAL);
    resetDouble("AG_LV_WIDTH", 2., 0.05, HUGE_REAL);
    resetInt("AG_OB_PERIOD", 24, 1, ANY_MAX, "AG_OB_FREQ", 1);
    resetInt("AG_OB_POISSON", 24, 1, ANY_MAX, "AG_OB_FREQ", 2);
    resetDouble("AG_OB_CONST", 2., 0., HUGE_REAL, "AG_OB_DIST", 0);
    resetDouble("AG_OB_MIN", 1.4, 0., HUGE_REAL, "AG_OB_DIST", 1);
    resetDouble("AG_OB_MAX", 2.6, 0.03, HUGE_REAL, "AG_OB_DIST", 1);
    resetDouble("AG_OB_NORM_MEAN", 2., 0., HUGE_REAL, "AG_OB_DIST", 2);
    resetDouble("AG_OB_NORM_STDEV", 0.6, 0., HUGE_REAL, "AG_OB_DIST", 2);
    resetDouble("AG_OB_LOGNORM_MEAN", 2., 0., HUGE_REAL, "AG_OB_DIST", 3);
    resetDouble("AG_OB_LOGNORM_STDEV", 0.6, 0., HUGE_REAL, "AG_OB_DIST", 3);
    resetInt("AG_EP_PERIOD", 24, 1, ANY_MAX, "AG_EP_FREQ", 1);
    resetInt("AG_EP_POISSON", 24, 1, ANY_MAX, "AG_EP_FREQ", 2);
    resetDouble("AG_EP_CONST", 2., -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 0);
    resetDouble("AG_EP_MIN", 1.4, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 1);
    resetDouble("AG_EP_MAX", 2.6, -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 1);
    resetDouble("AG_EP_NORM_MEAN", 2., -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 2);
    resetDouble("AG_EP_NORM_STDEV", 0.6, 0., HUGE_REAL, "AG_EP_DIST", 2);
    resetDouble("AG_EP_LOGNORM_MEAN", 2., -HUGE_REAL, HUGE_REAL, "AG_EP_DIST", 3);
    resetDouble("AG_EP_LOGNORM_STDEV", 0.6, 0., HUGE_REAL, "AG_EP_DIST", 3);
    resetDouble("COND_WELL_CLOSURE", 1.4, 0.1, 10.);
    resetDouble("SED_LOAD_MEAN", 0.1, 0.001, 0.5);
    resetDouble("MASS_BAL_COEF", 0.8, 0., HUGE_REAL);
}

// ---------------------------------------------------------------- check

bool Parameters::check(std::string& message) const
{
    message.clear();
    std::ostringstream lines;
    bool found = false;
    check_map(_ints, _ints, lines, found);
    check_map(_doubles, _ints, lines, found);
    if (found)
        message = "Following parameters are out of range:" + lines.str();
    return found;
}

// ---------------------------------------------------------------- parameter file

bool Parameters::write(const std::string& name) const
{
    OutDataFile file(name);
    if (!file.is_open())
        return false;
    file.precision(std::numeric_limits<double>::max_digits10);
    for (const auto& [key, entry] : _strings)
        file.key_value(key, entry.value);
    for (const auto& [key, entry] : _bools)
        file.key_value(key, entry.value ? 1 : 0);
    for (const auto& [key, entry] : _ints)
        file.key_value(key, entry.value);
    for (const auto& [key, entry] : _doubles)
        file.key_value(key, entry.value);
    file.close();
    return !file.fail();
}

bool Parameters::read(const std::string& name)
{
    InDataFile file(name);
    if (!file.is_open())
        return false;
    reset(true);
    std::string line;
    while (file.next_line(line))
    {
        const std::string::size_type equal = line.rfind('=');
        if (equal == std::string::npos)
            continue;
        const std::string key = trim_blanks(line.substr(0, equal));
        const std::string text = trim_blanks(line.substr(equal + 1));
        char* end = nullptr;
        double value = std::strtod(text.c_str(), &end);
        if (end == text.c_str())
            value = MP_MIN_REAL_VALUE;
        if (setParamString(key, text))
            continue;
        if (setParamDouble(key, value))
            continue;
        if (setParamInt(key, truncate_to_int(value)))
            continue;
        setParamBool(key, value != 0.);
    }
    return true;
}

// ---------------------------------------------------------------- expert settings

void Parameters::setSinuoInterval(unsigned int interval)
{
    if (interval > 1000)
    {
        traceError("Sinuo interval > 1000 -> Deactivated");
        interval = DEF_SINUO_INTERVAL;
    }
    _sinuo_interval = interval;
}

void Parameters::setCurvaturePointsNumber(int number)
{
    if (number < 1 || number > 20)
    {
        traceError("Point number for curvature < 1 or > 20 -> Use default: 3");
        number = DEF_CURVATURE_POINTS;
    }
    _curvature_points = number;
}

void Parameters::setCondMigWells(int factor)
{
    if (factor < 0)
    {
        traceError("Mig factor for conditioning is negative -> Deactivated");
        factor = MP_UNDEF_INT;
    }
    _cond_mig_wells = factor;
}

bool Parameters::usingCondMigWells() const
{
    return _cond_mig_wells >= 1 && _cond_mig_wells <= MP_UNDEF_INT - 1;
}

void Parameters::setBankErodCoeff(double coeff)
{
    if (coeff != MP_UNDEF_REAL && (coeff < 0. || coeff > 1.))
    {
        traceError("Bank erodibility coefficient is < 0 or > 1 -> Deactivated");
        coeff = MP_UNDEF_REAL;
    }
    _bank_erod_coeff = coeff;
}

bool Parameters::usingBankErodCoeff() const
{
    return _bank_erod_coeff != MP_UNDEF_REAL && _bank_erod_coeff > 0.;
}

void Parameters::setTurbAggHeightCoeff(double coeff)
{
    // 1e30 is an unset value: it brings the default back without complaint.
    if (coeff == MP_UNDEF_REAL)
        coeff = DEF_TURB_AGG_HEIGHT_COEFF;
    else if (coeff <= 0.)
    {
        traceError("Turbidites aggradation height coefficient is <= 0 -> Set to default");
        coeff = DEF_TURB_AGG_HEIGHT_COEFF;
    }
    _turb_agg_height_coeff = coeff;
}

void Parameters::setScourFactor(double factor)
{
    if (factor != DEF_UNSET_FACTOR && factor < 0.)
    {
        traceError("Scour factor is negative -> Deactivated");
        factor = DEF_UNSET_FACTOR;
    }
    _scour_factor = factor;
}

void Parameters::setFrictionCoeff(double coeff)
{
    if (coeff != DEF_UNSET_FACTOR && coeff < 0.)
    {
        traceError("Friction coefficient is negative -> Deactivated");
        coeff = DEF_UNSET_FACTOR;
    }
    _friction_coeff = coeff;
}

void Parameters::setMinGrainsize(int index)
{
    if (index < 0 || index >= MD_NB_CLASS_GR)
    {
        traceError("Wrong minimum grain size index -> Use default");
        index = DEF_MIN_GRAINSIZE;
    }
    _min_grainsize = index;
}

void Parameters::setMaxGrainsize(int index)
{
    if (index < 0 || index >= MD_NB_CLASS_GR)
    {
        traceError("Wrong maximum grain size index -> Use default");
        index = DEF_MAX_GRAINSIZE;
    }
    _max_grainsize = index;
}

// ---------------------------------------------------------------- type, tier, version

void Parameters::setUsingFluvi()
{
    setParamString(SIM_TYPE, FLUVIAL);
    reset(true);
}

void Parameters::setUsingTurbi()
{
    setParamString(SIM_TYPE, TURBIDITE);
    reset(true);
}

void Parameters::setUsingDistrib(int tier)
{
    _distrib = tier;
    updateFullVersion();
}

void Parameters::setExpirationDate(const std::string& date)
{
    _expiration_date = date;
    updateFullVersion();
}

std::string Parameters::getDistribStr() const
{
    if (_distrib < 0 || _distrib > 2)
        return MP_UNDEF_STRING;
    return DISTRIB_NAMES[_distrib];
}

bool Parameters::usingFluvi() const
{
    const tstring* type = find_entry(_strings, SIM_TYPE);
    return type != nullptr && type->value == FLUVIAL;
}

bool Parameters::usingTurbi() const
{
    const tstring* type = find_entry(_strings, SIM_TYPE);
    return type != nullptr && type->value == TURBIDITE;
}

bool Parameters::usingLobes() const
{
    const tstring* type = find_entry(_strings, SIM_TYPE);
    return type != nullptr && type->value == LOBES;
}

bool Parameters::usingTurbiOrLobes() const
{
    return usingTurbi() || usingLobes();
}

bool Parameters::usingVariablePBGrainsize() const
{
    return getParamBool(GR_PB);
}

bool Parameters::usingVarPBGrainOptim() const
{
    return getParamBool(GR_PB) && getParamBool(GR_PB_OPTIM);
}

bool Parameters::usingVarPBGrainProxy() const
{
    return getParamBool(GR_PB) && getParamBool(GR_PB_PROXY);
}

// ---------------------------------------------------------------- sediment load

bool Parameters::setSedVolumes(const std::vector<int>& volumes)
{
    if (volumes.size() != static_cast<std::size_t>(MD_NB_CLASS_GR))
    {
        traceError("Wrong number of grain size class");
        return false;
    }
    for (int i = 0; i < MD_NB_CLASS_GR; i++)
        setParamIntIdx(SED_LOAD_VOL, i, volumes[i]);
    return true;
}

std::vector<int> Parameters::getSedVolumes() const
{
    std::vector<int> volumes(MD_NB_CLASS_GR);
    for (int i = 0; i < MD_NB_CLASS_GR; i++)
        volumes[i] = getParamIntIdx(SED_LOAD_VOL, i);
    return volumes;
}

std::vector<double> Parameters::getSedProportions() const
{
    const std::vector<int> volumes = getSedVolumes();
    std::vector<double> proportions(volumes.size());
    for (std::size_t i = 0; i < volumes.size(); i++)
        proportions[i] = volumes[i] / 100.0;
    return proportions;
}

int Parameters::getSedMedianClass() const
{
    // The class where the cumulated percentage passes one half; the answer
    // names the class that follows it.
    const std::vector<int> volumes = getSedVolumes();
    int sum = 0;
    for (int i = 0; i < MD_NB_CLASS_GR; i++)
    {
        sum += volumes[i];
        if (sum > 50)
            return i + 1;
    }
    return 0;
}

// ---------------------------------------------------------------- report

std::string Parameters::getParamsDesc(const std::string& prefix, bool all) const
{
    std::ostringstream s;
    if (all)
    {
        std::string::size_type width = 0;
        for (const auto& [name, entry] : _strings)
            width = std::max(width, name.size());
        for (const auto& [name, entry] : _bools)
            width = std::max(width, name.size());
        for (const auto& [name, entry] : _ints)
            width = std::max(width, name.size());
        for (const auto& [name, entry] : _doubles)
            width = std::max(width, name.size());
        const auto label = [&](const std::string& name) -> std::ostream&
        { return s << prefix << std::left << std::setw(static_cast<int>(width)) << name << " = "; };
        s << prefix << "Version " << _full_version << "\n";
        for (const auto& [name, entry] : _strings)
            label(name) << entry.value << "\n";
        for (const auto& [name, entry] : _bools)
            label(name) << yes_no(entry.value) << "\n";
        for (const auto& [name, entry] : _ints)
            label(name) << entry.value << "\n";
        for (const auto& [name, entry] : _doubles)
            label(name) << entry.value << "\n";
    }
    s << prefix << "Real Sinuosity Computation Interval         = ";
    if (_sinuo_interval == 0)
        s << "Not used\n";
    else
        s << _sinuo_interval << "\n";
    s << prefix << "Number of Points for Curvatures Calculation = " << _curvature_points << "\n";
    s << prefix << "Maximum Well Influence Distance Factor      = ";
    if (usingCondMigWells())
        s << _cond_mig_wells << "\n";
    else
        s << "Not used\n";
    s << prefix << "Avulsions Conditioned by Wells              = " << yes_no(_cond_av_wells) << "\n";
    s << prefix << "Conditioning New Algorithm                  = " << yes_no(_cond_new_algo) << "\n";
    s << prefix << "Avulsions Conditioned on Mean Position      = " << yes_no(_cond_av_mp) << "\n";
    s << prefix << "Avulsions Blocked by Conditioning           = " << yes_no(_cond_block_av) << "\n";
    s << prefix << "Fill Abandoned Channels                     = " << yes_no(!_dry_channel) << "\n";
    s << prefix << "Bank Erodibility Coefficient                = ";
    if (usingBankErodCoeff())
        s << _bank_erod_coeff << "\n";
    else
        s << "Not used\n";
    s << prefix << "Turbidites Aggradation Height Coefficient     = " << _turb_agg_height_coeff << "\n";
    s << prefix << "Using Old Filling Algorithm                 = " << yes_no(_old_filling) << "\n";
    s << prefix << "Scour Factor                                = ";
    if (_scour_factor == DEF_UNSET_FACTOR)
        s << "Not used\n";
    else
        s << _scour_factor << "\n";
    s << prefix << "Friction Coefficient                        = ";
    if (_friction_coeff == DEF_UNSET_FACTOR)
        s << "Not used\n";
    else
        s << _friction_coeff << "\n";
    s << prefix << "Minimum Grain Size Class                    = " << _min_grainsize << "\n";
    s << prefix << "Maximum Grain Size Class                    = " << _max_grainsize << "\n";
    return s.str();
}
