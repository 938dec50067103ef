#pragma once

#include "CCritSection.h"
#include "ThreadAnnotations.h"

namespace ZoVelkor
{
/// Holds a critical section to the end of a scope.
///
/// Around a wait, Unlock and Lock step outside for a while. When the thread had entered the section before,
/// that leaves one level only and the section stays occupied.
class ZO_SCOPED_CAPABILITY CCritSectionLocker
{
public:
    /// @param section  borrowed; outlives the locker
    explicit CCritSectionLocker(CCritSection& section) ZO_ACQUIRE(section) : m_section(section)
    {
        m_section.Lock();
    }
    CCritSectionLocker(const CCritSectionLocker&) = delete;
    CCritSectionLocker& operator=(const CCritSectionLocker&) = delete;
    /// Leaves, unless Unlock has left already.
    ~CCritSectionLocker() ZO_RELEASE()
    {
        if (m_locked)
        {
            m_section.Unlock();
        }
    }

    /// Enters again after Unlock; must not be called while the locker holds the section.
    void Lock() ZO_ACQUIRE()
    {
        m_section.Lock();
        m_locked = true;
    }

    /// Leaves before the end of the scope; must not be called twice.
    void Unlock() ZO_RELEASE()
    {
        m_locked = false;
        m_section.Unlock();
    }

private:
    CCritSection& m_section;
    bool m_locked = true;
};
} // namespace ZoVelkor
