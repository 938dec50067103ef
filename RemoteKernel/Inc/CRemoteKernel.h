#pragma once

#include "Guid.h"
#include "IPowerOnStore.h"
#include "IRegisteredApplication.h"
#include "IZOScpiErrorManagement.h"
#include "IZOScpiObjectRegistration.h"
#include "IZOScpiPendingOperations.h"
#include "IZOScpiStatusManagement.h"
#include "InstrumentIdentity.h"
#include "SessionLimits.h"

#include <cstddef>
#include <memory>

namespace ZoVelkor::RemoteKernel
{

struct KernelParts;

/// The instrument's remote control: registered applications, their command index, and the services that
/// sessions share.
///
/// Set-up: make a kernel, Start it, register applications (they find the registration at the root), then
/// connect channels, as a CTcpServer does, or open sessions in process. The way back is the reverse; sessions
/// in process end before the kernel does.
/// Threads: any operation from any thread, construction and destruction apart.
class CRemoteKernel
{
public:
    /// @param limits  bounds of the sessions of connected channels
    /// @throws std::system_error when the system is short of descriptors
    explicit CRemoteKernel(InstrumentIdentity identity, const SessionLimits& limits = {});
    CRemoteKernel(const CRemoteKernel&) = delete;
    CRemoteKernel& operator=(const CRemoteKernel&) = delete;
    /// Stops, if that was not done, and waits for the end of all sessions.
    ~CRemoteKernel();

    /// Registers the services at the root: those of all remote paths (IZOScpi... ParserManagement,
    /// ErrorManagement, StatusManagement, RemoteControl, ChannelManagement, DeviceManagement,
    /// SubsystemFormat, ParserLanguage, TraceManagement, PendingOperations), those that find the ones of a
    /// single path (MultichannelAdministration, MultichannelFunctionality), and where applications enter
    /// (ObjectRegistration, Tree).
    ///
    /// @return S_OK; the failing result of the root, with nothing registered
    HRESULT Start();

    /// Takes the registrations at the root back, ends all connections, cancels all sessions, ends all waits
    /// for status bits and unregisters all applications and observers. When it returns no handler is running
    /// or will run; an application that unregisters itself at the same time waits for its own. Calling it
    /// again does nothing.
    void Stop();

    /// Gives the status that the instrument was switched on with (IEEE 488.2 section 10.25), before the first
    /// session; without it the kernel keeps nothing.
    ///
    /// @param store  borrowed, as long as there are sessions; hears of *PSC, and of masks while it is 0
    void PowerOn(const PowerOnStatus& status, IPowerOnStore* store);

    /// Finds an application, for work on its state beside its commands.
    ///
    /// @param id  that it is unregistered with
    /// @return null when there is none
    std::shared_ptr<IRegisteredApplication> FindApplication(const GUID& id) const;

    /// Services by interface; borrowed, as long as the kernel lives.
    IZOScpiObjectRegistration& ObjectRegistration() noexcept;
    IZOScpiErrorManagement& ErrorManagement() noexcept;
    IZOScpiPendingOperations& PendingOperations() noexcept;
    IZOScpiStatusManagement& StatusManagement() noexcept;

    /// What a session in process is made with: CSession session(kernel.Parts()). The class is the kernel's
    /// own: tests and the like include it from the room Sessions.
    const KernelParts& Parts() const noexcept;

    /// Sessions that are open, whatever their transport.
    std::size_t SessionCount() const;

private:
    class CImplementation;
    const std::unique_ptr<CImplementation> m_implementation;
};

} // namespace ZoVelkor::RemoteKernel
