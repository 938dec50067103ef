#pragma once

#include "CApplicationRegistry.h"
#include "CComObject.h"
#include "CErrorManagement.h"
#include "CPendingOperations.h"
#include "CStatusManagement.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <set>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

class CSession;

/// The instrument's remote control: registered applications, their command index, and the services that
/// sessions share.
///
/// Set-up: make a kernel, Start it, register applications (they find the registration at the root), then open
/// sessions or a CTcpServer. The way back is the reverse; all sessions end before the kernel does.
/// Threads: any operation from any thread, construction and destruction apart.
class CRemoteKernel
{
public:
    /// @throws std::system_error when the system is short of descriptors
    explicit CRemoteKernel(tagInstrumentIdentity identity);
    CRemoteKernel(const CRemoteKernel&) = delete;
    CRemoteKernel& operator=(const CRemoteKernel&) = delete;
    /// Stops, if that was not done.
    ~CRemoteKernel();

    /// Registers IZOScpiObjectRegistration, IZOScpiErrorManagement, IZOScpiPendingOperations and
    /// IZOScpiStatusManagement at the root.
    ///
    /// @return S_OK; the failing result of the root, with nothing registered
    HRESULT Start();

    /// Takes the registrations at the root back, cancels all sessions, ends all waits for status bits and
    /// unregisters all applications. When it returns no handler is running or will run; an application that
    /// unregisters itself at the same time waits for its own. Calling it again does nothing.
    void Stop();

    /// Services by interface; borrowed, as long as the kernel lives.
    IZOScpiObjectRegistration& ObjectRegistration() noexcept { return *m_spRegistry; }
    IZOScpiErrorManagement& ErrorManagement() noexcept { return *m_spErrors; }
    IZOScpiPendingOperations& PendingOperations() noexcept { return *m_spOperations; }
    IZOScpiStatusManagement& StatusManagement() noexcept { return *m_spStatus; }

    /// Sessions that are open, whatever their transport.
    std::size_t SessionCount() const;

private:
    friend class CSession;

    using CRegistryObject = CComObject<CApplicationRegistry, IZOScpiObjectRegistration>;
    using CErrorObject = CComObject<CErrorManagement, IZOScpiErrorManagement>;
    using CStatusObject = CComObject<CStatusManagement, IZOScpiStatusManagement>;
    using COperationsObject = CComObject<CPendingOperations, IZOScpiPendingOperations>;

    /// @return number for a new remote path, not used again for a long time
    long AddPath();
    void AddSession(CSession& session);
    void RemoveSession(CSession& session) noexcept;
    std::array<std::pair<const IID*, IUnknown*>, 4> Services() const noexcept;
    void UnregisterAtRoot() noexcept;

    const CComPtr<CRegistryObject> m_spRegistry;
    const CComPtr<CErrorObject> m_spErrors;
    const CComPtr<CStatusObject> m_spStatus;
    const CComPtr<COperationsObject> m_spOperations;

    std::mutex m_startMutex;
    bool m_bAtRoot = false; // guarded by m_startMutex

    mutable std::mutex m_mutex;
    std::set<CSession*> m_sessions; // guarded by m_mutex
    long m_nextPath = 0;            // guarded by m_mutex
    bool m_bStopped = false;        // guarded by m_mutex
};

} // namespace ZoVelkor::RemoteKernel
