#include "kernel/parameters/Parameters.h"

#include "interface/iTracer.h"
#include "kernel/common/Constants.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"
#include "kernel/parameters/ParameterDeclarations.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <sstream>

namespace
{

const std::string SIM_TYPE = "SIM_TYPE";
const std::string GR_PB = "GR_PB";
const std::string GR_PB_OPTIM = "GR_PB_OPTIM";
const std::string GR_PB_PROXY = "GR_PB_PROXY";
const std::string FLUVIAL = "Fluvial";
const std::string TURBIDITE = "Turbidite";
const std::string LOBES = "Lobes";
const std::string SED_LOAD_VOL = "SED_LOAD_VOL";

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
    for (const ParameterDeclaration& row : ParameterDeclarations::all())
    {
        if (row.geometry && !full)
            continue;
        resetDeclared(row, turbiditic);
    }
}

void Parameters::resetDeclared(const ParameterDeclaration& row, bool turbiditic)
{
    const bool turbi = turbiditic && row.turbiditic_differs;
    const double def = turbi ? row.turb_def : row.def;
    const double min = turbi ? row.turb_min : row.min;
    const double max = turbi ? row.turb_max : row.max;
    switch (row.type)
    {
    case PARAM_STRING:
        // The kind of system is chosen, not reset: a reset keeps it.
        if (_strings.count(row.name) == 0)
            resetString(row.name, row.text);
        break;
    case PARAM_BOOL:
        resetBool(row.name, def != 0.);
        break;
    case PARAM_INT:
        if (row.count > 0)
        {
            const std::vector<int>& volumes = ParameterDeclarations::sedimentVolumes(turbiditic);
            for (int i = 0; i < row.count; i++)
                resetIntIdx(row.name, i, volumes[i], static_cast<int>(min), static_cast<int>(max));
        }
        else
            resetInt(row.name, static_cast<int>(def), static_cast<int>(min), static_cast<int>(max),
                     row.control, row.control_value);
        break;
    case PARAM_REAL:
        resetDouble(row.name, def, min, max, row.control, row.control_value);
        break;
    }
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

std::string Parameters::getParamText(const std::string& name) const
{
    std::ostringstream s;
    if (const tdouble* real = find_entry(_doubles, name))
        s << real->value;
    else if (const tint* integer = find_entry(_ints, name))
        s << integer->value;
    else if (const tbool* flag = find_entry(_bools, name))
        s << (flag->value ? 1 : 0);
    else if (const tstring* text = find_entry(_strings, name))
        s << text->value;
    else
        s << MP_UNDEF_STRING;
    return s.str();
}

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
