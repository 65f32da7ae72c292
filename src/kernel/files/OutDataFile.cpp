#include "kernel/files/OutDataFile.h"

#include <iomanip>

OutDataFile::OutDataFile(const std::string& path) : std::ofstream(), BaseDataFile(path), _staged(path)
{
    open(_staged.path(), std::ios::out | std::ios::trunc);
}

OutDataFile::~OutDataFile()
{
    std::ofstream::close();
}

void OutDataFile::close()
{
    if (!is_open())
        return;
    std::ofstream::close();
    if (fail() || !_staged.commit())
    {
        _staged.discard();
        setstate(std::ios::failbit);
    }
}

void OutDataFile::comment(const std::string& text)
{
    *this << _commentChar << ' ' << text << '\n';
}

void OutDataFile::separator()
{
    *this << _commentChar << ' ' << std::string(69, '=') << '\n';
}

void OutDataFile::section(const std::string& name)
{
    *this << _sectionChar << name << '\n';
}

void OutDataFile::word(const std::string& text)
{
    *this << text << ' ';
}

void OutDataFile::key_prefix(const std::string& key)
{
    // A NUL byte in a text file would be unreadable; a blank is what a reader
    // without separator expects after a keyword.
    *this << key << (_keySeparator != 0 ? _keySeparator : ' ');
}

void OutDataFile::key_value(const std::string& key, const std::string& value)
{
    key_prefix(key);
    *this << value << '\n';
}

void OutDataFile::key_value(const std::string& key, int value)
{
    key_prefix(key);
    *this << value << '\n';
}

void OutDataFile::key_value(const std::string& key, unsigned int value)
{
    key_prefix(key);
    *this << value << '\n';
}

void OutDataFile::key_value(const std::string& key, double value, int precision)
{
    key_prefix(key);
    if (precision == -1)
    {
        *this << value << '\n';
        return;
    }
    const std::ios::fmtflags flags = this->flags();
    const std::streamsize old_precision = this->precision();
    *this << std::fixed << std::setprecision(precision) << value;
    this->flags(flags);
    this->precision(old_precision);
    *this << '\n';
}
