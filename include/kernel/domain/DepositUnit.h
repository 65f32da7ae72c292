#pragma once
// A unit as handed to viewers and reports: plain values, thickness in metres.

class DepositUnit
{
public:
    DepositUnit() = default;
    DepositUnit(unsigned char family, double thickness, unsigned int age, double granulo)
        : _family(family), _thickness(thickness), _age(age), _granulo(granulo)
    {
    }
    DepositUnit(const DepositUnit&) = default;
    DepositUnit& operator=(const DepositUnit&) = default;
    virtual ~DepositUnit();

    unsigned char family() const { return _family; }
    double thickness() const { return _thickness; }
    unsigned int age() const { return _age; }
    double granulo() const { return _granulo; }
    void family(unsigned char family) { _family = family; }
    void thickness(double thickness) { _thickness = thickness; }
    void age(unsigned int age) { _age = age; }
    void granulo(double granulo) { _granulo = granulo; }

    bool operator==(const DepositUnit& other) const;
    bool operator!=(const DepositUnit& other) const { return !(*this == other); }

private:
    unsigned char _family = 0;
    double _thickness = 0.;
    unsigned int _age = 0;
    double _granulo = 0.;
};
