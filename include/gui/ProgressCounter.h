#pragma once
// The count behind the progress dialog: the kernel opens it with minus the
// total and adds to it as it goes.

class ProgressCounter
{
public:
    enum Answer
    {
        // No dialog open: the kernel stops.
        CLOSED,
        // The total is reached: go on, nothing to show.
        DONE,
        // Show the count and ask whether to go on.
        UPDATE
    };

    // A negative `n` opens with the total -n and a count of 0; a positive one
    // adds to the count.
    Answer progress(int n);
    void close() { _open = false; }
    bool isOpen() const { return _open; }
    int total() const { return _total; }
    int count() const { return _count; }

private:
    bool _open = false;
    int _total = 0;
    int _count = 0;
};
