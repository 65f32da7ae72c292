// Pictures of the view: numbered TIFF snapshots.

#include "gui/InterfaceCanvas.h"

#include "interface/iTracer.h"
#include "kernel/common/StagedFile.h"
#include "kernel/network/Network.h"

#include <wx/filedlg.h>
#include <wx/imagtiff.h>

wxString InterfaceCanvas::snapshot_name()
{
    ++_screenshot;
    if (_network != nullptr && _network->tracer() != nullptr && _network->tracer()->traceLevel(TRACE_DEBUG))
        _network->tracer()->trace("# Screenshot No " + std::to_string(_screenshot), TRACE_DEBUG);
    return wxString::Format("image%03i.tif", _screenshot);
}

void InterfaceCanvas::snapshot()
{
    wxFileDialog dialog(this, "Grab graphic window", wxEmptyString, snapshot_name(), "*.tif",
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() == wxID_OK)
        printScreen(dialog.GetPath());
}

bool InterfaceCanvas::readPixels(std::vector<unsigned char>& rgb, int& width, int& height)
{
    if (!draw())
        return false;
    const wxSize size = GetClientSize();
    width = size.x;
    height = size.y;
    rgb.assign(static_cast<size_t>(width) * height * 3, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    return true;
}

bool InterfaceCanvas::printScreen(const wxString& path)
{
    return draw() && write_picture(path);
}

// The back buffer as drawn last, written as a TIFF (or a PNG by its suffix).
bool InterfaceCanvas::write_picture(const wxString& path)
{
    const wxSize size = GetClientSize();
    if (size.x <= 0 || size.y <= 0)
        return false;
    std::vector<unsigned char> rgb(static_cast<size_t>(size.x) * size.y * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, size.x, size.y, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    // OpenGL counts rows from the bottom, images from the top.
    wxImage image(size.x, size.y);
    unsigned char* out = image.GetData();
    const size_t stride = static_cast<size_t>(size.x) * 3;
    for (int y = 0; y < size.y; ++y)
        std::copy_n(rgb.data() + (size.y - 1 - y) * stride, stride, out + y * stride);
    if (wxImage::FindHandler(wxBITMAP_TYPE_TIFF) == nullptr)
        wxImage::AddHandler(new wxTIFFHandler);
    const wxBitmapType type = path.Lower().EndsWith(".png") ? wxBITMAP_TYPE_PNG : wxBITMAP_TYPE_TIFF;
    if (type == wxBITMAP_TYPE_PNG && wxImage::FindHandler(wxBITMAP_TYPE_PNG) == nullptr)
        wxImage::AddHandler(new wxPNGHandler);
    wxLogNull quiet;
    // Written beside its name first, so that a failure leaves the user's file.
    StagedFile staged(path.utf8_string());
    if (!image.SaveFile(wxString::FromUTF8(staged.path().c_str()), type) || !staged.commit())
    {
        error("Cannot write the picture of the view to " + path.ToStdString());
        return false;
    }
    return true;
}
