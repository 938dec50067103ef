#pragma once

#include "Event.h"
#include "PlatformTypes.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>

/// The end of a wait, fixed once on the monotonic clock; nothing: the wait has no end.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

/// @param timeoutMs  INFINITE for no end
inline Deadline DeadlineAfter(DWORD timeoutMs) noexcept
{
    return timeoutMs == INFINITE
               ? Deadline()
               : Deadline(std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs));
}

/// Time that is left until a point of time, not negative.
inline std::chrono::steady_clock::duration TimeLeft(std::chrono::steady_clock::time_point end) noexcept
{
    using Clock = std::chrono::steady_clock;
    return std::max(end - Clock::now(), Clock::duration::zero());
}

/// The same in milliseconds, at most what poll takes; rounded up, so that nothing is polled over and over.
inline int MillisecondsLeft(std::chrono::steady_clock::time_point end) noexcept
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(TimeLeft(end)).count();
    return static_cast<int>(std::min<milliseconds::rep>(left, std::numeric_limits<int>::max()));
}

/// The time limit of a poll that ends with a deadline; -1 for no end.
inline int PollTimeout(const Deadline& deadline) noexcept
{
    return deadline ? MillisecondsLeft(*deadline) : -1;
}
