#pragma once
// The channel system through its life: the network owns the current channel
// and keeps it consistent with the domain after every change (ends at the
// margins, cutoffs, flow, point bars), and hosts the events that replace,
// breach, raise or flood it.

#include "kernel/channel/Channel.h"
#include "kernel/channel/ChannelGrid.h"
#include "kernel/channel/CutOff.h"
#include "kernel/domain/SteepestError.h"
#include "kernel/geometry/Grid2D.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/network/EntryPoints.h"

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class Centerline;
class DepositionSet;
class Domain;
class MassBalance;
class MeanderCalculator;
class SeedGenerator;
class UniformDistributionGenerator;
class iParameters;
class iTracer;

// A route grid: per node, the channel segment (prev, cp) laid on it.
typedef Grid2D<std::pair<ChannelPoint*, ChannelPoint*>> RouteGrid;
// (U1, point) loci of the velocity perturbation.
typedef std::list<std::pair<double, ChannelPoint*>> LociList;

// -- events --
// One node of the temporary flood map.
struct AggradInfo
{
    // Floods thinner than this stop.
    static constexpr double min_th = 0.001;

    static bool comp(const AggradInfo& a, const AggradInfo& b) { return a.dch < b.dch; }

    // The arithmetic acts field by field on thdec, thmax, th, ratio, zmax, gr
    // and grdec only; /= leaves a field whose divisor is not positive.
    AggradInfo& operator+=(const AggradInfo& other);
    AggradInfo& operator*=(const AggradInfo& other);
    AggradInfo& operator/=(const AggradInfo& other);
    // Those seven fields and the status.
    void copy_deposit_info(const AggradInfo& other);
    // This record is the mean being built for a node (its z and dch are the
    // node's): offers the flood of `feeder`, a closer node, adding its values
    // to `sum` and their squares to this. False when the flood does not come.
    bool add(const AggradInfo& feeder, AggradInfo& sum);
    // Carries the flood a distance -delta (delta < 0) farther from the channel.
    void decrease(double delta);

    int i = 0;
    int j = 0;
    double z = 0.;
    double dch = 0.;
    double thdec = 0.;
    double thmax = 0.;
    double th = 0.;
    double ratio = 0.;
    // -1 not reached (no live neighbour fed it), -2 source (wet node), 0 computed.
    int status = -1;
    double zmax = 0.;
    double gr = 0.;
    double grdec = 1.;
};

// The vectors (|x|, |y|), x < width and y < height, of a grid of meshes
// dx, dy, ranked by their length: equal lengths share a rank.
struct FloodDistanceRanks
{
    double dx = 0.;
    double dy = 0.;
    std::size_t width = 0;
    std::size_t height = 0;
    // By pair, at y * width + x.
    std::vector<int> pair_rank;
    // By rank.
    std::vector<double> rank_distance;
};

// A channel point with its elevation and its distance to the equilibrium elevation.
struct AbsElevationInfo
{
    double elevation = 0.;
    double distance = 0.;
    ChannelPoint* point = nullptr;
};
// -- end events --

class Network
{
public:
    Network(MeanderCalculator* mc, iParameters* params, Domain* domain, SeedGenerator* seed, MassBalance* mb,
            UniformDistributionGenerator* uniform);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    // Margins, slope and entry points from the parameters; no channel is made.
    void init_network();
    // Back to a network without channel, counters or history.
    void clear();
    // Copy of `other`'s channel, counters and state (same domain geometry).
    void resetFrom(const Network& other);

    // --- Borrowed objects and state
    Domain* domain() const { return _domain; }
    MassBalance* mass_balance() const { return _mb; }
    iParameters* parameters() const { return _params; }
    iTracer* tracer() const { return _tracer; }
    MeanderCalculator* meander_calculator() const { return _mc; }
    SeedGenerator* seed_generator() const { return _seed; }
    unsigned int getAge() const { return _iteration; }
    void setAge(unsigned int age) { _iteration = age; }
    void incrementAge() { ++_iteration; }
    Channel* channel() const { return _ch; }
    Channel* ghost_channel() const { return _ghost; }
    bool has_channel() const { return _ch != nullptr; }
    bool erode() const { return _erode; }
    const ChannelGrid* channel_grid() const { return _cg.get(); }
    const std::vector<ChannelGridPoint>& grid_points() const { return _grid_points; }
    EntryPoints& entry_points() { return _entry_points; }

