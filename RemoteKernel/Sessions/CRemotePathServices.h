#pragma once

#include "CComPtr.h"
#include "IZOScpiManager.h"

namespace ZoVelkor::RemoteKernel
{

/// The services of one session, the context of its commands. It may be kept longer than the session lives:
/// the services then refuse the path. Threads: any operation from any thread.
class CRemotePathServices : public IZOScpiManager
{
public:
    CRemotePathServices(long remotePath,
                        CComPtr<IZOScpiErrorManagement> spErrorManagement,
                        CComPtr<IZOScpiStatusManagement> spStatusManagement,
                        CComPtr<IZOScpiSubsystemFormat> spSubsystemFormat,
                        CComPtr<IZOScpiPendingOperations> spPendingOperations) noexcept;
    virtual ~CRemotePathServices() = default;

    HRESULT GetRemotePath(long* remotePath) override;
    HRESULT GetErrorManagement(IZOScpiErrorManagement** service) override;
    HRESULT GetStatusManagement(IZOScpiStatusManagement** service) override;
    HRESULT GetSubsystemFormat(IZOScpiSubsystemFormat** service) override;
    HRESULT GetPendingOperations(IZOScpiPendingOperations** service) override;

private:
    const long m_iRemotePath;
    const CComPtr<IZOScpiErrorManagement> m_spErrorManagement;
    const CComPtr<IZOScpiStatusManagement> m_spStatusManagement;
    const CComPtr<IZOScpiSubsystemFormat> m_spSubsystemFormat;
    const CComPtr<IZOScpiPendingOperations> m_spPendingOperations;
};

} // namespace ZoVelkor::RemoteKernel
