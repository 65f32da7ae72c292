#pragma once
// Small helpers shared by the test suites.

#include "interface/iTracer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace testing_support
{

// What the tracers handed to `capture` printed since the last clear_trace(),
// and the level of each piece, in order.
inline std::string g_trace;
inline std::vector<TraceLevel> g_trace_levels;

inline void clear_trace()
{
    g_trace.clear();
    g_trace_levels.clear();
}

inline void capture(const char* text, TraceLevel level)
{
    g_trace += text ? text : "";
    g_trace_levels.push_back(level);
}

// Keeps warnings and worse only.
inline void capture_warnings(const char* text, TraceLevel level)
{
    if (level <= TRACE_WARNING)
        capture(text, level);
}

// Drops everything: for tests that only need the tracer to be quiet.
inline void silent(const char*, TraceLevel) {}

inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

inline bool traced(const std::string& text)
{
    return contains(g_trace, text);
}

// A fresh directory under the system temp dir, removed with the object.
class TempDir
{
public:
    TempDir()
    {
        static int counter = 0;
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("sarvo_") + (info ? info->test_suite_name() : "t") + "_" +
                           (info ? info->name() : "x") + "_" + std::to_string(::getpid()) + "_" +
                           std::to_string(counter++);
        _path = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(_path);
        std::filesystem::create_directories(_path);
    }
    ~TempDir() { std::filesystem::remove_all(_path); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string file(const std::string& name) const { return (_path / name).string(); }
    const std::filesystem::path& path() const { return _path; }

private:
    std::filesystem::path _path;
};

inline void write_file(const std::string& path, const std::string& content)
{
    std::ofstream out(path, std::ios::binary);
    out << content;
}

inline std::string read_file(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// The lines of a text, without their ends.
inline std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

// Runs `statement` and returns the text of the kernel assertion it threw,
// or "" when it threw nothing.
template <typename F> std::string assertion_text(F&& statement)
{
    try
    {
        statement();
    }
    catch (const std::string& text)
    {
        return text;
    }
    return "";
}

// True when `text` is the kernel's failure text for `condition`.
inline bool is_assertion_of(const std::string& text, const std::string& condition)
{
    return text.rfind(condition + " failed at [", 0) == 0 && text.find(", line: ") != std::string::npos &&
           !text.empty() && text.back() == ']';
}

// The text with its first `from` replaced by `to`; a missing `from` fails the test.
inline std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
        text.replace(at, from.size(), to);
    return text;
}

// The text with each (from, to) replacement made in turn.
inline std::string edited(std::string text, const std::vector<std::pair<std::string, std::string>>& edits)
{
    for (const auto& edit : edits)
        text = replaced(text, edit.first, edit.second);
    return text;
}

} // namespace testing_support
