#pragma once

#include "CCondition.h"
#include "CMutex.h"

#include <cstddef>
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
    mutable CMutex m_mutex;
    CCondition m_empty;
    std::set<CSession*> m_sessions ZO_GUARDED_BY(m_mutex);
    bool m_cancelled ZO_GUARDED_BY(m_mutex) = false;
};

} // namespace ZoVelkor::RemoteKernel
