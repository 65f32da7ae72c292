#pragma once
// How thick the bodies are that vertical logs cross: a body is a run of
// touching samples of one facies family (or of any sand family, for sand
// bodies). A log (a column of the block or a well) cuts each body it meets
// once, so the thicknesses seen are those of the bodies along the logs.
// Display-free: the desktop draws the counts, scripts read them.

#include "kernel/files/CoreSample.h"

#include <string>
#include <vector>

class Core;
class CoreList;

class CrossingHistogram
{
public:
    static constexpr int MP_NB_FAMILIES = CoreSample::MP_MAX_FACIES_ID + 1;
    // The kind of a sand body in `Body::family`: the sand families joined.
    static constexpr int MP_SAND_BODY = -1;

    struct Body
    {
        // A facies family, or MP_SAND_BODY.
        int family = 0;
        double bottom = 0.;
        double top = 0.;
        double thickness() const { return top - bottom; }
    };

    // The bodies a log crosses, from the top down. Family 0 (undefined) makes
    // no body but, like a gap in the log, ends the body above it.
    static std::vector<Body> bodies_of(const Core& log, bool sandsJoined);

    // Bodies of each facies family, by classes (k dz, (k + 1) dz] of
    // thickness; the last class also takes the thicker bodies. With `nz`
    // 0 or less, the classes reach the thickest body.
    static CrossingHistogram facies_crossing(const CoreList& logs, double dz, int nz);
    // Sand bodies (channel lag, point bar, sand plug and crevasse splay
    // together), classed alike, read cumulatively.
    static CrossingHistogram sand_crossing(const CoreList& logs, double dz, int nz);

    // No class and no kind.
    CrossingHistogram() = default;

    int classes() const { return _nz; }
    double step() const { return _dz; }
    // Bounds of class k: (lower, upper].
    double lower(int k) const { return k * _dz; }
    double upper(int k) const { return (k + 1) * _dz; }

    // The kinds counted: families 0 to 13 for facies crossings, one sand kind.
    int kinds() const { return static_cast<int>(_kinds.size()); }
    int family(int kind) const { return _kinds.at(static_cast<size_t>(kind)).family; }
    std::string kind_name(int kind) const;
    int count(int kind, int k) const;
    // Thickness of the bodies of class k, summed.
    double thickness(int kind, int k) const;
    int total_count(int kind) const;
    double total_thickness(int kind) const;
    // Share of the bodies of a kind in classes 0 to k, and the share of
    // their thickness; 0 without any body.
    double cumulative_count_share(int kind, int k) const;
    double cumulative_thickness_share(int kind, int k) const;

private:
    struct Kind
    {
        int family = 0;
        std::vector<int> counts;
        std::vector<double> thicknesses;
    };

    static CrossingHistogram build(const CoreList& logs, double dz, int nz, bool sandsJoined);
    int class_of(double thickness) const;
    const Kind& kind_at(int kind) const { return _kinds.at(static_cast<size_t>(kind)); }

    double _dz = 0.;
    int _nz = 0;
    std::vector<Kind> _kinds;
};
