#pragma once
// A log placed in the domain that the simulation must honour. The active
// level _al is the elevation up to which the simulated column at the well
// already agrees with the log; the well follows the column at its cell and
// steers migration, avulsions and aggradation towards what is still missing.
// Elevations are relative, as in the deposit column of its cell.

#include "kernel/channel/WellConfig.h"
#include "kernel/channel/iChannelWell.h"
#include "kernel/common/Facies.h"
#include "kernel/domain/iColumnWell.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/wells/WellUnitCollection.h"

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class ChannelPoint;
class Core;
class CoreList;
class DepositionSet;
class GridParams;
class UserClassList;
class iParameters;
class iTracer;

class Well : public WellUnitCollection, public iColumnWell, public iChannelWell
{
public:
    Well(iParameters* parameters, iTracer* tracer, Well* parent = nullptr);
    Well(const Well&) = delete;
    Well& operator=(const Well&) = delete;
    ~Well() override;

    // Places the well and puts the level at its bottom, in the lowest brick.
    void init(const Point2D& geoLocation, const Point2D& location);
    // Builds the well from a log on the grid whose origin lies at elevation
    // `zref`: user classes translate a log of other attributes, a deviated log
    // is split by grid column (the pieces after the first go to `others` when
    // given), neighbours of one facies are joined and undefined ends trimmed.
    // `number` tells the well in messages. False, with the reason traced, for
    // an empty log or a head off the grid.
    bool load(iParameters* parameters, iTracer* tracer, const std::string& name, const Core& core,
              const UserClassList& classes, const GridParams& grid, double zref, int number,
              CoreList* others = nullptr);
    // A log of user attributes becomes a log of facies; false when no sample matched a class.
    static bool apply_user_class_list(const UserClassList& classes, iTracer* tracer, Core& core);
    // Bricks from a vertical core (top first, geographic elevations), then init
    // at the core's head. False for an empty core.
    bool init_facies(const Core& core);
    // Copies the log, its state and its linked wells; the channel point is not copied.
    void resetFrom(const Well& well);
    // The bricks as a vertical core, geographic elevations.
    void to_core(Core& core) const;

    const std::string& name() const { return _name; }
    void name(const std::string& name) { _name = name; }
    const Point2D& location() const override { return _location; }
    const Point2D& geoLocation() const { return _location_geo; }
    Well* parent() const { return _parent; }

    // Linked wells: other logs at the same cell, told everything this one is told.
    Well* new_child();
    void add_child(std::unique_ptr<Well> child);
    // Hands the linked wells over to the caller; this well keeps none.
    std::vector<std::unique_ptr<Well>> release_children();
    const std::vector<std::unique_ptr<Well>>& children() const { return _children; }

    // Reaches the linked wells too.
    void set_well_config(const WellConfig& config) override;
    const WellConfig& get_well_config() const { return _config; }

    double active_level() const { return _al; }
    std::size_t active_brick() const { return _ab; }
    double botab() const { return _botab; }
    double topab() const { return _topab; }
    double zdom() const { return _zdom; }
    // The domain's elevation at the well, set when the well is placed on a column.
    void zdom(double z) { _zdom = z; }
    bool is_wet() const { return _wet; }
    // Reaches the linked wells too.
    void set_wet(bool wet) override;
    // The column the well stands on, as a deposit or an erosion would tell it;
    // reaches the linked wells too (a well read back from a snapshot).
    void set_column(const DepositionSet* column);
    // The active brick is past the last one.
    bool is_finished() const { return _ab >= _units.size(); }
    // Bricks entirely below the active level.
    std::size_t nb_honored_units() const { return _ab; }
    // This well and all its linked wells are finished.
    bool all_honored() const;

    // Placement setters reach the linked wells; a new flattening shift moves
    // the level and the brick limits with the relative frame.
    void set_zul_rel(double z) override;
    void set_zul_geo(double z) override;
    void set_zref(double zref) override;
    void set_flat_delta(double delta) override;

