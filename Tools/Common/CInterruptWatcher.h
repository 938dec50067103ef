#pragma once

#include "CMutex.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "CUniqueHandle.h"
#include "Event.h"
#include "IZOScpiController.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <unistd.h>

namespace ZoVelkor::Tools
{

/// What Ctrl-C does while no call is in progress.
enum class IdleInterrupt : std::uint8_t
{
    Exit,    ///< the program ends with ExitCode::Interrupted
    Remember ///< the next call does not begin, see Forget
};

/// Turns SIGINT into IZOScpiController::Abort of the call in progress.
///
/// The signal is blocked and taken by an own thread, so that all that happens is ordinary code. Made before
/// other threads are, which take the blocked signal over; one at a time.
class CInterruptWatcher
{
public:
    explicit CInterruptWatcher(IdleInterrupt idle);
    CInterruptWatcher(const CInterruptWatcher&) = delete;
    CInterruptWatcher& operator=(const CInterruptWatcher&) = delete;
    /// Lets the signal do again what it did before.
    ~CInterruptWatcher();

    /// Forgets a signal that no call has ended at yet.
    void Forget();

    /// Marks a call; SIGINT then aborts it instead of anything else.
    class CCall
    {
    public:
        /// @param watcher  may be null: nothing is watched
        CCall(CInterruptWatcher* watcher, IZOScpiController& controller);
        CCall(const CCall&) = delete;
        CCall& operator=(const CCall&) = delete;
        ~CCall();

        /// The signal has come, maybe before the call.
        bool IsInterrupted() const noexcept;

    private:
        CInterruptWatcher* const m_watcher;
    };

private:
    class CLoop final : public CThreadRunObject
    {
    public:
        explicit CLoop(CInterruptWatcher& owner) : m_owner(owner) {}
        void Run() override { m_owner.Watch(); }
        void Abort() override { SetEvent(m_owner.m_stop.Get()); }

    private:
        CInterruptWatcher& m_owner;
    };

    void Watch();
    void TakeSignal();
    bool AbortCall(bool isSignal);

    const IdleInterrupt m_idle;
    sigset_t m_formerMask{};
    CUniqueHandle<&close, int, -1> m_signals;
    CUniqueEvent m_stop;
    std::atomic<bool> m_isInterrupted = false;
    CMutex m_mutex;
    IZOScpiController* m_controller ZO_GUARDED_BY(m_mutex) = nullptr; ///< of the call
    CLoop m_loop{*this};
    CThread m_thread; ///< the last member, so that it ends before the others
};

} // namespace ZoVelkor::Tools
