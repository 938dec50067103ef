#include "CParserGate.h"

#include "Applications/AllPaths.h"

namespace ZoVelkor::RemoteKernel
{

bool CParserGate::Start(long remotePath)
{
    const CMutexLocker lock(m_mutex);
    const bool changed = m_stopped.erase(remotePath) != 0;
    m_stops.store(m_stopped.size(), std::memory_order_release);
    m_changed.NotifyAll();
    return changed;
}

bool CParserGate::Stop(long remotePath)
{
    const CMutexLocker lock(m_mutex);
    const bool changed = m_stopped.insert(remotePath).second;
    m_stops.store(m_stopped.size(), std::memory_order_release);
    return changed;
}

bool CParserGate::IsStarted(long remotePath) const
{
    const CMutexLocker lock(m_mutex);
    return !m_stopped.contains(remotePath);
}

bool CParserGate::IsOpenSlow(long remotePath) const
{
    const CMutexLocker lock(m_mutex);
    return IsOpenLocked(remotePath);
}

bool CParserGate::IsOpenLocked(long remotePath) const
{
    return !m_stopped.contains(remotePath) && !m_stopped.contains(kAllPaths);
}

void CParserGate::Wake() noexcept
{
    const CMutexLocker lock(m_mutex);
    m_changed.NotifyAll();
}

} // namespace ZoVelkor::RemoteKernel
