#pragma once
// The folder of a snapshot: the mark that tells it was written by Sarvo, the
// sizes and checksums of its files, and the way back to a complete snapshot
// after a save that was interrupted.
//
// A save writes into "<dir>.saving", moves the old "<dir>" to "<dir>.previous",
// moves the new one in and removes the old one. The mark file is written first
// (with no list: incomplete) and rewritten last with the list of files, their
// sizes and their FNV-1a 64-bit checksums (complete).

#include <string>
#include <vector>

class SnapshotFolder
{
public:
    // The mark file, present in every folder this system writes a snapshot into.
    static const char* const MP_MARK_FILE;

    enum State
    {
        MISSING,    // no such folder, or no params.txt and no mark
        UNMARKED,   // a snapshot of an older version: params.txt, no mark
        INCOMPLETE, // marked, but the save did not reach its end
        COMPLETE,   // marked, every file listed
        DAMAGED     // a listed file is missing or differs from its size or checksum
    };

    static std::string staging(const std::string& dir) { return dir + ".saving"; }
    static std::string previous(const std::string& dir) { return dir + ".previous"; }

    // A folder a snapshot may replace: missing, empty or holding a snapshot
    // (complete or not) this system wrote. `why` tells the user otherwise.
    static bool replaceable(const std::string& dir, std::string& why);
    static bool isMarked(const std::string& dir);

    // The mark of a snapshot being written.
    static bool markIncomplete(const std::string& dir);
    // The mark of a complete snapshot: every regular file of `dir` with its size and checksum.
    static bool markComplete(const std::string& dir);

    // With `checkContent` the files are read and their checksums compared;
    // `message` names the damaged file.
    static State state(const std::string& dir, bool checkContent, std::string& message);

    // The folder to load for `dir`: `dir` itself when it holds a snapshot,
    // otherwise the newest complete one a save left beside it ("<dir>.saving",
    // then "<dir>.previous"). Empty when there is none, or when `dir` is damaged;
    // `message` then tells why.
    static std::string locate(const std::string& dir, bool checkContent, std::string& message);

    // FNV-1a 64 bits of the file's bytes; false when it cannot be read.
    static bool checksum(const std::string& path, unsigned long long& sum, unsigned long long& size);
};
