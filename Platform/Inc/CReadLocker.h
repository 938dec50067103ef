#pragma once

#include "CSharedMutex.h"
#include "ThreadAnnotations.h"

namespace ZoVelkor
{
/// Holds a share of a shared mutex to the end of a scope. Belongs to one thread.
class ZO_SCOPED_CAPABILITY CReadLocker
{
public:
    /// @param mutex  borrowed; outlives the locker
    explicit CReadLocker(CSharedMutex& mutex) ZO_ACQUIRE_SHARED(mutex) : m_mutex(mutex)
    {
        m_mutex.LockShared();
    }
    CReadLocker(const CReadLocker&) = delete;
    CReadLocker& operator=(const CReadLocker&) = delete;
    ~CReadLocker() ZO_RELEASE() { m_mutex.UnlockShared(); }

private:
    CSharedMutex& m_mutex;
};
} // namespace ZoVelkor
