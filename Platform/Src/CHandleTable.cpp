#include "CHandleTable.h"

#include <mutex>
#include <utility>

namespace
{
constexpr unsigned kSlotBits = 16;
constexpr std::size_t kMaximumSlots = (1U << kSlotBits) - 1;
constexpr HANDLE kSlotMask = (1U << kSlotBits) - 1;
constexpr std::uint16_t kLastGeneration = 0x7FFF;

/// Freed slots rest until so many are free: a stale handle is recognised the longer.
constexpr std::size_t kRestingSlots = 256;
} // namespace

CHandleTable& CHandleTable::Instance()
{
    static CHandleTable& table = *new CHandleTable;
    return table;
}

HANDLE CHandleTable::Insert(std::shared_ptr<CEvent> event)
{
    const std::unique_lock lock(m_lock);
    const std::size_t index = TakeSlotLocked();
    if (index == kMaximumSlots)
    {
        return 0;
    }
    tagSlot& slot = m_slots[index];
    slot.event = std::move(event);
    slot.generation =
        slot.generation == kLastGeneration ? 0 : static_cast<std::uint16_t>(slot.generation + 1);
    return (HANDLE{slot.generation} << kSlotBits) | (index + 1);
}

std::shared_ptr<CEvent> CHandleTable::Find(HANDLE handle) const
{
    const std::shared_lock lock(m_lock);
    const tagSlot* slot = FindSlotLocked(handle);
    return slot == nullptr ? nullptr : slot->event;
}

bool CHandleTable::Remove(HANDLE handle)
{
    std::shared_ptr<CEvent> event;
    const std::unique_lock lock(m_lock);
    const tagSlot* slot = FindSlotLocked(handle);
    if (slot == nullptr)
    {
        return false;
    }
    const auto index = static_cast<std::size_t>(slot - m_slots.data());
    m_freeSlots.push_back(index);
    event = std::move(m_slots[index].event);
    return true;
}

const CHandleTable::tagSlot* CHandleTable::FindSlotLocked(HANDLE handle) const noexcept
{
    const std::size_t index = (handle & kSlotMask) - 1;
    if (index >= m_slots.size())
    {
        return nullptr;
    }
    const tagSlot& slot = m_slots[index];
    return slot.event != nullptr && slot.generation == handle >> kSlotBits ? &slot : nullptr;
}

std::size_t CHandleTable::TakeSlotLocked()
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
