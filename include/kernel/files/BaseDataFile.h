#pragma once
// The line-oriented text dialect shared by every data file: comment lines,
// section heads and keyword lines, told apart by three characters.

#include <string>

class BaseDataFile
{
public:
    // Characters that may stand in a cleaned value, by value type.
    static inline const std::string _valid_for_string =
        "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_-./\\()[]{}+&";
    static inline const std::string _valid_for_real = "0123456789.e+-";
    static inline const std::string _valid_for_ulong = "0123456789+";
    static inline const std::string _valid_for_int = "0123456789+-";

    explicit BaseDataFile(const std::string& path);
    virtual ~BaseDataFile() = default;

    const std::string& getPath() const { return _path; }

    char getCommentChar() const { return _commentChar; }
    void setCommentChar(char c) { _commentChar = c; }
    char getSectionChar() const { return _sectionChar; }
    void setSectionChar(char c) { _sectionChar = c; }
    // 0 means no separator: a keyword is then a prefix of its line.
    char getKeySeparator() const { return _keySeparator; }
    void setKeySeparator(char c) { _keySeparator = c; }

    // Both ends stripped of blank, tab, carriage return and line feed.
    static std::string trim(const std::string& text);

    bool is_comment(const std::string& line) const;
    // Case-sensitive prefix match of `name` right after the section character.
    bool is_section(const std::string& line, const std::string& name) const;
    // On a match, `value` receives what follows the key, if anything does.
    bool is_keyword(const std::string& line, const std::string& key, std::string& value) const;
    bool is_keyword(const std::string& line, const std::string& key) const;

protected:
    char _commentChar = '#';
    char _sectionChar = '~';
    char _keySeparator = '=';
    std::string _path;
};
