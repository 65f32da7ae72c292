// The block's exports for other tools: VTK XML for 3D viewers and GRDECL
// corner-point grids for reservoir flow simulators. Both sample the block as
// the F2G export does (F2G_DZ, F2G_ZBOT, F2G_ZTOP) and are written at the end
// of the batch.

#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/files/GrdeclWriter.h"
#include "kernel/files/VtkWriter.h"
#include "kernel/geometry/RegularBlock.h"

using journal_support::is_set;

bool NewJournalFile::read_export_keyword(const std::string& key, const std::string& value, bool& known)
{
    if (key == "VTK_FILE")
        _vtkFile = filename(value);
    else if (key == "GRDECL_FILE")
        _grdeclFile = filename(value);
    else if (key == "GRDECL_PROPS")
    {
        // family; porosity; horizontal permeability; vertical permeability
        const std::vector<std::string> items = splitList(value);
        std::vector<double> row(4, 0.);
        int family = 0;
        if (items.size() != 4 || !toInt(items[0], family))
            return fail("Bad formated line for GRDECL_PROPS (family; porosity; kh; kv): " + value);
        row[0] = family;
        for (size_t k = 1; k < 4; ++k)
            if (!toReal(items[k], row[k]))
                return bad_value(key, value);
        if (!GrdeclWriter::is_valid(family, {row[1], row[2], row[3]}))
            return fail("Wrong GRDECL_PROPS value " + value +
                        " (family from 0 to 15, porosity from 0 to 1, permeabilities >= 0)");
        _grdeclProps.push_back(row);
    }
    else
        known = false;
    return true;
}

bool NewJournalFile::check_block_exports()
{
    if (_vtkFile.empty() && _grdeclFile.empty())
        return true;
    if (!is_set(_f2gDz))
        return fail("VTK_FILE and GRDECL_FILE need F2G_DZ, the vertical step of the block");
    // The suffix of a VTK file is only known once the block is built: both
    // datasets go to the same directory.
    if (!_vtkFile.empty() && !check_writable(_vtkFile, "VTK_FILE "))
        return false;
    return _grdeclFile.empty() || check_writable(_grdeclFile, "GRDECL_FILE ");
}

bool NewJournalFile::save_block_exports()
{
    if (_vtkFile.empty() && _grdeclFile.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    RegularBlock block;
    if (!_simulator->getRegularBlock(_f2gDz, _f2gZbot, _f2gZtop, block))
    {
        tracer->error("Cannot sample the block for its exports\n" + _simulator->getLastMessage());
        return false;
    }
    if (!_vtkFile.empty())
    {
        VtkWriter writer(block);
        const std::string file = writer.file_name(_vtkFile);
        tracer->info("Saving " + file + "...");
        if (!writer.write(file))
        {
            tracer->error("Cannot save the block in " + file + "\n" + writer.getError());
            return false;
        }
    }
    if (!_grdeclFile.empty())
    {
        GrdeclWriter writer(block);
        for (const std::vector<double>& row : _grdeclProps)
            writer.set_rock(static_cast<int>(row[0]), {row[1], row[2], row[3]});
        tracer->info("Saving " + _grdeclFile + "...");
        if (!writer.write(_grdeclFile))
        {
            tracer->error("Cannot save the block in " + _grdeclFile + "\n" + writer.getError());
            return false;
        }
    }
    return true;
}
