#include "gui/ProgressCounter.h"

ProgressCounter::Answer ProgressCounter::progress(int n)
{
    if (n < 0)
    {
        _open = true;
        _total = -n;
        _count = 0;
        return UPDATE;
    }
    if (!_open)
        return CLOSED;
    _count += n;
    return _count >= _total ? DONE : UPDATE;
}
