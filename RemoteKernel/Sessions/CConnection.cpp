#include "CConnection.h"

#include "CSmartScpiChannelInfo.h"
#include "GuardedEntry.h"
#include "ScpiErrorCodes.h"
#include "ThreadBasics.h"

#include <iterator>
#include <poll.h>
#include <string>
#include <system_error>
#include <utility>

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// A controller that has sent nothing for so long has its session give the memory of large messages back.
constexpr int kQuietMs = 1000;
constexpr int kNoLimit = -1;

CUniqueEvent MakeWakeEvent()
{
    CUniqueEvent event(CreateEvent(FALSE, FALSE));
    if (!event)
    {
        throw std::system_error(EMFILE, std::generic_category(), "No event for a connection");
    }
    return event;
}

int WaitDescriptor(IZOScpiChannel* pChannel)
{
    int descriptor = -1;
    CComPtr<IZOScpiWaitableChannel> spWaitable;
    if (SUCCEEDED(CComPtr<IZOScpiChannel>(pChannel).QueryInterface(&spWaitable)))
    {
        static_cast<void>(spWaitable->GetWaitDescriptor(&descriptor));
    }
    return descriptor;
}

std::wstring ChannelName(IZOScpiChannel* pChannel)
{
    tag_ScpiChannelInfo info{};
    const HRESULT result = GuardedEntry([&] { return pChannel->get_ChannelProperties(&info); });
    std::wstring name = SUCCEEDED(result) && info.bsName != nullptr ? info.bsName : L"";
    CSmartScpiChannelInfo::ClearData(info);
    return name;
}

} // namespace

CConnection::CConnection(CRemoteKernel& kernel,
                         const tagKernelParts& parts,
                         const tagSessionLimits& limits,
                         IZOScpiChannel* channel)
    : m_parts(parts),
      m_spChannel(channel),
      m_descriptor(WaitDescriptor(channel)),
      m_wake(MakeWakeEvent()),
      m_spSession(
          std::make_unique<CSession>(kernel, limits, tagSessionTransport{m_descriptor, this, channel})),
      m_spPath(m_spSession->Path())
{}

CConnection::~CConnection()
{
    End();
}

void CConnection::End()
{
    std::thread thread;
    {
        const std::lock_guard lock(m_mutex);
        if (m_bEnded || m_spSession == nullptr)
        {
            return;
        }
        m_bEnded = true;
        m_spSession->Cancel();
        std::swap(thread, m_thread);
        m_bEndedByThread = thread.get_id() == std::this_thread::get_id();
    }
    static_cast<void>(GuardedEntry([this] { return m_spChannel->Abort(); }));
    if (thread.get_id() == std::this_thread::get_id())
    {
        thread.detach(); // it takes the connection down when it is back
        return;
    }
    if (thread.joinable())
    {
        thread.join();
    }
    TakeDown();
}

void CConnection::TakeDown()
{
    std::unique_ptr<CSession> spSession;
    bool bServed = false;
    {
        const std::lock_guard lock(m_mutex);
        spSession = std::move(m_spSession);
        bServed = m_bServed;
    }
    if (bServed)
    {
        TellBroken(ChannelName(m_spChannel));
    }
    spSession.reset();
    m_spChannel.Release();
}

void CConnection::TellBroken(std::wstring name)
{
    m_parts.spEvents->TellObservers([&](IZOScpiMultichannelEventObserver& observer) {
        return observer.ConnectionBroken(name.data(), RemotePath());
    });
}

HRESULT CConnection::SignalConnected()
{
    CComPtr<IZOScpiChannel> spChannel; // the end of the connection may come at any moment
    {
        const std::lock_guard lock(m_mutex);
        if (m_bEnded || m_bConnected)
        {
            return m_bEnded ? E_UNEXPECTED : S_FALSE;
        }
        m_bConnected = true;
        spChannel = m_spChannel;
    }
    return GuardedEntry([&]() -> HRESULT {
        std::wstring name = ChannelName(spChannel);
        m_parts.spEvents->TellObservers([&](IZOScpiMultichannelEventObserver& observer) {
            return observer.ConnectionAccepted(name.data(), RemotePath());
        });
        const HRESULT result = GuardedEntry([this] { return StartThread(); });
        if (FAILED(result))
        {
            TellBroken(std::move(name));
        }
        return result;
    });
}

HRESULT CConnection::StartThread()
{
    const std::lock_guard lock(m_mutex);
    if (m_bEnded)
    {
        return E_UNEXPECTED;
    }
    // The thread keeps the connection until it is back, whoever lets go of it meanwhile.
    m_thread = std::thread([this,
                            spSelf = CComPtr<IZOScpiChannelServiceProvider>(this),
                            pSession = m_spSession.get()] { Run(*pSession); });
    m_bServed = true;
    return S_OK;
}

