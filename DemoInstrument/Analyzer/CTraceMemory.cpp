#include "CTraceMemory.h"

#include "CCritSectionLocker.h"
#include "Common/BySuffix.h"

#include <algorithm>
#include <cmath>

namespace ZoVelkor::Demo
{

double Trace::FrequencyHz(std::size_t index) const
{
    const double steps = static_cast<double>(std::max<std::size_t>(levelsDbm.size() - 1, 1));
    return range.StartHz() + range.SpanHz() * static_cast<double>(index) / steps;
}

std::size_t Trace::NearestIndex(double frequencyHz) const
{
    if (range.SpanHz() == 0)
    {
        return 0;
    }
    const double position = (frequencyHz - range.StartHz()) / range.SpanHz();
    return static_cast<std::size_t>(std::round(position * static_cast<double>(levelsDbm.size() - 1)));
}

std::size_t Trace::PeakIndex() const
{
    return static_cast<std::size_t>(std::max_element(levelsDbm.begin(), levelsDbm.end()) - levelsDbm.begin());
}

TracePtr CTraceMemory::Get(long trace) const
{
    const CCritSectionLocker locker(m_section);
    return BySuffix(m_traces, trace);
}

void CTraceMemory::Put(long trace, TracePtr newTrace)
{
    // The former trace goes after the lock, its size may make that slow.
    const CCritSectionLocker locker(m_section);
    BySuffix(m_traces, trace).swap(newTrace);
}

void CTraceMemory::Clear()
{
    std::array<TracePtr, kTraceCount> former;
    const CCritSectionLocker locker(m_section);
    m_traces.swap(former);
}

} // namespace ZoVelkor::Demo
