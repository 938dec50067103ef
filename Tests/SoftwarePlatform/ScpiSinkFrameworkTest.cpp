#include "CNumericSetting.h"
#include "CScpiSinkFramework.h"
#include "ErrorRaising.h"
#include "ExecutionFakes.h"

#include <stdexcept>
#include <tuple>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Tests/SoftwarePlatform/ScpiSinkFrameworkTest");

/// Runs a test on both handler styles.
template <class TData>
class ScpiExecution : public testing::Test
{};
using BothStyles = testing::Types<CPool, CRecord>;
TYPED_TEST_SUITE(ScpiExecution, BothStyles);

TYPED_TEST(ScpiExecution, ResultIsMappedAndTheErrorDelivered)
{
    const std::tuple<long, short, HRESULT, const char*> kRows[] = {{0, 0, S_OK, ""},
                                                                   {0, -222, S_OK, "2:-222;"},
                                                                   {1, -222, S_OK, "2:-222;"},
                                                                   {1, 0, S_OK, ""},
                                                                   {E_ABORT, 0, E_ABORT, ""},
                                                                   {0x80000007L, 0, E_ABORT, ""},
                                                                   {E_ABORT, -108, E_ABORT, "2:-108;"},
                                                                   {E_FAIL, 0, S_OK, "2:-200;"},
                                                                   {E_FAIL, -109, S_OK, "2:-109;"},
                                                                   {2, 0, S_OK, "2:-200;"}};
    for (const auto& [result, error, returned, delivered] : kRows)
    {
        SCOPED_TRACE(testing::Message() << "result " << result << ", error " << error);
        Command command;
        TypeParam data(command.data);
        data.SetScpiError(error);
        EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(result, data), returned);
        EXPECT_EQ(command.errors.queue, delivered);
        EXPECT_EQ(data.FinishCommandExecution(), 0);
        EXPECT_EQ(command.errors.queue, delivered) << "delivered twice";
    }
}

TYPED_TEST(ScpiExecution, UndeliverableErrorIsReportedAndDoesNotShowInTheResult)
{
    constexpr const char* kFaults[] = {"m_pScpiManager != NULL|Fatal missing interface",
                                       "m_pScpiManager != NULL|Fatal missing interface",
                                       "m_iRemotePath >= 0|Invalid remote path",
                                       "pScpiErrorManagement != NULL|Fatal missing interface"};
    for (int fault = 0; fault < 4; ++fault)
    {
        Command command;
        IUnknown* const contexts[] = {nullptr, &command.output, &command, &command};
        command.data.m_pContext = contexts[fault];
        command.data.m_iRemotePath = fault == 2 ? -1 : 0;
        command.errors.m_present = fault != 3;
        CErrorRecorder recorder;
        TypeParam data(command.data);
        data.SetScpiError(-222);
        EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(1, data), S_OK);
        const auto entries = recorder.Take();
        EXPECT_EQ(Lines(entries),
                  kFaults[fault] + std::string("|thrown\nhr == S_OK|Fatal scpi execution error\n"));
        EXPECT_STREQ(entries.back().report.sourceUnit, "Remote/Src/CScpiSinkFramework");
    }
}

TYPED_TEST(ScpiExecution, RefusedHandOverSetsTheExecutionError)
{
    Command command;
    command.errors.result = E_FAIL;
    CErrorRecorder recorder;
    TypeParam data(command.data);
    data.SetScpiError(-222);
    EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(0, data), S_OK);
    EXPECT_EQ(data.GetScpiError(), -200);
    EXPECT_EQ(recorder.Take().size(), 1U);
}

TYPED_TEST(ScpiExecution, ExceptionOfAHandlerBecomesAnExecutionError)
{
    Command command;
    CErrorRecorder recorder;
    HRESULT(*const kHandlers[])
    (TypeParam&) = {
        [](TypeParam&) -> HRESULT { ThrowError(ZO_ERROR(nullptr, "false", "broken", E_POINTER)); },
        [](TypeParam&) -> HRESULT { throw std::runtime_error("broken"); }};
    for (const auto handler : kHandlers)
    {
        TypeParam data(command.data);
        EXPECT_EQ(CScpiSinkFramework::RunCommand(data, handler), S_OK);
    }
    EXPECT_EQ(command.errors.queue, "2:-200;2:-200;");
}

TYPED_TEST(ScpiExecution, QueryOnlyAndNoQueryDependOnTheForm)
{
    for (const bool isQuery : {false, true})
    {
        Command command;
        command.data.m_bQuery = isQuery;
        TypeParam data(command.data);
        EXPECT_EQ(data.IsQuery(), isQuery);
        EXPECT_EQ(data.SetScpiError_QueryOnly(), isQuery ? 0 : 1);
        EXPECT_EQ(data.GetScpiError(), isQuery ? 0 : -100);
        EXPECT_EQ(data.GetScpiErrorText(), isQuery ? "" : "query only");
        EXPECT_EQ(data.SetScpiError_NoQuery(), isQuery ? 1 : 0);
        EXPECT_EQ(data.GetScpiError(), isQuery ? -100 : 0);
        if (isQuery)
        {
            EXPECT_EQ(data.GetScpiErrorText(), "no query");
        }
    }
}

