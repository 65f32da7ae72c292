#include "kernel/domain/DepositionUnit.h"

#include "kernel/common/BinaryDump.h"

#include <istream>
#include <ostream>
#include <sstream>

void DepositionUnit::binary_output(std::ostream& out) const
{
    dump::write(out, _facies.facies_full_id());
    dump::write(out, _thickness);
    dump::write(out, _age_delta);
}

bool DepositionUnit::binary_input(std::istream& in)
{
    unsigned char id = 0;
    dump::read(in, id);
    dump::read(in, _thickness);
    dump::read(in, _age_delta);
    _facies.facies_full_id(id);
    return static_cast<bool>(in);
}

std::string DepositionUnit::debug() const
{
    std::ostringstream text;
    text << _facies << " / " << thickness() << "m / " << static_cast<unsigned int>(_age_delta)
         << " it (delta)";
    return text.str();
}

std::ostream& operator<<(std::ostream& out, const DepositionUnit& unit)
{
    return out << unit.debug();
}
