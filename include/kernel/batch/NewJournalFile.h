#pragma once
// The batch file: one [GLOBAL] section that says what to read and what to
// export, then [NEW_SEQ] sections run in order. It builds the model from the
// global section, launches the sequences and writes the exports, talking to
// the kernel through the simulator's door only.

#include "kernel/batch/NewJournalSequence.h"
#include "kernel/batch/ProportionExports.h"
#include "kernel/common/Constants.h"

#include <iosfwd>
#include <string>
#include <vector>

class iSimulator;
class iTracer;
class BatchPaths;
class CoreList;
class GridParams;
class UserClassList;

class NewJournalFile
{
public:
    explicit NewJournalFile(iSimulator* simulator);

    // Every keyword back to its default and no sequence.
    void reset();
    bool load(std::string const& file);
    // The reading of `load` on an open stream; `path` is the batch file name.
    bool load(std::istream& stream, std::string const& path);
    // 0 on success, otherwise the status of the failed action.
    int launch();
    // Type, tracer switches, init, user classes, wells and surfaces.
    int initialize();
    // The part of `initialize` that builds the model on the current registry:
    // init, extracted well indices, flattening, user classes, wells, basement.
    int buildModel();
    // The regular block; with `byAge` the name carries the current age.
    bool exportSimuF2G(bool byAge);

    // Every file the batch reads and writes (NewJournalFilePaths.cpp).
    void listPaths(BatchPaths& paths) const;
    // False, with a message, when an output would overwrite an input or
    // another output, or a snapshot would replace a folder of the user's.
    bool checkPaths();
    // Makes the missing folders of the outputs.
    bool createOutputFolders();

    // What the sequences read from the global section.
    bool forceSimu() const { return _forceSimu == 1; }
    // 2147483647 when blocks are not written during the sequences.
    int getF2GIt() const { return _f2gIt; }
    const std::vector<NewJournalSequence>& getSequences() const { return _sequences; }
    // The files this batch writes that exist now, in the order of writing.
    std::vector<std::string> writtenFiles() const;

    // Relative names are taken from the batch file directory; with `isDirectory`
    // a trailing separator is dropped.
    std::string filename(const std::string& name, bool isDirectory = false) const;
    // The directory part of a path, "." when it has none.
    static std::string directory(const std::string& path);
    static bool isReadable(const std::string& path);
    static bool isWritable(const std::string& path);
    static bool createDirectory(const std::string& path);

    // The line dialect shared by both sections.
    static std::string trim(const std::string& text);
    // Next significant line, trimmed, into `line`; false at the end of the stream.
    // `number`, when given, counts every line read, blank and comment ones too.
    static bool nextLine(std::istream& stream, std::string& line, iTracer* tracer, int* number = nullptr);
    static bool isMarker(const std::string& line) { return !line.empty() && line[0] == '['; }
    // Key and value around the first "=", both trimmed; false without "=".
    static bool splitLine(const std::string& line, std::string& key, std::string& value);
    static std::vector<std::string> splitList(const std::string& value, char separator = ';');
    // Whole-text conversions; false when anything is left over.
    static bool toInt(const std::string& text, int& value);
    static bool toReal(const std::string& text, double& value);
    // 0 or 1 only.
    static bool toFlag(const std::string& text, int& value);
    static std::string text(double value);

private:
    enum Gate
    {
        GATE_NONE,
        GATE_NOT_FREE,
        GATE_RESEARCH
    };
    struct ExtractedWell
    {
        int i;
        int j;
        double zmin;
        double zmax;
    };

