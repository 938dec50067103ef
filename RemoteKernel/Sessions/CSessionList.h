#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <set>

namespace ZoVelkor::RemoteKernel
{

class CSession;

/// The open sessions of a kernel. Its lock is taken before those of a session.
///
/// Threads: any operation from any thread.
class CSessionList
{
public:
    /// @param session  borrowed until Remove; cancelled at once when all have been cancelled
    /// @throws std::bad_alloc
    void Add(CSession& session);
    void Remove(CSession& session) noexcept;

    /// Cancels all sessions, those to come as well.
    void CancelAll() noexcept;
    void WaitUntilEmpty();
    std::size_t Count() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_empty;
    std::set<CSession*> m_sessions; // guarded by m_mutex
    bool m_cancelled = false;       // guarded by m_mutex
};

} // namespace ZoVelkor::RemoteKernel
