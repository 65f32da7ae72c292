#include "kernel/common/Tracer.h"

#include "kernel/common/Constants.h"

#include <algorithm>

namespace
{

const char* const KIND_STATS = "Statistics";
const char* const KIND_CENTERLINE = "Centerline statistics";
const char* const KIND_GRAINSIZE = "Grain size statistics";

// Entry and exit marks line up under the 16-character message prefixes.
const char* const CALL_PREFIX = "                ";

const char* const STATS_HEAD =
    "Time;Abstract_Time;Obsv_Min_topo;Obsv_Nb_cutoff;Obsv_Nb_chutecutoff;Obsv_Nb_av;"
    "Obsv_Sinuo;Obsv_Tortuo;Obsv_sb_ext;Obsv_sb_ext_on_wl;Obsv_sb_ext_on_obsv_wl;"
    "Obsv_isbx;Obsv_Min_max_depth;Obsv_Max_max_depth;";
const char* const STATS_PROPS = "Obsv_CL_prop;Obsv_SP_prop;Obsv_CSI_prop;Obsv_CCH_prop;Obsv_CSII_prop;"
                                "Obsv_LV_prop;Obsv_OB_prop;Obsv_MP_prop;Obsv_HP_prop;Obsv_WL_prop;"
                                "Obsv_DR_prop;Obsv_PL_prop;";
const char* const STATS_TAIL = "Obsv_PB_prop;Pred_PB_prop;Obsv_Sand_prop;Pred_Sand_prop;Obsv_Aggrad_rate;"
                               "Pred_Aggrad_rate;Obsv_Sinuo_Allen;Pred_Sinuo;Obsv_Kob;Pred_Kob;Obsv_Kmig;"
                               "Pred_Kmig;Obsv_Kvp;Pred_Kvp;Obsv_Max_depth;Pred_Max_depth;Obsv_Wavelength;"
                               "Pred_Wavelength;Obsv_Velocity;Pred_Velocity;Obsv_Mean_vp;Pred_Mean_vp;"
                               "Obsv_Mig_rate;Pred_Mig_rate";

bool name_defined(const std::string& name)
{
    return !name.empty() && name != MP_UNDEF_STRING;
}

} // namespace

Tracer::Tracer()
    : _call_depth(0), _tracer_id(MP_UNDEF_INT), _level(TRACE_INFO), _stats_file(MP_UNDEF_STRING),
      _cl_stats_file(MP_UNDEF_STRING), _gr_stats_file(MP_UNDEF_STRING), _trace_function(nullptr),
      _progress_function(nullptr), _switches(0), _stats_interval(MP_DEFAULT_STATS_INTERVAL)
{
}

Tracer::~Tracer() = default;

void Tracer::setTracerId(int id)
{
    _tracer_id = id;
}

void Tracer::setVerbose(bool verbose)
{
    _level = verbose ? TRACE_INFO : TRACE_WARNING;
}

void Tracer::setSwitch(Switch bit, bool on)
{
    if (on)
        _switches |= bit;
    else
        _switches &= ~static_cast<unsigned int>(bit);
}

void Tracer::setTraceAvuls(bool on)
{
    setSwitch(SW_TRACE_AVULS, on);
}

void Tracer::setTraceConstruct(bool on)
{
    setSwitch(SW_TRACE_CONSTRUCT, on);
}

void Tracer::setTraceAggrad(bool on)
{
    setSwitch(SW_TRACE_AGGRAD, on);
}

void Tracer::setTraceMigrat(bool on)
{
    setSwitch(SW_TRACE_MIGRAT, on);
}

void Tracer::setTraceCond(bool on)
{
    setSwitch(SW_TRACE_COND, on);
}

void Tracer::setTraceMgmt(bool on)
{
    setSwitch(SW_TRACE_MGMT, on);
}

void Tracer::setGenerateStatsIteration(bool on)
{
    setSwitch(SW_STATS_IT, on);
}

