#pragma once

#include "CMutexLocker.h"

#include <atomic>

namespace ZoVelkor::RemoteKernel
{

enum class StateChange
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
    bool IsRemote() const noexcept { return m_remote.load(std::memory_order_relaxed); }
    bool IsLockedOut() const noexcept { return m_lockedOut.load(std::memory_order_relaxed); }

    StateChange GotoRemote() noexcept { return Change(m_remote, true); }
    /// The controller's wish: it may always. A lockout stays (LWLS).
    StateChange GotoLocal() noexcept { return Change(m_remote, false); }
    /// The instrument's own wish, which a lockout forbids.
    StateChange ReturnToLocal() noexcept
    {
        const CMutexLocker lock(m_mutex);
        return m_lockedOut && m_remote ? StateChange::LockedOut : ChangeLocked(m_remote, false);
    }
    StateChange SetLockout(bool lockedOut) noexcept { return Change(m_lockedOut, lockedOut); }

private:
    StateChange Change(std::atomic<bool>& state, bool value) noexcept
    {
        const CMutexLocker lock(m_mutex);
        return ChangeLocked(state, value);
    }
    StateChange ChangeLocked(std::atomic<bool>& state, bool value) noexcept ZO_REQUIRES(m_mutex)
    {
        return state.exchange(value) == value ? StateChange::Unchanged : StateChange::Changed;
    }

    CMutex m_mutex; // a change looks at both
    std::atomic<bool> m_remote{false};
    std::atomic<bool> m_lockedOut{false};
};

} // namespace ZoVelkor::RemoteKernel
