#include "CComVariant.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace
{
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr float kLargestSingle = std::numeric_limits<float>::max();
constexpr long long kLargest64 = std::numeric_limits<long long>::max();
constexpr unsigned long long kLargestUnsigned64 = std::numeric_limits<unsigned long long>::max();
constexpr unsigned char kLargestByte = 255;
constexpr short kMinusTwo = -2;
constexpr CY kLargestCurrency = {kLargest64};
constexpr CY kSmallestCurrency = {std::numeric_limits<long long>::min()};
constexpr CY kOneAndAHalf = {15000};
constexpr CY kMinusOnePoint205 = {-12050};
constexpr CY kTwoUnits = {2};

CComVariant Date(double days)
{
    return {days, VT_DATE};
}

CComVariant Typed(VARTYPE type)
{
    CComVariant value;
    value.vt = type;
    return value;
}

const CComVariant kEmpty;
const CComVariant kNull = Typed(VT_NULL);
const CComVariant kNullText = Typed(VT_BSTR);
const CComVariant kError = Typed(VT_ERROR);
const CComVariant kSevenAsInt(7, VT_INT);
const CComVariant kZeroInside(CComBSTR(3, L"1\0\x32"));

struct ConversionCase
{
    const char* name;
    CComVariant source;
    VARTYPE type;
    CComVariant expected;
};

const ConversionCase kAccepted[] = {
    {"HalfToEvenDown", 2.5, VT_I4, 2},
    {"HalfToEvenUp", 3.5, VT_I4, 4},
    {"NegativeHalf", -2.5, VT_I2, kMinusTwo},
    {"LargestByte", 255.499, VT_UI1, kLargestByte},
    {"Int", 7.0, VT_INT, kSevenAsInt},
    {"Exact64", L"9223372036854775807", VT_I8, kLargest64},
    {"LargestUnsigned64", L"18446744073709551615", VT_UI8, kLargestUnsigned64},
    {"LargestSingle", 3.4028235e38, VT_R4, kLargestSingle},
    {"EmptyToNumber", kEmpty, VT_I4, 0},
    {"EmptyToText", kEmpty, VT_BSTR, L""},
    {"NullStaysNull", kNull, VT_NULL, kNull},
    {"TruthToSigned", true, VT_I4, -1},
    {"TruthToByte", true, VT_UI1, kLargestByte},
    {"TruthToText", true, VT_BSTR, L"-1"},
    {"NumberToTruth", 0.001, VT_BOOL, true},
    {"TextTrue", L" tRuE ", VT_BOOL, true},
    {"TextFalse", L"False", VT_I4, 0},
    {"TextBlanks", L"\t -1.5E+2\r\n", VT_R8, -150.0},
    {"TextUnderflow", L"1E-400", VT_R8, 0.0},
    {"TextUnderflowByDigits", L"0.0000000000000000000000000001E-300", VT_R8, 0.0},
    {"TextInfinity", L"-inf", VT_R8, -kInfinity},
    {"LargestUnsigned64ToText", kLargestUnsigned64, VT_BSTR, L"18446744073709551615"},
    {"SingleToText", 0.1F, VT_BSTR, L"0.1"},
    {"LastFixedToText", 123456789012345.0, VT_BSTR, L"123456789012345"},
    {"FirstExponentToText", 1e15, VT_BSTR, L"1E+15"},
    {"SmallFixedToText", 0.0001, VT_BSTR, L"0.0001"},
    {"SmallExponentToText", 0.000012, VT_BSTR, L"1.2E-05"},
    {"MinusZeroToText", -0.0, VT_BSTR, L"-0"},
    {"InfinityToText", -kInfinity, VT_BSTR, L"-INF"},
    {"NotANumberToText", kNotANumber, VT_BSTR, L"NAN"},
    {"CurrencyToText", kMinusOnePoint205, VT_BSTR, L"-1.205"},
    {"SmallestCurrencyToText", kSmallestCurrency, VT_BSTR, L"-922337203685477.5808"},
    {"LargestCurrency", L"922337203685477.5807", VT_CY, kLargestCurrency},
    {"CurrencyHalfToEven", L"0.00025", VT_CY, kTwoUnits},
    {"CurrencyExponent", L"15E-1", VT_CY, kOneAndAHalf},
    {"CurrencyToReal", kOneAndAHalf, VT_R8, 1.5},
    {"LeapDayWithTime", L"2000-02-29 06:00:00", VT_DATE, Date(36585.25)},
    {"DateBeforeEpoch", L"1899-12-29 12:00:00", VT_DATE, Date(-1.5)},
    {"FirstDateToText", Date(-657434), VT_BSTR, L"0100-01-01 00:00:00"},
    {"LastDateToText", Date(2958465.999999), VT_BSTR, L"9999-12-31 23:59:59"},
    {"DaysToDate", L"1.5", VT_DATE, Date(1.5)},
};

struct Refusal
{
    const char* name;
    CComVariant source;
    VARTYPE type;
    HRESULT expected;
};

constexpr VARTYPE kReference = VT_I4 | VT_BYREF;

const Refusal kRefused[] = {
    {"AboveByte", 255.5, VT_UI1, DISP_E_OVERFLOW},
    {"BelowUnsigned", -1, VT_UI4, DISP_E_OVERFLOW},
    {"AboveLong", 2147483647.5, VT_I4, DISP_E_OVERFLOW},
    {"Above64", 9223372036854775808.0, VT_I8, DISP_E_OVERFLOW},
    {"AboveSingle", 3.5e38, VT_R4, DISP_E_OVERFLOW},
    {"NotANumberToInteger", kNotANumber, VT_I4, DISP_E_OVERFLOW},
    {"AboveCurrency", L"922337203685477.5808", VT_CY, DISP_E_OVERFLOW},
    {"AfterLastDate", 2958466.0, VT_DATE, DISP_E_OVERFLOW},
    {"BeforeFirstDate", L"0099-12-31", VT_DATE, DISP_E_OVERFLOW},
    {"TextOverflow", L"1E400", VT_R8, DISP_E_OVERFLOW},
    {"TextSingleOverflow", L"1E39", VT_R4, DISP_E_OVERFLOW},
    {"TextHugeExponent", L"1E99999999999999999999", VT_I4, DISP_E_OVERFLOW},
    {"TextEmpty", L"", VT_I4, DISP_E_TYPEMISMATCH},
    {"TextNull", kNullText, VT_I4, DISP_E_TYPEMISMATCH},
    {"TextTrailing", L"1x", VT_I4, DISP_E_TYPEMISMATCH},
    {"TextComma", L"1,5", VT_R8, DISP_E_TYPEMISMATCH},
    {"TextOtherScript", L"\u0661", VT_R8, DISP_E_TYPEMISMATCH},
    {"TextInfinityToInteger", L"INF", VT_I4, DISP_E_TYPEMISMATCH},
    {"TextZeroInside", kZeroInside, VT_I4, DISP_E_TYPEMISMATCH},
    {"NoSuchDay", L"2001-02-29", VT_DATE, DISP_E_TYPEMISMATCH},
    {"Null", kNull, VT_I4, DISP_E_TYPEMISMATCH},
    {"Error", kError, VT_I4, DISP_E_TYPEMISMATCH},
    {"ToEmpty", 1, VT_EMPTY, DISP_E_TYPEMISMATCH},
    {"ToReference", 1, kReference, DISP_E_TYPEMISMATCH},
    {"ToVariant", 1, VT_VARIANT, DISP_E_BADVARTYPE},
};

TEST(VariantChangeType, ConvertsIntoFreshAndIntoSameVariant)
{
    for (const ConversionCase& row : kAccepted)
    {
        CComVariant target(L"former");
        EXPECT_EQ(VariantChangeType(&target, &row.source, 0, row.type), S_OK) << row.name;
        EXPECT_TRUE(target == row.expected) << row.name;
        CComVariant inPlace = row.source;
        EXPECT_EQ(inPlace.ChangeType(row.type), S_OK) << row.name;
        EXPECT_TRUE(inPlace == row.expected) << row.name;
    }
}

TEST(VariantChangeType, LeavesTheTargetAloneOnFailure)
{
    for (const Refusal& row : kRefused)
    {
        CComVariant target(L"former");
        EXPECT_EQ(VariantChangeType(&target, &row.source, 0, row.type), row.expected) << row.name;
        EXPECT_TRUE(target == CComVariant(L"former")) << row.name;
    }
}

TEST(VariantChangeType, WritesTruthAsWordsOnRequest)
{
    for (const bool value : {true, false})
    {
        CComVariant target(value);
        EXPECT_EQ(VariantChangeType(&target, &target, VARIANT_ALPHABOOL, VT_BSTR), S_OK);
        EXPECT_STREQ(target.bstrVal, value ? L"True" : L"False");
    }
}

TEST(VariantChangeType, ReadsBackEveryRealFromItsText)
{
    std::mt19937_64 bits(20);
    for (int i = 0; i < 20000; ++i)
    {
        const auto number = std::bit_cast<double>(bits());
        const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(bits()));
        CComVariant value = number;
        CComVariant narrow = single;
        ASSERT_EQ(value.ChangeType(VT_BSTR), S_OK);
        ASSERT_EQ(narrow.ChangeType(VT_BSTR), S_OK);
        ASSERT_EQ(value.ChangeType(VT_R8), S_OK) << number;
        ASSERT_EQ(narrow.ChangeType(VT_R4), S_OK) << single;
        EXPECT_TRUE(value.dblVal == number || std::isnan(number)) << number;
        EXPECT_TRUE(narrow.fltVal == single || std::isnan(single)) << single;
    }
}
} // namespace
