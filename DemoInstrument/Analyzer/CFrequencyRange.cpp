#include "CFrequencyRange.h"

#include <algorithm>

namespace ZoVelkor::Demo
{

void CFrequencyRange::SetCenter(double centerHz)
{
    const double halfSpanHz =
        std::min({SpanHz() / 2, centerHz - kMinFrequencyHz, kMaxFrequencyHz - centerHz});
    m_startHz = centerHz - halfSpanHz;
    m_stopHz = centerHz + halfSpanHz;
}

void CFrequencyRange::SetSpan(double spanHz)
{
    const double centerHz =
        std::clamp(CenterHz(), kMinFrequencyHz + spanHz / 2, kMaxFrequencyHz - spanHz / 2);
    m_startHz = centerHz - spanHz / 2;
    m_stopHz = centerHz + spanHz / 2;
}

void CFrequencyRange::SetStart(double startHz)
{
    m_startHz = startHz;
    m_stopHz = std::max(m_stopHz, startHz);
}

void CFrequencyRange::SetStop(double stopHz)
{
    m_stopHz = stopHz;
    m_startHz = std::min(m_startHz, stopHz);
}

} // namespace ZoVelkor::Demo
