#pragma once

#include "CCritSection.h"
#include "CPendingOperation.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "CTraceMemory.h"
#include "Event.h"
#include "ThreadAnnotations.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace ZoVelkor::Demo
{

/// Runs sweeps on a thread of its own: one at a time, each as long as its sweep time.
///
/// A sweep measures all channels into the trace memory when it ends; an aborted one leaves the traces alone.
/// Threads: any operation from any thread.
class CSweepEngine : private CThreadRunObject
{
public:
    /// @param traces  borrowed
    explicit CSweepEngine(CTraceMemory& traces);
    CSweepEngine(const CSweepEngine&) = delete;
    CSweepEngine& operator=(const CSweepEngine&) = delete;
    /// Aborts the sweep at hand.
    ~CSweepEngine() override;

    /// Gives the settings of the sweeps to come; a sweep at hand keeps its own.
    void SetSettings(const tagAnalyzerSettings& settings);

    /// Starts a single sweep.
    ///
    /// @param operation  ends with the sweep, or at once when there is none
    /// @return false while a sweep runs: the initiation is ignored
    bool Initiate(CPendingOperation operation);

    /// True: a sweep follows the other. False: the sweep at hand is the last one.
    void SetContinuous(bool on);
    bool IsContinuous() const;

    bool IsSweeping() const;

    /// Ends the sweep at hand without result; when sweeping continuously the next one begins.
    void AbortSweep();

    /// Sweeps that came to their end since the engine was made.
    long SweepCount() const;

private:
    using Clock = std::chrono::steady_clock;

    struct tagSweep
    {
        tagAnalyzerSettings settings;
        Clock::time_point end;
        std::uint64_t number = 0;
    };
    using SweepPtr = std::shared_ptr<const tagSweep>;
    using Traces = std::array<TracePtr, kTraceCount>;

    void Run() override;
    void Abort() override;

    SweepPtr WaitForSweep();
    bool Measure(const SweepPtr& spSweep, Traces& traces);
    bool WaitForEnd(const SweepPtr& spSweep);
    void Finish(const SweepPtr& spSweep, Traces& traces);
    bool IsCurrent(const SweepPtr& spSweep) const;
    void BeginSweepLocked() ZO_REQUIRES(m_section);
    void WakeThread();

    CTraceMemory& m_traces;
    CUniqueEvent m_wakeEvent; // auto-reset: the state below has changed

    // Taken before the lock of the trace memory.
    mutable CCritSection m_section;
    SweepPtr m_spSweep ZO_GUARDED_BY(m_section); // null: idle
    CPendingOperation m_operation ZO_GUARDED_BY(m_section);
    tagAnalyzerSettings m_nextSettings ZO_GUARDED_BY(m_section);
    bool m_bContinuous ZO_GUARDED_BY(m_section) = false;
    bool m_bQuit ZO_GUARDED_BY(m_section) = false;
    std::uint64_t m_iStarted ZO_GUARDED_BY(m_section) = 0;
    long m_iFinished ZO_GUARDED_BY(m_section) = 0;

    CThread m_thread; // last: it uses all of the above
};

} // namespace ZoVelkor::Demo
