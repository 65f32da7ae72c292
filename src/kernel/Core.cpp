#include "kernel/Core.h"

#include "interface/iTracer.h"
#include "kernel/CoreList.h"
#include "kernel/Facies.h"
#include "kernel/GridParams.h"
#include "kernel/GridReal.h"
#include "kernel/InDataFile.h"
#include "kernel/OutDataFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <functional>
#include <iomanip>
#include <map>
#include <sstream>
#include <stdexcept>

namespace
{
// Two sample ends closer than this are taken as one.
const double ADJACENCY_TOLERANCE = 1e-3;
// Tolerance on depths of LAS rows against the header's start and stop.
const double LAS_DEPTH_TOLERANCE = 0.001;
const double LAS_MIN_STEP = 0.01;

std::string text_of(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// Values as written with four decimals, so that depths match the written elevations.
double rounded4(double value)
{
    return std::round(value * 1e4) / 1e4;
}

bool seek_any_section(InDataFile& file, const char* const* names)
{
    for (; *names != nullptr; ++names)
        if (file.seek_section(*names))
            return true;
    return false;
}

const char* const ASCII_SECTIONS[] = {"Ascii", "ASCII", "A", nullptr};
const char* const VERSION_SECTIONS[] = {"Version", "VERSION", "V", nullptr};
const char* const WELL_SECTIONS[] = {"Well", "WELL", "W", nullptr};
const char* const CURVE_SECTIONS[] = {"Curve", "CURVE", "C", nullptr};
const char* const PARAMETER_SECTIONS[] = {"Parameter", "PARAMETER", "P", nullptr};

// The fields of one data line, split on whitespace (separator 0) or on a character.
class Fields
{
public:
    Fields(const std::string& line, char separator) : _separator(separator)
    {
        std::istringstream in(line);
        std::string field;
        if (separator == 0)
            while (in >> field)
                _fields.push_back(field);
        else
            while (std::getline(in, field, separator))
                _fields.push_back(field);
    }
    // Field n from 1, converted as a stream extraction would; with whitespace
    // splitting any n below 1 means the first field.
    template <typename T> bool get(int n, T& value) const
    {
        if (n < 1)
        {
            if (_separator != 0)
                return false;
            n = 1;
        }
        if (static_cast<size_t>(n) > _fields.size())
            return false;
        std::istringstream in(_fields[static_cast<size_t>(n) - 1]);
        in >> value;
        return !in.fail() && !in.bad();
    }

private:
    char _separator;
    std::vector<std::string> _fields;
};

// The whole text is one number.
template <typename Number> bool full_number(const std::string& text, Number& value)
{
    std::istringstream in(text);
    in >> value;
    if (in.fail())
        return false;
    in >> std::ws;
    return in.eof();
}

// Mnemonics of the curve section, in column order.
std::vector<std::string> curve_names(InDataFile& file)
{
    std::vector<std::string> names;
    std::string line;
    while (file.next_line(line) && !file.is_section(line, ""))
        names.push_back(upper(BaseDataFile::trim(line.substr(0, line.find('.')))));
    return names;
}

bool is_trajectory_column(const std::string& name)
{
    return name == "X" || name == "Y" || name == "Z" || name == "MD" || name == "TVD" || name == "TVDRT";
}

int column_of(const std::vector<std::string>& names, const std::string& name)
{
    for (size_t k = 0; k < names.size(); ++k)
        if (names[k] == name)
            return static_cast<int>(k) + 1;
    return 0;
}

struct TrajectoryPoint
{
    double md;
    Point3D position;
};

// Overlap of [a, b] with [lo, hi].
double overlap(double a, double b, double lo, double hi)
{
    return std::max(0., std::min(b, hi) - std::max(a, lo));
}

bool is_defined(double z)
{
    return z > MP_MIN_REAL_VALUE && z < MP_MAX_REAL_VALUE;
}
} // namespace

Core::Core(const std::string& name, iTracer* tracer)
    : _name(name), _tracer(tracer), _topElevation(0.), _vertical(true), _standardFacies(true)
{
}

Core::Core(double x, double y, double z, const std::string& name, iTracer* tracer)
    : _name(name), _tracer(tracer), _topLocation(x, y), _topElevation(z), _vertical(true),
      _standardFacies(true)
{
}

bool Core::fail(const std::string& message) const
{
    _error = message;
    return false;
}

void Core::warn(const std::string& message) const
{
    if (_tracer != nullptr)
        _tracer->warning(message);
}

// --- Placement

Point3D Core::top() const
{
    return Point3D(_topLocation, _topElevation);
}

Point3D Core::bottom() const
{
    return Point3D(bottom_location(), bottom_elevation());
}

Point2D Core::bottom_location() const
{
    return _samples.empty() ? _topLocation : _samples.back().getLocation();
}

double Core::bottom_elevation() const
{
    return _samples.empty() ? _topElevation : _samples.back().getZ();
}

void Core::set_top(const Point3D& top)
{
    _topLocation = top;
    _topElevation = top.get_elevation();
}

bool Core::is_top_inside(const GridParams& domain) const
{
    return domain.is_on_grid(domain.geo2Grid(top_location(), true));
}

bool Core::is_bottom_inside(const GridParams& domain) const
{
    return domain.is_on_grid(domain.geo2Grid(bottom_location(), true));
}

bool Core::has_discrete_attribute() const
{
    for (const CoreSample& sample : _samples)
        if (sample.hasAttributeValue())
            return false;
    return true;
}

// --- Samples

bool Core::add_sample(const CoreSample& sample, int facies)
{
    if (facies > CoreSample::MP_MAX_FACIES_ID)
        return fail("Invalid facies for sample #" + std::to_string(_samples.size() + 1) +
                    " (unknown facies identifier: " + std::to_string(facies) + ")");
    _samples.push_back(sample);
    return true;
}

bool Core::add(unsigned char facies, double thickness, const CoreSampleTags& tags)
{
    return add(facies, thickness, thickness, tags);
}

bool Core::add(unsigned char facies, double thickness, double length, const CoreSampleTags& tags)
{
    const double height = std::max(thickness, CoreSample::MP_MIN_SAMPLE_HEIGHT);
    return add_sample(
        CoreSample(facies, height, length, bottom_elevation() - height, bottom_location(), tags), facies);
}

bool Core::add(unsigned char facies, double x, double y, double z, const CoreSampleTags& tags)
{
    const Point3D previous = bottom();
    const Point3D next(x, y, z);
    return add_sample(
        CoreSample(facies, previous.get_elevation() - z, previous.distance(next), z, Point2D(x, y), tags),
        facies);
}

// --- Formats

int Core::get_format(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open() || !seek_any_section(file, ASCII_SECTIONS))
        return WELL_FORMAT_UNKNOWN;
    if (seek_any_section(file, VERSION_SECTIONS) && seek_any_section(file, WELL_SECTIONS) &&
        seek_any_section(file, CURVE_SECTIONS))
        return WELL_FORMAT_LAS;
    return file.seek_keyword("X_WELL") ? WELL_FORMAT_FLW : WELL_FORMAT_UNKNOWN;
}

