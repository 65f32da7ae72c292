// Running a loaded batch and writing what it asks for: the launch, the F2G
// exports, previews, topography, slices, conditioning statistics and the
// wells extracted from the block.

#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iDomain.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/Topo.h"
#include "kernel/parameters/Parameters.h"

#include <cmath>

namespace
{
using journal_support::elevation_text;
using journal_support::int_text;
using journal_support::is_set;
} // namespace

// ---------------------------------------------------------------------------
// Running and exporting

int NewJournalFile::launch()
{
    iTracer* tracer = _simulator->getTracer();
    try
    {
        if (!createOutputFolders())
            return MP_STATUS_FAILURE;
        // A first sequence that sets the grid builds the model once its
        // parameters are applied, so that the global surfaces and extracted
        // wells meet the grid they are for; otherwise the model is built now.
        int status = MP_STATUS_OK;
        if (!set_type_and_tracer())
            status = MP_STATUS_FAILURE;
        else if (_sequences.empty() || _sequences.front().loadsSnapshot() || !_sequences.front().setsGrid())
            status = buildModel();
        if (status != MP_STATUS_OK)
        {
            tracer->error("Problem with simulator action: launch");
            return status;
        }
        for (NewJournalSequence& sequence : _sequences)
        {
            status = sequence.launch(this);
            if (status != MP_STATUS_OK && status != MP_STATUS_UPPER_LIMIT &&
                status != MP_STATUS_WELLS_HONORED)
                return status;
        }
        if (!save_outputs())
            return MP_STATUS_FAILURE;
    }
    catch (const std::string& text)
    {
        // An internal check's text ("... failed at [file, line: n]") means
        // nothing to the user: it is kept for the debug level.
        const bool internal = text.find(" failed at [") != std::string::npos;
        tracer->error(
            "Problem with simulator action: launch\n" +
            (internal ? std::string("an internal check of the simulation failed (TRACE_LEVEL = 5 shows it)")
                      : text));
        if (internal)
            tracer->debug(text);
        return MP_STATUS_FAILURE;
    }
    catch (const std::exception& e)
    {
        tracer->error(std::string("Problem with simulator action: launch\n") + e.what());
        return MP_STATUS_FAILURE;
    }
    catch (...)
    {
        tracer->error("Problem with simulator action: launch");
        return MP_STATUS_FAILURE;
    }
    tracer->info("End of the simulation...");
    tracer->info("End of batch!");
    return MP_STATUS_OK;
}

bool NewJournalFile::exportSimuF2G(bool byAge)
{
    const std::string file =
        byAge ? base_name() + "_it" + std::to_string(_simulator->getAge()) + ".f2g" : f2g_file();
    // Limits left unset are the block's own: the report tells the range actually written.
    double zbot = _f2gZbot;
    double ztop = _f2gZtop;
    double zmin = 0.;
    double zmax = 0.;
    if (const iDomain* domain = _simulator->getDomain(); domain && (!is_set(zbot) || !is_set(ztop)))
    {
        domain->min_and_max_elevation_geo(zmin, zmax);
        zbot = is_set(zbot) ? zbot : zmin;
        ztop = is_set(ztop) ? ztop : zmax;
    }
    _simulator->getTracer()->info("Saving " + file + " between {" + elevation_text(zbot) + ", " +
                                  elevation_text(ztop) + "m} by " + text(_f2gDz) + "m...");
    if (!_simulator->saveSimuF2G(file, _f2gDz, _f2gFacies == 1, _f2gGrain == 1, _f2gAge == 1, _f2gZbot,
                                 _f2gZtop, _f2gOrder))
    {
        _simulator->getTracer()->error("Cannot save the simulation in " + file);
        return false;
    }
    return true;
}

