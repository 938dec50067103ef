#pragma once

#include "ThreadAnnotations.h"
#include "ZoExport.h"

#include <mutex>

namespace ZoVelkor
{
/// A critical section; the thread that is inside may enter again and leaves as often as it entered.
///
/// Prefer CCritSectionLocker to the operations here.
class ZO_EXPORT ZO_CAPABILITY("critical section") CCritSection
{
public:
    CCritSection() = default;
    CCritSection(const CCritSection&) = delete;
    CCritSection& operator=(const CCritSection&) = delete;

    /// Enters; waits while another thread is inside.
    void Lock() ZO_ACQUIRE() { m_mutex.lock(); }

    /// Enters if that needs no waiting.
    [[nodiscard]] bool TryLock() ZO_TRY_ACQUIRE(true) { return m_mutex.try_lock(); }

    /// Leaves; only the thread that is inside may call it.
    void Unlock() ZO_RELEASE() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};
} // namespace ZoVelkor
