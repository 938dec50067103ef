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
    : m_wEpoch(epoch),
      m_dwSeconds(static_cast<std::uint32_t>(time >> kWordBits)),
      m_dwNanoSeconds(static_cast<std::uint32_t>(time))
{}

CLxiTime::CLxiTime(unsigned short epoch, unsigned long seconds, unsigned long nanoSeconds) noexcept
    : m_wEpoch(epoch),
      m_dwSeconds(static_cast<std::uint32_t>(seconds)),
      m_dwNanoSeconds(static_cast<std::uint32_t>(nanoSeconds))
{}

CLxiTime::CLxiTime(const CLxiTimeInterval& interval) noexcept : m_bNegative(interval.IsNegative())
{
    const auto value = static_cast<std::uint64_t>(interval.GetNanoSeconds());
    const std::uint64_t magnitude = m_bNegative ? Negated(value) : value;
    m_dwSeconds = static_cast<std::uint32_t>(magnitude / kNanoSecondsPerSecond);
    m_dwNanoSeconds = static_cast<std::uint32_t>(magnitude % kNanoSecondsPerSecond);
}

CLxiTime::~CLxiTime() = default;

bool CLxiTime::operator==(const CLxiTime& other) const noexcept
{
    return m_wEpoch == other.m_wEpoch && m_dwSeconds == other.m_dwSeconds &&
           m_dwNanoSeconds == other.m_dwNanoSeconds && m_bNegative == other.m_bNegative;
}

bool CLxiTime::operator>(const CLxiTime& other) const noexcept
{
    if (*this == other)
    {
        return false;
    }
    if (m_bNegative != other.m_bNegative)
    {
        return !m_bNegative;
    }
    if (m_wEpoch != other.m_wEpoch)
    {
        // Deliberate: a later epoch comes later on both sides of zero; schedules are sorted by it.
        return m_wEpoch > other.m_wEpoch;
    }
    if (m_dwSeconds == other.m_dwSeconds && m_dwNanoSeconds > other.m_dwNanoSeconds)
    {
        return !m_bNegative;
    }
    return m_bNegative ? m_dwSeconds <= other.m_dwSeconds : m_dwSeconds > other.m_dwSeconds;
}

void CLxiTime::Add(const CLxiTime& other) noexcept
{
    // Deliberate: epochs are counted apart here, so that an offset of epoch 0 changes the epoch of a time by
    // a carry alone; Sub has them in its difference.
    const unsigned epochs = unsigned{m_wEpoch} + other.m_wEpoch;
    SetDifference(SignedValue(0) + other.SignedValue(0));
    m_wEpoch = static_cast<std::uint16_t>(epochs + m_wEpoch);
}

void CLxiTime::Sub(const CLxiTime& other) noexcept
{
    SetDifference(SignedValue(m_wEpoch) - other.SignedValue(other.m_wEpoch));
}

void CLxiTime::Div2() noexcept
{
    const auto half = static_cast<std::uint64_t>(static_cast<std::int64_t>(Magnitude(m_wEpoch)) >> 1);
    SetMagnitude(IsBelowZero(half) ? Negated(half) : half);
}

void CLxiTime::Reset() noexcept
{
    m_wEpoch = 0;
    m_dwSeconds = 0;
    m_dwNanoSeconds = 0;
}

unsigned long long CLxiTime::GetTimeWihtoutEpoch() const noexcept
{
    return (std::uint64_t{m_dwSeconds} << kWordBits) | m_dwNanoSeconds;
}

unsigned long long CLxiTime::GetUTC() const noexcept
{
    const std::uint32_t nanoSeconds = m_bNegative ? 0 - m_dwNanoSeconds : m_dwNanoSeconds;
    return (std::uint64_t{m_dwSeconds} << kWordBits) | nanoSeconds;
}

CLxiTime::operator std::string() const
{
    // Deliberate: logs keep the formats they always had. The precision switches the leading zeros off, so
    // that this C library fills up with blanks.
    return FormatLxiText(m_bNegative ? "-%lu.%09.0lu" : "%lu.%09.0lu", GetSeconds(), GetNanoSeconds());
}

CLxiTime::operator CComBSTR() const
{
    CComBSTR text;
    text.Attach(Widened(*this));
    return text;
}

BSTR CLxiTime::GetLocal() const
{
    return Widened(CTime(m_dwSeconds).Format("%A %B %d %H:%M:%S %Y"));
}

BSTR CLxiTime::GetLocalSimpleFormat() const
{
    const long milliSeconds = m_dwNanoSeconds / kNanoSecondsPerMilliSecond;
    return Widened(CTime(m_dwSeconds).Format("%H:%M:%S") + FormatLxiText(".%03li", milliSeconds));
}

void CLxiTime::GetLocal(unsigned short& year,
                        unsigned short& month,
                        unsigned short& day,
                        unsigned short& hour,
                        unsigned short& minute,
                        unsigned short& second,
                        unsigned short& milliSeconds) const noexcept
{
    const CTime time(m_dwSeconds);
    year = static_cast<unsigned short>(time.GetYear());
    month = static_cast<unsigned short>(time.GetMonth());
    day = static_cast<unsigned short>(time.GetDay());
    hour = static_cast<unsigned short>(time.GetHour());
    minute = static_cast<unsigned short>(time.GetMinute());
    second = static_cast<unsigned short>(time.GetSecond());
    milliSeconds = static_cast<unsigned short>(m_dwNanoSeconds / kNanoSecondsPerMilliSecond);
}

CLxiTime::operator CLxiTimeInterval() const noexcept
{
    constexpr long long kHighest = std::numeric_limits<long long>::max();
    CLxiTimeInterval interval;
    if (m_wEpoch > kLastCountableEpoch)
    {
        // Deliberate: beyond the countable epochs the sign is not looked at.
        interval.SetNanoSeconds(kHighest);
        return interval;
    }
    const auto magnitude =
        static_cast<long long>(std::min(Magnitude(m_wEpoch), static_cast<std::uint64_t>(kHighest)));
    interval.SetNanoSeconds(m_bNegative ? -magnitude : magnitude);
    return interval;
}

std::uint64_t CLxiTime::Magnitude(std::uint16_t epoch) const noexcept
{
    const std::uint64_t seconds = (std::uint64_t{epoch} << kWordBits) | m_dwSeconds;
    return seconds * kNanoSecondsPerSecond + m_dwNanoSeconds;
}

std::uint64_t CLxiTime::SignedValue(std::uint16_t epoch) const noexcept
{
    const std::uint64_t magnitude = Magnitude(epoch);
    return m_bNegative ? Negated(magnitude) : magnitude;
}

void CLxiTime::SetDifference(std::uint64_t value) noexcept
{
    m_bNegative = IsBelowZero(value);
    SetMagnitude(m_bNegative ? Negated(value) : value);
}

void CLxiTime::SetMagnitude(std::uint64_t nanoSeconds) noexcept
{
    const std::uint64_t seconds = nanoSeconds / kNanoSecondsPerSecond;
    // Deliberate: the epoch of a result says that its seconds do not fit, not by how much.
    m_wEpoch = seconds >> kWordBits != 0 ? 1 : 0;
    m_dwSeconds = static_cast<std::uint32_t>(seconds);
    m_dwNanoSeconds = static_cast<std::uint32_t>(nanoSeconds % kNanoSecondsPerSecond);
}

} // namespace ZoVelkor
