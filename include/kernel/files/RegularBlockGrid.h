#pragma once
// A sampled block written through the grid writers as it stands: each node's
// facies, grain size and age are read from the block while its line is
// written, so the block is never copied into grids of doubles (three of them
// would hold twice the block and more).

#include "kernel/files/GridReal.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

class RegularBlock;

class RegularBlockGrid : public GridReal
{
public:
    // The columns chosen are written in the order facies, grain size, age;
    // void samples write `undefined` in every column. The block must outlive this.
    RegularBlockGrid(const RegularBlock& block, bool facies, bool grain, bool age,
                     const std::string& undefined);

    bool has_columns() const { return !_columns.empty(); }

protected:
    void append_node_line(std::string& text, int i, int j, int k) const override;
    std::vector<std::pair<std::string, std::string>> columns() const override;

private:
    enum Column
    {
        FACIES,
        GRAIN,
        AGE
    };

    // The grain size's text, from the last one written when it is the same
    // value: a block holds a handful of grain sizes.
    char* put_grain(char* out, double grain) const;

    // Lines ahead whose samples are fetched early.
    static constexpr std::ptrdiff_t MP_LINES_AHEAD = 16;
    void prefetch_ahead(size_t n) const;

    const RegularBlock& _block;
    std::vector<Column> _columns;
    bool _hasGrain = false;
    bool _hasAge = false;
    // The sample of the last line written.
    mutable size_t _lastNode = 0;
    mutable double _grain = 0.;
    mutable char _grainText[MP_NUMBER_CHARS] = {};
    // 0 before the first grain size is written.
    mutable int _grainLength = 0;
};
