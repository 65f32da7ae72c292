#include "kernel/batch/NewJournalSequence.h"

#include "JournalSupport.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/channel/Centerline.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/EMap.h"
#include "kernel/files/SnapshotFolder.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <istream>
#include <sstream>

namespace
{
using journal_support::int_text;
using journal_support::is_set;
using journal_support::LAST_FACIES_FAMILY;

constexpr int DEFAULT_ZUL_TYPE = ZUL_STOP;
constexpr int NB_SED_CLASSES = 15;

bool in_list(const std::string& key, std::initializer_list<const char*> names)
{
    return std::any_of(names.begin(), names.end(), [&key](const char* name) { return key == name; });
}

std::string nexus_text(const std::vector<double>& values)
{
    const char* names[] = {"HMAX = ", ", ISBX = ", ", SAND = "};
    std::string text;
    for (size_t k = 0; k < 3 && k < values.size(); ++k)
        text += names[k] + (is_set(values[k]) ? NewJournalFile::text(values[k]) : std::string("undefined"));
    return text;
}

// A surface of the batch is meant for the domain: files that carry no
// geometry (GSLIB, plain ascii) are read on the domain's.
bool read_surface(GridReal& grid, const std::string& path, const iSimulator* simulator)
{
    const iDomain* domain = simulator->getDomain();
    return domain != nullptr ? grid.read_on(path, domain->getGridParams()) : grid.read(path);
}

} // namespace

NewJournalSequence::NewJournalSequence(iSimulator* simulator)
    : _simulator(simulator), _registry(nullptr), _lineNumber(0), _directory("."), _index(0), _first(false),
      _zulKnown(false)
{
    reset();
}

void NewJournalSequence::reset()
{
    _failed = false;
    _keyLines.clear();
    _launchIt = MP_UNDEF_INT;
    _hasTopo = false;
    _topoFile.clear();
    _topoValue = MP_UNDEF_REAL;
    _topoMode = MP_UNDEF_INT;
    _topoFacies = MP_UNDEF_INT;
    _hasClFile = false;
    _clFile.clear();
    _hasClPoint = false;
    _clX = MP_UNDEF_REAL;
    _clY = MP_UNDEF_REAL;
    _hasZulFile = false;
    _zulFile.clear();
    _zulTopo = MP_UNDEF_REAL;
    _zulType = MP_UNDEF_INT;
    _hasEmapFile = false;
    _emapFile.clear();
    _emapOffset = MP_UNDEF_REAL;
    _hasTectoFile = false;
    _tectoFile.clear();
    _snapLoadDir.clear();
    _snapSaveDir.clear();
    _hasNexus = false;
    _nexus.assign(3, MP_UNDEF_REAL);
    _nexusGrid = 0;
    _hasNeqsus = false;
    _neqsus.assign(3, MP_UNDEF_REAL);
    _neqsusGrid = 0;
    _eraseFacies = MP_UNDEF_REAL;
    _eraseFaciesFake = MP_UNDEF_REAL;
    _sedVolumes.clear();
    _sinuoInterval = MP_UNDEF_INT;
    _curvaturePoints = MP_UNDEF_INT;
    _scourFactor = MP_UNDEF_REAL;
    _frictionCoeff = MP_UNDEF_REAL;
    _bankErodCoeff = MP_UNDEF_REAL;
    _turbAggHeightCoeff = MP_UNDEF_REAL;
    _condMigWellsFactor = -1;
    _condAvWells = -1;
    _condNewAlgo = -1;
    _condAvMP = -1;
    _condBlockAv = -1;
    _userParams.clear();
}

bool NewJournalSequence::setsGrid() const
{
    return (_hasNexus && _nexusGrid == 1) || (_hasNeqsus && _neqsusGrid == 1) ||
           std::any_of(_userParams.begin(), _userParams.end(),
                       [](const auto& entry) { return entry.first.compare(0, 7, "DOMAIN_") == 0; });
}

bool NewJournalSequence::stopsWhenWellsHonored() const
{
    const auto found = _userParams.find("COND_WELL_STOP_HONORED");
    return found != _userParams.end() && found->second != 0.;
}

std::string NewJournalSequence::path_of(const std::string& name) const
{
    if (name.empty())
        return name;
    std::filesystem::path path(name);
    if (path.is_relative())
        path = std::filesystem::path(_directory) / path;
    return path.lexically_normal().string();
}

// ---------------------------------------------------------------------------
// Reading

bool NewJournalSequence::load(std::istream& stream, std::string& line, int index, bool first)
{
    iTracer* tracer = _simulator->getTracer();
    reset();
    _index = index;
    _first = first;
    tracer->info("Loading Sequence # " + int_text(index));
    if (!journal_support::read_section(
            stream, line, _lineNumber, tracer,
            [this](const std::string& key, const std::string& value, const std::string& text, int number)
            {
                _keyLines[key] = number;
                read_keyword(key, value, text);
            }))
        return false;
    if (_hasEmapFile && _zulType == ZUL_STRATIGRAPHIC)
    {
        tracer->warning("EMap file will be ignored because upper limit is stratigraphic");
        _hasEmapFile = false;
        _emapFile.clear();
        _emapOffset = MP_UNDEF_REAL;
    }
    const bool checked = check();
    return checked && !_failed;
}

