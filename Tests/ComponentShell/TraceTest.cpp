#include "Trace.h"

#include "CTraceCallStackObject.h"
#include "CTraceRecorder.h"
#include "RemoteDiagnoseControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace ZoVelkor
{
namespace
{
TEST(Trace, LineBeginsWithTheComponentAndStaysOneLine)
{
    testing::internal::CaptureStderr();
    DebugPrint("RemoteTrace", "t = 1\nt = 2");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[RemoteTrace] t = 1?t = 2\n");
}

TEST(TraceCallStack, PrintsNestedCallsWhileTracingIsOnAndNothingElse)
{
    CTraceRecorder recorder;
    std::atomic<bool>& active = get_RemoteDiagnoseControl()->bCallStackTraceActive;
    {
        const CTraceCallStackObject silent("Shell", "Silent");
        active = true;
        const CTraceCallStackObject outer("Shell", "Outer");
        std::jthread([] { const CTraceCallStackObject other("Shell", "OtherThread"); }).join();
        const CTraceCallStackObject inner("Kernel", "Inner");
        active = false;
        const CTraceCallStackObject late("Shell", "Late");
    }
    EXPECT_THAT(recorder.Take(),
                testing::ElementsAre("[Shell] > Outer",
                                     "[Shell] > OtherThread",
                                     "[Shell] < OtherThread",
                                     "[Kernel]   > Inner",
                                     "[Kernel]   < Inner",
                                     "[Shell] < Outer"));
}

TEST(RemoteDiagnoseControl, StartsSwitchedOffWithTheFrequencyOfTheCounter)
{
    const tagRemoteDiagnoseControl& control = *get_RemoteDiagnoseControl();
    EXPECT_FALSE(control.bRpcModeActive || control.bTimingActive || control.bScpiChecksDisabled);
    EXPECT_FALSE(control.bTraceModeActive || control.bStatisticModeActive || control.bCallStackTraceActive);
    EXPECT_GT(control.iCounterFrequency, 1);
}
} // namespace
} // namespace ZoVelkor
