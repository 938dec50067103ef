#include "CInstrumentClock.h"

#include "CObjectDataReference.h"
#include "CShellError.h"
#include "CTimeDateChecks.h"
#include "ErrorRaising.h"
#include "ModuleServices.h"
#include "SystemTime.h"

#include <atomic>
#include <charconv>
#include <chrono>
#include <memory>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Instrument/CInstrumentClock");

constexpr const wchar_t* kOffsetName = L"OffsetMs";
constexpr LONGLONG kMsPerSecond = 1000;

// What the calendar of the time service spans: 1601-01-01 to 30827-12-31.
constexpr LONGLONG kFirstMs = -11'644'473'600'000;
constexpr LONGLONG kLastMs = 910'670'515'199'999;

/// The platform's clock functions carry no object, so there is one clock in a process.
std::atomic<LONGLONG> offsetMs{0};

LONGLONG MachineMs() noexcept
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now())
        .time_since_epoch()
        .count();
}

LONGLONG InstrumentMs() noexcept
{
    return MachineMs() + offsetMs.load();
}

int SetInstrumentClock(LONGLONG seconds, int milliseconds) noexcept
{
    offsetMs.store(seconds * kMsPerSecond + milliseconds - MachineMs());
    return 0;
}

} // namespace

CInstrumentClock::CInstrumentClock()
{
    SetSystemClockPrimitive(&SetInstrumentClock);
    SetSystemClockSource(&InstrumentMs);
    if (const HRESULT result = GetModuleService(kTimeServices, std::addressof(m_service)); FAILED(result))
    {
        ThrowError(ZO_ERROR(nullptr, "m_service != NULL", "The time service is missing", result));
    }
}

void CInstrumentClock::Load(const CInstrumentRegistry& registry)
{
    std::string text;
    LONGLONG offset = 0;
    if (registry.Read(kClockKey, kOffsetName, text) == S_OK)
    {
        const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), offset);
        const LONGLONG now = MachineMs();
        const bool fits = fault == std::errc() && end == text.data() + text.size() &&
                          offset >= kFirstMs - now && offset <= kLastMs - now;
        offset = fits ? offset : 0;
    }
    offsetMs.store(offset);
}

HRESULT CInstrumentClock::Keep(const CInstrumentRegistry& registry)
{
    return registry.Write(kClockKey, kOffsetName, std::to_string(offsetMs.load()));
}

void CInstrumentClock::Get(tagTimeStruct& time, tagDateStruct& date) const
{
    m_service->GetTimeAndDate(&time, &date);
}

std::string CInstrumentClock::Set(const tagTimeStruct& time, const tagDateStruct& date) const
try
{
    // The service's own checks, made here for their text: the service gives a result alone.
    const CObjectDataReference object;
    const CTimeDateChecks checks(object, kSourceUnit);
    checks.Argument(time);
    checks.Argument(date);
    const HRESULT result = m_service->SetTimeAndDate(time, date);
    return result == S_OK ? "" : "No such day in the years 1601 to 30827";
}
catch (const CShellError& fault)
{
    return fault.Report().message;
}

} // namespace ZoVelkor::Demo
