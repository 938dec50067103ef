#pragma once

#include "CEvent.h"
#include "Handle.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <shared_mutex>
#include <vector>

/// Gives events their handles and finds them again. Any operation from any thread.
///
/// A handle is the number of a slot with the generation of its use, so that the handle of a closed event is
/// recognised even when its slot is in use again.
class CHandleTable
{
public:
    /// The table of the process; it is never destroyed, because threads may outlive static objects.
    static CHandleTable& Instance();

    /// @return the new handle; 0 when all slots are in use
    /// @throws std::bad_alloc
    [[nodiscard]] HANDLE Insert(std::shared_ptr<CEvent> event);

    /// @return the event, kept alive by the result; null for a handle that is not open
    [[nodiscard]] std::shared_ptr<CEvent> Find(HANDLE handle) const;

    /// @return false for a handle that is not open
    bool Remove(HANDLE handle);

private:
    struct tagSlot
    {
        std::shared_ptr<CEvent> event;
        std::uint16_t generation = 0;
    };

    /// The slot of an open handle, else null.
    const tagSlot* FindSlotLocked(HANDLE handle) const noexcept;
    std::size_t TakeSlotLocked();

    mutable std::shared_mutex m_lock;
    // Guarded by m_lock.
    std::vector<tagSlot> m_slots;
    std::deque<std::size_t> m_freeSlots;
};
