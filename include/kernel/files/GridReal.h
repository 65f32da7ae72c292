#pragma once
// A real value on every node of a regular 2D or 3D grid, with the readers and
// writers of the gridded exchange formats. Surfaces, erodibility and tectonic
// maps and exported simulation variables all travel through it.

#include "kernel/geometry/GridParams.h"

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

class iTracer;
class InDataFile;

// Formats known to the readers and writers; any other value writes plain ascii.
enum GridFileFormat
{
    GRID_FORMAT_F2G = 0,
    GRID_FORMAT_GSLIB = 1,
    GRID_FORMAT_CPS3 = 2,
    GRID_FORMAT_GRDECL = 3,
    GRID_FORMAT_ASCII = 4
};

// Further answers of GridReal::get_format.
constexpr int GRID_FORMAT_UNKNOWN = -1;
constexpr int GRID_FORMAT_ASCII_DETECTED = -2;

class GridReal : public GridParams
{
public:
    GridReal();
    explicit GridReal(const GridParams& params);
    GridReal(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.);
    GridReal(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0, double z0);
    // Row i holds the values of nodes (i, 0..ny-1); rows of unequal length leave an error.
    explicit GridReal(const std::vector<std::vector<double>>& rows);
    ~GridReal() override = default;
    GridReal(const GridReal&) = default;
    GridReal& operator=(const GridReal&) = default;

    void clear() override;
    // Any reset fills the grid with undefined values, forgets the extremes and
    // resets the extra variables to the same geometry.
    void reset(const GridParams& params) override;
    virtual void reset(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.);
    virtual void reset(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0,
                       double z0);
    // True for undefined and in-bound values; out of bounds gives `clamp`,
    // and with `clamp` the value is moved to the bound.
    virtual bool check(double& value, bool clamp) const;
    virtual bool fill(double value);
    virtual bool fill_2D(const std::vector<std::vector<double>>& rows);
    // Data with z slowest, then x, y fastest.
    virtual void fill_yxz(int size, const double* data);
    // Data with x slowest, then y, z fastest.
    virtual void fill_zyx(int size, const double* data);
    // Adds to every node, undefined ones included; the extremes stay as they are.
    virtual void add(double value);
    // Resamples a 2D `source` onto this 2D grid through geographic coordinates.
    virtual bool migrate(const GridReal& source, bool strict, bool warn, iTracer* tracer);
    // The node at array position `index`.
    virtual bool get_at(int& index, double* value) const;
    // Writes the value in every layer of column (i, j).
    virtual bool set_at(int i, int j, double value);
    virtual bool set_at(int i, int j, int k, double value);
    // Layer 0 of column (i, j).
    virtual bool get_at(int i, int j, double& value) const;
    virtual bool get_at(int i, int j, std::vector<double>& column) const;
    virtual bool get_at(int i, int j, int k, double& value) const;
    // `order` serves F2G only; any unknown format writes plain ascii.
    virtual bool write(const std::string& path, iTracer* tracer, int format,
                       const std::string& order = "+Y +X +Z");
    // Detects the format, then reads; GSLIB and plain ascii need the geometry set beforehand.
    virtual bool read(const std::string& path);
    // Reads a surface meant for `geometry`: GSLIB and plain ascii files, which
    // carry no geometry, fill it; the other formats bring their own.
    bool read_on(const std::string& path, const GridParams& geometry);

    // One format each, for callers that know it; GSLIB and plain ascii keep this grid's geometry.
    bool read_f2g(const std::string& path);
    bool read_gslib(const std::string& path);
    bool read_cps3(const std::string& path);
    bool read_ascii(const std::string& path);

    static int get_format(const std::string& path);
    static std::string get_format_label(int format);
    static std::string get_default_order(int format);
    static bool is_order_valid(const std::string& order);
    // The three terms, trimmed but as written, fastest axis first.
    static bool is_order_valid(const std::string& order, std::string& o1, std::string& o2, std::string& o3);
    static bool is_order_valid(const std::string& o1, const std::string& o2, const std::string& o3);

    // Values with x slowest, then y, z fastest.
    std::vector<double> get_values_zyx() const;
    // Mean of defined nodes (no defined node divides by zero).
    double get_mean() const;
    int get_nb_positive() const;
    int get_nb_negative() const;
    bool has_values() const;
    double get_min(int& i, int& j) const;
    double get_max(int& i, int& j) const;
    double get_min() const { return _min; }
    double get_max() const { return _max; }

    // Extra column written beside this grid; the grid is not owned.
    bool add_variable(GridReal* grid);
    const std::vector<GridReal*>& getVariables() const { return _variables; }

    const std::vector<double>& getValues() const { return _values; }
    const std::string& getName() const { return _name; }
    void setName(const std::string& name) { _name = name; }
    const std::string& getUndefinedText() const { return _undefinedText; }
    void setUndefinedText(const std::string& text) { _undefinedText = text; }
    double getUndefinedValue() const { return _undefinedValue; }
    void setUndefinedValue(double value) { _undefinedValue = value; }
    const std::string& getError() const { return _error; }
    void setError(const std::string& error) { _error = error; }

protected:
    size_t node_count() const;
    size_t index_of(int i, int j, int k) const;
    bool fail(const std::string& message);
    void reset_extremes();
    void widen_extremes(int i, int j, double value);

    bool read_f2g_header(InDataFile& file, GridParams& geometry, std::string& order, std::string& undef);
    bool write_f2g(const std::string& path, iTracer* tracer, const std::string& order);
    bool write_gslib(const std::string& path, iTracer* tracer);
    bool write_ascii(const std::string& path, iTracer* tracer);
    // Node lines walked by `order`, gathered in `text`; false on a refused order or a cancel.
    // With a sink, the text goes to it after each outer layer and is left empty.
    bool write_values(std::string& text, iTracer* tracer, const std::string& order,
                      std::ostream* sink = nullptr);
    // Appends the values of node (i, j, k) (this grid's, then its variables'), one line.
    virtual void append_node_line(std::string& text, int i, int j, int k) const;
    // Name and undefined text of each column written, this grid's first.
    virtual std::vector<std::pair<std::string, std::string>> columns() const;
    // Room for any number put_number writes.
    static constexpr int MP_NUMBER_CHARS = 32;
    // Whole values below this in magnitude have six digits at most: put_number writes them as they stand.
    static constexpr int MP_WHOLE_LIMIT = 1000000;
    // Six significant digits in the shortest of fixed and scientific forms.
    static void append_number(std::string& text, double value);
    // The same text written at `out`, which has MP_NUMBER_CHARS of room; answers its end.
    static char* put_number(char* out, double value);
    // The digits of a whole number below a million in magnitude, its sign
    // first: what put_number writes of it.
    static char* put_whole(char* out, int value);

    std::vector<double> _values;
    double _min;
    double _max;
    int _minAt[2];
    int _maxAt[2];
    std::vector<GridReal*> _variables;
    std::string _name = "Var";
    std::string _undefinedText = "NA";
    double _undefinedValue;
    // Index errors of the const readers are reported here too.
    mutable std::string _error;
};
