#include "CSweepEngine.h"

#include "CCritSectionLocker.h"
#include "ErrorRaising.h"
#include "SignalSimulation.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Src/CSweepEngine")

DWORD RemainingMs(std::chrono::steady_clock::time_point end)
{
    const auto remaining = end - std::chrono::steady_clock::now();
    const auto roundedUp = std::chrono::ceil<std::chrono::milliseconds>(remaining).count();
    return static_cast<DWORD>(std::max<std::int64_t>(roundedUp, 0));
}

} // namespace

CSweepEngine::CSweepEngine(CTraceMemory& traces)
    : m_traces(traces),
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
        ended = std::move(m_operation);
        m_spSweep = nullptr;
        if (m_bContinuous)
        {
            BeginSweepLocked();
        }
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
        if (Measure(spSweep, traces) && WaitForEnd(spSweep))
        {
            Finish(spSweep, traces);
        }
    }
}

void CSweepEngine::Abort()
{
    {
        const CCritSectionLocker locker(m_section);
        m_bQuit = true;
        m_spSweep = nullptr;
    }
    WakeThread();
}

CSweepEngine::SweepPtr CSweepEngine::WaitForSweep()
{
    for (;;)
    {
        {
            const CCritSectionLocker locker(m_section);
            if (m_spSweep || m_bQuit)
            {
                return m_spSweep;
            }
        }
        WaitForSingleObject(m_wakeEvent.Get(), INFINITE);
    }
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

bool CSweepEngine::WaitForEnd(const SweepPtr& spSweep)
{
    while (IsCurrent(spSweep))
    {
        const DWORD remainingMs = RemainingMs(spSweep->end);
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
    ended = std::move(m_operation);
    m_spSweep = nullptr;
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

void CSweepEngine::BeginSweepLocked()
{
    const auto sweepTime = std::chrono::duration<double>(m_nextSettings.SweepTimeS());
    m_spSweep = std::make_shared<const tagSweep>(
        tagSweep{m_nextSettings, Clock::now() + std::chrono::ceil<Clock::duration>(sweepTime), ++m_iStarted});
}

void CSweepEngine::WakeThread()
{
    SetEvent(m_wakeEvent.Get());
}

} // namespace ZoVelkor::Demo
