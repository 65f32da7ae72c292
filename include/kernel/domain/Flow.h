#pragma once
// Local state of the flow at one centerline point: depth, velocities, the
// coefficients of the near-bank velocity perturbation equation, and the
// sediment load carried, by grain-size class.

#include "kernel/parameters/Grainsize.h"

#include <memory>
#include <string>
#include <vector>

class MeanderCalculator;
class RouseSumTable;
class iTracer;

class Flow
{
public:
    explicit Flow(MeanderCalculator const* mc);
    Flow(MeanderCalculator const* mc, const Flow& other);
    Flow(const Flow& other) = default;
    Flow& operator=(const Flow& other);
    virtual ~Flow() = default;

    // Interpolation along a segment: depths, velocities and concentration
    // combine, the other fields are those of the first operand.
    friend Flow operator+(const Flow& a, const Flow& b);
    friend Flow operator*(const Flow& f, double k);
    friend Flow operator/(const Flow& f, double k);
    // a * ka + b * kb field by field, as the operators compute it, with a
    // single copy: the other members come from a.
    static Flow weighted_sum(const Flow& a, double ka, const Flow& b, double kb);
    // The same into this flow, reusing its storage.
    void assign_weighted_sum(const Flow& a, double ka, const Flow& b, double kb);

    void init_flow(double width, double hmean, double u0, double u1, double cf,
                   const std::vector<double>& proportions);
    void update_flow(double width, double hmean, double u0, double curvature);
    void superelevation(double curvature);
    void cmp_pde_parameters();
    void cmp_superelevation_generator();
    double overspill_thickness(double top, double base, int side, double n) const;
    double cmp_bed_shear_velocity(int side) const;
    void cmp_skin_friction();
    double get_effective_height() const;

    // Sediment load and grain size.
    void init_sed_load(const std::vector<double>& proportions);
    double cmp_c0(const Grainsize& grainsize, int side) const;
    double cmp_c0_quick(const Grainsize& grainsize, int side) const;
    void cmp_c0(int side, bool quick);
    // ln of the Rouse height factors sampled over a depth h (>= 0.01 m) by
    // the normalisation of the reference concentrations.
    static std::vector<double> c0_log_factors(double h);
    double rouse_profile_at(const Grainsize& grainsize, double z, double c0, double ustar) const;
    double flow_percent_grainsize_at(double z, double percent, int side) const;
    void discretized_grainsize_profile(double a, double b, std::vector<double>& grains,
                                       std::vector<double>& heights, double percent, int side,
                                       iTracer* tracer) const;
    void discretized_grainsize_profile_optim(double a, double b, std::vector<double>& grains,
                                             std::vector<double>& heights, double curvature,
                                             iTracer* tracer) const;

    // "u0= ... hmean= ... u1= ..."
    std::string get_string_descr() const;

    double width() const { return _width; }
    double hmean() const { return _hmean; }
    double hflow_max() const { return _hflow_max; }
    double se_gen() const { return _se_gen; }
    double superelevation() const { return _superelevation; }
    double u0() const { return _u0; }
    double u1() const { return _u1; }
    void u1(double value) { _u1 = value; }
    double cmean() const { return _cmean; }
    double cf() const { return _cf; }
    double skin_friction() const { return _skin_friction; }
    double pde_a() const { return _pde_a; }
    double pde_b() const { return _pde_b; }
    double pde_c() const { return _pde_c; }
    double pde_d() const { return _pde_d; }
    const std::vector<Grainsize>& sed_load() const { return _sed_load != nullptr ? *_sed_load : no_load(); }
    const std::vector<double>& c0() const { return _c0; }
    MeanderCalculator const* mc() const { return _mc; }

private:
    // The load of a flow never given one.
    static const std::vector<Grainsize>& no_load();
    RouseSumTable* rouse_sum_table() const;
    double cmp_c0(const Grainsize& grainsize, double ustar, RouseSumTable* table, double concentration) const;

    bool turbidite() const;

    double _width;
    double _hmean;
    double _hflow_max;
    double _se_gen;
    double _superelevation;
    double _u0;
    double _u1;
    double _cmean;
    double _cf;
    double _skin_friction;
    double _pde_a;
    double _pde_b;
    double _pde_c;
    double _pde_d;
    // Shared between copies: a flow is copied onto every grid node the channel
    // covers, and its load of grain-size classes is set once, at its start.
    std::shared_ptr<const std::vector<Grainsize>> _sed_load;
    std::vector<double> _c0;
    MeanderCalculator const* _mc;
};
