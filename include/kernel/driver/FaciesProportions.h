#pragma once
// Shares of the facies families, weighted by thickness: by elevation slice
// over a set of logs (a vertical proportion curve), or over each whole
// column of the block (a proportion matrix). Display-free: the batch writes
// them as semicolon-separated files, the desktop draws them.

#include "kernel/common/Constants.h"
#include "kernel/files/CoreSample.h"

#include <array>
#include <string>
#include <vector>

class CoreList;
class Domain;

class FaciesProportions
{
public:
    static constexpr int MP_NB_FAMILIES = CoreSample::MP_MAX_FACIES_ID + 1;

    // No row and no leading column.
    FaciesProportions() = default;

    // Slices of height dz from `z0` (the lowest base of the logs when
    // undefined) up to their highest top, geographic elevations; no slice
    // without any sample, bounds on whole micrometres. Overlaps of a
    // micrometre or less are rounding and count for nothing.
    static FaciesProportions vertical_curve(const CoreList& logs, double dz, double z0 = MP_UNDEF_REAL);
    // One row per node of the block, j slowest, over the whole column.
    static FaciesProportions matrix(const Domain& domain);

    int rows() const { return static_cast<int>(_rows.size()); }
    // The leading values of a row: z_bottom, z_top, nb_columns for a curve;
    // i, j, x, y for a matrix.
    const std::vector<double>& labels(int row) const { return _rows.at(static_cast<size_t>(row)).labels; }
    // Thickness of deposits counted in the row, summed over the columns.
    double thickness(int row) const;
    // Share of the family in that thickness, 0 when there is none.
    double share(int row, unsigned char family) const;
    // Share of the sand families together.
    double sand_share(int row) const;

    // The header line, then one line per row; false with a message on failure.
    bool write(const std::string& path, std::string& error) const;

private:
    struct Row
    {
        std::vector<double> labels;
        std::array<double, MP_NB_FAMILIES> thickness{};
    };

    explicit FaciesProportions(std::vector<std::string> label_names) : _label_names(std::move(label_names)) {}

    std::vector<std::string> _label_names;
    std::vector<Row> _rows;
};
