// Cores in LAS 2.0: the well information, the curves of the facies log and
// the trajectory, read and written.

#include "kernel/files/Core.h"

#include "CoreSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/files/InDataFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <stdexcept>

namespace
{
using core_support::ASCII_SECTIONS;
using core_support::CURVE_SECTIONS;
using core_support::Fields;
using core_support::full_number;
using core_support::seek_any_section;
using core_support::text_of;
using core_support::WELL_SECTIONS;

// Tolerance on depths of LAS rows against the header's start and stop.
const double LAS_DEPTH_TOLERANCE = 0.001;
const double LAS_MIN_STEP = 0.01;

std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

const char* const PARAMETER_SECTIONS[] = {"Parameter", "PARAMETER", "P", nullptr};

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
} // namespace

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
