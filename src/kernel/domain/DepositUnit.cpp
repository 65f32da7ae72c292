#include "kernel/domain/DepositUnit.h"

DepositUnit::~DepositUnit() = default;

bool DepositUnit::operator==(const DepositUnit& other) const
{
    return _family == other._family && _thickness == other._thickness && _age == other._age &&
           _granulo == other._granulo;
}
