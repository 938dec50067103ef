#include "CLxiTime.h"

#include "CTime.h"
#include "LxiText.h"

#include <algorithm>
#include <limits>

namespace ZoVelkor
{
namespace
{

constexpr std::uint64_t kNanoSecondsPerSecond = 1'000'000'000;
constexpr std::uint32_t kNanoSecondsPerMilliSecond = 1'000'000;
constexpr int kWordBits = 32;
/// The largest epoch whose times fit an unsigned 64-bit number of nanoseconds.
constexpr std::uint16_t kLastCountableEpoch = 3;

constexpr std::uint64_t Negated(std::uint64_t value) noexcept
{
    return 0 - value;
}

constexpr bool IsBelowZero(std::uint64_t value) noexcept
{
    return static_cast<std::int64_t>(value) < 0;
}

BSTR Widened(const std::string& text) noexcept
{
    return A2WBSTR(text.c_str());
}

} // namespace

CLxiTime::CLxiTime(unsigned long long time) noexcept : CLxiTime(0, time)
{}

CLxiTime::CLxiTime(unsigned short epoch, unsigned long long time) noexcept
    : m_epoch(epoch),
      m_seconds(static_cast<std::uint32_t>(time >> kWordBits)),
      m_nanoSeconds(static_cast<std::uint32_t>(time))
{}

CLxiTime::CLxiTime(unsigned short epoch, unsigned long seconds, unsigned long nanoSeconds) noexcept
    : m_epoch(epoch),
      m_seconds(static_cast<std::uint32_t>(seconds)),
      m_nanoSeconds(static_cast<std::uint32_t>(nanoSeconds))
{}

CLxiTime::CLxiTime(const CLxiTimeInterval& interval) noexcept : m_negative(interval.IsNegative())
{
    const auto value = static_cast<std::uint64_t>(interval.GetNanoSeconds());
    const std::uint64_t magnitude = m_negative ? Negated(value) : value;
    m_seconds = static_cast<std::uint32_t>(magnitude / kNanoSecondsPerSecond);
    m_nanoSeconds = static_cast<std::uint32_t>(magnitude % kNanoSecondsPerSecond);
}

CLxiTime::~CLxiTime() = default;

bool CLxiTime::operator==(const CLxiTime& other) const noexcept
{
    return m_epoch == other.m_epoch && m_seconds == other.m_seconds && m_nanoSeconds == other.m_nanoSeconds &&
           m_negative == other.m_negative;
}

bool CLxiTime::operator>(const CLxiTime& other) const noexcept
{
    if (*this == other)
    {
        return false;
    }
    if (m_negative != other.m_negative)
    {
        return !m_negative;
    }
    if (m_epoch != other.m_epoch)
    {
        // Deliberate: a later epoch comes later on both sides of zero; schedules are sorted by it.
        return m_epoch > other.m_epoch;
    }
    if (m_seconds == other.m_seconds && m_nanoSeconds > other.m_nanoSeconds)
    {
        return !m_negative;
    }
    return m_negative ? m_seconds <= other.m_seconds : m_seconds > other.m_seconds;
}

void CLxiTime::Add(const CLxiTime& other) noexcept
{
    // Deliberate: epochs are counted apart here, so that an offset of epoch 0 changes the epoch of a time by
    // a carry alone; Sub has them in its difference.
    const unsigned epochs = unsigned{m_epoch} + other.m_epoch;
    SetDifference(SignedValue(0) + other.SignedValue(0));
    m_epoch = static_cast<std::uint16_t>(epochs + m_epoch);
}

void CLxiTime::Sub(const CLxiTime& other) noexcept
{
    SetDifference(SignedValue(m_epoch) - other.SignedValue(other.m_epoch));
}

void CLxiTime::Div2() noexcept
{
    const auto half = static_cast<std::uint64_t>(static_cast<std::int64_t>(Magnitude(m_epoch)) >> 1);
    SetMagnitude(IsBelowZero(half) ? Negated(half) : half);
}

void CLxiTime::Reset() noexcept
{
    m_epoch = 0;
    m_seconds = 0;
    m_nanoSeconds = 0;
}

unsigned long long CLxiTime::GetTimeWihtoutEpoch() const noexcept
{
    return (std::uint64_t{m_seconds} << kWordBits) | m_nanoSeconds;
}

unsigned long long CLxiTime::GetUTC() const noexcept
{
    const std::uint32_t nanoSeconds = m_negative ? 0 - m_nanoSeconds : m_nanoSeconds;
    return (std::uint64_t{m_seconds} << kWordBits) | nanoSeconds;
}

CLxiTime::operator std::string() const
{
    // Deliberate: logs keep the formats they always had. The precision switches the leading zeros off, so
    // that this C library fills up with blanks.
    return FormatLxiText(m_negative ? "-%lu.%09.0lu" : "%lu.%09.0lu", GetSeconds(), GetNanoSeconds());
}

CLxiTime::operator CComBSTR() const
{
    CComBSTR text;
    text.Attach(Widened(*this));
    return text;
}

BSTR CLxiTime::GetLocal() const
{
    return Widened(CTime(m_seconds).Format("%A %B %d %H:%M:%S %Y"));
}

BSTR CLxiTime::GetLocalSimpleFormat() const
{
    const long milliSeconds = m_nanoSeconds / kNanoSecondsPerMilliSecond;
    return Widened(CTime(m_seconds).Format("%H:%M:%S") + FormatLxiText(".%03li", milliSeconds));
}

void CLxiTime::GetLocal(unsigned short& year,
                        unsigned short& month,
                        unsigned short& day,
                        unsigned short& hour,
                        unsigned short& minute,
                        unsigned short& second,
                        unsigned short& milliSeconds) const noexcept
{
    const CTime time(m_seconds);
    year = static_cast<unsigned short>(time.GetYear());
    month = static_cast<unsigned short>(time.GetMonth());
    day = static_cast<unsigned short>(time.GetDay());
    hour = static_cast<unsigned short>(time.GetHour());
    minute = static_cast<unsigned short>(time.GetMinute());
    second = static_cast<unsigned short>(time.GetSecond());
    milliSeconds = static_cast<unsigned short>(m_nanoSeconds / kNanoSecondsPerMilliSecond);
}

CLxiTime::operator CLxiTimeInterval() const noexcept
{
    constexpr long long kHighest = std::numeric_limits<long long>::max();
    CLxiTimeInterval interval;
    if (m_epoch > kLastCountableEpoch)
    {
        // Deliberate: beyond the countable epochs the sign is not looked at.
        interval.SetNanoSeconds(kHighest);
        return interval;
    }
    const auto magnitude =
        static_cast<long long>(std::min(Magnitude(m_epoch), static_cast<std::uint64_t>(kHighest)));
    interval.SetNanoSeconds(m_negative ? -magnitude : magnitude);
    return interval;
}

std::uint64_t CLxiTime::Magnitude(std::uint16_t epoch) const noexcept
{
    const std::uint64_t seconds = (std::uint64_t{epoch} << kWordBits) | m_seconds;
    return seconds * kNanoSecondsPerSecond + m_nanoSeconds;
}

std::uint64_t CLxiTime::SignedValue(std::uint16_t epoch) const noexcept
{
    const std::uint64_t magnitude = Magnitude(epoch);
    return m_negative ? Negated(magnitude) : magnitude;
}

void CLxiTime::SetDifference(std::uint64_t value) noexcept
{
    m_negative = IsBelowZero(value);
    SetMagnitude(m_negative ? Negated(value) : value);
}

void CLxiTime::SetMagnitude(std::uint64_t nanoSeconds) noexcept
{
    const std::uint64_t seconds = nanoSeconds / kNanoSecondsPerSecond;
    // Deliberate: the epoch of a result says that its seconds do not fit, not by how much.
    m_epoch = seconds >> kWordBits != 0 ? 1 : 0;
    m_seconds = static_cast<std::uint32_t>(seconds);
    m_nanoSeconds = static_cast<std::uint32_t>(nanoSeconds % kNanoSecondsPerSecond);
}

} // namespace ZoVelkor
