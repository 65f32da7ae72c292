#pragma once
// Reads back a journal of the interface's parameters value by value, in the
// order they were written. A "*" keeps the value in force, a line starting
// with "#" is a comment, and whatever follows a value on its line is ignored.

#include <fstream>
#include <string>

class KemoColor;

class InputJournalFile
{
public:
    explicit InputJournalFile(const std::string& path);
    ~InputJournalFile();
    InputJournalFile(const InputJournalFile&) = delete;
    InputJournalFile& operator=(const InputJournalFile&) = delete;

    // True at once when already open; false with a message otherwise.
    bool open();
    void close();
    bool isOpen() const { return _open; }
    const std::string& getPath() const { return _path; }
    // The reason of the last failure (opening, or a value that did not parse).
    const std::string& getMessage() const { return _message; }
    // For a value that was read but means nothing to its reader.
    void setCorrupted();

    // Reads the next line into the buffer; a line too long for it fails the stream.
    bool getLine();
    const char* getLineText() const { return _line; }

    // True when the next value is "*" (consumed), false when a value follows;
    // comment lines on the way are skipped.
    bool keepValue();

    // Each answers 0 when the value was read or kept, 1 when the journal is in
    // error; the value is left alone unless one was read.
    int getInt(int& value);
    int getUInt(unsigned int& value);
    int getReal(double& value);
    int getColor(KemoColor& value);
    // One word only.
    int getString(std::string& value);
    // `text`, when given, receives the word as written.
    int getBool(bool& value, std::string* text = nullptr);
    // The rest of the line up to a "#", several words allowed.
    int getLiteral(std::string& value);

    // Levels of hand-made journals, written as lines holding "{" and "}".
    bool upLevel();
    bool downLevel();
    int getLevel() const { return _nlevels; }

    static const int LINE_SIZE = 256;

private:
    template <typename T> int get_value(T& value);
    bool recover();
    int failed();
    bool seek_line_with(char brace);

    std::ifstream _stream;
    std::string _path;
    bool _open = false;
    int _nlevels = 0;
    char _line[LINE_SIZE];
    std::string _message;
};
