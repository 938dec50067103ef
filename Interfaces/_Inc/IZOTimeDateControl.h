#pragma once

#include "TimeDateStruct.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// A parameter that must not be null is null.
inline constexpr HRESULT ZO_E_NULL_ARGUMENT = MakeResult(0x80040201);
/// A field of a parameter is outside its range.
inline constexpr HRESULT ZO_E_ARGUMENT_RANGE = MakeResult(0x80040202);

/// Reads and sets date and time of day, both in UTC, and a time zone.
///
/// Results: S_OK; S_FALSE when the system refuses to set its clock, which then goes on as before.
/// Implementations say which other results they have. Threads: any operation from any thread.
struct IZOTimeDateControl : IUnknown
{
    static constexpr IID kInterfaceId{
        0x43CA4F47, 0x1E41, 0x4F81, {0xAE, 0x0D, 0xD8, 0x1A, 0xDB, 0x35, 0xF1, 0xF8}};

    /// Reads both in one step, so that they belong together.
    virtual HRESULT GetTimeAndDate(tagTimeStruct* pTime, tagDateStruct* pDate) = 0;
    /// Reads the time of day.
    virtual HRESULT GetTime(tagTimeStruct* pTime) = 0;
    /// Reads the date.
    virtual HRESULT GetDate(tagDateStruct* pDate) = 0;
    /// Sets both in one step.
    virtual HRESULT SetTimeAndDate(tagTimeStruct Time, tagDateStruct Date) = 0;
    /// Sets the time of day; the date stays.
    virtual HRESULT SetTime(tagTimeStruct Time) = 0;
    /// Sets the date; the time of day stays, to the millisecond read just before.
    virtual HRESULT SetDate(tagDateStruct Date) = 0;
    /// Reads the time zone's distance from UTC.
    ///
    /// @param[in,out] pTime  left alone where the instrument keeps no time zone
    virtual HRESULT GetTimeZone(tagTimeStruct* pTime) = 0;
    /// Sets the time zone, where the instrument keeps one; else it succeeds and does nothing.
    virtual HRESULT SetTimeZone(tagTimeStruct Time) = 0;

protected:
    ~IZOTimeDateControl() = default;
};

inline constexpr const IID& IID_IZOTimeDateControl = IZOTimeDateControl::kInterfaceId;

} // namespace ZoVelkor
