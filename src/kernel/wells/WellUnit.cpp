#include "kernel/wells/WellUnit.h"

#include "kernel/common/BinaryDump.h"

void WellUnit::binary_output(std::ostream& out) const
{
    dump::write(out, _facies.facies_full_id());
    dump::write(out, _thickness);
    dump::write(out, _age);
}

bool WellUnit::binary_input(std::istream& in)
{
    unsigned char id = 0;
    if (!dump::read(in, id) || !dump::read(in, _thickness) || !dump::read(in, _age))
        return false;
    _facies.facies_full_id(id);
    return true;
}
