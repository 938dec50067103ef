#include "CErrorRecorder.h"
#include "CNumericSetting.h"
#include "CScpiSinkFramework.h"
#include "ErrorRaising.h"
#include "ExecutionFakes.h"

#include <stdexcept>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Tests/SoftwarePlatform/ScpiSinkFrameworkTest")

/// Runs a test on both handler styles.
template <class TData>
class ScpiExecution : public testing::Test
{};
using BothStyles = testing::Types<CPool, CRecord>;
TYPED_TEST_SUITE(ScpiExecution, BothStyles);

TYPED_TEST(ScpiExecution, ResultIsMappedAndTheErrorDelivered)
{
    struct tagRow
    {
        char const* name;
        long result;
        short error;
        HRESULT returned;
        char const* delivered; ///< null: nothing
    };
    const tagRow kRows[] = {
        {"Done",            0,           0,    S_OK,    nullptr   },
        {"DoneWithError",   0,           -222, S_OK,    "2: -222 "},
        {"Error",           1,           -222, S_OK,    "2: -222 "},
        {"ErrorWithout",    1,           0,    S_OK,    nullptr   },
        {"Aborted",         E_ABORT,     0,    E_ABORT, nullptr   },
        {"AbortedUnsigned", 0x80000007L, 0,    E_ABORT, nullptr   },
        {"AbortedError",    E_ABORT,     -108, E_ABORT, "2: -108 "},
        {"Failed",          E_FAIL,      0,    S_OK,    "2: -200 "},
        {"FailedError",     E_FAIL,      -109, S_OK,    "2: -109 "},
        {"OtherSuccess",    2,           0,    S_OK,    "2: -200 "}
    };
    for (tagRow const& row : kRows)
    {
        SCOPED_TRACE(row.name);
        tagCommand command;
        TypeParam data(command.data);
        data.SetScpiError(row.error);
        EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(row.result, data), row.returned);
        const std::vector<std::string> expected(row.delivered != nullptr ? 1 : 0,
                                                row.delivered != nullptr ? row.delivered : "");
        EXPECT_EQ(command.errors.m_queue, expected);
        EXPECT_EQ(data.FinishCommandExecution(), 0);
        EXPECT_EQ(command.errors.m_queue, expected) << "delivered twice";
    }
}

TYPED_TEST(ScpiExecution, UndeliverableErrorIsReportedAndDoesNotShowInTheResult)
{
    struct tagRow
    {
        char const* condition; ///< of the first report; the closing one follows
        char const* message;
        void (*spoil)(tagCommand&);
    };
    const tagRow kRows[] = {
        {"m_pScpiManager != NULL",
         "Fatal missing interface", [](tagCommand& command) { command.data.m_pContext = nullptr; }        },
        {"m_pScpiManager != NULL",
         "Fatal missing interface", [](tagCommand& command) { command.data.m_pContext = &command.output; }},
        {"m_iRemotePath >= 0",
         "Invalid remote path",     [](tagCommand& command) { command.data.m_iRemotePath = -1; }          },
        {"pScpiErrorManagement != NULL",
         "Fatal missing interface", [](tagCommand& command) { command.manager.m_bErrors = false; }        },
    };
    for (tagRow const& row : kRows)
    {
        SCOPED_TRACE(row.condition);
        tagCommand command;
        row.spoil(command);
        CErrorRecorder recorder;
        TypeParam data(command.data);
        data.SetScpiError(-222);
        EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(1, data), S_OK);
        const auto entries = recorder.Take();
        ASSERT_EQ(entries.size(), 2U);
        EXPECT_STREQ(entries[0].report.condition, row.condition);
        EXPECT_EQ(entries[0].report.message, row.message);
        EXPECT_TRUE(entries[0].thrown);
        EXPECT_STREQ(entries[1].report.condition, "hr == S_OK");
        EXPECT_EQ(entries[1].report.message, "Fatal scpi execution error");
        EXPECT_STREQ(entries[1].report.sourceUnit, "Remote/Src/CScpiSinkFramework");
        EXPECT_FALSE(entries[1].thrown);
    }
}