std::string Core::get_format_label(int format)
{
    switch (format)
    {
    case WELL_FORMAT_FLW:
        return "FLW";
    case WELL_FORMAT_LAS:
        return "LAS";
    default:
        return "UNDEFINED";
    }
}

bool Core::get_name(const std::string& path, const std::string& defaultName, std::string& name)
{
    name = MP_UNDEF_STRING;
    switch (get_format(path))
    {
    case WELL_FORMAT_FLW:
        name = defaultName;
        return true;
    case WELL_FORMAT_LAS:
    {
        InDataFile file(path);
        file.setKeySeparator('.');
        return file.get_key_value("WELL", name, false);
    }
    default:
        return false;
    }
}

bool Core::read(const std::string& path, const std::string& trajectoryPath)
{
    _error.clear();
    try
    {
        switch (get_format(path))
        {
        case WELL_FORMAT_FLW:
            return _read_flw(path);
        case WELL_FORMAT_LAS:
            return _read_las(path, trajectoryPath);
        default:
            return fail("Unknown format of well file " + path);
        }
    }
    catch (const std::exception& failure)
    {
        return fail("Cannot read well file " + path + ": " + failure.what());
    }
}

// --- FLW

bool Core::write(const std::string& path, const std::string& comment) const
{
    if (_topElevation < bottom_elevation())
        return fail("Invalid core elevations: top elevation (" + text_of(_topElevation) +
                    ") is lower than bottom elevation (" + text_of(bottom_elevation()) + ")");
    OutDataFile out(path);
    if (!out.is_open())
        return fail("Cannot write well file " + path);
    out.separator();
    out.comment(comment);
    out.comment("Coordinates, depth and thickness are expressed in meters");
    out.separator();
    out.comment("");
    out.comment("Well Location");
    out.key_value("X_WELL", _topLocation.get_abscissa());
    out.key_value("Y_WELL", _topLocation.get_ordinate());
    out.comment("");
    out.comment("Bottom elevation");
    out.key_value("Z_BOTTOM", bottom_elevation(), 4);
    out.comment("Top elevation");
    out.key_value("Z_TOP", _topElevation, 4);
    out.comment("");
    out.comment("Deposits listed from top to bottom");
    if (!_vertical)
    {
        out.comment("Warning:");
        out.comment("  [X|Y|Z]_bottom = sample bottom geographical location");
        out.key_value("ATTRIBUTE_COLUMN", 1);
        out.key_value("XS_BOT", 2);
        out.key_value("YS_BOT", 3);
        out.key_value("ZS_BOT", 4);
        out.key_value("HEIGHT_COLUMN", 5);
        if (_standardFacies)
        {
            out.key_value("AGE_COLUMN", 5);
            out.key_value("FACIES_ID", 6);
        }
    }
    else
    {
        out.comment("  Depth = bottom sample distance from top of the pillar (Z_TOP)");
        out.key_value("ATTRIBUTE_COLUMN", 1);
        out.key_value("DEPTH_COLUMN", 2);
        out.key_value("HEIGHT_COLUMN", 3);
        if (_standardFacies)
        {
            out.key_value("AGE_COLUMN", 4);
            out.key_value("FACIES_ID", 5);
        }
    }
    const bool discrete = has_discrete_attribute();
    if (_standardFacies)
    {
        out.comment("Standard well format:");
        out.key_value("DISCRETE_ATTRIBUTE", 1);
        out.key_value("STANDARD_FACIES", 1);
    }
    else
    {
        out.comment("Non standard well format:");
        out.key_value("DISCRETE_ATTRIBUTE", discrete ? 1 : 0);
        out.key_value("STANDARD_FACIES", 0);
    }
    out.section("Ascii");
    for (const CoreSample& sample : _samples)
    {
        std::ostringstream line;
        line << std::fixed << std::setprecision(4);
        if (_standardFacies)
            line << std::setw(3) << static_cast<int>(Facies::family(sample.getFacies())) << ' ';
        else if (discrete)
            line << std::setw(12) << sample.getAttributeText() << ' ';
        else
            line << std::setw(12) << sample.getAttributeValue() << ' ';
        if (_vertical)
            line << std::setw(7) << rounded4(_topElevation) - rounded4(sample.getZ()) << ' ';
        else
            line << std::setw(7) << sample.getLocation().get_abscissa() << ' ' << std::setw(7)
                 << sample.getLocation().get_ordinate() << ' ' << std::setw(7) << sample.getZ() << ' ';
        line << std::setw(7) << sample.getHeight();
        if (_standardFacies)
            line << ' ' << std::setw(8) << sample.getAge() << ' ' << std::setw(4)
                 << Facies::description(sample.getFacies()).short_name();
        out << line.str() << "\n";
    }
    out.close();
    if (out.fail())
        return fail("Cannot write well file " + path);
    return true;
}

