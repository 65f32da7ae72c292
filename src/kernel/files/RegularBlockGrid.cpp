#include "kernel/files/RegularBlockGrid.h"

#include "kernel/common/Facies.h"
#include "kernel/geometry/RegularBlock.h"

RegularBlockGrid::RegularBlockGrid(const RegularBlock& block, bool facies, bool grain, bool age,
                                   const std::string& undefined)
    : _block(block)
{
    // The geometry alone: the values stay in the block.
    GridParams::reset(block.geometry);
    setUndefinedText(undefined);
    if (facies)
        _columns.push_back(FACIES);
    if (grain && block.grain.size() == block.size())
        _columns.push_back(GRAIN);
    if (age && block.age.size() == block.size())
        _columns.push_back(AGE);
}

void RegularBlockGrid::append_node_line(std::string& text, int i, int j, int k) const
{
    const size_t n = _block.index(i, j, k);
    const bool is_void = _block.is_void(n);
    for (size_t c = 0; c < _columns.size(); ++c)
    {
        if (c > 0)
            text += ' ';
        if (is_void)
            text += getUndefinedText();
        else if (_columns[c] == FACIES)
            append_number(text, static_cast<double>(Facies::family(_block.facies[n])));
        else if (_columns[c] == GRAIN)
            append_number(text, _block.grain[n]);
        else
            append_number(text, static_cast<double>(_block.age[n]));
    }
    text += '\n';
}

std::vector<std::pair<std::string, std::string>> RegularBlockGrid::columns() const
{
    static const char* const NAMES[] = {"Facies", "Grain Size", "Age"};
    std::vector<std::pair<std::string, std::string>> out;
    for (Column column : _columns)
        out.emplace_back(NAMES[column], getUndefinedText());
    return out;
}
