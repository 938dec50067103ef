#include "CErrorRecorder.h"
#include "ExecutionFakes.h"
#include "ZoString.h"

#include <functional>

namespace ZoVelkor
{
namespace
{

using PoolResponse = HRESULT (*)(CPool&);
using RecordResponse = HRESULT (*)(CRecord&);

struct tagResponseCase
{
    char const* name;
    PoolResponse pool;
    RecordResponse record; ///< null: the pool alone has it
    char const* poolText;  ///< of the response given twice
    char const* recordText = "";
};

constexpr double kValues[] = {1.5, 2};

const tagResponseCase kResponseCases[] = {
    {"Double",
     [](CPool& p) { return p.DoubleResponse(0.5); },
     [](CRecord& r) { return r.DoubleResponse(0.5); },
     "[R8 0.500000],[R8 0.500000]",                                                                                                                                                                                                                "0.500000,0.500000"},
    {"NumericFloat",
     [](CPool& p) { return p.NumericResponse(0.5F); },
     [](CRecord& r) { return r.DoubleResponse(-1e20); },
     "[R4 0.500000],[R4 0.500000]",                                                                                                                                                                                           "-100000000000000000000.000000,-100000000000000000000.000000"},
    {"Integer",
     [](CPool& p) { return p.IntegerResponse(-7); },
     [](CRecord& r) { return r.IntegerResponse(-7); },
     "[I4 -7.000000],[I4 -7.000000]",                                                                                                                                                                                               "-7,-7"},
    {"IntegerLimit",
     [](CPool& p) { return p.NumericResponse(-2147483648L); },
     [](CRecord& r) { return r.IntegerResponse(2147483647); },
     "[I4 -2147483648.000000],[I4 -2147483648.000000]","2147483647,2147483647"},
    {"NumericForm",
     [](CPool& p) { return p.NumericResponseEx(CComVariant(5), ZO_FORMAT_HEX, 4); },
     nullptr,                                                                                       "[I4:4:4 5.000000],[I4:4:4 5.000000]"                                                                                                                                                                           },
    {"NumericTextTrue", [](CPool& p) { return p.NumericResponse("true"); },                                                                                  nullptr,                             "[num 1],[num 1]"},
    {"NumericTextFalse",                            [](CPool& p) { return p.NumericResponse("false"); },nullptr,"[num 0],[num 0]"                                                                                                                   },
    {"NumericText",
     [](CPool& p) { return p.NumericResponse(std::string("TRUE")); },
     nullptr,                                                                                                                                       "[num TRUE],[num TRUE]"                                                                                             },
    {"IntegerText",
     [](CPool& p) { return p.IntegerResponse("12.9"); },
     nullptr,"[I4 12.000000],[I4 12.000000]"},
    {"IntegerZoText",
     [](CPool& p) { return p.IntegerResponse(CZoString("12")); },
     nullptr,                                                                                                                               "[I4 12.000000],[I4 12.000000]"                                                                                                                                                                                                                                 },
    {"IntegerVariant",
     [](CPool& p) { return p.IntegerResponse(CComVariant(12.0)); },
     nullptr,"[I4 12.000000],[I4 12.000000]"},
    {"BooleanTrue",
     [](CPool& p) { return p.BooleanResponse(true); },
     [](CRecord& r) { return r.BooleanResponse(true); },
     "1,1",                                                                                                                                                                                                                                                                                                                                                                      "1,1"},
    {"BooleanFalse",
     [](CPool& p) { return p.BooleanResponse(false); },
     [](CRecord& r) { return r.BooleanResponse(false); },
     "0,0","0,0"},
    {"BooleanTexts",
     [](CPool& p) {
         p.BooleanResponse("true");
         p.BooleanResponse(std::string("0"));
         return p.BooleanResponse(CZoString("2"));
     },                                        nullptr,
     "1,0,1,1,0,1"                                                                                                                                                                                                                                       },
    {"BooleanVariant",                                                                              [](CPool& p) { return p.BooleanResponse(CComVariant(2)); },                                                                         nullptr,                                                                                                                                                                "1,1"                                                                                                                                                                                           },
    {"String",
     [](CPool& p) { return p.StringResponse(std::string("a\"b\0", 4)); },
     [](CRecord& r) { return r.StringResponse("a\"b"); },
     "[str a\"b],[str a\"b]","\"a\"\"b\",\"a\"\"b\""},
    {"StringForms",
     [](CPool& p) {
         p.StringResponse(static_cast<char const*>(nullptr));
         p.StringResponse(L"w");
         return p.StringResponse(CZoString("z"));
     },                                                                               [](CRecord& r) { return r.StringResponse(""); },
     "[str ],[str w],[str z],[str ],[str w],[str z]",                                                                                                                                                                                          "\"\",\"\""},
    {"Arbitrary",
     [](CPool& p) { return p.ArbitraryResponse("x,y", 3); },
     [](CRecord& r) { return r.ArbitraryResponse("x,y", 3); },
     "x,y,x,y",                                                                                                                                                                                                                                            "x,y,x,y"},
    {"ArbitraryForms",
     [](CPool& p) {
         p.ArbitraryResponse(std::string("s"));
         p.ArbitraryResponse(CZoString("z"));
         return p.ArbitraryResponse("c");
     },                             nullptr,
     "s,z,c,s,z,c"},
    {"Block",
     [](CPool& p) { return p.BlockResponse("a,c", 3); },
     [](CRecord& r) { return r.BlockResponse("a,c", 3); },
     "#13a,c,#13a,c","#13a,c,#13a,c"},
    {"EmptyBlock",
     [](CPool& p) { return p.BlockResponse(nullptr, 0); },
     [](CRecord& r) { return r.BlockResponse(nullptr, 0); },
     "#10,#10",                                                                                                                                                                                                                                                     "#10,#10"},
    {"EnumValue",                             [](CPool& p) { return p.OutputEnumValue(-3); },                                     nullptr,                                                                                                                                                  "-3,-3"                                                                                                                                                                                                                                 },
    {"Data",
     [](CPool& p) { return p.OutputData(nullptr, ZO_INTERPRETATION_ASCII); },
     [](CRecord& r) { return r.OutputFormatData(kValues, 2); },
     "[data 1 0][data 1 -1]",                                                                                                                                                                                                                                    "[doubles 2 1.500000],[doubles 2 1.500000]"},
    {"Scattered",
     [](CPool& p) { return p.OutputScatteredData(3, nullptr, nullptr); },
     nullptr,                                                                        "[scattered 3 0][scattered 3 -1]"                                                                                                      },
};

std::string WithoutNuls(std::string text)
{
    std::erase(text, '\0');
    return text;
}

TEST(HandlerResponse, ItemsAreJoinedBySeparators)
{
    for (tagResponseCase const& row : kResponseCases)
    {
        SCOPED_TRACE(row.name);
        tagCommand command;
        CPool pool(command.data);
        EXPECT_EQ(row.pool(pool), 0);
        EXPECT_TRUE(pool.GetInsertOutputSeparator());
        EXPECT_EQ(row.pool(pool), 0);
        EXPECT_EQ(WithoutNuls(command.output.m_text), row.poolText);
        if (row.record != nullptr)
        {
            command.output.m_text.clear();
            CRecord record(command.data);
            EXPECT_EQ(row.record(record), 0);
            EXPECT_EQ(row.record(record), 0);
            EXPECT_EQ(command.output.m_text, row.recordText);
        }
    }
}

/// Lets each write of the second response fail in turn.
template <class TData>
void ExpectExecutionErrorForEveryRefusal(HRESULT (*response)(TData&))
{
    for (int failing = 0;; ++failing)
    {
        tagCommand command;
        TData data(command.data);
        response(data);
        command.fault.FailAfter(failing);
        const HRESULT hr = response(data);
        if (command.fault.CallsSince() < 0)
        {
            EXPECT_GT(failing, 0);
            return;
        }
        EXPECT_EQ(data.GetScpiError(), -200) << "call " << failing;
        EXPECT_TRUE(hr == 1 || command.fault.CallsSince() > 0);
    }
}

TEST(HandlerResponse, EveryRefusalBecomesAnExecutionError)
{
    for (tagResponseCase const& row : kResponseCases)
    {
        SCOPED_TRACE(row.name);
        ExpectExecutionErrorForEveryRefusal(row.pool);
        if (row.record != nullptr)
        {
            ExpectExecutionErrorForEveryRefusal(row.record);
        }
    }
}

TEST(HandlerResponse, BlockHeaderCountsTheDigitsOfTheLength)
{
    constexpr std::pair<long, char const*> kRows[] = {
        {9,          "#19"          },
        {10,         "#210"         },
        {1234,       "#41234"       },
        {100000,     "#6100000"     },
        {2147483647, "#102147483647"}
    };
    for (auto const& [length, header] : kRows)
    {
        tagCommand command;
        command.output.m_bIgnoreBinary = true;
        const char byte = 'x';
        EXPECT_EQ(CPool(command.data).BlockResponse(&byte, length), 0);
        EXPECT_EQ(CRecord(command.data).BlockResponse(&byte, length), 0);
        EXPECT_EQ(command.output.m_text, std::string(header) + header);
    }
}

TEST(HandlerResponse, RefusedBlockCarriesTheTextOfTheOutputBuffer)
{
    for (int failing : {0, 1})
    {
        tagCommand command;
        CPool pool(command.data);
        CRecord record(command.data);
        command.fault.FailAfter(failing);
        EXPECT_EQ(pool.BlockResponse("ab", 2), 1);
        EXPECT_EQ(pool.GetScpiErrorText(), "queue is full");
        EXPECT_TRUE(pool.GetInsertOutputSeparator());
        command.fault.FailAfter(failing);
        EXPECT_EQ(record.BlockResponse("ab", 2), 1);
        EXPECT_EQ(record.GetScpiErrorText(), "queue is full");
    }
}

TEST(HandlerResponse, UnusableValuesAreExecutionErrors)
{
    constexpr long kTooLarge = 2147483648L;
    const std::function<HRESULT(CPool&)> kPool[] = {
        [](CPool& p) { return p.IntegerResponse(kTooLarge); },
        [](CPool& p) { return p.IntegerResponse("2147483648"); },
        [](CPool& p) { return p.IntegerResponse("12x"); },
        [](CPool& p) { return p.IntegerResponse(""); },
        [](CPool& p) { return p.IntegerResponse(CComVariant("abc")); },
        [](CPool& p) { return p.BooleanResponse("maybe"); },
        [](CPool& p) { return p.BooleanResponse(CComVariant("maybe")); },
        [](CPool& p) { return p.ArbitraryResponse("a", -1); },
        [](CPool& p) { return p.BlockResponse("a", -1); },
        [](CPool& p) { return p.BlockResponse(nullptr, 1); },
    };
    const std::function<HRESULT(CRecord&)> kRecord[] = {
        [](CRecord& r) { return r.IntegerResponse(kTooLarge); },
        [](CRecord& r) { return r.ArbitraryResponse(nullptr, 1); },
        [](CRecord& r) { return r.BlockResponse("a", -1); },
        [](CRecord& r) { return r.OutputFormatData(kValues, -1); },
    };
    tagCommand command;
    for (auto const& response : kPool)
    {
        CPool pool(command.data);
        EXPECT_EQ(response(pool), 1);
        EXPECT_EQ(pool.GetScpiError(), -200) << &response - kPool;
    }
    for (auto const& response : kRecord)
    {
        CRecord record(command.data);
        EXPECT_EQ(response(record), 1);
        EXPECT_EQ(record.GetScpiError(), -200) << &response - kRecord;
    }
    EXPECT_EQ(command.output.m_text, "");
}

TEST(HandlerResponse, MissingServicesAreReported)
{
    tagCommand command;
    command.manager.m_bFormat = false;
    command.data.m_pOutputBuffer = nullptr;
    CErrorRecorder recorder;
    CPool pool(command.data);
    CRecord record(command.data);
    EXPECT_EQ(pool.NumericResponse(1), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_EQ(record.OutputFormatData(kValues, 1), 1);
    EXPECT_EQ(record.GetScpiError(), -200);
    const auto entries = recorder.Take();
    ASSERT_EQ(entries.size(), 2U);
    for (auto const& entry : entries)
    {
        EXPECT_EQ(entry.report.message, "Interface missing");
        EXPECT_STREQ(entry.report.condition, "pScpiSubsystemFormat != NULL");
    }
    CPool other(command.data);
    EXPECT_EQ(other.BooleanResponse(true), 1);
    EXPECT_EQ(other.GetScpiError(), -200);
    EXPECT_THROW(CRecord(command.data).BooleanResponse(true), CShellError);
}

TEST(HandlerResponse, ServicesAreAskedOnceAndNotBeforeTheyAreNeeded)
{
    tagCommand command;
    CPool pool(command.data);
    CRecord record(command.data);
    pool.BooleanResponse(true);
    record.IntegerResponse(1);
    EXPECT_EQ(command.manager.m_queries, 0);
    pool.NumericResponse(1);
    pool.NumericResponse(2);
    EXPECT_EQ(command.manager.m_queries, 1);
}

TEST(HandlerResponse, PendingSeparatorIsWrittenOnce)
{
    tagCommand command;
    CPool pool(command.data);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 0);
    pool.NumericResponse(1);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 0);
    EXPECT_FALSE(pool.GetInsertOutputSeparator());
    pool.NumericResponse(2);
    EXPECT_EQ(command.output.m_text, "[I4 1.000000],[I4 2.000000]");
    command.fault.FailAfter(0);
    EXPECT_EQ(pool.PendingDataSeparatorResponse(), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    pool.ClearInsertOutputSeparator();
    EXPECT_FALSE(pool.GetInsertOutputSeparator());
}

TEST(HandlerResponse, OutputFilterIsDefinedWhenNoneIsActive)
{
    tagCommand command;
    CPool pool(command.data);
    EXPECT_TRUE(pool.IsOutputFilterDefined());
    EXPECT_EQ(pool.SetOutputFilterString("abc"), 0);
    EXPECT_FALSE(pool.IsOutputFilterDefined());
    EXPECT_TRUE(pool.RunOutputFilter("xabcx"));
    EXPECT_FALSE(pool.RunOutputFilter("ABC"));
    EXPECT_EQ(pool.SetOutputFilterString(""), 0);
    EXPECT_TRUE(pool.IsOutputFilterDefined());
    EXPECT_TRUE(pool.RunOutputFilter("ABC"));
    pool.SetOutputFilterString("abc");
    pool.ClearOutputFilter();
    EXPECT_TRUE(pool.IsOutputFilterDefined());
}

TEST(HandlerResponse, RegularExpressionIsRefusedAndKeepsEveryLine)
{
    tagCommand command;
    CPool pool(command.data);
    pool.SetOutputFilterString("abc");
    EXPECT_EQ(pool.SetOutputFilterRegEx(""), 0);
    EXPECT_EQ(pool.GetScpiError(), 0);
    EXPECT_EQ(pool.SetOutputFilterRegEx("[0-9]+"), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_EQ(pool.GetScpiErrorText(), "invalid regular expression ([0-9]+)");
    EXPECT_TRUE(pool.RunOutputFilter("none"));
    EXPECT_TRUE(pool.IsOutputFilterDefined());

    struct tagOpen : CPool
    {
        using CPool::CPool;
        using CPool::RegExFilter;
    };
    EXPECT_FALSE(tagOpen(command.data).RegExFilter("1"));
}

TEST(HandlerResponse, BlockDataErrorNamesTheDataFormat)
{
    struct tagRow
    {
        bool hasFormat;
        char const* text;
        char const* expected;
    };
    constexpr tagRow kRows[] = {
        {true,  "bad (%FORMDATA%) %FORMDATA%", "bad (REAL,32) REAL,32"},
        {false, "bad (%FORMDATA%)x()",         "bad x"                },
        {true,  "f() (())",                    "f ()"                 }
    };
    for (tagRow const& row : kRows)
    {
        tagCommand command;
        command.manager.m_bFormat = row.hasFormat;
        CPool pool(command.data);
        EXPECT_EQ(pool.SetScpiBlockDataError(row.text), 1);
        EXPECT_EQ(pool.GetScpiError(), -160);
        EXPECT_EQ(pool.GetScpiErrorText(), row.expected);
    }
    tagCommand command;
    command.fault.FailAfter(0);
    CPool pool(command.data);
    pool.SetScpiBlockDataError("bad (%FORMDATA%)");
    EXPECT_EQ(pool.GetScpiErrorText(), "bad ");
}

} // namespace
} // namespace ZoVelkor
