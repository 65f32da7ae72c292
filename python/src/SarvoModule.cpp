// The Python bridge: the kernel's driver with its parameters by name, the run
// operations and their statuses, and the block, the topography and the
// measures as numpy arrays. It links the same kernel library as the program,
// so equal parameters and seed give the same arrays as its files.

#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreSample.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/RegularBlock.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace py = pybind11;

namespace
{
constexpr double MP_NAN = std::numeric_limits<double>::quiet_NaN();
constexpr int MP_FAMILIES = 16;
// The program's tier when the command line asks for no lower one.
constexpr int MP_TIER_RESEARCH = 2;

// A value from Python as text, for messages.
std::string parameter_text(const py::handle& value)
{
    if (py::isinstance<py::bool_>(value))
        return value.cast<bool>() ? "1" : "0";
    if (py::isinstance<py::float_>(value))
    {
        std::ostringstream out;
        out.precision(std::numeric_limits<double>::max_digits10);
        out << value.cast<double>();
        return out.str();
    }
    return py::str(value).cast<std::string>();
}

py::dict geometry_dict(const GridParams& g)
{
    py::dict d;
    d["nx"] = g.getNx();
    d["ny"] = g.getNy();
    d["nz"] = g.getNz();
    d["dx"] = g.getDx();
    d["dy"] = g.getDy();
    d["dz"] = g.getDz();
    d["x0"] = g.getX0();
    d["y0"] = g.getY0();
    d["z0"] = g.getZ0();
    d["location"] = py::make_tuple(g.getLocation().get_abscissa(), g.getLocation().get_ordinate(),
                                   g.getLocation().get_elevation());
    d["rotation"] = g.getRotation();
    return d;
}

// Owns one kernel driver for the life of the Python object.
class PySimulator
{
public:
    PySimulator() : _sim(iSimulator::createSimulator())
    {
        _sim->getParameters()->setUsingDistrib(MP_TIER_RESEARCH);
    }
    ~PySimulator() { iSimulator::deleteSimulator(_sim); }
    PySimulator(const PySimulator&) = delete;
    PySimulator& operator=(const PySimulator&) = delete;

    // Numbers go through the registry as the batch file's values do.
    void set(const std::string& name, const py::handle& value)
    {
        iParameters* params = _sim->getParameters();
        const bool text = py::isinstance<py::str>(value);
        const bool ok = text ? params->setParamString(name, value.cast<std::string>())
                             : params->setParam(name, value.cast<double>());
        if (!ok)
            throw py::value_error("Parameter " + name + " refused the value " + parameter_text(value));
    }
    py::object get(const std::string& name) const
    {
        const double value = _sim->getParameters()->getParam(name);
        if (value != MP_UNDEF_REAL)
            return py::float_(value);
        const std::string text = _sim->getParameters()->getParamString(name);
        if (text == MP_UNDEF_STRING)
            throw py::key_error("Unknown parameter " + name);
        return py::str(text);
    }

    int keep(int status)
    {
        _status = status;
        return status;
    }
    int init(bool force) { return keep(_sim->init(force)); }
    int check_consistency() { return keep(_sim->checkConsistency()); }
    int new_sequence() { return keep(_sim->newSequence()); }
    int run(unsigned int n)
    {
        py::gil_scoped_release release;
        return keep(_sim->run(n));
    }
    int end_sequence() { return keep(_sim->endSequence()); }
    int clear() { return keep(_sim->clear() ? MP_STATUS_OK : MP_STATUS_FAILURE); }
    int run_batch(const std::string& path)
    {
        py::gil_scoped_release release;
        return keep(_sim->launchBatch(path));
    }
    int status() const { return _status; }
    std::string last_message() const { return _sim->getLastMessage(); }
    unsigned int age() const { return _sim->getAge(); }
    void set_trace_level(int level) { _sim->getTracer()->setTraceLevel(level); }
    // As STATS_FILE and STATS_IT (and STATS_PROPS) of a batch file: call before `init`.
    void record_statistics(const std::string& path, unsigned int every, bool proportions)
    {
        if (every == 0)
            throw py::value_error("The statistics interval must be positive");
        iTracer* tracer = _sim->getTracer();
        tracer->setGenerateStatsIteration(true);
        tracer->setGenerateStatsProps(proportions);
        tracer->setStatsFile(path);
        tracer->setStatsInterval(every);
        _statistics = path;
    }
    const std::string& statistics_file() const { return _statistics; }

