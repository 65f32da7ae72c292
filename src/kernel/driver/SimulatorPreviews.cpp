#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/Simulator.h"
#include "kernel/files/FaciesImage.h"

#include <filesystem>
#include <sstream>
#include <system_error>

namespace
{

// The elevation as it appears in a file name: shortest plain form.
std::string slice_name(double z)
{
    std::ostringstream out;
    out << "slice_" << z << ".png";
    return out.str();
}

} // namespace

bool Simulator::savePreviews(const std::string& dir, const std::vector<double>& slices)
{
    if (_imageWriter == nullptr)
        return fail("Cannot write previews: no image writer is set", false);
    if (!ready(true))
        return fail("Cannot write previews: no simulated domain", false);
    std::error_code error;
    const std::filesystem::path folder(dir.empty() ? std::string(".") : dir);
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        return fail("Cannot create preview directory: " + dir + (error ? " (" + error.message() + ")" : ""),
                    false);
    try
    {
        const FaciesImage images(*_domain);
        // Each picture is written as soon as it is drawn, so only one is held at a time.
        std::string message;
        std::string path;
        auto write = [&](const std::string& name, const RgbImage& image)
        {
            path = (folder / name).string();
            return _imageWriter->writePng(path, image, message);
        };
        bool ok = write("top.png", images.top_preview());
        for (size_t k = 0; ok && k < slices.size(); ++k)
            ok = write(slice_name(slices[k]), images.slice_preview(slices[k]));
        ok = ok && write("section_x.png", images.section_x_preview());
        ok = ok && write("section_y.png", images.section_y_preview());
        if (!ok)
            return fail("Cannot write preview " + path + ": " + message, false);
    }
    catch (const std::string& text)
    {
        return fail("Cannot write previews: " + text, false);
    }
    catch (const std::exception& e)
    {
        return fail(std::string("Cannot write previews: ") + e.what(), false);
    }
    if (_tracer->traceLevel(TRACE_INFO))
        _tracer->info("Previews written in " + folder.string());
    return true;
}
