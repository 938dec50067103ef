#pragma once

#include "CSharedMutex.h"
#include "CUniqueHandle.h"

#include <atomic>
#include <unistd.h>

/// Owner of a file descriptor.
using CUniqueDescriptor = CUniqueHandle<&::close, int, -1>;

/// Event on a descriptor that is readable while the event is set. Any operation from any thread.
class CEvent
{
public:
    CEvent(CUniqueDescriptor descriptor, bool manualReset) noexcept;

    void Set() noexcept;
    void Reset() noexcept;

    /// Takes an event that was seen set: resets an auto-reset event.
    ///
    /// @return false when another waiter was faster
    [[nodiscard]] bool TryTake() noexcept;

    [[nodiscard]] int Descriptor() const noexcept { return m_descriptor.Get(); }

    /// Held shared by whoever resets one event, and exclusively by a wait for all from its look at the events
    /// to their taking, so that no event can change back in between.
    static ZoVelkor::CSharedMutex& TakingLock() noexcept;

    /// TryTake for a caller who holds TakingLock.
    [[nodiscard]] bool TryTakeLocked() noexcept ZO_REQUIRES_SHARED(TakingLock());

private:
    bool Drain() const noexcept ZO_REQUIRES_SHARED(TakingLock());
    void SeeSettings() const noexcept;

    CUniqueDescriptor m_descriptor;
    bool m_manualReset;
    /// Carries what the setting thread wrote to the waiting one: a poll alone orders nothing for the
    /// compiler.
    std::atomic<unsigned> m_settings{0};
};
