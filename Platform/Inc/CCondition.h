#pragma once

#include "CMutex.h"
#include "ThreadAnnotations.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace ZoVelkor
{
/// What threads wait for until another one changes what a mutex guards and notifies them.
///
/// Waits are called with the mutex held, give it back while they sleep and return with it. All threads that
/// wait at one time hold the same mutex. A wait may also return without a notification, so whoever waits
/// looks again, or hands over a condition: a function without arguments that gives true when the wait is over
/// and that is called with the mutex held.
///
/// It costs what std::condition_variable costs. Threads: any operation from any thread.
class CCondition
{
public:
    /// Of deadlines.
    using Clock = std::chrono::steady_clock;

    CCondition() = default;
    CCondition(const CCondition&) = delete;
    CCondition& operator=(const CCondition&) = delete;

    /// Waits for a notification.
    void Wait(CMutex& mutex) ZO_REQUIRES(mutex)
    {
        CHeldLock lock(mutex);
        m_condition.wait(lock.m_lock);
    }

    /// Waits until a condition holds; does not wait when it holds already.
    template <class TCondition>
    void Wait(CMutex& mutex, TCondition condition) ZO_REQUIRES(mutex)
    {
        while (!condition())
        {
            Wait(mutex);
        }
    }

    /// Waits for a notification, or until a moment.
    ///
    /// @return false when the moment has come first
    bool WaitUntil(CMutex& mutex, Clock::time_point deadline) ZO_REQUIRES(mutex)
    {
        CHeldLock lock(mutex);
        return m_condition.wait_until(lock.m_lock, deadline) == std::cv_status::no_timeout;
    }

    /// Waits until a condition holds, or until a moment.
    ///
    /// @return whether the condition holds, which is looked at after the moment once more
    template <class TCondition>
    bool WaitUntil(CMutex& mutex, Clock::time_point deadline, TCondition condition) ZO_REQUIRES(mutex)
    {
        while (!condition())
        {
            if (!WaitUntil(mutex, deadline))
            {
                return condition();
            }
        }
        return true;
    }

    /// Wakes one of the threads that wait, if there are any; the mutex need not be held.
    void NotifyOne() noexcept { m_condition.notify_one(); }

    /// Wakes all threads that wait; the mutex need not be held.
    void NotifyAll() noexcept { m_condition.notify_all(); }

private:
    /// Lends a held mutex to std::condition_variable in the form that it asks for.
    struct CHeldLock
    {
        explicit CHeldLock(CMutex& mutex) noexcept : m_lock(mutex.m_mutex, std::adopt_lock) {}
        CHeldLock(const CHeldLock&) = delete;
        CHeldLock& operator=(const CHeldLock&) = delete;
        ~CHeldLock() { m_lock.release(); }

        std::unique_lock<std::mutex> m_lock;
    };

    std::condition_variable m_condition;
};
} // namespace ZoVelkor