void Tracer::setGenerateStatsAvulsion(bool on)
{
    setSwitch(SW_STATS_AV, on);
}

void Tracer::setGenerateStatsProps(bool on)
{
    setSwitch(SW_STATS_PROPS, on);
}

void Tracer::setGenerateCenterlineStats(bool on)
{
    setSwitch(SW_STATS_CL, on);
}

void Tracer::setGenerateGrainsizeStats(bool on)
{
    setSwitch(SW_STATS_GR, on);
}

bool Tracer::setStatsInterval(unsigned int n)
{
    if (n > MP_MAX_STATS_INTERVAL)
    {
        error("Stats interval > 1000 -> Use default");
        _stats_interval = MP_DEFAULT_STATS_INTERVAL;
        return false;
    }
    _stats_interval = n;
    return true;
}

TraceLevel Tracer::getTraceLevel() const
{
    return _level;
}

int Tracer::getTracerId() const
{
    return _tracer_id;
}

void Tracer::setTraceLevel(int level)
{
    if (level < TRACE_FATAL)
        level = TRACE_FATAL;
    if (level > TRACE_ALL)
        level = TRACE_ALL;
    _level = static_cast<TraceLevel>(level);
}

void Tracer::setTraceFunction(TraceFunction function)
{
    _trace_function = function;
}

void Tracer::setProgressFunction(ProgressFunction function)
{
    _progress_function = function;
}

void Tracer::setStatsFile(const std::string& name)
{
    _stats_file = name;
}

void Tracer::setCenterlineStatsFile(const std::string& name)
{
    _cl_stats_file = name;
}

void Tracer::setGrainsizeStatsFile(const std::string& name)
{
    _gr_stats_file = name;
}

std::string Tracer::statsHeader(bool with_proportions)
{
    std::string header = STATS_HEAD;
    if (with_proportions)
        header += STATS_PROPS;
    return header + STATS_TAIL;
}

std::string Tracer::centerlineStatsHeader()
{
    return "Iteration;Dist_previous;Curv_abscissa;Cart_abscissa;Cart_ordinate;Elevation;Curvature;"
           "Vel_perturb;Velocity;Mean_depth;True_elevation";
}

std::string Tracer::grainsizeStatsHeader()
{
    return "Side;Flow_Max_Thickness;Flow_Eff_Thickness;Flow_Super_Elev;Flow_Mean_Velocity;"
           "Flow_Mean_Concent;Flow_Velocity_Perturb;Elevation;Curvature;Grainsize";
}

bool Tracer::openCsv(std::ofstream& stream, const Staged& staged, const std::string& name, const char* kind,
                     std::ios::openmode mode)
{
    if (stream.is_open())
        stream.close();
    stream.clear();
    if (!name_defined(name))
    {
        error(std::string(kind) + " file is not defined");
        return false;
    }
    stream.open(staged ? staged->path() : name, mode | std::ios::out);
    if (!stream.is_open())
    {
        error("Error opening CSV file:" + name);
        return false;
    }
    return true;
}

// A new run starts a new temporary; the previous file stays until a sequence ends.
bool Tracer::writeHeader(std::ofstream& stream, Staged& staged, const std::string& name, const char* kind,
                         const std::string& header)
{
    if (stream.is_open())
        stream.close();
    staged.reset();
    if (name_defined(name))
        staged = std::make_unique<StagedFile>(name);
    if (!openCsv(stream, staged, name, kind, std::ios::trunc))
    {
        staged.reset();
        return false;
    }
    stream << header << '\n';
    const bool ok = static_cast<bool>(stream.flush());
    stream.close();
    if (!ok)
        staged.reset();
    return ok;
}