HRESULT CConnection::SignalDisconnected()
{
    const std::lock_guard lock(m_mutex);
    if (m_spSession == nullptr)
    {
        return E_UNEXPECTED;
    }
    m_spSession->Cancel();
    return S_OK;
}

HRESULT CConnection::SignalDataAvailable()
{
    SetEvent(m_wake.Get());
    return S_OK;
}

HRESULT CConnection::SignalDeviceClear()
{
    const std::lock_guard lock(m_mutex);
    if (m_spSession == nullptr)
    {
        return E_UNEXPECTED;
    }
    m_spSession->DeviceClear();
    return S_OK;
}

HRESULT CConnection::SignalGotoLocal()
{
    return GuardedEntry([this]() -> HRESULT {
        if (m_spPath->State().GotoLocal() != tagStateChange::Changed)
        {
            return S_FALSE;
        }
        m_parts.spEvents->Tell(
            RemotePath(), &IZOScpiDeviceHandler::GotoLocal, &IZOScpiMultichannelEventObserver::GotoLocal);
        m_spPath->PublishStatus();
        return S_OK;
    });
}

HRESULT CConnection::SignalGotoRemote()
{
    return GuardedEntry([this]() -> HRESULT {
        if (m_spPath->State().GotoRemote() != tagStateChange::Changed)
        {
            return S_FALSE;
        }
        m_parts.spEvents->Tell(
            RemotePath(), &IZOScpiDeviceHandler::GotoRemote, &IZOScpiMultichannelEventObserver::GotoRemote);
        m_spPath->PublishStatus();
        return S_OK;
    });
}

HRESULT CConnection::SignalLocalLockout(short on)
{
    return GuardedEntry([&]() -> HRESULT {
        if (m_spPath->State().SetLockout(on != 0) != tagStateChange::Changed)
        {
            return S_FALSE;
        }
        m_parts.spEvents->TellLockout(RemotePath(), on != 0);
        m_spPath->PublishStatus();
        return S_OK;
    });
}

HRESULT CConnection::SignalTrigger()
{
    std::unique_lock lock(m_mutex);
    if (!m_thread.joinable() || m_trigger.bOver)
    {
        return E_UNEXPECTED;
    }
    const std::uint64_t mine = ++m_trigger.iRequested;
    SetEvent(m_wake.Get());
    m_triggerDone.wait(lock, [&] { return m_trigger.iDone >= mine; });
    return m_trigger.result;
}

HRESULT CConnection::SignalStbChange(unsigned char)
{
    return S_FALSE;
}

HRESULT CConnection::ReportError(short code, wchar_t* text)
{
    if (!m_spPath->IsOpen())
    {
        return E_UNEXPECTED;
    }
    const HRESULT result = m_parts.spErrors->SetError(RemotePath(), code, text);
    if (code == kScpiQueryUnterminated || IsScpiCommandError(code))
    {
        const std::lock_guard lock(m_mutex);
        if (m_spSession != nullptr)
        {
            m_spSession->DropInput();
        }
    }
    return result;
}

HRESULT CConnection::GetScpiManager(IUnknown** manager)
{
    if (manager == nullptr)
    {
        return E_POINTER;
    }
    *manager = nullptr;
    const std::lock_guard lock(m_mutex);
    return m_spSession == nullptr ? E_UNEXPECTED : CComPtr<IUnknown>(m_spSession->Context()).CopyTo(manager);
}

void CConnection::Run(CSession& session)
{
    // After a failure this controller loses its connection, the others go on.
    static_cast<void>(GuardedEntry([&]() -> HRESULT {
        SetThreadName(("scpi-path-" + std::to_string(RemotePath())).c_str());
        Serve(session);
        return S_OK;
    }));
    static_cast<void>(GuardedEntry([&session]() -> HRESULT {
        session.Abandon();
        return S_OK;
    }));
    CloseTriggers(E_ABORT, true);
    static_cast<void>(GuardedEntry([this] { return m_spChannel->Abort(); }));
    bool bTakesDown = false;
    {
        const std::lock_guard lock(m_mutex);
        bTakesDown = m_bEndedByThread;
    }
    if (bTakesDown)
    {
        TakeDown();
    }
}

void CConnection::Serve(CSession& session)
{
    while (!session.IsCancelled())
    {
        if (session.IsClearPending())
        {
            do
            {
                session.FinishClear();
            } while (session.IsClearPending());
            CloseTriggers(E_ABORT, false);
            static_cast<void>(m_spChannel->DeviceClearAcknowledge());
        }
        const std::uint64_t triggers = TriggersRequested();
        if (!Drain(session))
        {
            return;
        }
        // One that has come inside a block is over by now, and may be a later one.
        if (triggers > TriggersDone())
        {
            RunTrigger(session, triggers);
        }
        if (triggers == TriggersRequested() &&
            !WaitForWork(session, session.HoldsMemory() ? kQuietMs : kNoLimit))
        {
            session.ReleaseMemory();
        }
    }
}

