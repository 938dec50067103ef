#pragma once

#include "CLxiLanPacket.h"
#include "CLxiTime.h"
#include "LxiPeer.h"

namespace ZoVelkor::RemoteKernel
{

/// An event message that has come for the first time.
struct LxiEvent
{
    const CLxiLanPacket& packet; ///< ends with the call
    long event;                  ///< 0 to 7, or ZO_LXI_ERROR
    CLxiTime time;               ///< of the event: its time stamp, or that of the arrival when it has none
    LxiPeer sender;
};

/// Hears of received events, see CLxiEventEndpoint::AddObserver.
class ILxiEventObserver
{
public:
    /// Called on the endpoint's thread, with the lock of its observers held; the next event waits. An
    /// exception is reported and changes nothing else.
    virtual void OnLxiEvent(const LxiEvent& event) = 0;

protected:
    ~ILxiEventObserver() = default;
};

} // namespace ZoVelkor::RemoteKernel
