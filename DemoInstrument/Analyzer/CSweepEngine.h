#pragma once

#include "CCritSection.h"
#include "CInstrumentStatus.h"
#include "CPendingOperation.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "CTraceMemory.h"
#include "Event.h"
#include "ThreadAnnotations.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace ZoVelkor::Demo
{

/// Runs sweeps on a thread of its own: one at a time, each as long as its sweep time.
///
/// A sweep waits for its trigger, settles when a frequency range is another than before, and sweeps. It
/// measures all channels into the trace memory when it ends; an aborted one leaves the traces alone. The
/// status tells the phase, and what is to be thought of the last finished sweep. Threads: any operation from
/// any thread.
class CSweepEngine : private CThreadRunObject
{
public:
    using Clock = std::chrono::steady_clock;

    /// @param traces, status  borrowed
    CSweepEngine(CTraceMemory& traces, const CInstrumentStatus& status);
    CSweepEngine(const CSweepEngine&) = delete;
    CSweepEngine& operator=(const CSweepEngine&) = delete;
    /// Aborts the sweep at hand.
    ~CSweepEngine() override;

    /// Gives the settings of the sweeps to come; a sweep at hand keeps its own.
    void SetSettings(const AnalyzerSettings& settings);

    /// Starts a single sweep.
    ///
    /// @param operation  ends with the sweep, after the status has; at once when there is none
    /// @return false while a sweep runs: the initiation is ignored
    bool Initiate(Commands::CPendingOperation operation);

    /// Releases the sweep that waits for a trigger, whatever its source.
    ///
    /// @return false when none waits: the trigger is ignored
    bool Trigger();
    /// Releases the sweep that waits for a trigger of the source Bus, and no other.
    bool TriggerByBus();
    /// Releases the sweep that waits for a trigger of the source Lxi, and no other.
    ///
    /// @param time  when; a time that has passed is now. Of several times the earliest counts.
    bool TriggerByLxi(Clock::time_point time);

    /// True: a sweep follows the other. False: the sweep at hand is the last one.
    void SetContinuous(bool on);
    bool IsContinuous() const;

    /// True from the initiation to the end of a sweep, whatever its phase.
    bool IsSweeping() const;

    /// Ends the sweep at hand without result; when sweeping continuously the next one begins.
    void AbortSweep();

    /// Ends all sweeping; nothing is questionable any more and the next sweep settles first.
    void Reset();

    /// Sweeps that came to their end since the engine was made.
    long SweepCount() const;

private:
    struct Sweep
    {
        AnalyzerSettings settings;
        std::uint64_t number = 0;
    };
    using SweepPtr = std::shared_ptr<const Sweep>;
    using Traces = std::array<TracePtr, kTraceCount>;
    using Ranges = std::array<CFrequencyRange, kChannelCount>;

    void Run() override;
    void Abort() override;

    SweepPtr WaitForSweep();
    bool Settle(const SweepPtr& sweep);
    bool Measure(const SweepPtr& sweep, Traces& traces);
    bool WaitForEndOfPhase(const SweepPtr& sweep);
    void Finish(const SweepPtr& sweep, Traces& traces);
    bool IsCurrent(const SweepPtr& sweep) const;
    std::optional<Clock::time_point> EndOfPhase(const SweepPtr& sweep) const;

    // The steps of a sweep; nothing else changes the phase.
    bool IsWaitingForLocked(TriggerSource source) const ZO_REQUIRES(m_section);
    void BeginSweepLocked() ZO_REQUIRES(m_section);
    void PassTriggerLocked() ZO_REQUIRES(m_section);
    void StartSweepingLocked() ZO_REQUIRES(m_section);
    Commands::CPendingOperation EndSweepLocked() ZO_REQUIRES(m_section);
    void EnterPhaseLocked(SweepPhase phase, Clock::duration duration = {}) ZO_REQUIRES(m_section);
    void WakeThread();

    CTraceMemory& m_traces;
    const CInstrumentStatus& m_status;
    CUniqueEvent m_wakeEvent; // auto-reset: the state below has changed

    // Taken before the locks of the trace memory and of the status registers.
    mutable CCritSection m_section;
    SweepPtr m_sweep ZO_GUARDED_BY(m_section); // null: idle
    SweepPhase m_phase ZO_GUARDED_BY(m_section) = SweepPhase::Idle;
    Clock::time_point m_endOfPhase ZO_GUARDED_BY(m_section);             // when settling or sweeping
    std::optional<Clock::time_point> m_release ZO_GUARDED_BY(m_section); // null: no time is known
    std::optional<Ranges> m_settledRanges ZO_GUARDED_BY(m_section);      // null: no sweep has settled
    Commands::CPendingOperation m_operation ZO_GUARDED_BY(m_section);
    AnalyzerSettings m_nextSettings ZO_GUARDED_BY(m_section);
    bool m_continuous ZO_GUARDED_BY(m_section) = false;
    bool m_quit ZO_GUARDED_BY(m_section) = false;
    std::uint64_t m_started ZO_GUARDED_BY(m_section) = 0;
    long m_finished ZO_GUARDED_BY(m_section) = 0;

    CThread m_thread; // last: it uses all of the above
};

} // namespace ZoVelkor::Demo