bool NewJournalSequence::allowed(const std::string& key, Gate gate) const
{
    return journal_support::tier_allows(_simulator, key, gate == GATE_NOT_FREE, gate == GATE_RESEARCH);
}

bool NewJournalSequence::allowed_group(const std::string& key) const
{
    const iParameters* params = _simulator->getParameters();
    iTracer* tracer = _simulator->getTracer();
    if (params->usingFree() && in_list(key, {"CHNL_SCALE_CONST", "CHNL_SCALE_DIST", "CHNL_SCALE_LOGNORM_MEAN",
                                             "CHNL_SCALE_LOGNORM_STDEV", "CHNL_SCALE_MAX", "CHNL_SCALE_MIN",
                                             "CHNL_SCALE_NORM_MEAN", "CHNL_SCALE_NORM_STDEV"}))
    {
        tracer->error("CHNL_SCALE* keywords are not available in Free version");
        return false;
    }
    if (!params->usingResearch() && in_list(key, {"MASS_BAL_ACTIVE", "MASS_BAL_COEF"}))
    {
        tracer->error("MASS_BAL* keywords are only available for our Research partners");
        return false;
    }
    if (in_list(key,
                {"GR_PB_OPTIM", "GR_PB_OPTIM_MIN", "GR_PB_OPTIM_MAX", "GR_PB_OPTIM_ALPHA", "GR_PB_PROXY"}))
        return allowed(key, GATE_RESEARCH);
    if (params->usingFree() && in_list(key, {"SED_LOAD_MEAN", "GR_PB", "GR_QUICK_C0", "GR_THRESHOLD"}))
    {
        tracer->error("SED* and GR* keywords are not available in Free version");
        return false;
    }
    return true;
}

std::string NewJournalSequence::at(const std::string& key) const
{
    const auto found = _keyLines.find(key);
    return journal_support::where(_source, found == _keyLines.end() ? 0 : found->second);
}

bool NewJournalSequence::refuse(const std::string& message)
{
    _simulator->getTracer()->error(message);
    _failed = true;
    return false;
}

bool NewJournalSequence::bad_value(const std::string& key, const std::string& value,
                                   const std::string& reason)
{
    return refuse("Bad formated value for " + key + " = " + value + ": " + reason + at(key));
}

bool NewJournalSequence::read_int(const std::string& key, const std::string& value, int& target)
{
    return NewJournalFile::toInt(value, target) || bad_value(key, value, "an integer is expected");
}

bool NewJournalSequence::read_real(const std::string& key, const std::string& value, double& target)
{
    return NewJournalFile::toReal(value, target) || bad_value(key, value, "a number is expected");
}

bool NewJournalSequence::read_flag(const std::string& key, const std::string& value, int& target)
{
    return NewJournalFile::toFlag(value, target) || bad_value(key, value, "0 or 1 is expected");
}

// Whether the registry knows `key` and the value suits its type; the ranges
// are checked with the whole batch in view (checkAgainst).
bool NewJournalSequence::read_parameter(const std::string& key, const std::string& value)
{
    const iParameters* registry = _registry ? _registry : _simulator->getParameters();
    double real = 0.;
    const bool number = NewJournalFile::toReal(value, real);
    if (registry->getParamMinDouble(key) == MP_UNDEF_REAL && registry->getParamMinInt(key) != MP_UNDEF_INT)
    {
        if (!number || std::floor(real) != real || real < INT_MIN ||
            real >= static_cast<double>(INT_MAX) + 1.)
            return bad_value(key, value, "an integer is expected");
    }
    else if (registry->getParamMinDouble(key) == MP_UNDEF_REAL)
    {
        if (registry->getParamString(key) != MP_UNDEF_STRING)
            return refuse(key + " cannot be set in a sequence" + at(key));
        std::vector<std::string> names = journal_support::parameter_names(registry);
        if (std::find(names.begin(), names.end(), key) == names.end())
        {
            names.insert(names.end(),
                         {"LAUNCH_IT",      "NEW_TOPO",    "NEW_TOPO_MODE", "NEW_TOPO_FACIES", "NEW_CL_FILE",
                          "NEW_CL_POINT",   "ZUL_FILE",    "ZUL_TOPO",      "ZUL_TYPE",        "EMAP_FILE",
                          "EMAP_OFFSET",    "TECTO_FILE",  "SNAP_LOAD_DIR", "SNAP_SAVE_DIR",   "NEXUS_HMAX",
                          "NEXUS_ISBX",     "NEXUS_SAND",  "NEXUS_GRID",    "NEQSUS_HMAX",     "NEQSUS_ISBX",
                          "NEQSUS_SAND",    "NEQSUS_GRID", "ERASE_FACIES",  "ERASE_FACIES_FK", "SED_LOAD_VOL",
                          "BANK_EROD_COEFF"});
            return refuse("Unknown parameter :" + key + at(key) + journal_support::suggestion(key, names));
        }
        if (!number || (real != 0. && real != 1.))
            return bad_value(key, value, "0 or 1 is expected");
    }
    else if (!number)
        return bad_value(key, value, "a number is expected");
    _userParams[key] = real;
    return true;
}

