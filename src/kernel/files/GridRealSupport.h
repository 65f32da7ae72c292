#pragma once
// Small helpers shared by the files of GridReal: the orders of the axes in
// which the readers and writers walk the nodes.

#include "kernel/files/BaseDataFile.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>

namespace grid_real_support
{
// Axis letter (0 x, 1 y, 2 z) and direction of one term of an order string.
struct OrderTerm
{
    int axis = 0;
    bool descending = false;
};

inline bool parse_term(const std::string& term, OrderTerm& parsed)
{
    std::string upper = BaseDataFile::trim(term);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (upper.size() != 2 || (upper[0] != '+' && upper[0] != '-'))
        return false;
    if (upper[1] < 'X' || upper[1] > 'Z')
        return false;
    parsed.axis = upper[1] - 'X';
    parsed.descending = upper[0] == '-';
    return true;
}

// The three terms of an order, fastest first, with three distinct axes.
inline bool parse_order(const std::string& o1, const std::string& o2, const std::string& o3,
                        OrderTerm terms[3])
{
    if (!parse_term(o1, terms[0]) || !parse_term(o2, terms[1]) || !parse_term(o3, terms[2]))
        return false;
    return terms[0].axis != terms[1].axis && terms[0].axis != terms[2].axis && terms[1].axis != terms[2].axis;
}

inline bool split_order(const std::string& order, std::string& o1, std::string& o2, std::string& o3)
{
    const std::string text = BaseDataFile::trim(order);
    const size_t first = text.find(' ');
    if (first == std::string::npos)
        return false;
    const size_t second = text.find(' ', first + 1);
    if (second == std::string::npos)
        return false;
    o1 = BaseDataFile::trim(text.substr(0, first));
    o2 = BaseDataFile::trim(text.substr(first + 1, second - first - 1));
    o3 = BaseDataFile::trim(text.substr(second + 1));
    return true;
}

// Walks the nodes of a grid in the order of three terms: position a[t] along
// term t becomes the index of the term's axis, counted from the far end when descending.
class OrderWalk
{
public:
    OrderWalk(const OrderTerm terms[3], int nx, int ny, int nz) : _counts{nx, ny, nz}
    {
        std::copy(terms, terms + 3, _terms);
    }
    int count(int term) const { return _counts[_terms[term].axis]; }
    void node(int a1, int a2, int a3, int& i, int& j, int& k) const
    {
        const int a[3] = {a1, a2, a3};
        int ijk[3] = {0, 0, 0};
        for (int t = 0; t < 3; ++t)
        {
            const int n = _counts[_terms[t].axis];
            ijk[_terms[t].axis] = _terms[t].descending ? n - 1 - a[t] : a[t];
        }
        i = ijk[0];
        j = ijk[1];
        k = ijk[2];
    }
    // Calls visit(i, j, k) on every node in walk order until it answers false.
    template <typename F> void visit(F visit) const
    {
        for (int a3 = 0; a3 < count(2); ++a3)
            for (int a2 = 0; a2 < count(1); ++a2)
                for (int a1 = 0; a1 < count(0); ++a1)
                {
                    int i = 0, j = 0, k = 0;
                    node(a1, a2, a3, i, j, k);
                    if (!visit(i, j, k))
                        return;
                }
    }

private:
    OrderTerm _terms[3];
    int _counts[3];
};
} // namespace grid_real_support
