#include "kernel/files/SnapshotFolder.h"

#include "kernel/common/StagedFile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

const char* const SnapshotFolder::MP_MARK_FILE = "sarvo_snapshot.txt";

namespace
{
namespace fs = std::filesystem;

const char* const MARK_HEAD = "SARVO_SNAPSHOT=1";
const char* const FILES_KEY = "NB_FILES=";

struct Entry
{
    std::string name;
    unsigned long long size;
    unsigned long long sum;
};

std::string mark_path(const std::string& dir)
{
    return (fs::path(dir) / SnapshotFolder::MP_MARK_FILE).string();
}

std::string hex_text(unsigned long long value)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", value);
    return text;
}

// The mark file's lines: the head, then with a complete save NB_FILES=n and
// one line per file, "name;size;checksum". False for anything else.
bool read_mark(const std::string& dir, bool& complete, std::vector<Entry>& entries)
{
    std::ifstream in(mark_path(dir));
    std::string line;
    if (!in || !std::getline(in, line) || line != MARK_HEAD)
        return false;
    complete = false;
    entries.clear();
    if (!std::getline(in, line))
        return true;
    if (line.rfind(FILES_KEY, 0) != 0)
        return false;
    size_t count = 0;
    std::istringstream(line.substr(std::string(FILES_KEY).size())) >> count;
    while (entries.size() < count && std::getline(in, line))
    {
        std::replace(line.begin(), line.end(), ';', ' ');
        std::istringstream fields(line);
        Entry entry{};
        std::string sum;
        if (!(fields >> entry.name >> entry.size >> sum) || sum.size() != 16)
            return false;
        char* end = nullptr;
        entry.sum = std::strtoull(sum.c_str(), &end, 16);
        if (end != sum.c_str() + sum.size())
            return false;
        entries.push_back(entry);
    }
    complete = entries.size() == count;
    return complete;
}

bool has_file(const std::string& dir, const char* name)
{
    std::error_code code;
    return fs::is_regular_file(fs::path(dir) / name, code);
}
} // namespace

bool SnapshotFolder::checksum(const std::string& path, unsigned long long& sum, unsigned long long& size)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    sum = 14695981039346656037ULL;
    size = 0;
    char buffer[1 << 16];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0)
    {
        const std::streamsize n = in.gcount();
        for (std::streamsize k = 0; k < n; ++k)
        {
            sum ^= static_cast<unsigned char>(buffer[k]);
            sum *= 1099511628211ULL;
        }
        size += static_cast<unsigned long long>(n);
    }
    return in.eof();
}

bool SnapshotFolder::isMarked(const std::string& dir)
{
    std::ifstream in(mark_path(dir));
    std::string line;
    return in && std::getline(in, line) && line == MARK_HEAD;
}

bool SnapshotFolder::replaceable(const std::string& dir, std::string& why)
{
    std::error_code code;
    if (!fs::exists(dir, code))
        return true;
    if (!fs::is_directory(dir, code))
    {
        why = dir + " is a file, not a folder";
        return false;
    }
    if (fs::is_empty(dir, code) || isMarked(dir))
        return true;
    why = "folder " + dir +
          " holds files that are not a snapshot written by Sarvo: a snapshot would replace them";
    return false;
}

bool SnapshotFolder::markIncomplete(const std::string& dir)
{
    StagedFile staged(mark_path(dir));
    std::ofstream out(staged.path());
    out << MARK_HEAD << '\n';
    out.close();
    return out && staged.commit();
}

bool SnapshotFolder::markComplete(const std::string& dir)
{
    std::vector<std::string> names;
    std::error_code code;
    for (const fs::directory_entry& item : fs::directory_iterator(dir, code))
        if (item.is_regular_file(code) && item.path().filename() != MP_MARK_FILE)
            names.push_back(item.path().filename().string());
    if (code)
        return false;
    std::sort(names.begin(), names.end());
    StagedFile staged(mark_path(dir));
    std::ofstream out(staged.path());
    out << MARK_HEAD << '\n' << FILES_KEY << names.size() << '\n';
    for (const std::string& name : names)
    {
        unsigned long long sum = 0, size = 0;
        if (!checksum((fs::path(dir) / name).string(), sum, size))
            return false;
        out << name << ';' << size << ';' << hex_text(sum) << '\n';
    }
    out.close();
    return out && staged.commit();
}

SnapshotFolder::State SnapshotFolder::state(const std::string& dir, bool checkContent, std::string& message)
{
    std::error_code code;
    if (!fs::is_directory(dir, code))
        return MISSING;
    bool complete = false;
    std::vector<Entry> entries;
    if (!read_mark(dir, complete, entries))
    {
        if (isMarked(dir))
            return INCOMPLETE;
        return has_file(dir, "params.txt") ? UNMARKED : MISSING;
    }
    if (!complete)
        return INCOMPLETE;
    for (const Entry& entry : entries)
    {
        const std::string path = (fs::path(dir) / entry.name).string();
        const unsigned long long size = fs::file_size(path, code);
        if (code || size != entry.size)
        {
            message = "Snapshot file " + path +
                      (code ? " is missing" : " does not have the size it was saved with");
            return DAMAGED;
        }
        unsigned long long sum = 0, read = 0;
        if (checkContent && (!checksum(path, sum, read) || sum != entry.sum || read != entry.size))
        {
            message =
                "Snapshot file " + path + " is damaged: its checksum differs from the one it was saved with";
            return DAMAGED;
        }
    }
    return COMPLETE;
}

std::string SnapshotFolder::locate(const std::string& dir, bool checkContent, std::string& message)
{
    const State own = state(dir, checkContent, message);
    if (own == COMPLETE || own == UNMARKED)
        return dir;
    if (own == DAMAGED)
        return std::string();
    // An interrupted save: the newest complete snapshot it left beside `dir`.
    for (const std::string& candidate : {staging(dir), previous(dir)})
    {
        std::string ignored;
        if (state(candidate, checkContent, ignored) == COMPLETE)
            return candidate;
    }
    message = own == INCOMPLETE ? "Snapshot folder " + dir + " holds an incomplete snapshot"
                                : "Snapshot folder " + dir + " does not hold params.txt";
    return std::string();
}