    ChannelPoint* channel_point() const { return _channelPoint; }
    // Attaches a point and stores the migration factor and its state on it;
    // null detaches the point the well held.
    void channel_point(ChannelPoint* point) override;

    // 0 below lim1, 1 above lim2, linear between.
    static double repulsion_factor(double v, double lim1, double lim2);
    static double attraction_factor(double v, double lim1, double lim2);
    static double gauss_cov(double h, double range);
    void channel_bottom(double z, double& zb, double& z98) const;
    double above_active_level(double z) const;
    // Moves the level to z, walking the active brick; true when the walk leaves the log.
    bool set_al(double z);
    // a along the flow, b across it, d plain, e stretched along the flow.
    void distance(const Point2D& point, double& a, double& b, double& absa, double& absb, double& d,
                  double& e) const;

    // The facies the log asks for at a brick; undefined past the end and in closed gaps.
    Facies nature(std::size_t brick) const;
    Facies ab_nature() const { return nature(_ab); }
    bool ab_neutral() const { return ab_nature().is_neutral(); }
    // Half-width from the channel axis at which its bottom reaches a brick that must stay.
    double avoidance(double z98, double z) const;
    // How far a channel at z could rise before cutting a brick it must not.
    double gap_up(double zb, double z) const;

    // Multiplier of the bank migration rate at a point (channel top elevation).
    double correct_mig(const Point3D& point) const override;
    // Weight of a place in the search of a new course; out-parameters may be null.
    double correct_avl(const Point3D& point, bool* local, bool* regional, bool* aggradationOk) const override;

    bool aggrade_ok() const;
    bool reg_avulsion() const;
    bool loc_avulsion() const;
    bool want_reg_avulsion() const;
    bool want_loc_avulsion() const;
    bool block_avulsion() const;
    bool block_aggradation() const;
    bool wet_and_sandy_ab() const;

    // A deposit of thickness th from zb at the well's cell, under wd of water.
    void deposit(const Facies& facies, double th, double zb, double wd, const DepositionSet* column) override;
    // The base of the column rose to z.
    void erode_up_to(double z, double depth) override;
    // The column was eroded down to z.
    void erode_down_to(double z, double depth, const DepositionSet* column) override;

    // A 32-bit count of 1 plus the linked wells, then each well's record.
    void binary_output(std::ostream& out) const;
    // Replaces this well and its linked wells; false with an error trace on a bad record.
    bool binary_input(std::istream& in);

    // Name, level and brick; " >> Well honored <<\n" once finished.
    std::string debug() const;

private:
    void require_new_algo() const;
    void next_ab();
    void prev_ab();
    void update_ab_limits();
    void avoid_scour(double zt, double wd);
    // A unit of this facies and thickness may stand where the log asks for `asked`.
    bool agrees(const Facies& facies, double thickness, const Facies& asked) const;
    bool column_agrees(const DepositionSet* column, double z1, double z2) const;
    // Raises the level towards z through the bricks the column agrees with; true when it rose.
    bool climb_while_agreeing(const DepositionSet* column, double z);
    // Once the channel has left, the level climbs through what the column now agrees on.
    void catch_up();
    void deposit_cases(const Facies& facies, double zb, double zt, const DepositionSet* column);
    void deposit_from_level(const Facies& facies, double zt);
    void trace_case(const std::string& label, double zt) const;
    void output_record(std::ostream& out) const;
    bool input_record(std::istream& in);
    template <typename Answer> bool any_linked(Answer answer) const;

    iParameters* _parameters;
    iTracer* _tracer;
    Well* _parent;
    std::string _name = "Unknown";
    double _al = 0.;
    std::size_t _ab = 0;
    double _botab = 0.;
    double _topab = 0.;
    double _zdom = 0.;
    bool _wet = false;
    ChannelPoint* _channelPoint = nullptr;
    // The column of the well's cell, as the last deposit or erosion told it.
    const DepositionSet* _column = nullptr;
    std::vector<std::unique_ptr<Well>> _children;
    WellConfig _config;
};
