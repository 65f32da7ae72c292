#pragma once
// Every file a batch reads and writes, to refuse before anything runs the
// batches that would lose a user's file: an output written over an input or
// over another output, or a snapshot saved over a folder of the user's.
// Paths are compared in canonical form, so "./a/../run.bat" is "run.bat".

#include <string>
#include <vector>

class BatchPaths
{
public:
    // `what` names the path in the user's terms: "F2G_FILE", "batch file",
    // "NEW_TOPO of sequence #2".
    void input(const std::string& what, const std::string& path);
    void output(const std::string& what, const std::string& path);
    // Outputs named "<prefix><digits><suffix>", as a block written every F2G_IT iterations.
    void outputSeries(const std::string& what, const std::string& prefix, const std::string& suffix);
    // A folder a snapshot replaces, and a folder a snapshot is read from.
    void snapshotSave(const std::string& what, const std::string& dir);
    void snapshotLoad(const std::string& what, const std::string& dir);

    // The first collision, worded for the user; false when there is one.
    bool check(std::string& message) const;
    // Makes the missing folders the outputs go to; false with the folder that cannot be made.
    bool createFolders(std::string& message) const;

    static std::string canonical(const std::string& path);

private:
    enum Kind
    {
        INPUT,
        OUTPUT,
        SERIES,
        SNAP_SAVE,
        SNAP_LOAD
    };
    struct Entry
    {
        Kind kind;
        std::string what;
        std::string path;   // canonical; the prefix of a series
        std::string suffix; // of a series
    };

    void add(Kind kind, const std::string& what, const std::string& path, const std::string& suffix = "");
    bool collide(const Entry& a, const Entry& b, std::string& message) const;
    bool snapshotCovers(const Entry& snap, const Entry& other, std::string& message) const;
    static bool inSeries(const Entry& series, const std::string& path);

    std::vector<Entry> _entries;
};
