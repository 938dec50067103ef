#include "CPerformanceDiagnose.h"

#include "PerformanceCounter.h"
#include "PerformanceTicks.h"
#include "Trace.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

namespace ZoVelkor
{
namespace
{

constexpr const char* kTraceComponent = "RemoteTrace";

long long TraceFrequency() noexcept
{
    return UsableFrequency(get_RemoteDiagnoseControl()->iCounterFrequency.load(std::memory_order_relaxed));
}

/// Microseconds in a part of a second; the product needs more than 64 bits at high frequencies.
std::uint64_t Microseconds(std::uint64_t ticks, std::uint64_t frequency) noexcept
{
    __extension__ using Wide = unsigned __int128;
    constexpr std::uint64_t kPerSecond = 1'000'000;
    return static_cast<std::uint64_t>(Wide{ticks} * kPerSecond / frequency);
}

const char* TextOrEmpty(const char* text) noexcept
{
    return text != nullptr ? text : "";
}

} // namespace

CPerformanceDiagnose::CStatistik::~CStatistik() = default;

void CPerformanceDiagnose::CStatistik::Push(long long ticks) noexcept
{
    if (m_count == std::numeric_limits<std::int32_t>::max())
    {
        return;
    }
    const double seconds = static_cast<double>(ticks) / static_cast<double>(TraceFrequency());
    ++m_count;
    m_sum += seconds;
    m_sumOfSquares += seconds * seconds;
    m_minimum = std::min(m_minimum, seconds);
    m_maximum = std::max(m_maximum, seconds);
}

void CPerformanceDiagnose::CStatistik::Reset() noexcept
{
    *this = CStatistik();
}

double CPerformanceDiagnose::CStatistik::get_Mean() const noexcept
{
    return m_count != 0 ? m_sum / m_count : 0.0;
}

double CPerformanceDiagnose::CStatistik::get_Sdev() const noexcept
{
    const double mean = get_Mean();
    const double variance = m_count != 0 ? m_sumOfSquares / m_count - mean * mean : 0.0;
    return std::sqrt(std::max(variance, 0.0)); // rounding can leave equal samples just below 0
}

CPerformanceDiagnose::CRunControl::CRunControl() noexcept
    : m_runStart(GetPerfCounter()),
      m_sectionStart(m_runStart),
      m_sectionEnd(m_runStart)
{}

CPerformanceDiagnose::CRunControl::~CRunControl() = default;

void CPerformanceDiagnose::CRunControl::NextSection() noexcept
{
    m_sectionStart = m_sectionEnd;
    m_sectionEnd = GetPerfCounter();
}

CPerformanceDiagnose::CMeasurement::CMeasurement(CStatistik& statistic) noexcept
    : m_statistic(statistic),
      m_start(GetPerfCounter())
{}

CPerformanceDiagnose::CMeasurement::~CMeasurement()
{
    m_statistic.Push(TicksBetween(m_start, GetPerfCounter()));
}

long long CPerformanceDiagnose::GetPerfCounter() noexcept
{
    LARGE_INTEGER counter{};
    return QueryPerformanceCounter(&counter) != FALSE ? counter.QuadPart : 0;
}

long long CPerformanceDiagnose::GetFrequency() noexcept
{
    LARGE_INTEGER frequency{};
    return QueryPerformanceFrequency(&frequency) != FALSE ? UsableFrequency(frequency.QuadPart) : 1;
}

void CPerformanceDiagnose::BeginDebugTiming() noexcept
{
    get_RemoteDiagnoseControl()->iLastTiming.store(GetPerfCounter(), std::memory_order_relaxed);
}

void CPerformanceDiagnose::DebugMessageTiming(const char* message) noexcept
{
    if (!IsDebugTimingActive())
    {
        return;
    }
    tagRemoteDiagnoseControl& control = *get_RemoteDiagnoseControl();
    const long long now = GetPerfCounter();
    const long long base = control.iTimingBase.load(std::memory_order_relaxed);
    const long long last = control.iLastTiming.exchange(now, std::memory_order_relaxed);
    try
    {
        DebugPrint(kTraceComponent,
                   fmt::format("t = {} : dt = {} : {}",
                               GetTimestampFromPerformanceCounter(TicksBetween(base, now)),
                               GetTimestampFromPerformanceCounter(TicksBetween(last, now)),
                               TextOrEmpty(message)));
    }
    catch (const std::exception&) // no memory: the line is dropped
    {
        return;
    }
}

void CPerformanceDiagnose::DebugMessageTrace(const char* message) noexcept
{
    if (!IsDebugTraceModeActive())
    {
        return;
    }
    if (IsDebugTimingActive())
    {
        DebugMessageTiming(message);
        return;
    }
    DebugPrint(kTraceComponent, TextOrEmpty(message));
}

std::string CPerformanceDiagnose::GetTimestampFromPerformanceCounter(long long ticks)
{
    constexpr std::uint64_t kHoursADay = 24;
    constexpr std::uint64_t kSixty = 60;
    constexpr std::uint64_t kThousand = 1000;
    const auto frequency = static_cast<std::uint64_t>(TraceFrequency());
    const auto unsignedTicks = static_cast<std::uint64_t>(ticks);
    const std::uint64_t magnitude = ticks < 0 ? 0 - unsignedTicks : unsignedTicks;
    const std::uint64_t seconds = magnitude / frequency;
    const std::uint64_t microseconds = Microseconds(magnitude % frequency, frequency);
    return fmt::format("{}{:02}:{:02}:{:02},{:03}.{:03}",
                       ticks < 0 ? "-" : "",
                       seconds / (kSixty * kSixty) % kHoursADay,
                       seconds / kSixty % kSixty,
                       seconds % kSixty,
                       microseconds / kThousand,
                       microseconds % kThousand);
}

} // namespace ZoVelkor