bool Core::_read_flw_header(InDataFile& file, const std::string& path, double& zBottom, int& attributeColumn,
                            int& depthColumn, int xyzColumns[3], int& ageColumn, bool& discrete)
{
    double x = 0.;
    double y = 0.;
    double zTop = 0.;
    if (!file.get_key_value("X_WELL", x))
        return fail("Error when parsing X_WELL in file " + path);
    if (!file.get_key_value("Y_WELL", y))
        return fail("Error when parsing Y_WELL in file " + path);
    if (!file.get_key_value("Z_BOTTOM", zBottom))
        return fail("Error when parsing Z_BOTTOM in file " + path);
    if (!file.get_key_value("Z_TOP", zTop))
        return fail("Error when parsing Z_TOP in file " + path);
    if (zBottom > zTop)
        return fail("Error: Z_TOP < Z_BOTTOM in file " + path);
    _topLocation.reset(x, y);
    _topElevation = zTop;

    discrete = true;
    if (!file.get_key_value("FACIES_COLUMN", attributeColumn))
    {
        if (!file.get_key_value("ATTRIBUTE_COLUMN", attributeColumn))
            return fail("Error when parsing ATTRIBUTE_COLUMN keyword in file " + path);
        int discreteFlag = 0;
        int standardFlag = 0;
        if (!file.get_key_value("DISCRETE_ATTRIBUTE", discreteFlag) ||
            !file.get_key_value("STANDARD_FACIES", standardFlag))
            return fail("Error when parsing DISCRETE_ATTRIBUTE or STANDARD_FACIES keyword in file " + path);
        _standardFacies = standardFlag == 1;
        discrete = discreteFlag == 1;
    }

    if (file.get_key_value("XS_BOT", xyzColumns[0]))
    {
        _vertical = false;
        if (!file.get_key_value("YS_BOT", xyzColumns[1]))
            return fail("Error when parsing YS_BOT keyword in file " + path);
        if (!file.get_key_value("ZS_BOT", xyzColumns[2]))
            return fail("Error when parsing ZS_BOT keyword in file " + path);
    }
    else if (!file.get_key_value("DEPTH_COLUMN", depthColumn))
        return fail("Error when parsing DEPTH_COLUMN keyword in file " + path);

    if (!file.get_key_value("AGE_COLUMN", ageColumn))
        ageColumn = 0;
    if (!file.seek_section("Ascii"))
        return fail("Error when parsing input file. Ascii section was not found in file " + path);
    return true;
}

bool Core::_read_flw_sample(InDataFile& file, const std::string& path, int attributeColumn, bool discrete,
                            int ageColumn, CoreSample& sample)
{
    const std::string& line = file.get_line();
    const Fields fields(line, 0);
    const std::string where = path + " " + line;
    std::string attribute;
    const bool hasAttribute = fields.get(attributeColumn, attribute);
    if (_standardFacies)
    {
        int facies = 0;
        if (!hasAttribute || !full_number(attribute, facies))
            return fail("Error: facies is not an integer in file " + where);
        if (facies < 0 || facies > CoreSample::MP_MAX_FACIES_ID)
            return fail("Error: facies id out of range in file " + where);
        sample.setFacies(static_cast<unsigned char>(facies));
        sample.setGrainClass(Facies::facies_register().default_granulo_class(sample.getFacies()));
        sample.setAttributeName(Facies::description(sample.getFacies()).long_name());
    }
    else if (discrete)
    {
        if (!hasAttribute || attribute.empty())
            return fail("Error: attribute is empty in file " + where);
        sample.setAttributeName(attribute);
    }
    else
    {
        if (!hasAttribute)
            return fail("Error: value is not a number in file " + where);
        try
        {
            sample.setAttributeValue(std::stod(attribute));
        }
        catch (const std::logic_error&)
        {
            return fail("Error: value is not a number in file " + where);
        }
        sample.setAttributeName(attribute);
    }
    sample.setAttributeText(attribute);
    unsigned int age = 0;
    if (ageColumn != 0 && !fields.get(ageColumn, age))
        return fail("Error: value is not a number in file " + where);
    sample.setAge(age);
    return true;
}

