#pragma once
// An element of a doubly linked chain: a value with links to its neighbours.
// Destroying an element does not unlink it; the chain's owner does that.

template <typename T> class LinkedElement1D : public T
{
public:
    LinkedElement1D() = default;
    explicit LinkedElement1D(const T& value) : T(value) {}
    ~LinkedElement1D() override = default;
    LinkedElement1D(const LinkedElement1D&) = delete;
    LinkedElement1D& operator=(const LinkedElement1D&) = delete;

    LinkedElement1D* prev() const { return _prev; }
    LinkedElement1D* next() const { return _next; }
    void prev(LinkedElement1D* element) { _prev = element; }
    void next(LinkedElement1D* element) { _next = element; }

private:
    LinkedElement1D* _prev = nullptr;
    LinkedElement1D* _next = nullptr;
};
