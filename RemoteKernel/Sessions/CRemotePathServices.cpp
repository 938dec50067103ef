#include "CRemotePathServices.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

CRemotePathServices::CRemotePathServices(long remotePath,
                                         CComPtr<IZOScpiErrorManagement> errorManagement,
                                         CComPtr<IZOScpiStatusManagement> statusManagement,
                                         CComPtr<IZOScpiSubsystemFormat> subsystemFormat,
                                         CComPtr<IZOScpiPendingOperations> pendingOperations) noexcept
    : m_remotePath(remotePath),
      m_errorManagement(std::move(errorManagement)),
      m_statusManagement(std::move(statusManagement)),
      m_subsystemFormat(std::move(subsystemFormat)),
      m_pendingOperations(std::move(pendingOperations))
{}

HRESULT CRemotePathServices::GetRemotePath(long* remotePath)
{
    if (remotePath == nullptr)
    {
        return E_POINTER;
    }
    *remotePath = m_remotePath;
    return S_OK;
}

HRESULT CRemotePathServices::GetErrorManagement(IZOScpiErrorManagement** service)
{
    return m_errorManagement.CopyTo(service);
}

HRESULT CRemotePathServices::GetStatusManagement(IZOScpiStatusManagement** service)
{
    return m_statusManagement.CopyTo(service);
}

HRESULT CRemotePathServices::GetSubsystemFormat(IZOScpiSubsystemFormat** service)
{
    return m_subsystemFormat.CopyTo(service);
}

HRESULT CRemotePathServices::GetPendingOperations(IZOScpiPendingOperations** service)
{
    return m_pendingOperations.CopyTo(service);
}

} // namespace ZoVelkor::RemoteKernel
