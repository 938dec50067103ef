#include "CEvent.h"

#include "CReadLocker.h"

#include <cerrno>
#include <cstdint>
#include <utility>

CEvent::CEvent(CUniqueDescriptor descriptor, bool manualReset) noexcept
    : m_descriptor(std::move(descriptor)),
      m_manualReset(manualReset)
{}

void CEvent::Set() noexcept
{
    // The system call orders nothing for the language's memory model; this does, together with the load of
    // whoever takes the event.
    m_settings.fetch_add(1, std::memory_order_release);
    constexpr std::uint64_t kOne = 1;
    // A full counter refuses the write and is readable already.
    while (::write(m_descriptor.Get(), &kOne, sizeof kOne) < 0 && errno == EINTR)
    {}
}

void CEvent::Reset() noexcept
{
    const ZoVelkor::CReadLocker lock(TakingLock());
    static_cast<void>(Drain());
}

bool CEvent::TryTake() noexcept
{
    // Nothing is used up, so a wait for all has nothing to fear from it.
    if (m_manualReset)
    {
        SeeSettings();
        return true;
    }
    const ZoVelkor::CReadLocker lock(TakingLock());
    return TryTakeLocked();
}

bool CEvent::TryTakeLocked() noexcept
{
    const bool taken = m_manualReset || Drain();
    SeeSettings();
    return taken;
}

ZoVelkor::CSharedMutex& CEvent::TakingLock() noexcept
{
    // One for all events, because a wait for all takes several in one step. Single takers share it.
    static ZoVelkor::CSharedMutex lock;
    return lock;
}

void CEvent::SeeSettings() const noexcept
{
    static_cast<void>(m_settings.load(std::memory_order_acquire));
}

bool CEvent::Drain() const noexcept
{
    std::uint64_t settings = 0;
    ssize_t size = 0;
    do
    {
        size = ::read(m_descriptor.Get(), &settings, sizeof settings);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(sizeof settings);
}
