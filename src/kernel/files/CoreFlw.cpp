// Cores in the FLW text format: a header, then one line per sample.

#include "kernel/files/Core.h"

#include "CoreSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include <cmath>
#include <exception>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace
{
using core_support::Fields;
using core_support::full_number;
using core_support::text_of;

// Values as written with four decimals, so that depths match the written elevations.
double rounded4(double value)
{
    return std::round(value * 1e4) / 1e4;
}
} // namespace

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
