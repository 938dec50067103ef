#pragma once

namespace ZoVelkor::RemoteKernel
{

/// Hears when a session requests service (IEEE 488.2 section 11.3): what a transport with a service-request
/// line passes on.
class IServiceRequestObserver
{
public:
    /// Called when the request rises and when it falls, under the lock of the session's status byte: it must
    /// not call the kernel. Threads: whichever changed the status.
    virtual void ServiceRequest(bool requested) noexcept = 0;

protected:
    ~IServiceRequestObserver() = default;
};

} // namespace ZoVelkor::RemoteKernel
