// The files a batch reads and writes, checked together when it loads so that
// no run writes over a file of the user's, and the folders of its outputs
// made before it runs.

#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/BatchPaths.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace
{
using journal_support::int_text;
using journal_support::is_set;

// The name the previews give the picture of a slice.
std::string preview_slice_name(double z)
{
    std::ostringstream out;
    out << "slice_" << z << ".png";
    return out.str();
}
} // namespace

void NewJournalFile::listPaths(BatchPaths& paths) const
{
    paths.input("batch file", _batchFile);
    for (const std::string& file : _wellFiles)
        paths.input("WELL_FILE", file);
    for (const std::string& file : _wellTrajectories)
        paths.input("WELL_TRAJ", file);
    paths.input("FLATTENING_FILE", _flatteningFile);
    paths.input("BASEMENT_TOPO", _basementTopo);

    if (is_set(_f2gIt))
        paths.outputSeries("F2G_IT", base_name() + "_it", ".f2g");
    else if (is_set(_f2gDz))
        paths.output("F2G_FILE", f2g_file());
    paths.output("TOPO_FILE", _topoFile);
    for (size_t k = 0; k < _sliceZ.size(); ++k)
        paths.output(k < _sliceFiles.size() ? "SLICE_FILE" : "the slice at " + text(_sliceZ[k]),
                     slice_file(k));
    paths.output("STATS_FILE", _statsFile);
    paths.output("STATS_CL_FILE", _statsClFile);
    paths.output("STATS_COND_FILE", _statsCondFile);
    const bool histogram = is_set(_histoDz) && is_set(_histoNz);
    if (histogram && !_wellFiles.empty())
        paths.output("the input wells histogram", input_histogram_file());
    if (histogram && !_extractedWells.empty())
        paths.output("the extracted wells histogram", extracted_histogram_file());
    for (const ExtractedWell& well : _extractedWells)
        paths.output("EXP_WELL " + int_text(well.i) + ";" + int_text(well.j), extracted_well_file(well));
    if (!_pngDir.empty())
    {
        const std::string dir = _pngDir + "/";
        paths.output("PNG_DIR", dir + "top.png");
        for (double z : _sliceZ)
            paths.output("PNG_DIR", dir + preview_slice_name(z));
        paths.output("PNG_DIR", dir + "section_x.png");
        paths.output("PNG_DIR", dir + "section_y.png");
    }
    _proportions.listPaths(paths);
    // The VTK suffix follows the grid's rotation, known only once the model is
    // built: both names are kept clear.
    if (!_vtkFile.empty())
    {
        std::filesystem::path name(_vtkFile);
        paths.output("VTK_FILE", name.replace_extension(".vti").string());
        paths.output("VTK_FILE", name.replace_extension(".vts").string());
    }
    paths.output("GRDECL_FILE", _grdeclFile);
    for (const NewJournalSequence& sequence : _sequences)
        sequence.listPaths(paths);
}

bool NewJournalFile::checkPaths()
{
    BatchPaths paths;
    listPaths(paths);
    std::string message;
    if (paths.check(message))
        return true;
    _simulator->getTracer()->error(message);
    return false;
}

bool NewJournalFile::createOutputFolders()
{
    BatchPaths paths;
    listPaths(paths);
    std::string message;
    if (paths.createFolders(message))
        return true;
    _simulator->getTracer()->error(message);
    return false;
}

// ---------------------------------------------------------------------------
// Paths

std::string NewJournalFile::filename(const std::string& name, bool isDirectory) const
{
    if (name.empty())
        return name;
    std::filesystem::path path(name);
    if (path.is_relative())
        path = std::filesystem::path(_directory) / path;
    std::string result = path.lexically_normal().string();
    if (isDirectory)
        while (result.size() > 1 && result.back() == '/')
            result.pop_back();
    return result;
}

std::string NewJournalFile::directory(const std::string& path)
{
    const std::string parent = std::filesystem::path(path).parent_path().string();
    return parent.empty() ? "." : parent;
}

bool NewJournalFile::isReadable(const std::string& path)
{
    std::error_code code;
    if (path.empty() || std::filesystem::is_directory(path, code))
        return false;
    std::ifstream file(path);
    return file.is_open();
}

bool NewJournalFile::isWritable(const std::string& path)
{
    std::error_code code;
    if (path.empty() || std::filesystem::is_directory(path, code))
        return false;
    if (std::filesystem::exists(path, code))
        return ::access(path.c_str(), W_OK) == 0;
    // Missing folders are made when the batch runs: the nearest one that exists must take them.
    std::filesystem::path parent = std::filesystem::path(directory(path));
    while (!std::filesystem::exists(parent, code) && parent.has_parent_path() &&
           parent != parent.parent_path())
        parent = parent.parent_path();
    return std::filesystem::is_directory(parent, code) && ::access(parent.c_str(), W_OK) == 0;
}

bool NewJournalFile::createDirectory(const std::string& path)
{
    std::error_code code;
    if (std::filesystem::is_directory(path, code))
        return true;
    return std::filesystem::create_directories(path, code) && !code;
}