    const iDomain& domain() const
    {
        if (!_sim->getDomain())
            throw std::runtime_error("No model: call init first");
        return *_sim->getDomain();
    }

    // Arrays indexed [i, j, k], void samples 255 (facies, class) or NaN.
    py::dict block(double dz, const py::object& zmin, const py::object& zmax) const
    {
        RegularBlock b;
        const double lo = zmin.is_none() ? MP_UNDEF_REAL : zmin.cast<double>();
        const double hi = zmax.is_none() ? MP_UNDEF_REAL : zmax.cast<double>();
        if (!_sim->getRegularBlock(dz, lo, hi, b))
            throw std::runtime_error("Cannot sample the block: " + _sim->getLastMessage());
        const std::vector<py::ssize_t> shape{b.nx(), b.ny(), b.nz()};
        py::array_t<unsigned char> facies(shape), grain_class(shape);
        py::array_t<double> grain(shape), age(shape);
        unsigned char* f = facies.mutable_data();
        unsigned char* c = grain_class.mutable_data();
        double* g = grain.mutable_data();
        double* a = age.mutable_data();
        for (size_t n = 0; n < b.size(); ++n)
        {
            const bool empty = b.is_void(n);
            f[n] = empty ? RegularBlock::MP_VOID_FACIES : Facies::family(b.facies[n]);
            c[n] = empty ? RegularBlock::MP_VOID_FACIES : static_cast<unsigned char>(b.facies[n] >> 4);
            g[n] = empty ? MP_NAN : b.grain[n];
            a[n] = empty ? MP_NAN : static_cast<double>(b.age[n]);
        }
        py::dict d;
        d["facies"] = facies;
        d["grain_class"] = grain_class;
        d["grain"] = grain;
        d["age"] = age;
        d["geometry"] = geometry_dict(b.geometry);
        return d;
    }

    // Geographic elevations [i, j], NaN where undefined.
    py::array_t<double> topography(bool with_water) const
    {
        const iDomain& d = domain();
        const GridParams& g = d.getGridParams();
        py::array_t<double> out(std::vector<py::ssize_t>{g.getNx(), g.getNy()});
        auto view = out.mutable_unchecked<2>();
        for (int i = 0; i < g.getNx(); ++i)
            for (int j = 0; j < g.getNy(); ++j)
            {
                const double z = d.getTopoGeo(i, j, with_water);
                view(i, j) = z == MP_UNDEF_REAL ? MP_NAN : z;
            }
        return out;
    }

    // Deposited thickness of each family over the whole block, as fractions.
    py::array_t<double> facies_proportions() const
    {
        const iDomain& d = domain();
        const GridParams& g = d.getGridParams();
        std::vector<double> thickness(MP_FAMILIES, 0.);
        for (int i = 0; i < g.getNx(); ++i)
            for (int j = 0; j < g.getNy(); ++j)
                for (const DepositUnit& unit : d.getStack(i, j))
                    thickness[unit.family() & 0x0F] += unit.thickness();
        double total = 0.;
        for (double t : thickness)
            total += t;
        py::array_t<double> out(MP_FAMILIES);
        for (int k = 0; k < MP_FAMILIES; ++k)
            out.mutable_data()[k] = total > 0. ? thickness[static_cast<size_t>(k)] / total : 0.;
        return out;
    }

