#pragma once
// The simulated block: one deposition stack per grid node, with the surfaces
// and maps that act on it, its regional slope and flow direction, and the
// margins around the grid in which channels may run without depositing.

#include "interface/iDomain.h"
#include "interface/iTracer.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/SteepestError.h"
#include "kernel/geometry/Grid2D.h"
#include "kernel/geometry/Line2D.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/ParameterCodes.h"

#include <iosfwd>
#include <string>
#include <vector>

class CenterlineDisc;
struct ChannelGridPoint;

class DistributionGenerator;
class EMap;
class iChannel;
class iChannelImprint;
class MassBalance;
class MeanderCalculator;
class SeedGenerator;
class TectoMap;
class RegularBlock;
class Topo;

class Domain : public Grid2D<DepositionSet>, public iDomain
{
public:
    // The geometry has a zero origin; the location is `origin` at elevation `zref`.
    Domain(MeanderCalculator* mc, SeedGenerator* seed, MassBalance* mb, const Topo* flat, double dx,
           double dy, int nx, int ny, const Point2D& origin, double rotation, double zref, unsigned int age,
           const Facies& facies);
    ~Domain() override;
    Domain(const Domain&) = delete;
    Domain& operator=(const Domain&) = delete;

    // Copies every node and every field of a domain of the same geometry and location.
    void resetFrom(const Domain& dom);

    // --- Slope, flow direction, margins
    // Slope and absolute flow direction (degrees); recomputes corners, lines and border extremes.
    void update_slope(double slope, double angle);
    void set_margins(int mx, int my);
    int get_mx() const { return _mx; }
    int get_my() const { return _my; }
    double get_diagonal() const { return _diagonal; }
    double get_slope() const { return _slope; }
    double get_slope_x() const { return _slope_x; }
    double get_slope_y() const { return _slope_y; }
    double get_flow_angle() const { return _flow_angle; }
    Vector2D get_flow_direction() const { return Vector2D(_dir_x, _dir_y); }
    double get_scalar_dir(int k) const { return _scalar_dir[k]; }
    static const Vector2D& get_grid_vector(int k) { return _grid_vectors[k]; }
    const Point2D& get_upstream_corner() const { return _upstream_corner; }
    const Point2D& get_downstream_corner() const { return _downstream_corner; }
    const Line2D& get_upstream_line() const { return _upstream_line; }
    const Line2D& get_downstream_line() const { return _downstream_line; }
    const Point2D& get_upstream_apex() const { return _upstream_apex; }
    const Point2D& get_downstream_apex() const { return _downstream_apex; }
    // Corners of the flow-aligned rectangle holding the domain and its margins.
    const Point2D& get_corner(int k) const { return _corner[k]; }

    // --- Border extremes of the topography (with water) and of the pseudo-topography
    void compute_border_zmin();
    void compute_border_zmax();
    double get_zmin_border() const { return _zmin_border; }
    double get_zmax_border() const { return _zmax_border; }
    double get_zmin_border_altered() const { return _zmin_border_altered; }
    double get_zmax_border_altered() const { return _zmax_border_altered; }

    // --- Surfaces continued beyond the grid
    // Folds index i back into [0, n); true in the half of the fold that is mirrored.
    static bool margin_idx(int n, int& i, int& m);
    double get_topo_extrapolated(bool rel, bool with_water, int i, int j, int mx = MP_UNDEF_INT,
                                 int my = MP_UNDEF_INT, bool flatten = false) const override;
    // get_topo_extrapolated(rel, with_water, i0 + a, j0 + b, mx, my, flatten) of every node (a, b)
    // of an nx by ny window, row by row into `out`; the columns are read once, in row order.
    void fill_topo_extrapolated(bool rel, bool with_water, int i0, int j0, int nx, int ny, int mx, int my,
                                bool flatten, std::vector<double>& out) const;
    double get_erodibility_extrapolated(int i, int j) const;
    double get_topo_neigh_dry(int i, int j) const;
    // The surface on which new courses are sought, lowered where erodibility is high.
    void compute_pseudo_topo(double hmax, DistributionGenerator& generator);

    // --- Erodibility
    double get_erod_default() const { return _erod_default; }
    double get_erod_mean() const { return _erod_mean; }

