#include "PerformanceCounter.h"

#include "LastError.h"

#include <chrono>

namespace
{
using Tick = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;

BOOL Store(LARGE_INTEGER* target, LONGLONG value) noexcept
{
    if (target == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    target->QuadPart = value;
    return TRUE;
}
} // namespace

BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return Store(counter, std::chrono::floor<Tick>(now).count());
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) noexcept
{
    return Store(frequency, Tick::period::den);
}
