#include "kernel/parameters/SeedGenerator.h"

#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include <string>

namespace
{
const char* const KEY_SEED = "SEED";
const char* const KEY_LAST = "SHSEED";

std::string slot_key(int index)
{
    return KEY_SEED + std::to_string(index);
}

// Every state the congruence can reach after a filling lies in [0, modulus - 1].
bool reachable(int value)
{
    return value >= 0 && value < SeedGenerator::_modulus;
}
} // namespace

SeedGenerator::SeedGenerator() : _seed(_default_seed), _last(_default_seed), _table(_table_size, 0)
{
    update_seed();
    init();
}

int SeedGenerator::step(int seed)
{
    const int k = seed / _quotient;
    int next = _multiplier * (seed - k * _quotient) - _rest * k;
    if (next < 0)
        next += _modulus;
    return next;
}

void SeedGenerator::init()
{
    for (int& slot : _table)
        slot = update_seed();
    _last = _table[0];
}

void SeedGenerator::reset(int seed)
{
    _seed = seed;
    init();
}

int SeedGenerator::update_seed()
{
    _seed = step(_seed);
    return _seed;
}

int SeedGenerator::get_next()
{
    const int j = static_cast<int>(_last * _ratio);
    _last = _table[j];
    _table[j] = update_seed();
    return _last;
}

bool SeedGenerator::serialize(OutDataFile& file) const
{
    file.key_value(KEY_SEED, _seed);
    file.key_value(KEY_LAST, _last);
    for (int i = 0; i < _table_size; ++i)
        file.key_value(slot_key(i), _table[i]);
    return !file.fail();
}

bool SeedGenerator::deserialize(InDataFile& file)
{
    int seed = 0;
    int last = 0;
    if (!file.get_key_value(KEY_SEED, seed) || !file.get_key_value(KEY_LAST, last) || !reachable(seed) ||
        !reachable(last))
        return false;
    std::vector<int> table(_table_size, 0);
    for (int i = 0; i < _table_size; ++i)
    {
        if (!file.get_key_value(slot_key(i), table[i]) || !reachable(table[i]))
            return false;
    }
    _seed = seed;
    _last = last;
    _table = table;
    return true;
}
