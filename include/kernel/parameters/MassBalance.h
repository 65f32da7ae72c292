#pragma once
// Sediment of the simulated reach by grain-size class: what entered, what was
// eroded, what was deposited and what remains available. When active,
// channel fills are built from what erosion made available, coarsest first,
// so that the block conserves grain sizes as well as volumes.

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"

#include <array>
#include <iosfwd>
#include <vector>

// One part of a deposit: its grain-size value and its thickness in metres.
struct GranuloThickness
{
    double granulo;
    double thickness;
};

// The parts of one deposit, in deposit order: at most one per grain-size class
// and one more for what no class could supply. Lives on the stack of the
// deposit, so the hot path allocates nothing.
class GranuloList
{
public:
    static constexpr int capacity = MD_NB_CLASS_GR + 1;

    void push_back(double granulo, double thickness)
    {
        MP_ASSERT(_size < capacity);
        _items[_size++] = GranuloThickness{granulo, thickness};
    }
    void clear() { _size = 0; }
    int size() const { return _size; }
    bool empty() const { return _size == 0; }
    const GranuloThickness& operator[](int k) const { return _items[k]; }
    const GranuloThickness* begin() const { return _items.data(); }
    const GranuloThickness* end() const { return _items.data() + _size; }

private:
    std::array<GranuloThickness, capacity> _items;
    int _size = 0;
};

class MassBalance
{
public:
    typedef std::array<double, MD_NB_CLASS_GR> ByClass;

    explicit MassBalance(bool active = false);
    MassBalance(const MassBalance&) = default;
    MassBalance& operator=(const MassBalance&) = default;
    virtual ~MassBalance();

    void setActive(bool active) { _active = active; }
    bool isActive() const { return _active; }
    // Area of one grid mesh, square metres: the accounts are thicknesses on one mesh.
    void setMeshArea(double area);
    double getMeshArea() const { return _mesh_area; }

    // Fifteen volumes in cubic metres, one per class; clears eroded and deposited.
    void setInitialVolume(const std::vector<double>& volumes);
    // The same from a total volume and the fifteen shares of the classes.
    void setInitialVolume(double total, const std::vector<double>& proportions);
    // Back to the initial volumes, nothing eroded or deposited.
    void resetVolume();

    // Books an erosion of the given facies; wetland, draping and pelagic
    // deposits come from outside the river's load and are not booked.
    void eroded_accounts(double thickness, const Facies& facies);
    // Books a deposit and appends its parts (granulo value, thickness) to list.
    void deposited_accounts(double thickness, const Facies& facies, GranuloList& list);

    // Thicknesses on one mesh, by class.
    const ByClass& getInput() const { return _input; }
    const ByClass& getAvailable() const { return _available; }
    const ByClass& getEroded() const { return _eroded; }
    const ByClass& getDeposited() const { return _deposited; }

private:
    static bool is_external(unsigned char family) { return family == 11 || family == 12 || family == 13; }
    static int checked_class(const Facies& facies);
    void withdraw_coarsest_first(double thickness, GranuloList& list);

    ByClass _input{};
    ByClass _available{};
    ByClass _eroded{};
    ByClass _deposited{};
    double _mesh_area = 1.;
    bool _active;
};

// The accounts as a table, in cubic metres, one row per class and a row of sums.
std::ostream& operator<<(std::ostream& out, const MassBalance& mb);