bool CConnection::Drain(CSession& session)
{
    for (;;)
    {
        const std::span<char> space = session.InputSpace();
        std::size_t received = 0;
        if (ReadInto(space, received) != S_OK)
        {
            return false;
        }
        session.CommitInput(received);
        if (received != 0 && !RunMessages(session))
        {
            return false;
        }
        // Whatever comes after a read that was not filled ends the wait that follows, if there is a
        // descriptor to wait for; another channel is read until it has nothing.
        const bool bAll = received == 0 || (m_descriptor >= 0 && received < space.size());
        if (bAll || session.IsClearPending() || session.IsCancelled())
        {
            return true;
        }
    }
}

HRESULT CConnection::ReadInto(std::span<char> space, std::size_t& received) noexcept
{
    return GuardedEntry([&]() -> HRESULT {
        unsigned long got = 0;
        const HRESULT result =
            m_spChannel->Read(space.size(), reinterpret_cast<unsigned char*>(space.data()), &got);
        received = got <= space.size() ? got : 0;
        return got <= space.size() ? result : E_UNEXPECTED;
    });
}

bool CConnection::RunMessages(CSession& session)
{
    while (session.ExecuteNext() && !session.IsClearPending())
    {
        if (!Send(session.Response()))
        {
            return false;
        }
        session.ClearResponse();
        static_cast<void>(m_spChannel->ProgramMessageEnd());
    }
    return true;
}

bool CConnection::Send(std::string_view response)
{
    if (response.empty())
    {
        return true;
    }
    unsigned long written = 0;
    // The channel's operations take what they only read as changeable.
    auto* const pBytes = reinterpret_cast<unsigned char*>(const_cast<char*>(response.data()));
    HRESULT result = m_spChannel->Write(response.size(), pBytes, &written);
    result = SUCCEEDED(result) ? m_spChannel->Flush() : result;
    return SUCCEEDED(result) || result == E_ABORT;
}

bool CConnection::WaitForWork(CSession& session, int timeoutMs) noexcept
{
    pollfd descriptors[] = {
        {GetEventDescriptor(m_wake.Get()), POLLIN, 0},
        {session.BreakDescriptor(), POLLIN, 0},
        {m_descriptor, POLLIN, 0}, // a negative one is passed over
    };
    const bool bSomething = poll(descriptors, std::size(descriptors), timeoutMs) != 0;
    if (descriptors[0].revents != 0)
    {
        WaitForSingleObject(m_wake.Get(), 0); // takes the event
    }
    return bSomething;
}

tagReceived CConnection::Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept
{
    for (;;)
    {
        std::size_t received = 0;
        if (ReadInto(space, received) != S_OK)
        {
            return {};
        }
        if (received != 0)
        {
            return {tagReceiveStatus::Received, received};
        }
        if (TriggersRequested() != TriggersDone())
        {
            // It has come inside the block and cannot wait for the rest.
            m_spSession->RefuseTrigger();
            CloseTriggers(S_FALSE, false);
        }
        pollfd descriptors[] = {
            {GetEventDescriptor(m_wake.Get()), POLLIN, 0},
            {cancelDescriptor, POLLIN, 0},
            {m_descriptor, POLLIN, 0},
        };
        if (poll(descriptors, std::size(descriptors), timeoutMs) == 0)
        {
            return {tagReceiveStatus::TimedOut, 0};
        }
        if (descriptors[1].revents != 0)
        {
            return {};
        }
        if (descriptors[0].revents != 0)
        {
            WaitForSingleObject(m_wake.Get(), 0);
        }
    }
}

std::uint64_t CConnection::TriggersRequested()
{
    const std::lock_guard lock(m_mutex);
    return m_trigger.iRequested;
}

std::uint64_t CConnection::TriggersDone()
{
    const std::lock_guard lock(m_mutex);
    return m_trigger.iDone;
}

void CConnection::RunTrigger(CSession& session, std::uint64_t requested)
{
    const HRESULT result = session.IsClearPending() || session.IsCancelled() ? E_ABORT : session.Trigger();
    const std::lock_guard lock(m_mutex);
    m_trigger.iDone = requested;
    m_trigger.result = result;
    m_triggerDone.notify_all();
}

void CConnection::CloseTriggers(HRESULT result, bool over)
{
    const std::lock_guard lock(m_mutex);
    if (m_trigger.iDone != m_trigger.iRequested)
    {
        m_trigger.iDone = m_trigger.iRequested;
        m_trigger.result = result;
    }
    m_trigger.bOver = over;
    m_triggerDone.notify_all();
}

} // namespace ZoVelkor::RemoteKernel
