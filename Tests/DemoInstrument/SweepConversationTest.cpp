#include "Analyzer/SignalSimulation.h"
#include "DemoFixture.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace ZoVelkor::Demo
{
namespace
{

using Clock = std::chrono::steady_clock;

class SweepConversation : public DemoFixture
{
protected:
    void WaitForSweeps(int count)
    {
        WaitForAnswer("DIAG:SERV:COUN?", [count](int counted) { return counted >= count; });
    }
};

TEST_F(SweepConversation, OperationCompleteWaitsForTheSweepTime)
{
    Client().Write("SWE:TIME 200 ms");
    const auto start = Clock::now();
    EXPECT_EQ(Client().Query("INIT;*OPC?"), "1");
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(200));
    EXPECT_EQ(Client().Query("DIAG:SERV:COUN?"), "1");
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SweepConversation, WaitHoldsTheNextCommandUntilTheTraceIsThere)
{
    Client().Write(
        "SWE:TIME 100 ms;POIN 101;:FREQ:CENT 1 GHZ;SPAN 1 MHZ;:SENS3:FREQ:CENT 2.4 GHZ;SPAN 1 MHZ");
    const auto levels = Numbers(Client().Query("INIT;*WAI;:TRAC?"));
    ASSERT_EQ(levels.size(), 101U);
    EXPECT_NEAR(levels[50], -10.0, 0.5);
    const auto others = Numbers(Client().Query("TRAC3?"));
    ASSERT_EQ(others.size(), 101U);
    EXPECT_NEAR(others[50], -30.0, 0.5);
    ExpectSameAnswer(Client().Query("CALC:MARK4:MAX;X?"), "1E9");
}

TEST_F(SweepConversation, TheSameSweepAfterEveryStart)
{
    const auto measure = [this] { return Client().Query("SWE:POIN 101;TIME MIN;:INIT;*WAI;:TRAC?"); };
    const std::string first = measure();
    EXPECT_NE(measure(), first) << "the noise of the next sweep is another";
    Restart();
    EXPECT_EQ(measure(), first);
}

TEST_F(SweepConversation, SecondInitiationIsIgnored)
{
    Client().Write("SWE:TIME 1000;:INIT;INIT");
    EXPECT_EQ(NextError(), -213);
    EXPECT_EQ(Client().Query("ABOR;INIT:CONT ON;CONT?"), "1");
    Client().Write("INIT");
    EXPECT_EQ(NextError(), -213);
    EXPECT_EQ(NextError(), 0);
}

struct EndCase
{
    const char* name;
    const char* command;
};

TEST_F(SweepConversation, AbortedSweepEndsWithoutTrace)
{
    for (const EndCase row : {EndCase{"Abort", "ABOR"}, {"Reset", "*RST"}})
    {
        SCOPED_TRACE(row.name);
        Client().Write("SWE:TIME 1000;:INIT");
        EXPECT_EQ(Client().Query(std::string(row.command) + ";*OPC?"), "1");
        Client().Write("TRAC?");
        EXPECT_EQ(NextError(), -230);
        EXPECT_EQ(Client().Query("DIAG:SERV:COUN?"), "0");
    }
}

TEST_F(SweepConversation, OnlyTheSessionThatStartedItWaits)
{
    auto other = Connect();
    EXPECT_EQ(Client().Query("SWE:TIME 1000;:INIT;:DIAG:SERV:COUN?"), "0");
    Client().Write("*OPC?");
    EXPECT_EQ(other.Query("*OPC?"), "1");
    other.Write("ABOR");
    EXPECT_EQ(Client().ReadLine(), "1");
}

TEST_F(SweepConversation, OnlyTheSessionThatStartedItWaitsForTheTrigger)
{
    for (const EndCase row : {EndCase{"Query", "*OPC?"}, {"Wait", "*WAI;:INIT:CONT?"}})
    {
        SCOPED_TRACE(row.name);
        auto starter = Connect();
        EXPECT_EQ(starter.Query("SWE:TIME MIN;:TRIG:SOUR BUS;:INIT;:TRIG:SOUR?"), "BUS");
        starter.Write(row.command);
        const std::string count = Client().Query("*OPC?;:DIAG:SERV:COUN?");
        Client().Write("TRIG");
        EXPECT_EQ(starter.ReadLine(), row.command[1] == 'O' ? "1" : "0");
        EXPECT_NE(Client().Query("*OPC?;:DIAG:SERV:COUN?"), count);
    }
    EXPECT_EQ(NextError(), 0);
}

struct IgnoredCase
{
    const char* name;
    const char* before;
};

TEST_F(SweepConversation, TriggersAreIgnoredWhenNothingWaits)
{
    for (const IgnoredCase row : {IgnoredCase{"Idle", "TRIG:SOUR BUS"},
                                  {"ImmediateSource", "INIT"},
                                  {"SecondTrigger", "TRIG:SOUR BUS;:INIT;:TRIG:SEQ:IMM"},
                                  {"Aborted", "TRIG:SOUR BUS;:INIT;:ABOR"},
                                  {"Reset", "TRIG:SOUR BUS;:INIT;*RST"}})
    {
        SCOPED_TRACE(row.name);
        Client().Write("*RST;:SWE:TIME 1000;:" + std::string(row.before));
        EXPECT_EQ(NextError(), 0);
        Client().Write("TRIG");
        EXPECT_EQ(NextError(), -211);
    }
}

TEST_F(SweepConversation, ContinuousSweepingFollowsTheSettings)
{
    Client().Write("SWE:TIME 1 ms;POIN 101;:INIT:CONT ON");
    WaitForSweeps(3);
    EXPECT_EQ(Numbers(Client().Query("TRAC?")).size(), 101U);
    Client().Write("SWE:POIN 201");
    WaitForSweeps(std::stoi(Client().Query("DIAG:SERV:COUN?")) + 2);
    EXPECT_EQ(Numbers(Client().Query("TRAC?")).size(), 201U);
    EXPECT_EQ(Client().Query("*OPC?"), "1") << "nothing is pending";
    EXPECT_EQ(Client().Query("INIT:CONT OFF;:ABOR;:INIT;*OPC?"), "1");
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SweepConversation, ClientGoneMeanwhileLeavesTheSweepAlone)
{
    {
        auto leaver = Connect();
        EXPECT_EQ(leaver.Query("SWE:TIME 50 ms;:INIT;*IDN?").empty(), false);
        leaver.Write("*OPC?");
    }
    WaitForSweeps(1);
    EXPECT_EQ(Numbers(Client().Query("TRAC?")).size(), 1001U);
    EXPECT_EQ(Client().Query("INIT;*OPC?"), "1");
}

TEST_F(SweepConversation, InstrumentEndsInTheMiddleOfASweep)
{
    EXPECT_EQ(Client().Query("SWE:TIME 1000;:INIT;:DIAG:SERV:COUN?"), "0");
    const auto start = Clock::now();
    Restart();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(100));
    EXPECT_EQ(Client().Query("SWE:TIME:AUTO?"), "1");
}

