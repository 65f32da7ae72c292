#pragma once
// A channel: a doubly linked chain of centerline points from upstream
// (`_first`) to downstream (`_last`) in the domain's relative coordinates,
// with the channel-wide hydraulic scalars, the section polynomial and the
// caches of the perturbation and meander measures. It owns its points.

#include "interface/iChannel.h"
#include "kernel/channel/ChannelPoint.h"
#include "kernel/common/Facies.h"
#include "kernel/domain/Flow.h"
#include "kernel/domain/iChannelImprint.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"

#include <list>
#include <string>
#include <utility>
#include <vector>

class Centerline;
class Domain;
class GridParams;
class MassBalance;
class MeanderCalculator;
class iChannelWell;
class iDomain;
class iTracer;
template <typename T> class Grid2D;

// -- migration and deposits --
// Where the sand plug of an abandoned reach lies.
enum AddPlug
{
    ADD_PLUG_UPSTREAM = -1,
    ADD_PLUG_NONE = 0,
    ADD_PLUG_DOWNSTREAM = 1
};
// -- end migration and deposits --

class Channel final : public iChannel, public iChannelImprint
{
public:
    // No points.
    explicit Channel(MeanderCalculator const* mc);
    // Scalars, wells and polynomial of `other`; its points too if `copy_points`.
    Channel(MeanderCalculator const* mc, const Channel& other, bool copy_points);
    // Scalars of `other`; adopts `cp` and the points that follow it.
    Channel(MeanderCalculator const* mc, const Channel& other, ChannelPoint* cp);
    // One point per position (at least two).
    Channel(MeanderCalculator const* mc, const std::vector<Point3D>& points);
    Channel(MeanderCalculator const* mc, const Channel& other, const std::vector<Point3D>& points);
    ~Channel() override;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    // iChannel
    double width() const override { return 2. * _half_width; }
    double slope() const override { return _slope; }
    double mean_elevation() const override;
    double max_elevation() const override { return _max_elevation; }
    double min_elevation() const override { return _min_elevation; }
    double mean_flow_velocity() const override { return _velocity; }
    double mean_velocity_perturbation() override;
    double mean_depth() const override { return _hmean; }
    int number_of_points() const override { return _nb_cp; }
    ChannelPoint* get_point(int idx) const override;
    void max_depth_limits(double& lo, double& hi) const override;

    // Channel-wide fields.
    double half_width() const { return _half_width; }
    double wavelength() const { return _wavelength; }
    double cf() const { return _cf; }
    double flow0() const { return _flow0; }
    double hmean0() const { return _hmean0; }
    double velocity0() const { return _velocity0; }
    unsigned int birth_iter() const { return _birth_iter; }
    void birth_iter(unsigned int iter) { _birth_iter = iter; }
    MeanderCalculator const* mc() const { return _mc; }
    iTracer* tracer() const { return _tracer; }
    const double* poly() const { return _poly; }

    // Chain.
    ChannelPoint* first() const { return _first; }
    ChannelPoint* last() const { return _last; }
    ChannelPoint* next_point(ChannelPoint* cp) { return cp->next(); }
    const ChannelPoint* next_point(const ChannelPoint* cp) const { return cp->next(); }
    ChannelPoint* previous_point(ChannelPoint* cp) { return cp->prev(); }
    const ChannelPoint* previous_point(const ChannelPoint* cp) const { return cp->prev(); }
    // Position counted from 1 at `_first` (or at `a`); 0 when not reached.
    int index(const ChannelPoint* cp) const;
    int index(const ChannelPoint* a, const ChannelPoint* b) const;
    // On an empty channel: clones `cp` and its followers, or adopts them.
    void init_path(ChannelPoint* cp, bool copy);
    // Replaces the chain by a copy of `cp` and its followers.
    void set_new_path(ChannelPoint* cp);
    void delete_path();
    // Unlinks and deletes a, ..., b inclusive.
    void delete_between(ChannelPoint* a, ChannelPoint* b);
    void delete_from(ChannelPoint* a);
    // Takes over the points of `c`, which is left with null ends.
    void append(Channel* c);
    // Links `cp` and its followers after `_last`.
    void append(ChannelPoint* cp);
    void prepend(Channel* c);
    void prepend(ChannelPoint* cp);
    // Splits before `cp` and returns the downstream part: a new channel the
    // caller owns, or, when `cp` is the first point, this channel unchanged,
    // which the caller must not delete (see owns_tail).
    Channel* divide(ChannelPoint* cp);
    // Whether `tail`, an answer of this channel's divide, is the caller's to delete.
    bool owns_tail(const Channel* tail) const { return tail != this; }

