#pragma once
// A project directory "<parent>/<name>.prj": the user's inputs converted into
// it, one snapshot directory "iter_<n>" per saved iteration, and the journal
// of the interface's parameters. It drives an iSimulator and owns no
// simulation state; every message to the user goes through iProjectDialogs.

#include "gui/InputJournalFile.h"
#include "gui/OutputJournalFile.h"
#include "gui/ParameterGroups.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

class iSimulator;
class iTracer;
class iProjectDialogs;
class CoreList;
class Point2D;

class Project
{
public:
    // Answers of `launch`.
    static constexpr int LAUNCH_CHUNK_DONE = 0;
    static constexpr int LAUNCH_RUN_ENDED = 1;
    static constexpr int LAUNCH_FAILED = 2;
    static constexpr int LAUNCH_STOPPED = 3;

    // An empty name makes the "Untitled Project".
    Project(iSimulator* simulator, iProjectDialogs* dialogs, const std::string& parent,
            const std::string& name);
    ~Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // --- Paths
    const std::string& getPath() const { return _path; }
    const std::string& getParentPath() const { return _parent; }
    std::string getName() const;
    std::string getWellsPath() const { return _path + "/wells"; }
    std::string getErodPath() const { return _path + "/erodibility"; }
    std::string getTopoPath() const { return _path + "/topography"; }
    std::string getTectoPath() const { return _path + "/tectonic"; }
    std::string getFlatteningPath() const { return _path + "/flattening"; }
    std::string getCenterlinePath() const { return _path + "/centerline"; }
    // The current journal "<name>.jnl" and its backup "<name>_bck.jnl" stand
    // in the project directory, beside the layout of the data directories.
    std::string getJournalPath() const;
    std::string getJournalBackupPath() const;
    // Where `turnCurrentJnlIntoInputJnl` puts the journal: "<name>_input.jnl".
    std::string getInputJournalPath() const { return _inputJournalPath; }
    // The record of the running sequence, appended to the journal when it ends.
    std::string getPendingRecordPath() const;
    std::string getStatsPath() const { return _path + "/Stats.csv"; }
    std::string getCenterlineStatsPath() const { return _path + "/CenterlineStats.csv"; }
    std::string getGrainsizeStatsPath() const { return _path + "/GrainsizeStats.csv"; }
    std::string getSimuPath(unsigned int iteration) const;
    const std::string& getLastMessage() const { return _lastMessage; }

    // --- Lifecycle
    // Makes the directory anew (an existing one is removed), then opens it.
    bool create();
    bool open();
    // Goes to the last saved iteration; false when there is none.
    bool load();
    bool save();
    // Makes "<parent>/<name>.prj" a copy of this project and continues there.
    bool saveProjectAs(const std::string& parent, const std::string& name);
    bool check_version(const std::string& path);
    bool updateVersionFile();
    // Drops the model and the run state; the directory stays as it is.
    void reset();
    void resetDefaultParameters();
    bool clearSimulator();
    bool initSimulator(int seed);
    // True when the registry's grid is not that of the model in memory.
    bool domainChanged() const;

    // --- History
    bool getIterList(std::vector<unsigned int>& list) const;
    bool gotoIter(unsigned int iteration);
    bool loadPrevious();
    bool loadNext();
    unsigned int getCurrentIter() const { return _currentIter; }

    // --- Sequences and journals
    bool newSequence();
    bool endSequence();
    bool saveInitSequenceInCurrentJnl();
    bool saveSequenceInCurrentJnl();
    bool saveParamsInCurrentJnl(bool sequence);
    bool readInitFromJnl(InputJournalFile& journal);
    bool readSequenceFromJnl(InputJournalFile& journal, int& iterations);
    bool loadAllSequenceFromJnl(const std::string& path, int& iterations);
    // Makes `path` the journal that drives the next sequences.
    void setInputJournal(const std::string& path);
    bool readInitFromInputJnl();
    bool readSequenceFromInputJnl();
    void exitFromInputJnl();
    bool turnCurrentJnlIntoInputJnl();
    bool isInputJournalActive() const { return _inputJournalActive; }
    int getNextSequenceIterations() const { return _nextSequenceIterations; }
    int getSequenceCount() const { return _sequenceCount; }

