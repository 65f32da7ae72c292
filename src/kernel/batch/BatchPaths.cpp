#include "kernel/batch/BatchPaths.h"

#include "kernel/files/SnapshotFolder.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace
{
namespace fs = std::filesystem;

// `path` is `dir` or stands inside it.
bool within(const std::string& path, const std::string& dir)
{
    if (path == dir)
        return true;
    const std::string head = dir.back() == '/' ? dir : dir + "/";
    return path.rfind(head, 0) == 0;
}
} // namespace

std::string BatchPaths::canonical(const std::string& path)
{
    std::error_code code;
    fs::path absolute = fs::absolute(path, code);
    if (code)
        absolute = path;
    const fs::path resolved = fs::weakly_canonical(absolute, code);
    std::string text = (code ? absolute.lexically_normal() : resolved.lexically_normal()).string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

void BatchPaths::add(Kind kind, const std::string& what, const std::string& path, const std::string& suffix)
{
    if (path.empty())
        return;
    // A series keeps its prefix as written: only its folder is resolved.
    std::string resolved = canonical(path);
    if (kind == SERIES)
    {
        const fs::path whole(path);
        resolved = canonical(whole.parent_path().empty() ? "." : whole.parent_path().string()) + "/" +
                   whole.filename().string();
    }
    _entries.push_back(Entry{kind, what, resolved, suffix});
}

void BatchPaths::input(const std::string& what, const std::string& path)
{
    add(INPUT, what, path);
}

void BatchPaths::output(const std::string& what, const std::string& path)
{
    add(OUTPUT, what, path);
}

void BatchPaths::outputSeries(const std::string& what, const std::string& prefix, const std::string& suffix)
{
    add(SERIES, what, prefix, suffix);
}

void BatchPaths::snapshotSave(const std::string& what, const std::string& dir)
{
    add(SNAP_SAVE, what, dir);
}

void BatchPaths::snapshotLoad(const std::string& what, const std::string& dir)
{
    add(SNAP_LOAD, what, dir);
}

bool BatchPaths::inSeries(const Entry& series, const std::string& path)
{
    const std::string& prefix = series.path;
    const std::string& suffix = series.suffix;
    if (path.size() <= prefix.size() + suffix.size() || path.rfind(prefix, 0) != 0 ||
        path.compare(path.size() - suffix.size(), suffix.size(), suffix) != 0)
        return false;
    const std::string middle = path.substr(prefix.size(), path.size() - prefix.size() - suffix.size());
    return std::all_of(middle.begin(), middle.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// A snapshot save replaces its folder and the two it works with beside it:
// nothing else of the batch may stand in them, but a snapshot may be read there.
bool BatchPaths::snapshotCovers(const Entry& snap, const Entry& other, std::string& message) const
{
    if (other.kind == SNAP_SAVE || (other.kind == SNAP_LOAD && other.path == snap.path))
        return false;
    const std::string folders[] = {snap.path, SnapshotFolder::staging(snap.path),
                                   SnapshotFolder::previous(snap.path)};
    for (const std::string& folder : folders)
    {
        const bool covered = other.kind == SERIES ? within(other.path, folder + "/")
                                                  : within(other.path, folder) || within(folder, other.path);
        if (!covered)
            continue;
        message = snap.what + " " + snap.path + " would replace " + other.what + " " + other.path;
        return true;
    }
    return false;
}

bool BatchPaths::collide(const Entry& a, const Entry& b, std::string& message) const
{
    if (a.kind == SNAP_SAVE)
        return snapshotCovers(a, b, message);
    if (b.kind == SNAP_SAVE)
        return snapshotCovers(b, a, message);
    const bool a_writes = a.kind == OUTPUT || a.kind == SERIES;
    const bool b_writes = b.kind == OUTPUT || b.kind == SERIES;
    if (!a_writes && !b_writes)
        return false;
    const Entry& writer = a_writes ? a : b;
    const Entry& other = a_writes ? b : a;
    bool same = false;
    // A snapshot read by a sequence is a folder of inputs.
    if (other.kind == SNAP_LOAD)
        same = within(writer.path, other.path + "/");
    else if (writer.kind == SERIES && other.kind == SERIES)
        same = writer.path == other.path && writer.suffix == other.suffix;
    else if (writer.kind == SERIES)
        same = inSeries(writer, other.path);
    else if (other.kind == SERIES)
        same = inSeries(other, writer.path);
    else
        same = writer.path == other.path;
    if (!same)
        return false;
    const std::string& path = writer.kind == SERIES ? other.path : writer.path;
    if (other.kind == OUTPUT || other.kind == SERIES)
        message = writer.what + " and " + other.what + " would both write the file " + path;
    else
        message = writer.what + " " + path + " would overwrite the input " + other.what;
    return true;
}

bool BatchPaths::check(std::string& message) const
{
    for (const Entry& entry : _entries)
    {
        std::string why;
        if (entry.kind == SNAP_SAVE && !SnapshotFolder::replaceable(entry.path, why))
        {
            message = entry.what + ": " + why;
            return false;
        }
    }
    for (size_t a = 0; a < _entries.size(); ++a)
        for (size_t b = a + 1; b < _entries.size(); ++b)
            if (collide(_entries[a], _entries[b], message))
                return false;
    return true;
}

bool BatchPaths::createFolders(std::string& message) const
{
    for (const Entry& entry : _entries)
    {
        if (entry.kind != OUTPUT && entry.kind != SERIES)
            continue;
        const fs::path folder = fs::path(entry.path).parent_path();
        std::error_code code;
        if (folder.empty() || fs::is_directory(folder, code))
            continue;
        fs::create_directories(folder, code);
        if (!fs::is_directory(folder, code))
        {
            message = "Cannot create the folder " + folder.string() + " of " + entry.what;
            return false;
        }
    }
    return true;
}
