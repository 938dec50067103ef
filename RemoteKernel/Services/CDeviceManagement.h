#pragma once

#include "IZOScpiDeviceManagement.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Device events of one remote path or of all. Threads: as the interface says.
class CDeviceManagement : public IZOScpiDeviceManagement
{
public:
    /// @param remotePath  or kAllPaths
    CDeviceManagement(const KernelParts& parts, long remotePath)
        : m_registry(parts.registry),
          m_events(parts.events),
          m_remotePath(remotePath)
    {}
    virtual ~CDeviceManagement() = default;

    HRESULT RegisterDeviceHandler(IZOScpiDeviceHandler* handler) override;
    HRESULT UnregisterDeviceHandler(IZOScpiDeviceHandler* handler) override;
    HRESULT Reset() override;
    HRESULT SystemPreset() override;

private:
    HRESULT Tell(HRESULT (IZOScpiDeviceHandler::*handler)(),
                 HRESULT (IZOScpiMultichannelEventObserver::*observer)(long));

    const CComPtr<CApplicationRegistryObject> m_registry;
    const std::shared_ptr<CEventDistributor> m_events;
    const long m_remotePath;
};

} // namespace ZoVelkor::RemoteKernel
