// Copying and removing inside a project. A copy never truncates its own
// source, and a removal never reaches beyond the project's directory.

#include "gui/Project.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

// The absolute path with "." and ".." resolved and symbolic links followed
// for the folders above it; the last element is kept as named, so that a link
// is judged as the link it is.
fs::path resolved(const std::string& path)
{
    std::error_code ec;
    fs::path p = fs::absolute(path, ec).lexically_normal();
    if (!p.empty() && p.filename().empty())
        p = p.parent_path();
    if (p == p.root_path())
        return p;
    return fs::weakly_canonical(p.parent_path(), ec) / p.filename();
}

bool is_within(const fs::path& inner, const fs::path& outer)
{
    auto i = inner.begin();
    for (auto o = outer.begin(); o != outer.end(); ++o, ++i)
        if (i == inner.end() || *i != *o)
            return false;
    return true;
}

size_t depth(const fs::path& p)
{
    return static_cast<size_t>(std::distance(p.begin(), p.end()));
}

} // namespace

bool Project::copyFile(const std::string& from, const std::string& to)
{
    std::error_code ec;
    if (fs::exists(to, ec) && fs::equivalent(from, to, ec))
        return error("Cannot copy file " + from + " onto itself");
    std::ifstream in(from, std::ios::binary);
    if (!in)
        return error("Cannot read file " + from);
    const std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        return error("Cannot read file " + from);
    // Written aside and renamed, so that a failed write leaves `to` as it was.
    const std::string partial = to + ".part";
    {
        std::ofstream out(partial, std::ios::binary | std::ios::trunc);
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        out.close();
        if (!out)
        {
            fs::remove(partial, ec);
            return error("Cannot write file " + to);
        }
    }
    fs::rename(partial, to, ec);
    if (ec)
    {
        fs::remove(partial, ec);
        return error("Cannot write file " + to);
    }
    return true;
}

bool Project::copyDir(const std::string& from, const std::string& to)
{
    std::error_code ec;
    if (!fs::is_directory(from, ec))
        return error("Cannot copy folder " + from + ": it does not exist");
    if (is_within(resolved(to), resolved(from)))
        return error("Cannot copy folder " + from + " into itself (" + to + ")");
    fs::create_directories(to, ec);
    if (!fs::is_directory(to, ec))
        return error("Cannot create folder " + to);
    for (const fs::directory_entry& entry : fs::directory_iterator(from, ec))
    {
        const std::string target = to + "/" + entry.path().filename().string();
        const bool good = entry.is_directory(ec) ? copyDir(entry.path().string(), target)
                                                 : copyFile(entry.path().string(), target);
        if (!good)
            return false;
    }
    return !ec || error("Cannot read folder " + from);
}

bool Project::is_inside_project(const std::string& path) const
{
    return is_within(resolved(path), resolved(_path));
}

bool Project::removeDirectory(const std::string& path)
{
    const fs::path target = resolved(path);
    const char* home = std::getenv("HOME");
    const bool homeOrAbove = home != nullptr && *home != '\0' && is_within(resolved(home), target);
    // "/" and the folders right under it, and any home folder or its parents.
    if (path.empty() || depth(target) < 3 || homeOrAbove)
    {
        error(std::string("You asked remDirRF() to delete a possible root directory.\n") +
              "This is disabled by default.  If you really need to delete " + path + "\n" +
              "please alter the remDirRF() definition.");
        return false;
    }
    if (!is_inside_project(path))
        return error("Cannot remove " + path + ": it is not inside the project " + _path);
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(path, ec)))
        return error(path + " does not exist.  Could not remove directory.");
    return remove_tree(path);
}

bool Project::remove_tree(const std::string& path)
{
    std::error_code ec;
    // A link is removed as a link: what it points to is not this project's.
    if (fs::is_directory(fs::symlink_status(path, ec)))
    {
        for (const fs::directory_entry& entry : fs::directory_iterator(path, ec))
            if (!remove_tree(entry.path().string()))
                return false;
        if (!fs::remove(path, ec))
            return error("Could not remove directory " + path);
        return true;
    }
    if (!fs::remove(path, ec))
        return error("Could not remove file " + path);
    return true;
}

bool Project::getIterList(std::vector<unsigned int>& list) const
{
    list.clear();
    std::error_code ec;
    for (const fs::directory_entry& entry : fs::directory_iterator(_path, ec))
    {
        const std::string name = entry.path().filename().string();
        if (!entry.is_directory(ec) || name.rfind("iter_", 0) != 0 || name.size() == 5)
            continue;
        const std::string digits = name.substr(5);
        if (!std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }) ||
            digits.size() > 9)
            continue;
        list.push_back(static_cast<unsigned int>(std::stoul(digits)));
    }
    std::sort(list.begin(), list.end());
    return !ec;
}