    // --- Loading surfaces and maps (false with a message on failure)
    bool load_topo(const Topo& topo, int mode, unsigned int age, unsigned char family);
    // The input resampled on the domain grid, in relative elevations.
    bool migrate_topo(const Topo& in, Topo& out) const;
    bool load_zul(const Topo& topo);
    bool load_tecto(const TectoMap& map);
    bool load_emap(const EMap& map);
    bool build_emap_zul(double coef);
    // A map of erodibility peaking along a centerline (relative frame) of the given width.
    void get_emap_built_CP(EMap& emap, const std::vector<Point2D>& centerline, double width, double coef,
                           double ax, double ay) const;
    void get_emap_built_CP(EMap& emap, const iChannel& channel, double coef, double ax, double ay) const;

    // --- Flattening
    void setFlattening(const Topo* flat) { _flat = flat; }
    const Topo* getFlattening() const { return _flat; }
    void updateFlattening();
    // The flattening of a block read back from a dump, whose stacks already
    // stand where the flattening puts them.
    void adoptFlattening();

    // --- Actions on all stacks
    void apply_tecto(int t);
    void forget_remaining();
    bool replace_facies(unsigned char family);
    void deposit_uniform_thickness(double thickness, const Facies& facies, unsigned int age);
    // Background rain on dry nodes: dt iterations at pel_drap_int per 10000 iterations.
    void deposit_pel_drap(int dt, double pel_drap_int, unsigned int age);

    // --- Surfaces handed out, on the domain geometry
    // Geographic top, or the horizon of `age` when it is not 0.
    void getTopo(Topo& topo, bool with_water, unsigned int age = 0) const;
    // Geographic top continued over the margins, on a grid widened by them.
    void get_extra_topo(Topo& topo) const;
    void get_age_horizon(Topo& topo, unsigned int age) const;
    void get_emap(EMap& emap) const;
    // Geographic upper limit, undefined where none is set.
    void get_zul(Topo& topo) const;
    void get_tecto_map(TectoMap& map) const;
    // Percentage of nodes still below the upper limit; 1 for a share under 1 %, 0 for none.
    int upper_limit_zul() const;
    // True when no node is below the upper limit (upper_limit_zul() == 0),
    // asked every iteration: the scan starts at the last node found below and
    // stops at the first one, so it is short until the very end.
    bool upper_limit_reached() const;

    // --- Elevation extremes
    double max_elevation_rel() const override;
    double min_elevation_rel() const override;
    void min_and_max_elevation_rel(double& zmin, double& zmax) const override;
    void min_and_max_elevation_geo(double& zmin, double& zmax) const override;
    double max_elevation_geo() const;
    double min_elevation_geo() const;
    double mean_topo_geo(bool with_water) const override;
    unsigned int oldest_age() const override;

    // --- Frames
    Point2D getGridPointFromRel(const Point2D& p) const { return rel2Grid(p, true); }
    Point2D getGridPointFromGeo(const Point2D& p) const { return geo2Grid(p, true); }
    bool isValid(int i, int j) const { return i >= 0 && i < _nx && j >= 0 && j < _ny; }

    // --- Dump: one stack record per node, i fastest; the tracer's progress after each row.
    bool binary_output(std::ostream& out) const;
    bool binary_input(std::istream& in);

    // --- Borrowed objects
    MeanderCalculator* getMeanderCalculator() const { return _mc; }
    iTracer* getTracer() const { return _tracer; }
    SeedGenerator* getSeedGenerator() const { return _seed; }
    MassBalance* getMassBalance() const { return _mb; }

    // --- iDomain
    const GridParams& getGridParams() const override { return *this; }
    int getMarginX() const override { return _mx; }
    int getMarginY() const override { return _my; }
    double getFlowAngle() const override { return _flow_angle; }
    double getSlope() const override { return _slope; }
    double getZref() const override { return _location.get_elevation(); }
    double getTopoRel(int i, int j, bool with_water) const override;
    double getTopoGeo(int i, int j, bool with_water) const override;
    double getWaterDepth(int i, int j) const override;
    double getErodibility(int i, int j) const override;
    double getUpperLimitGeo(int i, int j) const override;
    std::vector<DepositUnit> getStack(int i, int j) const override;
    bool getSliceInfo(int i, int j, double z, unsigned char& facies, unsigned int& age) const override;

