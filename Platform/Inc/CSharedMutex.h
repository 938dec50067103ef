#pragma once

#include "ThreadAnnotations.h"

#include <shared_mutex>

namespace ZoVelkor
{
/// A lock that either one thread holds alone, in order to change something, or any number of threads share in
/// order to read. A thread that holds it in one way must not take it again in any.
///
/// Prefer CWriteLocker and CReadLocker to the operations here. It costs what std::shared_mutex costs.
class ZO_CAPABILITY("shared mutex") CSharedMutex
{
public:
    CSharedMutex() = default;
    CSharedMutex(const CSharedMutex&) = delete;
    CSharedMutex& operator=(const CSharedMutex&) = delete;

    /// Takes the lock alone; waits while others hold it.
    void Lock() ZO_ACQUIRE() { m_mutex.lock(); }

    /// Gives the lock back that the thread holds alone.
    void Unlock() ZO_RELEASE() { m_mutex.unlock(); }

    /// Shares the lock; waits while another thread holds it alone.
    void LockShared() ZO_ACQUIRE_SHARED() { m_mutex.lock_shared(); }

    /// Gives the thread's share of the lock back.
    void UnlockShared() ZO_RELEASE_SHARED() { m_mutex.unlock_shared(); }

private:
    std::shared_mutex m_mutex;
};
} // namespace ZoVelkor
