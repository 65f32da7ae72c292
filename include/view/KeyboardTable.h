#pragma once
// The keyboard of the block view: which command a key gives, and the help
// text that 'h' prints, both read from one table so that they cannot differ.

#include <string>

enum class ViewCommand
{
    NONE,    // a modifier key alone: nothing, silently
    UNKNOWN, // any other key: a warning
    AERIAL_VIEW,
    TOPO_VIEW,
    X_SECTION_VIEW,
    Y_SECTION_VIEW,
    Z_SLICE,
    ASK_X_SECTION,
    ASK_Y_SECTION,
    H_SCALE_AT_MOUSE,
    H_SCALE_DEFAULT,
    V_SCALE_AT_MOUSE,
    V_SCALE_DEFAULT,
    RULER,
    ASK_EXAGGERATION,
    EXAGGERATION_DOWN,
    EXAGGERATION_UP,
    ARROW_UP,
    ARROW_DOWN,
    ARROW_LEFT,
    ARROW_RIGHT,
    CODING_FACIES,
    CODING_GRAIN,
    CODING_FACIES_GRAIN,
    CODING_FACIES_GRAIN_AGE,
    CODING_AGE,
    CODING_ERODIBILITY,
    TOGGLE_EQUILIBRIUM_PROFILE,
    TOGGLE_WELL_FACIES,
    TOGGLE_WELL_LABELS,
    TOGGLE_UPPER_LIMIT,
    TOGGLE_CHANNEL_GRID,
    TOGGLE_CHANNEL_REAL,
    TOGGLE_PERTURBATIONS,
    TOGGLE_SECTIONS,
    TOGGLE_CUBE,
    TOGGLE_EXTRA_DOMAIN,
    TOGGLE_ZCUT,
    TOGGLE_TRUE_TOPO,
    TOGGLE_VIDEO,
    GO_FRONT,
    GO_BACK,
    GO_LEFT,
    GO_RIGHT,
    TURN_LEFT,
    TURN_RIGHT,
    TURN_DOWN,
    TURN_UP,
    GO_DOWN,
    GO_UP,
    RESET_CAMERA,
    RESET_VIEW,
    SNAPSHOT,
    HELP,
    LEAVE_RULER
};

// A key as the view sees it: the character typed (letters in the case the
// shift state gives), or one of the special keys.
struct KeyPress
{
    enum Special
    {
        CHARACTER,
        KEYPAD,   // `character` is the keypad's '0'..'9', '+' or '-'
        MODIFIER, // Shift, Alt, Control, Caps Lock, Num Lock, the Windows keys
        UP,
        DOWN,
        LEFT,
        RIGHT,
        ESCAPE,
        OTHER
    };
    Special special = CHARACTER;
    int character = 0;
};

class KeyboardTable
{
public:
    static ViewCommand command(const KeyPress& key);
    // The help: its title line, then a line per group and per key.
    static std::string help();
    static const char* helpTitle() { return "List of keyboard shortcuts for graphic windows"; }
    static const char* unknownKeyText() { return "This key is not defined. Press 'h' key for help."; }
    // The refusal of a command the free distribution lacks, null when it has it.
    static const char* freeRefusal(ViewCommand command);
};
