#pragma once

#include "ThreadAnnotations.h"

#include <mutex>

namespace ZoVelkor
{
/// A lock that one thread at a time holds; the thread that holds it must not take it again.
///
/// Prefer CMutexLocker to the operations here; where a thread comes back to its own lock, see CCritSection.
/// It costs what std::mutex costs.
class ZO_CAPABILITY("mutex") CMutex
{
public:
    CMutex() = default;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    /// Takes the lock; waits while another thread holds it.
    void Lock() ZO_ACQUIRE() { m_mutex.lock(); }

    /// Takes the lock if that needs no waiting.
    [[nodiscard]] bool TryLock() ZO_TRY_ACQUIRE(true) { return m_mutex.try_lock(); }

    /// Gives the lock back; only the thread that holds it may call it.
    void Unlock() ZO_RELEASE() { m_mutex.unlock(); }

    /// Tells the compiler's check that the calling thread holds the lock; does nothing.
    ///
    /// For functions that are called under the lock by way of code which does not know it, like the condition
    /// that a wait is given.
    void AssertHeld() const noexcept ZO_ASSERT_CAPABILITY(this) {}

private:
    friend class CCondition;

    std::mutex m_mutex;
};
} // namespace ZoVelkor
