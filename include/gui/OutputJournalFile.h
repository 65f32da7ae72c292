#pragma once
// The journal of the interface's parameters, written one value per line: the
// value in a fixed field, then the labels of its levels as a comment. The
// reader finds values by their place, so the labels are for people only.

#include <fstream>
#include <string>
#include <vector>

class KemoColor;

class OutputJournalFile
{
public:
    explicit OutputJournalFile(const std::string& path);
    ~OutputJournalFile();
    OutputJournalFile(const OutputJournalFile&) = delete;
    OutputJournalFile& operator=(const OutputJournalFile&) = delete;

    // Opens the file, emptying it; the journal stays open for writing.
    bool initiate();
    // Opens the file for appending; true at once when already open.
    bool open();
    void close();
    bool isOpen() const { return _open; }
    const std::string& getPath() const { return _path; }
    // The reason of the last failure to open.
    const std::string& getMessage() const { return _message; }

    void upLevel(const std::string& label);
    void downLevel();
    int getLevel() const { return _nlevels; }
    // Label of the forms that take the value alone.
    void setComment(const std::string& text);

    // Each writes one line and answers whether the stream is still good.
    bool addInt(const std::string& label, int value);
    bool addReal(const std::string& label, double value);
    bool addBool(const std::string& label, bool value);
    bool addString(const std::string& label, const std::string& value);
    bool addColor(const std::string& label, const KemoColor& value);
    bool addInt(int value);
    bool addReal(double value);
    bool addBool(bool value);
    bool addString(const std::string& value);
    bool addColor(const KemoColor& value);

    // Ends the current line with " # " and the labels joined by " / ".
    void writeComment();

    // Width of the value field.
    static const int _ncols = 15;

private:
    bool add_text(const std::string& label, const std::string& text);

    std::ofstream _stream;
    std::string _path;
    bool _open = false;
    int _nlevels = 0;
    std::vector<std::string> _labels;
    std::string _comment;
    std::string _message;
};
