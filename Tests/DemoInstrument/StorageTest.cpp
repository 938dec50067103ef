#include "Analyzer/CMassMemory.h"
#include "Analyzer/CTraceMemory.h"
#include "CChannelList.h"
#include "Common/BlockReading.h"

#include <gtest/gtest.h>

namespace ZoVelkor::Demo
{
namespace
{

using Channels = std::vector<long>;

struct ListCase
{
    const char* text;
    std::optional<Channels> expected;
};

TEST(ChannelList, GivesChannelsOrNothing)
{
    const ListCase cases[] = {
        {"(@1)", Channels{1}},
        {"(@1,3:5)", Channels{1, 3, 4, 5}},
        {"(@5:3)", Channels{5, 4, 3}},
        {"( @ 1 , 2 : 3 ) ", Channels{1, 2, 3}},
        {"(@)", Channels{}},
        {"(@1:8)", Channels{1, 2, 3, 4, 5, 6, 7, 8}},
        {"(@1:9)", Channels{1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {"(@1:4,1:5,7)", Channels{1, 2, 3, 4, 1, 2, 3, 4, 5}},
        {"(@1:9223372036854775807)", Channels{1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {"(@9223372036854775807)", Channels{9223372036854775807}},
        {"(@9223372036854775808)", Channels{9223372036854775807}},
        {"(1)", std::nullopt},
        {"(@1", std::nullopt},
        {"(@1,)", std::nullopt},
        {"(@1:)", std::nullopt},
        {"(@-1)", std::nullopt},
        {"(@1)2", std::nullopt},
        {"(@a)", std::nullopt},
        {"", std::nullopt},
    };
    for (const ListCase& row : cases)
    {
        EXPECT_EQ(Commands::ParseChannelList(row.text, 8), row.expected) << row.text;
    }
}

TEST(MassMemory, RefusesBadNames)
{
    const std::string longest(kMaxFileNameLength, 'n');
    CMassMemory files;
    for (const std::string& name : {std::string("a"), std::string("Data_1.bin~"), longest})
    {
        EXPECT_EQ(files.Store(name, {}), 0) << name;
    }
    for (const std::string& name : {std::string(),
                                    longest + 'n',
                                    std::string("a b"),
                                    std::string("a,b"),
                                    std::string("a\"b"),
                                    std::string("../a"),
                                    std::string("a\tb"),
                                    std::string("a\0b", 3),
                                    std::string("\xE4")})
    {
        EXPECT_EQ(files.Store(name, {}), -257) << name;
    }
    EXPECT_EQ(files.AllFiles().size(), 3U);
}

TEST(MassMemory, CountsItsBytes)
{
    CMassMemory files;
    EXPECT_EQ(files.Store("a", CMassMemory::Content(100)), 0);
    EXPECT_EQ(files.Store("b", CMassMemory::Content(20)), 0);
    EXPECT_EQ(files.Store("a", CMassMemory::Content(10)), 0);
    EXPECT_EQ(files.UsedBytes(), 30U);
    EXPECT_EQ(files.Delete("b"), 0);
    EXPECT_EQ(files.Delete("b"), -256);
    EXPECT_EQ(files.UsedBytes(), 10U);

    EXPECT_EQ(files.CheckRoom("b", kMaxFileBytes - 10), 0);
    EXPECT_EQ(files.CheckRoom("b", kMaxFileBytes - 9), -254);
    EXPECT_EQ(files.CheckRoom("a", kMaxFileBytes), 0) << "the former file gives its room free";
}

TEST(MassMemory, RefusesTheFileTooMany)
{
    CMassMemory files;
    for (std::size_t i = 0; i < kMaxFileCount; ++i)
    {
        ASSERT_EQ(files.Store("f" + std::to_string(i), {}), 0);
    }
    EXPECT_EQ(files.Store("one_more", {}), -255);
    EXPECT_EQ(files.Store("f0", CMassMemory::Content(1)), 0);
}

/// A block that delivers at most a few items a read until it ends or fails.
class CFakeBlock
{
public:
    CFakeBlock(std::size_t size, HRESULT end) : m_left(size), m_end(end) {}

    HRESULT operator()(unsigned long count, int* data, unsigned long* got)
    {
        ++m_reads;
        *got = std::min<std::size_t>(count, m_left);
        std::fill_n(data, *got, 7);
        m_left -= *got;
        return *got < count ? m_end : S_OK;
    }

    int Reads() const { return m_reads; }

private:
    std::size_t m_left;
    HRESULT m_end;
    int m_reads = 0;
};

struct BlockCase
{
    const char* name;
    std::size_t size;
    long announced;
    HRESULT end;
    std::size_t read;
    HRESULT result;
    int reads;
};

TEST(BlockReading, ReadsToTheEndInPiecesAndRefusesTooMuch)
{
    constexpr std::size_t kLimit = 600'000;
    constexpr BlockCase kCases[] = {
        {"Announced", 100'000, 100'000, S_OK, 100'000, S_OK, 1},
        {"InPieces", 600'000, 600'000, S_OK, 600'000, S_OK, 3},
        {"Empty", 0, 0, S_FALSE, 0, S_OK, 1},
        {"NotAnnounced", 100'000, -1, S_FALSE, 100'000, S_OK, 2},
        {"Largest", kLimit, -1, S_OK, kLimit, S_OK, 4},
        {"AnnouncedTooMuch", 800'000, 800'000, S_OK, 0, S_FALSE, 0},
        {"TooMuch", 800'000, -1, S_OK, 0, S_FALSE, 3},
        {"Cancelled", 10, 20, E_ABORT, 0, E_ABORT, 1},
    };
    for (const BlockCase& row : kCases)
    {
        SCOPED_TRACE(row.name);
        CFakeBlock block(row.size, row.end);
        std::vector<int> items;
        EXPECT_EQ(ReadBlock(items, row.announced, kLimit, block), row.result);
        EXPECT_EQ(items, std::vector<int>(row.read, 7));
        EXPECT_LE(block.Reads(), row.reads);
    }
}

TEST(Trace, FindsFrequenciesAndPeak)
{
    Trace trace{{}, {-80, -20, -20, -90}};
    EXPECT_EQ(trace.PeakIndex(), 1U);
    EXPECT_DOUBLE_EQ(trace.FrequencyHz(3), kMaxFrequencyHz);
    EXPECT_EQ(trace.NearestIndex(0), 0U);
    EXPECT_EQ(trace.NearestIndex(0.9e9), 0U);
    EXPECT_EQ(trace.NearestIndex(1.1e9), 1U);
    EXPECT_EQ(trace.NearestIndex(kMaxFrequencyHz), 3U);
    trace.levelsDbm = {-5};
    EXPECT_DOUBLE_EQ(trace.FrequencyHz(0), 0.0);
    EXPECT_EQ(trace.NearestIndex(kMaxFrequencyHz), 0U);
}

} // namespace
} // namespace ZoVelkor::Demo
