#pragma once

#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "ThreadAnnotations.h"

#include <atomic>
#include <memory>

namespace ZoVelkor
{
/// Holds the one replaceable sink of a kind; null stands for the built-in one.
///
/// A sink is called without the lock. Each occupant counts the calls inside it, so that Replace can wait for
/// the former one alone, however busy the new one is.
template <class TSink>
class CSinkSlot
{
public:
    TSink* Replace(TSink* sink)
    {
        auto occupant = sink == nullptr ? nullptr : std::make_shared<Occupant>(sink);
        {
            const CCritSectionLocker locker(m_section);
            m_occupant.swap(occupant);
        }
        if (occupant == nullptr)
        {
            return nullptr;
        }
        WaitUntilUnused(occupant->users);
        return occupant->sink;
    }

    template <class TUse>
    void Use(TUse&& use) noexcept
    {
        const std::shared_ptr<Occupant> occupant = Enter();
        if (occupant == nullptr)
        {
            use(static_cast<TSink*>(nullptr));
            return;
        }
        use(occupant->sink);
        if (occupant->users.fetch_sub(1, std::memory_order_release) == 1)
        {
            occupant->users.notify_all();
        }
    }

private:
    struct Occupant
    {
        explicit Occupant(TSink* newSink) : sink(newSink) {}
        TSink* const sink;
        std::atomic<unsigned> users{0};
    };

    std::shared_ptr<Occupant> Enter()
    {
        const CCritSectionLocker locker(m_section);
        if (m_occupant != nullptr)
        {
            m_occupant->users.fetch_add(1, std::memory_order_relaxed);
        }
        return m_occupant;
    }

    static void WaitUntilUnused(const std::atomic<unsigned>& users)
    {
        while (const unsigned count = users.load(std::memory_order_acquire))
        {
            users.wait(count, std::memory_order_acquire);
        }
    }

    CCritSection m_section;
    std::shared_ptr<Occupant> m_occupant ZO_GUARDED_BY(m_section);
};

/// A slot that is there from its first use to the last instruction of the process: errors are still
/// reported while static objects are destroyed.
template <class TSink>
union CImmortalSinkSlot
{
    CImmortalSinkSlot() : slot() {}
    ~CImmortalSinkSlot() {} // NOLINT(modernize-use-equals-default): a defaulted one would be deleted
    CImmortalSinkSlot(const CImmortalSinkSlot&) = delete;
    CImmortalSinkSlot& operator=(const CImmortalSinkSlot&) = delete;

    CSinkSlot<TSink> slot;
};
} // namespace ZoVelkor
