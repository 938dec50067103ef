#pragma once

#include "IZOScpiDeviceManagement.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Device events of one remote path or of all. Threads: as the interface says.
class CDeviceManagement : public IZOScpiDeviceManagement
{
public:
    /// @param remotePath  tagApplicationParts::kAllPaths: all
    CDeviceManagement(const tagKernelParts& parts, long remotePath)
        : m_spRegistry(parts.spRegistry),
          m_spEvents(parts.spEvents),
          m_iRemotePath(remotePath)
    {}
    virtual ~CDeviceManagement() = default;

    HRESULT RegisterDeviceHandler(IZOScpiDeviceHandler* handler) override;
    HRESULT UnregisterDeviceHandler(IZOScpiDeviceHandler* handler) override;
    HRESULT Reset() override;
    HRESULT SystemPreset() override;

private:
    HRESULT Tell(HRESULT (IZOScpiDeviceHandler::*handler)(),
                 HRESULT (IZOScpiMultichannelEventObserver::*observer)(long));

    const CComPtr<CApplicationRegistryObject> m_spRegistry;
    const std::shared_ptr<CEventDistributor> m_spEvents;
    const long m_iRemotePath;
};

} // namespace ZoVelkor::RemoteKernel