TYPED_TEST(ScpiExecution, ErrorOperationsSetTheirCodes)
{
    Command command;
    TypeParam data(command.data);
    EXPECT_TRUE(data.SetScpiError_ParameterNotAllowed() == 1 && data.GetScpiError() == -108);
    EXPECT_TRUE(data.ScpiErrorMissingParameter() == 1 && data.GetScpiError() == -109);
    EXPECT_TRUE(data.ScpiErrorUnexpectedParameter() == 1 && data.GetScpiError() == -115);
    data.SetScpiExecutionError("lost");
    EXPECT_TRUE(data.SetScpiError(0) == 0 && data.GetScpiError() == 0);
    EXPECT_EQ(data.SetScpiExecutionError("disk"), 1);
    EXPECT_EQ(data.FinishCommandExecution(), 0);
    EXPECT_EQ(command.errors.queue, "2:-200disk;");
}

TEST(ScpiExecutionRecord, CodeAloneLeavesTheDetailText)
{
    Command command;
    CRecord record(command.data);
    record.SetScpiErrorEx(-200, "disk");
    EXPECT_EQ(record.SetScpiError(-222), 1);
    EXPECT_EQ(record.FinishCommandExecution(), 0);
    EXPECT_EQ(command.errors.queue, "2:-222disk;");
}

TEST(ScpiExecutionPool, EarlierErrorStaysUnlessReplaced)
{
    Command command;
    CPool pool(command.data);
    EXPECT_EQ(pool.SetScpiError(-222, "first", false), 1);
    EXPECT_EQ(pool.SetScpiError(-109, "second", false), 1);
    EXPECT_EQ(pool.GetScpiErrorText(), "first");
    EXPECT_EQ(pool.SetScpiError(-109, "second", true), 1);
    EXPECT_EQ(pool.GetScpiError(), -109);
}

TYPED_TEST(ScpiExecution, NumericSettingTakesNumbersAndSpecialWords)
{
    const std::tuple<tagZO_SCPI_PARAMETER, short, double> kRows[] = {{Number("7.5"), 0, 7.5},
                                                                     {Special(1), 0, 0},
                                                                     {Special(2), 0, 11},
                                                                     {Special(3), 0, 5},
                                                                     {Special(4), 0, 9},
                                                                     {Special(5), 0, 2},
                                                                     {Number("11.001"), -222, 5},
                                                                     {Number("-1E-9"), -222, 5},
                                                                     {Number("nan"), -222, 5},
                                                                     {Special(6), -224, 5}};
    CNumericSetting setting({0, 11, 5, 4, 3});
    for (const auto& [argument, error, value] : kRows)
    {
        SCOPED_TRACE(testing::Message() << argument.szText << argument.iSpecialCode);
        Command command({argument});
        TypeParam data(command.data);
        setting.Reset();
        EXPECT_EQ(setting.Handle(data), error != 0);
        EXPECT_EQ(data.GetScpiError(), error);
        EXPECT_EQ(setting.Value(), value);
    }
    Command command({Special(5)});
    for (const auto& [limits, error] :
         {std::pair(tagNumericLimits{3, 6, 5, 4}, -222), std::pair(tagNumericLimits{3, 6, 5}, -224)})
    {
        TypeParam data(command.data);
        EXPECT_EQ(CNumericSetting(limits).Apply(data), 1);
        EXPECT_EQ(data.GetScpiError(), error) << "a step beyond the limit, and no step";
    }
}

TYPED_TEST(ScpiExecution, NumericSettingAnswersItsValueOrALimit)
{
    const std::tuple<std::vector<tagZO_SCPI_PARAMETER>, double, const char*, short> kAnswers[] = {
        {{}, 5, "[5 5 0 0]", 0},
        {{}, 1.5E-6, "[5 1.5e-06 0 0]", 0},
        {{Special(1)}, 5, "[5 0 0 0]", 0},
        {{Special(2)}, 5, "[5 10 0 0]", 0},
        {{Special(4)}, 5, "", -224},
        {{Number("1")}, 5, "", -128},
    };
    for (const auto& [arguments, value, answer, error] : kAnswers)
    {
        Command command(arguments);
        command.data.m_bQuery = true;
        TypeParam data(command.data);
        CNumericSetting({0, 10, 5}, value).Handle(data);
        EXPECT_EQ(command.transcript.text, answer);
        EXPECT_EQ(data.GetScpiError(), error);
    }
}

} // namespace
} // namespace ZoVelkor
