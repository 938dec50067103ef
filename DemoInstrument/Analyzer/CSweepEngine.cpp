#include "CSweepEngine.h"

#include "CCritSectionLocker.h"
#include "Deadline.h"
#include "ErrorRaising.h"
#include "SignalSimulation.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Analyzer/CSweepEngine");

/// The simulated oscillator needs so long to settle on other frequencies.
constexpr std::chrono::milliseconds kSettlingTime{5};

/// The bits of the channels that a check is true for.
template <class TCheck>
RegisterWord ChannelsWith(TCheck check)
{
    RegisterWord channels = 0;
    for (long channel = 1; channel <= kChannelCount; ++channel)
    {
        channels |= check(channel) ? ChannelBit(channel) : 0;
    }
    return channels;
}

} // namespace

CSweepEngine::CSweepEngine(CTraceMemory& traces, const CInstrumentStatus& status)
    : m_traces(traces),
      m_status(status),
      m_wakeEvent(CreateEvent(false, false)),
      m_thread("DemoSweep")
{
    if (!m_wakeEvent || FAILED(m_thread.Start(this)))
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "No sweep thread", E_FAIL));
    }
}

CSweepEngine::~CSweepEngine()
{
    m_thread.Abort();
    m_thread.Join();
}

void CSweepEngine::SetSettings(const AnalyzerSettings& settings)
{
    const CCritSectionLocker locker(m_section);
    m_nextSettings = settings;
}

bool CSweepEngine::Initiate(Commands::CPendingOperation operation)
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_sweep)
        {
            return false;
        }
        m_operation = std::move(operation);
        BeginSweepLocked();
    }
    WakeThread();
    return true;
}

bool CSweepEngine::Trigger()
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_phase != SweepPhase::WaitingForTrigger)
        {
            return false;
        }
        PassTriggerLocked();
    }
    WakeThread();
    return true;
}

bool CSweepEngine::TriggerByBus()
{
    const CCritSectionLocker locker(m_section);
    return IsWaitingForLocked(TriggerSource::Bus) && Trigger();
}

bool CSweepEngine::TriggerByLxi(Clock::time_point time)
{
    const CCritSectionLocker locker(m_section);
    if (!IsWaitingForLocked(TriggerSource::Lxi))
    {
        return false;
    }
    if (time <= Clock::now())
    {
        return Trigger();
    }
    m_release = std::min(m_release.value_or(time), time);
    WakeThread();
    return true;
}

void CSweepEngine::SetContinuous(bool on)
{
    {
        const CCritSectionLocker locker(m_section);
        m_continuous = on;
        if (on && !m_sweep)
        {
            BeginSweepLocked();
        }
    }
    WakeThread();
}

bool CSweepEngine::IsContinuous() const
{
    const CCritSectionLocker locker(m_section);
    return m_continuous;
}

bool CSweepEngine::IsSweeping() const
{
    const CCritSectionLocker locker(m_section);
    return m_sweep != nullptr;
}

void CSweepEngine::AbortSweep()
{
    Commands::CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        ended = EndSweepLocked();
        if (m_continuous)
        {
            BeginSweepLocked();
        }
    }
    WakeThread();
}

void CSweepEngine::Reset()
{
    Commands::CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        m_continuous = false;
        m_settledRanges.reset();
        m_status.SetOverloaded(0);
        m_status.SetUncalibrated(0);
        ended = EndSweepLocked();
    }
    WakeThread();
}

long CSweepEngine::SweepCount() const
{
    const CCritSectionLocker locker(m_section);
    return m_finished;
}

void CSweepEngine::Run()
{
    while (const SweepPtr sweep = WaitForSweep())
    {
        Traces traces;
        if (Settle(sweep) && Measure(sweep, traces) && WaitForEndOfPhase(sweep))
        {
            Finish(sweep, traces);
        }
    }
}

void CSweepEngine::Abort()
{
    Commands::CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        m_quit = true;
        ended = EndSweepLocked();
    }
    WakeThread();
}

CSweepEngine::SweepPtr CSweepEngine::WaitForSweep()
{
    for (;;)
    {
        DWORD waitMs = INFINITE;
        {
            const CCritSectionLocker locker(m_section);
            if (m_quit)
            {
                return nullptr;
            }
            waitMs = m_release ? static_cast<DWORD>(MillisecondsLeft(*m_release)) : INFINITE;
            if (waitMs == 0)
            {
                PassTriggerLocked();
            }
            if (m_sweep && m_phase != SweepPhase::WaitingForTrigger)
            {
                return m_sweep;
            }
        }
        WaitForSingleObject(m_wakeEvent.Get(), waitMs);
    }
}

