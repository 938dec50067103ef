#pragma once

#include <cstdint>

namespace ZoVelkor
{

/// Ticks from one counter value to another; wraps instead of overflowing.
constexpr long long TicksBetween(long long from, long long to) noexcept
{
    return static_cast<long long>(static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from));
}

/// A frequency to divide by: 1 for one that cannot be.
constexpr long long UsableFrequency(long long frequency) noexcept
{
    return frequency > 0 ? frequency : 1;
}

} // namespace ZoVelkor
