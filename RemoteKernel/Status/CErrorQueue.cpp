#include "CErrorQueue.h"

#include "CMutexLocker.h"
#include "CScpiErrorMap.h"
#include "CScpiSinkFramework.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

constexpr short kLastExecutionError = -299;

void AppendText(ErrorEntry& entry, std::string_view text) noexcept
{
    const std::size_t count = std::min(text.size(), kMaxErrorText - entry.length);
    std::transform(text.begin(),
                   text.begin() + static_cast<std::ptrdiff_t>(count),
                   entry.szText + entry.length,
                   [](char c) { return c >= ' ' && c <= '~' ? c : '?'; });
    entry.length = static_cast<std::uint16_t>(entry.length + count);
}

void FillEntry(ErrorEntry& entry, short code, std::string_view detail) noexcept
{
    entry.code = code;
    entry.length = 0;
    AppendText(entry, GetScpiErrorText(code));
    if (!detail.empty())
    {
        AppendText(entry, ";");
        AppendText(entry, detail);
    }
}

} // namespace

CErrorQueue::CErrorQueue(std::size_t depth, std::shared_ptr<IErrorQueueObserver> observer)
    : m_depth(std::max<std::size_t>(depth, 2)),
      m_observer(std::move(observer)),
      m_entries(std::make_unique_for_overwrite<ErrorEntry[]>(m_depth))
{}

void CErrorQueue::Push(short code, std::string_view detail) noexcept
{
    // Errors of other threads, as of the channel or of an overlapped command, are not this command's.
    if (m_commandThread.load(std::memory_order_relaxed) == std::this_thread::get_id())
    {
        m_commandRaisedError = true;
        // -231 belongs to a command that was done, if not exactly.
        m_commandFailed |= code < 0 && code >= kLastExecutionError && code != kScpiDataQuestionable;
    }
    const CMutexLocker lock(m_mutex);
    if (m_count == m_depth)
    {
        ErrorEntry& last = m_entries[(m_first + m_count - 1) % m_depth];
        if (last.code != kScpiQueueOverflow)
        {
            FillEntry(last, kScpiQueueOverflow, {});
            NotifyLocked(kScpiQueueOverflow, m_count);
        }
    }
    else
    {
        FillEntry(m_entries[(m_first + m_count) % m_depth], code, detail);
        ++m_count;
    }
    // For an error that found no room as well: its event happened, whether or not its text is kept.
    NotifyLocked(code, m_count - 1);
}

void CErrorQueue::NotifyLocked(short code, std::size_t countBefore) const noexcept
{
    // With the lock held: the summary bit has to follow the states of the queue in their order.
    if (m_observer != nullptr)
    {
        m_observer->ErrorQueued(code);
        if (countBefore == 0)
        {
            m_observer->ErrorsWaiting(true);
        }
    }
}

bool CErrorQueue::Pop(ErrorEntry& entry) noexcept
{
    const CMutexLocker lock(m_mutex);
    if (m_count == 0)
    {
        FillEntry(entry, kScpiNoError, {});
        return false;
    }
    entry = m_entries[m_first];
    m_first = (m_first + 1) % m_depth;
    if (--m_count == 0 && m_observer != nullptr)
    {
        m_observer->ErrorsWaiting(false);
    }
    return true;
}

void CErrorQueue::Clear() noexcept
{
    const CMutexLocker lock(m_mutex);
    m_count = 0;
    if (m_observer != nullptr)
    {
        m_observer->ErrorsWaiting(false);
    }
}

std::size_t CErrorQueue::Count() const noexcept
{
    const CMutexLocker lock(m_mutex);
    return m_count;
}

void CErrorQueue::BeginCommand() noexcept
{
    m_commandThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
    m_commandRaisedError = false;
    m_commandFailed = false;
}

void AppendErrorResponse(std::string& response, const ErrorEntry& entry)
{
    response += std::to_string(entry.code);
    response += ',';
    response += CScpiSinkFramework::GetScpiStringFormat(entry.Text());
}

} // namespace ZoVelkor::RemoteKernel