    // Queries.
    double mean_maximum_flow_depth() const;
    void shift_elevation(double d);
    Point2D left_bank_2D(const ChannelPoint* cp) const;
    Point2D right_bank_2D(const ChannelPoint* cp) const;
    // Sign of (p - a) x (b - a): 1, 0 or -1.
    static int get_side(const Point2D& a, const Point2D& b, const Point2D& p);
    // For each entry of `points`, keeps in `out` the nearest channel point and
    // its plane distance when nearer than what `out` holds already.
    void find_nearest(const std::vector<Point2D>& points,
                      std::vector<std::pair<double, ChannelPoint*>>& out) const;
    void calculate_y_bounds(double& lo, double& hi) const;
    void get_bounding_box(Point2D& min, Point2D& max) const;
    void update_bounding_box();
    void update_min_max_elevations();
    // Forgets the perturbation mean and the meander measures.
    void reset_caches();
    void vertices(std::vector<double>& v) const;
    void velocity_perturbations(std::vector<double>& v) const;
    void border_vertices_2D(std::vector<Point2D>& out) const;
    void border_vertices_2D(std::vector<double>& out) const;
    // Bank vertices x, y, z of every n-th point (and of `_last`), z being the
    // point's elevation plus `z`.
    void border_vertices_3D(int n, std::vector<double>& out, double z) const;

    // Conditioning wells (not owned).
    void add_well(iChannelWell* w);
    void erase_well(iChannelWell* w);
    void clear_wells() { _wells.clear(); }
    int get_nb_well() const { return static_cast<int>(_wells.size()); }
    const std::vector<iChannelWell*>& get_wells() const { return _wells; }
    void update_well_config();

    // True at the iterations of the sinuosity schedule counted from birth.
    bool sinuo_occurs(unsigned int iter, const Domain* domain) const;

    // Spacing report; false only for an absurd channel.
    bool check_centerline(std::string& report) const;
    std::string trace(const std::string& title, bool all_points) const;

    // Exchange form: geographic positions, elevation as z.
    void to_centerline(const GridParams& geom, Centerline& centerline) const;
    // Relative positions of a centerline's points, their z kept (1e30 when none).
    static void from_centerline(const Centerline& centerline, const GridParams& geom,
                                std::vector<Point3D>& points);

    // Spacing, abscissae and normals.
    void init_geom(double hmax, double width, double wavelength, double slope);
    void discretization();
    void discretize_segment(const std::vector<double>& proportions, ChannelPoint* cp, ChannelPoint*& next,
                            double& ds);

