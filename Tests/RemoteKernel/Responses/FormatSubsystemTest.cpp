#include "CComVariant.h"
#include "Responses/CFormatSubsystem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
using namespace std::string_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class FormatSubsystem : public testing::Test
{
protected:
    std::string Take()
    {
        std::string text(m_output->View());
        m_output->Clear();
        return text;
    }

    CComPtr<CSessionOutput> m_output = CSessionOutput::Create(std::size_t{1} << 20);
    CComPtr<CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>> m_format =
        CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>::Create(m_output);
};

struct NumberCase
{
    CComVariant value;
    const char* expected;
    tagEnumFormatDataType type;
    long width;
};

TEST_F(FormatSubsystem, WritesNumbers)
{
    const NumberCase cases[] = {
        {0.0, "0", ZO_FORMAT_DEFAULT, 0},
        {-0.0, "0", ZO_FORMAT_DEFAULT, 0},
        {0.1, "0.1", ZO_FORMAT_DEFAULT, 0},
        {0.1F, "0.1", ZO_FORMAT_DEFAULT, 0},
        {-2.5, "-2.5", ZO_FORMAT_DEFAULT, 0},
        {1e7, "10000000", ZO_FORMAT_DEFAULT, 0},
        {1.0 / 3.0, "0.3333333333333333", ZO_FORMAT_DEFAULT, 0},
        {1e-4, "0.0001", ZO_FORMAT_DEFAULT, 0},
        {9.99e-5, "9.99E-05", ZO_FORMAT_DEFAULT, 0},
        {1e-7, "1.0E-07", ZO_FORMAT_DEFAULT, 0},
        {9007199254740993.0, "9007199254740992", ZO_FORMAT_DEFAULT, 0},
        {9999999999999998.0, "9999999999999998", ZO_FORMAT_DEFAULT, 0},
        {1e16, "1.0E+16", ZO_FORMAT_DEFAULT, 0},
        {-1.5e300, "-1.5E+300", ZO_FORMAT_DEFAULT, 0},
        {5e-324, "5.0E-324", ZO_FORMAT_DEFAULT, 0},
        {3.4e38F, "3.4E+38", ZO_FORMAT_DEFAULT, 0},
        {kInfinity, "9.9E37", ZO_FORMAT_DEFAULT, 0},
        {-kInfinity, "-9.9E37", ZO_FORMAT_DEFAULT, 0},
        {std::nan(""), "9.91E37", ZO_FORMAT_DEFAULT, 0},
        {std::nanf(""), "9.91E37", ZO_FORMAT_DEFAULT, 0},
        {true, "1", ZO_FORMAT_DEFAULT, 0},
        {-128, "-128", ZO_FORMAT_DEFAULT, 0},
        {0xFFFFFFFFU, "4294967295", ZO_FORMAT_DEFAULT, 0},
        {std::numeric_limits<long long>::min(), "-9223372036854775808", ZO_FORMAT_DEFAULT, 0},
        {L"12.50", "12.5", ZO_FORMAT_DEFAULT, 0},
        {12345.678, "1.23E+04", ZO_FORMAT_ASCII, 3},
        {12345.678, "1.23E+04", ZO_FORMAT_DEFAULT, 3},
        {12.345, "12.3", ZO_FORMAT_ASCII, 3},
        {100.0, "1.0E+02", ZO_FORMAT_ASCII, 2},
        {255, "#HFF", ZO_FORMAT_HEX, 0},
        {255, "#H00FF", ZO_FORMAT_HEX, 4},
        {-1, "#HFFFFFFFF", ZO_FORMAT_HEX, 0},
        {-4294967297LL, "#HFFFFFFFEFFFFFFFF", ZO_FORMAT_HEX, 0},
        {8, "#Q10", ZO_FORMAT_OCTAL, 0},
        {std::numeric_limits<unsigned long long>::max(), "#Q1777777777777777777777", ZO_FORMAT_OCTAL, 0},
        {2.5, "#B10", ZO_FORMAT_BINARY, 0},
        {0, "#B000", ZO_FORMAT_BINARY, 3},
    };
    for (const NumberCase& row : cases)
    {
        EXPECT_EQ(m_format->NumericVariant(&row.value, row.type, row.width), S_OK) << row.expected;
        EXPECT_EQ(Take(), row.expected);
    }
}

