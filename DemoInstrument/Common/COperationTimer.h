#pragma once

#include "CCritSection.h"
#include "CPendingOperation.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "Event.h"
#include "ThreadAnnotations.h"

#include <chrono>
#include <cstddef>
#include <vector>

namespace ZoVelkor::Demo
{

/// Ends overlapped commands when their time is over, on a thread of its own.
///
/// Threads: any operation from any thread.
class COperationTimer : private CThreadRunObject
{
public:
    /// Operations that may be pending at a time.
    static constexpr std::size_t kMaxOperations = 64;

    COperationTimer();
    COperationTimer(const COperationTimer&) = delete;
    COperationTimer& operator=(const COperationTimer&) = delete;
    /// Ends all.
    ~COperationTimer() override;

    /// Keeps an operation pending for a time.
    ///
    /// @return false, and the operation ends at once, when kMaxOperations are pending
    bool Add(Commands::CPendingOperation operation, std::chrono::duration<double> time);

    bool IsPending() const;

    /// Ends all that are pending now.
    void EndAll();

private:
    using Clock = std::chrono::steady_clock;

    struct TimedOperation
    {
        Commands::CPendingOperation operation;
        Clock::time_point end;
    };
    using Operations = std::vector<TimedOperation>;

    void Run() override;
    void Abort() override;

    /// Takes the operations that are over; false when the thread is to end.
    bool TakeEnded(Operations& ended, DWORD& untilNextMs);

    CUniqueEvent m_wakeEvent; // auto-reset: the state below has changed

    mutable CCritSection m_section;
    Operations m_operations ZO_GUARDED_BY(m_section);
    bool m_quit ZO_GUARDED_BY(m_section) = false;

    CThread m_thread; // last: it uses all of the above
};

} // namespace ZoVelkor::Demo