    bool loadGlobal(const std::string& path, std::istream& stream, std::string& line);
    bool read_keyword(const std::string& key, const std::string& value, const std::string& line);
    bool read_output_keyword(const std::string& key, const std::string& value, bool& known);
    bool read_stats_keyword(const std::string& key, const std::string& value, bool& known);
    bool read_input_keyword(const std::string& key, const std::string& value, bool& known);
    bool read_extracted_well(const std::string& value, const std::string& line);
    // VTK_FILE, GRDECL_FILE and GRDECL_PROPS.
    bool read_export_keyword(const std::string& key, const std::string& value, bool& known);
    bool allowed(const std::string& key, Gate gate) const;
    bool bad_value(const std::string& key, const std::string& value);
    // The whole text of a batch file, or why it cannot be one ("no such file"...).
    static std::string read_text(const std::string& file, std::string& content);
    std::string global_suggestion(const std::string& key) const;
    bool check_global();
    bool check_inputs();
    bool check_outputs();
    bool check_exports();
    bool check_block_exports();
    bool check_writable(const std::string& path, const std::string& what);
    bool check_readable(const std::string& path, const std::string& what);
    // With the grids the sequences give: the one the global surfaces are loaded
    // on (the first sequence's), and the one in force at the end.
    bool check_global_surfaces(const GridParams& grid);
    bool check_extracted_wells_at_load(const GridParams& grid);
    bool check_sampling(const GridParams& grid);

    void set_defaults();
    bool set_type_and_tracer();
    bool check_extracted_wells();
    bool load_flattening();
    bool load_user_classes();
    // The classes the global section describes; false with the error line.
    bool make_user_classes(UserClassList& classes) const;
    bool load_wells();
    // With a stop on honored wells, at least one well must be there to honor:
    // at load, one well file that reads as a log; at launch, one well added.
    bool some_well_readable() const;
    bool some_well_to_honor() const;
    void infer_nexus(const CoreList& cores, const std::string& what);
    bool load_basement();

    bool save_outputs();
    bool save_topography();
    bool save_slices();
    bool save_conditioning_stats();
    bool save_previews();
    // The block for 3D viewers (VTK) and flow simulators (GRDECL).
    bool save_block_exports();
    bool save_histogram(const std::string& path, const CoreList& cores);
    bool extract_wells(CoreList& cores);
    std::string input_histogram_file() const;
    std::string extracted_histogram_file() const;
    std::string extracted_well_file(const ExtractedWell& well) const;
    std::string slice_file(size_t index) const;
    std::string f2g_file() const;
    std::string base_name() const;
    bool fail(const std::string& message);

    iSimulator* _simulator;
    std::string _batchFile;
    std::string _directory;
    std::vector<NewJournalSequence> _sequences;
    bool _failed;
    // Lines of the file read so far, and the line of the keyword being read (0 outside).
    int _lineNumber;
    int _keyLine;

    int _verbose;
    int _traceLevel;
    int _useTurbidite;
    int _forceSimu;
    std::vector<std::string> _wellFiles;
    std::vector<std::string> _wellTrajectories;
    std::vector<std::string> _wellNames;
    bool _stopHonored = false;
    int _userClassType;
    std::vector<int> _userClassFacies;
    std::vector<std::string> _userClassAttributes;
    std::vector<double> _userClassMin;
    std::vector<double> _userClassMax;
    bool _hasUserClasses;
    std::string _basementTopo;
    int _basementFacies;
    std::string _flatteningFile;
    std::string _f2gFile;
    int _f2gIt;
    double _f2gZbot;
    double _f2gZtop;
    double _f2gDz;
    int _f2gFacies;
    int _f2gGrain;
    int _f2gAge;
    std::string _f2gOrder;
    std::string _statsFile;
    std::string _statsClFile;
    std::string _statsCondFile;
    int _statsIt;
    int _statsAv;
    int _statsProps;
    int _statsCl;
    std::vector<double> _sliceZ;
    std::vector<std::string> _sliceFiles;
    std::string _topoFile;
    std::string _histoFile;
    double _histoDz;
    int _histoNz;
    std::vector<ExtractedWell> _extractedWells;
    // Directory of the preview images written at the end of the batch.
    std::string _pngDir;
    // Proportion curves and matrix written at the end of the batch.
    ProportionExports _proportions;
    // The block for 3D viewers, its suffix set by the dataset written.
    std::string _vtkFile;
    // The block as a corner-point grid, with rock properties by facies family
    // (family, porosity, horizontal and vertical permeabilities) over the defaults.
    std::string _grdeclFile;
    std::vector<std::vector<double>> _grdeclProps;
};