    // -- flow and grain size --
    void compute_velocity_perturbation() override;
    double compute_real_sinuosity(bool use_domain, iDomain const* domain) override;
    double compute_real_sinuosity_allen() override;
    double compute_real_tortuosity(bool use_domain, iDomain const* domain) override;
    double compute_real_wavelength() override;
    double compute_sand_body_extension() override;
    void curvatures(int n);
    void velocity_perturbations();
    void init_flow();
    void update_flow_sinuosity();
    void update_channel_point_flow(ChannelPoint* cp);
    void update_all_channel_point_flow();
    void update_flow_local_sinuosity();
    ChannelPoint* find_channel_point_at(ChannelPoint* cp, double distance) const;
    double compute_real_sinuosity_from_to(bool use_direction, const ChannelPoint* a,
                                          const ChannelPoint* b) const;
    double compute_meander_segments_length(int& count) const;
    // (U1, point) at each strict local extremum of U1, upstream to downstream.
    void maximum_velocity_perturbation_loci(std::list<std::pair<double, ChannelPoint*>>& list) const;
    void get_grainsize_profile(const Flow& flow, double curvature, int side, double a, double b,
                               double percent, std::vector<double>& grains,
                               std::vector<double>& heights) const override;
    void get_grainsize_profile_optim(const Flow& flow, double curvature, int side, double a, double b,
                                     double hflow, std::vector<double>& grains,
                                     std::vector<double>& heights) const override;
    void get_grainsize_profile_proxy(const Flow& flow, double a, double b, std::vector<double>& grains,
                                     std::vector<double>& heights) const override;
    // -- end flow and grain size --

    // -- migration and deposits --
    void migrate(Domain* domain, double dt);
    void migrate_conditioning(Domain* domain, double dt);
    void migrate_all_points(Domain* domain, double dt);
    void migrate_free(double factor);
    void smooth_elevations();
    void project_wells(Domain* domain);
    void keep_one_well_by_meander();
    void propagate_status();
    void apply_tecto(Domain* domain, double steps);
    static double norm_proj(const Point2D& p, const Point2D& a, const Point2D& b);
    // Seconds in a step of `years`, the product being formed in 32-bit unsigned arithmetic.
    static double migration_time_step(unsigned int years);
    // Bilinear mixes of four nodes around `p` (relative frame); 0 without a domain.
    static double bilinear_erodibility_ratio(const Domain* domain, const Point2D& p);
    static double bilinear_elevation(const Domain* domain, const Point2D& p);