    py::dict measures() const
    {
        auto value = [](double v) { return v == MP_UNDEF_REAL ? MP_NAN : v; };
        py::dict d;
        d["age"] = _sim->getAge();
        d["sand_proportion"] = value(_sim->getSandProportion());
        d["point_bar_proportion"] = value(_sim->getPBProportion());
        d["aggradation_rate"] = value(_sim->getAggradationRate());
        d["migration_rate"] = value(_sim->getMigrationRate());
        d["sinuosity"] = value(_sim->getSinuosity());
        d["wavelength"] = value(_sim->getWavelength());
        d["isbx"] = value(_sim->getIsbx());
        d["mean_isbx"] = value(_sim->getMeanIsbx());
        d["cutoffs"] = _sim->getNbCutoff();
        return d;
    }

private:
    iSimulator* _sim;
    int _status = MP_STATUS_OK;
    std::string _statistics;
};

// An FLW (or LAS) log as arrays, top sample first.
py::dict read_well(const std::string& path)
{
    std::string name;
    Core::get_name(path, "", name);
    Core core(name);
    if (!core.read(path))
        throw py::value_error("Cannot read well file " + path + ": " + core.getError());
    const size_t n = static_cast<size_t>(core.size());
    py::array_t<unsigned char> facies(n), grain_class(n);
    py::array_t<double> base(n), top(n), age(n);
    for (size_t k = 0; k < n; ++k)
    {
        const CoreSample& s = core.getSample(static_cast<int>(k));
        facies.mutable_data()[k] = s.getFacies();
        grain_class.mutable_data()[k] = s.getGrainClass();
        base.mutable_data()[k] = s.getZ();
        top.mutable_data()[k] = s.getTop();
        age.mutable_data()[k] = s.getAge();
    }
    py::dict d;
    d["name"] = core.getName();
    d["x"] = core.top_location().get_abscissa();
    d["y"] = core.top_location().get_ordinate();
    d["top_elevation"] = core.top_elevation();
    d["facies"] = facies;
    d["grain_class"] = grain_class;
    d["base"] = base;
    d["top"] = top;
    d["age"] = age;
    return d;
}

std::vector<std::string> facies_names()
{
    std::vector<std::string> names;
    for (int family = 0; family < MP_FAMILIES; ++family)
        names.push_back(Facies::description(static_cast<unsigned char>(family)).short_name());
    return names;
}
} // namespace

PYBIND11_MODULE(_sarvo, m)
{
    m.doc() = "The Sarvo simulation kernel";
    py::class_<PySimulator>(m, "Simulator")
        .def(py::init<>())
        .def("set", &PySimulator::set, py::arg("name"), py::arg("value"),
             "Sets a parameter by its batch name; ValueError when refused.")
        .def("get", &PySimulator::get, py::arg("name"))
        .def("init", &PySimulator::init, py::arg("force") = false)
        .def("check_consistency", &PySimulator::check_consistency)
        .def("new_sequence", &PySimulator::new_sequence)
        .def("run", &PySimulator::run, py::arg("n"))
        .def("end_sequence", &PySimulator::end_sequence)
        .def("clear", &PySimulator::clear)
        .def("run_batch", &PySimulator::run_batch, py::arg("path"))
        .def_property_readonly("status", &PySimulator::status)
        .def_property_readonly("last_message", &PySimulator::last_message)
        .def_property_readonly("age", &PySimulator::age)
        .def("set_trace_level", &PySimulator::set_trace_level, py::arg("level"))
        .def("record_statistics", &PySimulator::record_statistics, py::arg("path"), py::arg("every"),
             py::arg("proportions") = false)
        .def_property_readonly("statistics_file", &PySimulator::statistics_file)
        .def("block", &PySimulator::block, py::arg("dz"), py::arg("zmin") = py::none(),
             py::arg("zmax") = py::none())
        .def("topography", &PySimulator::topography, py::arg("with_water") = false)
        .def("facies_proportions", &PySimulator::facies_proportions)
        .def("measures", &PySimulator::measures);
    m.def("read_well", &read_well, py::arg("path"));
    m.def("facies_names", &facies_names);
}
