#pragma once
// What a deposit column needs of the conditioning well standing on it: the
// column tells the well its placement and every deposit and erosion, and the
// search for new courses asks how strongly the well draws an avulsion. Wells
// live above the domain, so the column knows them only through this.

class DepositionSet;
class Facies;
class Point3D;

class iColumnWell
{
public:
    virtual ~iColumnWell() = default;

    virtual void set_zul_rel(double z) = 0;
    virtual void set_zul_geo(double z) = 0;
    virtual void set_zref(double zref) = 0;
    virtual void set_flat_delta(double delta) = 0;
    virtual void set_wet(bool wet) = 0;
    // A deposit of thickness th from zb at the well's cell, under wd of water.
    virtual void deposit(const Facies& facies, double th, double zb, double wd,
                         const DepositionSet* column) = 0;
    virtual void erode_up_to(double z, double depth) = 0;
    virtual void erode_down_to(double z, double depth, const DepositionSet* column) = 0;
    // The pull of the well on an avulsion through point (1 where it is neutral).
    virtual double correct_avl(const Point3D& point, bool* local, bool* regional,
                               bool* aggradationOk) const = 0;
};
