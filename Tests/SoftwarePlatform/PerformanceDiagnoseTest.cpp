#include "CDeviceExecutionTime.h"
#include "CPerformanceDiagnose.h"
#include "CTraceRecorder.h"
#include "PerformanceCounter.h"

#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <thread>

static std::atomic<long long> g_now{0};
static std::atomic<bool> g_counterFails{false};
/// Takes the place of the platform's counter in the whole program: a clock moved by hand.
BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept
{
    counter->QuadPart = g_now;
    return !g_counterFails;
}

namespace
{

using namespace ZoVelkor;

constexpr long long kLowest = LLONG_MIN;
constexpr long long kHighest = LLONG_MAX;

/// Sets switches and frequency for one test.
struct PerformanceDiagnose : testing::Test
{
    void SetUp() override { m_control.iCounterFrequency = 1'000'000; }
    void TearDown() override
    {
        ApplyDiagnoseFlags(m_control, "", "test");
        g_now = 0;
        g_counterFails = false;
    }

    tagRemoteDiagnoseControl& m_control = *get_RemoteDiagnoseControl();
};

constexpr std::tuple<long long, long long, const char*> kTimestamps[] = {
    // frequency, ticks, text
    // clang-format off
    {1'000'000, 3'723'004'005, "01:02:03,004.005"}, {1'000'000, 90'000'000'000, "01:00:00,000.000"},
    {1'000'000, 86'399'999'999, "23:59:59,999.999"}, {1'000'000, -1'000'001, "-00:00:01,000.001"}, {3, 2, "00:00:00,666.666"},
    {1, 0, "00:00:00,000.000"}, {0, 61, "00:01:01,000.000"}, {-5, 61, "00:01:01,000.000"}, {kHighest, kHighest, "00:00:01,000.000"},
    {kHighest, kHighest - 1, "00:00:00,999.999"}, {1, kHighest, "15:30:07,000.000"}, {1, kLowest, "-15:30:08,000.000"}};
// clang-format on
TEST_F(PerformanceDiagnose, TimestampIsExactForEveryTickAndFrequency)
{
    for (const auto& [frequency, ticks, text] : kTimestamps)
    {
        m_control.iCounterFrequency = frequency;
        EXPECT_EQ(CPerformanceDiagnose::GetTimestampFromPerformanceCounter(ticks), text) << frequency;
    }
}

TEST_F(PerformanceDiagnose, LinesFollowTheSwitches)
{
    CTraceRecorder recorder;
    const auto lines = [&](const char* flags) {
        ApplyDiagnoseFlags(m_control, flags, "test");
        g_now += 1'000'000;
        CPerformanceDiagnose::DebugMessageTiming("a");
        g_now += 250;
        CPerformanceDiagnose::DebugMessageTrace("b");
        const auto taken = recorder.Take();
        return std::accumulate(taken.begin(), taken.end(), std::string());
    };
    EXPECT_EQ(lines(""), "");
    EXPECT_EQ(lines("trace"), "[RemoteTrace] b");
    EXPECT_EQ(lines("timing"), "[RemoteTrace] t = 00:00:01,000.000 : dt = 00:00:01,000.000 : a");
    EXPECT_EQ(lines("timing,trace"), // timing stayed on, and so did its base
              "[RemoteTrace] t = 00:00:02,000.250 : dt = 00:00:01,000.250 : a"
              "[RemoteTrace] t = 00:00:02,000.500 : dt = 00:00:00,000.250 : b");
    CPerformanceDiagnose::BeginDebugTiming();
    g_now -= 2;
    CPerformanceDiagnose::DebugMessageTrace(nullptr);
    EXPECT_EQ(recorder.Take().at(0), "[RemoteTrace] t = 00:00:02,000.498 : dt = -00:00:00,000.002 : ");
}

TEST_F(PerformanceDiagnose, ThreadsPrintTimedLinesSideBySide)
{
    CTraceRecorder recorder;
    ApplyDiagnoseFlags(m_control, "timing trace", "test");
    {
        const std::jthread other([] { CPerformanceDiagnose::DebugMessageTrace("x"); });
        CPerformanceDiagnose::DebugMessageTrace("x");
        ApplyDiagnoseFlags(m_control, "trace,timing", "test");
    }
    EXPECT_EQ(recorder.Take().size(), 2U);
}

TEST_F(PerformanceDiagnose, StatisticKeepsItsMinimumAtZero)
{
    CPerformanceDiagnose::CStatistik statistic;
    EXPECT_EQ(statistic.get_Mean() + statistic.get_Sdev(), 0);
    for (const long long ticks : {2'000'000, 4'000'000, 6'000'000})
    {
        statistic.Push(ticks);
    }
    EXPECT_DOUBLE_EQ(statistic.get_Mean(), 4);
    EXPECT_DOUBLE_EQ(statistic.get_Sdev(), std::sqrt(8.0 / 3));
    EXPECT_EQ(statistic.get_Maximum(), 6);
    EXPECT_EQ(statistic.get_Minimum(), 0);
    statistic.Reset();
    for (int i = 0; i < 3; ++i)
    {
        statistic.Push(-100'000); // equal samples: rounding must not make the deviation a NaN
    }
    EXPECT_NEAR(statistic.get_Sdev(), 0, 1e-8);
    EXPECT_EQ(statistic.get_Minimum(), -0.1);
    EXPECT_EQ(statistic.get_Maximum(), 0);
    {
        const auto measurement = CPerformanceDiagnose::DifferenceMeasurement(statistic);
        g_now = 250'000;
    }
    EXPECT_EQ(statistic.get_Count(), 4);
    EXPECT_EQ(statistic.get_Maximum(), 0.25);
}

TEST_F(PerformanceDiagnose, ExecutionTimeIsInMilliseconds)
{
    const long long frequency = CPerformanceDiagnose::GetFrequency();
    CDeviceExecutionTime time;
    CPerformanceDiagnose::CRunControl run;
    g_now = kHighest; // the counter wraps on the way
    time.StartPerformanceCounter();
    g_now = kLowest + frequency / 2 - 1;
    EXPECT_DOUBLE_EQ(time.GetExecutionTime(), 500.0);
    run.NextSection();
    EXPECT_EQ(run.get_RunStart() + run.get_SectionStart(), 0);
    EXPECT_EQ(run.get_SectionEnd(), g_now);
    g_counterFails = true;
    EXPECT_EQ(time.GetExecutionTime(), 0.0);
    EXPECT_EQ(CPerformanceDiagnose::GetPerfCounter(), 0);
}

/// Words, initials of the switches that are on then, what the log line names.
constexpr std::tuple<const char*, const char*, const char*> kFlagTexts[] = {
    {"rpc,timing,nochecks,trace,statistic,calls", "rtnTsc", ""},
    {"rpc", "r", ""},
    {"timing", "t", ""},
    {"nochecks", "n", ""},
    {" trace ;\tstatistic,,calls", "Tsc", ""},
    {"", "", ""},
    {"Trace,trac,trace,tracer", "T", "registry: unknown diagnosis switch Trace, trac, tracer;"}};
TEST(DiagnoseFlags, NamedSwitchesComeOnAndAllOthersGoOff)
{
    tagRemoteDiagnoseControl control;
    for (const auto& [words, active, unknown] : kFlagTexts)
    {
        testing::internal::CaptureStderr();
        ApplyDiagnoseFlags(control, words, "registry");
        const std::string line = testing::internal::GetCapturedStderr();
        std::string found = control.bRpcModeActive ? "r" : "";
        found += control.bTimingActive ? "t" : "";
        found += control.bScpiChecksDisabled ? "n" : "";
        found += control.bTraceModeActive ? "T" : "";
        found += control.bStatisticModeActive ? "s" : "";
        found += control.bCallStackTraceActive ? "c" : "";
        EXPECT_EQ(found, active) << words;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), *unknown != '\0' ? 1 : 0) << line;
        EXPECT_THAT(line, testing::HasSubstr(unknown));
    }
}

/// The variable is read at the first use of the block, so the question is put to a process of its own.
TEST(DiagnoseFlagsDeathTest, EnvironmentSetsTheSwitchesOfTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ASSERT_EQ(setenv("ZO_DIAGNOSE", "timing,statistic,foo", 1), 0);
    EXPECT_EXIT(
        {
            const bool right = CPerformanceDiagnose::IsDebugTimingActive() &&
                               CPerformanceDiagnose::IsDebugStatisticModeActive() &&
                               !CPerformanceDiagnose::IsDebugRpcModeActive();
            std::exit(right ? 0 : 1);
        },
        testing::ExitedWithCode(0),
        "ZO_DIAGNOSE: unknown diagnosis switch foo; known are rpc, timing, .*, calls");
    unsetenv("ZO_DIAGNOSE");
}

} // namespace
