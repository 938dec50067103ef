#include "CConnection.h"

#include "CMutexLocker.h"
#include "CSmartScpiChannelInfo.h"
#include "GuardedEntry.h"
#include "MakeEvent.h"
#include "ScpiErrorCodes.h"
#include "ThreadBasics.h"

#include <iterator>
#include <poll.h>
#include <string>
#include <utility>

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// A controller that has sent nothing for so long has its session give the memory of large messages back.
constexpr int kQuietMs = 1000;
constexpr int kNoLimit = -1;

int WaitDescriptor(IZOScpiChannel* channel)
{
    int descriptor = -1;
    CComPtr<IZOScpiWaitableChannel> waitable;
    if (SUCCEEDED(CComPtr<IZOScpiChannel>(channel).QueryInterface(&waitable)))
    {
        static_cast<void>(waitable->GetWaitDescriptor(&descriptor));
    }
    return descriptor;
}

std::wstring ChannelName(IZOScpiChannel* channel)
{
    tag_ScpiChannelInfo info{};
    const HRESULT result = GuardedEntry([&] { return channel->get_ChannelProperties(&info); });
    std::wstring name = SUCCEEDED(result) && info.bsName != nullptr ? info.bsName : L"";
    CSmartScpiChannelInfo::ClearData(info);
    return name;
}

} // namespace

CConnection::CConnection(const KernelParts& parts, const SessionLimits& limits, IZOScpiChannel* channel)
    : m_parts(parts),
      m_channel(channel),
      m_descriptor(WaitDescriptor(channel)),
      m_wake(MakeEvent(FALSE, "No event for a connection")),
      m_session(std::make_unique<CSession>(parts, limits, SessionTransport{m_descriptor, this, channel})),
      m_path(m_session->Path())
{}

CConnection::~CConnection()
{
    End();
}

void CConnection::End()
{
    std::thread thread;
    {
        const CMutexLocker lock(m_mutex);
        if (m_ended || m_session == nullptr)
        {
            return;
        }
        m_ended = true;
        m_session->Cancel();
        std::swap(thread, m_thread);
        m_endedByThread = thread.get_id() == std::this_thread::get_id();
    }
    static_cast<void>(GuardedEntry([this] { return m_channel->Abort(); }));
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
    std::unique_ptr<CSession> session;
    bool served = false;
    {
        const CMutexLocker lock(m_mutex);
        session = std::move(m_session);
        served = m_served;
    }
    if (served)
    {
        TellBroken(ChannelName(m_channel));
    }
    session.reset();
    m_channel.Release();
}

void CConnection::TellBroken(std::wstring name)
{
    m_parts.events->TellObservers([&](IZOScpiMultichannelEventObserver& observer) {
        return observer.ConnectionBroken(name.data(), RemotePath());
    });
}