bool Tracer::resetStatsFiles()
{
    bool ok = true;
    if (generateStats())
        ok = writeHeader(_stats_stream, _stats_staged, _stats_file, KIND_STATS,
                         statsHeader(generateStatsProps())) &&
             ok;
    if (generateCenterlineStats())
        ok = writeHeader(_cl_stats_stream, _cl_stats_staged, _cl_stats_file, KIND_CENTERLINE,
                         centerlineStatsHeader()) &&
             ok;
    if (generateGrainsizeStats())
        ok = writeHeader(_gr_stats_stream, _gr_stats_staged, _gr_stats_file, KIND_GRAINSIZE,
                         grainsizeStatsHeader()) &&
             ok;
    return ok;
}

bool Tracer::openStatsFile(std::ios::openmode mode)
{
    return openCsv(_stats_stream, _stats_staged, _stats_file, KIND_STATS, mode);
}

bool Tracer::openCenterlineStatsFile(std::ios::openmode mode)
{
    return openCsv(_cl_stats_stream, _cl_stats_staged, _cl_stats_file, KIND_CENTERLINE, mode);
}

bool Tracer::openGrainsizeStatsFile(std::ios::openmode mode)
{
    return openCsv(_gr_stats_stream, _gr_stats_staged, _gr_stats_file, KIND_GRAINSIZE, mode);
}

// A stream not yet open is opened for appending, so that a line is never lost
// between the header written at start and the next sequence.
bool Tracer::dumpLine(std::ofstream& stream, const Staged& staged, const std::string& name, const char* kind,
                      const std::string& line)
{
    if (line.empty())
        return true;
    if (!stream.is_open() && !openCsv(stream, staged, name, kind, std::ios::app))
        return false;
    stream << line;
    if (line.back() != '\n')
        stream << '\n';
    return static_cast<bool>(stream.flush());
}

bool Tracer::dumpStats(const std::string& line)
{
    return dumpLine(_stats_stream, _stats_staged, _stats_file, KIND_STATS, line);
}

bool Tracer::dumpCenterlineStats(const std::string& line)
{
    return dumpLine(_cl_stats_stream, _cl_stats_staged, _cl_stats_file, KIND_CENTERLINE, line);
}

bool Tracer::dumpGrainsizeStats(const std::string& line)
{
    return dumpLine(_gr_stats_stream, _gr_stats_staged, _gr_stats_file, KIND_GRAINSIZE, line);
}

void Tracer::closeCsv(std::ofstream& stream, Staged& staged, const std::string& name)
{
    if (stream.is_open())
        stream.close();
    if (staged && !staged->commit())
        error("Error writing CSV file:" + name);
    staged.reset();
}

void Tracer::closeStatsFile()
{
    closeCsv(_stats_stream, _stats_staged, _stats_file);
}

void Tracer::closeCenterlineStatsFile()
{
    closeCsv(_cl_stats_stream, _cl_stats_staged, _cl_stats_file);
}

void Tracer::closeGrainsizeStatsFile()
{
    closeCsv(_gr_stats_stream, _gr_stats_staged, _gr_stats_file);
}

void Tracer::discardStatsFiles()
{
    for (std::ofstream* stream : {&_stats_stream, &_cl_stats_stream, &_gr_stats_stream})
        if (stream->is_open())
            stream->close();
    _stats_staged.reset();
    _cl_stats_staged.reset();
    _gr_stats_staged.reset();
}

ProgressFunction Tracer::getProgressFunction() const
{
    return _progress_function;
}

void Tracer::traceCallIn(const std::string& name)
{
    ++_call_depth;
    if (traceLevel(TRACE_DEBUG))
        trace(std::string(CALL_PREFIX) + " => " + name + "\n", TRACE_DEBUG);
}

void Tracer::traceCallOut(const std::string& name)
{
    if (_call_depth > 0)
        --_call_depth;
    if (traceLevel(TRACE_DEBUG))
        trace(std::string(CALL_PREFIX) + " ## " + name + "\n", TRACE_DEBUG);
}

