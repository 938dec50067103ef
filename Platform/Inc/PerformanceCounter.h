#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// 64-bit number, whole or in halves.
union LARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        LONG HighPart;
    } u;               ///< the halves; the low one is without sign
    LONGLONG QuadPart; ///< the whole number
};

/// Reads the monotonic clock in ticks of 100 ns; changes of the system time do not show in it.
///
/// @return TRUE; FALSE with the last error ERROR_INVALID_PARAMETER when counter is null
ZO_EXPORT BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept;

/// Gives the ticks per second, always 10 000 000: a counter of months can be multiplied by a million in 64
/// bits once whole seconds are taken off.
///
/// @return TRUE; FALSE with the last error ERROR_INVALID_PARAMETER when frequency is null
ZO_EXPORT BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) noexcept;
