#include "CBScpiBlockData.h"
#include "CComObject.h"
#include "ResponseData.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace ZoVelkor::Testing
{

namespace
{

struct HeaderCase
{
    const char* szText;
    int result;
    std::int64_t length; ///< 99: not written
};

TEST(BlockHeader, IsRecognised)
{
    constexpr HeaderCase kCases[] = {
        {"", 0, 99},
        {"#", 0, 99},
        {"1", 2, 99},
        {" #0", 2, 99},
        {"#A", 2, 99},
        {"#-", 2, 99},
        {"#0", 1, -1},
        {"#0abc", 1, -1},
        {"#1", 0, 99},
        {"#15", 1, 5},
        {"#1x", 2, 99},
        {"#10abc", 1, 0},
        {"#312", 0, 99},
        {"#3a", 0, 99},
        {"#3123", 1, 123},
        {"#31234", 1, 123},
        {"#312x", 2, 99},
        {"#3-12", 2, 99},
        {"#9999999999", 1, 999'999'999},
        {"#(", 0, 99},
        {"#(  ", 0, 99},
        {"#( 12", 0, 99},
        {"#( 12)", 1, -1},
        {"#(12345678901)ab", 1, -1},
        {"#()", 2, 99},
        {"#(1x)", 2, 99},
        {"#(1 )", 2, 99},
    };
    for (const HeaderCase& row : kCases)
    {
        std::int64_t length = 99;
        EXPECT_EQ(CBScpiBlockData::ParseBlockDataHeader(row.szText, length), row.result) << row.szText;
        EXPECT_EQ(length, row.length) << row.szText;
    }
}

TEST(BlockHeader, IsWrittenWithTheCountOfItsDigits)
{
    constexpr std::pair<std::uint64_t, const char*> kCases[] = {
        {0, "#10"},
        {9, "#19"},
        {10, "#210"},
        {999'999'999, "#9999999999"},
        {1'000'000'000, "#101000000000"},
        {std::numeric_limits<std::uint64_t>::max(), "#2018446744073709551615"},
    };
    for (const auto& [length, expected] : kCases)
    {
        char header[kMaxBlockHeaderSize];
        EXPECT_EQ(std::string(header, WriteDefiniteBlockHeader(header, length)), expected);
    }
}

class CBareBlock : public CBScpiBlockData
{
protected:
    ~CBareBlock() override = default;
};

TEST(BlockHeader, BaseReadsNothing)
{
    const auto block = CComObject<CBareBlock, IZOScpiBlockData>::Create();
    unsigned long number = 7;
    short complete = 7;
    long length = 7;
    double value = 7;
    unsigned char* pData = nullptr;
    const HRESULT results[] = {
        block->Read(0, nullptr, nullptr),
        block->Status(&complete, &length),
        block->Discard(),
        block->GetStatusEx(&complete, &length, &number, &number),
        block->ReadFromStream(nullptr, 1, &number),
        block->ContinueRead(0),
        block->InitReaderFormat(ZO_FORMAT_REAL, 64, ZO_BYTE_ORDER_NORMAL),
        block->GetNextElement(nullptr),
        block->GetNextDouble(&value),
        block->GetNextInteger(&length),
        block->GetNextArray(1, &value, &number),
        block->GetNextScatteredArrays(0, 0, nullptr, &number),
        block->Access(&pData, &number),
    };
    for (const HRESULT result : results)
    {
        EXPECT_EQ(result, E_NOTIMPL);
    }
    EXPECT_TRUE(number == 7 && complete == 7 && length == 7 && value == 7 && pData == nullptr);
}

} // namespace

} // namespace ZoVelkor::Testing