TYPED_TEST(ScpiExecution, RefusedHandOverSetsTheExecutionError)
{
    tagCommand command;
    command.errors.m_result = E_FAIL;
    CErrorRecorder recorder;
    TypeParam data(command.data);
    data.SetScpiError(-222);
    EXPECT_EQ(CScpiSinkFramework::FinishCommandExecution(0, data), S_OK);
    EXPECT_EQ(data.GetScpiError(), -200);
    EXPECT_EQ(recorder.Take().size(), 1U);
}

TYPED_TEST(ScpiExecution, ExceptionOfAHandlerBecomesAnExecutionError)
{
    tagCommand command;
    CErrorRecorder recorder;
    for (int kind = 0; kind < 2; ++kind)
    {
        TypeParam data(command.data);
        const auto handler = [kind](TypeParam&) -> HRESULT {
            if (kind == 0)
            {
                ThrowError(ZO_ERROR(nullptr, "false", "broken", E_POINTER));
            }
            throw std::runtime_error("broken");
        };
        EXPECT_EQ(CScpiSinkFramework::RunCommand(data, handler), S_OK);
    }
    EXPECT_EQ(command.errors.m_queue, (std::vector<std::string>{"2: -200 ", "2: -200 "}));
}

TYPED_TEST(ScpiExecution, QueryOnlyAndNoQueryDependOnTheForm)
{
    for (const bool isQuery : {false, true})
    {
        tagCommand command;
        command.data.m_bQuery = isQuery;
        TypeParam data(command.data);
        EXPECT_EQ(data.IsQuery(), isQuery);
        EXPECT_EQ(data.SetScpiError_QueryOnly(), isQuery ? 0 : 1);
        EXPECT_EQ(data.GetScpiError(), isQuery ? 0 : -100);
        EXPECT_EQ(data.GetScpiErrorText(), isQuery ? "" : "query only");
        EXPECT_EQ(data.SetScpiError_NoQuery(), isQuery ? 1 : 0);
        EXPECT_EQ(data.GetScpiError(), isQuery ? -100 : 0);
        EXPECT_EQ(data.GetScpiErrorText(), isQuery ? "no query" : "");
    }
}

TYPED_TEST(ScpiExecution, ErrorOperationsSetTheirCodes)
{
    tagCommand command;
    TypeParam data(command.data);
    EXPECT_EQ(data.SetScpiError_ParameterNotAllowed(), 1);
    EXPECT_EQ(data.GetScpiError(), -108);
    EXPECT_EQ(data.ScpiErrorMissingParameter(), 1);
    EXPECT_EQ(data.GetScpiError(), -109);
    EXPECT_EQ(data.ScpiErrorUnexpectedParameter(), 1);
    EXPECT_EQ(data.GetScpiError(), -115);
    EXPECT_EQ(data.SetScpiExecutionError("disk \xE9"), 1);
    EXPECT_EQ(data.SetScpiError(0), 0);
    EXPECT_EQ(data.GetScpiErrorText(), "");
}

TEST(ScpiExecutionPool, EarlierErrorStaysUnlessReplaced)
{
    tagCommand command;
    CPool pool(command.data);
    EXPECT_EQ(pool.SetScpiError(-222, "first", false), 1);
    EXPECT_EQ(pool.SetScpiError(-109, "second", false), 1);
    EXPECT_EQ(pool.GetScpiErrorText(), "first");
    EXPECT_EQ(pool.SetScpiError(-109, "second", true), 1);
    EXPECT_EQ(pool.GetScpiError(), -109);
}

