#pragma once

#include "Bstr.h"
#include "CComBSTR.h"
#include "CLxiTimeInterval.h"
#include "ZoExport.h"

#include <cstdint>
#include <string>

namespace ZoVelkor
{

/// Absolute time of LXI events: a sign, and as magnitude an epoch of 2^32 seconds, seconds and nanoseconds
/// (IEEE 1588-2008, 5.3.3).
///
/// The value is ((epoch * 2^32) + seconds) * 10^9 + nanoseconds. Arithmetic leaves 0 to 999 999 999
/// nanoseconds; setters and constructors keep what they are given. Arguments of type unsigned long carry 32
/// bits, higher ones are dropped. Nanosecond counts have 64 bits and wrap: differences and halves are right
/// for times up to 292 years, that is for epochs 0 and 1 always. Threads: one instance belongs to one thread
/// at a time.
class ZO_EXPORT CLxiTime
{
public:
    /// Zero.
    CLxiTime() noexcept = default;
    /// Takes seconds from the upper and nanoseconds from the lower 32 bits.
    CLxiTime(unsigned long long time) noexcept;
    /// The same with an epoch.
    CLxiTime(unsigned short epoch, unsigned long long time) noexcept;
    /// Takes the parts as they are; 10^9 ns or more are not carried.
    CLxiTime(unsigned short epoch, unsigned long seconds, unsigned long nanoSeconds) noexcept;
    /// Takes sign and whole nanoseconds of an interval; the fraction is dropped.
    CLxiTime(const CLxiTimeInterval& interval) noexcept;
    CLxiTime(const CLxiTime&) noexcept = default;
    CLxiTime& operator=(const CLxiTime&) noexcept = default;
    virtual ~CLxiTime();

    /// All fields and the sign are equal; zero and negative zero are not.
    bool operator==(const CLxiTime& other) const noexcept;
    /// Later than the other. Of two times with one sign the larger epoch is the greater one, even when both
    /// are negative.
    bool operator>(const CLxiTime& other) const noexcept;
    /// The opposite of operator>: not later than the other, or equal.
    bool operator<=(const CLxiTime& other) const noexcept { return !(*this > other); }

    /// Adds a time. The epochs are added by themselves, wrapping at 16 bits and taking no part in the sum of
    /// seconds; a carry out of the seconds adds 1.
    void Add(const CLxiTime& other) noexcept;
    /// Subtracts a time. The epochs are part of the difference; its epoch is 1 when its seconds need more
    /// than 32 bits, else 0.
    void Sub(const CLxiTime& other) noexcept;
    /// Halves the magnitude, epoch included, rounding down; the sign stays. The epoch follows the rule of
    /// Sub.
    void Div2() noexcept;

    /// @name The parts, as they are kept
    /// Nothing is carried from one to the other and the sign stays.
    /// @{

    /// Units of 2^32 s.
    unsigned short GetEpoch() const noexcept { return m_epoch; }
    /// Seconds within the epoch.
    unsigned long GetSeconds() const noexcept { return m_seconds; }
    /// Nanoseconds within the second, unless they were set to more.
    unsigned long GetNanoSeconds() const noexcept { return m_nanoSeconds; }
    /// Whether the time lies before zero; zero itself can have either sign.
    bool IsNegative() const noexcept { return m_negative; }
    /// Sets the epoch.
    void SetEpoch(unsigned short epoch) noexcept { m_epoch = epoch; }
    /// Sets the seconds within the epoch.
    void SetSeconds(unsigned long seconds) noexcept { m_seconds = static_cast<std::uint32_t>(seconds); }
    /// Sets the nanoseconds; more than 999 999 999 stay until the next arithmetic.
    void SetNanoSeconds(unsigned long nanoSeconds) noexcept
    {
        m_nanoSeconds = static_cast<std::uint32_t>(nanoSeconds);
    }
    /// Epoch, seconds and nanoseconds become 0; the sign stays.
    void Reset() noexcept;
    /// @}

    /// Seconds in the upper, nanoseconds in the lower 32 bits; the sign does not show.
    /// Deliberate: the name is spelt as every caller writes it.
    unsigned long long GetTimeWihtoutEpoch() const noexcept;
    /// As GetTimeWihtoutEpoch, with the lower 32 bits in two's complement when the time is negative.
    unsigned long long GetUTC() const noexcept;

    /// Sign, seconds, a point and the nanoseconds set right in nine columns of blanks; 0 ns are nine blanks.
    /// The epoch is not shown.
    /// @throws std::bad_alloc
    operator std::string() const;
    /// The same text.
    operator CComBSTR() const;

    // Local time. Sign and epoch do not count: seconds are those since 1970. The time zone's rules are those
    // of the platform.

    /// Day and time as in "Thursday January 01 01:00:00 1970"; the names are English.
    ///
    /// @return a string for the caller to free; null when memory is short
    /// @throws std::bad_alloc
    BSTR GetLocal() const;
    /// Time of day with milliseconds as in "01:00:00.007"; otherwise like GetLocal().
    BSTR GetLocalSimpleFormat() const;
    /// Calendar fields: month 1 to 12, day 1 to 31, hour 0 to 23, milliseconds 0 to 999 unless the
    /// nanoseconds were set to a second or more.
    void GetLocal(unsigned short& year,
                  unsigned short& month,
                  unsigned short& day,
                  unsigned short& hour,
                  unsigned short& minute,
                  unsigned short& second,
                  unsigned short& milliSeconds) const noexcept;

    /// The time as an interval, limited to its range. With an epoch above 3 the result is the largest
    /// interval, whatever the sign.
    operator CLxiTimeInterval() const noexcept;

private:
    /// The magnitude in nanoseconds, wrapped to 64 bits; an epoch of 0 leaves the own one out.
    std::uint64_t Magnitude(std::uint16_t epoch) const noexcept;
    std::uint64_t SignedValue(std::uint16_t epoch) const noexcept;
    void SetDifference(std::uint64_t value) noexcept;
    void SetMagnitude(std::uint64_t nanoSeconds) noexcept;

    bool m_negative = false;
    std::uint16_t m_epoch = 0;
    std::uint32_t m_seconds = 0;
    std::uint32_t m_nanoSeconds = 0;
};

} // namespace ZoVelkor
