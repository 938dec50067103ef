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
#include <vector>

namespace
{
using Setting = CClockRecorder::Setting;

struct tagTimeCase
{
    const char* name;
    SYSTEMTIME time;
    std::optional<Setting> setting; ///< what reaches the clock; nothing for a time that is none
};

const Setting kEpoch{0, 0};
const Setting kLeapDay{951827696, 789};
const Setting kFirst{-11644473600, 0};
const Setting kLast{910670515199, 999};

const tagTimeCase kTimeCases[] = {
    {"epoch; day of week ignored", {1970, 1, 99, 1, 0, 0, 0, 0},        kEpoch      },
    {"leap day of 2000",           {2000, 2, 0, 29, 12, 34, 56, 789},   kLeapDay    },
    {"first",                      {1601, 1, 0, 1, 0, 0, 0, 0},         kFirst      },
    {"last",                       {30827, 12, 0, 31, 23, 59, 59, 999}, kLast       },
    {"before the first",           {1600, 12, 0, 31, 23, 59, 59, 999},  std::nullopt},
    {"behind the last",            {30828, 1, 0, 1, 0, 0, 0, 0},        std::nullopt},
    {"month 0",                    {2026, 0, 0, 1, 0, 0, 0, 0},         std::nullopt},
    {"month 13",                   {2026, 13, 0, 1, 0, 0, 0, 0},        std::nullopt},
    {"month that 1 byte hides",    {2026, 257, 0, 1, 0, 0, 0, 0},       std::nullopt},
    {"day 0",                      {2026, 1, 0, 0, 0, 0, 0, 0},         std::nullopt},
    {"31 April",                   {2026, 4, 0, 31, 0, 0, 0, 0},        std::nullopt},
    {"no leap day in 2100",        {2100, 2, 0, 29, 0, 0, 0, 0},        std::nullopt},
    {"day that 1 byte hides",      {2026, 1, 0, 257, 0, 0, 0, 0},       std::nullopt},
    {"hour 24",                    {2026, 1, 0, 1, 24, 0, 0, 0},        std::nullopt},
    {"minute 60",                  {2026, 1, 0, 1, 0, 60, 0, 0},        std::nullopt},
    {"second 60",                  {2026, 1, 0, 1, 0, 0, 60, 0},        std::nullopt},
    {"millisecond 1000",           {2026, 1, 0, 1, 0, 0, 0, 1000},      std::nullopt}
};

TEST(SystemTime, OnlyATimeThatExistsReachesTheClock)
{
    const CClockRecorder clock;
    for (const tagTimeCase& row : kTimeCases)
    {
        SetLastError(ERROR_BUSY);
        EXPECT_EQ(SetSystemTime(&row.time), row.setting ? TRUE : FALSE) << row.name;
        EXPECT_EQ(GetLastError(), row.setting ? ERROR_BUSY : ERROR_INVALID_PARAMETER) << row.name;
        EXPECT_EQ(CClockRecorder::Take(), row.setting) << row.name;
    }
    EXPECT_EQ(SetSystemTime(nullptr), FALSE);
}

TEST(SystemTime, RefusalBecomesTheLastError)
{
    const std::pair<int, DWORD> kRefusals[] = {
        {EPERM,  ERROR_PRIVILEGE_NOT_HELD},
        {EINVAL, ERROR_INVALID_PARAMETER },
        {ENOSYS, ERROR_NOT_SUPPORTED     }
    };
    for (const auto& [refusal, error] : kRefusals)
    {
        const CClockRecorder clock(refusal);
        EXPECT_EQ(SetSystemTime(&kTimeCases[0].time), FALSE);
        EXPECT_EQ(GetLastError(), error);
    }
}

TEST(SystemTime, ReadsTheClockInUtc)
{
    const CClockRecorder clock;
    SYSTEMTIME time{};
    const std::time_t before = std::time(nullptr);
    GetSystemTime(&time);
    const std::time_t after = std::time(nullptr);
    GetSystemTime(nullptr);
    ASSERT_EQ(SetSystemTime(&time), TRUE);
    const LONGLONG seconds = CClockRecorder::Take().value_or(Setting(-1, 0)).first;
    EXPECT_TRUE(before <= seconds && seconds <= after);
    EXPECT_EQ(time.wDayOfWeek, (seconds / 86400 + 4) % 7) << "1970-01-01 was a Thursday";
}

/// Two safeguards: the process gives its rights up, and the kernel takes no year beyond 2232 from anyone.
int OutcomeOfSettingTheMachineClock()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    if (::syscall(SYS_capset, &header, none) != 0)
    {
        return 2;
    }
    const SYSTEMTIME beyond{30000, 1, 0, 1, 0, 0, 0, 0};
    const BOOL isSet = SetSystemTime(&beyond);
    return isSet == FALSE &&
                   (GetLastError() == ERROR_PRIVILEGE_NOT_HELD || GetLastError() == ERROR_INVALID_PARAMETER)
               ? 0
               : 1;
}

TEST(SystemTimeDeathTest, MachineClockRefusesAnUnprivilegedProcess)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(std::_Exit(OutcomeOfSettingTheMachineClock()), testing::ExitedWithCode(0), "");
}

/// Puts the process into another time zone for one test.
class CZone
{
public:
    explicit CZone(const char* rule) { Set(rule); }
    CZone(const CZone&) = delete;
    CZone& operator=(const CZone&) = delete;
    ~CZone() { Set("UTC0"); }

private:
    static void Set(const char* rule)
    {
        ::setenv("TZ", rule, 1);
        ::tzset();
    }
};

TEST(Time, ShowsTheLocalCalendar)
{
    const CZone zone("EST5EDT,M3.2.0,M11.1.0");
    const CTime summer(1752192000); // 2025-07-11 00:00:00 UTC
    EXPECT_EQ(summer.Format("%A %B %d %H:%M:%S %Y"), "Thursday July 10 20:00:00 2025");
    EXPECT_EQ(summer.GetTime(), 1752192000);
    const CTime winter(1735693323); // 2025-01-01 01:02:03 UTC
    const int fields[] = {winter.GetYear(),
                          winter.GetMonth(),
                          winter.GetDay(),
                          winter.GetHour(),
                          winter.GetMinute(),
                          winter.GetSecond()};
    EXPECT_EQ(std::vector<int>(std::begin(fields), std::end(fields)), (std::vector{2024, 12, 31, 20, 2, 3}));
    EXPECT_EQ(CTime(-1).Format("%H:%M:%S"), "18:59:59") << "before 1970";
}

TEST(Time, EmptyTextWhereThereIsNothingToShow)
{
    EXPECT_EQ(CTime(0).Format(nullptr), "");
    EXPECT_EQ(CTime(0).Format(""), "");
    const CTime beyond(std::numeric_limits<std::time_t>::max());
    EXPECT_EQ(beyond.Format("%Y"), "");
    EXPECT_EQ(beyond.GetYear() + beyond.GetMonth() + beyond.GetDay(), 0);
    EXPECT_EQ(CTime(0).Format(std::string(100, 'x').c_str()), std::string(100, 'x'));
}
} // namespace