    // -- channel imprint --
    // Nodes the channel has left since the last step become point bar.
    void make_point_bar(const std::vector<ChannelGridPoint>& points, unsigned int age);
    void make_point_bar_new(const iChannelImprint& channel, const std::vector<ChannelGridPoint>& points,
                            unsigned int age);
    // The channel rasterised on the domain grid, its elevations scaled to [0, range].
    bool getCenterlineDisc(CenterlineDisc& disc, const iChannelImprint& channel) const;
    bool get_cl_disc(CenterlineDisc& disc, const iChannelImprint& channel, double range) const;
    // -- end channel imprint --

private:
    void compute_corners();
    template <typename Visit> void for_each_border_node(Visit visit) const;
    // Mean over the columns of a window of what `thickness(column, zmin, zmax)`
    // measures between two geographic elevations (1e30: the block's own).
    template <typename Thickness>
    double mean_window_thickness(int imin, int imax, int jmin, int jmax, double zmin, double zmax,
                                 Thickness thickness) const;
    double flattening_reference() const;
    bool flattening_value(int i, int j, double& value) const;
    double topo_value(bool rel, bool with_water, int i, int j) const;
    template <typename Value>
    double topo_node(const Value& value, bool rel, int i, int j, int mx, int my, bool flatten) const;
    template <typename Value>
    double extrapolate(const Value& value, int i, int j, int mx, int my, bool clamp, double zmin,
                       double zmax) const;
    void error(const std::string& text) const;
    void warning(const std::string& text) const;
    void debug(const std::string& text) const;
    bool tracing(TraceLevel level) const;

    int _mx = MP_UNDEF_INT;
    int _my = MP_UNDEF_INT;
    double _diagonal;
    double _slope = MP_UNDEF_REAL;
    double _dir_x = MP_UNDEF_REAL;
    double _dir_y = MP_UNDEF_REAL;
    double _slope_x = MP_UNDEF_REAL;
    double _slope_y = MP_UNDEF_REAL;
    double _erod_default;
    double _erod_mean;
    double _flow_angle = MP_UNDEF_REAL;
    double _zmin_border = MP_MAX_REAL_VALUE;
    double _zmin_border_altered = MP_MAX_REAL_VALUE;
    double _zmax_border = MP_MIN_REAL_VALUE;
    double _zmax_border_altered = MP_MIN_REAL_VALUE;
    double _scalar_dir[8] = {0., 0., 0., 0., 0., 0., 0., 0.};
    Point2D _upstream_corner;
    Point2D _downstream_corner;
    Line2D _upstream_line;
    Line2D _downstream_line;
    Point2D _upstream_apex;
    Point2D _downstream_apex;
    Point2D _corner[4];
    MeanderCalculator* _mc;
    iTracer* _tracer;
    SeedGenerator* _seed;
    MassBalance* _mb;
    const Topo* _flat;

    static const Vector2D _grid_vectors[8];

