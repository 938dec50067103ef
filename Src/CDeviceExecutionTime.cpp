#include "CDeviceExecutionTime.h"

#include "CPerformanceDiagnose.h"
#include "PerformanceCounter.h"
#include "PerformanceTicks.h"

namespace ZoVelkor
{

const long long CDeviceExecutionTime::s_PerformanceFrequency = CPerformanceDiagnose::GetFrequency();

void CDeviceExecutionTime::StartPerformanceCounter() noexcept
{
    m_startCounter = CPerformanceDiagnose::GetPerfCounter();
}

double CDeviceExecutionTime::GetExecutionTime() noexcept
{
    constexpr double kMillisecondsPerSecond = 1000.0;
    LARGE_INTEGER now{};
    if (QueryPerformanceCounter(&now) == FALSE)
    {
        return 0.0;
    }
    m_lastCounter = now.QuadPart;
    return static_cast<double>(TicksBetween(m_startCounter, m_lastCounter)) * kMillisecondsPerSecond /
           static_cast<double>(s_PerformanceFrequency);
}

} // namespace ZoVelkor
