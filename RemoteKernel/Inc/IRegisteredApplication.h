#pragma once

#include "PlatformTypes.h"

#include <functional>

namespace ZoVelkor::RemoteKernel
{

/// A registered application, as CRemoteKernel::FindApplication gives it. It can be held longer than the
/// application is registered.
class IRegisteredApplication
{
public:
    /// Runs work on the application's state while none of its commands runs and none begins. Not from inside
    /// a handler of the same application. Threads: any.
    ///
    /// @return the work's result, E_FAIL for an exception of it; E_ABORT, and nothing was run, when the
    /// application has left
    virtual HRESULT RunBetweenCommands(const std::function<HRESULT()>& work) = 0;

protected:
    ~IRegisteredApplication() = default;
};

} // namespace ZoVelkor::RemoteKernel
