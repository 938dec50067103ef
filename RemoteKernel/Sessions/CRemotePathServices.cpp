#include "CRemotePathServices.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

CRemotePathServices::CRemotePathServices(long remotePath,
                                         CComPtr<IZOScpiErrorManagement> spErrorManagement,
                                         CComPtr<IZOScpiStatusManagement> spStatusManagement,
                                         CComPtr<IZOScpiSubsystemFormat> spSubsystemFormat,
                                         CComPtr<IZOScpiPendingOperations> spPendingOperations) noexcept
    : m_iRemotePath(remotePath),
      m_spErrorManagement(std::move(spErrorManagement)),
      m_spStatusManagement(std::move(spStatusManagement)),
      m_spSubsystemFormat(std::move(spSubsystemFormat)),
      m_spPendingOperations(std::move(spPendingOperations))
{}

HRESULT CRemotePathServices::GetRemotePath(long* remotePath)
{
    if (remotePath == nullptr)
    {
        return E_POINTER;
    }
    *remotePath = m_iRemotePath;
    return S_OK;
}

HRESULT CRemotePathServices::GetErrorManagement(IZOScpiErrorManagement** service)
{
    return m_spErrorManagement.CopyTo(service);
}

HRESULT CRemotePathServices::GetStatusManagement(IZOScpiStatusManagement** service)
{
    return m_spStatusManagement.CopyTo(service);
}

HRESULT CRemotePathServices::GetSubsystemFormat(IZOScpiSubsystemFormat** service)
{
    return m_spSubsystemFormat.CopyTo(service);
}

HRESULT CRemotePathServices::GetPendingOperations(IZOScpiPendingOperations** service)
{
    return m_spPendingOperations.CopyTo(service);
}

} // namespace ZoVelkor::RemoteKernel