    // --- Channel lifecycle
    bool create_channel(std::string& message);
    bool load_centerline(const Centerline& centerline);
    // A course down and up the steepest slopes through `point`, given in the
    // geographic frame of the centerline files.
    bool load_centerline(const Point2D& point);
    bool get_centerline(Centerline& centerline) const;
    // Takes `channel` as the current channel, as it stands; the old one is deleted without deposit.
    void adopt_channel(Channel* channel);
    // Abandons the channel (filled, or dried) and deletes it.
    void clear_channel(AddPlug plug = ADD_PLUG_NONE);
    // Spacing, flow and cells of a channel just given its points; no deposit.
    void channel_just_created();
    // Spacing and flow again after the chain was rebuilt, then the step below.
    void channel_points_created();
    // After every change of points: ends, cutoffs, flow, point bars, wet cells.
    void channel_points_moved();
    void init_geom_and_flow(double hmax, double width, double wavelength, double slope);

    // --- Ends of the channel
    bool manage_extremities(Channel* channel);
    bool complete_upstream(Channel* channel);
    bool complete_downstream(Channel* channel);
    bool constrain_extremities(Channel* channel);

    // --- Updates from the parameters
    void update_channel();
    void update_margins();
    void update_slope_and_flow_direction();
    void update_flow_parameters();
    bool slope_changed() const;
    bool flow_dir_changed() const;
    bool margins_changed() const;

    // --- Channel scale
    void change_channel_scale(double factor);
    void restore_channel_scale();
    void update_scaled_params();

    // --- Channel measures
    double channel_current_sinuosity() const;
    double channel_current_max_depth() const;
    double channel_max_depth() const;
    double channel_width() const;
    void compute_velocity_perturbations();

    // --- Migration and imprint
    void migrate(unsigned int step);
    void migrate_conditioning(unsigned int step);
    void apply_tecto(int steps);
    double get_bilinear_erodibility_ratio(const Point2D& p) const;
    double get_bilinear_elevation(const Point2D& p) const;
    void collect_wet_cells();
    void update_domain();
    void compute_pseudo_topo();

    // --- Cutoffs
    void create_intersection_grid();
    bool check_intersections(Channel* channel, bool ghost);
    void connect(Channel* channel, ChannelPoint* new_points, LociList& loci, ChannelPoint* join);
    void trace_array(const LociList& list, const std::string& title) const;
    unsigned int nb_cutoffs() const { return _nb_cutoffs; }
    unsigned int nb_cutoffs_total() const { return _nb_cutoffs_total; }
    unsigned int nb_chute_cutoffs() const { return _nb_chute_cutoffs; }
    unsigned int nb_avulsions() const { return _nb_avulsions; }
    unsigned int nb_cutoffs_avuls() const { return _nb_cutoffs_avuls; }
    // Floods and crevasse splays since the start, for the report of a run.
    unsigned int nb_floods() const { return _nb_floods; }
    unsigned int nb_splays() const { return _nb_splays; }
    void count_splay() { ++_nb_splays; }
    void set_counters(unsigned int cutoffs, unsigned int chute, unsigned int avulsions,
                      unsigned int cutoffs_avuls, unsigned int cutoffs_total);
    // Forgets the first-cutoff record, so that the next cutoff writes it.
    void reset_first_cutoff();
    unsigned int first_cutoff_iter() const { return _first_cutoff_iter; }
    double first_cutoff_time() const { return _first_cutoff_time; }
    double first_cutoff_sinuosity() const { return _first_cutoff_sinuosity; }
    double first_cutoff_allen() const { return _first_cutoff_allen; }
    double first_cutoff_tortuosity() const { return _first_cutoff_tortuosity; }
    double first_cutoff_wavelength() const { return _first_cutoff_wavelength; }
    double first_cutoff_extension() const { return _first_cutoff_extension; }
    void set_first_cutoff(unsigned int iter, double time, double sinuosity, double allen, double tortuosity,
                          double wavelength, double extension);
    // Sum of the iterations between successive avulsions.
    unsigned int avulsion_iter_sum() const { return _avulsion_iter_sum; }
    void avulsion_iter_sum(unsigned int sum) { _avulsion_iter_sum = sum; }
    unsigned int last_avulsion_iter() const { return _last_avulsion_iter; }
    void last_avulsion_iter(unsigned int iter) { _last_avulsion_iter = iter; }
    unsigned int last_flood_iter() const { return _last_flood_iter; }
    void last_flood_iter(unsigned int iter) { _last_flood_iter = iter; }