bool NewJournalSequence::read_keyword(const std::string& key, const std::string& value,
                                      const std::string& line)
{
    bool known = true;
    bool ok = read_action_keyword(key, value, line, known);
    if (!known)
    {
        known = true;
        ok = read_expert_keyword(key, value, known);
    }
    if (known)
        return ok;
    if (!allowed_group(key))
        return true;
    return read_parameter(key, value);
}

// The keywords of the actions, checked in this order; each reader returns what
// the line's reading gives (false with the message already set).
bool NewJournalSequence::read_action_keyword(const std::string& key, const std::string& value,
                                             const std::string& line, bool& known)
{
    using Reader = bool (*)(NewJournalSequence&, const std::string&, const std::string&, const std::string&);
    static const Reader snapshot_dir =
        [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
    {
        if (!seq.allowed(key, GATE_RESEARCH))
            return true;
        std::string dir = seq.path_of(value);
        while (dir.size() > 1 && dir.back() == '/')
            dir.pop_back();
        (key == "SNAP_LOAD_DIR" ? seq._snapLoadDir : seq._snapSaveDir) = dir;
        return true;
    };
    static const Reader nexus_value =
        [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
    {
        double real = 0.;
        const bool nexus = key.compare(0, 6, "NEXUS_") == 0;
        const size_t slot = key.find("HMAX") != std::string::npos   ? 0
                            : key.find("ISBX") != std::string::npos ? 1
                                                                    : 2;
        if (!seq.read_real(key, value, real))
            return false;
        (nexus ? seq._nexus : seq._neqsus)[slot] = real;
        (nexus ? seq._hasNexus : seq._hasNeqsus) = true;
        return true;
    };
    static const Reader nexus_grid =
        [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
    {
        const bool nexus = key == "NEXUS_GRID";
        if (!seq.read_flag(key, value, nexus ? seq._nexusGrid : seq._neqsusGrid))
            return false;
        (nexus ? seq._hasNexus : seq._hasNeqsus) = true;
        return true;
    };
    static const std::pair<const char*, Reader> KEYWORDS[] = {
        {"LAUNCH_IT",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
         {
             int number = 0;
             if (!seq.read_int(key, value, number))
                 return false;
             if (number < -1)
                 return seq.bad_value(key, value, "-1 or a positive count is expected");
             seq._launchIt = number;
             return true;
         }},
        {"LAUNCH_ZUL",
         [](NewJournalSequence& seq, const std::string&, const std::string& value, const std::string&)
         {
             seq._simulator->getTracer()->error(
                 "LAUNCH_ZUL keyword is deprecated. Please, use LAUNCH_IT = -1 and ZUL_FILE/ZUL_TOPO = " + value);
             seq._failed = true;
             return false;
         }},
        {"NEW_TOPO",
         [](NewJournalSequence& seq, const std::string&, const std::string& value, const std::string&)
         {
             seq._hasTopo = true;
             seq._topoFile.clear();
             seq._topoValue = MP_UNDEF_REAL;
             if (!NewJournalFile::toReal(value, seq._topoValue))
                 seq._topoFile = seq.path_of(value);
             return true;
         }},
        {"NEW_TOPO_MODE", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                             const std::string&) { return seq.read_int(key, value, seq._topoMode); }},
        {"NEW_TOPO_FACIES", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                               const std::string&) { return seq.read_int(key, value, seq._topoFacies); }},
        {"NEW_CL_FILE",
         [](NewJournalSequence& seq, const std::string&, const std::string& value, const std::string&)
         {
             seq._hasClFile = true;
             seq._clFile = seq.path_of(value);
             return true;
         }},
        {"NEW_CL_POINT",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string& line)
         {
             std::istringstream in(value);
             double x = 0.;
             double y = 0.;
             std::string rest;
             if (!(in >> x >> y) || (in >> rest) || !std::isfinite(x) || !std::isfinite(y))
                 return seq.refuse("Bad formated line for NEW_CL_POINT: " + line +
                                   ": two coordinates x y are expected" + seq.at(key));
             seq._hasClPoint = true;
             seq._clX = x;
             seq._clY = y;
             return true;
         }},
        {"ZUL_FILE",
         [](NewJournalSequence& seq, const std::string&, const std::string& value, const std::string&)
         {
             seq._hasZulFile = true;
             seq._zulFile = seq.path_of(value);
             return true;
         }},
        {"ZUL_TOPO", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                        const std::string&) { return seq.read_real(key, value, seq._zulTopo); }},
        {"ZUL_TYPE", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                        const std::string&) { return seq.read_int(key, value, seq._zulType); }},
        {"EMAP_FILE",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
         {
             if (!seq.allowed(key, GATE_NOT_FREE))
                 return true;
             seq._hasEmapFile = true;
             seq._emapFile = seq.path_of(value);
             return true;
         }},
        {"EMAP_OFFSET",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
         {
             if (seq.allowed(key, GATE_NOT_FREE))
                 return seq.read_real(key, value, seq._emapOffset);
             return true;
         }},
        {"TECTO_FILE",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string&)
         {
             if (!seq.allowed(key, GATE_RESEARCH))
                 return true;
             seq._hasTectoFile = true;
             seq._tectoFile = seq.path_of(value);
             return true;
         }},
        {"SNAP_LOAD_DIR", snapshot_dir},
        {"SNAP_SAVE_DIR", snapshot_dir},
        {"NEXUS_HMAX", nexus_value},
        {"NEXUS_ISBX", nexus_value},
        {"NEXUS_SAND", nexus_value},
        {"NEQSUS_HMAX", nexus_value},
        {"NEQSUS_ISBX", nexus_value},
        {"NEQSUS_SAND", nexus_value},
        {"NEXUS_GRID", nexus_grid},
        {"NEQSUS_GRID", nexus_grid},
        {"ERASE_FACIES", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                            const std::string&) { return seq.read_real(key, value, seq._eraseFacies); }},
        {"ERASE_FACIES_FK", [](NewJournalSequence& seq, const std::string& key, const std::string& value,
                               const std::string&) { return seq.read_real(key, value, seq._eraseFaciesFake); }},
        {"SED_LOAD_VOL",
         [](NewJournalSequence& seq, const std::string& key, const std::string& value, const std::string& line)
         {
             if (!seq.allowed(key, GATE_NOT_FREE))
                 return true;
             const std::vector<std::string> items = NewJournalFile::splitList(value);
             std::vector<int> volumes;
             int number = 0;
             for (const std::string& item : items)
                 if (NewJournalFile::toInt(item, number))
                     volumes.push_back(number);
             if (items.size() != NB_SED_CLASSES || volumes.size() != NB_SED_CLASSES)
                 return seq.refuse("Bad formated line for SED_LOAD_VOL: " + line + ": " + int_text(NB_SED_CLASSES) +
                                   " integer percentages separated by ';' are expected" + seq.at(key));
             seq._sedVolumes = volumes;
             return true;
         }},
    };
    for (const auto& [keyword, read] : KEYWORDS)
        if (key == keyword)
            return read(*this, key, value, line);
    known = false;
    return true;
}

