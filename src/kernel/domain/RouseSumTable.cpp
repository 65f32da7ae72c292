#include "kernel/domain/RouseSumTable.h"

#include "kernel/common/Assert.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace
{

// Range of the table in ln r: r from 1e-5 (silt under a fast flow) to 200
// (gravel in still water); outside it the sum is direct.
constexpr double LN_R_MIN = -11.512925464970229;
constexpr double LN_R_MAX = 5.298317366548036;
constexpr double NODES_PER_UNIT = 64.;
constexpr int NODE_COUNT = static_cast<int>((LN_R_MAX - LN_R_MIN) * NODES_PER_UNIT) + 2;
// Depths kept in the cache.
constexpr std::size_t CACHED_DEPTHS = 8;

struct CachedDepth
{
    double h;
    std::unique_ptr<RouseSumTable> table;
};

} // namespace

RouseSumTable::RouseSumTable(std::vector<double> log_factors)
    : _log_factors(std::move(log_factors)), _max_log_factor(0.),
      _value(NODE_COUNT, std::numeric_limits<double>::quiet_NaN()), _slope(NODE_COUNT, 0.)
{
    MP_ASSERT(!_log_factors.empty());
    _max_log_factor = *std::max_element(_log_factors.begin(), _log_factors.end());
}

double RouseSumTable::log_sum_direct(double r) const
{
    // exp(r ln x_k) with the largest term factored out, so that no term underflows.
    const double m = r * _max_log_factor;
    double sum = 0.;
    for (double l : _log_factors)
        sum += std::exp(r * l - m);
    return m + std::log(sum);
}

// A node holds ln F - r max ln x_k, bounded by 0 and ln of the sample count,
// and its derivative in s = ln r; the term in r, which grows exponentially
// in s, is added exactly at the query.
void RouseSumTable::compute_node(int n)
{
    const double r = std::exp(LN_R_MIN + n / NODES_PER_UNIT);
    const double m = r * _max_log_factor;
    double sum = 0.;
    double moment = 0.;
    for (double l : _log_factors)
    {
        const double e = std::exp(r * l - m);
        sum += e;
        moment += l * e;
    }
    _value[n] = std::log(sum);
    _slope[n] = r * (moment / sum - _max_log_factor);
}

double RouseSumTable::log_sum(double r)
{
    if (!(r > 0.))
        return log_sum_direct(r);
    const double s = (std::log(r) - LN_R_MIN) * NODES_PER_UNIT;
    if (!(s >= 0.) || s >= NODE_COUNT - 1)
        return log_sum_direct(r);
    const int n = static_cast<int>(s);
    if (std::isnan(_value[n]))
        compute_node(n);
    if (std::isnan(_value[n + 1]))
        compute_node(n + 1);
    // Cubic Hermite on [n, n + 1], slopes scaled to the node spacing.
    const double t = s - n;
    const double t2 = t * t;
    const double t3 = t2 * t;
    const double step = 1. / NODES_PER_UNIT;
    return r * _max_log_factor + (2. * t3 - 3. * t2 + 1.) * _value[n] +
           (t3 - 2. * t2 + t) * step * _slope[n] + (-2. * t3 + 3. * t2) * _value[n + 1] +
           (t3 - t2) * step * _slope[n + 1];
}

RouseSumTable& RouseSumTable::for_depth(double h, std::vector<double> (*log_factors)(double))
{
    // One cache per thread: each simulator runs on one thread, and a table
    // depends on its depth alone, so sharing it between runs changes nothing.
    thread_local std::vector<CachedDepth> cache;
    thread_local std::size_t next = 0;
    for (CachedDepth& c : cache)
        if (c.h == h)
            return *c.table;
    auto table = std::make_unique<RouseSumTable>(log_factors(h));
    if (cache.size() < CACHED_DEPTHS)
    {
        cache.push_back({h, std::move(table)});
        return *cache.back().table;
    }
    CachedDepth& slot = cache[next];
    next = (next + 1) % CACHED_DEPTHS;
    slot = {h, std::move(table)};
    return *slot.table;
}
