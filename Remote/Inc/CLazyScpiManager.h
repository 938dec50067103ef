#pragma once

#include "CComPtr.h"
#include "IZOScpiManager.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// The services of the remote path that a command came from, each fetched when it is first needed.
///
/// Making one costs nothing: the context is not asked before a service is. A service that the path does not
/// have is null. Threads: only the thread that executes the command.
class ZO_EXPORT CLazyScpiManager
{
public:
    /// @param context  the context object of Execute, borrowed until Execute returns; may be null
    explicit CLazyScpiManager(IUnknown* context) noexcept : m_context(context) {}

    /// The manager, borrowed; null when the context has none.
    IZOScpiManager* Manager() noexcept;

    /// The format subsystem, borrowed as long as this object lives; asked for once, unless it was not
    /// there.
    IZOScpiSubsystemFormat* SubsystemFormat() noexcept;

    /// The error queue of the path; a new reference each time, not kept.
    CComPtr<IZOScpiErrorManagement> ErrorManagement() noexcept;
    /// The status registers; a new reference each time, not kept.
    CComPtr<IZOScpiStatusManagement> StatusManagement() noexcept;
    /// The overlapped commands; a new reference each time, not kept.
    CComPtr<IZOScpiPendingOperations> PendingOperations() noexcept;

private:
    IUnknown* m_context;
    CComPtr<IZOScpiManager> m_manager;
    CComPtr<IZOScpiSubsystemFormat> m_subsystemFormat;
};

} // namespace ZoVelkor
