#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/KeywordDeclarations.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/Topo.h"
#include "kernel/files/UserClass.h"
#include "kernel/parameters/Parameters.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <sstream>
#include <utility>

namespace
{
constexpr const char* DEFAULT_ORDER = "+Y +X +Z";
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

// The keywords of the inputs, checked in this order; each reader returns what
// the line's reading gives (false with the message already set).
bool NewJournalFile::read_input_keyword(const std::string& key, const std::string& value, bool& known)
{
    using Reader = bool (*)(NewJournalFile&, const std::string&, const std::string&);
    static const Reader wells = [](NewJournalFile& batch, const std::string& key, const std::string& value)
    {
        if (!batch.allowed(key, GATE_NOT_FREE))
            return true;
        if (key == "WELL_FILE")
            batch._wellFiles.push_back(batch.filename(value));
        else if (key == "WELL_TRAJ")
            batch._wellTrajectories.push_back(batch.filename(value));
        else
            batch._wellNames.push_back(value);
        return true;
    };
    static const Reader class_intervals =
        [](NewJournalFile& batch, const std::string& key, const std::string& value)
    {
        if (!batch.allowed(key, GATE_NOT_FREE))
            return true;
        std::vector<double>& list = key == "USER_CLASS_MIN_ITV" ? batch._userClassMin : batch._userClassMax;
        list.clear();
        for (const std::string& item : splitList(value))
        {
            double real = 0.;
            if (!toReal(item, real))
                return batch.bad_value(key, value);
            list.push_back(real);
        }
        batch._hasUserClasses = true;
        return true;
    };
    static const std::pair<const char*, Reader> KEYWORDS[] = {
        {"VERBOSE",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             int flag = 0;
             if (!toFlag(value, flag))
                 return batch.bad_value(key, value);
             batch._verbose = flag;
             batch._simulator->getTracer()->setVerbose(flag == 1);
             return true;
         }},
        {"TRACE_LEVEL",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             int number = 0;
             if (!toInt(value, number))
                 return batch.bad_value(key, value);
             batch._traceLevel = number;
             batch._simulator->getTracer()->setTraceLevel(number);
             return true;
         }},
        {"USE_TURBIDITE",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             int number = 0;
             if (!toInt(value, number))
                 return batch.bad_value(key, value);
             if (number == 2)
                 return batch.fail("Wrong turbidite option (use 0 or 1 as 2 is now deprecated)");
             if (number != 0 && number != 1)
                 return batch.bad_value(key, value);
             batch._useTurbidite = number;
             return true;
         }},
        {"FORCE_SIMU",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             int flag = 0;
             if (!toFlag(value, flag))
                 return batch.bad_value(key, value);
             batch._forceSimu = flag;
             return true;
         }},
        {"WELL_FILE", wells},
        {"WELL_TRAJ", wells},
        {"WELL_NAME", wells},
        {"USER_CLASS_TYPE",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             if (!batch.allowed(key, GATE_NOT_FREE))
                 return true;
             int number = 0;
             if (!toInt(value, number))
                 return batch.bad_value(key, value);
             batch._userClassType = number;
             batch._hasUserClasses = true;
             return true;
         }},
        {"USER_CLASS_FAC_ID",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             if (!batch.allowed(key, GATE_NOT_FREE))
                 return true;
             batch._userClassFacies.clear();
             for (const std::string& item : splitList(value))
             {
                 int number = 0;
                 if (!toInt(item, number))
                     return batch.bad_value(key, value);
                 batch._userClassFacies.push_back(number);
             }
             batch._hasUserClasses = true;
             return true;
         }},
        {"USER_CLASS_ATT",
         [](NewJournalFile& batch, const std::string&, const std::string& value)
         {
             batch._userClassAttributes = splitList(value);
             batch._hasUserClasses = true;
             return true;
         }},
        {"USER_CLASS_MIN_ITV", class_intervals},
        {"USER_CLASS_MAX_ITV", class_intervals},
        {"BASEMENT_TOPO",
         [](NewJournalFile& batch, const std::string&, const std::string& value)
         {
             batch._basementTopo = batch.filename(value);
             return true;
         }},
        {"BASEMENT_FACIES",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             int number = 0;
             if (!toInt(value, number))
                 return batch.bad_value(key, value);
             batch._basementFacies = number;
             return true;
         }},
        {"FLATTENING_FILE",
         [](NewJournalFile& batch, const std::string& key, const std::string& value)
         {
             if (batch.allowed(key, GATE_NOT_FREE))
                 batch._flatteningFile = batch.filename(value);
             return true;
         }},
    };
    for (const auto& [keyword, read] : KEYWORDS)
        if (key == keyword)
            return read(*this, key, value);
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
        // Refused here rather than replaced by 1 when the run starts, which
        // would write statistics at every iteration.
        if (number > static_cast<int>(Tracer::MP_MAX_STATS_INTERVAL))
            return fail(key + " = " + value + " is too large: statistics are written at most every " +
                        std::to_string(Tracer::MP_MAX_STATS_INTERVAL) +
                        (key == "STATS_IT" ? " iterations" : " regional avulsions") +
                        journal_support::where(_batchFile, _keyLine));
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
    // The keywords the reference declares for this section.
    static const std::vector<std::string> KEYWORDS = []
    {
        std::vector<std::string> names;
        for (const KeywordDeclaration& declared : KeywordDeclarations::all())
            if (declared.section == SECTION_GLOBAL)
                names.push_back(declared.name);
        return names;
    }();
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