bool NewJournalSequence::read_expert_keyword(const std::string& key, const std::string& value, bool& known)
{
    if (key == "SINUOSITY_INTERVAL" || key == "CURVATURE_PTS_NB")
    {
        if (allowed(key, GATE_RESEARCH))
            return read_int(key, value, key == "SINUOSITY_INTERVAL" ? _sinuoInterval : _curvaturePoints);
    }
    else if (key == "SCOUR_FACTOR" || key == "FRICTION_COEFF")
    {
        if (allowed(key, GATE_RESEARCH))
            return read_real(key, value, key == "SCOUR_FACTOR" ? _scourFactor : _frictionCoeff);
    }
    else if (key == "BANK_EROD_COEFF")
        return read_real(key, value, _bankErodCoeff);
    else if (key == "TURB_AGG_HEIGHT_COEF")
    {
        if (allowed(key, GATE_NOT_FREE))
            return read_real(key, value, _turbAggHeightCoeff);
    }
    else if (key == "COND_MIG_WELLS_FACTOR")
    {
        if (allowed(key, GATE_NOT_FREE))
            return read_int(key, value, _condMigWellsFactor);
    }
    else if (in_list(key,
                     {"COND_AV_WELLS", "COND_WELLS_NEW_ALGO", "COND_WELLS_AV_MP", "COND_WELLS_BLOCK_AV"}))
    {
        if (!allowed(key, GATE_NOT_FREE))
            return true;
        int& target = key == "COND_AV_WELLS"         ? _condAvWells
                      : key == "COND_WELLS_NEW_ALGO" ? _condNewAlgo
                      : key == "COND_WELLS_AV_MP"    ? _condAvMP
                                                     : _condBlockAv;
        return read_flag(key, value, target);
    }
    else
        known = false;
    return true;
}

// ---------------------------------------------------------------------------
// Checks

bool NewJournalSequence::check_readable(const std::string& path, const std::string& what)
{
    if (NewJournalFile::isReadable(path))
        return true;
    _simulator->getTracer()->error(what + path + " is not readable");
    return false;
}

