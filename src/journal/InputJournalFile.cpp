#include "gui/InputJournalFile.h"

#include "kernel/common/FaciesDescription.h"

#include <cstring>
#include <limits>

namespace
{

const char* const CORRUPTED =
    "Journal file seems to be corrupted. Please, look at sample journal files in data directory!";

bool is_blank(int c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool true_word(const std::string& word)
{
    return word == "true" || word == "1" || word == "t" || word == "True" || word == "TRUE" || word == "T";
}

bool false_word(const std::string& word)
{
    return word == "false" || word == "0" || word == "f" || word == "False" || word == "FALSE" || word == "F";
}

} // namespace

InputJournalFile::InputJournalFile(const std::string& path) : _path(path)
{
    _line[0] = '\0';
}

InputJournalFile::~InputJournalFile()
{
    close();
}

bool InputJournalFile::open()
{
    if (_open)
        return true;
    _stream.clear();
    _stream.open(_path, std::ios::in);
    _open = _stream.is_open();
    _nlevels = 0;
    _message = _open ? "" : "Warning: Unable to open the input journal file " + _path + " for reading";
    return _open;
}

void InputJournalFile::close()
{
    if (_stream.is_open())
        _stream.close();
    _open = false;
}

bool InputJournalFile::getLine()
{
    _line[0] = '\0';
    _stream.getline(_line, LINE_SIZE);
    return !_stream.fail();
}

bool InputJournalFile::keepValue()
{
    while (true)
    {
        while (_stream.good() && is_blank(_stream.peek()))
            _stream.get();
        const int next = _stream.peek();
        if (next == '*')
        {
            _stream.get();
            return true;
        }
        // The end of the file gives false too: the extraction that follows reports it.
        if (next != '#')
            return false;
        if (!_stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n'))
        {
            _stream.clear();
            return true;
        }
    }
}

int InputJournalFile::getInt(int& value)
{
    return get_value(value);
}

int InputJournalFile::getUInt(unsigned int& value)
{
    long long read = value;
    const int status = get_value(read);
    if (status != 0)
        return status;
    if (read < 0 || read > std::numeric_limits<unsigned int>::max())
    {
        _stream.setstate(std::ios::failbit);
        return failed();
    }
    value = static_cast<unsigned int>(read);
    return 0;
}

int InputJournalFile::getReal(double& value)
{
    return get_value(value);
}

int InputJournalFile::getColor(KemoColor& value)
{
    return get_value(value);
}

int InputJournalFile::getString(std::string& value)
{
    return get_value(value);
}

int InputJournalFile::getBool(bool& value, std::string* text)
{
    std::string word;
    if (recover())
        return failed();
    if (keepValue())
    {
        getLine();
        return 0;
    }
    if (!(_stream >> word))
        return failed();
    if (!true_word(word) && !false_word(word))
    {
        _stream.setstate(std::ios::failbit);
        return failed();
    }
    value = true_word(word);
    if (text != nullptr)
        *text = word;
    getLine();
    return 0;
}

int InputJournalFile::getLiteral(std::string& value)
{
    if (recover())
        return failed();
    if (keepValue())
    {
        getLine();
        return 0;
    }
    if (!getLine())
        return failed();
    std::string text(_line);
    const std::size_t comment = text.find('#');
    if (comment != std::string::npos)
        text.erase(comment);
    while (!text.empty() && is_blank(static_cast<unsigned char>(text.back())))
        text.pop_back();
    value = text;
    return 0;
}

bool InputJournalFile::upLevel()
{
    if (!seek_line_with('{'))
        return false;
    _nlevels++;
    return true;
}

bool InputJournalFile::downLevel()
{
    if (_nlevels > 0)
        _nlevels--;
    return seek_line_with('}');
}

template <typename T> int InputJournalFile::get_value(T& value)
{
    if (recover())
        return failed();
    if (!keepValue())
    {
        T read = value;
        if (!(_stream >> read))
            return failed();
        value = read;
    }
    // The rest of the line is the label.
    getLine();
    return 0;
}

// A stream left in error by the previous value is cleared and reported once.
bool InputJournalFile::recover()
{
    if (!_stream.fail())
        return false;
    _stream.clear();
    return true;
}

int InputJournalFile::failed()
{
    setCorrupted();
    return 1;
}

void InputJournalFile::setCorrupted()
{
    _message = CORRUPTED;
}

bool InputJournalFile::seek_line_with(char brace)
{
    while (true)
    {
        const bool whole = getLine();
        if (std::strchr(_line, brace) != nullptr)
            return true;
        if (_stream.eof() || !_open)
        {
            _stream.clear();
            return false;
        }
        // A line longer than the buffer is read on in pieces.
        if (!whole)
            _stream.clear();
    }
}
