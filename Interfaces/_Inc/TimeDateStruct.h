#pragma once

#include <cstdint>

namespace ZoVelkor
{

/// Time of day.
struct tagTimeStruct
{
    std::uint16_t iHour;     ///< 0 to 23
    std::uint16_t iMin;      ///< 0 to 59
    std::uint16_t iSec;      ///< 0 to 59
    std::uint16_t iMilliSec; ///< 0 to 999

    friend bool operator==(const tagTimeStruct&, const tagTimeStruct&) = default;
};
static_assert(sizeof(tagTimeStruct) == 8);

/// Day of the Gregorian calendar.
struct tagDateStruct
{
    std::uint16_t iYear;  ///< such as 2024
    std::uint16_t iMonth; ///< 1 to 12
    std::uint16_t iDay;   ///< 1 to 31

    friend bool operator==(const tagDateStruct&, const tagDateStruct&) = default;
};
static_assert(sizeof(tagDateStruct) == 6);

} // namespace ZoVelkor
