#include "CSessionList.h"

#include "CSession.h"

namespace ZoVelkor::RemoteKernel
{

void CSessionList::Add(CSession& session)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.insert(&session);
    if (m_cancelled)
    {
        session.Cancel();
    }
}

void CSessionList::Remove(CSession& session) noexcept
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(&session);
    m_empty.notify_all();
}

void CSessionList::CancelAll() noexcept
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    for (CSession* session : m_sessions)
    {
        session->Cancel();
    }
}

void CSessionList::WaitUntilEmpty()
{
    std::unique_lock lock(m_mutex);
    m_empty.wait(lock, [this] { return m_sessions.empty(); });
}

std::size_t CSessionList::Count() const
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.size();
}

} // namespace ZoVelkor::RemoteKernel