bool CSweepEngine::Settle(const SweepPtr& sweep)
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_sweep == sweep && m_phase == SweepPhase::Sweeping)
        {
            return true;
        }
    }
    if (!WaitForEndOfPhase(sweep))
    {
        return false;
    }
    const CCritSectionLocker locker(m_section);
    if (m_sweep != sweep)
    {
        return false;
    }
    StartSweepingLocked();
    return true;
}

bool CSweepEngine::Measure(const SweepPtr& sweep, Traces& traces)
{
    const AnalyzerSettings& settings = sweep->settings;
    for (long channel = 1; channel <= kChannelCount && IsCurrent(sweep); ++channel)
    {
        // Every sweep and channel has noise of its own, and the same whenever the instrument is started.
        const std::uint64_t seed = sweep->number * kChannelCount + static_cast<std::uint64_t>(channel);
        const ChannelSettings& source = settings.Channel(channel);
        traces[static_cast<std::size_t>(channel - 1)] = std::make_shared<const Trace>(
            Trace{source.frequency, SimulateTrace(source, settings.sweepPoints, settings.detector, seed)});
    }
    return IsCurrent(sweep);
}

bool CSweepEngine::WaitForEndOfPhase(const SweepPtr& sweep)
{
    while (const auto end = EndOfPhase(sweep))
    {
        const auto remainingMs = static_cast<DWORD>(MillisecondsLeft(*end));
        if (remainingMs == 0)
        {
            return true;
        }
        WaitForSingleObject(m_wakeEvent.Get(), remainingMs);
    }
    return false;
}

void CSweepEngine::Finish(const SweepPtr& sweep, Traces& traces)
{
    const AnalyzerSettings& settings = sweep->settings;
    const RegisterWord overloaded = ChannelsWith([&](long channel) {
        const Trace& trace = *traces[static_cast<std::size_t>(channel - 1)];
        return trace.levelsDbm[trace.PeakIndex()] > settings.Channel(channel).referenceLevelDbm;
    });
    const RegisterWord uncalibrated =
        ChannelsWith([&](long channel) { return settings.IsUncalibrated(channel); });

    Commands::CPendingOperation ended; // ends the operation after the lock
    const CCritSectionLocker locker(m_section);
    if (m_sweep != sweep)
    {
        return;
    }
    for (long trace = 1; trace <= kTraceCount; ++trace)
    {
        m_traces.Put(trace, std::move(traces[static_cast<std::size_t>(trace - 1)]));
    }
    ++m_finished;
    m_status.SetOverloaded(overloaded);
    m_status.SetUncalibrated(uncalibrated);
    ended = EndSweepLocked();
    if (m_continuous)
    {
        BeginSweepLocked();
    }
}

bool CSweepEngine::IsCurrent(const SweepPtr& sweep) const
{
    const CCritSectionLocker locker(m_section);
    return m_sweep == sweep;
}

std::optional<CSweepEngine::Clock::time_point> CSweepEngine::EndOfPhase(const SweepPtr& sweep) const
{
    const CCritSectionLocker locker(m_section);
    return m_sweep == sweep ? std::optional(m_endOfPhase) : std::nullopt;
}

bool CSweepEngine::IsWaitingForLocked(TriggerSource source) const
{
    return m_phase == SweepPhase::WaitingForTrigger && m_sweep->settings.triggerSource == source;
}

void CSweepEngine::BeginSweepLocked()
{
    m_sweep = std::make_shared<const Sweep>(Sweep{m_nextSettings, ++m_started});
    if (m_nextSettings.triggerSource == TriggerSource::Immediate)
    {
        PassTriggerLocked();
    }
    else
    {
        EnterPhaseLocked(SweepPhase::WaitingForTrigger);
    }
}

void CSweepEngine::PassTriggerLocked()
{
    if (m_settledRanges == m_sweep->settings.Ranges())
    {
        StartSweepingLocked();
    }
    else
    {
        EnterPhaseLocked(SweepPhase::Settling, kSettlingTime);
    }
}

void CSweepEngine::StartSweepingLocked()
{
    const AnalyzerSettings& settings = m_sweep->settings;
    m_settledRanges = settings.Ranges();
    const auto sweepTime = std::chrono::duration<double>(settings.SweepTimeS());
    EnterPhaseLocked(SweepPhase::Sweeping, std::chrono::ceil<Clock::duration>(sweepTime));
}

Commands::CPendingOperation CSweepEngine::EndSweepLocked()
{
    m_sweep = nullptr;
    EnterPhaseLocked(SweepPhase::Idle);
    return std::move(m_operation);
}

void CSweepEngine::EnterPhaseLocked(SweepPhase phase, Clock::duration duration)
{
    m_phase = phase;
    m_release.reset();
    m_endOfPhase = Clock::now() + duration;
    m_status.SetPhase(phase);
}

void CSweepEngine::WakeThread()
{
    SetEvent(m_wakeEvent.Get());
}

} // namespace ZoVelkor::Demo