    void polynomial_4_cross_section_calculate_coefficients();
    double polynomial_4_cross_section_depth(double curvature, double n) const;
    double maximum_polynomial_4_cross_section_depth(const ChannelPoint* cp) const;
    double cross_section_depth_old(double n, double h) const;
    double cross_section_elevation(const Domain* domain, int ix, int iy, const ChannelPoint* cp1,
                                   const ChannelPoint* cp2, double& depth) const;
    double norm_proj_new(const Point2D& p, const ChannelPoint* a, const ChannelPoint* b) const;
    double get_elevation_at_point(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const;
    double get_bed_elevation_at_point(const Point2D& p, const ChannelPoint* cp1,
                                      const ChannelPoint* cp2) const;
    double get_curvature_at_point(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const;
    Flow get_flow_at_point(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const;
    int point_at_outer_side(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const;
    void find_grid_points_for_section(const ChannelPoint* cp1, const ChannelPoint* cp2,
                                      const GridParams& geom, std::vector<std::pair<int, int>>& cells) const;
    void find_grid_points(const GridParams& geom, std::vector<ChannelGridPoint>& out) const override;
    void find_grid_points_new(const GridParams& geom, std::vector<ChannelGridPoint>& out) const;
    // Everything find_grid_points reads, in `out`: two equal records (bit for
    // bit) give the same grid points.
    void grid_points_inputs(const GridParams& geom, std::vector<double>& out) const;
    void put_route_on_grid(Grid2D<std::pair<ChannelPoint*, ChannelPoint*>>& grid) const;
    void section_vertices_2D(std::vector<double>& out) const;

    // `cells`: the nodes under the section, as find_grid_points_for_section gives them.
    void update_section(Domain* domain, MassBalance* mb, const ChannelPoint* cp1, const ChannelPoint* cp2,
                        unsigned int age, Facies facies, bool erode, double limit,
                        const std::vector<std::pair<int, int>>& cells);
    // What every section of a variable-grain pass reads and reuses.
    struct VariableGrainPass;
    void update_section_new(Domain* domain, MassBalance* mb, const ChannelPoint* cp1, const ChannelPoint* cp2,
                            unsigned int age, Facies facies, bool erode,
                            const std::vector<std::pair<int, int>>& cells, VariableGrainPass& pass);
    // The channel's sections laid from upstream: point bar or lag.
    void lay_sections(Domain* domain, MassBalance* mb, unsigned int age, Facies facies, bool erode);
    void make_point_bar(Domain* domain, MassBalance* mb, unsigned int age, bool erode);
    void make_channel_lag(Domain* domain, MassBalance* mb, unsigned int age);
    void make_ghost_migration(Domain* domain, MassBalance* mb, unsigned int age, double thickness);

    void fill_section(Domain* domain, MassBalance* mb, const ChannelPoint* cp1, const ChannelPoint* cp2,
                      double fraction, unsigned int age);
    void fill_channel(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b, unsigned int age,
                      double decay);
    void fill_channel_new(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b, unsigned int age,
                          AddPlug plug);
    void fill_oxbow(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b, unsigned int age,
                    double decay);
    void fill_oxbow_new(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b, unsigned int age);
    void dry_section(Domain* domain, const ChannelPoint* cp1, const ChannelPoint* cp2);
    void dry_channel(Domain* domain, ChannelPoint* a, ChannelPoint* b);
    void abandon(Domain* domain, MassBalance* mb, unsigned int age, AddPlug plug, double decay);
    void abandon_between(ChannelPoint* a, ChannelPoint* b, Domain* domain, MassBalance* mb, unsigned int age,
                         double decay);
    void abandon_from(ChannelPoint* cp, Domain* domain, MassBalance* mb, unsigned int age, double decay);
    void move_section_down(Domain* domain, MassBalance* mb, const ChannelPoint* cp1, const ChannelPoint* cp2,
                           double d);
    void move_channel_down(Domain* domain, MassBalance* mb, double depth);
    // -- end migration and deposits --

    // -- network support --
    // Trims or slides the two ends onto the reference lines across the flow (fx, fy).
    bool constrain_extremities(const Point2D& up_ref, const Point2D& down_ref, double fx, double fy);
    // Every point with its elevation and its distance to the equilibrium elevation `ep`.
    void abs_elevation_to_ep(double ep,
                             std::vector<std::pair<ChannelPoint*, std::pair<double, double>>>& list) const;
    // -- end network support --

private:
    // The nodes under the section from cp1 to cp2, the k-th of the chain, kept
    // from the last call for that k and found again only when its corners or
    // the grid have changed: the point-bar pass and the wet-cell pass of an
    // iteration, and the next migration, ask for the same nodes.
    const std::vector<std::pair<int, int>>& section_nodes(std::size_t k, const ChannelPoint* cp1,
                                                          const ChannelPoint* cp2,
                                                          const GridParams& geom) const;
    void collect_grid_points(const GridParams& geom, std::vector<ChannelGridPoint>& out, bool full) const;
    // The head of the grid points' record, eight values: calculator, half width and grid.
    void head_inputs(const GridParams& geom, double* values) const;
    void init_scalars(const Channel& other);
    void init_points(const std::vector<Point3D>& points);
    // Rejects a chain too short to be a channel.
    void check_three_points() const;

    double _half_width;
    double _wavelength;
    double _cf;
    double _velocity;
    double _hmean;
    double _slope;
    double _flow0;
    double _hmean0;
    double _velocity0;
    unsigned int _birth_iter;
    double _mean_u1;
    double _segments_length;
    int _nb_segments;
    ChannelPoint* _first;
    ChannelPoint* _last;
    int _nb_cp;
    Point2D _bbox_min;
    Point2D _bbox_max;
    double _min_elevation;
    double _max_elevation;
    std::vector<iChannelWell*> _wells;
    MeanderCalculator const* _mc;
    iTracer* _tracer;
    double _poly[5];

    struct SectionNodes
    {
        // The corners' coordinates, then the grid's origin, mesh and size.
        static constexpr int KEY_SIZE = 14;
        double key[KEY_SIZE] = {};
        bool known = false;
        std::vector<std::pair<int, int>> nodes;
    };
    mutable std::vector<SectionNodes> _section_nodes;
};
