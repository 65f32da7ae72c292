// The Help menu: the user's guide, the version, and what stands in for a
// licence: there is no licence server, every copy runs in the research tier.

#include "gui/MainFrame.h"

#include "gui/iUserDialogs.h"
#include "interface/iParameters.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>

#include <filesystem>

namespace
{
std::string tier_text(const iParameters& params)
{
    return params.usingFree() ? "Free" : params.usingPremium() ? "Premium" : "Research";
}
} // namespace

std::string MainFrame::users_guide_path() const
{
    const wxString exe_dir = wxFileName(wxStandardPaths::Get().GetExecutablePath()).GetPath();
    const std::string candidates[] = {
        (exe_dir + "/../doc/USERS_GUIDE.md").utf8_string(),
        (exe_dir + "/../share/doc/sarvo/USERS_GUIDE.md").utf8_string(),
        std::string(SARVO_DOC_DIR) + "/USERS_GUIDE.md",
    };
    std::error_code ec;
    for (const std::string& path : candidates)
        if (std::filesystem::exists(path, ec))
            return std::filesystem::weakly_canonical(path, ec).string();
    return "";
}

void MainFrame::on_users_guide(wxCommandEvent&)
{
    const std::string path = users_guide_path();
    if (path.empty())
        show_message("Warning!",
                     "Warning: The user's guide USERS_GUIDE.md was not found beside the program.");
    else if (!dialogs().openDocument(path))
        show_message("Warning!", "Warning: No viewer could open the user's guide " + path + ".");
}

void MainFrame::on_license(wxCommandEvent&)
{
    show_message("Information!", "Sarvo is open software. There is no licence server and no licence "
                                 "agreement to accept: this copy runs in the " +
                                     tier_text(*parameters()) + " tier.");
}

void MainFrame::on_cite(wxCommandEvent&)
{
    show_message("Information!",
                 "Sarvo " + parameters()->getFullVersion() +
                     ", a process-based stochastic simulator of the deposits of meandering "
                     "channels.\nPlease cite the version and the seed of the runs you publish.");
}

void MainFrame::on_register(wxCommandEvent&)
{
    show_message("Information!",
                 "There is no licence server to register with: every feature is available and "
                 "this copy runs in the " +
                     tier_text(*parameters()) + " tier.");
}

void MainFrame::on_about(wxCommandEvent&)
{
    show_message("Information!", "Sarvo " + parameters()->getFullVersion() +
                                     "\nA process-based stochastic simulator of the deposits of meandering "
                                     "channels, fluvial and turbiditic.\nTier: " +
                                     tier_text(*parameters()));
}
