#pragma once
// What the channel needs of a conditioning well: where it stands, the channel
// point it steers, how the channel's size sets its reach, and how it bends a
// migration. Wells live above the channel, so the channel knows them only
// through this.

class ChannelPoint;
class Point2D;
class Point3D;
class WellConfig;

class iChannelWell
{
public:
    virtual ~iChannelWell() = default;

    virtual const Point2D& location() const = 0;
    // Attaching computes the point's factor and status; null detaches.
    virtual void channel_point(ChannelPoint* point) = 0;
    virtual void set_well_config(const WellConfig& config) = 0;
    // The factor on a migration at point (1 where the well is neutral).
    virtual double correct_mig(const Point3D& point) const = 0;
};
