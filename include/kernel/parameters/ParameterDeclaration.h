#pragma once
// One named parameter as it is declared once: the registry builds its maps
// from these, and the panels and the keyword reference read them.

#include <climits>

enum ParameterType
{
    PARAM_STRING,
    PARAM_BOOL,
    PARAM_INT,
    PARAM_REAL
};

// The lowest distribution tier that may set a parameter from a batch file.
enum ParameterTier
{
    TIER_FREE = 0,
    TIER_PREMIUM = 1,
    TIER_RESEARCH = 2
};

// Bounds of an enumeration or of a count with no upper limit: they span every int.
constexpr double MP_ANY_INT_MIN = INT_MIN;
constexpr double MP_ANY_INT_MAX = INT_MAX;

struct ParameterDeclaration
{
    const char* name;
    ParameterType type;
    // Defaults and bounds of a fluvial simulation; integers and booleans held
    // exactly as reals. A string keeps its default in `text`.
    double def;
    double min;
    double max;
    // What replaces them in a turbiditic simulation ("Turbidite" or "Lobes").
    bool turbiditic_differs;
    double turb_def;
    double turb_min;
    double turb_max;
    // Counts only while the integer parameter `control` holds `control_value`.
    const char* control;
    int control_value;
    // Set only by a full reset: the grid geometry.
    bool geometry;
    const char* unit;
    const char* group;
    ParameterTier tier;
    // The default of a string parameter.
    const char* text;
    // The label of the desktop's panel and journal.
    const char* label;
    // One line for the reference, with the unit.
    const char* help;
    // A family of `count` entries NAME_0 .. NAME_{count-1} when above 0.
    int count;
};
