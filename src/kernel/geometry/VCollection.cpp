#include "kernel/geometry/VCollection.h"

VCollection::VCollection(double z) : _zbot(z), _ztop(z) {}

VCollection::VCollection(double zbot, double ztop) : _zbot(zbot), _ztop(ztop) {}

VCollection::~VCollection() = default;

void VCollection::set_zul_rel(double z)
{
    _zul = z;
}

void VCollection::set_zul_geo(double z)
{
    _zul = geo_to_rel(z);
}

void VCollection::set_zref(double zref)
{
    _zref = zref;
}

void VCollection::set_flat_delta(double delta)
{
    _zbot += _flat_delta - delta;
    _ztop += _flat_delta - delta;
    _flat_delta = delta;
}
