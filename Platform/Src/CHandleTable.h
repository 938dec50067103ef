#pragma once

#include "CReadLocker.h"
#include "CWriteLocker.h"
#include "Handle.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

/// Gives the objects of one kind their handles and finds them again. Any operation from any thread.
///
/// A handle is the number of a slot with the generation of its use, so that the handle of a closed object is
/// recognised even when its slot is in use again.
///
/// @tparam TTag  bit that marks the handles of this kind, so that none passes for a handle of another kind
template <class TObject, HANDLE TTag>
class CHandleTable
{
public:
    /// The table of the process; it is never destroyed, because threads may outlive static objects.
    static CHandleTable& Instance()
    {
        static CHandleTable& table = *new CHandleTable;
        return table;
    }

    /// @return the new handle; 0 when all slots are in use
    /// @throws std::bad_alloc
    [[nodiscard]] HANDLE Insert(std::shared_ptr<TObject> object)
    {
        const ZoVelkor::CWriteLocker lock(m_lock);
        const std::size_t index = TakeSlotLocked();
        if (index == kMaximumSlots)
        {
            return 0;
        }
        Slot& slot = m_slots[index];
        slot.object = std::move(object);
        slot.generation =
            slot.generation == kLastGeneration ? 0 : static_cast<std::uint16_t>(slot.generation + 1);
        return TTag | (HANDLE{slot.generation} << kSlotBits) | (index + 1);
    }

    /// @return the object, kept alive by the result; null for a handle that is not open
    [[nodiscard]] std::shared_ptr<TObject> Find(HANDLE handle) const
    {
        const ZoVelkor::CReadLocker lock(m_lock);
        const Slot* slot = FindSlotLocked(handle);
        return slot == nullptr ? nullptr : slot->object;
    }

    /// @return the object whose handle is closed; null for a handle that was not open
    /// @throws std::bad_alloc, and the handle stays open
    [[nodiscard]] std::shared_ptr<TObject> Remove(HANDLE handle)
    {
        const ZoVelkor::CWriteLocker lock(m_lock);
        const Slot* slot = FindSlotLocked(handle);
        if (slot == nullptr)
        {
            return nullptr;
        }
        const auto index = static_cast<std::size_t>(slot - m_slots.data());
        m_freeSlots.push_back(index);
        return std::move(m_slots[index].object);
    }

private:
    static constexpr unsigned kSlotBits = 16;
    static constexpr std::size_t kMaximumSlots = (1U << kSlotBits) - 1;
    static constexpr HANDLE kSlotMask = (1U << kSlotBits) - 1;
    static constexpr std::uint16_t kLastGeneration = 0x3FFF;
    /// Freed slots rest until so many are free: a stale handle is recognised the longer.
    static constexpr std::size_t kRestingSlots = 256;
    static_assert((TTag & ((HANDLE{kLastGeneration} << kSlotBits) | kSlotMask)) == 0);

    struct Slot
    {
        std::shared_ptr<TObject> object;
        std::uint16_t generation = 0;
    };

    /// The slot of an open handle, else null.
    const Slot* FindSlotLocked(HANDLE handle) const noexcept ZO_REQUIRES_SHARED(m_lock)
    {
        const std::size_t index = (handle & kSlotMask) - 1;
        if (index >= m_slots.size())
        {
            return nullptr;
        }
        const Slot& slot = m_slots[index];
        const HANDLE open = TTag | (HANDLE{slot.generation} << kSlotBits) | (index + 1);
        return slot.object != nullptr && open == handle ? &slot : nullptr;
    }

    std::size_t TakeSlotLocked() ZO_REQUIRES(m_lock)
    {
        const bool isFull = m_slots.size() == kMaximumSlots;
        if (m_freeSlots.size() > kRestingSlots || (isFull && !m_freeSlots.empty()))
        {
            const std::size_t index = m_freeSlots.front();
            m_freeSlots.pop_front();
            return index;
        }
        if (isFull)
        {
            return kMaximumSlots;
        }
        m_slots.emplace_back();
        return m_slots.size() - 1;
    }

    mutable ZoVelkor::CSharedMutex m_lock;
    std::vector<Slot> m_slots ZO_GUARDED_BY(m_lock);
    std::deque<std::size_t> m_freeSlots ZO_GUARDED_BY(m_lock);
};

class CEvent;
class CRegistryKey;

using CEventTable = CHandleTable<CEvent, 0>;
using CRegistryKeyTable = CHandleTable<CRegistryKey, 0x40000000>;
