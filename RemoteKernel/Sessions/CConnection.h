#pragma once

#include "CComObject.h"
#include "CCondition.h"
#include "CMutex.h"
#include "CSession.h"
#include "IZOScpiChannelServiceProvider.h"
#include "IZOScpiWaitableChannel.h"
#include "KernelParts.h"
#include "Parsing/IByteSource.h"
#include "PathChange.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace ZoVelkor::RemoteKernel
{

/// One connected channel: its session, the thread that serves both, and what the channel reports.
///
/// The thread begins with SignalConnected. When the connection is over it calls the channel's Abort and ends;
/// who owns the channel then disconnects it. Threads: as the interface says; End, any.
class CConnection : public IZOScpiChannelServiceProvider, private IByteSource
{
public:
    /// @param channel  counted until End
    /// @throws std::system_error, std::bad_alloc
    CConnection(const KernelParts& parts, const SessionLimits& limits, IZOScpiChannel* channel);
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;
    virtual ~CConnection();

    HRESULT SignalDataAvailable() override;
    HRESULT SignalGotoLocal() override;
    HRESULT SignalGotoRemote() override;
    HRESULT SignalLocalLockout(short on) override;
    HRESULT SignalDeviceClear() override;
    HRESULT SignalTrigger() override;
    HRESULT SignalStbChange(unsigned char stb) override;
    HRESULT ReportError(short code, wchar_t* text) override;
    HRESULT SignalConnected() override;
    HRESULT SignalDisconnected() override;
    HRESULT GetScpiManager(IUnknown** manager) override;

    long RemotePath() const noexcept { return m_path->Number(); }
    /// Ends the connection and waits for its thread, unless that calls. Calling it again does nothing.
    void End();

private:
    struct Trigger
    {
        std::uint64_t requested = 0;
        std::uint64_t done = 0;   // requests that are over, carried out or not
        HRESULT result = S_FALSE; // of the latest
        bool over = false;        // the thread takes no further ones
    };

    enum class Wakening
    {
        Work,
        Broken,
        TimedOut
    };

    HRESULT Change(PathChange change);
    void Run(CSession& session);
    void Serve(CSession& session);
    /// Runs what has arrived.
    ///
    /// @return false when nothing will come any more
    bool Drain(CSession& session);
    bool RunMessages(CSession& session);
    bool Send(std::string_view response);
    void RunTrigger(CSession& session, std::uint64_t requested);
    void CloseTriggers(HRESULT result, bool over);
    /// The session, for the thread that serves it and ends before it.
    CSession& OwnSession();
    std::uint64_t TriggersRequested();
    std::uint64_t TriggersDone();
    /// Waits until there may be something to do, or a descriptor says that the session is broken off.
    Wakening Wait(int breakDescriptor, int timeoutMs) noexcept;
    Received Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept override;
    HRESULT ReadInto(std::span<char> space, std::size_t& received) noexcept;
    void TakeDown();
    HRESULT StartThread();
    void TellBroken(std::wstring name);

    const KernelParts m_parts;
    CComPtr<IZOScpiChannel> m_channel; // constant until TakeDown
    const int m_descriptor;            // of a waitable channel, else -1
    const CUniqueEvent m_wake;         // auto-reset: the thread is to look around

    CMutex m_mutex;
    std::unique_ptr<CSession> m_session ZO_GUARDED_BY(m_mutex); // the thread has it without lock
    const std::shared_ptr<CRemotePath> m_path;
    bool m_connected ZO_GUARDED_BY(m_mutex) = false;
    bool m_served ZO_GUARDED_BY(m_mutex) = false; // the thread has begun
    bool m_ended ZO_GUARDED_BY(m_mutex) = false;
    bool m_endedByThread ZO_GUARDED_BY(m_mutex) = false;
    std::thread m_thread ZO_GUARDED_BY(m_mutex);
    Trigger m_trigger ZO_GUARDED_BY(m_mutex);
    CCondition m_triggerDone;
};

using CConnectionObject = CComObject<CConnection, IZOScpiChannelServiceProvider>;

} // namespace ZoVelkor::RemoteKernel
