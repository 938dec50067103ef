#pragma once

#include "CSharedMutex.h"
#include "ThreadAnnotations.h"

namespace ZoVelkor
{
/// Holds a shared mutex alone to the end of a scope. Belongs to one thread.
class ZO_SCOPED_CAPABILITY CWriteLocker
{
public:
    /// @param mutex  borrowed; outlives the locker
    explicit CWriteLocker(CSharedMutex& mutex) ZO_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    CWriteLocker(const CWriteLocker&) = delete;
    CWriteLocker& operator=(const CWriteLocker&) = delete;
    ~CWriteLocker() ZO_RELEASE() { m_mutex.Unlock(); }

private:
    CSharedMutex& m_mutex;
};
} // namespace ZoVelkor
