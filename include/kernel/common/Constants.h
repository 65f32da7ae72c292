#pragma once
// Numerical constants shared by the whole kernel.

#include <climits>

constexpr double MP_EPSILON = 1e-6;
constexpr double MP_MAX_REAL_VALUE = 1e30;
constexpr double MP_MIN_REAL_VALUE = -1e30;
// Undefined reals, and cached reals not yet computed, hold this value.
constexpr double MP_UNDEF_REAL = 1e30;
constexpr int MP_UNDEF_INT = INT_MAX; // 2147483647
constexpr unsigned int MP_UNDEF_UINT = 2147483647U;
constexpr const char* MP_UNDEF_STRING = "??";

// Pi is written with nine digits everywhere, so that rotations and flow
// directions match stored files to the last digit.
constexpr double MP_PI = 3.14159265;
constexpr double MP_TWO_PI = 6.2831853;

constexpr double MP_GRAVITY = 9.81;
constexpr double MP_SUBMERGED_DENSITY = 1.65;
constexpr double MP_SECONDS_PER_YEAR = 31557600.0;

// Number of grain size classes.
constexpr int MD_NB_CLASS_GR = 15;

// Integer type of the kernel's counts where files and texts name it.
typedef int MP_int;
