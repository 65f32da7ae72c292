// The colours of the facies in the views, from the Edit menu. Every graphic
// window paints with the one colour map of the set.

#include "gui/MainFrame.h"
#include "gui/iUserDialogs.h"
#include "view/FaciesColorMap.h"

#include <sstream>
#include <string>
#include <vector>

namespace
{
// "PB ffff00", one line a facies, as the colour map file holds them.
std::vector<std::string> colour_lines(const FaciesColorMap& colours)
{
    std::vector<std::string> lines;
    std::istringstream in(colours.text());
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            lines.push_back(line);
    return lines;
}
} // namespace

void MainFrame::change_facies_colourmap(wxCommandEvent&)
{
    FaciesColorMap& colours = _graphics.colours();
    const std::vector<std::string> lines = colour_lines(colours);
    int choice = 0;
    if (!dialogs().askChoice("Change colors", "Facies", lines, choice) || choice < 0 ||
        choice >= static_cast<int>(lines.size()))
        return;
    std::istringstream words(lines[choice]);
    std::string name, hex;
    words >> name >> hex;
    std::string answer;
    if (!dialogs().askText("Change colors", "Colour of " + name + " (six hexadecimal digits, rrggbb)", hex,
                           answer))
        return;
    std::string message;
    if (!colours.parse(name + " " + answer + "\n", "Change colors", message))
    {
        show_message("Warning!", message);
        return;
    }
    _graphics.refresh(true);
}

void MainFrame::restore_facies_colourmap(wxCommandEvent&)
{
    _graphics.colours().restoreDefaults();
    _graphics.refresh(true);
}

void MainFrame::load_facies_colourmap(wxCommandEvent&)
{
    std::string path, message;
    if (!dialogs().askOpenFile("Load facies colors", "*.*", path))
        return;
    if (!_graphics.colours().load(path, message))
    {
        show_message("Warning!", message);
        return;
    }
    _graphics.refresh(true);
}

void MainFrame::save_facies_colourmap(wxCommandEvent&)
{
    std::string path, message;
    if (!dialogs().askSaveFile("Save facies colors", "*.*", "facies_colors.txt", path))
        return;
    if (!_graphics.colours().save(path, message))
        show_message("Warning!", message);
}
