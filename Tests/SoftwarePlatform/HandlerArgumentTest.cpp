#include "ExecutionFakes.h"
#include "ZoString.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <tuple>

namespace ZoVelkor
{
namespace
{

/// The same getter of both styles; gives result, SCPI error and value as one text.
struct Getter
{
    std::function<std::string(CPool&)> pool;
    std::function<std::string(CRecord&)> record;
};

template <class TValue>
Getter Both(HRESULT (CPool::*pool)(TValue&, long), HRESULT (CRecord::*record)(TValue&, long), TValue start)
{
    const auto call = [start](auto& data, auto getter) {
        TValue value = start;
        const HRESULT result = (data.*getter)(value, 0);
        return (std::ostringstream() << result << ' ' << data.GetScpiError() << ' ' << value).str();
    };
    return {[=](CPool& data) { return call(data, pool); }, [=](CRecord& data) { return call(data, record); }};
}

template <class TData>
std::string ReadBlock(TData& data)
{
    CComPtr<IZOScpiBlockData> block;
    long length = 0;
    return std::to_string(data.GetBlockArgument(&block, length, 0));
}

const std::string kOld = "old";
const Getter kBlock = {&ReadBlock<CPool>, &ReadBlock<CRecord>};
const Getter kDouble = Both(&CPool::GetDoubleArgument, &CRecord::GetDoubleArgument, 99.0);
const Getter kInteger = Both(&CPool::GetIntegerArgument, &CRecord::GetIntegerArgument, 99L);
const Getter kBoolean = Both(&CPool::GetBooleanArgument, &CRecord::GetBooleanArgument, true);
const Getter kCharacter = Both(&CPool::GetCharacterArgument, &CRecord::GetCharacterArgument, 99L);
const Getter kWord = Both(&CPool::GetMnemonicArgument, &CRecord::GetMnemonicArgument, ZO_SCPI_SPECIAL_KEEP);
const Getter kString = Both<std::string>(&CPool::GetStringArgument, &CRecord::GetStringArgument, kOld);
const Getter kExpression = Both(&CPool::GetExprStringArgument, &CRecord::GetExprStringArgument, kOld);
const Getter kUnit = Both(&CPool::GetUnitSuffix, &CRecord::GetSuffix, 99L);
const Getter kType = Both(&CPool::GetArgumentType, &CRecord::GetArgumentType, ZO_SCPI_PARAMTYPE_UNDEFINED);

tagZO_SCPI_PARAMETER Changed(tagZO_SCPI_PARAMETER parameter, std::uint32_t textLength, bool hasUnit)
{
    parameter.iTextLength = textLength;
    parameter.iNoSuffix = hasUnit ? 0 : 1;
    return parameter;
}

struct GetterCase
{
    const char* name;
    tagZO_SCPI_PARAMETER parameter;
    const Getter& getter;
    const char* pool;
    const char* record; ///< empty: the same
};

// The formatter takes the commas of calls for column ends.
// clang-format off
const GetterCase kGetterCases[] = {
    {"Double",             Number("-2.5E1"),                          kDouble,     "0 0 -25",         ""},
    {"DoubleWithRest",     Number("10 MHZ"),                          kDouble,     "0 0 10",          ""},
    {"OverflowIsStored",   Number("1E999"),                           kDouble,     "1 -222 inf",      ""},
    {"IntegerCutToLimit",  Number("2147483647.9"),                    kInteger,    "0 0 2147483647",  ""},
    {"IntegerAboveLimit",  Number("2147483648"),                      kInteger,    "1 -222 99",       ""},
    {"IntegerLowest",      Number("-2147483648"),                     kInteger,    "0 0 -2147483648", ""},
    {"IntegerBelowLowest", Number("-2147483648.5"),                   kInteger,    "1 -222 99",       ""},
    {"IntegerTowardsZero", Number("-2.7"),                            kInteger,    "0 0 -2",          ""},
    {"IntegerNotANumber",  Number("NAN"),                             kInteger,    "1 -222 99",       ""},
    {"BooleanOn",          Special(6),                                kBoolean,    "0 0 1",           ""},
    {"BooleanOff",         Special(7),                                kBoolean,    "0 0 0",           ""},
    {"BooleanOtherWord",   Special(1),                                kBoolean,    "1 -141 1",        ""},
    {"BooleanTruncates",   Number("0.4"),                             kBoolean,    "0 0 0",           ""},
    {"BooleanNegative",    Number("-1"),                              kBoolean,    "0 0 1",           ""},
    {"BooleanTooLarge",    Number("1E10"),                            kBoolean,    "1 -222 1",        ""},
    {"BooleanString",      Parameter(4, "ON"),                        kBoolean,    "1 -158 1",        ""},
    {"Character",          Parameter(3, "SIN", 4),                    kCharacter,  "0 0 4",           ""},
    {"CharacterNegative",  Parameter(3, "X", ~0U),                    kCharacter,  "0 0 -1",          ""},
    {"Mnemonic",           Special(2),                                kWord,       "0 0 2",           ""},
    {"StringCounted",      Changed(Parameter(4, "abcdef"), 4, false), kString,     "0 0 abcd",        ""},
    {"StringEmpty",        Parameter(4, ""),                          kString,     "0 0 ",            ""},
    {"Expression",         Changed(Parameter(6, "(@1)xx"), 4, false), kExpression, "0 0 (@1)",        ""},
    {"Unit",               Number("1 V"),                             kUnit,       "0 0 5",           ""},
    {"NoUnitDiffers",      Changed(Number("1"), 1, false),            kUnit,       "0 0 -1",          "0 0 0"},
    {"UnitOfTextDiffers",  Parameter(4, ""),                          kUnit,       "1 -158 -1",       "1 -158 99"},
    {"Type",               Special(2),                                kType,       "0 0 7",           ""},
};
// clang-format on

TEST(HandlerArgument, GettersFollowTheTable)
{
    for (const GetterCase& row : kGetterCases)
    {
        SCOPED_TRACE(row.name);
        Command command({row.parameter});
        CPool pool(command.data);
        CRecord record(command.data);
        EXPECT_EQ(row.getter.pool(pool), row.pool);
        EXPECT_EQ(row.getter.record(record), *row.record != 0 ? row.record : row.pool);
    }
}

TEST(HandlerArgument, EachTypeHasItsErrorWhereAnotherIsRequired)
{
    constexpr short kErrors[] = {-100, -109, -128, -148, -158, -168, -178, -100, -100};
    const std::tuple<long, const Getter&, HRESULT (CRecord::*)(long)> kGetters[] = {
        {2, kDouble, &CRecord::CheckNumericParamType},
        {2, kInteger, &CRecord::CheckNumericParamType},
        {2, kUnit, &CRecord::CheckNumericParamType},
        {3, kCharacter, &CRecord::CheckCharParamType},
        {4, kString, &CRecord::CheckStringParamType},
        {5, kBlock, &CRecord::CheckBlockParamType},
        {6, kExpression, &CRecord::CheckExpressionParamType},
        {7, kWord, nullptr}};
    for (long type = 0; type < std::ssize(kErrors); ++type)
    {
        Command command({Parameter(static_cast<std::uint32_t>(type), "1")});
        for (const auto& [required, getter, check] : kGetters)
        {
            SCOPED_TRACE(testing::Message() << "arrived " << type << ", required " << required);
            const short expected = type == required ? short{0} : kErrors[type];
            CPool pool(command.data);
            CRecord record(command.data);
            getter.pool(pool);
            getter.record(record);
            EXPECT_EQ(pool.GetScpiError(), expected);
            EXPECT_EQ(record.GetScpiError(), expected);
            EXPECT_EQ(pool.CheckArgumentType(type, required), expected != 0);
            EXPECT_TRUE(check == nullptr || (record.*check)(0) == (expected != 0));
        }
        OnBothStyles(command, [&](auto& data) {
            EXPECT_EQ(data.ScpiErrorUnexpectedParameterType(0), 1);
            EXPECT_EQ(data.GetScpiError(), kErrors[type]);
        });
    }
}

TEST(HandlerArgument, CountIsCheckedByTheLastIndexNotByANumber)
{
    constexpr std::tuple<unsigned, unsigned, bool, short> kRows[] = {{2, 1, true, 0},
                                                                     {2, 2, false, -109},
                                                                     {3, 1, true, -115},
                                                                     {3, 1, false, 0},
                                                                     {1, 0, true, 0},
                                                                     {0, 0, true, -109}};
    for (const auto& [count, last, isExact, error] : kRows)
    {
        SCOPED_TRACE(testing::Message() << count << " arguments, last " << last);
        Command command(std::vector(count, Number("1")));
        OnBothStyles(command, [n = count, index = last, exact = isExact, code = error](auto& data) {
            EXPECT_EQ(data.CheckArgumentCount(index, exact), code != 0);
            EXPECT_EQ(data.GetScpiError(), code);
            EXPECT_EQ(data.CheckArgumentNotAllowed(), n != 0);
        });
        CRecord record(command.data);
        EXPECT_EQ(record.CheckParamType(count, 2), 1);
        EXPECT_EQ(record.GetScpiError(), -109);
    }
}

TEST(HandlerArgument, MisuseIsReportedByThePoolAndThrownByTheRecord)
{
    constexpr char kNoArray[] = "m_ParserData.m_pArguments != NULL|Missing parameter\n"
                                "m_pParams != NULL|Missing parameter|thrown\n";
    constexpr char kIndex[] = "iArgumentIndex >= 0|Invalid argument index\n"
                              "iArgumentIndex >= 0|Invalid argument index|thrown\n";
    for (const auto& [hasArray, index, lines] :
         {std::tuple(false, 0L, kNoArray), std::tuple(false, -1L, kNoArray), std::tuple(true, -1L, kIndex)})
    {
        Command command({Number("1")});
        command.data.m_pArguments = hasArray ? command.data.m_pArguments : nullptr;
        CErrorRecorder recorder;
        double value = 99;
        CPool pool(command.data);
        EXPECT_EQ(pool.GetDoubleArgument(value, index), 1);
        EXPECT_EQ(pool.GetScpiError(), -200);
        EXPECT_THROW(CRecord(command.data).GetDoubleArgument(value, index), CShellError);
        EXPECT_EQ(value, 99);
        const auto entries = recorder.Take();
        ASSERT_EQ(Lines(entries), lines);
        EXPECT_EQ(entries[0].report.result, hasArray ? ZO_E_SHELL : E_POINTER);
        EXPECT_STREQ(entries[0].report.sourceUnit, "Remote/Src/CScpiFunctionExecutionDataPool");
        EXPECT_STREQ(entries[1].report.sourceUnit, "Remote/Src/CScpiSinkFramework");
    }
}

TEST(HandlerArgument, NumbersConvertAsTheCLibraryDoes)
{
    std::istringstream texts(
        "1|+1.5| \t2|0x1F|-0x1p3|1e-310|4.9e-324|2e-324|1e-400|0.1 V|1.8e308|-1e999|inf|nan|"
        "-0|0|0e5|abc||1,5|.5|5.|1e|1e+|.|-|-.5e-3xy|1E+3MHZ|2.2250738585072014e-308|"
        "2.2250738585072012e-308|1.7976931348623157e308|123456789012345678901234567890");
    for (std::string text; std::getline(texts, text, '|');)
    {
        SCOPED_TRACE(text);
        errno = 0;
        const double expected = std::strtod(text.c_str(), nullptr);
        const bool isInRange = errno != ERANGE;
        Command command({Number(text.c_str())});
        CPool pool(command.data);
        double value = 99;
        long unit = 77;
        errno = ERANGE; // left over from elsewhere
        EXPECT_EQ(pool.GetDoubleArgumentWithUnit(value, unit, 0), isInRange ? 0 : 1);
        EXPECT_EQ(std::memcmp(&value, &expected, sizeof(value)), 0) << value << " for " << expected;
        EXPECT_EQ(unit, isInRange ? 3 : 77);
    }
}

TEST(HandlerArgument, TextGettersSucceedAndLeaveTheTextWhenTheArgumentIsMissing)
{
    Command command({Number("10 MHZ"), Special(6), Special(7), Special(1)});
    CPool pool(command.data);
    CZoString text;
    for (long index = 0; const char* number : {"10", "1", "0", "WORD"})
    {
        EXPECT_EQ(pool.GetNumericArgument(text, index), 0);
        EXPECT_EQ(text.ToStdString(), number);
        EXPECT_EQ(pool.GetStringArgument(text, index), 0);
        EXPECT_EQ(text.ToStdString(), command.arguments[static_cast<std::size_t>(index++)].szText);
    }
    const CErrorRecorder recorder;
    for (const auto getter : {&CPool::GetNumericArgument,
                              static_cast<HRESULT (CPool::*)(CZoString&, long)>(&CPool::GetStringArgument)})
    {
        EXPECT_EQ((pool.*getter)(text, 4), 0);
        EXPECT_EQ(pool.GetScpiError(), -109);
        EXPECT_EQ(text.ToStdString(), "WORD");
        EXPECT_EQ((pool.*getter)(text, -1), 1);
        EXPECT_EQ(pool.GetScpiError(), -200);
    }
}

struct FakeBlock : CFake<IZOScpiBlockData>
{
    HRESULT Read(unsigned long, unsigned char*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT Status(short*, long*) override { return E_NOTIMPL; }
    HRESULT Discard() override { return E_NOTIMPL; }
    HRESULT GetStatusEx(short*, long*, unsigned long*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ReadFromStream(IStream*, unsigned long, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ContinueRead(long) override { return E_NOTIMPL; }
    HRESULT InitReaderFormat(tagEnumFormatDataType, long, tagEnumFormatByteOrder) override { return E_FAIL; }
    HRESULT GetNextElement(VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetNextDouble(double*) override { return E_NOTIMPL; }
    HRESULT GetNextInteger(long*) override { return E_NOTIMPL; }
    HRESULT GetNextArray(unsigned long, double*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT GetNextScatteredArrays(unsigned long, unsigned long, double* const*, unsigned long*) override
    {
        return E_NOTIMPL;
    }
    HRESULT Access(unsigned char** data, unsigned long* length) override
    {
        *data = bytes;
        *length = sizeof(bytes);
        return result;
    }

    unsigned char bytes[3] = {7, 8, 9};
    HRESULT result = S_OK;
};

TEST(HandlerArgument, BlockBytesAreLent)
{
    constexpr std::pair<HRESULT, HRESULT> kAccesses[] = {
        {S_OK, S_OK}, {E_ABORT, E_ABORT}, {E_PENDING, S_FALSE}};
    FakeBlock block;
    Command command({Parameter(5, ""), Parameter(5, "")});
    command.arguments[0].pBlockData = &block;
    unsigned char* pData = nullptr;
    unsigned long length = 0;
    for (const auto& [access, result] : kAccesses)
    {
        CPool pool(command.data);
        block.result = access;
        pData = nullptr;
        EXPECT_EQ(pool.GetBlockDataArgument(&pData, length, 0), result);
        EXPECT_EQ(pool.GetScpiError(), result == S_FALSE ? -200 : 0);
        EXPECT_EQ(pData, access == S_OK ? block.bytes : nullptr) << "left alone by a failure";
        EXPECT_EQ(length, sizeof(block.bytes));
    }
    pData = block.bytes;
    EXPECT_EQ(CPool(command.data).GetBlockDataArgument(&pData, length, 1), 0) << "no block object";
    EXPECT_EQ(pData, nullptr);

    CComPtr<IZOScpiBlockData> blockData;
    long signedLength = 0;
    command.arguments[0].iBlockLength = 0xFFFFFFFF;
    EXPECT_EQ(CPool(command.data).GetBlockArgument(&blockData, signedLength, 0), 0);
    EXPECT_EQ(CRecord(command.data).GetBlockArgument(&blockData, signedLength, 0), 0);
    EXPECT_EQ(block.m_references, 1);
    EXPECT_EQ(signedLength, -1) << "a length not known in advance";
}

TEST(HandlerArgument, NullBlockPointerIsFoundBeforeAnythingElse)
{
    Command command;
    CErrorRecorder recorder;
    CPool pool(command.data);
    long length = 0;
    unsigned long size = 0;
    EXPECT_EQ(pool.GetBlockArgument(nullptr, length, -1), 1);
    EXPECT_EQ(pool.GetBlockDataArgument(nullptr, size, -1), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_THROW(CRecord(command.data).GetBlockArgument(nullptr, length, -1), CShellError);
    const std::string line = "ppBlockData != NULL|Null pointer detected (ppBlockData)";
    EXPECT_EQ(Lines(recorder.Take()), line + "\n" + line + "\n" + line + "|thrown\n");
}

TEST(HandlerArgument, NumericSuffixIsStoredBeforeItsRangeIsChecked)
{
    Command command;
    CRecord record(command.data);
    long value = 0;
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 0, 4, 4), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 1, 1, 4), 1);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(record.GetScpiError(), -114);
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 0, 5, 9), 1);
    EXPECT_EQ(CPool(command.data).GetRawNumericSuffixValue(2), 0xFFFFFFFFU);
}

TEST(HandlerArgument, CharacterStringComesFromTheEnumeration)
{
    constexpr const char* kShapes[] = {"SINusoid", "SQUare", nullptr};
    Command command({Parameter(3, "SQU", 2), Parameter(3, "X", 0), Parameter(3, "X", 3), Number("1")});
    CRecord record(command.data);
    std::string text;
    CErrorRecorder recorder;
    EXPECT_THROW(record.GetCharacterString(text, 0), CShellError);
    EXPECT_STREQ(recorder.Take().at(0).report.condition, "m_pp_Enums");
    record.SetEnumerationTexts(kShapes);
    EXPECT_EQ(record.GetCharacterString(text, 0), 0);
    for (const auto& [index, error] : {std::pair(1L, -141), std::pair(2L, -141), std::pair(3L, -128)})
    {
        EXPECT_EQ(record.GetCharacterString(text, index), 1);
        EXPECT_EQ(record.GetScpiError(), error);
    }
    EXPECT_EQ(text, "SQUare");
}

} // namespace
} // namespace ZoVelkor