TEST_F(FormatSubsystem, RefusesWhatIsNoNumberOrNoTextFormat)
{
    const CComVariant word(L"word");
    const CComVariant number(1.0);
    EXPECT_EQ(m_format->NumericVariant(&word, ZO_FORMAT_DEFAULT, 0), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(m_format->NumericVariant(nullptr, ZO_FORMAT_DEFAULT, 0), E_POINTER);
    EXPECT_EQ(m_format->NumericVariant(&number, ZO_FORMAT_REAL, 32), E_INVALIDARG);
    EXPECT_EQ(m_format->NumericVariant(&number, ZO_FORMAT_ASCII, 18), E_INVALIDARG);
    EXPECT_EQ(m_format->NumericVariant(&number, ZO_FORMAT_HEX, -1), E_INVALIDARG);
    EXPECT_EQ(Take(), "");
}

struct DataCase
{
    tagEnumFormatDataType type;
    long width;
    tagEnumFormatByteOrder order;
    std::string expected;
    const char* formatText;
};

TEST_F(FormatSubsystem, WritesDataInTheFormatOfThePath)
{
    const double values[] = {1, -2.5, 300, kInfinity};
    constexpr auto kNormal = ZO_BYTE_ORDER_NORMAL;
    constexpr auto kSwapped = ZO_BYTE_ORDER_SWAPPED;
    const std::string real32 = "#216\x3F\x80\0\0\xC0\x20\0\0\x43\x96\0\0\x7E\x94\xF5\x6A"s;
    const std::string real32Swapped = "#216\0\0\x80\x3F\0\0\x20\xC0\0\0\x96\x43\x6A\xF5\x94\x7E"s;
    const std::string real64 = "#232\x3F\xF0\0\0\0\0\0\0\xC0\x04\0\0\0\0\0\0"
                               "\x40\x72\xC0\0\0\0\0\0\x47\xD2\x9E\xAD\x36\x77\xAF\x6F"s;
    const std::string hex = "#H1,#HFFFFFFFE,#H12C,#H7FFFFFFFFFFFFFFF";
    const DataCase cases[] = {
        {ZO_FORMAT_ASCII, 0, kNormal, "1,-2.5,300,9.9E37", "ASC,0"},
        {ZO_FORMAT_ASCII, 2, kNormal, "1,-2.5,3.0E+02,9.9E37", "ASC,2"},
        {ZO_FORMAT_REAL, 32, kNormal, real32, "REAL,32"},
        {ZO_FORMAT_REAL, 32, kSwapped, real32Swapped, "REAL,32"},
        {ZO_FORMAT_REAL, 64, kNormal, real64, "REAL,64"},
        {ZO_FORMAT_INTEGER, 8, kNormal, "#14\x01\xFE\x7F\x7F"s, "INT,8"},
        {ZO_FORMAT_INTEGER, 16, kSwapped, "#18\x01\0\xFE\xFF\x2C\x01\xFF\x7F"s, "INT,16"},
        {ZO_FORMAT_HEX, 0, kNormal, hex, "HEX,0"},
    };
    // An array of the same numbers must give the same bytes as the fast way.
    CComVariant array;
    array.vt = VT_ARRAY | VT_R8;
    array.parray = SafeArrayCreateVector(VT_R8, 0, 4);
    std::memcpy(array.parray->pvData, values, sizeof values);
    for (const DataCase& row : cases)
    {
        SCOPED_TRACE(row.expected);
        ASSERT_EQ(m_format->put_DataFormat(row.type, row.width), S_OK);
        ASSERT_EQ(m_format->put_ByteOrder(row.order), S_OK);
        EXPECT_EQ(m_format->OutputDoubles(values, 4), S_OK);
        EXPECT_EQ(Take(), row.expected);
        EXPECT_EQ(m_format->OutputData(&array, ZO_INTERPRETATION_NUMERIC, VARIANT_TRUE), S_OK);
        EXPECT_EQ(Take(), ',' + row.expected);
        CComBSTR text;
        EXPECT_EQ(m_format->GetDataFormatText(&text), S_OK);
        EXPECT_EQ(text, CComBSTR(row.formatText));
    }
    EXPECT_EQ(m_format->put_DataFormat(ZO_FORMAT_REAL, 16), E_INVALIDARG);
    EXPECT_EQ(m_format->put_DataFormat(ZO_FORMAT_DEFAULT, 0), E_INVALIDARG);
    EXPECT_EQ(m_format->put_ByteOrder(static_cast<tagEnumFormatByteOrder>(2)), E_INVALIDARG);
    m_format->Reset();
    m_format->OutputDoubles(values, 1);
    EXPECT_EQ(Take(), "1");
}

TEST_F(FormatSubsystem, InterleavesScatteredData)
{
    CComVariant shorts;
    shorts.vt = VT_ARRAY | VT_I2;
    shorts.parray = SafeArrayCreateVector(VT_I2, 0, 2);
    const std::int16_t raw[] = {258, -1};
    std::memcpy(shorts.parray->pvData, raw, sizeof raw);
    const VARIANT* items[] = {&shorts, &shorts};
    const tagEnumFormatDataInterpretation numeric[] = {ZO_INTERPRETATION_NUMERIC, ZO_INTERPRETATION_NUMERIC};
    const tagEnumFormatDataInterpretation mixed[] = {ZO_INTERPRETATION_NUMERIC, ZO_INTERPRETATION_BOOLEAN};
    EXPECT_EQ(m_format->OutputScatteredData(2, items, mixed, VARIANT_FALSE), S_OK);
    EXPECT_EQ(Take(), "258,1,-1,1");
    m_format->put_DataFormat(ZO_FORMAT_INTEGER, 16);
    EXPECT_EQ(m_format->OutputScatteredData(2, items, numeric, VARIANT_TRUE), S_OK);
    EXPECT_EQ(Take(), ",#18\x01\x02\x01\x02\xFF\xFF\xFF\xFF");
    EXPECT_EQ(m_format->OutputScatteredData(2, items, mixed, VARIANT_FALSE), S_OK);
    EXPECT_EQ(Take(), "#12\x01\x02,1,#12\xFF\xFF,1");
    const CComVariant text(L"a\"b");
    EXPECT_EQ(m_format->OutputData(&text, ZO_INTERPRETATION_STRING, VARIANT_FALSE), S_OK);
    EXPECT_EQ(Take(), "\"a\"\"b\"");
    items[1] = &text;
    EXPECT_EQ(m_format->OutputScatteredData(2, items, numeric, VARIANT_FALSE), E_INVALIDARG);
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
