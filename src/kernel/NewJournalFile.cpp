#include "kernel/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/Core.h"
#include "kernel/CoreList.h"
#include "kernel/Domain.h"
#include "kernel/GridReal.h"
#include "kernel/Parameters.h"
#include "kernel/Topo.h"
#include "kernel/Tracer.h"
#include "kernel/UserClass.h"
#include "kernel/UserClassList.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <sstream>
#include <unistd.h>

namespace
{
using journal_support::elevation_text;
using journal_support::int_text;
using journal_support::is_set;
using journal_support::LAST_FACIES_FAMILY;

constexpr const char* DEFAULT_ORDER = "+Y +X +Z";

// Name of the file without its extension, directory kept.
std::string strip_extension(const std::string& path)
{
    const std::filesystem::path p(path);
    if (!p.has_extension())
        return path;
    return (p.parent_path() / p.stem()).string();
}

} // namespace

NewJournalFile::NewJournalFile(iSimulator* simulator) : _simulator(simulator)
{
    reset();
}

void NewJournalFile::reset()
{
    _batchFile.clear();
    _proportions = ProportionExports();
    _directory = ".";
    _lineNumber = 0;
    _keyLine = 0;
    _sequences.clear();
    _failed = false;
    _verbose = MP_UNDEF_INT;
    _traceLevel = MP_UNDEF_INT;
    _useTurbidite = 0;
    _forceSimu = 0;
    _wellFiles.clear();
    _wellTrajectories.clear();
    _wellNames.clear();
    _userClassType = MP_UNDEF_INT;
    _userClassFacies.clear();
    _userClassAttributes.clear();
    _userClassMin.clear();
    _userClassMax.clear();
    _hasUserClasses = false;
    _basementTopo.clear();
    _basementFacies = MP_UNDEF_INT;
    _flatteningFile.clear();
    _f2gFile.clear();
    _f2gIt = MP_UNDEF_INT;
    _f2gZbot = MP_UNDEF_REAL;
    _f2gZtop = MP_UNDEF_REAL;
    _f2gDz = MP_UNDEF_REAL;
    _f2gFacies = 0;
    _f2gGrain = 0;
    _f2gAge = 0;
    _f2gOrder = DEFAULT_ORDER;
    _statsFile.clear();
    _statsClFile.clear();
    _statsCondFile.clear();
    _statsIt = MP_UNDEF_INT;
    _statsAv = MP_UNDEF_INT;
    _statsProps = 0;
    _statsCl = 0;
    _sliceZ.clear();
    _sliceFiles.clear();
    _topoFile.clear();
    _histoFile.clear();
    _histoDz = MP_UNDEF_REAL;
    _histoNz = MP_UNDEF_INT;
    _extractedWells.clear();
    _pngDir.clear();
    _vtkFile.clear();
    _grdeclFile.clear();
    _grdeclProps.clear();
}

// ---------------------------------------------------------------------------
// Line dialect

