#pragma once

#include "CAtlString.h"
#include "ZoExport.h"

#include <ctime>

/// A point in time to the second, seen in the local time zone.
///
/// The zone's rules are applied once, at construction: the fields of one object always belong together.
/// Times beyond the calendar of the system have all fields 0 and no text. Threads: safe to read from several.
class ZO_EXPORT CTime
{
public:
    /// @param seconds  since 1970-01-01 00:00:00 UTC, leap seconds not counted; may be negative
    explicit CTime(std::time_t seconds) noexcept;

    /// The seconds that the object was made of.
    std::time_t GetTime() const noexcept { return m_seconds; }
    /// Of the Gregorian calendar, such as 2024.
    int GetYear() const noexcept { return m_fields.tm_year + 1900; }
    /// 1 to 12
    int GetMonth() const noexcept { return m_fields.tm_mon + 1; }
    /// Day of the month, 1 to 31
    int GetDay() const noexcept { return m_fields.tm_mday; }
    /// 0 to 23
    int GetHour() const noexcept { return m_fields.tm_hour; }
    /// 0 to 59
    int GetMinute() const noexcept { return m_fields.tm_min; }
    /// 0 to 59; leap seconds are not shown
    int GetSecond() const noexcept { return m_fields.tm_sec; }

    /// The time as text; names are English whatever the locale of the process.
    ///
    /// @param format  with the conversions of strftime (ISO C 7.27.3.5); null gives the empty text, and so
    ///                does a text with more than 64 characters a conversion
    /// @throws std::bad_alloc
    CAtlStringA Format(const char* format) const;

private:
    std::time_t m_seconds;
    std::tm m_fields;
};
