#pragma once
// The one source of chance of a simulation: a minimal standard congruential
// generator behind a 32-slot table. Every draw of a run comes from here, so the
// stream of a seed fixes the run.

#include <vector>

class InDataFile;
class OutDataFile;

class SeedGenerator
{
public:
    static constexpr int _multiplier = 16807;
    static constexpr int _modulus = 2147483647;
    static constexpr int _quotient = 127773; // _modulus / _multiplier
    static constexpr int _rest = 2836;       // _modulus % _multiplier
    static constexpr double _ratio = 0.0;
    static constexpr int _table_size = 32;
    static constexpr int _default_seed = 165426111;

    SeedGenerator();

    // Refills the table from the current seed, one step per slot.
    void init();
    // Restarts the stream from `seed`.
    void reset(int seed);
    // Advances the seed by one step and returns it.
    int update_seed();
    // Next output of the stream, in [1, _modulus - 1].
    int get_next();

    int getSeed() const { return _seed; }
    int getLast() const { return _last; }
    const std::vector<int>& getTable() const { return _table; }

    // Keys SEED, SHSEED, then SEED0 to SEED31. False when the file is in error.
    bool serialize(OutDataFile& file) const;
    // All keys must be present with reachable values; otherwise false and the
    // state is left as it was.
    bool deserialize(InDataFile& file);

    // One congruence step by Schrage's method, free of 32-bit overflow.
    static int step(int seed);

private:
    int _seed;
    int _last;
    std::vector<int> _table;
};