void Tracer::trace(const std::string& text, TraceLevel level)
{
    if (level <= TRACE_ERROR)
        recordError(text);
    if (!_trace_function || _level < level)
        return;
    if (_tracer_id == MP_UNDEF_INT)
    {
        _trace_function(text.c_str(), level);
        return;
    }
    const std::string line = "[" + std::to_string(_tracer_id) + "] " + text;
    _trace_function(line.c_str(), level);
}

void Tracer::recordError(const std::string& text)
{
    ++_error_count;
    std::string plain;
    std::string::size_type start = 0;
    while (start < text.size())
    {
        std::string::size_type end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(start, end - start);
        for (const char* prefix : {MP_TRACE_PREFIX_ERROR, MP_TRACE_PREFIX_CONT})
            if (line.compare(0, std::char_traits<char>::length(prefix), prefix) == 0)
                line.erase(0, std::char_traits<char>::length(prefix));
        if (!plain.empty())
            plain += '\n';
        plain += line;
        start = end + 1;
    }
    // A bounded list: a failure that varies its text at every turn must not eat the memory.
    if (_distinct_errors.size() < MP_MAX_DISTINCT_ERRORS &&
        std::find(_distinct_errors.begin(), _distinct_errors.end(), plain) == _distinct_errors.end())
        _distinct_errors.push_back(plain);
}

unsigned int Tracer::getErrorCount() const
{
    return _error_count;
}

const std::vector<std::string>& Tracer::getDistinctErrors() const
{
    return _distinct_errors;
}

void Tracer::noteHiddenError(const std::string& text)
{
    recordError(text);
}

void Tracer::resetErrors()
{
    _error_count = 0;
    _distinct_errors.clear();
}

bool Tracer::progress(int n)
{
    return _progress_function ? _progress_function(n) : true;
}

bool Tracer::traceLevel(TraceLevel level) const
{
    return _level >= level;
}

bool Tracer::traceAvuls() const
{
    return hasSwitch(SW_TRACE_AVULS);
}

bool Tracer::traceConstruct() const
{
    return hasSwitch(SW_TRACE_CONSTRUCT);
}

bool Tracer::traceAggrad() const
{
    return hasSwitch(SW_TRACE_AGGRAD);
}

bool Tracer::traceMigrat() const
{
    return hasSwitch(SW_TRACE_MIGRAT);
}

bool Tracer::traceCond() const
{
    return hasSwitch(SW_TRACE_COND);
}

bool Tracer::traceMgmt() const
{
    return hasSwitch(SW_TRACE_MGMT);
}

// Steepest-descent walks are part of the course construction, and their
// node-by-node detail is only worth building at the debug level.
bool Tracer::traceSteepest() const
{
    return traceConstruct() && traceLevel(TRACE_DEBUG);
}

bool Tracer::generateStatsIt() const
{
    return hasSwitch(SW_STATS_IT);
}

bool Tracer::generateStatsAv() const
{
    return hasSwitch(SW_STATS_AV);
}

bool Tracer::generateStatsProps() const
{
    return hasSwitch(SW_STATS_PROPS);
}

bool Tracer::generateStats() const
{
    return generateStatsIt() || generateStatsAv();
}

bool Tracer::generateCenterlineStats() const
{
    return hasSwitch(SW_STATS_CL);
}

bool Tracer::generateGrainsizeStats() const
{
    return hasSwitch(SW_STATS_GR);
}

unsigned int Tracer::statsInterval() const
{
    return _stats_interval;
}

void Tracer::resetFrom(const Tracer& other)
{
    if (&other == this)
        return;
    discardStatsFiles();
    _call_depth = other._call_depth;
    _tracer_id = other._tracer_id;
    _level = other._level;
    _stats_file = other._stats_file;
    _cl_stats_file = other._cl_stats_file;
    _gr_stats_file = other._gr_stats_file;
    _trace_function = other._trace_function;
    _progress_function = other._progress_function;
    _switches = other._switches;
    _stats_interval = other._stats_interval;
}
