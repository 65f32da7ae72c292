#pragma once
// The coded values of the parameters and batch keywords, named once: the
// kernel, the batch reader, the panels and the keyword reference use these
// names, never the bare numbers.

// AG_TYPE: how the floodplain builds up between channel passages.
enum AgType
{
    AG_NONE = 0,     // no aggradation
    AG_DRAPING = 1,  // a drape over the whole domain, no migration
    AG_OVERBANK = 2, // overbank floods around the channel
    AG_GHOST = 3,    // ghost migration: the channel rises without moving
    AG_EROSIVE = 4,  // erosive: the channel cuts down
    AG_LAST = AG_EROSIVE
};

// ZUL_TYPE: what the upper limit surface does to the run.
enum ZulType
{
    ZUL_NONE = 0,          // no upper limit
    ZUL_STOP = 1,          // stop when the surface reaches the limit
    ZUL_ERODE = 2,         // stop, and erode the surface down to the limit
    ZUL_STRATIGRAPHIC = 3, // the erodibility is built from the room left under the limit
    ZUL_LAST = ZUL_STRATIGRAPHIC
};

// NEW_TOPO_MODE: how a new surface replaces the topography.
enum SurfMode
{
    SURF_EXCD = 0,         // not supported for a replacement
    SURF_ERODE_FILL = 1,   // erode above the surface, fill below it
    SURF_FILL = 2,         // fill only
    SURF_ERODE = 3,        // erode only
    SURF_ERODE_BOTTOM = 4, // raise the base of the block up to the surface
};

// NEW_TOPO_FACIES, BASEMENT_FACIES: the facies family that fills below a new
// surface. Family ids as in the facies register.
enum FillingFacies
{
    FILL_NONE = 0,
    FILL_CHANNEL_LAG = 1,
    FILL_POINT_BAR = 2,
    FILL_SAND_PLUG = 3,
    FILL_CREVASSE_I = 4,
    FILL_CREVASSE_CHANNEL = 5,
    FILL_CREVASSE_II = 6,
    FILL_LEVEE = 7,
    FILL_OVERBANK = 8,
    FILL_MUD_PLUG = 9,
    FILL_HEMIPELAGIC_PLUG = 10,
    FILL_WETLAND = 11,
    FILL_DRAPING = 12,
    FILL_PELAGIC = 13,
    FILL_LAST = FILL_PELAGIC
};

// AG_DRAP: the family of a background deposit: none, draping or pelagic.
enum DrapingFacies
{
    DRAPING_NONE = FILL_NONE,
    DRAPING_DRAPING = FILL_DRAPING,
    DRAPING_PELAGIC = FILL_PELAGIC
};

// *_FREQ: the clock of an event (avulsions, overbank floods, profile changes).
constexpr int MP_PROCESS_NEVER = 0;
constexpr int MP_PROCESS_PERIODIC = 1;
constexpr int MP_PROCESS_POISSON = 2;

// *_DIST: the law of an event's size (channel scale, aggradation thickness).
constexpr int MP_DIST_CONSTANT = 0;
constexpr int MP_DIST_UNIFORM = 1;
constexpr int MP_DIST_GAUSSIAN = 2;
constexpr int MP_DIST_LOGNORMAL = 3;

// The pull a conditioning well puts on the channel point nearest to it.
enum PointStatus
{
    POINT_FREE = 0,        // no well pulls on it
    POINT_SPEEDED_UP = 1,  // migration factor above 1: it moves faster towards the well
    POINT_SLOWED_DOWN = 2, // migration factor below 1: it lingers near the well
};
