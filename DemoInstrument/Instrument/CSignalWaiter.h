#pragma once

#include <csignal>

namespace ZoVelkor::Demo
{

/// Turns the signals that end a program (SIGINT, SIGTERM) into something to wait for.
///
/// Made before the first thread, which takes the blocked signals over; what happens at the signal then runs
/// as ordinary code.
class CSignalWaiter
{
public:
    CSignalWaiter()
    {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGINT);
        sigaddset(&m_signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }

    /// Waits for one of the signals.
    void Wait() const
    {
        int number = 0;
        while (sigwait(&m_signals, &number) != 0)
        {}
    }

private:
    sigset_t m_signals{};
};

} // namespace ZoVelkor::Demo
