#pragma once
// Closure relations of the channel: how depth, width, wavelength, velocity and
// friction follow from each other, and the defaults of each, for fluvial and
// for turbidite systems.

#include <string>
#include <vector>

class iParameters;
class iTracer;
class CoreList;

class MeanderCalculator
{
public:
    MeanderCalculator(iParameters const* parameters, iTracer* tracer);

    iParameters const* parameters() const { return _params; }
    iTracer* tracer() const { return _tracer; }

    // Defaults read from the registry.
    double default_hmax() const;
    double default_erod_coef() const;
    double max_erod_coef() const;
    double global_concentration() const;
    double default_wavelength() const;
    double default_levee_width() const;
    double default_slope() const;

    // Factors of the system type.
    double default_d2w_factor() const;
    double default_w2wl_factor() const;
    double default_w2lob_factor() const;
    double default_kob() const;
    double default_kmig() const;
    double default_kvp() const;
    double default_tau_cut() const;
    double default_sinuo(bool flag) const;

    // Depth and width.
    static double hmax_from_hmean(double hmean);
    static double hmean_from_hmax(double hmax);
    double hflow_max_from_hmax(double hmax) const;
    double hflow_eff_from_hflow_max(double hflow_max) const;
    double hflow_max_from_hflow_eff(double hflow_eff) const;
    double hfloweff_from_hmean(double hmean) const;
    double width_from_hmean(double hmean) const;
    double hmean_from_width(double width) const;
    double hmax_from_width(double width) const;
    double mesh_from_width(double width) const;
    double wavelength_from_width(double width) const;
    double lambda_from_width(double width) const;
    double iob_from_hmean(double hmean) const;
    static double ios_from_iob(double iob);
    double hmean_from_hmean0_and_sinuosity(double hmean0, double sinuosity) const;
    double velocity_from_velocity0_and_sinuosity(double velocity0, double sinuosity) const;

    // Directions, in radians relative to the grid, in degrees absolute.
    static double relative_flow_direction(double grid_direction, double flow_direction);
    static double absolute_flow_direction(double grid_direction, double relative_direction);

    static double erod_year(double erod_coef);
    static double channel_slope(double slope, double sinuosity);

    // Flow.
    double beta_prime() const;
    double cf_from_hmean_and_wavelength(double hmean, double wavelength) const;
    double velocity_from_hmean_and_cf(double hmean, double cf, double slope, double sinuosity) const;
    double froude_from_hmean_and_velocity(double hmean, double velocity, double concentration) const;
    double flow_discharge_from_width_hmean_and_velocity(double width, double hmean, double velocity) const;
    double flow_from_width_hmean_and_velocity(double width, double hmean, double velocity) const;
    void compute_pde_parameters(double width, double hmean, double velocity, double cf, double concentration,
                                double& a, double& b, double& d, double& e) const;
    double erod_from_wavelength(double wavelength) const;

    // Depth of the parabolic section at signed distance n from the axis.
    static double parabolic_cross_section_depth(double n, double width, double hmean);

    // 0 when consistent, 5 with warnings, 6 when a rule is broken; the
    // items are left in _msg.
    int check_consistency() const;

    // Forecasts of what a run obtains with the registry as it stands:
    // velocities in m/s, rates in metres per 10000 iterations, the sand
    // proportion as a fraction, the sand bodies extension index (ISBX).
    double forecast_velocity() const;
    double forecast_mean_velocity_perturbation() const;
    double forecast_migration_rate() const;
    double forecast_aggradation_rate() const;
    // Mean thickness of channel sands laid per 10000 iterations over the domain.
    double forecast_sand_rate() const;
    double forecast_sand_proportion() const;
    double forecast_isbx() const;
    // Mean thickness of mud laid in abandoned channels per 10000 iterations over the domain.
    double forecast_plug_rate() const;
    // Channel widths the channel migrates between two regional avulsions
    // (clamped to [MIN_WIDTHS, MAX_WIDTHS]; MAX_WIDTHS without avulsions).
    double widths_between_avulsions() const;
    // The base each forecast coefficient multiplies (so that a measure
    // divided by its base is the observed coefficient).
    double velocity_perturbation_base() const;
    double migration_base(double mean_velocity_perturbation) const;
    double overbank_base() const;
    // Channel depth times migration rate over the extent across the flow:
    // what the channel sands and the abandoned channels are fitted on.
    double sweep_base() const;
    // Share of the flood base rate that stays in the deposits.
    double overbank_factor() const;
    // (depth / default depth)^Ed: the fines per sand of a channel of this depth.
    double fines_depth_factor() const;
    // Extent of the domain across the flow, in metres.
    double transverse_extent() const;
    // The fitted coefficients of the forecasts.
    static double kvp_fitted();
    static double kmig_fitted();
    // Share of the point bars in the channel sands.
    static double kpb_fitted();

    // Typical ISBX and net to gross (fraction) of a system whose sediment
    // median is grain size class `gr` (clamped to the valid classes).
    static double default_isbx(int gr);
    static double default_sand(int gr);

    // Non-expert inference. `nexus` holds the channel maximum depth, the ISBX
    // and the net to gross (fraction), 1e30 where not given. False with the
    // list of refused values in `message`, the registry untouched.
    static bool apply_nexus(iParameters* parameters, iTracer* tracer, const std::vector<double>& nexus,
                            bool adaptGrid, std::string& message);
    // The same targets reached by the event periods only (and the grid).
    static bool apply_neqsus(iParameters* parameters, iTracer* tracer, const std::vector<double>& nexus,
                             bool adaptGrid, std::string& message);
    // The three inputs of the inference read from logs.
    static bool nexus_from_wells(iParameters const* parameters, const CoreList& cores,
                                 std::vector<double>& nexus, std::string& message);
    // Accepted ranges of the non-expert inputs besides the depth's registry range.
    static constexpr double MIN_ISBX = 1.;
    static constexpr double MAX_ISBX = 200.;
    static constexpr double MIN_SAND = 0.05;
    static constexpr double MAX_SAND = 0.95;
    // Net to gross that the lowest index asked below what the net to gross
    // allows may cost (fraction).
    static constexpr double SAND_GIVEN_FOR_ISBX = 0.05;
    // Range of widths migrated between avulsions the forecasts extrapolate to.
    static constexpr double MIN_WIDTHS = 0.05;
    static constexpr double MAX_WIDTHS = 200.;

    static std::string _msg;
    static bool _use_standard;

private:
    bool turbidite() const;
    double scour_factor() const;
    void error(const std::string& text) const;

    iParameters const* _params;
    iTracer* _tracer;
};
