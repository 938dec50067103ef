#include "CInterruptWatcher.h"

#include "CMutexLocker.h"
#include "CToolError.h"

#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/signalfd.h>

namespace ZoVelkor::Tools
{

namespace
{

/// Abort reaches only a call that already waits, and a transfer is one call after the other, so it is
/// repeated after so many milliseconds until there is no call any more.
constexpr int kRepeatMs = 20;

/// Between two calls of one command the next one ends at once and says so; it has so much time to begin.
constexpr int kGraceMs = 250;

sigset_t InterruptSet()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    return set;
}

} // namespace

CInterruptWatcher::CInterruptWatcher(IdleInterrupt idle)
    : m_idle(idle),
      m_stop(CreateEvent(TRUE, FALSE)),
      m_thread("ZoInterrupt")
{
    const sigset_t set = InterruptSet();
    pthread_sigmask(SIG_BLOCK, &set, &m_formerMask);
    m_signals.Reset(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!m_signals || !m_stop || FAILED(m_thread.Start(&m_loop)))
    {
        throw std::runtime_error("the system gives no thread or no event");
    }
}

CInterruptWatcher::~CInterruptWatcher()
{
    SetEvent(m_stop.Get());
    m_thread.Join();
    TakeSignal();
    pthread_sigmask(SIG_SETMASK, &m_formerMask, nullptr);
}

void CInterruptWatcher::TakeSignal()
{
    signalfd_siginfo info{};
    while (read(m_signals.Get(), &info, sizeof info) > 0)
    {}
}

void CInterruptWatcher::Watch()
{
    pollfd descriptors[] = {{GetEventDescriptor(m_stop.Get()), POLLIN, 0}, {m_signals.Get(), POLLIN, 0}};
    int timeoutMs = -1;
    bool isExitDue = false;
    while (poll(descriptors, 2, timeoutMs) < 0 || descriptors[0].revents == 0)
    {
        const bool isSignal = descriptors[1].revents != 0;
        TakeSignal();
        const bool isCall = (isSignal || timeoutMs >= 0) && AbortCall(isSignal);
        if (isExitDue && !isCall)
        {
            // The other thread is in the look-up of a name or in a read that nothing else ends.
            std::_Exit(static_cast<int>(ExitCode::Interrupted));
        }
        isExitDue = isSignal && !isCall && m_idle == IdleInterrupt::Exit;
        timeoutMs = isCall ? kRepeatMs : (isExitDue ? kGraceMs : -1);
    }
}

/// @return there is a call
bool CInterruptWatcher::AbortCall(bool isSignal)
{
    const CMutexLocker lock(m_mutex);
    m_isInterrupted = m_isInterrupted || isSignal;
    if (m_controller != nullptr)
    {
        m_controller->Abort();
    }
    return m_controller != nullptr;
}

void CInterruptWatcher::Forget()
{
    m_isInterrupted = false;
}

CInterruptWatcher::CCall::CCall(CInterruptWatcher* watcher, IZOScpiController& controller)
    : m_watcher(watcher)
{
    if (m_watcher != nullptr)
    {
        const CMutexLocker lock(m_watcher->m_mutex);
        m_watcher->m_controller = &controller;
    }
}

CInterruptWatcher::CCall::~CCall()
{
    if (m_watcher != nullptr)
    {
        const CMutexLocker lock(m_watcher->m_mutex);
        m_watcher->m_controller = nullptr;
    }
}

bool CInterruptWatcher::CCall::IsInterrupted() const noexcept
{
    return m_watcher != nullptr && m_watcher->m_isInterrupted;
}

} // namespace ZoVelkor::Tools
