#pragma once
// The sum over the sample heights of one flow depth of the Rouse factors
// x_k^r, as a function of the Rouse exponent r, for the normalisation of the
// reference concentrations. Its logarithm, less its largest term
// r max ln x_k, is a smooth and bounded function of ln r, so it is
// interpolated (cubic Hermite, nodes 1/64 apart in ln r) instead of summed at
// every grid node: the relative error on the sum stays below 2e-9. Nodes are
// computed when first needed, and each is a function of the depth's factors
// alone, so results do not depend on the order of the queries.

#include <vector>

class RouseSumTable
{
public:
    // `log_factors`: ln x_k at each sample height, all finite.
    explicit RouseSumTable(std::vector<double> log_factors);

    // ln of sum_k exp(r ln x_k); r outside the table is summed directly.
    double log_sum(double r);
    // The same, always summed directly.
    double log_sum_direct(double r) const;
    const std::vector<double>& log_factors() const { return _log_factors; }

    // The table of depth h, from a small cache of the depths last used (a run
    // keeps the same few depths for long); `log_factors` makes the factors of
    // a depth missing from the cache.
    static RouseSumTable& for_depth(double h, std::vector<double> (*log_factors)(double));

private:
    void compute_node(int n);

    std::vector<double> _log_factors; // ln x_k, by sample height
    double _max_log_factor;           // the largest ln x_k, to sum without underflow
    std::vector<double> _value;       // ln sum at each node, NaN until computed
    std::vector<double> _slope;       // its derivative in ln r
};
