#pragma once

#include "PlatformTypes.h"

#include <algorithm>
#include <chrono>

namespace ZoVelkor::Demo
{

/// Milliseconds until a point of time, rounded up, for a wait; 0 when it has passed.
inline DWORD RemainingMs(std::chrono::steady_clock::time_point end)
{
    const auto remaining = end - std::chrono::steady_clock::now();
    const auto roundedUp = std::chrono::ceil<std::chrono::milliseconds>(remaining).count();
    return static_cast<DWORD>(std::max<std::int64_t>(roundedUp, 0));
}

} // namespace ZoVelkor::Demo
