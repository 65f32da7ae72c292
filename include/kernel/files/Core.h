#pragma once
// A well log held as a list of intervals from the top downward: the exchange
// form between well files, conditioning wells and logs drawn from the block.
// Two file formats reach it: the native FLW text, read and written, and a LAS
// subset, read only, whose intervals are placed along a trajectory file.

#include "kernel/common/Constants.h"
#include "kernel/files/CoreSample.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"

#include <string>
#include <vector>

class iTracer;
class CoreList;
class GridParams;
class GridReal;
class InDataFile;

// Formats of well files; any other value is unknown.
enum WellFileFormat
{
    WELL_FORMAT_FLW = 0,
    WELL_FORMAT_LAS = 1,
    WELL_FORMAT_UNKNOWN = 3
};

// What one LAS file gives: its header and the intervals read from its rows.
struct LASFaciesList
{
    std::string name;
    // 0 splits the rows by whitespace.
    char delimiter = 0;
    double start = MP_UNDEF_REAL;
    double stop = MP_UNDEF_REAL;
    double elevation = 0.;
    // 1e30: the rows are not regular.
    double step = MP_UNDEF_REAL;
    double nullValue = -9999.;
    double x = MP_UNDEF_REAL;
    double y = MP_UNDEF_REAL;
    // Intervals from the start depth downward; each length is measured along the hole.
    std::vector<CoreSample> samples;
};

class Core
{
public:
    explicit Core(const std::string& name = "", iTracer* tracer = nullptr);
    Core(double x, double y, double z, const std::string& name = "", iTracer* tracer = nullptr);
    virtual ~Core() = default;
    Core(const Core&) = default;
    Core& operator=(const Core&) = default;

    // --- Files
    static int get_format(const std::string& path);
    static std::string get_format_label(int format);
    // LAS files name their well under "WELL"; FLW files take `defaultName`.
    static bool get_name(const std::string& path, const std::string& defaultName, std::string& name);
    // The trajectory is needed by LAS logs only.
    bool read(const std::string& path, const std::string& trajectoryPath = "");
    bool write(const std::string& path, const std::string& comment) const;

    // --- Samples; each is refused when its facies identifier is above 13
    // Below the current bottom, straight down.
    bool add(unsigned char facies, double thickness, const CoreSampleTags& tags = CoreSampleTags());
    bool add(unsigned char facies, double thickness, double length,
             const CoreSampleTags& tags = CoreSampleTags());
    // Down to the given bottom; thickness and length come from the previous bottom (or the head).
    bool add(unsigned char facies, double x, double y, double z,
             const CoreSampleTags& tags = CoreSampleTags());
    void clear() { _samples.clear(); }
    bool empty() const { return _samples.empty(); }
    int size() const { return static_cast<int>(_samples.size()); }
    const std::vector<CoreSample>& getSamples() const { return _samples; }
    std::vector<CoreSample>& getSamples() { return _samples; }
    const CoreSample& getSample(int index) const { return _samples.at(static_cast<size_t>(index)); }

    // --- Placement
    Point3D top() const;
    Point3D bottom() const;
    const Point2D& top_location() const { return _topLocation; }
    Point2D bottom_location() const;
    double top_elevation() const { return _topElevation; }
    double bottom_elevation() const;
    double height() const { return _topElevation - bottom_elevation(); }
    void set_top(const Point3D& top);
    void set_top_location(const Point2D& location) { _topLocation = location; }
    void set_top_elevation(double z) { _topElevation = z; }
    // Identifies a well location: the head's position as text.
    std::string key() const { return _topLocation.debug(); }
    // The head (bottom) stands on a node of the grid, the location being geographic.
    bool is_top_inside(const GridParams& domain) const;
    bool is_bottom_inside(const GridParams& domain) const;

    // --- Description
    const std::string& getName() const { return _name; }
    void setName(const std::string& name) { _name = name; }
    iTracer* getTracer() const { return _tracer; }
    void setTracer(iTracer* tracer) { _tracer = tracer; }
    bool isVertical() const { return _vertical; }
    void setVertical(bool vertical) { _vertical = vertical; }
    bool isStandardFacies() const { return _standardFacies; }
    void setStandardFacies(bool standard) { _standardFacies = standard; }
    const std::string& getError() const { return _error; }
    void setError(const std::string& error) const { _error = error; }
    // True when no sample carries a real attribute value.
    bool has_discrete_attribute() const;

    // --- Geological edits
    // Drops undefined samples at the bottom end, then at the top end (lowering the head).
    void trim();
    // Samples ordered from the top; false when they do not follow one another from the head.
    bool make_downward();
    // Gives thin non-sand runs enclosed by sands to the sands around them.
    void closure(double threshold);
    // Joins neighbours of one facies (and, unless facies are computed, of one attribute).
    void concatenate(bool computedFacies);
    // With computed facies the attributes become the facies names.
    void clean_attributes(bool computedFacies);
    // Keeps what lies between zb and zt (1e30 for either leaves that end as it is).
    bool cut(double zb, double zt);
    // One vertical log per grid column crossed by this deviated log.
    bool split(const GridParams& domain, CoreList& cores) const;
    // Share of [zb, zt] where both logs have the same facies; -1 when they cannot be compared.
    double facies_match(const Core& other, double zb, double zt) const;
    // Height of non-sand samples within [zb, zt].
    double match_non_sand_height(double zb, double zt) const;
    // Extreme heights of the samples (sands only when asked); false without any.
    bool min_and_max_height(double& hmin, double& hmax, bool sandOnly = false) const;
    double min_height(bool sandOnly = false) const;
    double max_height(bool sandOnly = false) const;
    // Moves the log with a surface: by the surface's height at the head above its minimum.
    bool shift_down(const GridReal& topo);
    bool shift_up(const GridReal& topo);

    std::string debug() const;

private:
    bool fail(const std::string& message) const;
    void warn(const std::string& message) const;
    bool add_sample(const CoreSample& sample, int number);
    bool _read_flw(const std::string& path);
    bool _read_flw_header(InDataFile& file, const std::string& path, double& zBottom, int& attributeColumn,
                          int& depthColumn, int xyzColumns[3], int& ageColumn, bool& discrete);
    bool _read_flw_sample(InDataFile& file, const std::string& path, int attributeColumn, bool discrete,
                          int ageColumn, CoreSample& sample);
    bool _read_las(const std::string& path, const std::string& trajectoryPath);
    bool _read_las_header(InDataFile& file, const std::string& path, LASFaciesList& list) const;
    bool _read_las_facies(const std::string& path, LASFaciesList& list) const;
    bool _project_las(const std::string& trajectoryPath, const LASFaciesList& list);
    void _merge(CoreList& cores, Core& core, int number, const GridParams& domain) const;
    bool shift(const GridReal& topo, double sign, const std::string& operation);
    // Facies of the sample covering elevation z, or -1 when none does.
    int facies_at(double z) const;

    std::string _name;
    iTracer* _tracer;
    std::vector<CoreSample> _samples;
    Point2D _topLocation;
    double _topElevation;
    bool _vertical;
    bool _standardFacies;
    mutable std::string _error;
};
