#pragma once
// One [NEW_SEQ] section of a batch file: what changes at the start of a
// stretch of simulation (surfaces, maps, parameters, inference) and how long
// the stretch runs. It reads and checks the section, then runs it through the
// simulator's door only.

#include "kernel/common/Constants.h"

#include "kernel/geometry/GridParams.h"

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

class iParameters;
class iSimulator;
class BatchPaths;
class iTracer;
class NewJournalFile;
class Parameters;

class NewJournalSequence
{
public:
    explicit NewJournalSequence(iSimulator* simulator);
    NewJournalSequence(const NewJournalSequence&) = default;
    NewJournalSequence& operator=(const NewJournalSequence&) = default;

    // Every keyword back to unset; the simulator, directory and index stay.
    void reset();
    // Relative paths of the section are taken from this directory.
    void setDirectory(const std::string& directory) { _directory = directory; }
    // An upper limit loaded by an earlier sequence still holds in this one.
    void setUpperLimitKnown(bool known) { _zulKnown = known; }
    // Snapshot folders that earlier sequences save: one may be loaded before it exists.
    void setSavedSnapshots(const std::vector<std::string>& dirs) { _savedBefore = dirs; }
    const std::string& getSnapSaveDir() const { return _snapSaveDir; }
    // The batch file, for messages, the number of its lines read before the
    // section, and the registry that names the parameters (the simulator's
    // when null).
    void setSource(const std::string& file, int lineNumber, const iParameters* registry)
    {
        _source = file;
        _lineNumber = lineNumber;
        _registry = registry;
    }
    // Lines of the batch file read so far.
    int getLineNumber() const { return _lineNumber; }

    // The checks that need what earlier sequences did: applies this section to
    // `registry` as `launch` will apply it to the simulator's, then checks the
    // values against their ranges and every input file against `grid`, the
    // grid in force during the sequence (updated here). `started` tells
    // whether iterations were run before; `quiet` receives the inference's
    // traces. False with the error lines when something would fail at launch.
    bool checkAgainst(Parameters& registry, iTracer* quiet, bool force, bool& started, GridParams& grid);
    // The grid a registry builds.
    static GridParams gridOf(const iParameters& registry);
    // Why the surface file cannot be used on `grid` (empty when it can);
    // `strict` refuses nodes left undefined; an `elevation` must lie within
    // reach of the grid's reference elevation.
    static std::string surfaceProblem(const std::string& path, const GridParams& grid, bool strict,
                                      bool elevation = false);

    // Reads the lines after the marker up to the next marker or the end of the
    // stream; `line` is left on that marker (empty at the end). False when an
    // error was met or `check` refuses the section.
    bool load(std::istream& stream, std::string& line, int index, bool first);
    bool check();
    // A status: 0, or 7 / 8 for a regular stop, anything else a failure.
    int launch(NewJournalFile* file);
    // The files the section reads and the snapshot folder it replaces (NewJournalSequencePaths.cpp).
    void listPaths(BatchPaths& paths) const;

    int getIndex() const { return _index; }
    bool loadsSnapshot() const { return !_snapLoadDir.empty(); }
    // True when, before the first iteration, this section asks for the model
    // to be rebuilt on new domain settings (DOMAIN_* or an inference on the grid).
    bool setsGrid() const;
    // 2147483647 when not given; -1 runs until the upper limit.
    int getLaunchIt() const { return _launchIt; }
    bool definesUpperLimit() const { return _hasZulFile || _zulTopo != MP_UNDEF_REAL; }
    // True when this section switches on the stop at honored wells.
    bool stopsWhenWellsHonored() const;
    // Parameters given by name, with their values, in name order.
    const std::map<std::string, double>& getUserParams() const { return _userParams; }

private:
    enum Gate
    {
        GATE_NONE,
        GATE_NOT_FREE,
        GATE_RESEARCH
    };

    bool read_keyword(const std::string& key, const std::string& value, const std::string& line);
    bool read_action_keyword(const std::string& key, const std::string& value, const std::string& line,
                             bool& known);
    bool read_expert_keyword(const std::string& key, const std::string& value, bool& known);
    bool read_int(const std::string& key, const std::string& value, int& target);
    bool read_real(const std::string& key, const std::string& value, double& target);
    bool read_flag(const std::string& key, const std::string& value, int& target);
    bool bad_value(const std::string& key, const std::string& value, const std::string& reason);
    bool read_parameter(const std::string& key, const std::string& value);
    std::string at(const std::string& key) const;
    bool refuse(const std::string& message);
    bool check_snapshot(Parameters& registry, bool& started);
    bool check_inference(Parameters& registry, iTracer* quiet, bool started);
    bool check_ranges(Parameters& registry, iTracer* quiet, bool force);
    bool check_surfaces(const iParameters& registry, const GridParams& grid);
    bool check_centerline(const GridParams& grid);
    // False (with its error line) when the tier refuses the keyword.
    bool allowed(const std::string& key, Gate gate) const;
    bool allowed_group(const std::string& key) const;
    bool check_readable(const std::string& path, const std::string& what);
    std::string path_of(const std::string& name) const;

    int prepare(NewJournalFile* file);
    int apply_inference();
    void report_inferred(bool nexus, bool grid);
    int apply_parameters();
    int apply_expert_settings();
    int check_consistency(NewJournalFile* file);
    void report_forecast();
    int apply_surfaces();
    int load_erodibility();
    int load_tectonics();
    int replace_topography();
    int load_upper_limit();
    int replace_centerline();
    int erase_facies();
    int run_sequence(NewJournalFile* file);
    int run_pieces(NewJournalFile* file);
    int save_snapshot();
    void report_end();
    int fail(const std::string& message, int status = 1);
    int fail_with_reason(const std::string& message);

    iSimulator* _simulator;
    const iParameters* _registry;
    std::string _source;
    int _lineNumber;
    // Line of each keyword in the batch file (the last one when repeated).
    std::map<std::string, int> _keyLines;
    std::string _directory;
    int _index;
    bool _first;
    bool _zulKnown;
    std::vector<std::string> _savedBefore;
    bool _failed;

    int _launchIt;
    bool _hasTopo;
    std::string _topoFile;
    double _topoValue;
    int _topoMode;
    int _topoFacies;
    bool _hasClFile;
    std::string _clFile;
    bool _hasClPoint;
    double _clX;
    double _clY;
    bool _hasZulFile;
    std::string _zulFile;
    double _zulTopo;
    int _zulType;
    bool _hasEmapFile;
    std::string _emapFile;
    double _emapOffset;
    bool _hasTectoFile;
    std::string _tectoFile;
    std::string _snapLoadDir;
    std::string _snapSaveDir;
    bool _hasNexus;
    std::vector<double> _nexus;
    int _nexusGrid;
    bool _hasNeqsus;
    std::vector<double> _neqsus;
    int _neqsusGrid;
    double _eraseFacies;
    double _eraseFaciesFake;
    std::vector<int> _sedVolumes;
    int _sinuoInterval;
    int _curvaturePoints;
    double _scourFactor;
    double _frictionCoeff;
    double _bankErodCoeff;
    double _turbAggHeightCoeff;
    int _condMigWellsFactor;
    int _condAvWells;
    int _condNewAlgo;
    int _condAvMP;
    int _condBlockAv;
    std::map<std::string, double> _userParams;
};