    // --- Run
    // Runs up to `iterations`; one of the LAUNCH_ answers.
    int launch(unsigned int iterations);
    bool launch_batch(const std::string& path);
    // Replacements asked for by the panels, applied by the next `launch`.
    void replaceTopographyAtLaunch(const std::string& path, int mode, int facies);
    void replaceTopographyByConstantAtLaunch(double value, int mode, int facies);
    void replaceCenterlineAtLaunch(const std::string& path);
    void replaceCenterlineFromPointAtLaunch(const Point2D& point);

    // --- Imports: each converts or copies into the project; `result` is the
    // path of the file in the project.
    bool addWell(const std::string& path, const std::string& trajectory, std::string& result);
    bool addErodibilityMap(const std::string& path, std::string& result);
    bool addTopography(const std::string& path, std::string& result);
    bool addTectonic(const std::string& path, std::string& result);
    bool addFlattening(const std::string& path, std::string& result);
    bool addCenterline(const std::string& path, std::string& result);
    bool loadAllWells();
    bool extractWells(CoreList& list);
    // Geographic extent of the imported wells' heads; false without wells.
    bool getWellsBox(Point2D& min, Point2D& max);
    int getNbWell() const { return static_cast<int>(_wells.size()); }
    // Name of each imported well and its file in the project.
    const std::vector<std::pair<std::string, std::string>>& getWells() const { return _wells; }

    // --- Inputs selected in the panels, passed to the simulator when changed.
    void selectErodibilityMap(const std::string& path);
    void selectUpperLimit(const std::string& path, int type);
    void selectTectonic(const std::string& path);
    void selectFlattening(const std::string& path);
    bool loadEmap();
    bool loadZul();
    bool loadTecto();
    bool loadFlattening();

    // --- Files. Each refuses with a message rather than lose a user's file.
    bool copyFile(const std::string& from, const std::string& to);
    bool copyDir(const std::string& from, const std::string& to);
    // Refuses a root, a home folder and its parents, and anything that is not
    // this project's directory or inside it.
    bool removeDirectory(const std::string& path);

private:
    struct Input
    {
        std::string path;
        bool changed = false;
    };
    struct LaunchReplacements
    {
        std::string topoPath;
        bool topoConstant = false;
        double topoValue = 0.;
        int topoMode = 0;
        int topoFacies = 0;
        bool topoPending = false;
        std::string centerlinePath;
        bool centerlinePoint = false;
        double pointX = 0.;
        double pointY = 0.;
        bool centerlinePending = false;
    };

    void set_location(const std::string& parent, const std::string& name);
    iTracer* tracer() const;
    void debug(const std::string& text) const;
    bool error(const std::string& text);
    bool warning(const std::string& text);
    bool goto_failed(const std::string& text);
    bool import_grid(const std::string& path, const std::string& noun, const std::string& shortNoun,
                     const std::string& dir, std::string& result);
    bool remove_later_iterations();
    bool write_iteration(const std::string& dir);
    bool check_iteration(const std::string& dir);
    bool load_iteration(const std::string& dir);
    std::string load_failure_message() const;
    bool apply_launch_replacements();
    bool scan_wells();
    bool is_inside_project(const std::string& path) const;
    bool remove_tree(const std::string& path);
    bool skip_sequences(InputJournalFile& journal, int count);
    bool journal_corrupted();
    bool write_pending_record();

    iSimulator* _simulator;
    iProjectDialogs* _dialogs;
    std::string _parent;
    std::string _name;
    std::string _path;
    std::string _inputJournalPath;
    std::string _lastMessage;
    unsigned int _currentIter = 0;
    unsigned int _sequenceStartAge = 0;
    int _sequenceCount = 0;
    int _nextSequenceIterations = 0;
    bool _inputJournalActive = false;
    bool _journalCorrupted = false;
    // The boolean of a sequence record between the equilibrium profile and
    // the grain sizes: whether an input map was passed at that sequence.
    bool _inputsChanged = false;
    std::vector<std::pair<std::string, std::string>> _wells;
    Input _emap;
    Input _zul;
    int _zulType = 0;
    Input _tecto;
    Input _flattening;
    LaunchReplacements _replacements;
    std::unique_ptr<ParameterGroupList> _groups;
    std::unique_ptr<InputJournalFile> _inputJournal;
    std::unique_ptr<OutputJournalFile> _outputJournal;
};
