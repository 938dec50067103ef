#pragma once

#include "CMutex.h"
#include "ThreadAnnotations.h"

namespace ZoVelkor
{
/// Holds a mutex to the end of a scope, or to an earlier Unlock.
///
/// A wait for a CCondition is given the mutex, not the locker. Belongs to one thread.
class ZO_SCOPED_CAPABILITY CMutexLocker
{
public:
    /// @param mutex  borrowed; outlives the locker
    explicit CMutexLocker(CMutex& mutex) ZO_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    CMutexLocker(const CMutexLocker&) = delete;
    CMutexLocker& operator=(const CMutexLocker&) = delete;
    ~CMutexLocker() ZO_RELEASE()
    {
        if (m_locked)
        {
            m_mutex.Unlock();
        }
    }

    /// Takes the mutex again after Unlock; must not be called while the locker holds it.
    void Lock() ZO_ACQUIRE()
    {
        m_mutex.Lock();
        m_locked = true;
    }

    /// Gives the mutex back before the end of the scope; must not be called twice.
    void Unlock() ZO_RELEASE()
    {
        m_locked = false;
        m_mutex.Unlock();
    }

private:
    CMutex& m_mutex;
    bool m_locked = true;
};
} // namespace ZoVelkor
