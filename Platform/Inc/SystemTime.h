#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Date and time of day by the proleptic Gregorian calendar, to the millisecond.
struct SYSTEMTIME
{
    WORD wYear;         ///< 1601 to 30827
    WORD wMonth;        ///< 1 to 12
    WORD wDayOfWeek;    ///< 0 is Sunday
    WORD wDay;          ///< 1 to 31
    WORD wHour;         ///< 0 to 23
    WORD wMinute;       ///< 0 to 59
    WORD wSecond;       ///< 0 to 59
    WORD wMilliseconds; ///< 0 to 999
};
static_assert(sizeof(SYSTEMTIME) == 16);

/// Reads the system clock, or what stands in for it, in UTC; milliseconds are cut, not rounded. A null
/// pointer gets nothing.
ZO_EXPORT void GetSystemTime(SYSTEMTIME* time) noexcept;

/// Sets the system clock, the only place of the platform that does. The time is UTC.
///
/// @param time  wDayOfWeek is ignored; every other field must be in its range and the day must exist in its
///              month, leap years included. What is out of range never reaches the clock.
/// @return TRUE; FALSE with the last error ERROR_INVALID_PARAMETER (null, or a time that is none or that the
///         system's clock cannot show), ERROR_PRIVILEGE_NOT_HELD (the process may not set the clock) or
///         ERROR_NOT_SUPPORTED (any other refusal)
ZO_EXPORT BOOL SetSystemTime(const SYSTEMTIME* time) noexcept;

/// Step that hands a time to the system's clock.
///
/// @param seconds       since 1970-01-01 00:00:00 UTC, leap seconds not counted; may be negative
/// @param milliseconds  0 to 999
/// @return 0, or the errno number of the refusal
using SystemClockPrimitive = int (*)(LONGLONG seconds, int milliseconds) noexcept;

/// Replaces the step by which SetSystemTime changes the clock of the machine, for instruments that keep
/// their time elsewhere and for tests, which must leave the machine alone. Threads: any.
///
/// @param primitive  null brings back the one that sets the machine's clock
/// @return the former one; null when that was the one that sets the machine's clock
ZO_EXPORT SystemClockPrimitive SetSystemClockPrimitive(SystemClockPrimitive primitive) noexcept;

/// Tells the time in place of the machine's clock.
///
/// @return milliseconds since 1970-01-01 00:00:00 UTC, leap seconds not counted, in the years of SYSTEMTIME
using SystemClockSource = LONGLONG (*)() noexcept;

/// Replaces where GetSystemTime reads the time, for instruments whose time is not the machine's. Threads:
/// any.
///
/// @param source  null brings back the machine's clock
/// @return the former one; null when that was the machine's clock
ZO_EXPORT SystemClockSource SetSystemClockSource(SystemClockSource source) noexcept;