    // -- sampling and export --
public:
    // How discretize_elevation completes the vertical sampling:
    // 0 all from the block, 1 zmin given, 2 zmin and nz given, 3 nz given.
    struct VerticalDiscretizationPolicy
    {
        int nz = MP_UNDEF_INT;
        int mode = 0;
    };
    // Geographic elevations of the first and last sample centres and their count.
    void discretize_elevation(double dz, double& zmin, double& zmax, int& nz,
                              const VerticalDiscretizationPolicy& policy) const;
    // Columns i outer, j inner, each bottom up; zmin and nz given when not
    // undefined, and returned. Void samples: facies 255, age 0, granulo -1.
    bool getRegular(int imin, int imax, int jmin, int jmax, double dz, std::vector<unsigned char>* facies,
                    std::vector<uint32_t>* age, std::vector<double>* granulo, double* zmin, int* nz) const;
    bool getRegularPile(int i, int j, double dz, std::vector<unsigned char>* facies,
                        std::vector<uint32_t>* age, std::vector<double>* granulo, double* zmin,
                        int* nz) const;
    std::vector<unsigned char> getRegularFacies(double dz, double zmin, int nz) const;
    std::vector<double> getRegularGrain(double dz, double zmin, int nz) const;
    std::vector<uint32_t> getRegularAge(double dz, double zmin, int nz) const;
    // One entry per unit over all columns (i fastest), each column bottom first.
    std::vector<unsigned char> getAllFacies() const;
    std::vector<unsigned int> getAllAge() const;
    std::vector<double> getAllThickness() const;
    std::vector<double> getAllGrainsize() const;
    std::vector<unsigned char> getAllGrainsizeClass() const;
    // The log of column (i, j) cut to [zmin, zmax] (1e30 keeps that end).
    bool to_core(int i, int j, class Core& core, double zmin, double zmax) const;
    bool vcollections(class CoreList& list, int imin, int imax, int jmin, int jmax, double zmin,
                      double zmax) const;
    // The columns of a range sampled every dz between geographic zmin and zmax
    // (1e30: the block's own); false with the reason traced.
    bool getRegularBlock(int imin, int imax, int jmin, int jmax, double dz, double zmin, double zmax,
                         RegularBlock& block) const;
    // The block sampled every dz (1e30 limits: the block's own) as one 3D grid
    // with the chosen variables; void samples are written as `undefined`.
    bool save_simu(const std::string& file, int format, double dz, int imin, int imax, int jmin, int jmax,
                   bool facies, bool grain, bool age, double zmin, double zmax, const std::string& order,
                   const std::string& undefined) const;
    bool saveF2G(const std::string& file, double dz, bool facies, bool grain, bool age, double zmin,
                 double zmax, const std::string& order) const;
    // Mean thickness of deposits (of one family) between geographic zmin and
    // zmax over the columns of a range; 1e30 limits mean the block's own.
    double volume1D(int imin, int imax, int jmin, int jmax, double zmin, double zmax) const;
    double volume1D(const Facies& facies, int imin, int imax, int jmin, int jmax, double zmin,
                    double zmax) const;
    double volume1D(double zmin, double zmax) const;
    double volume1D(const Facies& facies, double zmin, double zmax) const;
    // The volume of a mean mesh column: volume1D times dx times dy.
    double volume3D(int imin, int imax, int jmin, int jmax, double zmin, double zmax) const;
    double volume3D(const Facies& facies, int imin, int imax, int jmin, int jmax, double zmin,
                    double zmax) const;
    double volume3D(double zmin, double zmax) const;
    double volume3D(const Facies& facies, double zmin, double zmax) const;
    double getProportion(unsigned char family, int imin, int imax, int jmin, int jmax, double zmin,
                         double zmax) const;
    double getProportionFull(unsigned char family, double zmin, double zmax) const;
    // -- end sampling and export --

    // -- course finding --
public:
    // The channel marked on a grid of the domain widened by its margins: each
    // node holds the segment (previous point, point) that covers it.
    typedef Grid2D<std::pair<class ChannelPoint*, class ChannelPoint*>> RouteGrid;

    // Text of a SteepestError.
    static std::string steepest_error(int error);
    // Grows a course from (ix0, iy0) through its first step (ix1, iy1) to the
    // downstream margin (to the upstream margin, climbing, if `upward`). The
    // path receives the nodes from the first step on, x and y as grid indices
    // and z the true elevation; `join` receives the point of `route` met.
    bool find_steepest(const RouteGrid* route, DistributionGenerator* uniform, int ix0, int iy0, int ix1,
                       int iy1, ChannelPoint*& join, std::vector<Point3D>& path, SteepestError& error,
                       double hmax, bool upward) const;
    // Candidates around node p (grid indices) with their weights in the draw.
    // `previous` holds the path so far, the last entry being the node before p.
    void select_steepest_neighbors(const Point2D& p, double z, double dz_max,
                                   const std::vector<Point2D>& previous, bool upward, bool rising,
                                   double z_ref, std::vector<Point2D>& cells, std::vector<double>& weights,
                                   bool use_dir = true) const;
    void next_steepest_node(int& ix, int& iy, bool upstream) const;
    bool steepest_stop(int ix, int iy, bool upstream) const;
    bool is_valid_dir(bool use, bool reverse, const Vector2D& previous, const Vector2D& next) const;
    // Margin tests on a relative position against the flow direction.
    bool is_inside_upstream_margin(const Point2D& p) const;
    bool is_inside_downstream_margin(const Point2D& p) const;
    bool is_beyond_upstream_margin(const Point2D& p) const;
    bool is_beyond_downstream_margin(const Point2D& p) const;
    // True when beyond the lateral sides of the flow-aligned rectangle holding the domain and its margins.
    bool is_outside_extrapolated(const Point2D& p) const;
    bool cutoff_ok(const Point2D& p, bool downstream) const;
    // The grid step (each component in {-1, 0, 1}) nearest to a direction given in radians.
    static void get_vector(double angle, int& di, int& dj);

private:
    mutable long long _zul_hint = 0;
    void trace_leaving(int ix, int iy, int ix0, int iy0, const Point2D& prev, bool upward) const;
    // -- end course finding --
};
