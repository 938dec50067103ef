#include "CSweepEngine.h"

#include "CCritSectionLocker.h"
#include "Common/RemainingTime.h"
#include "ErrorRaising.h"
#include "SignalSimulation.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Analyzer/CSweepEngine")

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

void CSweepEngine::SetSettings(const tagAnalyzerSettings& settings)
{
    const CCritSectionLocker locker(m_section);
    m_nextSettings = settings;
}

bool CSweepEngine::Initiate(CPendingOperation operation)
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_spSweep)
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
        if (m_phase != tagSweepPhase::WaitingForTrigger)
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
    return IsWaitingForLocked(tagTriggerSource::Bus) && Trigger();
}

bool CSweepEngine::TriggerByLxi(Clock::time_point time)
{
    const CCritSectionLocker locker(m_section);
    if (!IsWaitingForLocked(tagTriggerSource::Lxi))
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
        m_bContinuous = on;
        if (on && !m_spSweep)
        {
            BeginSweepLocked();
        }
    }
    WakeThread();
}

bool CSweepEngine::IsContinuous() const
{
    const CCritSectionLocker locker(m_section);
    return m_bContinuous;
}

bool CSweepEngine::IsSweeping() const
{
    const CCritSectionLocker locker(m_section);
    return m_spSweep != nullptr;
}

void CSweepEngine::AbortSweep()
{
    CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        ended = EndSweepLocked();
        if (m_bContinuous)
        {
            BeginSweepLocked();
        }
    }
    WakeThread();
}

void CSweepEngine::Reset()
{
    CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        m_bContinuous = false;
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
    return m_iFinished;
}

void CSweepEngine::Run()
{
    while (const SweepPtr spSweep = WaitForSweep())
    {
        Traces traces;
        if (Settle(spSweep) && Measure(spSweep, traces) && WaitForEndOfPhase(spSweep))
        {
            Finish(spSweep, traces);
        }
    }
}

void CSweepEngine::Abort()
{
    CPendingOperation ended; // ends the operation after the lock
    {
        const CCritSectionLocker locker(m_section);
        m_bQuit = true;
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
            if (m_bQuit)
            {
                return nullptr;
            }
            waitMs = m_release ? RemainingMs(*m_release) : INFINITE;
            if (waitMs == 0)
            {
                PassTriggerLocked();
            }
            if (m_spSweep && m_phase != tagSweepPhase::WaitingForTrigger)
            {
                return m_spSweep;
            }
        }
        WaitForSingleObject(m_wakeEvent.Get(), waitMs);
    }
}

bool CSweepEngine::Settle(const SweepPtr& spSweep)
{
    {
        const CCritSectionLocker locker(m_section);
        if (m_spSweep == spSweep && m_phase == tagSweepPhase::Sweeping)
        {
            return true;
        }
    }
    if (!WaitForEndOfPhase(spSweep))
    {
        return false;
    }
    const CCritSectionLocker locker(m_section);
    if (m_spSweep != spSweep)
    {
        return false;
    }
    StartSweepingLocked();
    return true;
}

bool CSweepEngine::Measure(const SweepPtr& spSweep, Traces& traces)
{
    const tagAnalyzerSettings& settings = spSweep->settings;
    for (long channel = 1; channel <= kChannelCount && IsCurrent(spSweep); ++channel)
    {
        // Every sweep and channel has noise of its own, and the same whenever the instrument is started.
        const std::uint64_t seed = spSweep->number * kChannelCount + static_cast<std::uint64_t>(channel);
        const tagChannelSettings& source = settings.Channel(channel);
        traces[static_cast<std::size_t>(channel - 1)] = std::make_shared<const tagTrace>(
            tagTrace{source.frequency, SimulateTrace(source, settings.sweepPoints, settings.detector, seed)});
    }
    return IsCurrent(spSweep);
}

bool CSweepEngine::WaitForEndOfPhase(const SweepPtr& spSweep)
{
    while (const auto end = EndOfPhase(spSweep))
    {
        const DWORD remainingMs = RemainingMs(*end);
        if (remainingMs == 0)
        {
            return true;
        }
        WaitForSingleObject(m_wakeEvent.Get(), remainingMs);
    }
    return false;
}

void CSweepEngine::Finish(const SweepPtr& spSweep, Traces& traces)
{
    const tagAnalyzerSettings& settings = spSweep->settings;
    const RegisterWord overloaded = ChannelsWith([&](long channel) {
        const tagTrace& trace = *traces[static_cast<std::size_t>(channel - 1)];
        return trace.levelsDbm[trace.PeakIndex()] > settings.Channel(channel).referenceLevelDbm;
    });
    const RegisterWord uncalibrated =
        ChannelsWith([&](long channel) { return settings.IsUncalibrated(channel); });

    CPendingOperation ended; // ends the operation after the lock
    const CCritSectionLocker locker(m_section);
    if (m_spSweep != spSweep)
    {
        return;
    }
    for (long trace = 1; trace <= kTraceCount; ++trace)
    {
        m_traces.Put(trace, std::move(traces[static_cast<std::size_t>(trace - 1)]));
    }
    ++m_iFinished;
    m_status.SetOverloaded(overloaded);
    m_status.SetUncalibrated(uncalibrated);
    ended = EndSweepLocked();
    if (m_bContinuous)
    {
        BeginSweepLocked();
    }
}

bool CSweepEngine::IsCurrent(const SweepPtr& spSweep) const
{
    const CCritSectionLocker locker(m_section);
    return m_spSweep == spSweep;
}

std::optional<CSweepEngine::Clock::time_point> CSweepEngine::EndOfPhase(const SweepPtr& spSweep) const
{
    const CCritSectionLocker locker(m_section);
    return m_spSweep == spSweep ? std::optional(m_endOfPhase) : std::nullopt;
}

bool CSweepEngine::IsWaitingForLocked(tagTriggerSource source) const
{
    return m_phase == tagSweepPhase::WaitingForTrigger && m_spSweep->settings.triggerSource == source;
}

void CSweepEngine::BeginSweepLocked()
{
    m_spSweep = std::make_shared<const tagSweep>(tagSweep{m_nextSettings, ++m_iStarted});
    if (m_nextSettings.triggerSource == tagTriggerSource::Immediate)
    {
        PassTriggerLocked();
    }
    else
    {
        EnterPhaseLocked(tagSweepPhase::WaitingForTrigger);
    }
}

void CSweepEngine::PassTriggerLocked()
{
    if (m_settledRanges == m_spSweep->settings.Ranges())
    {
        StartSweepingLocked();
    }
    else
    {
        EnterPhaseLocked(tagSweepPhase::Settling, kSettlingTime);
    }
}

void CSweepEngine::StartSweepingLocked()
{
    const tagAnalyzerSettings& settings = m_spSweep->settings;
    m_settledRanges = settings.Ranges();
    const auto sweepTime = std::chrono::duration<double>(settings.SweepTimeS());
    EnterPhaseLocked(tagSweepPhase::Sweeping, std::chrono::ceil<Clock::duration>(sweepTime));
}

CPendingOperation CSweepEngine::EndSweepLocked()
{
    m_spSweep = nullptr;
    EnterPhaseLocked(tagSweepPhase::Idle);
    return std::move(m_operation);
}

void CSweepEngine::EnterPhaseLocked(tagSweepPhase phase, Clock::duration duration)
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