struct BlockFormatCase
{
    const char* name;
    const char* format;
    std::string_view header;
    std::string_view bytes;
};

using namespace std::string_view_literals;

// The values -1.5 and 2 as IEEE 754 has them.
constexpr BlockFormatCase kBlockFormats[] = {
    {"Real64Normal", "REAL,64;:FORM:BORD NORM", "#216", "\xBF\xF8\0\0\0\0\0\0\x40\0\0\0\0\0\0\0"sv},
    {"Real64Swapped", "REAL,64;:FORM:BORD SWAP", "#216", "\0\0\0\0\0\0\xF8\xBF\0\0\0\0\0\0\0\x40"sv},
    {"Real32Normal", "REAL,32;:FORM:BORD NORM", "#18", "\xBF\xC0\0\0\x40\0\0\0"sv},
    {"Real32Swapped", "REAL,32;:FORM:BORD SWAP", "#18", "\0\0\xC0\xBF\0\0\0\x40"sv},
};

TEST_F(SweepConversation, TracesTravelInEveryFormat)
{
    for (const BlockFormatCase& row : kBlockFormats)
    {
        SCOPED_TRACE(row.name);
        Client().Write("*RST;:TRAC -1.5,2;:FORM " + std::string(row.format));
        const std::string block = std::string(row.header) + std::string(row.bytes);
        Client().Write("TRAC?");
        EXPECT_EQ(Client().ReadBlock(), row.bytes);
        Client().Write("TRAC2 " + block);
        ExpectSameAnswer(Client().Query("FORM ASC;:TRAC2?"), "-1.5,2");
    }
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SweepConversation, LongestSweepTravelsAsList)
{
    // The text of a whole sweep goes back as it came.
    Client().Write("SWE:POIN MAX;TIME MIN;:INIT;*WAI");
    const std::string list = Client().Query("TRAC?");
    EXPECT_EQ(std::ranges::count(list, ','), 100000);
    Client().Write("TRAC2 " + list);
    EXPECT_TRUE(Client().Query("TRAC2?") == list);
    EXPECT_EQ(NextError(), 0);
}

constexpr std::size_t kLargeBytes = 100'000'000;
constexpr const char* kLargeHeader = "#9100000000";

TEST_F(SweepConversation, LargeFilesTravelUnchanged)
{
    // Neighbours differ, and there are line feeds among them.
    std::string bytes(kLargeBytes, '\0');
    for (std::size_t i = 0; i < kLargeBytes; ++i)
    {
        bytes[i] = static_cast<char>(i * 31 >> 3);
    }
    Client().Write("MMEM:DATA 'large'," + (kLargeHeader + bytes));
    Client().Write("MMEM:DATA? 'large'");
    EXPECT_TRUE(Client().ReadBlock() == bytes);
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SweepConversation, LargeTracesTravelUnchanged)
{
    // Finite numbers all of them, whether of 32 or of 64 bits.
    std::string bytes;
    bytes.reserve(kLargeBytes);
    for (std::size_t i = 0; i < kLargeBytes / 4; ++i)
    {
        bytes.append(
            {'\x42', static_cast<char>(i >> 16 & 0x7F), static_cast<char>(i >> 8), static_cast<char>(i)});
    }
    // 25 million values are more than a trace holds, 12.5 million are not.
    Client().Write("FORM REAL,32;:TRAC " + (kLargeHeader + bytes));
    EXPECT_EQ(NextError(), -223);
    Client().Write("FORM REAL,64;:TRAC " + (kLargeHeader + bytes));
    Client().Write("TRAC?");
    EXPECT_TRUE(Client().ReadBlock() == bytes);
    EXPECT_EQ(NextError(), 0);
}

} // namespace
} // namespace ZoVelkor::Demo
