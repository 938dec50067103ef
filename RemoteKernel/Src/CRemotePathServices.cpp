#include "CRemotePathServices.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

CRemotePathServices::CRemotePathServices(long remotePath,
                                         CComPtr<IZOScpiErrorManagement> spErrorManagement,
                                         CComPtr<IZOScpiSubsystemFormat> spSubsystemFormat,
                                         CComPtr<IZOScpiPendingOperations> spPendingOperations) noexcept
    : m_iRemotePath(remotePath),
      m_spErrorManagement(std::move(spErrorManagement)),
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
    if (service == nullptr)
    {
        return E_POINTER;
    }
    *service = nullptr;
    return S_FALSE;
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
