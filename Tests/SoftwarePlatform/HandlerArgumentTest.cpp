#include "CErrorRecorder.h"
#include "ExecutionFakes.h"
#include "ZoString.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace ZoVelkor
{
namespace
{

constexpr std::uint32_t kNone = ZO_SCPI_PARAMTYPE_NOVALUE;
constexpr std::uint32_t kNumeric = ZO_SCPI_PARAMTYPE_NUMERIC;
constexpr std::uint32_t kCharacter = ZO_SCPI_PARAMTYPE_CHARACTER;
constexpr std::uint32_t kString = ZO_SCPI_PARAMTYPE_STRING;
constexpr std::uint32_t kBlock = ZO_SCPI_PARAMTYPE_BLOCK;
constexpr std::uint32_t kExpression = ZO_SCPI_PARAMTYPE_EXPRESSION;
constexpr std::uint32_t kSpecial = ZO_SCPI_PARAMTYPE_SPECIAL;

/// Result, SCPI error and value as one text.
template <class TData, class TValue>
std::string Outcome(TData& data, HRESULT hr, TValue const& value)
{
    std::ostringstream text;
    text << hr << ' ' << data.GetScpiError() << ' ' << value;
    return text.str();
}

constexpr auto kGetDouble = [](auto& data) {
    double value = 99;
    const HRESULT hr = data.GetDoubleArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetDoubleWithUnit = [](auto& data) {
    double value = 99;
    long unit = 77;
    const HRESULT hr = data.GetDoubleArgumentWithUnit(value, unit, 0);
    return Outcome(data, hr, value) + " unit " + std::to_string(unit);
};
constexpr auto kGetInteger = [](auto& data) {
    long value = 99;
    const HRESULT hr = data.GetIntegerArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetBoolean = [](auto& data) {
    bool value = true;
    const HRESULT hr = data.GetBooleanArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetCharacter = [](auto& data) {
    long value = 99;
    const HRESULT hr = data.GetCharacterArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetMnemonic = [](auto& data) {
    auto value = ZO_SCPI_SPECIAL_KEEP;
    const HRESULT hr = data.GetMnemonicArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetString = [](auto& data) {
    std::string value = "old";
    const HRESULT hr = data.GetStringArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetExpression = [](auto& data) {
    std::string value = "old";
    const HRESULT hr = data.GetExprStringArgument(value, 0);
    return Outcome(data, hr, value);
};
constexpr auto kGetBlock = [](auto& data) {
    IZOScpiBlockData* pBlock = nullptr;
    long length = 99;
    const HRESULT hr = data.GetBlockArgument(&pBlock, length, 0);
    const CComPtr<IZOScpiBlockData> spOwner = pBlock;
    if (pBlock != nullptr)
    {
        pBlock->Release();
    }
    return Outcome(data, hr, length);
};
struct tagGetUnit
{
    std::string operator()(CPool& data) const
    {
        long unit = 99;
        const HRESULT hr = data.GetUnitSuffix(unit, 0);
        return Outcome(data, hr, unit);
    }
    std::string operator()(CRecord& data) const
    {
        long unit = 99;
        const HRESULT hr = data.GetSuffix(unit, 0);
        return Outcome(data, hr, unit);
    }
};
constexpr auto kGetType = [](auto& data) {
    auto type = ZO_SCPI_PARAMTYPE_UNDEFINED;
    const HRESULT hr = data.GetArgumentType(type, 0);
    return Outcome(data, hr, type);
};

tagZO_SCPI_PARAMETER WithoutUnit(char const* text)
{
    tagZO_SCPI_PARAMETER parameter = Number(text);
    parameter.iNoSuffix = 1;
    return parameter;
}

tagZO_SCPI_PARAMETER BlockOf(std::uint32_t length)
{
    tagZO_SCPI_PARAMETER parameter = Parameter(kBlock);
    parameter.iBlockLength = length;
    return parameter;
}

tagZO_SCPI_PARAMETER Counted(std::uint32_t type, char const* text, std::uint32_t length)
{
    tagZO_SCPI_PARAMETER parameter = Parameter(type, text);
    parameter.iTextLength = length;
    return parameter;
}

struct tagGetterCase
{
    char const* name;
    tagZO_SCPI_PARAMETER parameter;
    tagBoth<std::string> getter;
    char const* pool;
    char const* record = nullptr; ///< null: the same
};

const tagGetterCase kGetterCases[] = {
    {"Double",                          Number("-2.5E1"),       Both<std::string>(kGetDouble),                             "0 0 -25"                                                                      },
    {"DoubleWithRest",                  Number("10 MHZ"),       Both<std::string>(kGetDouble),                             "0 0 10"                                                                       },
    {"DoubleOverflowIsStored",          Number("1E999"),        Both<std::string>(kGetDouble),                             "1 -222 inf"                                                                   },
    {"DoubleUnderflow",                 Number("1E-999"),       Both<std::string>(kGetDouble),                             "1 -222 0"                                                                     },
    {"DoubleUnit",                      Number("10 MHZ"),       Both<std::string>(kGetDoubleWithUnit),                     "0 0 10 unit 3"                                                                },
    {"DoubleUnitOverflow",              Number("-1E999"),       Both<std::string>(kGetDoubleWithUnit),                     "1 -222 -inf unit 77"                                                          },
    {"IntegerCutBelowLimit",            Number("2147483647.9"), Both<std::string>(kGetInteger),                            "0 0 2147483647"                                                               },
    {"IntegerAboveLimit",               Number("2147483648"),   Both<std::string>(kGetInteger),                            "1 -222 99"                                                                    },
    {"IntegerLowestValue",              Number("-2147483648"),  Both<std::string>(kGetInteger),                            "0 0 -2147483648"                                                              },
    {"IntegerBelowLowest",              Number("-2147483649"),  Both<std::string>(kGetInteger),                            "1 -222 99"                                                                    },
    {"IntegerTowardsZero",              Number("-2.7"),         Both<std::string>(kGetInteger),                            "0 0 -2"                                                                       },
    {"IntegerNotANumber",               Number("NAN"),          Both<std::string>(kGetInteger),                            "1 -222 99"                                                                    },
    {"IntegerOverflow",                 Number("1E999"),        Both<std::string>(kGetInteger),                            "1 -222 99"                                                                    },
    {"BooleanOn",                       Special(6),             Both<std::string>(kGetBoolean),                            "0 0 1"                                                                        },
    {"BooleanOff",                      Special(7),             Both<std::string>(kGetBoolean),                            "0 0 0"                                                                        },
    {"BooleanOtherWord",                Special(1),             Both<std::string>(kGetBoolean),                            "1 -141 1"                                                                     },
    {"BooleanTruncates",                Number("0.4"),          Both<std::string>(kGetBoolean),                            "0 0 0"                                                                        },
    {"BooleanNegative",                 Number("-1"),           Both<std::string>(kGetBoolean),                            "0 0 1"                                                                        },
    {"BooleanTooLarge",                 Number("1E10"),         Both<std::string>(kGetBoolean),                            "1 -222 1"                                                                     },
    {"BooleanString",                   Parameter(kString,      "ON"),                                                     Both<std::string>(kGetBoolean),                                                  "1 -158 1"},
    {"Character",                                 Parameter(kCharacter,                                             "SIN",                                                  4),                                                                                Both<std::string>(kGetCharacter), "0 0 4"},
    {"CharacterNegative", Parameter(kCharacter,                "X",                                                                         ~0U),                                                       Both<std::string>(kGetCharacter), "0 0 -1"},
    {"Mnemonic",                              Special(2),                                 Both<std::string>(kGetMnemonic),"0 0 2"  },
    {"StringCounted",                        Counted(kString,       "abcdef", 4),                                                                                        Both<std::string>(kGetString), "0 0 abcd"},
    {"StringEmpty",                   Parameter(kString,   ""),                                              Both<std::string>(kGetString),                                                                                                                           "0 0 "},
    {"Expression",                       Counted(kExpression,                                             "(@1:2)xx",                                                                                          6),                                                                                                                                      Both<std::string>(kGetExpression), "0 0 (@1:2)"},
    {"Unit",    Number("1 V"),                    Both<std::string>(tagGetUnit{}),                                "0 0 5"},
    {"NoUnitDiffers",                       WithoutUnit("1"),Both<std::string>(tagGetUnit{}),"0 0 -1","0 0 0"},
    {"UnitOfStringDiffers",                            Parameter(kString),                                  Both<std::string>(tagGetUnit{}),                                         "1 -158 -1",                                                                                  "1 -158 99"},
    {"Block",                   BlockOf(1234),   Both<std::string>(kGetBlock),                               "0 0 1234"                                                                                                                                                                        },
    {"BlockOfUnknownLength",                                 BlockOf(~0U),                                   Both<std::string>(kGetBlock),                                               "0 0 -1"                                                             },
    {"Type",                      Special(2),                                            Both<std::string>(kGetType),                                                                                               "0 0 7"                                                             },
};

TEST(HandlerArgument, GettersFollowTheTable)
{
    for (tagGetterCase const& row : kGetterCases)
    {
        SCOPED_TRACE(row.name);
        tagCommand command({row.parameter});
        CPool pool(command.data);
        CRecord record(command.data);
        EXPECT_EQ(row.getter.pool(pool), row.pool);
        EXPECT_EQ(row.getter.record(record), row.record != nullptr ? row.record : row.pool);
    }
}

TEST(HandlerArgument, EachTypeHasItsErrorWhereAnotherIsRequired)
{
    constexpr short kErrors[] = {-100, -109, -128, -148, -158, -168, -178, -100, -100};
    struct tagRequirement
    {
        std::uint32_t type;
        tagBoth<std::string> getter;
    };
    const tagRequirement kGetters[] = {
        {kNumeric,    Both<std::string>(kGetDouble)        },
        {kNumeric,    Both<std::string>(kGetDoubleWithUnit)},
        {kNumeric,    Both<std::string>(kGetInteger)       },
        {kNumeric,    Both<std::string>(tagGetUnit{})      },
        {kCharacter,  Both<std::string>(kGetCharacter)     },
        {kString,     Both<std::string>(kGetString)        },
        {kExpression, Both<std::string>(kGetExpression)    },
        {kBlock,      Both<std::string>(kGetBlock)         },
        {kSpecial,    Both<std::string>(kGetMnemonic)      },
    };
    for (std::uint32_t type = 0; type < std::size(kErrors); ++type)
    {
        tagCommand command({Parameter(type, "1")});
        for (tagRequirement const& required : kGetters)
        {
            SCOPED_TRACE(testing::Message() << "arrived " << type << ", required " << required.type);
            CPool pool(command.data);
            CRecord record(command.data);
            required.getter.pool(pool);
            required.getter.record(record);
            EXPECT_EQ(pool.GetScpiError(), type == required.type ? 0 : kErrors[type]);
            EXPECT_EQ(record.GetScpiError(), pool.GetScpiError());
            EXPECT_EQ(record.CheckParamType(0, required.type), type == required.type ? 0 : 1);
            EXPECT_EQ(pool.CheckArgumentType(type, required.type), type == required.type ? 0 : 1);
        }
        CPool pool(command.data);
        CRecord record(command.data);
        EXPECT_EQ(pool.ScpiErrorUnexpectedParameterType(0), 1);
        EXPECT_EQ(record.ScpiErrorUnexpectedParameterType(0), 1);
        EXPECT_EQ(pool.GetScpiError(), kErrors[type]);
        EXPECT_EQ(record.GetScpiError(), kErrors[type]);
    }
}

TEST(HandlerArgument, TypeChecksOfTheRecordNameTheirTypes)
{
    using Check = HRESULT (CRecord::*)(long);
    constexpr std::pair<std::uint32_t, Check> kChecks[] = {
        {kString,     &CRecord::CheckStringParamType    },
        {kNumeric,    &CRecord::CheckNumericParamType   },
        {kBlock,      &CRecord::CheckBlockParamType     },
        {kCharacter,  &CRecord::CheckCharParamType      },
        {kExpression, &CRecord::CheckExpressionParamType}
    };
    for (auto const& [type, check] : kChecks)
    {
        tagCommand command({Parameter(type), Parameter(kNone)});
        CRecord record(command.data);
        EXPECT_EQ((record.*check)(0), 0);
        EXPECT_EQ((record.*check)(1), 1);
        EXPECT_EQ(record.GetScpiError(), -109);
        EXPECT_EQ((record.*check)(2), 1);
        EXPECT_EQ(record.GetScpiError(), -109);
    }
}

TEST(HandlerArgument, CountIsCheckedByTheLastIndexNotByANumber)
{
    struct tagRow
    {
        std::size_t count;
        unsigned last;
        bool exact;
        short error;
    };
    constexpr tagRow kRows[] = {
        {2, 1, true,  0   },
        {2, 2, false, -109},
        {3, 1, true,  -115},
        {3, 1, false, 0   },
        {1, 0, true,  0   },
        {0, 0, true,  -109}
    };
    for (tagRow const& row : kRows)
    {
        SCOPED_TRACE(testing::Message() << row.count << " arguments, last " << row.last);
        tagCommand command(std::vector<tagZO_SCPI_PARAMETER>(row.count, Number("1")));
        CPool pool(command.data);
        CRecord record(command.data);
        EXPECT_EQ(pool.CheckArgumentCount(row.last, row.exact), row.error != 0);
        EXPECT_EQ(record.CheckArgumentCount(row.last, row.exact), row.error != 0);
        EXPECT_EQ(pool.GetScpiError(), row.error);
        EXPECT_EQ(record.GetScpiError(), row.error);
        EXPECT_EQ(pool.CheckArgumentNotAllowed(), row.count != 0);
        EXPECT_EQ(record.CheckArgumentNotAllowed(), row.count != 0);
        unsigned long count = 99;
        EXPECT_EQ(pool.GetArgumentCount(count), 0);
        EXPECT_EQ(count, row.count);
    }
}

TEST(HandlerArgument, MisuseIsReportedByThePoolAndThrownByTheRecord)
{
    struct tagRow
    {
        bool hasArray;
        long index;
        char const* message;
        char const* poolCondition;
        char const* recordCondition;
        HRESULT result;
    };
    constexpr char kIndex[] = "iArgumentIndex >= 0";
    const tagRow kRows[] = {
        {false, 0,  "Missing parameter",      "m_ParserData.m_pArguments != NULL", "m_pParams != NULL", E_POINTER },
        {false, -1, "Missing parameter",      "m_ParserData.m_pArguments != NULL", "m_pParams != NULL", E_POINTER },
        {true,  -1, "Invalid argument index", kIndex,                              kIndex,              ZO_E_SHELL},
    };
    for (tagRow const& row : kRows)
    {
        tagCommand command({Number("1")});
        command.data.m_pArguments = row.hasArray ? command.arguments.data() : nullptr;
        CErrorRecorder recorder;
        double value = 99;
        CPool pool(command.data);
        EXPECT_EQ(pool.GetDoubleArgument(value, row.index), 1);
        EXPECT_EQ(pool.GetScpiError(), -200);
        CRecord record(command.data);
        EXPECT_THROW(record.GetDoubleArgument(value, row.index), CShellError);
        EXPECT_EQ(value, 99);

        const auto entries = recorder.Take();
        ASSERT_EQ(entries.size(), 2U);
        for (auto const& entry : entries)
        {
            EXPECT_EQ(entry.report.message, row.message);
            EXPECT_EQ(entry.report.result, row.result);
        }
        EXPECT_STREQ(entries[0].report.condition, row.poolCondition);
        EXPECT_STREQ(entries[0].report.sourceUnit, "Remote/Src/CScpiFunctionExecutionDataPool");
        EXPECT_FALSE(entries[0].thrown);
        EXPECT_STREQ(entries[1].report.condition, row.recordCondition);
        EXPECT_STREQ(entries[1].report.sourceUnit, "Remote/Src/CScpiSinkFramework");
        EXPECT_TRUE(entries[1].thrown);
    }
}

TEST(HandlerArgument, IndexBehindTheLastArgumentIsAMissingParameter)
{
    tagCommand command({Number("1")});
    CPool pool(command.data);
    CRecord record(command.data);
    long value = 99;
    EXPECT_EQ(pool.GetIntegerArgument(value, 1), 1);
    EXPECT_EQ(record.GetIntegerArgument(value, 1), 1);
    EXPECT_EQ(pool.GetScpiError(), -109);
    EXPECT_EQ(record.GetScpiError(), -109);
    EXPECT_EQ(value, 99);
}

TEST(HandlerArgument, NumbersConvertAsTheCLibraryDoes)
{
    const char* const kTexts[] = {"1",
                                  "+1.5",
                                  " \t2",
                                  "0x1F",
                                  "-0x1p3",
                                  "1e-310",
                                  "4.9e-324",
                                  "2e-324",
                                  "1e-400",
                                  "2.2250738585072014e-308",
                                  "1.7976931348623157e308",
                                  "1.8e308",
                                  "-1e999",
                                  "inf",
                                  "nan",
                                  "-0",
                                  "0",
                                  "",
                                  "abc",
                                  "1,5",
                                  ".5",
                                  "5.",
                                  "1e",
                                  "1e+",
                                  "-.5e-3xyz",
                                  ".",
                                  "-",
                                  "123456789012345678901234567890",
                                  "0.1 V",
                                  "1E+3MHZ"};
    for (char const* text : kTexts)
    {
        SCOPED_TRACE(text);
        errno = 0;
        const double expected = std::strtod(text, nullptr);
        const bool isInRange = errno != ERANGE;
        tagCommand command({Number(text)});
        CPool pool(command.data);
        double value = 99;
        EXPECT_EQ(pool.GetDoubleArgument(value, 0), isInRange ? 0 : 1);
        EXPECT_EQ(std::memcmp(&value, &expected, sizeof(value)), 0) << value << " for " << expected;
    }
}

TEST(HandlerArgument, TextGettersSucceedAndLeaveTheTextWhenTheArgumentIsMissing)
{
    tagCommand command({Number("10 MHZ"), Special(6), Special(7), Special(1), Parameter(kString, "a b")});
    char const* const kNumericTexts[] = {"10", "1", "0", "WORD", "a"};
    char const* const kTexts[] = {"10 MHZ", "WORD", "WORD", "WORD", "a b"};
    CPool pool(command.data);
    for (long index = 0; index < 5; ++index)
    {
        CZoString text;
        EXPECT_EQ(pool.GetNumericArgument(text, index), 0);
        EXPECT_EQ(text.ToStdString(), kNumericTexts[index]);
        EXPECT_EQ(pool.GetStringArgument(text, index), 0);
        EXPECT_EQ(text.ToStdString(), kTexts[index]);
    }
    EXPECT_EQ(pool.GetScpiError(), 0);
    CZoString text("old");
    EXPECT_EQ(pool.GetStringArgument(text, 5), 0);
    EXPECT_EQ(pool.GetScpiError(), -109);
    pool.SetScpiError(0);
    EXPECT_EQ(pool.GetNumericArgument(text, 5), 0);
    EXPECT_EQ(pool.GetScpiError(), -109);
    EXPECT_EQ(text.ToStdString(), "old");

    CErrorRecorder recorder;
    EXPECT_EQ(pool.GetStringArgument(text, -1), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
}

TEST(HandlerArgument, BlockBytesAreLent)
{
    CFakeBlock block;
    tagZO_SCPI_PARAMETER parameter = BlockOf(3);
    parameter.pBlockData = &block;
    tagCommand command({parameter, BlockOf(0)});
    CPool pool(command.data);
    unsigned char* pData = nullptr;
    unsigned long length = 0;
    EXPECT_EQ(pool.GetBlockDataArgument(&pData, length, 0), 0);
    EXPECT_EQ(pData, block.m_bytes);
    EXPECT_EQ(length, 3U);

    block.m_result = E_ABORT;
    EXPECT_EQ(pool.GetBlockDataArgument(&pData, length, 0), E_ABORT);
    EXPECT_EQ(pool.GetScpiError(), 0);
    block.m_result = E_PENDING;
    EXPECT_EQ(pool.GetBlockDataArgument(&pData, length, 0), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_EQ(pData, block.m_bytes);
    EXPECT_EQ(pool.GetBlockDataArgument(&pData, length, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(length, 0U);

    CComPtr<IZOScpiBlockData> spBlock;
    long signedLength = 0;
    EXPECT_EQ(pool.GetBlockArgument(&spBlock, signedLength, 0), 0);
    EXPECT_EQ(spBlock.Get(), &block);
    EXPECT_EQ(block.m_references, 1);
}

TEST(HandlerArgument, NullBlockPointerIsFoundBeforeAnythingElse)
{
    tagCommand command;
    CErrorRecorder recorder;
    CPool pool(command.data);
    CRecord record(command.data);
    long length = 0;
    unsigned long size = 0;
    EXPECT_EQ(pool.GetBlockArgument(nullptr, length, -1), 1);
    EXPECT_EQ(pool.GetBlockDataArgument(nullptr, size, -1), 1);
    EXPECT_EQ(pool.GetScpiError(), -200);
    EXPECT_THROW(record.GetBlockArgument(nullptr, length, -1), CShellError);
    const auto entries = recorder.Take();
    ASSERT_EQ(entries.size(), 3U);
    for (auto const& entry : entries)
    {
        EXPECT_EQ(entry.report.message, "Null pointer detected (ppBlockData)");
        EXPECT_STREQ(entry.report.condition, "ppBlockData != NULL");
    }
}

TEST(HandlerArgument, NumericSuffixIsStoredBeforeItsRangeIsChecked)
{
    tagCommand command;
    CRecord record(command.data);
    long value = 0;
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 0, 1, 4), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 1, 1, 4), 1);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(record.GetScpiError(), -114);
    EXPECT_EQ(record.GetNumericSuffixWithRangeCheck(value, 0, 5, 9), 1);
    EXPECT_EQ(CPool(command.data).GetRawNumericSuffixValue(2), 0xFFFFFFFFU);
}

TEST(HandlerArgument, CharacterStringComesFromTheEnumeration)
{
    constexpr char const* kShapes[] = {"SINusoid", "SQUare", nullptr};
    tagCommand command({Parameter(kCharacter, "SQU", 2),
                        Parameter(kCharacter, "X", 0),
                        Parameter(kCharacter, "X", 3),
                        Number("1")});
    CRecord record(command.data);
    std::string text = "old";
    CErrorRecorder recorder;
    EXPECT_THROW(record.GetCharacterString(text, 0), CShellError);
    EXPECT_STREQ(recorder.Take().at(0).report.condition, "m_pp_Enums");
    record.SetEnumerationTexts(kShapes);
    EXPECT_EQ(record.GetCharacterString(text, 0), 0);
    EXPECT_EQ(text, "SQUare");
    for (const auto& [index, error] : {std::pair(1L, -141), std::pair(2L, -141), std::pair(3L, -128)})
    {
        EXPECT_EQ(record.GetCharacterString(text, index), 1);
        EXPECT_EQ(record.GetScpiError(), error);
    }
}

} // namespace
} // namespace ZoVelkor
