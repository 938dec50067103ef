#include "CRemoteKernel.h"

#include "CSession.h"
#include "Root.h"

#include <limits>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

CRemoteKernel::CRemoteKernel(tagInstrumentIdentity identity)
    : m_spRegistry(CRegistryObject::Create(std::move(identity))),
      m_spErrors(CErrorObject::Create()),
      m_spStatus(CStatusObject::Create()),
      m_spOperations(COperationsObject::Create())
{
    m_spOperations->SetObserver(m_spStatus);
}

CRemoteKernel::~CRemoteKernel()
{
    Stop();
}

HRESULT CRemoteKernel::Start()
{
    const std::lock_guard lock(m_startMutex);
    CComPtr<IZORoot> spRoot;
    HRESULT result = GetRoot(&spRoot);
    if (FAILED(result))
    {
        return result;
    }
    m_bAtRoot = true;
    for (const auto& [iid, pService] : Services())
    {
        result = spRoot->RegisterInterface(*iid, pService);
        if (FAILED(result))
        {
            UnregisterAtRoot();
            return result;
        }
    }
    return S_OK;
}

std::array<std::pair<const IID*, IUnknown*>, 4> CRemoteKernel::Services() const noexcept
{
    return {
        {
         {&IID_IZOScpiObjectRegistration, static_cast<IZOScpiObjectRegistration*>(m_spRegistry)},
         {&IID_IZOScpiErrorManagement, static_cast<IZOScpiErrorManagement*>(m_spErrors)},
         {&IID_IZOScpiPendingOperations, static_cast<IZOScpiPendingOperations*>(m_spOperations)},
         {&IID_IZOScpiStatusManagement, static_cast<IZOScpiStatusManagement*>(m_spStatus)},
         }
    };
}

void CRemoteKernel::UnregisterAtRoot() noexcept
{
    CComPtr<IZORoot> spRoot;
    if (std::exchange(m_bAtRoot, false) && SUCCEEDED(GetRoot(&spRoot)))
    {
        for (const auto& service : Services())
        {
            spRoot->UnregisterInterface(*service.first);
        }
    }
}

void CRemoteKernel::Stop()
{
    {
        const std::lock_guard lock(m_startMutex);
        UnregisterAtRoot();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_bStopped = true;
        for (CSession* pSession : m_sessions)
        {
            pSession->Cancel();
        }
    }
    m_spStatus->Stop();
    m_spRegistry->Close();
}

std::size_t CRemoteKernel::SessionCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.size();
}

long CRemoteKernel::AddPath()
{
    const std::lock_guard lock(m_mutex);
    const long path = m_nextPath;
    m_nextPath = path == std::numeric_limits<LONG>::max() ? 0 : path + 1;
    return path;
}

void CRemoteKernel::AddSession(CSession& session)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.insert(&session);
    if (m_bStopped)
    {
        session.Cancel();
    }
}

void CRemoteKernel::RemoveSession(CSession& session) noexcept
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(&session);
}

} // namespace ZoVelkor::RemoteKernel