bool Core::_read_flw(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read well file " + path);
    _samples.clear();
    _vertical = true;
    _standardFacies = true;
    double zBottom = 0.;
    int attributeColumn = 0;
    int depthColumn = 0;
    int xyzColumns[3] = {0, 0, 0};
    int ageColumn = 0;
    bool discrete = true;
    if (!_read_flw_header(file, path, zBottom, attributeColumn, depthColumn, xyzColumns, ageColumn, discrete))
        return false;

    double previousDepth = 0.;
    while (file.next_line() && !file.is_section(file.get_line(), ""))
    {
        const std::string line = file.get_line();
        CoreSample sample;
        if (!_read_flw_sample(file, path, attributeColumn, discrete, ageColumn, sample))
            return false;
        const Fields fields(line, 0);
        CoreSampleTags tags;
        tags.age = sample.getAge();
        tags.grainClass = sample.getGrainClass();
        tags.attributeText = sample.getAttributeText();
        tags.attributeValue = sample.getAttributeValue();
        tags.attributeName = sample.getAttributeName();
        if (_vertical)
        {
            double depth = 0.;
            if (!fields.get(depthColumn, depth))
                return fail("Error: value is not a number in file " + path + " " + line);
            if (std::fabs(depth - previousDepth) < MP_EPSILON)
            {
                warn("Core sample with null length is ignored in well file " + path + " " + line);
                continue;
            }
            const double thickness = depth - previousDepth;
            _samples.emplace_back(sample.getFacies(), thickness, thickness, _topElevation - depth,
                                  _topLocation, tags);
            previousDepth = depth;
        }
        else
        {
            double xyz[3] = {0., 0., 0.};
            for (int k = 0; k < 3; ++k)
                if (!fields.get(xyzColumns[k], xyz[k]))
                    return fail("Error: value is not a number in file " + path + " " + line);
            if (bottom().distance(Point3D(xyz[0], xyz[1], xyz[2])) < MP_EPSILON)
            {
                warn("Core sample with null length is ignored in well file " + path + " " + line);
                continue;
            }
            add(sample.getFacies(), xyz[0], xyz[1], xyz[2], tags);
        }
    }
    if (_samples.empty())
        return fail("Error: no deposits read");
    if (std::fabs(bottom_elevation() - zBottom) > MP_EPSILON)
        return fail("The bottom of the well has not been reached! Well Bottom = " + text_of(zBottom) +
                    " Last Sample Bottom = " + text_of(bottom_elevation()) + " in file " + path);
    return true;
}

// --- LAS

bool Core::_read_las(const std::string& path, const std::string& trajectoryPath)
{
    if (path.empty() || trajectoryPath.empty())
        return fail("Cannot import LAS well: facies and trajectory files must be defined");
    LASFaciesList list;
    if (!_read_las_facies(path, list))
        return false;
    return _project_las(trajectoryPath, list);
}

bool Core::_read_las_header(InDataFile& file, const std::string& path, LASFaciesList& list) const
{
    std::string text;
    if (!file.get_key_value("WRAP", text))
        return fail("Error when parsing WRAP in file " + path);
    if (upper(text) != "NO")
        return fail("Error: WRAP must be NO in file " + path);
    list.delimiter = 0;
    if (file.seek_keyword("DLM"))
    {
        file.get_key_value("DLM", text);
        text = upper(text);
        if (text == "TAB")
            list.delimiter = '\t';
        else if (text == "COMMA")
            list.delimiter = ',';
        else if (text != "SPACE")
            return fail("Error: DLM must be SPACE, TAB or COMMA in file " + path);
    }
    if (file.seek_keyword("DEPTH_TYPE"))
    {
        file.get_key_value("DEPTH_TYPE", text);
        if (upper(text) != "MD")
            return fail("Error: DEPTH_TYPE must be MD in file " + path);
    }
    if (!file.get_key_value("STRT", list.start))
        return fail("Error when parsing STRT in file " + path);
    if (!file.get_key_value("STOP", list.stop))
        return fail("Error when parsing STOP in file " + path);
    if (list.start > list.stop)
        return fail("Error: STRT > STOP in file " + path);
    if (!file.get_key_value("ELEV", list.elevation))
        list.elevation = 0.;
    list.step = MP_UNDEF_REAL;
    if (file.seek_keyword("STEP"))
    {
        double step = MP_UNDEF_REAL;
        if (!file.get_key_value("STEP", step) || step < LAS_MIN_STEP || step >= MP_UNDEF_REAL)
            return fail("Error: STEP must be greater than " + text_of(LAS_MIN_STEP) + "m in file " + path);
        list.step = step;
    }
    if (!file.get_key_value("NULL", list.nullValue))
        return fail("Error when parsing NULL in file " + path);
    if (!file.get_key_value("WELL", list.name, false))
        return fail("Error when parsing WELL in file " + path);
    list.x = MP_UNDEF_REAL;
    list.y = MP_UNDEF_REAL;
    if (seek_any_section(file, PARAMETER_SECTIONS))
    {
        double x = MP_UNDEF_REAL;
        double y = MP_UNDEF_REAL;
        const bool hasX = file.get_key_value("XWELL", x);
        const bool hasY = file.get_key_value("YWELL", y);
        if (hasX != hasY)
            return fail("Error when parsing XWELL and YWELL in file " + path);
        if (hasX)
        {
            list.x = x;
            list.y = y;
        }
    }
    return true;
}

