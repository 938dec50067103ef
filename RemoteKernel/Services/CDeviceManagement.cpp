#include "CDeviceManagement.h"

#include "GuardedEntry.h"

namespace ZoVelkor::RemoteKernel
{

HRESULT CDeviceManagement::RegisterDeviceHandler(IZOScpiDeviceHandler* handler)
{
    return handler == nullptr ? E_POINTER : m_registry->RegisterDeviceHandler(handler, m_remotePath);
}

HRESULT CDeviceManagement::UnregisterDeviceHandler(IZOScpiDeviceHandler* handler)
{
    return handler == nullptr ? E_POINTER
                              : m_registry->Unregister(ApplicationKind::DeviceHandler, handler, m_remotePath);
}

HRESULT CDeviceManagement::Tell(HRESULT (IZOScpiDeviceHandler::*handler)(),
                                HRESULT (IZOScpiMultichannelEventObserver::*observer)(long))
{
    return GuardedEntry(
        [&]() -> HRESULT { return FAILED(m_events->Tell(m_remotePath, handler, observer)) ? E_FAIL : S_OK; });
}

HRESULT CDeviceManagement::Reset()
{
    return Tell(&IZOScpiDeviceHandler::Reset, &IZOScpiMultichannelEventObserver::Reset);
}

HRESULT CDeviceManagement::SystemPreset()
{
    return Tell(&IZOScpiDeviceHandler::SystemPreset, &IZOScpiMultichannelEventObserver::SystemPreset);
}

} // namespace ZoVelkor::RemoteKernel
