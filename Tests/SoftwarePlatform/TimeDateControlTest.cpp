#include "CBTimeDateControl.h"
#include "CClockRecorder.h"
#include "CComObject.h"
#include "CETimeDateControl.h"
#include "CErrorRecorder.h"
#include "CTraceRecorder.h"
#include "ModuleServices.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZoVelkor
{
namespace
{

constexpr tagTimeStruct kTime{23, 59, 59, 999};
constexpr tagDateStruct kDate{2024, 12, 31};

/// A clock that is moved by hand, behind the entry layer.
class CHandClock : public CETimeDateControl<CBTimeDateControl>
{
public:
    tagTimeStruct m_time = kTime;
    tagDateStruct m_date = kDate;
    HRESULT m_readResult = S_OK;
    HRESULT m_setResult = S_OK;
    bool m_bThrows = false;
    int m_iSettings = 0;

protected:
    HRESULT DoGetTimeDate(tagTimeStruct& Time, tagDateStruct& Date) override
    {
        if (m_bThrows)
        {
            throw std::runtime_error("clock");
        }
        Time = m_time;
        Date = m_date;
        return m_readResult;
    }
    HRESULT DoSetTimeDate(tagTimeStruct const& Time, tagDateStruct const& Date) override
    {
        ++m_iSettings;
        m_time = Time;
        m_date = Date;
        return m_setResult;
    }
};

using CClock = CComObject<CHandClock, IZOTimeDateControl>;

/// Condition and message of each report.
std::string Reports(CErrorRecorder& recorder)
{
    std::string text;
    for (const auto& entry : recorder.Take())
    {
        text += entry.report.condition + ("|" + entry.report.message) + "\n";
    }
    return text;
}

struct tagFieldCase
{
    tagTimeStruct time;
    tagDateStruct date;
    const char* argument; ///< the condition that fails; null for a time and a date within their ranges
    const char* returned;
};

const tagFieldCase kFieldCases[] = {
    // clang-format off
    {{0, 0, 0, 0}, {0, 1, 1}, nullptr, nullptr},
    {kTime, {65535, 12, 31}, nullptr, nullptr},
    {kTime, {2023, 2, 31}, nullptr, nullptr},
    {{24, 60, 60, 1000}, {1, 0, 0}, "0 <= Time.iHour && Time.iHour < 24", "0 <= pTime->iHour && pTime->iHour < 24"},
    {{0, 60, 0, 0}, kDate, "0 <= Time.iMin && Time.iMin < 60", "0 <= pTime->iMin && pTime->iMin < 60"},
    {{0, 0, 60, 0}, kDate, "0 <= Time.iSec && Time.iSec < 60", "0 <= pTime->iSec && pTime->iSec < 60"},
    {{0, 0, 0, 1000}, kDate, "0 <= Time.iMilliSec && Time.iMilliSec < 1000", "0 <= pTime->iMilliSec && pTime->iMilliSec < 1000"},
    {kTime, {2024, 0, 1}, "1 <= Date.iMonth && Date.iMonth < 13", "1 <= pDate->iMonth && pDate->iMonth < 13"},
    {kTime, {2024, 13, 1}, "1 <= Date.iMonth && Date.iMonth < 13", "1 <= pDate->iMonth && pDate->iMonth < 13"},
    {kTime, {2024, 1, 0}, "1 <= Date.iDay && Date.iDay < 32", "1 <= pDate->iDay && pDate->iDay < 32"},
    {kTime, {2024, 1, 32}, "1 <= Date.iDay && Date.iDay < 32", "1 <= pDate->iDay && pDate->iDay < 32"}};
// clang-format on

TEST(TimeDateControl, FieldsAreCheckedBeforeAndBehindTheBaseLayer)
{
    for (const tagFieldCase& row : kFieldCases)
    {
        CErrorRecorder recorder;
        const auto spClock = CClock::Create();
        const HRESULT expected = row.argument == nullptr ? S_OK : MakeResult(0x80040202);
        EXPECT_EQ(spClock->SetTimeAndDate(row.time, row.date), expected);
        EXPECT_EQ(spClock->m_iSettings, row.argument == nullptr ? 1 : 0);
        spClock->m_time = row.time;
        spClock->m_date = row.date;
        tagTimeStruct time{};
        tagDateStruct date{};
        EXPECT_EQ(spClock->GetTimeAndDate(&time, &date), expected);
        const auto reports = recorder.Take();
        ASSERT_EQ(reports.size(), row.argument == nullptr ? 0U : 2U) << row.argument;
        if (row.argument != nullptr)
        {
            EXPECT_STREQ(reports[0].report.condition, row.argument);
            EXPECT_STREQ(reports[1].report.condition, row.returned);
            EXPECT_STREQ(reports[1].report.sourceUnit, "Interfaces/_Inc/CETimeDateControl");
        }
        spClock->SetArgumentChecking(false);
        EXPECT_EQ(spClock->SetTimeAndDate(row.time, row.date), S_OK) << "the clock decides";
    }
}

constexpr tagTimeStruct kNoTime{24, 0, 0, 0};
constexpr tagDateStruct kNoDate{2024, 13, 1};

/// Calls each operation, the get operations with the given pointers, and joins the results.
std::vector<HRESULT>
CallAll(IZOTimeDateControl& clock, tagTimeStruct* pTime, tagDateStruct* pDate, bool valid)
{
    const tagTimeStruct time = valid ? kTime : kNoTime;
    const tagDateStruct date = valid ? kDate : kNoDate;
    return {clock.GetTimeAndDate(pTime, pDate),
            clock.GetTime(pTime),
            clock.GetDate(pDate),
            clock.GetTimeZone(pTime),
            clock.SetTimeAndDate(time, date),
            clock.SetTime(time),
            clock.SetDate(date),
            clock.SetTimeZone(time)};
}

TEST(TimeDateControl, EveryOperationChecksItsArgumentsWhileCheckingIsOn)
{
    constexpr HRESULT kNull = MakeResult(0x80040201);
    constexpr HRESULT kRange = MakeResult(0x80040202);
    CErrorRecorder recorder;
    const auto spClock = CClock::Create();
    EXPECT_EQ(CallAll(*spClock, nullptr, nullptr, false),
              (std::vector{kNull, kNull, kNull, kNull, kRange, kRange, kRange, kRange}));
    const std::string reports = Reports(recorder);
    EXPECT_NE(reports.find("pTime != NULL|Null pointer detected (pTime)\npDate != NULL|"), std::string::npos);
    EXPECT_EQ(spClock->m_iSettings, 0);

    spClock->SetArgumentChecking(false);
    EXPECT_EQ(CallAll(*spClock, nullptr, nullptr, true),
              (std::vector{E_POINTER, E_POINTER, E_POINTER, S_OK, S_OK, S_OK, S_OK, S_OK}));
}

struct tagResultCase
{
    HRESULT read;
    HRESULT set;
    bool throws;
    std::vector<HRESULT> results; ///< of GetTime, SetTimeAndDate, SetTime
    const char* reports;
};

const tagResultCase kResultCases[] = {
    // clang-format off
    {S_OK, S_FALSE, false, {S_OK, S_FALSE, S_FALSE}, ""},
    {S_FALSE, S_OK, false, {S_FALSE, S_OK, S_FALSE}, "hResult == S_OK|DoGetTimeDate failed\n"},
    {E_ABORT, E_FAIL, false, {E_ABORT, E_FAIL, E_ABORT},
     "hResult == S_OK|DoGetTimeDate failed\nhResult == S_OK || hResult == S_FALSE|HResult was invalid\n"
     "hResult == S_OK || hResult == S_FALSE|HResult was invalid\n"
     "hResult == S_OK|DoGetTimeDate failed\nhResult == S_OK || hResult == S_FALSE|HResult was invalid\n"},
    {S_OK, S_OK, true, {ZO_E_SHELL, S_OK, ZO_E_SHELL},
     "false|unexpected exception occured\nfalse|unexpected exception occured\n"}};
// clang-format on

TEST(TimeDateControl, ResultsOfTheClockComeThroughAndFailuresAreReported)
{
    for (const tagResultCase& row : kResultCases)
    {
        CErrorRecorder recorder;
        const auto spClock = CClock::Create();
        spClock->m_readResult = row.read;
        spClock->m_setResult = row.set;
        spClock->m_bThrows = row.throws;
        tagTimeStruct time{};
        EXPECT_EQ((std::vector{spClock->GetTime(&time),
                               spClock->SetTimeAndDate(kTime, kDate),
                               spClock->SetTime(kTime)}),
                  row.results);
        EXPECT_EQ(Reports(recorder), row.reports);
    }
}

TEST(TimeDateControl, WithoutPrimitivesNothingIsImplemented)
{
    CErrorRecorder recorder;
    const auto spBase = CComObject<CBTimeDateControl, IZOTimeDateControl>::Create();
    tagTimeStruct time{7, 7, 7, 7};
    tagDateStruct date{};
    constexpr HRESULT kNot = E_NOTIMPL;
    EXPECT_EQ(CallAll(*spBase, &time, &date, true),
              (std::vector{kNot, kNot, kNot, S_OK, kNot, kNot, kNot, S_OK}));
    const auto entries = recorder.Take();
    ASSERT_EQ(entries.size(), 5U);
    EXPECT_EQ(entries[4].report.message, "DoGetTimeDate failed");
    EXPECT_STREQ(entries[4].report.sourceUnit, "Interfaces/_Src/CBTimeDateControl");
    EXPECT_EQ(time.iHour, 7);
}

TEST(TimeDateControl, SettingOnePartKeepsTheOtherAndTheZoneIsLeftAlone)
{
    CTraceRecorder trace;
    const auto spClock = CClock::Create();
    ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), "calls", "test");
    EXPECT_EQ(spClock->SetDate({2000, 2, 29}), S_OK);
    ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), "", "test");
    EXPECT_EQ(trace.Take(),
              (std::vector<std::string>{"[TimeDateControl] > SetDate", "[TimeDateControl] < SetDate"}));
    EXPECT_EQ(spClock->m_time, kTime);
    EXPECT_EQ(spClock->SetTime({1, 2, 3, 4}), S_OK);
    EXPECT_EQ(spClock->m_date, (tagDateStruct{2000, 2, 29}));
    EXPECT_EQ(spClock->m_time, (tagTimeStruct{1, 2, 3, 4}));

    tagTimeStruct zone{99, 99, 99, 9999};
    EXPECT_EQ(spClock->GetTimeZone(&zone), S_OK);
    EXPECT_EQ(zone, (tagTimeStruct{99, 99, 99, 9999}));
}