bool Core::_read_las_facies(const std::string& path, LASFaciesList& list) const
{
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read well file " + path);
    file.setKeySeparator('.');
    if (!seek_any_section(file, WELL_SECTIONS))
        return fail("Error when parsing input file. Well section was not found in file " + path);
    if (!seek_any_section(file, CURVE_SECTIONS))
        return fail("Error when parsing input file. Curve section was not found in file " + path);
    if (!_read_las_header(file, path, list))
        return false;

    seek_any_section(file, CURVE_SECTIONS);
    const std::vector<std::string> names = curve_names(file);
    int depthColumn = 0;
    int attributeColumn = 0;
    for (size_t k = 0; k < names.size(); ++k)
    {
        const int column = static_cast<int>(k) + 1;
        if (names[k] == "DEPTH" || names[k] == "DEPT")
        {
            if (depthColumn == 0)
                depthColumn = column;
        }
        else if (!is_trajectory_column(names[k]))
        {
            if (attributeColumn != 0)
                return fail("Error: Only one <attribute> column is authorized in file " + path);
            attributeColumn = column;
        }
    }
    if (depthColumn == 0 || attributeColumn == 0)
        return fail("Error: DEPTH and <attribute> column positions not found in file " + path);
    if (!seek_any_section(file, ASCII_SECTIONS))
        return fail("Error when parsing input file. Ascii section was not found in file " + path);

    // Each row covers the interval between the midpoints to its neighbours;
    // the first starts at the start depth and the last ends at the stop depth.
    const FaciesDescription undefined;
    list.samples.clear();
    bool pending = false;
    double pendingDepth = 0.;
    std::string pendingAttribute;
    std::string pendingLine;
    double intervalTop = list.start;
    auto emit = [&](double bottom)
    {
        double value = MP_UNDEF_REAL;
        const bool numeric = full_number(pendingAttribute, value);
        CoreSampleTags tags;
        if (numeric && std::fabs(value - list.nullValue) < MP_EPSILON)
        {
            tags.attributeText = undefined.short_name();
            tags.attributeName = undefined.long_name();
        }
        else
        {
            tags.attributeText = pendingAttribute;
            tags.attributeName = pendingAttribute;
            tags.attributeValue = numeric ? value : MP_UNDEF_REAL;
        }
        const double length = bottom - intervalTop;
        if (!list.samples.empty() && list.samples.back().getAttributeText() == tags.attributeText)
            list.samples.back().setLength(list.samples.back().getLength() + length);
        else
            list.samples.emplace_back(0, length, length, 0., Point2D(), tags);
        intervalTop = bottom;
    };
    while (file.next_line() && !file.is_section(file.get_line(), ""))
    {
        const std::string line = file.get_line();
        const Fields fields(line, list.delimiter);
        double depth = 0.;
        if (!fields.get(depthColumn, depth))
            return fail("Error: depth is not a number in file " + path + " " + line);
        if (!pending && std::fabs(depth - list.start) > LAS_DEPTH_TOLERANCE)
            return fail("Error: first measure depth (MD) is not equal to the start depth (STRT) in file " +
                        path + " " + line);
        if (pending && depth < pendingDepth)
            return fail("Error: decreasing depth forbidden in well " + path + " " + line);
        if (pending && list.step != MP_UNDEF_REAL && std::fabs(depth - pendingDepth - list.step) > MP_EPSILON)
            return fail("Error: well is not regular in well " + path + " " + line);
        std::string attribute;
        if (!fields.get(attributeColumn, attribute))
            return fail("Error: attribute is not a valid string in file " + path + " " + line);
        if (pending)
        {
            const double middle = 0.5 * (pendingDepth + depth);
            if (middle > list.stop + LAS_DEPTH_TOLERANCE)
                return fail("Error: sample bottom elevation is below well bottom in well " + path + " " +
                            pendingLine);
            emit(middle);
        }
        pending = true;
        pendingDepth = depth;
        pendingAttribute = attribute;
        pendingLine = line;
    }
    if (pending)
    {
        if (pendingDepth > list.stop + LAS_DEPTH_TOLERANCE)
            return fail("Error: sample bottom elevation is below well bottom in well " + path + " " +
                        pendingLine);
        emit(std::max(list.stop, pendingDepth));
    }
    for (const CoreSample& sample : list.samples)
        if (sample.getAttributeText() != undefined.short_name())
            return true;
    return fail("Error: no defined sample in well " + path);
}

bool Core::_project_las(const std::string& trajectoryPath, const LASFaciesList& list)
{
    const std::string& path = trajectoryPath;
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read trajectory file " + path);
    file.setKeySeparator('.');
    LASFaciesList head;
    if (!_read_las_header(file, path, head))
        return false;
    const bool bothPlaced = head.x != MP_UNDEF_REAL && list.x != MP_UNDEF_REAL;
    if (head.name != list.name || std::fabs(head.elevation - list.elevation) > MP_EPSILON ||
        (bothPlaced && (std::fabs(head.x - list.x) > MP_EPSILON || std::fabs(head.y - list.y) > MP_EPSILON)))
        return fail("Error: LAS headers do not match in " + path);
    if (!seek_any_section(file, CURVE_SECTIONS))
        return fail("Error when parsing input file. Curve section was not found in file " + path);
    const std::vector<std::string> names = curve_names(file);
    if (names.empty())
        return fail("Cannot read column headers in trajectory file " + path);
    if (names.size() < 4)
        return fail("Not enough columns in trajectory file " + path);
    const int mdColumn = column_of(names, "MD");
    const int xColumn = column_of(names, "X");
    const int yColumn = column_of(names, "Y");
    if (mdColumn == 0 || xColumn == 0 || yColumn == 0)
        return fail("Missing required columns (MD, X, Y) in trajectory file " + path);
    const int zColumn = column_of(names, "Z");
    int tvdColumn = column_of(names, "TVD");
    if (tvdColumn == 0)
        tvdColumn = column_of(names, "TVDRT");
    if (zColumn == 0 && tvdColumn == 0)
        return fail("Missing required column (TVD or TVDRT or Z) in trajectory file " + path);
    if (!seek_any_section(file, ASCII_SECTIONS))
        return fail("Error when parsing input file. Ascii section was not found in file " + path);

    std::vector<TrajectoryPoint> points;
    while (file.next_line() && !file.is_section(file.get_line(), ""))
    {
        const std::string& line = file.get_line();
        const std::string where = path + " " + line;
        const Fields fields(line, head.delimiter);
        double md = 0.;
        double x = 0.;
        double y = 0.;
        double z = 0.;
        if (points.empty())
        {
            if (!fields.get(mdColumn, md))
                return fail("Error: Wrong first MD value in trajectory file " + where);
            if (std::fabs(md) > MP_EPSILON)
                return fail("Error: First MD should be null in trajectory file " + where);
        }
        else
        {
            if (!fields.get(mdColumn, md))
                return fail("Error: Wrong MD value in trajectory file " + where);
            if (md <= points.back().md)
                return fail("Error: Non increasing MD in trajectory file " + where);
            if (md - points.back().md < MP_EPSILON)
                return fail("Error: Consecutive MD too close in trajectory file " + where);
        }
        if (!fields.get(xColumn, x))
            return fail("Error: Wrong X value in trajectory file " + where);
        if (!fields.get(yColumn, y))
            return fail("Error: Wrong Y value in trajectory file " + where);
        if (zColumn != 0)
        {
            if (!fields.get(zColumn, z))
                return fail("Error: Wrong Z value in trajectory file " + where);
        }
        else
        {
            double tvd = 0.;
            if (!fields.get(tvdColumn, tvd))
                return fail("Error: Wrong TVD or TVDRT value in trajectory file " + where);
            z = head.elevation - tvd;
        }
        points.push_back({md, Point3D(x, y, z)});
    }
    if (points.empty())
        return fail("Error: Not enough trajectory data in file " + path);

    _samples.clear();
    set_top(points.front().position);
    _vertical = false;
    _standardFacies = false;
    if (_name.empty())
        _name = list.name;

    // Bottoms are placed by linear interpolation between the trajectory points around their depth.
    size_t k = 0;
    auto position_at = [&](double md, Point3D& position)
    {
        while (k + 1 < points.size() && points[k + 1].md < md)
            ++k;
        if (k + 1 >= points.size())
        {
            if (std::fabs(md - points[k].md) > MP_EPSILON)
                return false;
            position = points[k].position;
            return true;
        }
        const double t = (md - points[k].md) / (points[k + 1].md - points[k].md);
        position = points[k].position + (points[k + 1].position - points[k].position) * t;
        return true;
    };
    auto place = [&](const CoreSample& sample, double md)
    {
        Point3D position;
        if (!position_at(md, position))
            return fail("Error: Not enough trajectory data in file " + path);
        CoreSampleTags tags;
        tags.attributeText = sample.getAttributeText();
        tags.attributeValue = sample.getAttributeValue();
        tags.attributeName = sample.getAttributeName();
        if (!add(sample.getFacies(), position.get_abscissa(), position.get_ordinate(),
                 position.get_elevation(), tags))
            return fail("Error: cannot add sample at " + text_of(md) + " from trajectory file " + path);
        return true;
    };
    // What lies above the log's start is undefined; trimming removes it.
    if (list.start > MP_EPSILON)
    {
        const FaciesDescription undefined;
        CoreSampleTags tags;
        tags.attributeText = undefined.short_name();
        tags.attributeName = undefined.long_name();
        if (!place(CoreSample(0, list.start, list.start, 0., Point2D(), tags), list.start))
            return false;
    }
    double md = list.start;
    for (const CoreSample& sample : list.samples)
    {
        if (sample.getLength() < MP_EPSILON)
            continue;
        md += sample.getLength();
        if (!place(sample, md))
            return false;
    }
    return true;
}