bool NewJournalSequence::check()
{
    iTracer* tracer = _simulator->getTracer();
    bool ok = true;
    auto refuse = [&ok, tracer](const std::string& message)
    {
        tracer->error(message);
        ok = false;
    };
    if (!is_set(_launchIt))
        refuse("Number of iterations not defined");
    else if (_launchIt == 0)
        refuse("Number of iterations cannot be null");
    if (_hasNexus && _hasNeqsus)
        refuse("Cannot apply Nexus and Neqsus");
    const bool zulKnown = _zulKnown || definesUpperLimit();
    if (_launchIt == -1 && !zulKnown)
        refuse("Use ZUL_FILE or ZUL_TOPO keyword if you want to use Upper Limit");

    if ((!_hasTopo && (is_set(_topoMode) || is_set(_topoFacies))) ||
        (_hasTopo && _topoFile.empty() && !is_set(_topoValue)))
        refuse("Topography not defined");
    if (is_set(_topoMode) && (_topoMode < SURF_ERODE_FILL || _topoMode > SURF_ERODE_BOTTOM))
        refuse("Topography mode " + int_text(_topoMode) + "] out of range");
    if (is_set(_topoFacies) && (_topoFacies < 0 || _topoFacies > LAST_FACIES_FAMILY))
        refuse("Topography facies " + int_text(_topoFacies) + "] out of range");
    if (_hasTopo && !_topoFile.empty())
        ok = check_readable(_topoFile, "Topography file ") && ok;

    if (_hasClFile && _clFile.empty())
        refuse("Centerline file or point not defined");
    else if (_hasClFile)
        ok = check_readable(_clFile, "Centerline file ") && ok;

    if (_hasTectoFile && _tectoFile.empty())
        refuse("Tectonic deformation file not defined");
    else if (_hasTectoFile)
        ok = check_readable(_tectoFile, "Tectonic deformation file ") && ok;

    if ((_hasZulFile && _zulFile.empty()) || (is_set(_zulType) && _zulType != ZUL_NONE && !zulKnown))
        refuse("Upper limit topography not defined");
    if (is_set(_zulType) && (_zulType < 0 || _zulType > ZUL_LAST))
        refuse("Upper limit type value out of range. " + int_text(_zulType) + " keyword value.");
    if (_hasZulFile && !_zulFile.empty())
        ok = check_readable(_zulFile, "Upper limit topography file ") && ok;

    if ((_hasEmapFile && _emapFile.empty()) || (is_set(_emapOffset) && !_hasEmapFile))
        refuse("Erodibility map file not defined");
    else if (_hasEmapFile)
        ok = check_readable(_emapFile, "Erodibility map file ") && ok;

    // A snapshot whose save was interrupted is taken from beside its name.
    std::string why;
    const bool savedBefore =
        std::find(_savedBefore.begin(), _savedBefore.end(), _snapLoadDir) != _savedBefore.end();
    if (!_snapLoadDir.empty() && !savedBefore && SnapshotFolder::locate(_snapLoadDir, false, why).empty())
        refuse(why.rfind("Snapshot file ", 0) == 0
                   ? why
                   : "Snapshot directory " + _snapLoadDir + " does not hold params.txt");
    return ok;
}

// ---------------------------------------------------------------------------
// Running

int NewJournalSequence::fail(const std::string& message, int status)
{
    _simulator->getTracer()->error(message);
    return status;
}

// The simulator's reason follows the failure; an internal check's text
// ("... failed at [file, line: n]") means nothing to the user and is only
// shown at debug level.
int NewJournalSequence::fail_with_reason(const std::string& message)
{
    iTracer* tracer = _simulator->getTracer();
    const std::string reason = _simulator->getLastMessage();
    const bool internal = reason.find(" failed at [") != std::string::npos;
    tracer->error(message + (reason.empty() || internal ? "" : "\n" + reason));
    if (internal)
        tracer->debug(reason);
    return MP_STATUS_FAILURE;
}

int NewJournalSequence::launch(NewJournalFile* file)
{
    iTracer* tracer = _simulator->getTracer();
    const std::string zul = is_set(_zulTopo) ? NewJournalFile::text(_zulTopo) : _zulFile;
    std::string text = "Preparing sequence #" + int_text(_index);
    if (_launchIt == -1)
        text += " for ZUL = " + (zul.empty() ? std::string("current upper limit") : zul);
    else
    {
        text += " for #IT = " + int_text(_launchIt);
        if (!zul.empty())
            text += "it with ZUL = " + zul;
    }
    tracer->info(text);
    int status = prepare(file);
    if (status != MP_STATUS_OK)
        return status;
    status = run_sequence(file);
    if (status != MP_STATUS_OK && status != MP_STATUS_UPPER_LIMIT && status != MP_STATUS_WELLS_HONORED)
        return status;
    if (save_snapshot() != MP_STATUS_OK)
        return MP_STATUS_FAILURE;
    report_end();
    return status;
}

int NewJournalSequence::prepare(NewJournalFile* file)
{
    if (!_snapLoadDir.empty() && !_simulator->load(_snapLoadDir))
        return fail_with_reason("Error loading snapshot");
    int status = apply_inference();
    if (status == MP_STATUS_OK)
        status = apply_parameters();
    if (status == MP_STATUS_OK)
        status = apply_expert_settings();
    if (status == MP_STATUS_OK)
        status = check_consistency(file);
    if (status != MP_STATUS_OK)
        return status;
    report_forecast();
    return apply_surfaces();
}

int NewJournalSequence::apply_inference()
{
    iTracer* tracer = _simulator->getTracer();
    const bool started = _simulator->getAge() > 0;
    std::string message;
    if (_hasNexus)
    {
        if (_nexusGrid == 1 && started)
            return fail("Nexus cannot update grid (simulation is started, please use NEXUS_GRID = 0)");
        tracer->info("Calculating Nexus for " + nexus_text(_nexus));
        if (!_simulator->applyNexus(_nexus, _nexusGrid == 1, message))
            return fail("Error calculating Nexus:\n" + message);
        report_inferred(true, _nexusGrid == 1);
    }
    if (_hasNeqsus)
    {
        if (_neqsusGrid == 1 && started)
            return fail("Neqsus cannot update grid (simulation is started, please use NEQSUS_GRID = 0)");
        tracer->info("Calculating Neqsus for " + nexus_text(_neqsus));
        if (!_simulator->applyNeqsus(_neqsus, _neqsusGrid == 1, message))
            return fail("Error calculating Neqsus:\n" + message);
        report_inferred(false, _neqsusGrid == 1);
    }
    return MP_STATUS_OK;
}

