#pragma once

#include "PlatformTypes.h"

// Atomic operations on plain counters, each a full barrier.

/// Adds 1 and gives the new value; wraps at the ends of the range.
inline LONG InterlockedIncrement(volatile LONG* value) noexcept
{
    return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}

/// Subtracts 1 and gives the new value; wraps at the ends of the range.
inline LONG InterlockedDecrement(volatile LONG* value) noexcept
{
    return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST);
}

/// Stores a value and gives the former one.
inline LONG InterlockedExchange(volatile LONG* target, LONG value) noexcept
{
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}

/// Adds a value and gives the former one.
inline LONG InterlockedExchangeAdd(volatile LONG* target, LONG value) noexcept
{
    return __atomic_fetch_add(target, value, __ATOMIC_SEQ_CST);
}

/// Stores a value if the target equals comparand; gives the former value in any case.
inline LONG InterlockedCompareExchange(volatile LONG* target, LONG value, LONG comparand) noexcept
{
    __atomic_compare_exchange_n(target, &comparand, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