// --- Geological edits

void Core::trim()
{
    while (!_samples.empty() && Facies::family(_samples.back().getFacies()) == 0)
        _samples.pop_back();
    while (!_samples.empty() && Facies::family(_samples.front().getFacies()) == 0)
    {
        _topElevation = _samples.front().getZ();
        _topLocation = _samples.front().getLocation();
        _samples.erase(_samples.begin());
    }
}

bool Core::make_downward()
{
    std::multimap<double, CoreSample, std::greater<double>> byElevation;
    for (const CoreSample& sample : _samples)
        byElevation.emplace(sample.getZ(), sample);
    _samples.clear();
    for (const auto& entry : byElevation)
        _samples.push_back(entry.second);
    for (size_t k = 0; k < _samples.size(); ++k)
    {
        if (k == 0 && std::fabs(_samples[0].getTop() - _topElevation) > ADJACENCY_TOLERANCE)
            return fail("Inconsistent top elevation in well " + _name);
        if (k > 0 && std::fabs(_samples[k].getTop() - _samples[k - 1].getZ()) > ADJACENCY_TOLERANCE)
            return fail("Non consecutive core samples in well " + _name);
    }
    return true;
}

void Core::closure(double threshold)
{
    size_t above = 0;
    while (above < _samples.size())
    {
        if (!_samples[above].isSand())
        {
            ++above;
            continue;
        }
        size_t below = above + 1;
        double gapHeight = 0.;
        double gapLength = 0.;
        while (below < _samples.size() && !_samples[below].isSand())
        {
            gapHeight += _samples[below].getHeight();
            gapLength += _samples[below].getLength();
            ++below;
        }
        if (below >= _samples.size())
            break;
        if (below > above + 1 && gapHeight > 0. && gapHeight < threshold)
        {
            // The thin gap is shared by the two sands in proportion to their heights,
            // the upper sand's bottom sliding down the straight line to the lower one.
            CoreSample& upper = _samples[above];
            CoreSample& lower = _samples[below];
            const CoreSample& gapBottom = _samples[below - 1];
            const double share = upper.getHeight() / (upper.getHeight() + lower.getHeight());
            upper.setZ(upper.getZ() + share * (gapBottom.getZ() - upper.getZ()));
            upper.setLocation(upper.getLocation() + (gapBottom.getLocation() - upper.getLocation()) * share);
            upper.setHeight(upper.getHeight() + share * gapHeight);
            lower.setHeight(lower.getHeight() + (1. - share) * gapHeight);
            upper.setLength(upper.getLength() + share * gapLength);
            lower.setLength(lower.getLength() + (1. - share) * gapLength);
            _samples.erase(_samples.begin() + static_cast<long>(above) + 1,
                           _samples.begin() + static_cast<long>(below));
            below = above + 1;
        }
        above = below;
    }
}

