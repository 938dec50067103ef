#include "CTestApplication.h"
#include "CTraceRecorder.h"
#include "RemoteDiagnoseControl.h"
#include "Sessions/CSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace ZoVelkor::RemoteKernel::Testing
{
namespace
{

TEST(CommandTrace, NamesPathApplicationAndCommandWhileTraceModeIsOn)
{
    TestInstrument instrument;
    CSession session(instrument.kernel.Parts(), {});
    CTraceRecorder recorder;
    const auto lines = [&](const char* flags) {
        ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), flags, "test");
        std::string message = "TEXT 'a';LAST?\n";
        session.Process({message.data(), message.size()});
        return recorder.Take();
    };
    const std::string setting = "path " + std::to_string(session.RemotePath()) + ", tester, TEXT (handler 0)";
    EXPECT_THAT(lines("timing"), testing::IsEmpty());
    EXPECT_THAT(lines("trace"),
                testing::ElementsAre("[RemoteTrace] " + setting, testing::HasSubstr("LAST? (")));
    EXPECT_THAT(lines("trace,timing").at(0),
                testing::AllOf(testing::StartsWith("[RemoteTrace] t = "),
                               testing::HasSubstr(" : " + setting + ", "),
                               testing::EndsWith(" ms")));
    EXPECT_THAT(lines(""), testing::IsEmpty());
}

} // namespace
} // namespace ZoVelkor::RemoteKernel::Testing
