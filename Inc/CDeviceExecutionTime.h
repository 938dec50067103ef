#pragma once

#include "ZoExport.h"

namespace ZoVelkor
{

/// Stop watch for one operation of the device, on the monotonic clock: setting the time of day does not
/// show.
///
/// Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CDeviceExecutionTime
{
public:
    /// Starts or restarts the watch.
    void StartPerformanceCounter() noexcept;

    /// Milliseconds since the start, with fraction; 0.0 when the counter cannot be read. The watch goes on.
    double GetExecutionTime() noexcept;

private:
    static const long long s_PerformanceFrequency;

    long long m_startCounter = 0;
    long long m_lastCounter = 0;
};

} // namespace ZoVelkor