    // --- Trace
    // "Iteration <age> : <text>" at info level.
    void printout(const std::string& text) const;

    // -- course finding --
    bool construct_steepest_channel();
    // Head of a new chain grown from `from` (relative frame) over the grid
    // nodes starting at `to` then `direction` (grid indices), or null with
    // `error` set.
    ChannelPoint* find_new_course(const Point2D& from, const Point2D& to, const Point2D& direction,
                                  ChannelPoint*& join, SteepestError& error, RouteGrid* route,
                                  Channel* channel, bool upward);
    // -- end course finding --

    // -- events --
    bool regional_avulsion(double scale);
    void local_avulsion(bool no_splay, double p_splay2, double p_distrib, bool forced);
    void make_overbank(double extension, double grdec, double gr, double h0, bool rand);
    double next_extension(double extension, bool rand);
    void make_pel_drap(double interval);
    void make_draping(double thickness, int family);
    void make_wetland(double fraction);
    // The map of a flood, over the domain, its margins in x and the rows the
    // channel reaches beyond it in y, and the wet nodes of the channel on it.
    void create_aggrad_map(int& ny_below, std::vector<ChannelGridPoint>& points);
    // Spreads the flood from the source records (status -2) of the map over
    // the nodes it reaches, and lays it on the domain.
    void compute_aggrad_map(int ny_below, const std::vector<ChannelGridPoint>& points);
    // The land (water included) under node (i, j) of the flood map,
    // extrapolated over the margins.
    double flood_map_elevation(int i, int j, int ny_below) const;
    bool compute_deposit(AggradInfo* local);
    void danielsson(Grid2D<IPos>& vectors) const;
    void go_to_ep(double step);
    void make_channel_lag(double step);
    void make_incision(double step);
    void make_ghost_migration(unsigned int years, double thickness);
    void end_ghost_migration();
    double ep_elevation() const { return _ep_elevation; }
    void ep_elevation(double z) { _ep_elevation = z; }
    // The flood map, null outside a flood.
    Grid2D<AggradInfo>* aggrad_map() const { return _amap.get(); }
    // -- end events --

private:
    // The flood of `local` from those of its neighbours whose bit is set in
    // `mask` (bit k: the k-th neighbour in feeding order) and that are
    // strictly closer to the channel; true when it takes one thick enough to lay.
    bool take_flood(AggradInfo& local, unsigned char mask);
    // The neighbours of map node (i, j) that are on the map, as a mask of take_flood.
    unsigned char in_map_neighbours(int i, int j) const;
    // Takes the flood map out of use (aggrad_map() is null again).
    void release_aggrad_map();
    // danielsson with the squared lengths kept in `lengths`.
    void danielsson(Grid2D<IPos>& vectors, std::vector<long long>& lengths) const;
    bool install_channel(const std::vector<Point3D>& points);
    // Traces the error of a failed channel creation; answers false.
    bool creation_failed(const std::string& text) const;
    void delete_channel();
    // What a caller does with the course found, or not, from one entry point:
    // true keeps it and ends the tries.
    using EntryCourse = std::function<bool(const PairTopoIndex& entry, bool found, ChannelPoint* join,
                                           const std::vector<Point3D>& path, SteepestError error)>;
    // Tries the entry points in the order the seed draws them, a steepest
    // course down from each, until `keep` takes one; false when none is taken
    // or there is no entry point. `trace_attempts` puts each try in the debug trace.
    bool try_entry_points(const char* label, const RouteGrid* route, double hmax, bool trace_attempts,
                          const EntryCourse& keep);
    // The points of a course found from an entry node (grid path, relative frame out).
    std::vector<Point3D> course_points(const PairTopoIndex& entry, const std::vector<Point3D>& path) const;
    void fill_grid_points(std::vector<ChannelGridPoint>& out) const;
    bool complete_end(Channel* channel, bool upstream);
    // Whether `p` (relative frame) lies beyond the upstream (downstream) margin line.
    bool beyond_margin(const Point2D& p, bool upstream) const;
    void first_cutoff_record(Channel* channel);
    void migrate_with(unsigned int step, bool conditioning);
    double param(const char* name) const;