HRESULT CConnection::SignalConnected()
{
    CComPtr<IZOScpiChannel> channel; // the end of the connection may come at any moment
    {
        const CMutexLocker lock(m_mutex);
        if (m_ended || m_connected)
        {
            return m_ended ? E_UNEXPECTED : S_FALSE;
        }
        m_connected = true;
        channel = m_channel;
    }
    return GuardedEntry([&]() -> HRESULT {
        std::wstring name = ChannelName(channel);
        m_parts.events->TellObservers([&](IZOScpiMultichannelEventObserver& observer) {
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
    const CMutexLocker lock(m_mutex);
    if (m_ended)
    {
        return E_UNEXPECTED;
    }
    // The thread keeps the connection until it is back, whoever lets go of it meanwhile.
    m_thread =
        std::thread([this, self = CComPtr<IZOScpiChannelServiceProvider>(this), session = m_session.get()] {
            Run(*session);
        });
    m_served = true;
    return S_OK;
}

HRESULT CConnection::SignalDisconnected()
{
    const CMutexLocker lock(m_mutex);
    if (m_session == nullptr)
    {
        return E_UNEXPECTED;
    }
    m_session->Cancel();
    return S_OK;
}

HRESULT CConnection::SignalDataAvailable()
{
    SetEvent(m_wake.Get());
    return S_OK;
}

HRESULT CConnection::SignalDeviceClear()
{
    const CMutexLocker lock(m_mutex);
    if (m_session == nullptr)
    {
        return E_UNEXPECTED;
    }
    m_session->DeviceClear();
    return S_OK;
}

HRESULT CConnection::SignalGotoLocal()
{
    return Change(PathChange::GotoLocal);
}

HRESULT CConnection::SignalGotoRemote()
{
    return Change(PathChange::GotoRemote);
}

HRESULT CConnection::SignalLocalLockout(short on)
{
    return Change(on != 0 ? PathChange::Lockout : PathChange::EndLockout);
}

HRESULT CConnection::Change(PathChange change)
{
    return GuardedEntry([&]() -> HRESULT {
        return ChangePath(*m_path, *m_parts.events, change) == StateChange::Changed ? S_OK : S_FALSE;
    });
}

HRESULT CConnection::SignalTrigger()
{
    const CMutexLocker lock(m_mutex);
    if (!m_thread.joinable() || m_trigger.over)
    {
        return E_UNEXPECTED;
    }
    const std::uint64_t mine = ++m_trigger.requested;
    SetEvent(m_wake.Get());
    while (m_trigger.done < mine)
    {
        m_triggerDone.Wait(m_mutex);
    }
    return m_trigger.result;
}

HRESULT CConnection::SignalStbChange(unsigned char)
{
    return S_FALSE;
}

HRESULT CConnection::ReportError(short code, wchar_t* text)
{
    if (!m_path->IsOpen())
    {
        return E_UNEXPECTED;
    }
    const HRESULT result = m_parts.errors->SetError(RemotePath(), code, text);
    if (code == kScpiQueryUnterminated || IsScpiCommandError(code))
    {
        const CMutexLocker lock(m_mutex);
        if (m_session != nullptr)
        {
            m_session->DropInput();
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
    const CMutexLocker lock(m_mutex);
    return m_session == nullptr ? E_UNEXPECTED : CComPtr<IUnknown>(m_session->Context()).CopyTo(manager);
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
    static_cast<void>(GuardedEntry([this] { return m_channel->Abort(); }));
    bool takesDown = false;
    {
        const CMutexLocker lock(m_mutex);
        takesDown = m_endedByThread;
    }
    if (takesDown)
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
            static_cast<void>(m_channel->DeviceClearAcknowledge());
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
            Wait(session.BreakDescriptor(), session.HoldsMemory() ? kQuietMs : kNoLimit) ==
                Wakening::TimedOut)
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
        const bool all = received == 0 || (m_descriptor >= 0 && received < space.size());
        if (all || session.IsClearPending() || session.IsCancelled())
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
            m_channel->Read(space.size(), reinterpret_cast<unsigned char*>(space.data()), &got);
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
        static_cast<void>(m_channel->ProgramMessageEnd());
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
    auto* const bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(response.data()));
    HRESULT result = m_channel->Write(response.size(), bytes, &written);
    result = SUCCEEDED(result) ? m_channel->Flush() : result;
    return SUCCEEDED(result) || result == E_ABORT;
}

CConnection::Wakening CConnection::Wait(int breakDescriptor, int timeoutMs) noexcept
{
    pollfd descriptors[] = {
        {GetEventDescriptor(m_wake.Get()), POLLIN, 0},
        {breakDescriptor, POLLIN, 0},
        {m_descriptor, POLLIN, 0}, // a negative one is passed over
    };
    if (poll(descriptors, std::size(descriptors), timeoutMs) == 0)
    {
        return Wakening::TimedOut;
    }
    if (descriptors[0].revents != 0)
    {
        WaitForSingleObject(m_wake.Get(), 0); // takes the event
    }
    return descriptors[1].revents != 0 ? Wakening::Broken : Wakening::Work;
}

Received CConnection::Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept
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
            return {ReceiveStatus::Received, received};
        }
        if (TriggersRequested() != TriggersDone())
        {
            // It has come inside the block and cannot wait for the rest.
            OwnSession().RefuseTrigger();
            CloseTriggers(S_FALSE, false);
        }
        switch (Wait(cancelDescriptor, timeoutMs))
        {
        case Wakening::TimedOut:
            return {ReceiveStatus::TimedOut, 0};
        case Wakening::Broken:
            return {};
        case Wakening::Work:
            break;
        }
    }
}

CSession& CConnection::OwnSession()
{
    const CMutexLocker lock(m_mutex);
    return *m_session;
}

std::uint64_t CConnection::TriggersRequested()
{
    const CMutexLocker lock(m_mutex);
    return m_trigger.requested;
}

std::uint64_t CConnection::TriggersDone()
{
    const CMutexLocker lock(m_mutex);
    return m_trigger.done;
}

void CConnection::RunTrigger(CSession& session, std::uint64_t requested)
{
    const HRESULT result = session.IsClearPending() || session.IsCancelled() ? E_ABORT : session.Trigger();
    const CMutexLocker lock(m_mutex);
    m_trigger.done = requested;
    m_trigger.result = result;
    m_triggerDone.NotifyAll();
}

void CConnection::CloseTriggers(HRESULT result, bool over)
{
    const CMutexLocker lock(m_mutex);
    if (m_trigger.done != m_trigger.requested)
    {
        m_trigger.done = m_trigger.requested;
        m_trigger.result = result;
    }
    m_trigger.over = over;
    m_triggerDone.NotifyAll();
}

} // namespace ZoVelkor::RemoteKernel
