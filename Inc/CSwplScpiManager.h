#pragma once

#include "CComPtr.h"
#include "IZOScpiChannelManagement.h"
#include "IZOScpiDeviceManagement.h"
#include "IZOScpiErrorManagement.h"
#include "IZOScpiParserLanguage.h"
#include "IZOScpiParserManagement.h"
#include "IZOScpiRemoteControl.h"
#include "IZOScpiStatusManagement.h"
#include "IZOScpiSubsystemFormat.h"
#include "IZOScpiTraceManagement.h"
#include "ZoExport.h"

namespace ZoVelkor
{

class CSwplScpiParser;

/// An application's way to the remote kernel: finds its services, registers the application's parsers and
/// starts, stops or leaves remote control.
///
/// Without a kernel the application goes on: Find reports that, Available tells it, and all other operations
/// do nothing and succeed.
///
/// Errors: a service that is found but fails raises an internal error of result ZO_E_SHELL whose condition
/// names the failed call; RegisterParser and everything below it catch that and give E_FAIL. Ownership: one
/// reference to each service; a copy holds references of its own. Threads: no lock is held; one manager
/// belongs to the thread that looked the services up.
class ZO_EXPORT CSwplScpiManager
{
public:
    /// Looks all services up at the root. No service may be held yet: that is checked like an assertion.
    ///
    /// @return S_OK; S_FALSE (reported) when there is no parser management: nothing else is looked up then
    /// @throws CShellError when another service is missing; those found before stay until Detach
    HRESULT Find();

    /// The same with the services of one remote path; only the trace is that of the whole instrument.
    ///
    /// @param remotePath  0 or more, with a connection
    /// @return S_OK; S_FALSE (reported) when there is no multichannel functionality
    /// @throws CShellError when a service is missing; those found before stay until Detach
    HRESULT FindEx(long remotePath);

    /// Whether parser management is known.
    bool Available() const noexcept { return m_pScpiParserManagement != nullptr; }

    /// Registers a parser under a new identity, which it is given with SetGuid.
    ///
    /// @param pParser  attached, with its command tree registered
    /// @return S_OK; E_FAIL, with the parser's identity unchanged; E_POINTER (reported)
    HRESULT RegisterParser(CSwplScpiParser* pParser) noexcept;

    /// Takes the parser out again; when the call returns nothing of it is running.
    ///
    /// @return S_OK; S_FALSE when it is not registered; E_FAIL; E_POINTER (reported)
    HRESULT UnregisterParser(CSwplScpiParser* pParser) noexcept;

    /// Lets program messages be worked off.
    ///
    /// @param onThread  false: at once, with the service's own result. true: on a pool thread, without
    ///                  waiting; a failure is then reported there
    /// @return S_OK; S_FALSE when parsing was not stopped; E_FAIL after an exception or when the request
    ///         could not be handed to a thread
    HRESULT StartParser(bool onThread) noexcept;

    /// Stops working program messages off; see StartParser.
    HRESULT StopParser(bool onThread) noexcept;

    /// Makes the instrument local, as its key does; see StartParser for onThread.
    ///
    /// @return S_OK; S_FALSE when nothing was remote; E_ACCESSDENIED under local lockout; E_FAIL
    HRESULT ReturnToLocal(bool onThread) noexcept;

    /// Releases all services. Requests on their way to a thread are still carried out.
    void Detach() noexcept;

    /// @name The services
    /// Borrowed until Detach or the next Find; null when they were not found.
    /// @{

    /// Registration, start and stop.
    IZOScpiParserManagement* GetScpiParserManagement() const noexcept { return m_pScpiParserManagement; }
    /// The error queues.
    IZOScpiErrorManagement* GetScpiErrorManagement() const noexcept { return m_pScpiErrorManagement; }
    /// The status registers.
    IZOScpiStatusManagement* GetScpiStatusManagement() const noexcept { return m_pScpiStatusManagement; }
    /// Remote, local and lockout.
    IZOScpiRemoteControl* GetScpiRemoteControl() const noexcept { return m_pScpiRemoteControl; }
    /// The channels of the connections.
    IZOScpiChannelManagement* GetScpiChannelManagement() const noexcept { return m_pScpiChannelManagement; }
    /// Device events from and to the instrument.
    IZOScpiDeviceManagement* GetScpiDeviceManagement() const noexcept { return m_pScpiDeviceManagement; }
    /// The data format.
    IZOScpiSubsystemFormat* GetScpiSubsystemFormat() const noexcept { return m_pScpiSubsystemFormat; }
    /// The command language.
    IZOScpiParserLanguage* GetScpiParserLanguage() const noexcept { return m_pScpiParserLanguage; }
    /// The message trace of the whole instrument.
    IZOScpiTraceManagement* GetScpiTraceManagement() const noexcept { return m_pScpiTraceManagement; }
    /// @}

private:
    void FindTraceManagement();

    CComPtr<IZOScpiParserManagement> m_pScpiParserManagement;
    CComPtr<IZOScpiErrorManagement> m_pScpiErrorManagement;
    CComPtr<IZOScpiStatusManagement> m_pScpiStatusManagement;
    CComPtr<IZOScpiRemoteControl> m_pScpiRemoteControl;
    CComPtr<IZOScpiChannelManagement> m_pScpiChannelManagement;
    CComPtr<IZOScpiDeviceManagement> m_pScpiDeviceManagement;
    CComPtr<IZOScpiSubsystemFormat> m_pScpiSubsystemFormat;
    CComPtr<IZOScpiParserLanguage> m_pScpiParserLanguage;
    CComPtr<IZOScpiTraceManagement> m_pScpiTraceManagement;
};

} // namespace ZoVelkor
