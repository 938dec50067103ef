#include "CClockRecorder.h"
#include "CTime.h"
#include "LastError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
using Setting = CClockRecorder::Setting;

// clang-format off
const std::pair<SYSTEMTIME, Setting> kTimes[] = {
    {{1970, 1, 99, 1, 0, 0, 0, 0}, {0, 0}}, // the day of week is ignored
    {{2000, 2, 0, 29, 12, 34, 56, 789}, {951827696, 789}},
    {{1601, 1, 0, 1, 0, 0, 0, 0}, {-11644473600, 0}}, {{30827, 12, 0, 31, 23, 59, 59, 999}, {910670515199, 999}}};

const SYSTEMTIME kNoTimes[] = {
    {1600, 12, 0, 31, 23, 59, 59, 999}, {30828, 1, 0, 1, 0, 0, 0, 0}, {2026, 0, 0, 1, 0, 0, 0, 0},
    {2026, 13, 0, 1, 0, 0, 0, 0}, {2026, 257, 0, 1, 0, 0, 0, 0}, {2026, 1, 0, 0, 0, 0, 0, 0},
    {2026, 4, 0, 31, 0, 0, 0, 0}, {2100, 2, 0, 29, 0, 0, 0, 0}, {2026, 1, 0, 257, 0, 0, 0, 0},
    {2026, 1, 0, 1, 24, 0, 0, 0}, {2026, 1, 0, 1, 0, 60, 0, 0}, {2026, 1, 0, 1, 0, 0, 60, 0}, {2026, 1, 0, 1, 0, 0, 0, 1000}};

constexpr std::pair<int, DWORD> kRefusals[] = {{EPERM, ERROR_PRIVILEGE_NOT_HELD}, {EINVAL, ERROR_INVALID_PARAMETER}, {ENOSYS, ERROR_NOT_SUPPORTED}};
// clang-format on

TEST(SystemTime, OnlyATimeThatExistsReachesTheClock)
{
    const CClockRecorder clock;
    for (const auto& [time, setting] : kTimes)
    {
        EXPECT_EQ(SetSystemTime(&time), TRUE);
        EXPECT_EQ(CClockRecorder::Take(), setting);
    }
    for (const SYSTEMTIME& time : kNoTimes)
    {
        SetLastError(ERROR_BUSY);
        EXPECT_EQ(SetSystemTime(&time), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(CClockRecorder::Take(), std::nullopt) << &time - kNoTimes;
    }
    EXPECT_EQ(SetSystemTime(nullptr), FALSE);
    for (const auto& [refusal, error] : kRefusals)
    {
        const CClockRecorder refusing(refusal);
        EXPECT_EQ(SetSystemTime(&kTimes[0].first), FALSE);
        EXPECT_EQ(GetLastError(), error);
    }
}

TEST(SystemTime, ReadsTheClockInUtc)
{
    const CClockRecorder clock;
    SYSTEMTIME time{};
    GetSystemTime(nullptr);
    GetSystemTime(&time);
    ASSERT_EQ(SetSystemTime(&time), TRUE);
    const LONGLONG seconds = CClockRecorder::Take().value_or(Setting(-1, 0)).first;
    EXPECT_LE(std::abs(std::time(nullptr) - seconds), 5);
    EXPECT_EQ(time.wDayOfWeek, (seconds / 86400 + 4) % 7) << "1970-01-01 was a Thursday";
}

TEST(SystemTime, ReadsWhatStandsInForTheClock)
{
    EXPECT_EQ(SetSystemClockSource([]() noexcept -> LONGLONG { return -1; }), nullptr);
    SYSTEMTIME time{};
    GetSystemTime(&time);
    EXPECT_NE(SetSystemClockSource(nullptr), nullptr);
    EXPECT_EQ(time.wYear, 1969);
    EXPECT_EQ(time.wMilliseconds, 999);
}

/// Two safeguards: the process gives its rights up, and the kernel takes no year beyond 2232 from anyone.
int SetMachineClockWithoutRights()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    const SYSTEMTIME beyond{30000, 1, 0, 1, 0, 0, 0, 0};
    return ::syscall(SYS_capset, &header, none) == 0 && SetSystemTime(&beyond) == FALSE ? 0 : 1;
}

TEST(SystemTimeDeathTest, MachineClockRefusesAnUnprivilegedProcess)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(std::_Exit(SetMachineClockWithoutRights()), testing::ExitedWithCode(0), "");
}

TEST(Time, ShowsTheLocalCalendar)
{
    ::setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    ::tzset();
    EXPECT_EQ(CTime(1752192000).Format("%A %B %d %H:%M:%S %Y"), "Thursday July 10 20:00:00 2025") << "summer";
    const CTime time(1735693323); // 2025-01-01 01:02:03 UTC
    EXPECT_TRUE(time.GetTime() == 1735693323 && time.GetYear() == 2024 && time.GetMonth() == 12 &&
                time.GetDay() == 31);
    EXPECT_TRUE(time.GetHour() == 20 && time.GetMinute() == 2 && time.GetSecond() == 3);
    EXPECT_EQ(CTime(-1).Format("%H:%M:%S"), "18:59:59") << "before 1970";
    EXPECT_EQ(CTime(0).Format(nullptr) + CTime(0).Format(""), "");
    const CTime beyond(std::numeric_limits<std::time_t>::max());
    EXPECT_EQ(beyond.Format("%Y") + std::to_string(beyond.GetYear() + beyond.GetMonth()), "0");
}
} // namespace