bool NewJournalFile::save_outputs()
{
    if (is_set(_f2gDz) && !exportSimuF2G(is_set(_f2gIt)))
        return false;
    if (!save_block_exports())
        return false;
    if (!save_topography() || !save_slices() || !save_conditioning_stats())
        return false;
    if (!_proportions.save(*_simulator))
        return false;
    const bool histogram = is_set(_histoDz) && is_set(_histoNz);
    if (histogram && !_wellFiles.empty())
    {
        // Every input well may have been refused at loading: the run went on
        // without them, and their histogram is then empty rather than missing.
        CoreList inputs;
        if (!_simulator->getAllWells(inputs))
            _simulator->getTracer()->warning("No conditioning well: the histogram in " +
                                             input_histogram_file() + " is empty");
        if (!save_histogram(input_histogram_file(), inputs))
            return false;
    }
    CoreList extracted;
    if (!extract_wells(extracted))
        return false;
    if (!_extractedWells.empty() && !_simulator->getParameters()->usingFree())
        infer_nexus(extracted, "extracted wells");
    if (histogram && !_extractedWells.empty() && !save_histogram(extracted_histogram_file(), extracted))
        return false;
    return save_previews();
}

// Pictures of the block seen from above and of its slices at the SLICE_Z heights.
bool NewJournalFile::save_previews()
{
    if (_pngDir.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Saving previews in " + _pngDir);
    if (!createDirectory(_pngDir) || !_simulator->savePreviews(_pngDir, _sliceZ))
    {
        const std::string& reason = _simulator->getLastMessage();
        tracer->error("Cannot save the previews in " + _pngDir + (reason.empty() ? "" : "\n" + reason));
        return false;
    }
    return true;
}

bool NewJournalFile::save_topography()
{
    if (_topoFile.empty() || _simulator->saveTopo(_topoFile, GRID_FORMAT_F2G, _f2gOrder))
        return true;
    _simulator->getTracer()->error("Cannot save the topography in " + _topoFile);
    return false;
}

bool NewJournalFile::save_slices()
{
    iTracer* tracer = _simulator->getTracer();
    for (size_t k = 0; k < _sliceZ.size(); ++k)
    {
        std::vector<double> values;
        const iDomain* domain = _simulator->getDomain();
        if (!domain || !_simulator->getSlice(_sliceZ[k], values))
        {
            tracer->error("Cannot retrieve the slice");
            return false;
        }
        GridReal slice(domain->getGridParams());
        const int nx = slice.getNx();
        const int ny = slice.getNy();
        if (nx < 1 || ny < 1 || values.size() != static_cast<size_t>(nx) * static_cast<size_t>(ny))
        {
            tracer->error("Wrong slice size");
            return false;
        }
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i)
                slice.set_at(i, j, values[static_cast<size_t>(j * nx + i)]);
        slice.setName("Slice_at_" + text(_sliceZ[k]));
        const std::string file = slice_file(k);
        if (!slice.write(file, tracer, GRID_FORMAT_F2G, _f2gOrder))
        {
            tracer->error("Cannot save the slice in " + file);
            return false;
        }
    }
    return true;
}

bool NewJournalFile::save_conditioning_stats()
{
    if (_statsCondFile.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->info("Saving conditioning wells statistics in " + _statsCondFile);
    if (_simulator->saveConditioningStats(_statsCondFile))
        return true;
    tracer->error("Cannot save conditioning wells statistics in " + _statsCondFile);
    return false;
}

bool NewJournalFile::save_histogram(const std::string& path, const CoreList& cores)
{
    if (_simulator->saveHistogram(path, cores, _histoDz, _histoNz))
        return true;
    _simulator->getTracer()->error("Cannot save histogram in " + path);
    return false;
}

bool NewJournalFile::extract_wells(CoreList& cores)
{
    iTracer* tracer = _simulator->getTracer();
    for (const ExtractedWell& well : _extractedWells)
    {
        const std::string indices = int_text(well.i) + ", " + int_text(well.j);
        tracer->info("Extracting well at indices [" + indices + "]...");
        const std::string file = extracted_well_file(well);
        Core core("EXP_WELL" + int_text(well.i) + "_" + int_text(well.j), tracer);
        if (!_simulator->extractWell(well.i, well.j, core, well.zmin, well.zmax))
        {
            tracer->error("Cannot retrieve the well " + core.getName());
            return false;
        }
        if (!core.write(file, "Well automatically extracted by Sarvo at " + core.top_location().debug()))
        {
            tracer->error("Cannot save the well " + file);
            return false;
        }
        cores.add(core);
    }
    return true;
}
