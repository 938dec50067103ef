#include "Parsing/CBlockReader.h"
#include "Stream.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
class BlockReader : public testing::Test
{
protected:
    void Begin(std::vector<unsigned char> bytes)
    {
        m_bytes = std::move(bytes);
        m_reader->Begin(m_bytes);
    }

    std::vector<unsigned char> m_bytes;
    CComPtr<CBlockReaderObject> m_reader = CBlockReaderObject::Create();
};

TEST_F(BlockReader, ReadsOnWhereItStopped)
{
    Begin({1, 2, 3, 4, 5});
    unsigned char data[4] = {};
    unsigned long got = 0;
    EXPECT_EQ(m_reader->Read(2, data, &got), S_OK);
    EXPECT_EQ(data[1], 2);
    CComPtr<IStream> stream;
    ASSERT_EQ(CreateMemoryStream(&stream), S_OK);
    EXPECT_EQ(m_reader->ReadFromStream(stream, 1, &got), S_OK);
    EXPECT_EQ(got, 1U);
    short complete = 0;
    long length = 0;
    unsigned long available = 0;
    unsigned long consumed = 0;
    EXPECT_EQ(m_reader->GetStatusEx(&complete, &length, &available, &consumed), S_OK);
    EXPECT_EQ(complete, VARIANT_TRUE);
    EXPECT_EQ(length, 5);
    EXPECT_EQ(available, 2U);
    EXPECT_EQ(consumed, 3U);
    unsigned char* rest = nullptr;
    EXPECT_EQ(m_reader->Access(&rest, &available), S_OK);
    EXPECT_EQ(rest, m_bytes.data() + 3);
    EXPECT_EQ(m_reader->ContinueRead(0), S_OK);
    EXPECT_EQ(m_reader->Read(4, data, &got), S_OK);
    EXPECT_EQ(got, 2U);
    EXPECT_EQ(m_reader->Read(4, data, &got), S_FALSE);
    EXPECT_EQ(m_reader->ReadFromStream(stream, 1, &got), S_FALSE);
    EXPECT_EQ(m_reader->ContinueRead(-1), S_FALSE);
}

struct ElementCase
{
    tagEnumFormatDataType type;
    long width;
    tagEnumFormatByteOrder order;
    std::vector<unsigned char> bytes;
    VARTYPE vt;
    double value;
    HRESULT integerResult;
};

TEST_F(BlockReader, ReadsElementsOfEveryFormat)
{
    // One row a line.
    // clang-format off
    const ElementCase kCases[] = {
        {ZO_FORMAT_INTEGER, 8, ZO_BYTE_ORDER_NORMAL, {0x80}, VT_I1, -128, S_OK},
        {ZO_FORMAT_INTEGER, 16, ZO_BYTE_ORDER_NORMAL, {0x01, 0x02}, VT_I2, 258, S_OK},
        {ZO_FORMAT_INTEGER, 16, ZO_BYTE_ORDER_SWAPPED, {0x01, 0x02}, VT_I2, 513, S_OK},
        {ZO_FORMAT_INTEGER, 32, ZO_BYTE_ORDER_NORMAL, {0x80, 0, 0, 0}, VT_I4, -2147483648.0, S_OK},
        {ZO_FORMAT_INTEGER,
         64, ZO_BYTE_ORDER_NORMAL,
         {0, 0, 0, 0, 0x80, 0, 0, 0},
         VT_I8, 2147483648.0,
         DISP_E_OVERFLOW},
        {ZO_FORMAT_REAL, 32, ZO_BYTE_ORDER_NORMAL, {0x3F, 0xC0, 0, 0}, VT_R4, 1.5, S_OK},
        {ZO_FORMAT_REAL, 64, ZO_BYTE_ORDER_SWAPPED, {0, 0, 0, 0, 0, 0, 0x04, 0x40}, VT_R8, 2.5, S_OK},
        {ZO_FORMAT_REAL, 32, ZO_BYTE_ORDER_NORMAL, {0x7F, 0x80, 0, 0}, VT_R4, INFINITY, DISP_E_OVERFLOW},
    };
    // clang-format on
    for (const ElementCase& row : kCases)
    {
        std::vector<unsigned char> thrice;
        for (int i = 0; i < 3; ++i)
        {
            thrice.insert(thrice.end(), row.bytes.begin(), row.bytes.end());
        }
        Begin(thrice);
        VARIANT value;
        VariantInit(&value);
        double number = 0;
        long integer = 0;
        EXPECT_EQ(m_reader->GetNextElement(&value), E_UNEXPECTED);
        ASSERT_EQ(m_reader->InitReaderFormat(row.type, row.width, row.order), S_OK);
        EXPECT_EQ(m_reader->GetNextElement(&value), S_OK);
        EXPECT_EQ(value.vt, row.vt);
        EXPECT_EQ(m_reader->GetNextDouble(&number), S_OK);
        EXPECT_EQ(number, row.value);
        EXPECT_EQ(m_reader->GetNextInteger(&integer), row.integerResult);
        EXPECT_EQ(integer, row.integerResult == S_OK ? std::lrint(std::nearbyint(row.value)) : 0);
        EXPECT_EQ(m_reader->GetNextInteger(&integer), S_FALSE);
    }
    EXPECT_EQ(m_reader->InitReaderFormat(ZO_FORMAT_REAL, 16, ZO_BYTE_ORDER_NORMAL), E_INVALIDARG);
    EXPECT_EQ(m_reader->InitReaderFormat(ZO_FORMAT_ASCII, 32, ZO_BYTE_ORDER_NORMAL), E_INVALIDARG);
}