// The expert parameters the inference chose, so that the user can keep them.
void NewJournalSequence::report_inferred(bool nexus, bool grid)
{
    iTracer* tracer = _simulator->getTracer();
    if (!tracer->traceLevel(TRACE_INFO))
        return;
    const iParameters* params = _simulator->getParameters();
    std::vector<std::string> names;
    if (nexus)
        names = {"CHNL_MAX_DEPTH", "CHNL_WIDTH", "CHNL_WAVELENGTH", "EROD_COEF", "DOMAIN_SLOPE"};
    if (grid)
        names.insert(names.end(), {"DOMAIN_NX", "DOMAIN_NY", "DOMAIN_DX", "DOMAIN_DY"});
    names.insert(names.end(), {"AV_REG_POISSON", "AV_LOC_POISSON", "AG_OB_POISSON"});
    if (nexus)
        names.insert(names.end(), {"AG_OB_NORM_MEAN", "AG_OB_NORM_STDEV", "AG_EXP_DEC_THICK"});
    tracer->info(std::string(nexus ? "Nexus" : "Neqsus") + " parameters:");
    for (const std::string& name : names)
        tracer->info("  " + name + " = " + params->getParamText(name));
}

int NewJournalSequence::apply_parameters()
{
    iTracer* tracer = _simulator->getTracer();
    iParameters* params = _simulator->getParameters();
    if (!_userParams.empty())
        tracer->info("User defined parameters:");
    for (const auto& entry : _userParams)
    {
        // Echoed as stored, so that an integer reads as one.
        const bool known = params->setParam(entry.first, entry.second);
        tracer->info("  " + entry.first + " = " +
                     (known ? params->getParamText(entry.first) : NewJournalFile::text(entry.second)));
        if (!known)
        {
            tracer->error("Unknown parameter :" + entry.first);
            tracer->error("Available parameters are :\n" + params->getParamsDesc("  ", true));
            return MP_STATUS_FAILURE;
        }
    }
    if (_sedVolumes.empty())
        return MP_STATUS_OK;
    tracer->info("Sediment template parameters:");
    for (size_t k = 0; k < _sedVolumes.size(); ++k)
        tracer->info("  SED_LOAD_VOL[" + std::to_string(k) + "] = " + int_text(_sedVolumes[k]));
    if (!params->setSedVolumes(_sedVolumes))
        return fail("Problem with simulator action: setSedVolumes");
    return MP_STATUS_OK;
}

int NewJournalSequence::apply_expert_settings()
{
    iParameters* params = _simulator->getParameters();
    if (is_set(_sinuoInterval))
        params->setSinuoInterval(static_cast<unsigned int>(std::max(_sinuoInterval, 0)));
    if (is_set(_curvaturePoints))
        params->setCurvaturePointsNumber(_curvaturePoints);
    if (is_set(_scourFactor))
        params->setScourFactor(_scourFactor);
    if (is_set(_frictionCoeff))
        params->setFrictionCoeff(_frictionCoeff);
    if (is_set(_bankErodCoeff))
        params->setBankErodCoeff(_bankErodCoeff);
    if (is_set(_turbAggHeightCoeff))
        params->setTurbAggHeightCoeff(_turbAggHeightCoeff);
    if (_condMigWellsFactor != -1 && is_set(_condMigWellsFactor))
        params->setCondMigWells(_condMigWellsFactor);
    if (_condAvWells != -1)
        params->setCondAvWells(_condAvWells == 1);
    if (_condNewAlgo != -1)
        params->setCondNewAlgo(_condNewAlgo == 1);
    if (_condAvMP != -1)
        params->setCondAvMP(_condAvMP == 1);
    if (_condBlockAv != -1)
        params->setCondBlockAv(_condBlockAv == 1);
    return MP_STATUS_OK;
}

int NewJournalSequence::check_consistency(NewJournalFile* file)
{
    iTracer* tracer = _simulator->getTracer();
    const bool force = file && file->forceSimu();
    const int status = _simulator->checkConsistency();
    if (status == MP_STATUS_INCONSISTENT)
    {
        if (!force)
        {
            tracer->error("Consistency errors!... Batch stops!");
            tracer->error("Use FORCE_SIMU = 1 if you want to ignore consistency errors");
            return status;
        }
        tracer->warning("Consistency errors!... Batch continues (FORCE_SIMU=1)!");
        tracer->warning("Consistency errors: batch continues (FORCE_SIMU = 1):\n" +
                        _simulator->getLastMessage());
    }
    else if (status == MP_STATUS_CONSISTENCY_WARNING)
        tracer->warning("Ignoring consistency warnings... Batch continues!");

    // Before the first iteration a new grid size still takes effect: the model is rebuilt on it.
    const bool regrid = _simulator->getAge() == 0 && setsGrid();
    if (_simulator->ready(false) && !regrid)
        return MP_STATUS_OK;
    if (file)
    {
        const int built = file->buildModel();
        if (built != MP_STATUS_OK)
            tracer->error("Problem with simulator action: launch");
        return built;
    }
    const int init = _simulator->init(force);
    if (init != MP_STATUS_OK)
        tracer->error("Problem with simulator action: init");
    return init;
}

