#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
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
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return isBroken() || IsOpenLocked(remotePath); });
    }
    /// Has all who wait look again.
    void Wake() noexcept;

private:
    bool IsOpenSlow(long remotePath) const;
    bool IsOpenLocked(long remotePath) const;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::set<long> m_stopped; // guarded by m_mutex
    std::atomic<std::size_t> m_stops{0};
};

} // namespace ZoVelkor::RemoteKernel
