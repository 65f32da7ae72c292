#pragma once
// Reader of the text dialect: delivers data lines, finds sections and
// keywords (always searching from the top), and converts fields.

#include "kernel/files/BaseDataFile.h"

#include <fstream>
#include <string>

class InDataFile : public std::ifstream, public BaseDataFile
{
public:
    // Opens the file; a failure is seen through is_open().
    explicit InDataFile(const std::string& path);

    // Next line that is neither blank nor a whole-line comment, trimmed.
    bool next_line(std::string& text);
    bool next_line();
    const std::string& get_line() const { return _line; }

    // Clears the stream state and goes back to the start of the file.
    void rewind();

    // On success the stream stands after the matched line, held by get_line().
    bool seek_section(const std::string& name);
    bool seek_keyword(const std::string& key);
    bool seek_keyword(const std::string& key, std::string& value);

    // Not found gives false with 1e30, 2147483647 or "??" in `value`.
    bool get_key_value(const std::string& key, std::string& value, bool clean = true);
    bool get_key_value(const std::string& key, double& value, bool clean = true);
    bool get_key_value(const std::string& key, int& value, bool clean = true);
    bool get_key_value(const std::string& key, unsigned int& value, bool clean = true);

    // Field n (from 1) of the current line; separator 0 splits on whitespace.
    bool get_value(int n, std::string& value, char separator = 0);
    bool get_value(int n, double& value, char separator = 0);
    bool get_value(int n, int& value, char separator = 0);
    bool get_value(int n, unsigned int& value, char separator = 0);

private:
    template <typename T>
    bool extract_key_value(const std::string& key, T& value, bool clean, const std::string& valid);
    template <typename T> bool extract_field(int n, T& value, char separator) const;

    std::string _line;
};
