#pragma once

#include <atomic>
#include <mutex>

namespace ZoVelkor::RemoteKernel
{

enum class tagStateChange
{
    Changed,
    Unchanged,
    LockedOut ///< the local lockout forbids it
};

/// Remote, local and lockout states of one remote path (IEEE 488.1 section 2.8). It begins local.
///
/// Threads: any operation from any thread.
class CRemoteLocalState
{
public:
    bool IsRemote() const noexcept { return m_bRemote.load(std::memory_order_relaxed); }
    bool IsLockedOut() const noexcept { return m_bLockedOut.load(std::memory_order_relaxed); }

    tagStateChange GotoRemote() noexcept { return Change(m_bRemote, true); }
    /// The controller's wish: it may always. A lockout stays (LWLS).
    tagStateChange GotoLocal() noexcept { return Change(m_bRemote, false); }
    /// The instrument's own wish, which a lockout forbids.
    tagStateChange ReturnToLocal() noexcept
    {
        const std::lock_guard lock(m_mutex);
        return m_bLockedOut && m_bRemote ? tagStateChange::LockedOut : ChangeLocked(m_bRemote, false);
    }
    tagStateChange SetLockout(bool lockedOut) noexcept { return Change(m_bLockedOut, lockedOut); }

private:
    tagStateChange Change(std::atomic<bool>& state, bool value) noexcept
    {
        const std::lock_guard lock(m_mutex);
        return ChangeLocked(state, value);
    }
    static tagStateChange ChangeLocked(std::atomic<bool>& state, bool value) noexcept
    {
        return state.exchange(value) == value ? tagStateChange::Unchanged : tagStateChange::Changed;
    }

    std::mutex m_mutex; // a change looks at both
    std::atomic<bool> m_bRemote{false};
    std::atomic<bool> m_bLockedOut{false};
};

} // namespace ZoVelkor::RemoteKernel