void NewJournalSequence::report_forecast()
{
    iTracer* tracer = _simulator->getTracer();
    if (!tracer->traceLevel(TRACE_INFO))
        return;
    tracer->info("  Forecast Net to Gross (%): " +
                 NewJournalFile::text(_simulator->getForecastSand() * 100.));
    tracer->info("  Forecast Aggradation Rate (m/10000 it): " +
                 NewJournalFile::text(_simulator->getForecastAggradationRate()));
    tracer->info("  Forecast Migration Rate (m/10000 it): " +
                 NewJournalFile::text(_simulator->getForecastMigrationRate()));
    if (const MeanderCalculator* mc = _simulator->getMeanderCalculator())
        tracer->info("  Forecast Sand Bodies Extension Index: " + NewJournalFile::text(mc->forecast_isbx()));
}

int NewJournalSequence::apply_surfaces()
{
    int status = load_erodibility();
    if (status == MP_STATUS_OK)
        status = load_tectonics();
    if (status == MP_STATUS_OK)
        status = replace_topography();
    if (status == MP_STATUS_OK)
        status = load_upper_limit();
    if (status == MP_STATUS_OK)
        status = replace_centerline();
    if (status == MP_STATUS_OK)
        status = erase_facies();
    return status;
}

int NewJournalSequence::load_erodibility()
{
    if (!_hasEmapFile)
        return MP_STATUS_OK;
    iTracer* tracer = _simulator->getTracer();
    iParameters* params = _simulator->getParameters();
    if (is_set(_emapOffset) && !params->setParam("EROD_OFFSET", _emapOffset))
        return fail("Error loading erodibility map");
    EMap map;
    std::string detail;
    if (!read_surface(map, _emapFile, _simulator))
        detail = "Cannot read erodibility map from input file: " + _emapFile + "\n" +
                 journal_support::grid_reason(map.getError());
    else
    {
        // The simulator converts the map itself; a trial conversion names the file whose values
        // cannot be brought to a mean of one.
        EMap trial(map);
        trial.setError("");
        if (!trial.convert(params->getParamDouble("EROD_COEF"), params->getParamDouble("EROD_OFFSET")) ||
            !trial.getError().empty())
            detail = "Cannot convert erodibility map from input file: " + _emapFile;
        else if (!_simulator->loadEMap(map, !_first))
            detail = "Error loading erodibility map from file: " + _emapFile;
    }
    if (detail.empty())
        return MP_STATUS_OK;
    tracer->error("Error loading erodibility map");
    return fail(detail);
}

int NewJournalSequence::load_tectonics()
{
    if (!_hasTectoFile)
        return MP_STATUS_OK;
    TectoMap map;
    if (!read_surface(map, _tectoFile, _simulator))
        return fail("Cannot read tectonic deformation map from input file: " + _tectoFile + "\n" +
                    journal_support::grid_reason(map.getError()));
    if (!_simulator->loadTectoMap(map))
        return fail_with_reason("Error loading tectonic deformation map from file: " + _tectoFile);
    return MP_STATUS_OK;
}

int NewJournalSequence::replace_topography()
{
    if (!_hasTopo)
        return MP_STATUS_OK;
    _simulator->getTracer()->info("New topography");
    const int mode = is_set(_topoMode) ? _topoMode : SURF_ERODE_FILL;
    const int facies = is_set(_topoFacies) ? _topoFacies : FILL_NONE;
    if (_topoFile.empty())
    {
        if (!_simulator->replaceTopoFromCst(_topoValue, mode, facies, !_first))
            return fail_with_reason("Error replacing topography by a constant value");
        return MP_STATUS_OK;
    }
    Topo topo;
    if (!read_surface(topo, _topoFile, _simulator))
        return fail("Cannot read topography from input file: " + _topoFile + "\n" +
                    journal_support::grid_reason(topo.getError()));
    if (!_simulator->replaceTopo(topo, mode, facies, !_first))
        return fail_with_reason("Error replacing topography from file: " + _topoFile);
    return MP_STATUS_OK;
}

int NewJournalSequence::load_upper_limit()
{
    const int type = is_set(_zulType) ? _zulType : DEFAULT_ZUL_TYPE;
    if (is_set(_zulTopo))
    {
        if (!_simulator->loadUpperLimitFromCst(_zulTopo, type))
            return fail("Error loading constant upper limit");
    }
    else if (_hasZulFile)
    {
        Topo topo;
        if (!read_surface(topo, _zulFile, _simulator))
            return fail("Cannot read upper limit topography from input file: " + _zulFile + "\n" +
                        journal_support::grid_reason(topo.getError()));
        if (!_simulator->loadUpperLimit(topo, type))
            return fail_with_reason("Error loading upper limit topography from file: " + _zulFile);
    }
    else if (is_set(_zulType))
        _simulator->getParameters()->setParamInt("ZUL_TYPE", _zulType);
    return MP_STATUS_OK;
}

