#include "view/KeyboardTable.h"

namespace
{

struct KeyEntry
{
    const char* group; // set on the first key of a group
    KeyPress::Special special;
    int character;
    ViewCommand command;
    const char* text;
};

// The keyboard, in the order of its help.
const KeyEntry MP_KEYS[] = {
    {"view selection", KeyPress::CHARACTER, 'a', ViewCommand::AERIAL_VIEW, "Set the 2D aerial view"},
    {nullptr, KeyPress::CHARACTER, 'd', ViewCommand::TOPO_VIEW, "Set the 3D view of the topography"},
    {nullptr, KeyPress::CHARACTER, 'x', ViewCommand::X_SECTION_VIEW, "Set the 2D X-section view"},
    {nullptr, KeyPress::CHARACTER, 'y', ViewCommand::Y_SECTION_VIEW, "Set the 2D Y-section view"},
    {nullptr, KeyPress::CHARACTER, '$', ViewCommand::Z_SLICE,
     "Set the Z slice view (in 2D aerial view only)"},
    {"view interactions", KeyPress::CHARACTER, 'X', ViewCommand::ASK_X_SECTION,
     "Define the cursor location along X"},
    {nullptr, KeyPress::CHARACTER, 'Y', ViewCommand::ASK_Y_SECTION, "Define the cursor location along Y"},
    {nullptr, KeyPress::CHARACTER, 'I', ViewCommand::H_SCALE_AT_MOUSE,
     "Move the horizontal scale at mouse location"},
    {nullptr, KeyPress::CHARACTER, 'i', ViewCommand::H_SCALE_DEFAULT,
     "Move the horizontal scale at default location"},
    {nullptr, KeyPress::CHARACTER, 'J', ViewCommand::V_SCALE_AT_MOUSE,
     "Move the vertical scale at mouse location"},
    {nullptr, KeyPress::CHARACTER, 'j', ViewCommand::V_SCALE_DEFAULT,
     "Move the vertical scale at default location"},
    {nullptr, KeyPress::CHARACTER, '_', ViewCommand::RULER,
     "Activate/deactivate ruler mode (in 2D views only)"},
    {nullptr, KeyPress::CHARACTER, 'M', ViewCommand::ASK_EXAGGERATION,
     "Define the vertical exaggeration factor"},
    {nullptr, KeyPress::CHARACTER, 'z', ViewCommand::EXAGGERATION_DOWN,
     "Decrease the vertical exaggeration (in section and 3D views only)"},
    {nullptr, KeyPress::CHARACTER, 'Z', ViewCommand::EXAGGERATION_UP,
     "Increase the vertical exaggeration (in section and 3D views only)"},
    {nullptr, KeyPress::UP, 0, ViewCommand::ARROW_UP, "Move the cursor location"},
    {"color coding", KeyPress::CHARACTER, 'f', ViewCommand::CODING_FACIES,
     "Define the color coding using the facies"},
    {nullptr, KeyPress::CHARACTER, 'g', ViewCommand::CODING_GRAIN,
     "Define the color coding using the grain size"},
    {nullptr, KeyPress::CHARACTER, 'G', ViewCommand::CODING_FACIES_GRAIN,
     "Define the color coding using the facies and the grain size"},
    {nullptr, KeyPress::CHARACTER, 'A', ViewCommand::CODING_FACIES_GRAIN_AGE,
     "Define the color coding using the facies, the grain size and the age"},
    {nullptr, KeyPress::CHARACTER, 'E', ViewCommand::CODING_AGE, "Define the color coding using the age"},
    {nullptr, KeyPress::CHARACTER, 'e', ViewCommand::CODING_ERODIBILITY,
     "Define the color coding using the erodibility (in 2D aerial view only)"},
    {"elements to display", KeyPress::CHARACTER, 'q', ViewCommand::TOGGLE_EQUILIBRIUM_PROFILE,
     "Toggle display of equilibrium profile (in section views)"},
    {nullptr, KeyPress::CHARACTER, 'n', ViewCommand::TOGGLE_WELL_FACIES,
     "Toggle display of interpreted well facies (in section views)"},
    {nullptr, KeyPress::CHARACTER, 'w', ViewCommand::TOGGLE_WELL_LABELS, "Toggle display of well labels"},
    {nullptr, KeyPress::CHARACTER, 'u', ViewCommand::TOGGLE_UPPER_LIMIT,
     "Toggle display of upper limit (in 2D views)"},
    {nullptr, KeyPress::CHARACTER, 'c', ViewCommand::TOGGLE_CHANNEL_GRID,
     "Toggle display of the discretized channel"},
    {nullptr, KeyPress::CHARACTER, 'C', ViewCommand::TOGGLE_CHANNEL_REAL,
     "Toggle display of the real channel"},
    {nullptr, KeyPress::CHARACTER, 'l', ViewCommand::TOGGLE_PERTURBATIONS,
     "Toggle display of the real channel points and perturbations (in 2D aerial view only)"},
    {nullptr, KeyPress::CHARACTER, 's', ViewCommand::TOGGLE_SECTIONS,
     "Toggle display of the sections cursors"},
    {nullptr, KeyPress::CHARACTER, 'v', ViewCommand::TOGGLE_CUBE,
     "Toggle display of the domain cube and flow direction (in 3D view only)"},
    {nullptr, KeyPress::CHARACTER, 'V', ViewCommand::TOGGLE_EXTRA_DOMAIN,
     "Toggle display of the extrapolated domain"},
    {nullptr, KeyPress::CHARACTER, '/', ViewCommand::TOGGLE_ZCUT,
     "Toggle display of the Z cut view (Topography eroded by Z cut surface)"},
    {"research display features", KeyPress::CHARACTER, 't', ViewCommand::TOGGLE_TRUE_TOPO,
     "Toggle display of true/modified topography"},
    {nullptr, KeyPress::CHARACTER, 'o', ViewCommand::TOGGLE_VIDEO, "Toggle video mode"},
    {"3D navigation", KeyPress::KEYPAD, '8', ViewCommand::GO_FRONT, "go front"},
    {nullptr, KeyPress::KEYPAD, '5', ViewCommand::GO_BACK, "go back"},
    {nullptr, KeyPress::KEYPAD, '4', ViewCommand::GO_LEFT, "go left"},
    {nullptr, KeyPress::KEYPAD, '6', ViewCommand::GO_RIGHT, "go right"},
    {nullptr, KeyPress::KEYPAD, '7', ViewCommand::TURN_LEFT, "turn left"},
    {nullptr, KeyPress::KEYPAD, '9', ViewCommand::TURN_RIGHT, "turn right"},
    {nullptr, KeyPress::KEYPAD, '1', ViewCommand::TURN_DOWN, "turn down"},
    {nullptr, KeyPress::KEYPAD, '2', ViewCommand::TURN_UP, "turn up"},
    {nullptr, KeyPress::KEYPAD, '-', ViewCommand::GO_DOWN, "go down"},
    {nullptr, KeyPress::KEYPAD, '+', ViewCommand::GO_UP, "go up"},
    {nullptr, KeyPress::KEYPAD, '0', ViewCommand::RESET_CAMERA, "reset 3D camera position"},
    {"general", KeyPress::CHARACTER, 'r', ViewCommand::RESET_VIEW, "Reset the default view parameters"},
    {nullptr, KeyPress::CHARACTER, 'p', ViewCommand::SNAPSHOT, "Trigger a snapshot of the view"},
    {nullptr, KeyPress::CHARACTER, 'h', ViewCommand::HELP, "Prints this help"},
};

} // namespace

