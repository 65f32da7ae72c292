#include "kernel/files/RegularBlockGrid.h"

#include "kernel/common/Facies.h"
#include "kernel/geometry/RegularBlock.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

RegularBlockGrid::RegularBlockGrid(const RegularBlock& block, bool facies, bool grain, bool age,
                                   const std::string& undefined)
    : _block(block)
{
    // The geometry alone: the values stay in the block.
    GridParams::reset(block.geometry);
    setUndefinedText(undefined);
    if (facies)
        _columns.push_back(FACIES);
    _hasGrain = grain && block.grain.size() == block.size();
    _hasAge = age && block.age.size() == block.size();
    if (_hasGrain)
        _columns.push_back(GRAIN);
    if (_hasAge)
        _columns.push_back(AGE);
}

char* RegularBlockGrid::put_grain(char* out, double grain) const
{
    // Compared bit for bit: 0 and -0 are written apart.
    if (_grainLength == 0 || std::memcmp(&grain, &_grain, sizeof grain) != 0)
    {
        _grain = grain;
        _grainLength = static_cast<int>(put_number(_grainText, grain) - _grainText);
    }
    return std::copy(_grainText, _grainText + _grainLength, out);
}

void RegularBlockGrid::prefetch_ahead(size_t n) const
{
    // Lines mostly step across columns, a column's height apart, at a steady
    // step: the samples that many lines on are asked for now, so that each
    // line does not wait on memory.
    const auto at = static_cast<std::ptrdiff_t>(n);
    const std::ptrdiff_t ahead = at + MP_LINES_AHEAD * (at - static_cast<std::ptrdiff_t>(_lastNode));
    _lastNode = n;
    if (ahead == at || ahead < 0 || static_cast<size_t>(ahead) >= _block.size())
        return;
    __builtin_prefetch(_block.facies.data() + ahead);
    if (_hasGrain)
        __builtin_prefetch(_block.grain.data() + ahead);
    if (_hasAge)
        __builtin_prefetch(_block.age.data() + ahead);
}

void RegularBlockGrid::append_node_line(std::string& text, int i, int j, int k) const
{
    const size_t n = _block.index(i, j, k);
    prefetch_ahead(n);
    if (_block.is_void(n))
    {
        for (size_t c = 0; c < _columns.size(); ++c)
        {
            if (c > 0)
                text += ' ';
            text += getUndefinedText();
        }
        text += '\n';
        return;
    }
    // The line is put together apart and appended once.
    char line[3 * (MP_NUMBER_CHARS + 1)];
    char* out = line;
    for (size_t c = 0; c < _columns.size(); ++c)
    {
        if (c > 0)
            *out++ = ' ';
        if (_columns[c] == FACIES)
            out = put_whole(out, Facies::family(_block.facies[n]));
        else if (_columns[c] == GRAIN)
            out = put_grain(out, _block.grain[n]);
        else if (_block.age[n] < static_cast<uint32_t>(MP_WHOLE_LIMIT))
            out = put_whole(out, static_cast<int>(_block.age[n]));
        else
            out = put_number(out, static_cast<double>(_block.age[n]));
    }
    *out++ = '\n';
    text.append(line, static_cast<size_t>(out - line));
}

std::vector<std::pair<std::string, std::string>> RegularBlockGrid::columns() const
{
    static const char* const NAMES[] = {"Facies", "Grain Size", "Age"};
    std::vector<std::pair<std::string, std::string>> out;
    for (Column column : _columns)
        out.emplace_back(NAMES[column], getUndefinedText());
    return out;
}