void Core::concatenate(bool computedFacies)
{
    std::vector<CoreSample> joined;
    for (const CoreSample& sample : _samples)
    {
        if (!joined.empty())
        {
            CoreSample& upper = joined.back();
            const bool sameFacies = Facies::family(upper.getFacies()) == Facies::family(sample.getFacies());
            const bool sameAttribute = upper.getAttributeText() == sample.getAttributeText() &&
                                       upper.getAttributeValue() == sample.getAttributeValue();
            if (sameFacies && (computedFacies || sameAttribute))
            {
                upper.setHeight(upper.getHeight() + sample.getHeight());
                upper.setLength(upper.getLength() + sample.getLength());
                upper.setZ(sample.getZ());
                upper.setLocation(sample.getLocation());
                continue;
            }
        }
        joined.push_back(sample);
    }
    _samples.swap(joined);
}

void Core::clean_attributes(bool computedFacies)
{
    if (!computedFacies)
        return;
    for (CoreSample& sample : _samples)
    {
        const FaciesDescription description = Facies::description(sample.getFacies());
        sample.setAttributeText(description.short_name());
        sample.setAttributeValue(MP_UNDEF_REAL);
        sample.setAttributeName(description.long_name());
    }
    _standardFacies = true;
}

bool Core::cut(double zb, double zt)
{
    const bool hasBottom = is_defined(zb);
    const bool hasTop = is_defined(zt);
    if (hasBottom && hasTop && zb > zt)
        return fail("Wrong arguments: zb > zt");
    std::vector<CoreSample> kept;
    Point3D head = top();
    Point3D upper = top();
    for (const CoreSample& sample : _samples)
    {
        const Point3D lower(sample.getLocation(), sample.getZ());
        const double hi = upper.get_elevation();
        const double lo = lower.get_elevation();
        const double newHi = hasTop ? std::min(hi, zt) : hi;
        const double newLo = hasBottom ? std::max(lo, zb) : lo;
        // The point of the sample's straight course at elevation z.
        auto at = [&](double z)
        { return hi - lo > 0. ? upper + (lower - upper) * ((hi - z) / (hi - lo)) : lower; };
        if (newHi - newLo >= MP_EPSILON)
        {
            if (kept.empty())
                head = at(newHi);
            CoreSample part(sample);
            const Point3D bottomPoint = at(newLo);
            part.setZ(newLo);
            part.setLocation(bottomPoint);
            part.setHeight(newHi - newLo);
            if (hi - lo > 0.)
                part.setLength(sample.getLength() * (newHi - newLo) / (hi - lo));
            kept.push_back(part);
        }
        upper = lower;
    }
    if (kept.empty() && hasTop)
        head.set_elevation(std::min(head.get_elevation(), zt));
    set_top(head);
    _samples.swap(kept);
    return true;
}

bool Core::split(const GridParams& domain, CoreList& cores) const
{
    cores.clear();
    if (!is_top_inside(domain))
        return fail("Head of well " + _name + " not inside the grid. Well split aborted.");
    Core current(_name, _tracer);
    bool started = false;
    int number = 0;
    int column[2] = {0, 0};
    Point3D upper = top();
    for (const CoreSample& sample : _samples)
    {
        // A sample belongs to the column under its middle.
        const Point2D middle = (Point2D(upper) + sample.getLocation()) * 0.5;
        const Point2D node = domain.geo2Grid(middle, true);
        const int i = static_cast<int>(node.get_abscissa());
        const int j = static_cast<int>(node.get_ordinate());
        if (!started || i != column[0] || j != column[1])
        {
            if (started)
                _merge(cores, current, number, domain);
            ++number;
            started = true;
            column[0] = i;
            column[1] = j;
            current = Core(_name, _tracer);
            current.setStandardFacies(_standardFacies);
            current.set_top(Point3D(domain.grid2Geo(i, j), upper.get_elevation()));
        }
        // A sample with no extent along the hole adds nothing to a column.
        if (sample.getLength() >= MP_EPSILON)
        {
            CoreSample part(sample);
            part.setLocation(current.top_location());
            current._samples.push_back(part);
        }
        upper = Point3D(sample.getLocation(), sample.getZ());
    }
    if (started)
        _merge(cores, current, number, domain);
    return true;
}

void Core::_merge(CoreList& cores, Core& core, int number, const GridParams& domain) const
{
    const std::string which = "core #" + std::to_string(number) + " of well " + _name;
    if (core.empty())
    {
        warn("Core #" + std::to_string(number) + " of well " + _name + " is empty. Core ignored");
        return;
    }
    if (!core.is_top_inside(domain))
    {
        warn("Top of " + which + " is not inside the grid. Core ignored");
        return;
    }
    if (!core.is_bottom_inside(domain))
    {
        warn("Bottom of " + which + " is not inside the grid. Core ignored");
        return;
    }
    if (!core.make_downward())
    {
        warn(core.getError());
        return;
    }
    Core* twin = cores.find(core.key());
    if (twin == nullptr)
    {
        cores.add(core);
        return;
    }
    // Elevation ranges, whichever way the well ran through them.
    const double newLo = std::min(core.bottom_elevation(), core.top_elevation());
    const double newHi = std::max(core.bottom_elevation(), core.top_elevation());
    const double oldLo = std::min(twin->bottom_elevation(), twin->top_elevation());
    const double oldHi = std::max(twin->bottom_elevation(), twin->top_elevation());
    const bool below = newHi <= oldLo + ADJACENCY_TOLERANCE;
    const bool above = newLo >= oldHi - ADJACENCY_TOLERANCE;
    if (!below && !above)
    {
        warn("Core #" + std::to_string(number) + " of well " + _name + " overlaps around " +
             text_of(core.top_elevation()) + " at cell " + core.key());
        return;
    }
    // The well came back to a column it had left: what lies between is unknown.
    const Core& lower = below ? core : *twin;
    const Core& higher = below ? *twin : core;
    const double gap = higher.bottom_elevation() - lower.top_elevation();
    std::vector<CoreSample> samples = higher._samples;
    if (gap > ADJACENCY_TOLERANCE)
    {
        const FaciesDescription undefined;
        CoreSampleTags tags;
        tags.attributeText = undefined.short_name();
        tags.attributeName = undefined.long_name();
        CoreSample filler(0, gap, gap, lower.top_elevation(), core.top_location(), tags);
        filler.setHeight(gap);
        samples.push_back(filler);
    }
    samples.insert(samples.end(), lower._samples.begin(), lower._samples.end());
    const double topElevation = higher.top_elevation();
    twin->_samples.swap(samples);
    twin->set_top_elevation(topElevation);
    if (!twin->make_downward())
        warn(twin->getError());
}

