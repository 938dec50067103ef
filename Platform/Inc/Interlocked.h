#pragma once

#include "PlatformTypes.h"

/// Adds 1 to a plain counter, atomically and as a full barrier, and gives the new value; wraps at the ends of
/// the range.
inline LONG InterlockedIncrement(volatile LONG* value) noexcept
{
    return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}
