#pragma once
// One object per node of a 2D grid, in a single array, node (i, j) at j * nx + i.
// A grid either owns its array or is a shallow view on another grid's array
// (as iterators are). Grids are not copyable: a deep copy is asked for with
// copyFrom; moving hands the array over.

#include "kernel/common/Assert.h"
#include "kernel/geometry/Grid2DGeom.h"
#include "kernel/geometry/GridParams.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

template <typename T> class Grid2D : public Grid2DGeom
{
public:
    Grid2D() = default;
    // The refined geometry of Grid2DGeom, with a default object on every node.
    Grid2D(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0., int ratio = 1)
        : Grid2DGeom(dx, dy, nx, ny, x0, y0, ratio)
    {
        allocate();
    }
    explicit Grid2D(const GridParams& geometry) { assign_geometry_and_allocate(geometry); }
    ~Grid2D() override = default;

    Grid2D(const Grid2D&) = delete;
    Grid2D& operator=(const Grid2D&) = delete;
    Grid2D(Grid2D&& other) noexcept : Grid2DGeom(other) { take_array_of(other); }
    Grid2D& operator=(Grid2D&& other) noexcept
    {
        if (this != &other)
        {
            Grid2DGeom::operator=(other);
            take_array_of(other);
        }
        return *this;
    }

    // Frees the array (an owned one) and forgets it; the geometry stays.
    void clear() override
    {
        _storage.reset();
        _first_element = nullptr;
        _owner = false;
    }
    // Takes the geometry and puts a fresh default object on every node.
    void reset(const GridParams& geometry) override { assign_geometry_and_allocate(geometry); }

    // Geometry and a copy of every node of `other`.
    void copyFrom(const Grid2D& other)
    {
        if (this == &other)
            return;
        assign_geometry_and_allocate(other);
        if (other._first_element != nullptr)
            std::copy(other._first_element, other._first_element + node_count(), _first_element);
        else
            clear();
    }

    // Every node receives a copy of `value`.
    void initialize(const T& value)
    {
        if (_first_element != nullptr)
            std::fill(_first_element, _first_element + node_count(), value);
    }

    T& getObject(int i, int j) { return *pointer(i, j); }
    const T& getObject(int i, int j) const { return *pointer(i, j); }
    T* pointer(int i, int j)
    {
        check_node(i, j);
        return _first_element + index(i, j);
    }
    const T* pointer(int i, int j) const
    {
        check_node(i, j);
        return _first_element + index(i, j);
    }

    bool isOwner() const { return _owner; }
    bool isAllocated() const { return _first_element != nullptr; }
    // Number of nodes, nx * ny.
    std::size_t node_count() const
    {
        return _nx > 0 && _ny > 0 ? static_cast<std::size_t>(_nx) * static_cast<std::size_t>(_ny) : 0;
    }

protected:
    // Tag of the constructor that makes a shallow view.
    struct ShallowView
    {
    };
    // Same geometry and same array as `other`, without owning it.
    Grid2D(const Grid2D& other, ShallowView) : Grid2DGeom(other), _first_element(other._first_element) {}

    // Turns this grid into a shallow view of `other`'s array.
    void view_of(const Grid2D& other)
    {
        Grid2DGeom::operator=(other);
        _storage.reset();
        _first_element = other._first_element;
        _owner = false;
    }

    std::size_t index(int i, int j) const
    {
        return static_cast<std::size_t>(j) * static_cast<std::size_t>(_nx) + static_cast<std::size_t>(i);
    }

    void check_node(int i, int j) const
    {
        MP_ASSERT_TEXT(_first_element != nullptr, "_first_element != NULL");
        MP_ASSERT(i >= 0);
        MP_ASSERT(i < _nx);
        MP_ASSERT(j >= 0);
        MP_ASSERT(j < _ny);
    }

    T* _first_element = nullptr;

private:
    void assign_geometry_and_allocate(const GridParams& geometry)
    {
        GridParams::reset(geometry);
        allocate();
    }

    // One allocation for all the nodes, each built by T's default constructor.
    void allocate()
    {
        clear();
        const std::size_t count = node_count();
        if (count == 0)
            return;
        _storage = std::make_unique<T[]>(count);
        _first_element = _storage.get();
        _owner = true;
    }

    void take_array_of(Grid2D& other)
    {
        _storage = std::move(other._storage);
        _first_element = other._first_element;
        _owner = other._owner;
        other._first_element = nullptr;
        other._owner = false;
    }

    std::unique_ptr<T[]> _storage;
    bool _owner = false;
};
