#include "CPendingOperations.h"

#include "CMutexLocker.h"
#include "GuardedEntry.h"

#include <cerrno>
#include <poll.h>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// Waits until nothing is pending (true), or for one of the reasons to give up (false).
bool PollIdle(int idleDescriptor, int cancelDescriptor, int connection) noexcept
{
    // A descriptor of -1 is skipped; error and hang-up are always reported.
    pollfd descriptors[] = {{cancelDescriptor, POLLIN, 0}, {connection, 0, 0}, {idleDescriptor, POLLIN, 0}};
    while (poll(descriptors, std::size(descriptors), -1) < 0)
    {
        if (errno != EINTR)
        {
            return false;
        }
    }
    return descriptors[0].revents == 0 && descriptors[1].revents == 0;
}

} // namespace

HRESULT CPendingOperations::BeginOperation(long remotePath, unsigned long* operation)
{
    if (operation == nullptr)
    {
        return E_POINTER;
    }
    *operation = 0;
    return GuardedEntry([&] { return Begin(remotePath, *operation); });
}

HRESULT CPendingOperations::Begin(long remotePath, unsigned long& operation)
{
    const CMutexLocker lock(m_mutex);
    const auto path = m_paths.find(remotePath);
    if (path == m_paths.end())
    {
        return E_INVALIDARG;
    }
    do
    {
        ++m_lastOperation;
    } while (m_lastOperation == 0 || m_owners.contains(m_lastOperation));
    m_owners.emplace(m_lastOperation, remotePath);
    if (path->second.pending++ == 0)
    {
        ResetEvent(path->second.idle.Get());
    }
    operation = m_lastOperation;
    return S_OK;
}

HRESULT CPendingOperations::EndOperation(unsigned long operation)
{
    const CMutexLocker lock(m_mutex);
    const auto owner = m_owners.find(operation);
    if (owner == m_owners.end())
    {
        return S_FALSE;
    }
    const long remotePath = owner->second;
    m_owners.erase(owner);
    Path& path = m_paths.at(remotePath);
    if (--path.pending == 0)
    {
        if (std::exchange(path.completeRequested, false))
        {
            ReportCompleteLocked(remotePath);
        }
        SetEvent(path.idle.Get());
    }
    return S_OK;
}

void CPendingOperations::ReportCompleteLocked(long remotePath) const noexcept
{
    if (m_observer != nullptr)
    {
        m_observer->OperationComplete(remotePath);
    }
}

HRESULT CPendingOperations::GetPendingCount(long remotePath, unsigned long* count)
{
    if (count == nullptr)
    {
        return E_POINTER;
    }
    const CMutexLocker lock(m_mutex);
    const auto path = m_paths.find(remotePath);
    *count = path == m_paths.end() ? 0 : path->second.pending;
    return path == m_paths.end() ? E_INVALIDARG : S_OK;
}

bool CPendingOperations::AddPath(long remotePath)
{
    Path path;
    path.idle.Reset(CreateEvent(TRUE, TRUE));
    if (!path.idle)
    {
        return false;
    }
    const CMutexLocker lock(m_mutex);
    return m_paths.emplace(remotePath, std::move(path)).second;
}

void CPendingOperations::RemovePath(long remotePath) noexcept
{
    const CMutexLocker lock(m_mutex);
    m_paths.erase(remotePath);
    std::erase_if(m_owners, [remotePath](const auto& owner) { return owner.second == remotePath; });
}

void CPendingOperations::RequestOperationComplete(long remotePath)
{
    const CMutexLocker lock(m_mutex);
    Path& path = m_paths.at(remotePath);
    path.completeRequested = path.pending != 0;
    if (!path.completeRequested)
    {
        ReportCompleteLocked(remotePath);
    }
}

bool CPendingOperations::CancelOperationComplete(long remotePath) noexcept
{
    const CMutexLocker lock(m_mutex);
    const auto path = m_paths.find(remotePath);
    return path != m_paths.end() && std::exchange(path->second.completeRequested, false);
}

bool CPendingOperations::IsIdle(long remotePath, int& idleDescriptor)
{
    const CMutexLocker lock(m_mutex);
    const Path& path = m_paths.at(remotePath);
    idleDescriptor = GetEventDescriptor(path.idle.Get());
    return path.pending == 0;
}

bool CPendingOperations::WaitUntilIdle(long remotePath, HANDLE cancelEvent, int connection)
{
    int idleDescriptor = -1;
    while (!IsIdle(remotePath, idleDescriptor))
    {
        if (!PollIdle(idleDescriptor, GetEventDescriptor(cancelEvent), connection))
        {
            return false;
        }
    }
    return true;
}

} // namespace ZoVelkor::RemoteKernel