int NewJournalSequence::replace_centerline()
{
    if (!_hasClFile && !_hasClPoint)
        return MP_STATUS_OK;
    _simulator->getTracer()->info("New centerline");
    if (_hasClFile)
    {
        Centerline centerline;
        if (!centerline.read(_clFile))
            return fail("Cannot read centerline from input file: " + _clFile + "\n" +
                        centerline.get_message());
        if (!_simulator->replaceCenterline(centerline, !_first))
            return fail_with_reason("Error replacing centerline from file: " + _clFile);
    }
    if (_hasClPoint)
    {
        const Point2D point(_clX, _clY);
        if (!_simulator->replaceCenterlineFromPoint(point, !_first))
            return fail_with_reason("Error replacing centerline from point: " + point.debug());
    }
    return MP_STATUS_OK;
}

int NewJournalSequence::erase_facies()
{
    if (is_set(_eraseFacies) && !_simulator->eraseFacies(_eraseFacies, !_first))
        return fail("Cannot erase facies");
    if (is_set(_eraseFaciesFake) && !_simulator->eraseFaciesFake(_eraseFaciesFake))
        return fail("Cannot (fake) erase facies");
    return MP_STATUS_OK;
}

int NewJournalSequence::run_sequence(NewJournalFile* file)
{
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Launching sequence #" + int_text(_index));
    tracer->info("New Sequence Preparation");
    int status = _simulator->newSequence();
    if (status != MP_STATUS_OK)
        return fail("Problem with simulator action: newSequence", status);
    tracer->info("Sequence Run");
    status = run_pieces(file);
    if (status == MP_STATUS_OK || status == MP_STATUS_UPPER_LIMIT || status == MP_STATUS_WELLS_HONORED)
    {
        tracer->info("Sequence Termination");
        const int ending = _simulator->endSequence();
        if (ending != MP_STATUS_OK)
            return fail("Problem with simulator action: endSequence", ending);
    }
    return status;
}

int NewJournalSequence::run_pieces(NewJournalFile* file)
{
    const unsigned int total = _launchIt == -1 ? UINT_MAX : static_cast<unsigned int>(_launchIt);
    const int every = file ? file->getF2GIt() : MP_UNDEF_INT;
    if (!is_set(every) || every <= 0)
    {
        const int status = _simulator->run(total);
        if (status != MP_STATUS_OK && status != MP_STATUS_UPPER_LIMIT && status != MP_STATUS_WELLS_HONORED)
            _simulator->getTracer()->error("Problem with simulator action: run");
        return status;
    }
    // Blocks are written whenever the age reaches a multiple of the interval.
    const unsigned int step = static_cast<unsigned int>(every);
    unsigned long long age = _simulator->getAge();
    unsigned int remaining = total;
    int status = MP_STATUS_OK;
    while (remaining > 0 && status == MP_STATUS_OK)
    {
        const unsigned int piece = std::min(remaining, step - static_cast<unsigned int>(age % step));
        status = _launchIt == -1 ? _simulator->runPiece(piece) : _simulator->run(piece);
        if (status != MP_STATUS_OK && status != MP_STATUS_UPPER_LIMIT && status != MP_STATUS_WELLS_HONORED)
            return fail("Problem with simulator action: run", status);
        remaining -= piece;
        age += piece;
        if (status == MP_STATUS_OK && age % step == 0 && !file->exportSimuF2G(true))
            return fail("Cannot save the simulation in F2G file");
    }
    return status;
}

int NewJournalSequence::save_snapshot()
{
    if (_snapSaveDir.empty())
        return MP_STATUS_OK;
    if (!NewJournalFile::createDirectory(_snapSaveDir))
        return fail("Cannot create the snapshot directory");
    if (!_simulator->save(_snapSaveDir))
        return fail("Cannot save the snapshot");
    return MP_STATUS_OK;
}

void NewJournalSequence::report_end()
{
    iTracer* tracer = _simulator->getTracer();
    if (!tracer->traceLevel(TRACE_INFO))
        return;
    tracer->info("End of sequence #" + int_text(_index));
    tracer->info("  Global Net to Gross (%): " +
                 NewJournalFile::text(_simulator->getSandProportion() * 100.));
    if (const iDomain* domain = _simulator->getDomain())
    {
        const unsigned int oldest = domain->oldest_age();
        tracer->info("  Oldest Age (# it): " +
                     (oldest == MP_UNDEF_UINT ? std::string("NA") : std::to_string(oldest)));
        tracer->info("  Mean Topography (m): " + NewJournalFile::text(domain->mean_topo_geo(false)));
    }
    tracer->info("  Global Aggradation Rate (m/10000 it): " +
                 NewJournalFile::text(_simulator->getAggradationRate()));
    const double isbx = _simulator->getMeanIsbx();
    tracer->info("  Mean Sand Bodies Extension Index: " +
                 (is_set(isbx) ? NewJournalFile::text(isbx) : std::string("NA")));
}
