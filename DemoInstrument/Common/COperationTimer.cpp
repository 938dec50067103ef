#include "COperationTimer.h"

#include "CCritSectionLocker.h"
#include "Deadline.h"
#include "ErrorRaising.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{
ZO_SOURCE_UNIT("DemoInstrument/Common/COperationTimer");
}

COperationTimer::COperationTimer() : m_wakeEvent(CreateEvent(false, false)), m_thread("DemoTimer")
{
    if (!m_wakeEvent || FAILED(m_thread.Start(this)))
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "No timer thread", E_FAIL));
    }
}

COperationTimer::~COperationTimer()
{
    m_thread.Abort();
    m_thread.Join();
}

bool COperationTimer::Add(Commands::CPendingOperation operation, std::chrono::duration<double> time)
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_operations.size() == kMaxOperations)
        {
            return false;
        }
        m_operations.push_back(
            {std::move(operation), Clock::now() + std::chrono::ceil<Clock::duration>(time)});
    }
    SetEvent(m_wakeEvent.Get());
    return true;
}

bool COperationTimer::IsPending() const
{
    const CCritSectionLocker locker(m_section);
    return !m_operations.empty();
}

void COperationTimer::EndAll()
{
    Operations ended; // end after the lock
    const CCritSectionLocker locker(m_section);
    ended.swap(m_operations);
}

void COperationTimer::Run()
{
    for (;;)
    {
        Operations ended;
        DWORD untilNextMs = INFINITE;
        if (!TakeEnded(ended, untilNextMs))
        {
            return;
        }
        ended.clear();
        WaitForSingleObject(m_wakeEvent.Get(), untilNextMs);
    }
}

void COperationTimer::Abort()
{
    {
        const CCritSectionLocker locker(m_section);
        m_quit = true;
    }
    SetEvent(m_wakeEvent.Get());
}

bool COperationTimer::TakeEnded(Operations& ended, DWORD& untilNextMs)
{
    const CCritSectionLocker locker(m_section);
    const auto now = Clock::now();
    const auto pending = std::partition(
        m_operations.begin(), m_operations.end(), [now](const auto& timed) { return timed.end <= now; });
    std::move(m_operations.begin(), pending, std::back_inserter(ended));
    m_operations.erase(m_operations.begin(), pending);
    for (const TimedOperation& timed : m_operations)
    {
        untilNextMs = std::min(untilNextMs, static_cast<DWORD>(MillisecondsLeft(timed.end)));
    }
    return !m_quit;
}

} // namespace ZoVelkor::Demo
