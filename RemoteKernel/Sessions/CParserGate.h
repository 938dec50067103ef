#pragma once

#include "CCondition.h"
#include "CMutexLocker.h"

#include <atomic>
#include <set>

namespace ZoVelkor::RemoteKernel
{

/// Holds program messages back while their path's parsing, or that of the whole instrument, is stopped.
///
/// Threads: any operation from any thread.
class CParserGate
{
public:
    /// @param remotePath  or kAllPaths, which holds back every path's messages
    /// @return false when that was so already
    bool Start(long remotePath);
    bool Stop(long remotePath);
    bool IsStarted(long remotePath) const;

    /// Tells whether the messages of a path may run; costs nothing while nobody has stopped anything.
    bool IsOpen(long remotePath) const
    {
        return m_stops.load(std::memory_order_acquire) == 0 || IsOpenSlow(remotePath);
    }
    /// Waits until the messages of a path may run, or the session is broken off: then Wake is called.
    template <class TBroken>
    void Wait(long remotePath, TBroken isBroken)
    {
        const CMutexLocker lock(m_mutex);
        while (!isBroken() && !IsOpenLocked(remotePath))
        {
            m_changed.Wait(m_mutex);
        }
    }
    /// Has all who wait look again.
    void Wake() noexcept;

private:
    bool IsOpenSlow(long remotePath) const;
    bool IsOpenLocked(long remotePath) const ZO_REQUIRES(m_mutex);

    mutable CMutex m_mutex;
    CCondition m_changed;
    std::set<long> m_stopped ZO_GUARDED_BY(m_mutex);
    std::atomic<std::size_t> m_stops{0};
};

} // namespace ZoVelkor::RemoteKernel
