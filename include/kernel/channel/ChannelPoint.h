#pragma once
// One point of a channel centerline, in relative coordinates, with its local
// slope, depth, flow, curvature, abscissa and normal. Its elevation is that of
// the channel top; the bed lies the flow's maximum height below it.

#include "interface/iChannelPoint.h"
#include "kernel/common/LinkedElement1D.h"
#include "kernel/domain/Flow.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/ParameterCodes.h"

#include <iosfwd>
#include <string>
#include <vector>

class Domain;
class GridParams;
class MeanderCalculator;
class iChannelWell;

class ChannelPoint : public iChannelPoint, public LinkedElement1D<Point3D>
{
public:
    // A new point is linked between `prev` and `next` (either may be null),
    // which are made to point at it.
    ChannelPoint(MeanderCalculator const* mc, const std::vector<double>& proportions, double width,
                 const Point2D& position, ChannelPoint* prev, ChannelPoint* next);
    ChannelPoint(MeanderCalculator const* mc, const std::vector<double>& proportions, double width,
                 const Point3D& position, ChannelPoint* prev, ChannelPoint* next);
    // Deep copy of everything but the attached well and its status.
    ChannelPoint(MeanderCalculator const* mc, const ChannelPoint& other, ChannelPoint* prev,
                 ChannelPoint* next);
    // Tells the attached well that it lost its point; does not unlink.
    ~ChannelPoint() override;
    // A new chain along `points`, each point made after its upstream neighbour
    // (whose flow it starts from); the head, or null for no point, is the caller's.
    static ChannelPoint* make_chain(MeanderCalculator const* mc, const std::vector<double>& proportions,
                                    double width, const std::vector<Point3D>& points);

    // iChannelPoint
    double getX() const override { return _x; }
    double getY() const override { return _y; }
    double getZ() const override { return _z; }
    double getC() const override { return _curvature; }
    double getS() const override { return _s; }
    double getI() const override { return _slope; }
    double getHmean() const override { return _hmean; }
    double getFlowHmax() const override { return _flow.hflow_max(); }
    double getFlowHmean() const override { return _flow.hmean(); }
    double getFlowHeff() const override { return _flow.get_effective_height(); }
    double getFlowU0() const override { return _flow.u0(); }
    double getFlowU1() const override { return _flow.u1(); }

    // Links, seen as channel points.
    ChannelPoint* prev() const { return static_cast<ChannelPoint*>(LinkedElement1D<Point3D>::prev()); }
    ChannelPoint* next() const { return static_cast<ChannelPoint*>(LinkedElement1D<Point3D>::next()); }
    void prev(ChannelPoint* cp) { LinkedElement1D<Point3D>::prev(cp); }
    void next(ChannelPoint* cp) { LinkedElement1D<Point3D>::next(cp); }

    // Resets the local fields, then averages slope, depth and flow from the
    // neighbours that exist.
    void init_from_points(double width, const std::vector<double>& proportions, ChannelPoint* prev,
                          ChannelPoint* next);

    // Aggradation keeps its last step; lowering forgets it.
    void increase_elevation_by(double d);
    void decrease_elevation_by(double d);
    double aggrad_increase() const { return _aggrad_increase; }
    void aggrad_increase(double d) { _aggrad_increase = d; }

    // Detaches the well, no status, no migration factor.
    void reset_status();
    iChannelWell* well() const { return _well; }
    // Attaches `well`, first telling the previous one that it lost its point.
    void well(iChannelWell* well);
    int status() const { return _status; }
    void status(int status) { _status = status; }
    double mig_factor() const { return _mig_factor; }
    void mig_factor(double factor) { _mig_factor = factor; }

    // Grid node under the point, clamped to the grid.
    void get_grid_indices(const GridParams& geom, int& ix, int& iy) const;
    // Elevation of the top (or of the bed), optionally with the regional slope removed.
    double elevation_custom(const Domain* domain, bool use_slope, bool bed) const;
    // Distance to `p` stretched against the flow direction (cx, cy), so that a
    // well prefers the point ahead of it.
    double get_distance_von_mises(const Point2D& p, double cx, double cy) const;

    // Local fields.
    double slope() const { return _slope; }
    void slope(double slope) { _slope = slope; }
    double hmean() const { return _hmean; }
    void hmean(double hmean) { _hmean = hmean; }
    const Flow& flow() const { return _flow; }
    Flow& flow() { return _flow; }
    double curvature() const { return _curvature; }
    void curvature(double curvature) { _curvature = curvature; }
    double ds() const { return _ds; }
    void ds(double ds) { _ds = ds; }
    double s() const { return _s; }
    void s(double s) { _s = s; }
    const Vector2D& normal() const { return _normal; }
    void normal(const Vector2D& normal) { _normal = normal; }
    MeanderCalculator const* mc() const { return _mc; }

    // "Pt= (...) ds= ... s= ... C= ... R= ... N= (...) I= ..." and the flow's own text.
    std::string get_string_descr() const;
    // "X=..., Y=..."
    std::string debug() const;

    // -- migration --
    double find_erodibility(const Domain* domain, const Point2D& bank_point, const Vector2D& direction,
                            double h) const;
    void smooth_elevations(bool last);
    // -- end migration --

private:
    void init_fields();

    double _slope;
    double _hmean;
    double _curvature;
    double _ds;
    double _s;
    Vector2D _normal;
    double _aggrad_increase;
    double _mig_factor;
    iChannelWell* _well;
    int _status;
    MeanderCalculator const* _mc;
    // Last: the sweeps along the chain read the position, spacing and normal
    // of each point, which then share its first cache lines.
    Flow _flow;
};

std::ostream& operator<<(std::ostream& out, const ChannelPoint& cp);
