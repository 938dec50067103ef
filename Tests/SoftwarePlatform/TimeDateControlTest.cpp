#include "CBTimeDateControl.h"
#include "CClockRecorder.h"
#include "CComObject.h"
#include "CETimeDateControl.h"
#include "CErrorRecorder.h"
#include "CTraceRecorder.h"
#include "ModuleServices.h"
#include "VirtualSlots.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <tuple>

namespace ZoVelkor
{
namespace
{

using Results = std::vector<HRESULT>;
constexpr tagTimeStruct kTime{23, 59, 59, 999};
constexpr tagDateStruct kDate{2024, 12, 31};
constexpr HRESULT kNull = MakeResult(0x80040201);
constexpr HRESULT kThrow = E_UNEXPECTED;
constexpr HRESULT kRange = MakeResult(0x80040202);

/// A clock that is moved by hand, behind the entry layer.
struct CHandClock : CETimeDateControl<CBTimeDateControl>
{
    HRESULT DoGetTimeDate(tagTimeStruct& Time, tagDateStruct& Date) override
    {
        std::tie(Time, Date) = m_now;
        return m_readResult == kThrow ? throw std::runtime_error("clock") : m_readResult;
    }
    HRESULT DoSetTimeDate(const tagTimeStruct& Time, const tagDateStruct& Date) override
    {
        m_now = {Time, Date};
        return m_setResult;
    }
    static auto Slots()
    {
        using B = CHandClock;
        return VirtualSlots(&B::DoGetTimeDate, &B::DoSetTimeDate, &B::DoGetTimeZone, &B::DoSetTimeZone);
    }
    std::pair<tagTimeStruct, tagDateStruct> m_now{kTime, kDate};
    HRESULT m_readResult = S_OK;
    HRESULT m_setResult = S_OK;
};

using CClock = CComObject<CHandClock, IZOTimeDateControl>;

struct TimeDateControl : testing::Test
{
    CErrorRecorder m_recorder;
    CComPtr<CClock> m_clock = CClock::Create();
    tagTimeStruct m_time{99, 99, 99, 9999};
    tagDateStruct m_date{};
};

const std::tuple<tagTimeStruct, tagDateStruct, const char*, const char*> kBadFields[] = {
    // clang-format off
    {{24, 60, 60, 1000}, {1, 0, 0}, "0 <= Time.iHour && Time.iHour < 24", "0 <= pTime->iHour && pTime->iHour < 24"},
    {{0, 60, 0, 0}, kDate, "0 <= Time.iMin && Time.iMin < 60", "0 <= pTime->iMin && pTime->iMin < 60"},
    {{0, 0, 60, 0}, kDate, "0 <= Time.iSec && Time.iSec < 60", "0 <= pTime->iSec && pTime->iSec < 60"},
    {{0, 0, 0, 1000}, kDate, "0 <= Time.iMilliSec && Time.iMilliSec < 1000", "0 <= pTime->iMilliSec && pTime->iMilliSec < 1000"},
    {kTime, {2024, 0, 1}, "1 <= Date.iMonth && Date.iMonth < 13", "1 <= pDate->iMonth && pDate->iMonth < 13"},
    {kTime, {2024, 13, 1}, "1 <= Date.iMonth && Date.iMonth < 13", "1 <= pDate->iMonth && pDate->iMonth < 13"},
    {kTime, {2024, 1, 0}, "1 <= Date.iDay && Date.iDay < 32", "1 <= pDate->iDay && pDate->iDay < 32"},
    {kTime, {2024, 1, 32}, "1 <= Date.iDay && Date.iDay < 32", "1 <= pDate->iDay && pDate->iDay < 32"}};
// clang-format on

TEST_F(TimeDateControl, FieldsAreCheckedBeforeAndBehindTheBaseLayer)
{
    for (const auto& [time, date, argument, returned] : kBadFields)
    {
        EXPECT_EQ(m_clock->SetTimeAndDate(time, date), kRange);
        EXPECT_EQ(std::exchange(m_clock->m_now, {time, date}), std::pair(kTime, kDate));
        EXPECT_EQ(m_clock->GetTimeAndDate(&m_time, &m_date), kRange);
        const auto reports = m_recorder.Take();
        EXPECT_STREQ(reports.at(0).report.condition, argument);
        EXPECT_STREQ(reports.at(1).report.condition, returned);
        EXPECT_EQ(m_clock->SetTimeAndDate({0, 0, 0, 0}, {0, 1, 1}), S_OK);
        EXPECT_EQ(m_clock->SetTimeAndDate(kTime, kDate), S_OK);
    }
}

Results CallAll(IZOTimeDateControl& clock, tagTimeStruct* pTime, tagDateStruct* pDate, std::uint16_t field)
{
    const tagTimeStruct time{field, 0, 0, 0};
    const tagDateStruct date{2024, field, 1};
    // clang-format off
    return {clock.GetTimeAndDate(pTime, pDate), clock.GetTime(pTime), clock.GetDate(pDate), clock.GetTimeZone(pTime),
            clock.SetTimeAndDate(time, date), clock.SetTime(time), clock.SetDate(date), clock.SetTimeZone(time)};
}

/// Whether the arguments are good and are checked, results of reading and setting the clock; then the results of all
/// operations, the number of reports and the last one.
const std::tuple<bool, bool, HRESULT, HRESULT, Results, std::size_t, const char*> kCalls[] = {
    {false, true, S_OK, S_OK, {kNull, kNull, kNull, kNull, kRange, kRange, kRange, kRange}, 8, "Value out of range (24)"},
    {false, false, S_OK, S_OK, {E_POINTER, E_POINTER, E_POINTER, S_OK, S_OK, S_OK, S_OK, S_OK}, 6, "HResult was invalid"},
    {true, true, S_OK, S_FALSE, {S_OK, S_OK, S_OK, S_OK, S_FALSE, S_FALSE, S_FALSE, S_OK}, 0, ""},
    {true, true, S_FALSE, S_OK, {S_FALSE, S_FALSE, S_FALSE, S_OK, S_OK, S_FALSE, S_FALSE, S_OK}, 2, "DoGetTimeDate failed"},
    {true, true, E_ABORT, HRESULT{2}, {E_ABORT, E_ABORT, E_ABORT, S_OK, E_FAIL, E_ABORT, E_ABORT, S_OK}, 11, "HResult was invalid"},
    {true, true, kThrow, S_OK, {ZO_E_SHELL, ZO_E_SHELL, ZO_E_SHELL, S_OK, S_OK, ZO_E_SHELL, ZO_E_SHELL, S_OK}, 5, "unexpected exception occured"}};
// clang-format on

TEST_F(TimeDateControl, EveryOperationChecksItsArgumentsAndItsResult)
{
    for (const auto& [isGood, isChecked, read, set, results, count, last] : kCalls)
    {
        m_clock->m_readResult = read;
        m_clock->m_setResult = set;
        m_clock->SetArgumentChecking(isChecked);
        tagTimeStruct* const pTime = isGood ? &m_time : nullptr;
        EXPECT_EQ(CallAll(*m_clock, pTime, isGood ? &m_date : nullptr, isGood ? 1 : 24), results) << last;
        const auto entries = m_recorder.Take();
        EXPECT_EQ(entries.size(), count) << last;
        EXPECT_EQ(entries.empty() ? "" : entries.back().report.message, last);
        m_clock->m_now = {kTime, kDate};
    }
}

TEST(TimeDateSlots, AreInOrder)
{
    using I = IZOTimeDateControl;
    // clang-format off
    const auto slots = VirtualSlots(&I::GetTimeAndDate, &I::GetTime, &I::GetDate, &I::SetTimeAndDate, &I::SetTime,
                                    &I::SetDate, &I::GetTimeZone, &I::SetTimeZone);
    // clang-format on
    EXPECT_EQ(slots, (std::vector<std::size_t>{3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(CHandClock::Slots(), (std::vector<std::size_t>{11, 12, 13, 14}));
}

TEST_F(TimeDateControl, WithoutPrimitivesNothingIsImplementedButTheZone)
{
    const auto base = CComObject<CBTimeDateControl, IZOTimeDateControl>::Create();
    const Results results{E_NOTIMPL, E_NOTIMPL, E_NOTIMPL, S_OK, E_NOTIMPL, E_NOTIMPL, E_NOTIMPL, S_OK};
    EXPECT_EQ(CallAll(*base, &m_time, &m_date, 1), results);
    EXPECT_STREQ(m_recorder.Take().at(4).report.condition, "hResult == S_OK");
    EXPECT_EQ(m_clock->GetTimeZone(&m_time), S_OK) << "not a time, but not the clock's either";
    EXPECT_EQ(m_time, (tagTimeStruct{99, 99, 99, 9999}));
}

TEST_F(TimeDateControl, SettingOnePartKeepsTheOther)
{
    CTraceRecorder trace;
    ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), "calls", "test");
    EXPECT_EQ(m_clock->SetDate({2000, 2, 29}), S_OK);
    ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), "", "test");
    EXPECT_EQ(trace.Take().at(0), "[TimeDateControl] > SetDate");
    EXPECT_EQ(m_clock->m_now, std::pair(kTime, tagDateStruct{2000, 2, 29}));
    EXPECT_EQ(m_clock->SetTime({1, 2, 3, 4}), S_OK);
    EXPECT_EQ(m_clock->m_now, std::pair(tagTimeStruct{1, 2, 3, 4}, tagDateStruct{2000, 2, 29}));
}

TEST(ModuleServices, TimeServicesReadAndSetTheSystemClock)
{
    const CClockRecorder recorder;
    CComPtr<IZOTimeDateControl> clock;
    ASSERT_EQ(GetModuleService(kTimeServices, &clock), S_OK);
    EXPECT_EQ(clock->SetTimeAndDate({1, 2, 3, 4}, {2000, 2, 29}), S_OK);
    EXPECT_EQ(CClockRecorder::Take(), CClockRecorder::Setting(951786123, 4));
    EXPECT_EQ(clock->SetTimeAndDate(kTime, {2023, 4, 31}), S_FALSE) << "the platform decides";
    EXPECT_EQ(clock->SetDate({2000, 2, 29}), S_OK);
    const LONGLONG seconds = CClockRecorder::Take().value_or(CClockRecorder::Setting()).first;
    EXPECT_LE((std::time(nullptr) - seconds + 5) % 86400, 10) << "the time of day stays";
    const CClockRecorder refusing(EPERM);
    EXPECT_EQ(clock->SetTimeAndDate(kTime, kDate), S_FALSE);
}

TEST(ModuleServices, NameVersionAndInterfaceMustFit)
{
    CErrorRecorder recorder;
    void* service = &recorder;
    for (const wchar_t* name : {L"TimeServices", L"TimeServices_2.5", L"timeservices_2.6", L"_2.6", L""})
    {
        EXPECT_EQ(GetModuleService(name, IID_IUnknown, &service), E_NOINTERFACE);
        EXPECT_EQ(std::exchange(service, &recorder), nullptr);
    }
    EXPECT_EQ(GetModuleService(kTimeServices, GUID_NULL, &service), E_NOINTERFACE);
    EXPECT_TRUE(recorder.Take().empty());
    EXPECT_EQ(GetModuleService(nullptr, IID_IUnknown, &service), E_POINTER);
    EXPECT_EQ(GetModuleService(kTimeServices, IID_IUnknown, nullptr), E_POINTER);
    IZOTimeDateControl** const noClock = nullptr;
    EXPECT_EQ(GetModuleService(kTimeServices, noClock), E_POINTER);
}

} // namespace
} // namespace ZoVelkor