TEST_F(BlockReader, ReadsArraysUpToTheEnd)
{
    Begin({1, 2, 3, 4, 5, 6, 7});
    double first[8] = {};
    double second[8] = {};
    double* const both[] = {first, second};
    unsigned long got = 0;
    ASSERT_EQ(m_reader->InitReaderFormat(ZO_FORMAT_INTEGER, 8, ZO_BYTE_ORDER_NORMAL), S_OK);
    EXPECT_EQ(m_reader->GetNextArray(2, first, &got), S_OK);
    EXPECT_EQ(m_reader->GetNextScatteredArrays(2, 1, both, &got), S_OK);
    EXPECT_EQ(first[0], 3);
    EXPECT_EQ(second[0], 4);
    EXPECT_EQ(m_reader->GetNextScatteredArrays(2, 8, both, &got), E_FAIL) << "seven bytes are no pairs";
    EXPECT_EQ(got, 1U);
    EXPECT_EQ(m_reader->GetNextArray(8, first, &got), S_FALSE);
    Begin({1, 2, 3});
    ASSERT_EQ(m_reader->InitReaderFormat(ZO_FORMAT_INTEGER, 16, ZO_BYTE_ORDER_NORMAL), S_OK);
    EXPECT_EQ(m_reader->GetNextArray(8, first, &got), E_FAIL) << "half an element is left";
}

TEST_F(BlockReader, IsDeadOnceItsCommandEnded)
{
    Begin({1, 2});
    unsigned char byte = 0;
    unsigned char* data = nullptr;
    unsigned long got = 0;
    short complete = 0;
    long length = 0;
    double number = 0;
    EXPECT_EQ(m_reader->Read(1, nullptr, &got), E_POINTER);
    EXPECT_EQ(m_reader->Access(&data, nullptr), E_POINTER);
    m_reader->Invalidate();
    EXPECT_EQ(m_reader->Read(1, &byte, &got), E_ABORT);
    EXPECT_EQ(m_reader->Access(&data, &got), E_ABORT);
    EXPECT_EQ(m_reader->Status(&complete, &length), E_ABORT);
    EXPECT_EQ(m_reader->Discard(), E_ABORT);
    EXPECT_EQ(m_reader->ContinueRead(0), E_ABORT);
    EXPECT_EQ(m_reader->GetNextDouble(&number), E_ABORT);
    EXPECT_EQ(m_reader->GetNextArray(1, &number, &got), E_ABORT);
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
