#include "gui/OutputJournalFile.h"

#include "kernel/common/FaciesDescription.h"

#include <cstdio>
#include <iomanip>
#include <sstream>

namespace
{

std::string real_text(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%g", value);
    return buffer;
}

} // namespace

OutputJournalFile::OutputJournalFile(const std::string& path) : _path(path) {}

OutputJournalFile::~OutputJournalFile()
{
    close();
}

bool OutputJournalFile::initiate()
{
    close();
    _stream.clear();
    _stream.open(_path, std::ios::out | std::ios::trunc);
    _open = _stream.is_open();
    _message = _open ? "" : "Warning: Unable to initiate the output journal file " + _path + " for writing";
    return _open;
}

bool OutputJournalFile::open()
{
    if (_open)
        return true;
    _stream.clear();
    _stream.open(_path, std::ios::out | std::ios::app);
    _open = _stream.is_open();
    _message = _open ? "" : "Warning: Unable to open the output journal file " + _path + " for writing";
    return _open;
}

void OutputJournalFile::close()
{
    if (_stream.is_open())
        _stream.close();
    _open = false;
}

void OutputJournalFile::upLevel(const std::string& label)
{
    _labels.push_back(label);
    _nlevels++;
}

void OutputJournalFile::downLevel()
{
    if (_nlevels == 0)
        return;
    _labels.pop_back();
    _nlevels--;
}

void OutputJournalFile::setComment(const std::string& text)
{
    _comment = text;
}

bool OutputJournalFile::addInt(const std::string& label, int value)
{
    return add_text(label, std::to_string(value));
}

bool OutputJournalFile::addReal(const std::string& label, double value)
{
    return add_text(label, real_text(value));
}

bool OutputJournalFile::addBool(const std::string& label, bool value)
{
    return add_text(label, value ? "true" : "false");
}

bool OutputJournalFile::addString(const std::string& label, const std::string& value)
{
    return add_text(label, value);
}

bool OutputJournalFile::addColor(const std::string& label, const KemoColor& value)
{
    std::ostringstream text;
    text << value;
    return add_text(label, text.str());
}

bool OutputJournalFile::addInt(int value)
{
    return addInt(_comment, value);
}

bool OutputJournalFile::addReal(double value)
{
    return addReal(_comment, value);
}

bool OutputJournalFile::addBool(bool value)
{
    return addBool(_comment, value);
}

bool OutputJournalFile::addString(const std::string& value)
{
    return addString(_comment, value);
}

bool OutputJournalFile::addColor(const KemoColor& value)
{
    return addColor(_comment, value);
}

void OutputJournalFile::writeComment()
{
    _stream << " # ";
    bool first = true;
    for (const std::string& label : _labels)
    {
        if (label.empty())
            continue;
        if (!first)
            _stream << " / ";
        _stream << label;
        first = false;
    }
    _stream << '\n';
}

bool OutputJournalFile::add_text(const std::string& label, const std::string& text)
{
    _labels.push_back(label);
    _stream << std::left << std::setw(_ncols) << text;
    writeComment();
    _labels.pop_back();
    return _open && _stream.good();
}