TEST(ModuleServices, TimeServicesReadAndSetTheSystemClock)
{
    CComPtr<IZOTimeDateControl> spClock;
    ASSERT_EQ(GetModuleService(kTimeServices, std::addressof(spClock)), S_OK);
    {
        const CClockRecorder clock;
        EXPECT_EQ(spClock->SetTimeAndDate({1, 2, 3, 4}, {2000, 2, 29}), S_OK);
        EXPECT_EQ(CClockRecorder::Take(), CClockRecorder::Setting(951786123, 4));
        EXPECT_EQ(spClock->SetTimeAndDate(kTime, {2023, 4, 31}), S_FALSE) << "the platform decides";
        EXPECT_EQ(CClockRecorder::Take(), std::nullopt);
        tagTimeStruct time{};
        tagDateStruct date{};
        EXPECT_EQ(spClock->GetTimeAndDate(&time, &date), S_OK);
        EXPECT_EQ(spClock->SetTimeAndDate(time, date), S_OK);
        const CClockRecorder::Setting now = CClockRecorder::Take().value_or(CClockRecorder::Setting{});
        EXPECT_LE(std::abs(now.first - std::time(nullptr)), 5);
    }
    const CClockRecorder refusing(EPERM);
    EXPECT_EQ(spClock->SetTimeAndDate(kTime, kDate), S_FALSE);
}

TEST(ModuleServices, NameVersionAndInterfaceMustFit)
{
    CErrorRecorder recorder;
    for (const wchar_t* name : {L"TimeServices", L"TimeServices_2.5", L"timeservices_2.6", L"_2.6", L""})
    {
        void* pService = this;
        EXPECT_EQ(GetModuleService(name, IZOTimeDateControl::kInterfaceId, &pService), E_NOINTERFACE);
        EXPECT_EQ(pService, nullptr);
    }
    void* pService = this;
    EXPECT_EQ(GetModuleService(kTimeServices, GUID_NULL, &pService), E_NOINTERFACE);
    EXPECT_EQ(pService, nullptr);
    EXPECT_EQ(Reports(recorder), "");
    EXPECT_EQ(GetModuleService(nullptr, GUID_NULL, &pService), E_POINTER);
    EXPECT_EQ(GetModuleService(kTimeServices, GUID_NULL, nullptr), E_POINTER);
}

} // namespace
} // namespace ZoVelkor
