#include "ExecutionFakes.h"
#include "ZoString.h"

#include <tuple>

namespace ZoVelkor
{
namespace
{

#define ZO_POOL(call) [](CPool& p) { return p.call; }
#define ZO_RECORD(call) [](CRecord& r) { return r.call; }

constexpr double kValues[] = {1.5, 2};

/// A response, what it writes, and what it writes when it is given again: by default the same behind a comma.
template <class TData>
struct ResponseCase
{
    HRESULT (*response)(TData&);
    std::string text;
    std::string again = "," + text;
};

// The formatter takes the commas of calls for column ends.
// clang-format off
const ResponseCase<CPool> kPoolCases[] = {
    {ZO_POOL(DoubleResponse(0.5)), "[5 0.5 0 0]"},         {ZO_POOL(NumericResponse(0.25F)), "[4 0.25 0 0]"},
    {ZO_POOL(NumericResponse("true")), "[num 1]"},         {ZO_POOL(NumericResponse("false")), "[num 0]"},
    {ZO_POOL(NumericResponse(std::string("TRUE"))), "[num TRUE]"},
    {ZO_POOL(NumericResponse(-2147483648L)), "[3 -2.14748e+09 0 0]"},
    {ZO_POOL(NumericResponseEx(CComVariant(5), ZO_FORMAT_HEX, 2)), "[3 5 4 2]"},
    {ZO_POOL(IntegerResponse(-7)), "[3 -7 0 0]"},          {ZO_POOL(IntegerResponse("12.9")), "[3 12 0 0]"},
    {ZO_POOL(IntegerResponse(CZoString("12"))), "[3 12 0 0]"},
    {ZO_POOL(IntegerResponse(CComVariant(12.0))), "[3 12 0 0]"},
    {ZO_POOL(BooleanResponse(true)), "1"},                 {ZO_POOL(BooleanResponse(false)), "0"},
    {ZO_POOL(BooleanResponse("true")), "1"},               {ZO_POOL(BooleanResponse("0")), "0"},
    {ZO_POOL(BooleanResponse(CZoString("2"))), "1"},       {ZO_POOL(BooleanResponse(CComVariant(2))), "1"},
    {ZO_POOL(StringResponse(std::string("a\"b"))), "[str a\"b]"},
    {ZO_POOL(StringResponse(static_cast<const char*>(nullptr))), "[str ]"},
    {ZO_POOL(StringResponse(L"w")), "[str w]"},           {ZO_POOL(StringResponse(CZoString("z"))), "[str z]"},
    {ZO_POOL(ArbitraryResponse("x,yz", 3)), "x,y"},        {ZO_POOL(ArbitraryResponse(std::string("s"))), "s"},
    {ZO_POOL(ArbitraryResponse(CZoString("z"))), "z"},     {ZO_POOL(ArbitraryResponse("c")), "c"},
    {ZO_POOL(BlockResponse("a,c", 3)), "#13a,c"},          {ZO_POOL(BlockResponse(nullptr, 0)), "#10"},
    {ZO_POOL(OutputEnumValue(-3)), "-3"},
    {ZO_POOL(OutputData(nullptr, ZO_INTERPRETATION_ASCII)), "[data 1 0]", "[data 1 -1]"},
    {ZO_POOL(OutputScatteredData(3, nullptr, nullptr)), "[scattered 3 0]", "[scattered 3 -1]"},
};

const ResponseCase<CRecord> kRecordCases[] = {
    {ZO_RECORD(DoubleResponse(0.5)), "0.500000"},          {ZO_RECORD(BooleanResponse(false)), "0"},
    {ZO_RECORD(DoubleResponse(-1e20)), "-100000000000000000000.000000"},
    {ZO_RECORD(IntegerResponse(2147483647)), "2147483647"},
    {ZO_RECORD(NumericResponse(0.5)), "[5 0.5 0 0]"},      {ZO_RECORD(NumericResponse(1.5e-6)), "[5 1.5e-06 0 0]"},
    {ZO_RECORD(StringResponse("a\"b")), R"("a""b")"},      {ZO_RECORD(StringResponse("\"\"")), R"("""""")"},
    {ZO_RECORD(ArbitraryResponse("x,yz", 3)), "x,y"},      {ZO_RECORD(BlockResponse("a,c", 3)), "#13a,c"},
    {ZO_RECORD(BlockResponse(nullptr, 0)), "#10"},
    {ZO_RECORD(OutputFormatData(kValues, 2)), "[reals 2 1.5]"},
};

// clang-format on

/// Gives each response twice; then again, with each write of the second response failing in turn.
template <class TData, class TCases>
void ExpectResponses(const TCases& cases)
{
    for (const auto& row : cases)
    {
        SCOPED_TRACE(row.text);
        int failing = 0;
        for (bool hasFailed = true; hasFailed; ++failing)
        {
            Command command;
            TData data(command.data);
            EXPECT_EQ(row.response(data), 0);
            command.transcript.FailAfter(failing);
            const HRESULT result = row.response(data);
            hasFailed = command.transcript.HasFailed();
            EXPECT_EQ(result, hasFailed ? 1 : 0);
            EXPECT_EQ(data.GetScpiError(), hasFailed ? -200 : 0) << "write " << failing;
            EXPECT_TRUE(hasFailed || command.transcript.text == row.text + row.again)
                << command.transcript.text;
        }
        EXPECT_GT(failing, 1);
    }
}

TEST(HandlerResponse, ItemsAreJoinedAndEveryRefusalIsAnExecutionError)
{
    ExpectResponses<CPool>(kPoolCases);
    ExpectResponses<CRecord>(kRecordCases);
}

TEST(HandlerResponse, BlockHeaderCountsTheDigitsOfTheLength)
{
    for (const auto& [length, header] : {std::pair(1234L, "#41234"),
                                         std::pair(100000L, "#6100000"),
                                         std::pair(2147483647L, "#102147483647")})
    {
        Command command;
        OnBothStyles(command, [bytes = length](auto& data) { EXPECT_EQ(data.BlockResponse("x", bytes), 0); });
        EXPECT_EQ(command.transcript.text, std::string(header) + header);
    }
}

TEST(HandlerResponse, RefusedBlockCarriesTheTextOfTheOutputBuffer)
{
    for (const int failing : {0, 1})
    {
        Command command;
        OnBothStyles(command, [&](auto& data) {
            command.transcript.FailAfter(failing);
            data.BlockResponse("ab", 2);
            EXPECT_EQ(data.GetScpiErrorText(), "queue is full");
            command.transcript.text.clear();
            data.BooleanResponse(true);
            EXPECT_EQ(command.transcript.text, ",1") << "the separator stays pending";
        });
    }
}

TEST(HandlerResponse, UnusableValuesAreExecutionErrors)
{
    // clang-format off
    constexpr HRESULT (*kPool[])(CPool&) = {
        ZO_POOL(IntegerResponse("2147483648")),         ZO_POOL(IntegerResponse("12x")),
        ZO_POOL(IntegerResponse("")),                   ZO_POOL(IntegerResponse(CComVariant("abc"))),
        ZO_POOL(BooleanResponse("maybe")),              ZO_POOL(BooleanResponse(CComVariant("maybe")))};
    // clang-format on
    Command command;
    for (const auto& response : kPool)
    {
        CPool pool(command.data);
        EXPECT_EQ(response(pool), 1);
        EXPECT_EQ(pool.GetScpiError(), -200) << &response - kPool;
    }
    OnBothStyles(command, [](auto& data) {
        EXPECT_EQ(data.IntegerResponse(2147483648L), 1);
        EXPECT_EQ(data.ArbitraryResponse("a", -1), 1);
        EXPECT_EQ(data.BlockResponse(nullptr, 1), 1);
        EXPECT_EQ(data.GetScpiError(), -200);
    });
    EXPECT_EQ(CRecord(command.data).OutputFormatData(kValues, -1), 1);
    EXPECT_EQ(command.transcript.text, "");
}

TEST(HandlerResponse, MissingServicesAreReported)
{
    Command command;
    command.format.m_present = false;
    command.data.m_pOutputBuffer = nullptr;
    CErrorRecorder recorder;
    CPool pool(command.data);
    CRecord record(command.data);
    pool.NumericResponse(1);
    record.OutputFormatData(kValues, 1);
    CPool(command.data).BooleanResponse(true);
    EXPECT_THROW(CRecord(command.data).BooleanResponse(true), CShellError);
    pool.OutputRegisterValue("STATus:OPERation");
    record.OutputRegisterValue("STATus:OPERation", 0);
    command.status.m_present = false;
    pool.OutputRegisterValue("STATus:OPERation");
    record.OutputRegisterValue("STATus:OPERation", 0);

    EXPECT_EQ(Lines(recorder.Take()),
              "pScpiSubsystemFormat != NULL|Interface missing\n"
              "pScpiSubsystemFormat != NULL|Interface missing|thrown\n"
              "pScpiOutputBuffer != NULL|Interface missing\n"
              "m_pOutputBuffer != NULL|Interface missing|thrown\n"
              "hResult == S_OK|Scpi status register command error\n"
              "*ppRegister != NULL|Scpi status register command error|thrown\n"
              "hResult == S_OK|Scpi status register command error\n"
              "pStatusManagement != NULL|Scpi status register command error|thrown\n");
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_EQ(record.GetScpiError(), -200);
}

TEST(HandlerResponse, ServicesAreAskedOnceAndNotBeforeTheyAreNeeded)
{
    Command command;
    CPool pool(command.data);
    CRecord record(command.data);
    pool.BooleanResponse(true);
    record.IntegerResponse(1);
    EXPECT_EQ(command.m_queries, 0);
    pool.NumericResponse(1);
    pool.NumericResponse(2);
    EXPECT_NE(pool.GetErrorManagement().Get(), nullptr);
    EXPECT_EQ(command.m_queries, 1);
}

TEST(HandlerResponse, PendingSeparatorIsWrittenOnce)
{
    Command command;
    CPool pool(command.data);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 0);
    pool.BooleanResponse(true);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 0);
    EXPECT_FALSE(pool.GetInsertOutputSeparator());
    pool.BooleanResponse(false);
    EXPECT_EQ(command.transcript.text, "1,0");
    command.transcript.FailAfter(0);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    pool.ClearInsertOutputSeparator();
    EXPECT_FALSE(pool.GetInsertOutputSeparator());
}

TEST(HandlerResponse, OutputFilterIsDefinedWhenNoneIsActive)
{
    struct Open : CPool
    {
        using CPool::CPool;
        using CPool::RegExFilter;
    };
    Command command;
    Open pool(command.data);
    EXPECT_TRUE(pool.IsOutputFilterDefined());
    constexpr HRESULT (*kEnds[])(CPool&) = {ZO_POOL(SetOutputFilterString("")),
                                            ZO_POOL(SetOutputFilterRegEx("")),
                                            [](CPool& p) { return p.ClearOutputFilter(), S_OK; },
                                            ZO_POOL(SetOutputFilterRegEx("[0-9]+"))};
    for (const auto end : kEnds)
    {
        EXPECT_EQ(pool.GetScpiError(), 0);
        EXPECT_EQ(pool.SetOutputFilterString("abc"), 0);
        EXPECT_FALSE(pool.IsOutputFilterDefined());
        EXPECT_TRUE(pool.RunOutputFilter("xabcx"));
        EXPECT_FALSE(pool.RunOutputFilter("ABC"));
        const HRESULT result = end(pool);
        EXPECT_EQ(result, pool.GetScpiError() != 0);
        EXPECT_TRUE(pool.IsOutputFilterDefined());
        EXPECT_TRUE(pool.RunOutputFilter("ABC"));
    }
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_EQ(pool.GetScpiErrorText(), "invalid regular expression ([0-9]+)");
    EXPECT_FALSE(pool.RegExFilter("1"));
}

TEST(HandlerResponse, BlockDataErrorNamesTheDataFormat)
{
    const std::tuple<bool, int, const char*, const char*> kRows[] = {
        {true, 9, "bad (%FORMDATA%) %FORMDATA%", "bad (REAL,32) REAL,32"},
        {false, 9, "bad (%FORMDATA%)x()", "bad x"},
        {true, 0, "bad (%FORMDATA%)", "bad "}};
    for (const auto& [hasFormat, failing, text, expected] : kRows)
    {
        Command command;
        command.format.m_present = hasFormat;
        command.transcript.FailAfter(failing);
        CPool pool(command.data);
        EXPECT_EQ(pool.SetScpiBlockDataError(text), 1);
        EXPECT_EQ(pool.GetScpiError(), -160);
        EXPECT_EQ(pool.GetScpiErrorText(), expected);
    }
}

} // namespace
} // namespace ZoVelkor