TEST(ScpiExecutionRecord, DetailTextIsDelivered)
{
    tagCommand command;
    CRecord record(command.data);
    EXPECT_EQ(record.SetScpiErrorEx(-222, "limit is 5"), 1);
    CScpiSinkFramework::FinishCommandExecution(1, record);
    EXPECT_EQ(command.errors.m_queue, std::vector<std::string>{"2: -222 limit is 5"});
}

TEST(ScpiSinkFramework, StringFormDoublesQuotes)
{
    EXPECT_EQ(CScpiSinkFramework::GetScpiStringFormat(""), R"("")");
    EXPECT_EQ(CScpiSinkFramework::GetScpiStringFormat(R"(a"b)"), R"("a""b")");
    EXPECT_EQ(CScpiSinkFramework::GetScpiStringFormat(R"("")"), R"("""""")");
}

TYPED_TEST(ScpiExecution, NumericSettingTakesNumbersAndSpecialWords)
{
    struct tagRow
    {
        char const* name;
        std::vector<tagZO_SCPI_PARAMETER> arguments;
        short error;
        double value;
    };
    const tagRow kRows[] = {
        {"Number",     {Number("7.5")},            0,    7.5},
        {"Minimum",    {Special(1)},               0,    0  },
        {"Maximum",    {Special(2)},               0,    10 },
        {"Default",    {Special(3)},               0,    5  },
        {"Up",         {Special(4)},               0,    10 },
        {"Down",       {Special(5)},               0,    0  },
        {"AboveLimit", {Number("10.001")},         -222, 5  },
        {"BelowLimit", {Number("-1E-9")},          -222, 5  },
        {"NotANumber", {Number("nan")},            -222, 5  },
        {"Word",       {Special(6)},               -224, 5  },
        {"Text",       {Parameter(4, "7")},        -158, 5  },
        {"None",       {},                         -109, 5  },
        {"Two",        {Number("1"), Number("2")}, -115, 5  }
    };
    for (tagRow const& row : kRows)
    {
        SCOPED_TRACE(row.name);
        tagCommand command(row.arguments);
        TypeParam data(command.data);
        CNumericSetting setting({0, 10, 5, 5});
        EXPECT_EQ(setting.Handle(data), row.error != 0);
        EXPECT_EQ(data.GetScpiError(), row.error);
        EXPECT_EQ(setting.Value(), row.value);
    }
    tagCommand command({Special(4)});
    TypeParam data(command.data);
    CNumericSetting setting({0, 6, 5, 5});
    setting.Apply(data);
    EXPECT_EQ(data.GetScpiError(), -222) << "a step beyond the limit";
    CNumericSetting withoutStep({0, 6, 5});
    withoutStep.Apply(data);
    EXPECT_EQ(data.GetScpiError(), -224) << "no step";
}

TYPED_TEST(ScpiExecution, NumericSettingAnswersItsValueOrALimit)
{
    const std::pair<std::vector<tagZO_SCPI_PARAMETER>, double> kAnswers[] = {
        {{},           5 },
        {{Special(1)}, 1 },
        {{Special(2)}, 10},
        {{Special(3)}, 5 }
    };
    for (auto const& [arguments, expected] : kAnswers)
    {
        tagCommand command(arguments);
        command.data.m_bQuery = true;
        TypeParam data(command.data);
        EXPECT_EQ(CNumericSetting({1, 10, 5}).Handle(data), 0);
        EXPECT_NE(command.output.m_text.find(std::to_string(expected)), std::string::npos);
    }
    const std::pair<tagZO_SCPI_PARAMETER, short> kRefused[] = {
        {Special(4),  -224},
        {Number("1"), -128}
    };
    for (auto const& [argument, error] : kRefused)
    {
        tagCommand command({argument});
        TypeParam data(command.data);
        EXPECT_EQ(CNumericSetting({1, 10, 5}).Answer(data), 1);
        EXPECT_EQ(data.GetScpiError(), error);
        EXPECT_EQ(command.output.m_text, "");
    }
}

} // namespace
} // namespace ZoVelkor
