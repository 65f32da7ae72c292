#pragma once
// Read-only view of one centerline point, as the interface sees it.

class iChannelPoint
{
public:
    virtual ~iChannelPoint() {}

    virtual double getX() const = 0;
    virtual double getY() const = 0;
    virtual double getZ() const = 0;
    // Signed curvature, 1/m.
    virtual double getC() const = 0;
    // Curvilinear abscissa from the upstream end.
    virtual double getS() const = 0;
    // Local slope.
    virtual double getI() const = 0;
    virtual double getHmean() const = 0;
    virtual double getFlowHmax() const = 0;
    virtual double getFlowHmean() const = 0;
    virtual double getFlowHeff() const = 0;
    virtual double getFlowU0() const = 0;
    virtual double getFlowU1() const = 0;
};
