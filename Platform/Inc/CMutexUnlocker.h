#pragma once

#include "CMutex.h"
#include "ThreadAnnotations.h"

namespace ZoVelkor
{
/// Gives a mutex back that the thread holds, and takes it again at the end of the scope.
///
/// For a call to somebody else in the middle of a function that is called with the lock held: what the lock
/// guards may be different afterwards. Belongs to one thread.
class ZO_SCOPED_CAPABILITY CMutexUnlocker
{
public:
    /// @param mutex  borrowed; outlives the object
    explicit CMutexUnlocker(CMutex& mutex) ZO_RELEASE(mutex) : m_mutex(mutex) { m_mutex.Unlock(); }
    CMutexUnlocker(const CMutexUnlocker&) = delete;
    CMutexUnlocker& operator=(const CMutexUnlocker&) = delete;
    // Of such a class the end of the scope undoes what the constructor did, so this "release" takes the lock.
    ~CMutexUnlocker() ZO_RELEASE() { m_mutex.Lock(); }

private:
    CMutex& m_mutex;
};
} // namespace ZoVelkor
