#include "CLxiTrigger.h"

#include "CCritSectionLocker.h"
#include "LxiClock.h"

#include <chrono>
#include <exception>

namespace ZoVelkor::Demo
{
namespace
{

using Clock = CSweepEngine::Clock;

/// The instrument's own clock at an LXI time; null for a time that is too far ahead to wait for.
std::optional<Clock::time_point> LocalTime(const CLxiTime& time)
{
    // Differences with a higher epoch need more than the 64 bits that they are worked out in.
    if (time.GetEpoch() > 1)
    {
        return std::nullopt;
    }
    CLxiTime ahead = time;
    ahead.Sub(RemoteKernel::LxiNow());
    const CLxiTimeInterval interval = ahead;
    if (interval.IsOverFlow() && !interval.IsNegative())
    {
        return std::nullopt;
    }
    return Clock::now() + std::chrono::nanoseconds(interval.GetNanoSeconds());
}

} // namespace

CLxiTrigger::CLxiTrigger(CSweepEngine& sweeps,
                         const std::optional<RemoteKernel::LxiEndpointSettings>& settings)
    : m_sweeps(sweeps),
      m_endpoint(settings.value_or(RemoteKernel::LxiEndpointSettings{}))
{
    if (!settings)
    {
        return;
    }
    for (long lan = 0; lan != static_cast<long>(kLanEventCount); ++lan)
    {
        m_endpoint.AddObserver(lan, this);
    }
    try
    {
        m_endpoint.Start();
        m_on = true;
    }
    catch (const std::exception& fault)
    {
        m_fault = fault.what();
    }
}

CLxiTrigger::~CLxiTrigger()
{
    m_endpoint.Stop();
}

void CLxiTrigger::Reset()
{
    const CCritSectionLocker locker(m_section);
    m_lan = {};
}

LanSettings CLxiTrigger::Get(long lan) const
{
    const CCritSectionLocker locker(m_section);
    return m_lan.at(static_cast<std::size_t>(lan));
}

void CLxiTrigger::Put(long lan, const LanSettings& settings)
{
    const CCritSectionLocker locker(m_section);
    m_lan.at(static_cast<std::size_t>(lan)) = settings;
}

void CLxiTrigger::OnLxiEvent(const RemoteKernel::LxiEvent& event)
{
    const LanSettings lan = Get(event.event);
    if (!lan.enabled)
    {
        return;
    }
    const std::optional<Clock::time_point> time = LocalTime(event.time);
    if (!time)
    {
        m_endpoint.Errors().SetError(EnumLxiErrors::TriggerSourceNotActivated);
        return;
    }
    const auto delay = std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(lan.delayS));
    m_sweeps.TriggerByLxi(*time + delay);
}

} // namespace ZoVelkor::Demo