int Core::facies_at(double z) const
{
    for (const CoreSample& sample : _samples)
        if (z >= sample.getZ() && z < sample.getTop())
            return Facies::family(sample.getFacies());
    return -1;
}

double Core::facies_match(const Core& other, double zb, double zt) const
{
    if (zb == MP_UNDEF_REAL)
        zb = other.bottom_elevation();
    if (zt == MP_UNDEF_REAL)
        zt = other.top_elevation();
    if (zb > zt)
    {
        fail("Wrong arguments: zb > zt");
        return -1.;
    }
    if (!_vertical || !other._vertical)
        return -1.;
    const double lo = std::max(zb, std::max(bottom_elevation(), other.bottom_elevation()));
    const double hi = std::min(zt, std::min(_topElevation, other._topElevation));
    if (zt - zb < MP_EPSILON || hi - lo < MP_EPSILON)
        return 0.;
    // Both logs must cover the common interval alike before they are compared.
    double mine = 0.;
    double theirs = 0.;
    std::vector<double> limits = {lo, hi};
    for (const CoreSample& sample : _samples)
    {
        mine += overlap(sample.getZ(), sample.getTop(), lo, hi);
        limits.push_back(sample.getZ());
        limits.push_back(sample.getTop());
    }
    for (const CoreSample& sample : other._samples)
    {
        theirs += overlap(sample.getZ(), sample.getTop(), lo, hi);
        limits.push_back(sample.getZ());
        limits.push_back(sample.getTop());
    }
    if (std::fabs(mine - theirs) > MP_EPSILON)
    {
        fail("Wrong intersection length size");
        return -1.;
    }
    std::sort(limits.begin(), limits.end());
    double matched = 0.;
    for (size_t k = 0; k + 1 < limits.size(); ++k)
    {
        const double a = std::max(limits[k], lo);
        const double b = std::min(limits[k + 1], hi);
        if (b - a <= 0.)
            continue;
        const double middle = 0.5 * (a + b);
        const int facies = facies_at(middle);
        if (facies >= 0 && facies == other.facies_at(middle))
            matched += b - a;
    }
    return matched / (zt - zb);
}

double Core::match_non_sand_height(double zb, double zt) const
{
    if (zb == MP_UNDEF_REAL)
        zb = bottom_elevation();
    if (zt == MP_UNDEF_REAL)
        zt = _topElevation;
    double height = 0.;
    for (const CoreSample& sample : _samples)
        if (!sample.isSand())
            height += overlap(sample.getZ(), sample.getTop(), zb, zt);
    return height;
}

bool Core::min_and_max_height(double& hmin, double& hmax, bool sandOnly) const
{
    hmin = MP_MAX_REAL_VALUE;
    hmax = MP_MIN_REAL_VALUE;
    for (const CoreSample& sample : _samples)
    {
        if (sandOnly && !sample.isSand())
            continue;
        hmin = std::min(hmin, sample.getHeight());
        hmax = std::max(hmax, sample.getHeight());
    }
    return hmin <= hmax;
}

double Core::min_height(bool sandOnly) const
{
    double hmin = 0.;
    double hmax = 0.;
    min_and_max_height(hmin, hmax, sandOnly);
    return hmin;
}

double Core::max_height(bool sandOnly) const
{
    double hmin = 0.;
    double hmax = 0.;
    min_and_max_height(hmin, hmax, sandOnly);
    return hmax;
}

bool Core::shift(const GridReal& topo, double sign, const std::string& operation)
{
    const double zmin = topo.get_min();
    if (!(zmin < MP_MAX_REAL_VALUE))
        return fail(operation + ": Cannot get minimum value from the given topography");
    const std::string place =
        text_of(_topLocation.get_abscissa()) + ", " + text_of(_topLocation.get_ordinate()) + "]";
    const Point2D node = topo.geo2Grid(_topLocation, true);
    if (!topo.is_on_grid(node))
        return fail(operation + ": [" + place + " not in the given topography");
    double value = MP_UNDEF_REAL;
    if (!topo.get_at(static_cast<int>(node.get_abscissa()), static_cast<int>(node.get_ordinate()), value))
        return fail(operation + ": Cannot get a value at [" + place);
    if (value == MP_UNDEF_REAL)
        return fail(operation + ": Value is undefined at [" + place);
    const double delta = sign * (value - zmin);
    _topElevation += delta;
    for (CoreSample& sample : _samples)
        sample.setZ(sample.getZ() + delta);
    return true;
}

bool Core::shift_down(const GridReal& topo)
{
    return shift(topo, -1., "Core::shift_down");
}

bool Core::shift_up(const GridReal& topo)
{
    return shift(topo, 1., "Core::shift_up");
}

std::string Core::debug() const
{
    std::ostringstream out;
    out << "Core " << _name << " at " << key() << " [" << bottom_elevation() << ", " << _topElevation << "] "
        << _samples.size() << " samples" << (_vertical ? "" : ", deviated")
        << (_standardFacies ? "" : ", user attributes");
    for (const CoreSample& sample : _samples)
        out << "\n  " << sample.debug();
    return out.str();
}
