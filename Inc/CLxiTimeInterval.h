#pragma once

#include "ZoExport.h"

#include <cstdint>
#include <string>

namespace ZoVelkor
{

/// Time difference as it travels between clocks: nanoseconds times 65536 (IEEE 1588-2008, 5.3.2).
using TimeInterval = long long;

/// Signed time difference: nanoseconds, and a fraction in units of 2^-16 ns.
///
/// A TimeInterval holds +-(2^47 - 1) ns, which is about 39 hours. SetNanoSeconds keeps to that range; sums
/// and differences may leave it, up to the 64 bits of a number, where they wrap. Threads: one instance
/// belongs to one thread at a time.
class ZO_EXPORT CLxiTimeInterval
{
public:
    /// Zero.
    CLxiTimeInterval() noexcept = default;
    /// Splits a scaled number: the lower 16 bits are the fraction, the nanoseconds are rounded toward zero.
    CLxiTimeInterval(TimeInterval scaled) noexcept;
    CLxiTimeInterval(const CLxiTimeInterval&) noexcept = default;
    CLxiTimeInterval& operator=(const CLxiTimeInterval&) noexcept = default;
    virtual ~CLxiTimeInterval();

    /// Nanoseconds times 65536 plus the fraction, wrapped to 64 bits.
    ///
    /// The fraction is added to negative nanoseconds, too: a negative number that is no whole nanosecond does
    /// not come back from a round trip through this class.
    operator TimeInterval() const noexcept;

    /// Takes whole nanoseconds over, limited to +-(2^47 - 1); IsOverFlow tells whether they were limited.
    void SetNanoSeconds(long long nanoSeconds) noexcept;
    /// Whole nanoseconds, with sign; the fraction is only in the scaled number.
    long long GetNanoSeconds() const noexcept { return m_nanoSeconds; }
    /// The nanoseconds are below 0. A fraction alone is never negative.
    bool IsNegative() const noexcept { return m_nanoSeconds < 0; }
    /// The last SetNanoSeconds had to limit its value. Arithmetic and Reset leave this as it is.
    bool IsOverFlow() const noexcept { return m_overFlow; }

    /// Adds another interval. Each fraction counts with the sign of its nanoseconds; of their sum the lower
    /// 16 bits stay, and only a whole nanosecond is carried.
    void Add(const CLxiTimeInterval& other) noexcept;
    /// Adds the other interval with its nanoseconds negated and its fraction as it is.
    void Sub(const CLxiTimeInterval& other) noexcept;
    /// Halves the nanoseconds, rounding toward zero, and drops the fraction.
    void Div2() noexcept;
    /// Nanoseconds and fraction become 0.
    void Reset() noexcept;

    /// Sign, nanoseconds, a point and the fraction's number for a log, not for reading back.
    ///
    /// Only the lower 32 bits of the magnitude are shown, as a signed number set right in 64 columns.
    /// @throws std::bad_alloc
    operator std::string() const;

private:
    bool m_overFlow = false;
    long long m_nanoSeconds = 0;
    std::uint16_t m_fraction = 0;
};

} // namespace ZoVelkor
