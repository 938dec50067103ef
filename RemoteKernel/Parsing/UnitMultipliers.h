#pragma once

#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Multiplier of a unit suffix (IEEE 488.2 table 7-2).
struct UnitMultiplier
{
    std::string_view text;
    int exponent;
};

inline constexpr UnitMultiplier kUnitMultipliers[] = {
    {"EX", 18},
    {"PE", 15},
    {"T", 12},
    {"G", 9},
    {"MA", 6},
    {"K", 3},
    {"M", -3},
    {"U", -6},
    {"N", -9},
    {"P", -12},
    {"F", -15},
    {"A", -18},
};

/// Units before which M means mega; MHZ and MOHM were in use long before the rule.
inline constexpr std::string_view kMegaUnits[] = {"HZ", "OHM"};
inline constexpr int kMegaExponent = 6;

/// Units of which multiples are known: a table that names KHZ means the multiple and no unit of its own.
inline constexpr std::string_view kBaseUnits[] = {
    "A",
    "BIT",
    "C",
    "F",
    "G",
    "H",
    "HZ",
    "J",
    "K",
    "L",
    "M",
    "N",
    "OHM",
    "S",
    "T",
    "V",
    "W",
    "WB",
};

/// Units that never take a multiplier, besides the logarithmic ones, which begin with kLogarithmicPrefix.
inline constexpr std::string_view kPlainUnits[] = {"DEG", "HR", "MIN", "MNT", "PCT", "PPM"};
inline constexpr std::string_view kLogarithmicPrefix = "DB";

} // namespace ZoVelkor::RemoteKernel