    MeanderCalculator* _mc;
    iParameters* _params;
    iTracer* _tracer;
    Domain* _domain;
    SeedGenerator* _seed;
    MassBalance* _mb;
    UniformDistributionGenerator* _uniform;

    unsigned int _iteration = 0;
    Channel* _ch = nullptr;
    Channel* _ghost = nullptr;
    double _ghost_rise = 0.;
    bool _erode = true;
    // Nesting of rebuilt ends inside channel_points_moved.
    int _moved_depth = 0;
    std::unique_ptr<ChannelGrid> _cg;
    std::vector<ChannelGridPoint> _grid_points;
    // What the plain (not variable grain) _grid_points were found from; empty
    // when they must be found again.
    std::vector<double> _grid_points_inputs;
    // The inputs of the channel as it stands, compared with those above.
    std::vector<double> _grid_points_inputs_now;
    EntryPoints _entry_points;

    // Margin and width they were computed from.
    double _margin = -1.;
    double _margin_width = -1.;

    // Parameters as they stood before a change of scale.
    std::vector<std::pair<std::string, double>> _scaled_params;
    double _scale = 1.;

    unsigned int _nb_cutoffs = 0;
    unsigned int _nb_cutoffs_total = 0;
    unsigned int _nb_chute_cutoffs = 0;
    unsigned int _nb_avulsions = 0;
    unsigned int _nb_cutoffs_avuls = 0;
    unsigned int _nb_floods = 0;
    unsigned int _nb_splays = 0;
    unsigned int _avulsion_iter_sum = 0;
    unsigned int _last_avulsion_iter = 0;
    unsigned int _last_flood_iter = 0;

    unsigned int _first_cutoff_iter = 0;
    double _first_cutoff_time = 0.;
    double _first_cutoff_sinuosity = 0.;
    double _first_cutoff_allen = 0.;
    double _first_cutoff_tortuosity = 0.;
    double _first_cutoff_wavelength = 0.;
    double _first_cutoff_extension = 0.;

    // -- events --
    double _ep_elevation = 100000.;
    std::unique_ptr<Grid2D<AggradInfo>> _amap;
    // A flood's deposit on a domain node, laid once the whole map is computed.
    struct FloodDeposit
    {
        DepositionSet* set;
        double thickness;
        Facies facies;
    };
    // What a flood works with besides its map. A flood reaches most of a map
    // of tens of thousands of nodes: this and the last map are kept from one
    // flood to the next for their storage, the map for the next of its geometry.
    struct FloodScratch
    {
        std::unique_ptr<Grid2D<AggradInfo>> map;
        // The land under the flood map.
        std::vector<double> land;
        Grid2D<IPos> vectors;
        std::vector<long long> lengths;
        // The nodes by distance to the channel and each node's rank of
        // distance; the ranks, kept while the meshes stay and the box holds;
        // the counts of the nodes' sort.
        std::vector<int> nodes;
        std::vector<int> node_rank;
        FloodDistanceRanks ranks;
        std::vector<int> rank_start;
        std::vector<unsigned char> feeders;
        std::vector<FloodDeposit> deposits;
    };
    FloodScratch _flood;
    // -- end events --
};
