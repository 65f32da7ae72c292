#pragma once
// Walks the nodes of a Grid2D through a shallow view on its array.
// Whole-grid walks run i in the inner loop and j in the outer one:
//   do { do { use(it.current_position()); } while (it.move_right()); it.move_left_most(); }
//   while (it.move_top());

#include "kernel/geometry/Grid2D.h"

template <typename T> class Grid2DIterator : public Grid2D<T>
{
    using Base = Grid2D<T>;

public:
    // Starts on node (0, 0) of `grid`, which must outlive the iterator.
    explicit Grid2DIterator(Grid2D<T>& grid) : Base(grid, typename Base::ShallowView{}) { reset(); }
    Grid2DIterator(const Grid2DIterator& other)
        : Base(other, typename Base::ShallowView{}), _current(other._current), _row_first(other._row_first),
          _i(other._i), _j(other._j)
    {
    }
    Grid2DIterator& operator=(const Grid2DIterator& other)
    {
        if (this != &other)
        {
            Base::view_of(other);
            _current = other._current;
            _row_first = other._row_first;
            _i = other._i;
            _j = other._j;
        }
        return *this;
    }
    ~Grid2DIterator() override = default;

    // Forgets the grid.
    void clear() override
    {
        Base::clear();
        _current = nullptr;
        _row_first = nullptr;
        _i = 0;
        _j = 0;
    }
    // Back to node (0, 0).
    virtual void reset()
    {
        _current = this->_first_element;
        _row_first = this->_first_element;
        _i = 0;
        _j = 0;
    }

    // Each move returns false, and does not move, at the edge of the grid.
    virtual bool move_left()
    {
        if (_current == nullptr || _i <= 0)
            return false;
        --_i;
        --_current;
        return true;
    }
    virtual bool move_right()
    {
        if (_current == nullptr || _i >= this->_nx - 1)
            return false;
        ++_i;
        ++_current;
        return true;
    }
    virtual bool move_bottom()
    {
        if (_current == nullptr || _j <= 0)
            return false;
        --_j;
        _current -= this->_nx;
        _row_first -= this->_nx;
        return true;
    }
    virtual bool move_top()
    {
        if (_current == nullptr || _j >= this->_ny - 1)
            return false;
        ++_j;
        _current += this->_nx;
        _row_first += this->_nx;
        return true;
    }
    // Back to i = 0 in the current row.
    virtual void move_left_most()
    {
        _current = _row_first;
        _i = 0;
    }
    // The element under the iterator (null on a grid without array).
    virtual T* current_position() const { return _current; }

    // Jumps to node (i, j).
    T* locate(int i, int j)
    {
        _current = this->pointer(i, j);
        _row_first = this->pointer(0, j);
        _i = i;
        _j = j;
        return _current;
    }

    int get_i() const { return _i; }
    int get_j() const { return _j; }

private:
    // The iterator walks; it never takes a new geometry.
    using Base::reset;

    T* _current = nullptr;
    T* _row_first = nullptr;
    int _i = 0;
    int _j = 0;
};
