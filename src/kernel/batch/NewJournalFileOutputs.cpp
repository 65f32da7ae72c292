#include "JournalSupport.h"
#include "kernel/batch/NewJournalFile.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <system_error>

using journal_support::is_set;

namespace
{

void add_if_written(std::vector<std::string>& files, const std::string& path)
{
    std::error_code error;
    if (!path.empty() && std::filesystem::is_regular_file(path, error) &&
        std::find(files.begin(), files.end(), path) == files.end())
        files.push_back(path);
}

} // namespace

std::vector<std::string> NewJournalFile::writtenFiles() const
{
    std::vector<std::string> files;
    if (is_set(_f2gDz) && !is_set(_f2gIt))
        add_if_written(files, f2g_file());
    add_if_written(files, _topoFile);
    for (size_t k = 0; k < _sliceZ.size(); ++k)
        add_if_written(files, slice_file(k));
    add_if_written(files, _statsFile);
    add_if_written(files, _statsClFile);
    add_if_written(files, _statsCondFile);
    if (is_set(_histoDz) && is_set(_histoNz))
    {
        add_if_written(files, input_histogram_file());
        add_if_written(files, extracted_histogram_file());
    }
    for (const ExtractedWell& well : _extractedWells)
        add_if_written(files, extracted_well_file(well));
    if (!_pngDir.empty())
    {
        // The names the previews are written under.
        const std::filesystem::path folder(_pngDir);
        add_if_written(files, (folder / "top.png").string());
        for (double z : _sliceZ)
        {
            std::ostringstream name;
            name << "slice_" << z << ".png";
            add_if_written(files, (folder / name.str()).string());
        }
        add_if_written(files, (folder / "section_x.png").string());
        add_if_written(files, (folder / "section_y.png").string());
    }
    return files;
}
