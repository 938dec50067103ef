#include "CEvent.h"
#include "CHandleTable.h"
#include "CWriteLocker.h"
#include "Deadline.h"
#include "Event.h"
#include "LastError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <poll.h>
#include <span>

namespace
{
/// Time that is left; nothing when there is no end.
std::optional<timespec> Remaining(const Deadline& deadline) noexcept
{
    if (!deadline)
    {
        return std::nullopt;
    }
    const auto left = TimeLeft(*deadline);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    return timespec{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
}

/// The events of one wait, kept alive until its end, with one poll record each.
class CEventWait
{
public:
    /// @return ERROR_SUCCESS or the error
    DWORD Open(std::span<const HANDLE> handles)
    {
        for (const HANDLE handle : handles)
        {
            m_events[m_count] = CEventTable::Instance().Find(handle);
            if (m_events[m_count] == nullptr)
            {
                return ERROR_INVALID_HANDLE;
            }
            m_polls[m_count].fd = m_events[m_count]->Descriptor();
            m_polls[m_count].events = POLLIN;
            ++m_count;
        }
        return ERROR_SUCCESS;
    }

    [[nodiscard]] bool HasDuplicates() const noexcept
    {
        for (std::size_t i = 0; i < m_count; ++i)
        {
            if (std::find(m_events.data(), &m_events[i], m_events[i]) != &m_events[i])
            {
                return true;
            }
        }
        return false;
    }

    DWORD WaitAny(const Deadline& deadline) noexcept
    {
        for (;;)
        {
            const DWORD polled = Poll(deadline);
            if (polled != WAIT_OBJECT_0)
            {
                return polled;
            }
            // Another waiter may have been faster; then the wait goes on, to the same end of its time.
            for (std::size_t i = 0; i < m_count; ++i)
            {
                if (m_polls[i].revents != 0 && m_events[i]->TryTake())
                {
                    return WAIT_OBJECT_0 + static_cast<DWORD>(i);
                }
            }
        }
    }

    DWORD WaitAll(const Deadline& deadline) noexcept
    {
        for (;;)
        {
            if (const auto result = TryTakeAll())
            {
                return *result;
            }
            IgnoreSetEvents();
            const DWORD polled = Poll(deadline);
            ObserveAll();
            if (polled != WAIT_OBJECT_0)
            {
                return polled;
            }
        }
    }

private:
    /// @return WAIT_OBJECT_0 when something is set; WAIT_TIMEOUT; WAIT_FAILED with the last error set
    DWORD Poll(const Deadline& deadline) noexcept
    {
        for (;;)
        {
            const auto remaining = Remaining(deadline);
            const int ready = ::ppoll(m_polls.data(), m_count, remaining ? &*remaining : nullptr, nullptr);
            if (ready >= 0)
            {
                return ready > 0 ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
            }
            // Of poll's errors only the lack of memory is left: m_events keeps the descriptors open.
            if (errno != EINTR)
            {
                SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                return WAIT_FAILED;
            }
        }
    }

    /// Looks at all events and takes them if all are set.
    ///
    /// @return nothing while one is not set
    std::optional<DWORD> TryTakeAll() noexcept
    {
        // Nobody takes or resets while this is held, so what is found set can be taken without fail. It may
        // be set meanwhile; the next round sees that.
        const ZoVelkor::CWriteLocker lock(CEvent::TakingLock());
        const DWORD polled = Poll(DeadlineAfter(0));
        if (polled == WAIT_FAILED)
        {
            return polled;
        }
        const auto observed = std::span(m_polls).first(m_count);
        if (!std::ranges::all_of(observed, [](const pollfd& poll) { return poll.revents != 0; }))
        {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < m_count; ++i)
        {
            static_cast<void>(m_events[i]->TryTakeLocked());
        }
        return WAIT_OBJECT_0;
    }

    /// A wait for all sleeps on what is missing; what is set already would wake it at once, again and again.
    void IgnoreSetEvents() noexcept
    {
        for (std::size_t i = 0; i < m_count; ++i)
        {
            if (m_polls[i].revents != 0)
            {
                m_polls[i].fd = -1;
            }
        }
    }

    void ObserveAll() noexcept
    {
        for (std::size_t i = 0; i < m_count; ++i)
        {
            m_polls[i].fd = m_events[i]->Descriptor();
        }
    }

    std::array<std::shared_ptr<CEvent>, MAXIMUM_WAIT_OBJECTS> m_events;
    std::array<pollfd, MAXIMUM_WAIT_OBJECTS> m_polls{};
    std::size_t m_count = 0;
};

DWORD FailWait(DWORD error) noexcept
{
    SetLastError(error);
    return WAIT_FAILED;
}
} // namespace

DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept
{
    return WaitForMultipleObjects(1, &event, FALSE, timeoutMs);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* events, BOOL waitAll, DWORD timeoutMs) noexcept
{
    const Deadline deadline = DeadlineAfter(timeoutMs);
    if (events == nullptr || count == 0 || count > MAXIMUM_WAIT_OBJECTS)
    {
        return FailWait(ERROR_INVALID_PARAMETER);
    }
    CEventWait wait;
    if (const DWORD error = wait.Open({events, count}); error != ERROR_SUCCESS)
    {
        return FailWait(error);
    }
    if (waitAll == FALSE)
    {
        return wait.WaitAny(deadline);
    }
    return wait.HasDuplicates() ? FailWait(ERROR_INVALID_PARAMETER) : wait.WaitAll(deadline);
}