ViewCommand KeyboardTable::command(const KeyPress& key)
{
    switch (key.special)
    {
    case KeyPress::MODIFIER:
        return ViewCommand::NONE;
    case KeyPress::UP:
        return ViewCommand::ARROW_UP;
    case KeyPress::DOWN:
        return ViewCommand::ARROW_DOWN;
    case KeyPress::LEFT:
        return ViewCommand::ARROW_LEFT;
    case KeyPress::RIGHT:
        return ViewCommand::ARROW_RIGHT;
    case KeyPress::ESCAPE:
        return ViewCommand::LEAVE_RULER;
    case KeyPress::OTHER:
        return ViewCommand::UNKNOWN;
    default:
        break;
    }
    for (const KeyEntry& entry : MP_KEYS)
        if (entry.special == key.special && entry.character == key.character)
            return entry.command;
    return ViewCommand::UNKNOWN;
}

std::string KeyboardTable::help()
{
    std::string text;
    for (const KeyEntry& entry : MP_KEYS)
    {
        if (entry.group != nullptr)
            text += std::string("  * ") + entry.group + " :\n";
        if (entry.special == KeyPress::UP)
            text += std::string("    Arrows : ") + entry.text + "\n";
        else
            text += std::string("    '") + static_cast<char>(entry.character) + "' : " + entry.text + "\n";
    }
    return text;
}

const char* KeyboardTable::freeRefusal(ViewCommand command)
{
    switch (command)
    {
    case ViewCommand::TOGGLE_WELL_LABELS:
    case ViewCommand::TOGGLE_WELL_FACIES:
        return "Well conditioning not available in Free version";
    case ViewCommand::CODING_ERODIBILITY:
        return "Erodibility map not available in Free version";
    case ViewCommand::TOGGLE_TRUE_TOPO:
    case ViewCommand::TOGGLE_VIDEO:
        return "Research display features not available in Free version";
    default:
        return nullptr;
    }
}