std::string NewJournalFile::trim(const std::string& text)
{
    const char* blanks = " \t\r\n";
    const std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return "";
    const std::string::size_type last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

bool NewJournalFile::nextLine(std::istream& stream, std::string& line, iTracer* tracer, int* number)
{
    // Editors on other systems start the file with a byte-order mark.
    static const std::string BOM = "\xEF\xBB\xBF";
    std::string raw;
    while (std::getline(stream, raw))
    {
        if (number)
            ++*number;
        if (raw.compare(0, BOM.size(), BOM) == 0)
            raw.erase(0, BOM.size());
        line = trim(raw);
        if (line.empty())
            continue;
        if (tracer)
            tracer->debug("  Reading line: " + line);
        if (line[0] == '#')
            continue;
        // A marker may carry a comment: "[NEW_SEQ] # first".
        const std::string::size_type comment = line.find('#');
        if (isMarker(line) && comment != std::string::npos)
            line = trim(line.substr(0, comment));
        return true;
    }
    line.clear();
    return false;
}

bool NewJournalFile::splitLine(const std::string& line, std::string& key, std::string& value)
{
    const std::string::size_type equal = line.find('=');
    if (equal == std::string::npos)
        return false;
    key = trim(line.substr(0, equal));
    value = trim(line.substr(equal + 1));
    return true;
}

std::vector<std::string> NewJournalFile::splitList(const std::string& value, char separator)
{
    std::vector<std::string> items;
    std::string::size_type start = 0;
    for (;;)
    {
        const std::string::size_type end = value.find(separator, start);
        items.push_back(
            trim(value.substr(start, end == std::string::npos ? std::string::npos : end - start)));
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    return items;
}

bool NewJournalFile::toInt(const std::string& text, int& value)
{
    const std::string item = trim(text);
    if (item.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    const long converted = std::strtol(item.c_str(), &end, 10);
    if (*end != '\0' || errno != 0 || converted > INT_MAX || converted < INT_MIN)
        return false;
    value = static_cast<int>(converted);
    return true;
}

bool NewJournalFile::toReal(const std::string& text, double& value)
{
    const std::string item = trim(text);
    if (item.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    const double converted = std::strtod(item.c_str(), &end);
    if (*end != '\0' || errno != 0 || !std::isfinite(converted))
        return false;
    value = converted;
    return true;
}

bool NewJournalFile::toFlag(const std::string& text, int& value)
{
    int converted = 0;
    if (!toInt(text, converted) || (converted != 0 && converted != 1))
        return false;
    value = converted;
    return true;
}

std::string NewJournalFile::text(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

// ---------------------------------------------------------------------------
// Paths

std::string NewJournalFile::filename(const std::string& name, bool isDirectory) const
{
    if (name.empty())
        return name;
    std::filesystem::path path(name);
    if (path.is_relative())
        path = std::filesystem::path(_directory) / path;
    std::string result = path.lexically_normal().string();
    if (isDirectory)
        while (result.size() > 1 && result.back() == '/')
            result.pop_back();
    return result;
}

std::string NewJournalFile::directory(const std::string& path)
{
    const std::string parent = std::filesystem::path(path).parent_path().string();
    return parent.empty() ? "." : parent;
}

bool NewJournalFile::isReadable(const std::string& path)
{
    std::error_code code;
    if (path.empty() || std::filesystem::is_directory(path, code))
        return false;
    std::ifstream file(path);
    return file.is_open();
}

bool NewJournalFile::isWritable(const std::string& path)
{
    std::error_code code;
    if (path.empty() || std::filesystem::is_directory(path, code))
        return false;
    if (std::filesystem::exists(path, code))
        return ::access(path.c_str(), W_OK) == 0;
    // Missing folders are made when the batch runs: the nearest one that exists must take them.
    std::filesystem::path parent = std::filesystem::path(directory(path));
    while (!std::filesystem::exists(parent, code) && parent.has_parent_path() &&
           parent != parent.parent_path())
        parent = parent.parent_path();
    return std::filesystem::is_directory(parent, code) && ::access(parent.c_str(), W_OK) == 0;
}

bool NewJournalFile::createDirectory(const std::string& path)
{
    std::error_code code;
    if (std::filesystem::is_directory(path, code))
        return true;
    return std::filesystem::create_directories(path, code) && !code;
}

// ---------------------------------------------------------------------------
// Reading

bool NewJournalFile::load(std::string const& file)
{
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Loading batch file: " + file);
    std::string content;
    const std::string reason = read_text(file, content);
    if (!reason.empty())
    {
        tracer->error("Error opening batch file: " + file + ": " + reason);
        return false;
    }
    std::istringstream stream(content);
    return load(stream, file);
}

std::string NewJournalFile::read_text(const std::string& file, std::string& content)
{
    // A batch file is a few kilobytes of text; anything far larger is not one.
    constexpr std::uintmax_t MAX_SIZE = 64u << 20;
    std::error_code code;
    const std::filesystem::file_status status = std::filesystem::status(file, code);
    if (file.empty() || !std::filesystem::exists(status))
        return "no such file";
    if (std::filesystem::is_directory(status))
        return "is a directory";
    if (!std::filesystem::is_regular_file(status))
        return "not a text file";
    if (std::filesystem::file_size(file, code) > MAX_SIZE)
        return "not a text file (too large)";
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open())
        return errno != 0 ? std::strerror(errno) : "cannot be opened";
    std::ostringstream text;
    text << stream.rdbuf();
    content = text.str();
    if (content.find('\0') != std::string::npos)
        return "not a text file";
    return "";
}

bool NewJournalFile::load(std::istream& stream, std::string const& path)
{
    iTracer* tracer = _simulator->getTracer();
    reset();
    std::error_code code;
    const std::filesystem::path absolute = std::filesystem::absolute(path, code);
    _batchFile = code ? path : absolute.lexically_normal().string();
    _directory = directory(_batchFile);
    if (path.empty() || !std::filesystem::is_directory(_directory, code))
    {
        tracer->error("Not a valid batch file path: " + path);
        return false;
    }
    try
    {
        std::string line;
        if (!nextLine(stream, line, tracer, &_lineNumber) || line != "[GLOBAL]")
        {
            tracer->error("Missing [GLOBAL] section" +
                          (line.empty() ? std::string(": the file holds no keyword")
                                        : ": the file must start with it, not with " + line +
                                              journal_support::where(_batchFile, _lineNumber)));
            return false;
        }
        if (!loadGlobal(_batchFile, stream, line))
            return false;
        if (line != "[NEW_SEQ]")
        {
            tracer->error("Missing [NEW_SEQ] section");
            return false;
        }
        // The sequences are checked against a registry of their own, set as the
        // launch will set the simulator's, so that nothing is changed by loading.
        Tracer quiet;
        quiet.setTraceFunction(journal_support::trace_nothing);
        quiet.setTraceLevel(0);
        Parameters registry(&quiet);
        registry.setUsingDistrib(_simulator->getParameters()->getDistrib());
        if (_useTurbidite == 1)
            registry.setUsingTurbi();
        else
            registry.setUsingFluvi();
        GridParams grid = NewJournalSequence::gridOf(registry);
        GridParams firstGrid = grid;
        bool started = false;
        bool zulKnown = false;
        bool stopHonored = false;
        std::vector<std::string> savedSnapshots;
        int index = 0;
        while (line == "[NEW_SEQ]")
        {
            ++index;
            NewJournalSequence sequence(_simulator);
            sequence.setDirectory(_directory);
            sequence.setUpperLimitKnown(zulKnown);
            sequence.setSavedSnapshots(savedSnapshots);
            sequence.setSource(_batchFile, _lineNumber, &registry);
            const bool loaded = sequence.load(stream, line, index, index == 1);
            _lineNumber = sequence.getLineNumber();
            if (!loaded || !sequence.checkAgainst(registry, &quiet, forceSimu(), started, grid))
                return false;
            if (index == 1)
                firstGrid = grid;
            zulKnown = zulKnown || sequence.definesUpperLimit();
            stopHonored = stopHonored || sequence.stopsWhenWellsHonored();
            if (!sequence.getSnapSaveDir().empty())
                savedSnapshots.push_back(sequence.getSnapSaveDir());
            _sequences.push_back(sequence);
        }
        if (!line.empty())
        {
            tracer->error("Unknown section in batch file: " + line +
                          journal_support::where(_batchFile, _lineNumber));
            return false;
        }
        if (stopHonored && _wellFiles.empty())
        {
            tracer->error("You must define some wells in order to use 'COND_WELL_STOP_HONORED'");
            return false;
        }
        _stopHonored = stopHonored;
        if (stopHonored && !some_well_readable())
            return false;
        if (!checkPaths() || !check_global_surfaces(firstGrid) || !check_extracted_wells_at_load(grid) ||
            !check_sampling(grid))
            return false;
    }
    catch (...)
    {
        tracer->error("Error reading batch file (not good)");
        return false;
    }
    return true;
}

bool NewJournalFile::loadGlobal(const std::string& path, std::istream& stream, std::string& line)
{
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Loading global parameters");
    _failed = false;
    if (!journal_support::read_section(
            stream, line, _lineNumber, tracer,
            [this](const std::string& key, const std::string& value, const std::string& text, int number)
            {
                _keyLine = number;
                read_keyword(key, value, text);
            }))
        return false;
    _keyLine = 0;
    if (_failed)
        return false;
    set_defaults();
    (void)path;
    return check_global();
}

bool NewJournalFile::fail(const std::string& message)
{
    _simulator->getTracer()->error(message);
    _failed = true;
    return false;
}

bool NewJournalFile::bad_value(const std::string& key, const std::string& value)
{
    return fail("Bad formatted value: " + value + " for " + key +
                journal_support::where(_batchFile, _keyLine));
}

bool NewJournalFile::allowed(const std::string& key, Gate gate) const
{
    return journal_support::tier_allows(_simulator, key, gate == GATE_NOT_FREE, gate == GATE_RESEARCH);
}

bool NewJournalFile::read_keyword(const std::string& key, const std::string& value, const std::string& line)
{
    bool known = true;
    bool ok = read_input_keyword(key, value, known);
    if (!known)
    {
        known = true;
        ok = read_output_keyword(key, value, known);
    }
    if (!known)
    {
        known = true;
        ok = read_stats_keyword(key, value, known);
    }
    if (!known)
    {
        known = true;
        ok = read_export_keyword(key, value, known);
    }
    if (known && key == "EXP_WELL")
        ok = read_extracted_well(value, line);
    if (!known)
    {
        iTracer* tracer = _simulator->getTracer();
        tracer->warning("Unknown keyword: " + key + " ignored..." +
                        journal_support::where(_batchFile, _keyLine) + global_suggestion(key));
        tracer->warning("Unknown keyword for global section ignored: " + line);
    }
    return ok;
}

bool NewJournalFile::read_input_keyword(const std::string& key, const std::string& value, bool& known)
{
    iTracer* tracer = _simulator->getTracer();
    int flag = 0;
    int number = 0;
    if (key == "VERBOSE")
    {
        if (!toFlag(value, flag))
            return bad_value(key, value);
        _verbose = flag;
        tracer->setVerbose(flag == 1);
    }
    else if (key == "TRACE_LEVEL")
    {
        if (!toInt(value, number))
            return bad_value(key, value);
        _traceLevel = number;
        tracer->setTraceLevel(number);
    }
    else if (key == "USE_TURBIDITE")
    {
        if (!toInt(value, number))
            return bad_value(key, value);
        if (number == 2)
            return fail("Wrong turbidite option (use 0 or 1 as 2 is now deprecated)");
        if (number != 0 && number != 1)
            return bad_value(key, value);
        _useTurbidite = number;
    }
    else if (key == "FORCE_SIMU")
    {
        if (!toFlag(value, flag))
            return bad_value(key, value);
        _forceSimu = flag;
    }
    else if (key == "WELL_FILE" || key == "WELL_TRAJ" || key == "WELL_NAME")
    {
        if (!allowed(key, GATE_NOT_FREE))
            return true;
        if (key == "WELL_FILE")
            _wellFiles.push_back(filename(value));
        else if (key == "WELL_TRAJ")
            _wellTrajectories.push_back(filename(value));
        else
            _wellNames.push_back(value);
    }
    else if (key == "USER_CLASS_TYPE")
    {
        if (!allowed(key, GATE_NOT_FREE))
            return true;
        if (!toInt(value, number))
            return bad_value(key, value);
        _userClassType = number;
        _hasUserClasses = true;
    }
    else if (key == "USER_CLASS_FAC_ID")
    {
        if (!allowed(key, GATE_NOT_FREE))
            return true;
        _userClassFacies.clear();
        for (const std::string& item : splitList(value))
        {
            if (!toInt(item, number))
                return bad_value(key, value);
            _userClassFacies.push_back(number);
        }
        _hasUserClasses = true;
    }
    else if (key == "USER_CLASS_ATT")
    {
        _userClassAttributes = splitList(value);
        _hasUserClasses = true;
    }
    else if (key == "USER_CLASS_MIN_ITV" || key == "USER_CLASS_MAX_ITV")
    {
        if (!allowed(key, GATE_NOT_FREE))
            return true;
        std::vector<double>& list = key == "USER_CLASS_MIN_ITV" ? _userClassMin : _userClassMax;
        list.clear();
        for (const std::string& item : splitList(value))
        {
            double real = 0.;
            if (!toReal(item, real))
                return bad_value(key, value);
            list.push_back(real);
        }
        _hasUserClasses = true;
    }
    else if (key == "BASEMENT_TOPO")
        _basementTopo = filename(value);
    else if (key == "BASEMENT_FACIES")
    {
        if (!toInt(value, number))
            return bad_value(key, value);
        _basementFacies = number;
    }
    else if (key == "FLATTENING_FILE")
    {
        if (allowed(key, GATE_NOT_FREE))
            _flatteningFile = filename(value);
    }
    else
        known = false;
    return true;
}

bool NewJournalFile::read_output_keyword(const std::string& key, const std::string& value, bool& known)
{
    int flag = 0;
    int number = 0;
    double real = 0.;
    if (key == "F2G_FILE")
        _f2gFile = filename(value);
    else if (key == "F2G_IT")
    {
        if (!toInt(value, number) || number <= 0)
            return bad_value(key, value);
        _f2gIt = number;
    }
    else if (key == "F2G_ZBOT" || key == "F2G_ZTOP")
    {
        if (!toReal(value, real))
            return bad_value(key, value);
        (key == "F2G_ZBOT" ? _f2gZbot : _f2gZtop) = real;
    }
    else if (key == "F2G_DZ")
    {
        if (!toReal(value, real))
            return bad_value(key, value);
        if (real <= 0.)
            return fail("Wrong F2G_DZ value (must be > 0.)");
        _f2gDz = real;
    }
    else if (key == "F2G_FACIES" || key == "F2G_GRAIN" || key == "F2G_AGE")
    {
        if (!toFlag(value, flag))
            return bad_value(key, value);
        (key == "F2G_FACIES" ? _f2gFacies : key == "F2G_GRAIN" ? _f2gGrain : _f2gAge) = flag;
    }
    else if (key == "F2G_ORDER")
    {
        if (!GridReal::is_order_valid(value))
            return fail("F2G_ORDER value " + value + " is not valid");
        _f2gOrder = value;
    }
    else if (key == "SLICE_Z")
    {
        if (!toReal(value, real))
            return bad_value(key, value);
        _sliceZ.push_back(real);
    }
    else if (key == "SLICE_FILE")
        _sliceFiles.push_back(filename(value));
    else if (key == "TOPO_FILE")
        _topoFile = filename(value);
    else if (key == "HISTO_FILE")
        _histoFile = filename(value);
    else if (key == "HISTO_DZ")
    {
        if (!toReal(value, real))
            return bad_value(key, value);
        if (real <= 0.)
            return fail("Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)");
        _histoDz = real;
    }
    else if (key == "HISTO_NZ")
    {
        if (!toInt(value, number))
            return bad_value(key, value);
        if (number <= 0)
            return fail("Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)");
        _histoNz = number;
    }
    else if (key == "PNG_DIR")
        _pngDir = filename(value, true);
    else if (ProportionExports::is_keyword(key))
    {
        std::string error;
        if (!_proportions.read_keyword(key, key == "VPC_DZ" ? value : filename(value), error))
            return fail(error);
    }
    else if (key != "EXP_WELL")
        known = false;
    return true;
}

bool NewJournalFile::read_stats_keyword(const std::string& key, const std::string& value, bool& known)
{
    int flag = 0;
    int number = 0;
    if (key == "STATS_FILE" || key == "STATS_CL_FILE")
    {
        if (allowed(key, GATE_RESEARCH))
            (key == "STATS_FILE" ? _statsFile : _statsClFile) = filename(value);
    }
    else if (key == "STATS_COND_FILE")
    {
        if (allowed(key, GATE_NOT_FREE))
            _statsCondFile = filename(value);
    }
    else if (key == "STATS_IT" || key == "STATS_AV")
    {
        if (!allowed(key, GATE_RESEARCH))
            return true;
        if (!toInt(value, number) || number <= 0)
            return bad_value(key, value);
        (key == "STATS_IT" ? _statsIt : _statsAv) = number;
    }
    else if (key == "STATS_PROPS" || key == "STATS_CL")
    {
        if (!allowed(key, GATE_RESEARCH))
            return true;
        if (!toFlag(value, flag))
            return bad_value(key, value);
        (key == "STATS_PROPS" ? _statsProps : _statsCl) = flag;
    }
    else
        known = false;
    return true;
}

std::string NewJournalFile::global_suggestion(const std::string& key) const
{
    static const std::vector<std::string> KEYWORDS = {"VERBOSE",
                                                      "TRACE_LEVEL",
                                                      "USE_TURBIDITE",
                                                      "FORCE_SIMU",
                                                      "WELL_FILE",
                                                      "WELL_TRAJ",
                                                      "WELL_NAME",
                                                      "USER_CLASS_TYPE",
                                                      "USER_CLASS_FAC_ID",
                                                      "USER_CLASS_ATT",
                                                      "USER_CLASS_MIN_ITV",
                                                      "USER_CLASS_MAX_ITV",
                                                      "BASEMENT_TOPO",
                                                      "BASEMENT_FACIES",
                                                      "FLATTENING_FILE",
                                                      "F2G_FILE",
                                                      "F2G_IT",
                                                      "F2G_ZBOT",
                                                      "F2G_ZTOP",
                                                      "F2G_DZ",
                                                      "F2G_FACIES",
                                                      "F2G_GRAIN",
                                                      "F2G_AGE",
                                                      "F2G_ORDER",
                                                      "STATS_FILE",
                                                      "STATS_CL_FILE",
                                                      "STATS_COND_FILE",
                                                      "STATS_IT",
                                                      "STATS_AV",
                                                      "STATS_PROPS",
                                                      "STATS_CL",
                                                      "SLICE_Z",
                                                      "SLICE_FILE",
                                                      "TOPO_FILE",
                                                      "HISTO_FILE",
                                                      "HISTO_DZ",
                                                      "HISTO_NZ",
                                                      "EXP_WELL",
                                                      "PNG_DIR"};
    return journal_support::suggestion(key, KEYWORDS);
}

bool NewJournalFile::read_extracted_well(const std::string& value, const std::string& line)
{
    iTracer* tracer = _simulator->getTracer();
    const std::vector<std::string> fields = splitList(value);
    if (fields.size() < 4)
    {
        tracer->warning("Bad formated line for EXP_WELL ignored: " + line +
                        journal_support::where(_batchFile, _keyLine));
        return true;
    }
    ExtractedWell well{0, 0, MP_UNDEF_REAL, MP_UNDEF_REAL};
    const bool zminOk = fields[2].empty() || toReal(fields[2], well.zmin);
    const bool zmaxOk = fields[3].empty() || toReal(fields[3], well.zmax);
    if (!toInt(fields[0], well.i) || !toInt(fields[1], well.j) || !zminOk || !zmaxOk)
    {
        tracer->warning("Bad formated values for EXP_WELL ignored: " + line +
                        journal_support::where(_batchFile, _keyLine));
        return true;
    }
    _extractedWells.push_back(well);
    return true;
}

// ---------------------------------------------------------------------------
// End-of-global checks

std::string NewJournalFile::base_name() const
{
    return strip_extension(_batchFile);
}

std::string NewJournalFile::f2g_file() const
{
    return _f2gFile.empty() ? base_name() + ".f2g" : _f2gFile;
}

std::string NewJournalFile::slice_file(size_t index) const
{
    if (index < _sliceFiles.size())
        return _sliceFiles[index];
    return base_name() + ".slice_z=" + text(_sliceZ[index]) + ".f2g";
}

std::string NewJournalFile::input_histogram_file() const
{
    return strip_extension(_histoFile.empty() ? _batchFile : _histoFile) + "_inw_histo.csv";
}

std::string NewJournalFile::extracted_histogram_file() const
{
    return strip_extension(_histoFile.empty() ? _batchFile : _histoFile) + "_outw_histo.csv";
}

std::string NewJournalFile::extracted_well_file(const ExtractedWell& well) const
{
    return filename("EXP_WELL" + int_text(well.i) + "_" + int_text(well.j) + ".flw");
}

void NewJournalFile::set_defaults()
{
    const bool stats = is_set(_statsIt) || is_set(_statsAv);
    if (stats && _statsFile.empty())
        _statsFile = base_name() + "_stats.csv";
    if (_statsCl == 1 && _statsClFile.empty())
        _statsClFile = strip_extension(_statsFile.empty() ? base_name() : _statsFile) + "_centerline.csv";
}

bool NewJournalFile::check_readable(const std::string& path, const std::string& what)
{
    if (isReadable(path))
        return true;
    return fail(what + path + " is not readable");
}

bool NewJournalFile::check_writable(const std::string& path, const std::string& what)
{
    if (isWritable(path))
        return true;
    return fail(what + path + " is not writable");
}

bool NewJournalFile::check_global()
{
    const bool inputs = check_inputs();
    const bool outputs = inputs && check_outputs();
    const bool exports = outputs && check_block_exports() && check_exports();
    return exports;
}

bool NewJournalFile::check_inputs()
{
    if (!_wellNames.empty() && _wellNames.size() != _wellFiles.size())
        return fail("Please, provide the same number of well names than well files");
    if (!_wellTrajectories.empty() && _wellTrajectories.size() != _wellFiles.size())
        return fail("Please, provide the same number of well trajectories than well files");
    if (_hasUserClasses)
    {
        if (_userClassType != 2 && _userClassType != 3)
            return fail("Please, indicate the appropriate user class type (discrete (2) or continue (3))");
        if (_userClassType == 2 && _userClassFacies.size() != _userClassAttributes.size())
            return fail("Using user class type 2 (discrete), facies id and attribute sizes mismatch");
        if (_userClassType == 3 && (_userClassFacies.size() != _userClassMin.size() ||
                                    _userClassFacies.size() != _userClassMax.size()))
            return fail("Using user class type 3 (continue), facies id and interval sizes mismatch");
    }
    for (const std::string& file : _wellFiles)
        if (!check_readable(file, "Well file "))
            return false;
    for (const std::string& file : _wellTrajectories)
        if (!check_readable(file, "Well trajectory file "))
            return false;
    if (!_basementTopo.empty() && !check_readable(_basementTopo, "Basement topography file "))
        return false;
    if (!_flatteningFile.empty() && !check_readable(_flatteningFile, "Flattening surface file "))
        return false;
    if (is_set(_basementFacies) && (_basementFacies < 0 || _basementFacies > LAST_FACIES_FAMILY))
        return fail("Basement facies " + int_text(_basementFacies) + " is not valid");
    return true;
}

bool NewJournalFile::check_outputs()
{
    const bool block = is_set(_f2gDz) || is_set(_f2gIt);
    if (block && !check_writable(is_set(_f2gIt) ? base_name() + "_it0.f2g" : f2g_file(), "F2G_FILE "))
        return false;
    if (!_topoFile.empty() && !check_writable(_topoFile, "TOPO_FILE "))
        return false;
    if (!_statsFile.empty() && !check_writable(_statsFile, "STATS_FILE "))
        return false;
    if (!_statsClFile.empty() && !check_writable(_statsClFile, "STATS_CL_FILE "))
        return false;
    if (!_statsCondFile.empty() && !check_writable(_statsCondFile, "STATS_COND_FILE "))
        return false;
    for (const std::string& file : _sliceFiles)
        if (!check_writable(file, "SLICE_FILE "))
            return false;
    if (!_histoFile.empty() && !check_writable(_histoFile, "HISTO_FILE "))
        return false;
    const bool histogram = is_set(_histoDz) || is_set(_histoNz);
    if (histogram && !_wellFiles.empty() &&
        !check_writable(input_histogram_file(), "Input wells histogram file "))
        return false;
    if (histogram && !_extractedWells.empty() &&
        !check_writable(extracted_histogram_file(), "Extracted wells histogram file "))
        return false;
    for (const ExtractedWell& well : _extractedWells)
        if (!check_writable(extracted_well_file(well), "Extracted well file "))
            return false;
    if (std::string error; !_proportions.check(error))
        return fail(error);
    // The preview directory is made at the end when it does not exist yet.
    std::error_code code;
    if (!_pngDir.empty() &&
        !(std::filesystem::is_directory(_pngDir, code) && ::access(_pngDir.c_str(), W_OK) == 0) &&
        !isWritable(_pngDir))
        return fail("PNG_DIR " + _pngDir + " is not writable");
    return true;
}

bool NewJournalFile::check_exports()
{
    iTracer* tracer = _simulator->getTracer();
    if (is_set(_f2gIt) && !_f2gFile.empty())
        tracer->warning("F2G_FILE keyword is ignored while using F2G_IT.");
    if (is_set(_f2gIt) && !is_set(_f2gDz))
        return fail("Wrong F2G_DZ value (must be > 0.)");
    if (is_set(_f2gDz) && _f2gFacies != 1 && _f2gGrain != 1 && _f2gAge != 1)
        return fail("F2G_FACIES or F2G_GRAIN or F2G_AGE keyword is missing");
    const bool stats = is_set(_statsIt) || is_set(_statsAv);
    const bool statsAsked = !_statsFile.empty() || !_statsClFile.empty() || _statsProps == 1 || _statsCl == 1;
    if (statsAsked && !stats && _statsCondFile.empty())
        return fail("STATS_IT, STATS_AV or STATS_COND_FILE keyword is missing");
    if (is_set(_statsIt) && is_set(_statsAv))
        return fail("Only one out of STATS_IT or STATS_AV keyword must be used");
    if (!_statsCondFile.empty() && _wellFiles.empty())
        return fail(
            "You must import some wells using WELL_FILE keyword for exporting conditioning statistics");
    if (!_sliceFiles.empty() && _sliceFiles.size() != _sliceZ.size())
        return fail("Please, provide the same number of slices file name than required slices");
    if (is_set(_histoDz) != is_set(_histoNz))
        return fail("Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)");
    const bool anything = stats || !_sliceZ.empty() || is_set(_histoDz) || is_set(_histoNz) ||
                          is_set(_f2gDz) || !_extractedWells.empty() || !_statsCondFile.empty() ||
                          !_pngDir.empty() || _proportions.any();
    if (!anything)
        return fail("Nothing to export (please use STATS_IT, STATS_AV, SLICE_Z, HISTO_DZ, HISTO_NZ, F2G_DZ, "
                    "EXP_WELL or STATS_COND_FILE)");
    return true;
}

// ---------------------------------------------------------------------------
// Building the model

int NewJournalFile::initialize()
{
    if (!set_type_and_tracer())
        return MP_STATUS_FAILURE;
    return buildModel();
}

int NewJournalFile::buildModel()
{
    const int status = _simulator->init(forceSimu());
    if (status != MP_STATUS_OK)
    {
        _simulator->getTracer()->error("Problem with simulator action: init");
        return status;
    }
    if (!check_extracted_wells() || !load_flattening() || !load_user_classes() || !load_wells())
        return MP_STATUS_FAILURE;
    if (!_wellFiles.empty() && !_simulator->getParameters()->usingFree())
    {
        CoreList cores;
        if (_simulator->getAllWells(cores))
            infer_nexus(cores, "input wells");
        else
            _simulator->getTracer()->warning("Cannot calculate Nexus from input wells: no well available");
    }
    return load_basement() ? MP_STATUS_OK : MP_STATUS_FAILURE;
}

bool NewJournalFile::set_type_and_tracer()
{
    iParameters* params = _simulator->getParameters();
    iTracer* tracer = _simulator->getTracer();
    if (_useTurbidite == 1)
        params->setUsingTurbi();
    else
        params->setUsingFluvi();
    const bool byIteration = is_set(_statsIt);
    const bool byAvulsion = is_set(_statsAv);
    tracer->setGenerateStatsIteration(byIteration);
    tracer->setGenerateStatsAvulsion(byAvulsion);
    tracer->setGenerateStatsProps(_statsProps == 1);
    tracer->setGenerateCenterlineStats(_statsCl == 1);
    if (byIteration || byAvulsion)
    {
        tracer->setStatsFile(_statsFile);
        tracer->setStatsInterval(static_cast<unsigned int>(byIteration ? _statsIt : _statsAv));
    }
    if (_statsCl == 1)
        tracer->setCenterlineStatsFile(_statsClFile);
    return true;
}

bool NewJournalFile::check_extracted_wells()
{
    const iDomain* domain = _simulator->getDomain();
    if (_extractedWells.empty())
        return true;
    const int nx = domain ? domain->getGridParams().getNx() : 0;
    const int ny = domain ? domain->getGridParams().getNy() : 0;
    for (const ExtractedWell& well : _extractedWells)
        if (well.i < 0 || well.i >= nx || well.j < 0 || well.j >= ny)
        {
            _simulator->getTracer()->error("Extract well indices [" + int_text(well.i) + ", " +
                                           int_text(well.j) + "] out of range [" + int_text(nx - 1) + ", " +
                                           int_text(ny - 1) + "]");
            return false;
        }
    return true;
}

bool NewJournalFile::load_flattening()
{
    if (_flatteningFile.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    Topo topo;
    if (!topo.read(_flatteningFile))
    {
        tracer->error("Cannot read flattening surface from input file: " + _flatteningFile + "\n" +
                      journal_support::grid_reason(topo.getError()));
        return false;
    }
    if (!_simulator->loadFlattening(topo))
    {
        tracer->error("Error loading flattening surface from file: " + _flatteningFile);
        return false;
    }
    return true;
}

bool NewJournalFile::make_user_classes(UserClassList& classes) const
{
    for (size_t k = 0; k < _userClassFacies.size(); ++k)
    {
        const bool discrete = _userClassType == USER_CLASS_DISCRETE;
        std::string message;
        if (!classes.add(_userClassType, _userClassFacies[k], discrete ? _userClassAttributes[k] : "",
                         discrete ? MP_UNDEF_REAL : _userClassMin[k],
                         discrete ? MP_UNDEF_REAL : _userClassMax[k], message))
        {
            _simulator->getTracer()->error("Error adding user class: " + message);
            return false;
        }
    }
    return true;
}

bool NewJournalFile::load_user_classes()
{
    if (!_hasUserClasses)
        return true;
    iTracer* tracer = _simulator->getTracer();
    UserClassList classes;
    if (!make_user_classes(classes))
        return false;
    if (!_simulator->setUserClassList(classes))
    {
        tracer->error("Error loading user classes");
        return false;
    }
    return true;
}

bool NewJournalFile::load_wells()
{
    iTracer* tracer = _simulator->getTracer();
    for (size_t k = 0; k < _wellFiles.size(); ++k)
    {
        const std::string& file = _wellFiles[k];
        tracer->info("Adding conditioning well " + file);
        const std::string trajectory = k < _wellTrajectories.size() ? _wellTrajectories[k] : "";
        const std::string name = k < _wellNames.size() ? _wellNames[k] : "";
        // A bad well is refused alone: the others still condition the run.
        if (!_simulator->addWellFromFile(file, trajectory, name))
            tracer->error("Error loading well: " + file);
    }
    return some_well_to_honor();
}

bool NewJournalFile::some_well_readable() const
{
    for (size_t k = 0; k < _wellFiles.size(); ++k)
    {
        Core core;
        if (core.read(_wellFiles[k], k < _wellTrajectories.size() ? _wellTrajectories[k] : ""))
            return true;
    }
    _simulator->getTracer()->error("No well file can be read as a well log: 'COND_WELL_STOP_HONORED' has no "
                                   "well to honor");
    return false;
}

// Without a well the wells are all honored at once, and the run would stop
// before its first iteration as if it had succeeded.
bool NewJournalFile::some_well_to_honor() const
{
    if (!_stopHonored)
        return true;
    CoreList wells;
    if (_simulator->getAllWells(wells) && wells.size() > 0)
        return true;
    _simulator->getTracer()->error(
        "Every conditioning well was refused: 'COND_WELL_STOP_HONORED' has no well "
        "to honor");
    return false;
}

void NewJournalFile::infer_nexus(const CoreList& cores, const std::string& what)
{
    iTracer* tracer = _simulator->getTracer();
    std::vector<double> nexus;
    std::string message;
    if (!_simulator->nexusFromWells(cores, nexus, message) || nexus.size() < 3)
    {
        tracer->warning("Cannot calculate Nexus from " + what + ": " + message);
        return;
    }
    tracer->info("Nexus automatic inference from " + what + " gives NEXUS_HMAX = " + text(nexus[0]) +
                 ", NEXUS_ISBX = " + text(nexus[1]) + ", NEXUS_SAND = " + text(nexus[2]));
}

bool NewJournalFile::load_basement()
{
    if (_basementTopo.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->warning("BASEMENT_TOPO now deprecated. Please use NEW_TOPO & NEW_TOPO_FACIES and the value 1 for "
                    "NEW_TOPO_MODE in the first sequence");
    if (!isReadable(_basementTopo))
    {
        tracer->error("Cannot access to basement topography file: " + _basementTopo);
        return false;
    }
    if (GridReal::get_format(_basementTopo) != GRID_FORMAT_F2G)
    {
        tracer->error("Basement topography file must be F2G format: " + _basementTopo);
        return false;
    }
    Topo topo;
    if (!topo.read(_basementTopo))
    {
        tracer->error("Cannot read basement topography from input file: " + _basementTopo + "\n" +
                      journal_support::grid_reason(topo.getError()));
        return false;
    }
    const int facies = is_set(_basementFacies) ? _basementFacies : 0;
    if (!_simulator->replaceTopo(topo, SURF_ERODE_FILL, facies, false))
    {
        tracer->error("Cannot load basement topography from input file: " + _basementTopo);
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Running and exporting

int NewJournalFile::launch()
{
    iTracer* tracer = _simulator->getTracer();
    try
    {
        if (!createOutputFolders())
            return MP_STATUS_FAILURE;
        // A first sequence that sets the grid builds the model once its
        // parameters are applied, so that the global surfaces and extracted
        // wells meet the grid they are for; otherwise the model is built now.
        int status = MP_STATUS_OK;
        if (!set_type_and_tracer())
            status = MP_STATUS_FAILURE;
        else if (_sequences.empty() || _sequences.front().loadsSnapshot() || !_sequences.front().setsGrid())
            status = buildModel();
        if (status != MP_STATUS_OK)
        {
            tracer->error("Problem with simulator action: launch");
            return status;
        }
        for (NewJournalSequence& sequence : _sequences)
        {
            status = sequence.launch(this);
            if (status != MP_STATUS_OK && status != MP_STATUS_UPPER_LIMIT &&
                status != MP_STATUS_WELLS_HONORED)
                return status;
        }
        if (!save_outputs())
            return MP_STATUS_FAILURE;
    }
    catch (const std::string& text)
    {
        // An internal check's text ("... failed at [file, line: n]") means
        // nothing to the user: it is kept for the debug level.
        const bool internal = text.find(" failed at [") != std::string::npos;
        tracer->error(
            "Problem with simulator action: launch\n" +
            (internal ? std::string("an internal check of the simulation failed (TRACE_LEVEL = 5 shows it)")
                      : text));
        if (internal)
            tracer->debug(text);
        return MP_STATUS_FAILURE;
    }
    catch (const std::exception& e)
    {
        tracer->error(std::string("Problem with simulator action: launch\n") + e.what());
        return MP_STATUS_FAILURE;
    }
    catch (...)
    {
        tracer->error("Problem with simulator action: launch");
        return MP_STATUS_FAILURE;
    }
    tracer->info("End of the simulation...");
    tracer->info("End of batch!");
    return MP_STATUS_OK;
}

bool NewJournalFile::exportSimuF2G(bool byAge)
{
    const std::string file =
        byAge ? base_name() + "_it" + std::to_string(_simulator->getAge()) + ".f2g" : f2g_file();
    // Limits left unset are the block's own: the report tells the range actually written.
    double zbot = _f2gZbot;
    double ztop = _f2gZtop;
    double zmin = 0.;
    double zmax = 0.;
    if (const iDomain* domain = _simulator->getDomain(); domain && (!is_set(zbot) || !is_set(ztop)))
    {
        domain->min_and_max_elevation_geo(zmin, zmax);
        zbot = is_set(zbot) ? zbot : zmin;
        ztop = is_set(ztop) ? ztop : zmax;
    }
    _simulator->getTracer()->info("Saving " + file + " between {" + elevation_text(zbot) + ", " +
                                  elevation_text(ztop) + "m} by " + text(_f2gDz) + "m...");
    if (!_simulator->saveSimuF2G(file, _f2gDz, _f2gFacies == 1, _f2gGrain == 1, _f2gAge == 1, _f2gZbot,
                                 _f2gZtop, _f2gOrder))
    {
        _simulator->getTracer()->error("Cannot save the simulation in " + file);
        return false;
    }
    return true;
}

bool NewJournalFile::save_outputs()
{
    if (is_set(_f2gDz) && !exportSimuF2G(is_set(_f2gIt)))
        return false;
    if (!save_block_exports())
        return false;
    if (!save_topography() || !save_slices() || !save_conditioning_stats())
        return false;
    if (!_proportions.save(*_simulator))
        return false;
    const bool histogram = is_set(_histoDz) && is_set(_histoNz);
    if (histogram && !_wellFiles.empty())
    {
        // Every input well may have been refused at loading: the run went on
        // without them, and their histogram is then empty rather than missing.
        CoreList inputs;
        if (!_simulator->getAllWells(inputs))
            _simulator->getTracer()->warning("No conditioning well: the histogram in " +
                                             input_histogram_file() + " is empty");
        if (!save_histogram(input_histogram_file(), inputs))
            return false;
    }
    CoreList extracted;
    if (!extract_wells(extracted))
        return false;
    if (!_extractedWells.empty() && !_simulator->getParameters()->usingFree())
        infer_nexus(extracted, "extracted wells");
    if (histogram && !_extractedWells.empty() && !save_histogram(extracted_histogram_file(), extracted))
        return false;
    return save_previews();
}

// Pictures of the block seen from above and of its slices at the SLICE_Z heights.
bool NewJournalFile::save_previews()
{
    if (_pngDir.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Saving previews in " + _pngDir);
    if (!createDirectory(_pngDir) || !_simulator->savePreviews(_pngDir, _sliceZ))
    {
        const std::string& reason = _simulator->getLastMessage();
        tracer->error("Cannot save the previews in " + _pngDir + (reason.empty() ? "" : "\n" + reason));
        return false;
    }
    return true;
}

bool NewJournalFile::save_topography()
{
    if (_topoFile.empty() || _simulator->saveTopo(_topoFile, GRID_FORMAT_F2G, _f2gOrder))
        return true;
    _simulator->getTracer()->error("Cannot save the topography in " + _topoFile);
    return false;
}

bool NewJournalFile::save_slices()
{
    iTracer* tracer = _simulator->getTracer();
    for (size_t k = 0; k < _sliceZ.size(); ++k)
    {
        std::vector<double> values;
        const iDomain* domain = _simulator->getDomain();
        if (!domain || !_simulator->getSlice(_sliceZ[k], values))
        {
            tracer->error("Cannot retrieve the slice");
            return false;
        }
        GridReal slice(domain->getGridParams());
        const int nx = slice.getNx();
        const int ny = slice.getNy();
        if (nx < 1 || ny < 1 || values.size() != static_cast<size_t>(nx) * static_cast<size_t>(ny))
        {
            tracer->error("Wrong slice size");
            return false;
        }
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i)
                slice.set_at(i, j, values[static_cast<size_t>(j * nx + i)]);
        slice.setName("Slice_at_" + text(_sliceZ[k]));
        const std::string file = slice_file(k);
        if (!slice.write(file, tracer, GRID_FORMAT_F2G, _f2gOrder))
        {
            tracer->error("Cannot save the slice in " + file);
            return false;
        }
    }
    return true;
}

bool NewJournalFile::save_conditioning_stats()
{
    if (_statsCondFile.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Saving conditioning wells statistics in " + _statsCondFile);
    if (_simulator->saveConditioningStats(_statsCondFile))
        return true;
    tracer->error("Cannot save conditioning wells statistics in " + _statsCondFile);
    return false;
}

bool NewJournalFile::save_histogram(const std::string& path, const CoreList& cores)
{
    if (_simulator->saveHistogram(path, cores, _histoDz, _histoNz))
        return true;
    _simulator->getTracer()->error("Cannot save histogram in " + path);
    return false;
}

bool NewJournalFile::extract_wells(CoreList& cores)
{
    iTracer* tracer = _simulator->getTracer();
    for (const ExtractedWell& well : _extractedWells)
    {
        const std::string indices = int_text(well.i) + ", " + int_text(well.j);
        tracer->info("Extracting well at indices [" + indices + "]...");
        const std::string file = extracted_well_file(well);
        Core core("EXP_WELL" + int_text(well.i) + "_" + int_text(well.j), tracer);
        if (!_simulator->extractWell(well.i, well.j, core, well.zmin, well.zmax))
        {
            tracer->error("Cannot retrieve the well " + core.getName());
            return false;
        }
        if (!core.write(file, "Well automatically extracted by Sarvo at " + core.top_location().debug()))
        {
            tracer->error("Cannot save the well " + file);
            return false;
        }
        cores.add(core);
    }
    return true;
}
