#include "CSessionList.h"

#include "CMutexLocker.h"
#include "CSession.h"

namespace ZoVelkor::RemoteKernel
{

void CSessionList::Add(CSession& session)
{
    const CMutexLocker lock(m_mutex);
    m_sessions.insert(&session);
    if (m_cancelled)
    {
        session.Cancel();
    }
}

void CSessionList::Remove(CSession& session) noexcept
{
    const CMutexLocker lock(m_mutex);
    m_sessions.erase(&session);
    m_empty.NotifyAll();
}

void CSessionList::CancelAll() noexcept
{
    const CMutexLocker lock(m_mutex);
    m_cancelled = true;
    for (CSession* session : m_sessions)
    {
        session->Cancel();
    }
}

void CSessionList::WaitUntilEmpty()
{
    const CMutexLocker lock(m_mutex);
    while (!m_sessions.empty())
    {
        m_empty.Wait(m_mutex);
    }
}

std::size_t CSessionList::Count() const
{
    const CMutexLocker lock(m_mutex);
    return m_sessions.size();
}

} // namespace ZoVelkor::RemoteKernel
