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
                        CComPtr<IZOScpiErrorManagement> errorManagement,
                        CComPtr<IZOScpiStatusManagement> statusManagement,
                        CComPtr<IZOScpiSubsystemFormat> subsystemFormat,
                        CComPtr<IZOScpiPendingOperations> pendingOperations) noexcept;
    virtual ~CRemotePathServices() = default;

    HRESULT GetRemotePath(long* remotePath) override;
    HRESULT GetErrorManagement(IZOScpiErrorManagement** service) override;
    HRESULT GetStatusManagement(IZOScpiStatusManagement** service) override;
    HRESULT GetSubsystemFormat(IZOScpiSubsystemFormat** service) override;
    HRESULT GetPendingOperations(IZOScpiPendingOperations** service) override;

private:
    const long m_remotePath;
    const CComPtr<IZOScpiErrorManagement> m_errorManagement;
    const CComPtr<IZOScpiStatusManagement> m_statusManagement;
    const CComPtr<IZOScpiSubsystemFormat> m_subsystemFormat;
    const CComPtr<IZOScpiPendingOperations> m_pendingOperations;
};

} // namespace ZoVelkor::RemoteKernel
