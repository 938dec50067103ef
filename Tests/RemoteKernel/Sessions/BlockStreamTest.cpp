#include "CScpiClient.h"
#include "CTcpServer.h"
#include "CTestApplication.h"
#include "Parsing/CBlockReader.h"
#include "Sessions/CSession.h"
#include "Stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <numeric>

namespace ZoVelkor::RemoteKernel::Testing
{

using Transports::CTcpServer;

namespace
{
using ZoVelkor::Testing::CScpiClient;

/// Gives a text in pieces of one size; '~' stands for a pause that is longer than any limit.
class CScriptedSource final : public IByteSource
{
public:
    CScriptedSource(std::string text, std::size_t piece) : m_text(std::move(text)), m_piece(piece) {}

    Received Receive(std::span<char> space, int timeoutMs, int) noexcept override
    {
        const bool pauses = m_text[m_place] == '~';
        m_place += pauses ? 1 : 0;
        if (pauses && timeoutMs >= 0)
        {
            return {ReceiveStatus::TimedOut, 0};
        }
        const std::size_t end = std::min(m_text.find('~', m_place), m_text.size());
        const std::size_t count = std::min({m_piece, space.size(), end - m_place});
        std::copy_n(m_text.data() + m_place, count, space.data());
        m_place += count;
        return {count != 0 ? ReceiveStatus::Received : ReceiveStatus::Ended, count};
    }

private:
    const std::string m_text;
    const std::size_t m_piece;
    std::size_t m_place = 0;
};

constexpr SessionLimits kSmall{.message = {.maxText = 64, .maxBlock = 60, .maxHeld = 16}};

/// Has a session with small limits run a text as a transport does; gives the responses.
std::string Converse(TestInstrument& instrument, const std::string& text, std::size_t piece)
{
    CScriptedSource source(text, piece);
    CSession session(instrument.kernel.Parts(), kSmall, {.source = &source});
    std::string responses;
    for (bool more = true; more;)
    {
        const std::span<char> space = session.InputSpace();
        const Received received = source.Receive(space, -1, -1);
        session.CommitInput(received.count);
        while (session.ExecuteNext())
        {
            responses += session.Response();
            session.ClearResponse();
        }
        more = received.status != ReceiveStatus::Ended && !session.IsCancelled();
    }
    return responses;
}

/// Bytes that look like everything else, line feeds among them.
std::string Filler(std::size_t size)
{
    std::string data = "a\n,#15;\"\n'b#0 (\n*\r;\nxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx";
    return data.substr(0, size);
}
std::string Block(std::size_t size)
{
    const std::string length = std::to_string(size);
    return '#' + std::to_string(length.size()) + length + Filler(size);
}
std::string Taken(std::size_t size, std::size_t length)
{
    const std::string data = Filler(size);
    return '"' + std::to_string(size) + '/' + std::to_string(length) + ':' +
           std::to_string(std::accumulate(data.begin(), data.end(), 0)) + '"';
}

struct StreamCase
{
    const char* szName;
    std::string message; ///< SYST:ERR:ALL? follows
    std::string responses;
};

class Streamed : public testing::TestWithParam<StreamCase>
{};

TEST_P(Streamed, IsTheSameHoweverTheInputIsCut)
{
    TestInstrument instrument;
    const std::string text = GetParam().message + "\nSYST:ERR:ALL?\n";
    for (std::size_t piece = 1; piece <= text.size(); ++piece)
    {
        ASSERT_EQ(Converse(instrument, "INT 7\n" + text, piece), GetParam().responses)
            << "pieces of " << piece;
    }
}

const std::string kNone = "0,\"No error\"\n";
const std::string kInteger = "\"2:0:7;\""; // LAST? when no block has been taken
const std::string kText = std::string(100, 'x');

// One row a line.
// clang-format off
const StreamCase kCases[] = {
    {"LargestInMemory", "TAKE 99," + Block(16) + ";LAST?", Taken(16, 16) + "\n" + kNone},
    {"SmallestStreamed", "TAKE 99," + Block(17) + ";LAST?", Taken(17, 17) + "\n" + kNone},
    {"ReadWithoutTheEnd", "TAKE 20," + Block(20) + ";LAST?", Taken(20, 20) + "\n" + kNone},
    {"ReadInPart", "*OPC?;TAKE 5," + Block(20) + ";LAST?", "1;" + Taken(5, 20) + "\n" + kNone},
    {"NotRead", "TAKE 0," + Block(20) + ";LAST?;*OPC?", "\"0/20:0\";1\n" + kNone},
    {"LargerThanTheLimit", "TAKE 99," + Block(65) + " ;LAST?", Taken(65, 65) + "\n" + kNone},
    {"Two", "TAKE 99," + Block(20) + ";LAST?;TAKE 3," + Block(18) + ";LAST?", Taken(20, 20) + ";" + Taken(3, 18) + "\n" + kNone},
    {"MemoryThenStreamed", "TAKE 99," + Block(9) + ";LAST?;TAKE 99," + Block(8) + ";LAST?", Taken(9, 9) + ";" + Taken(8, 8) + "\n" + kNone},
    {"WhiteSpaceBehind", "TAKE 99," + Block(20) + std::string(70, ' ') + "\r\nLAST?", Taken(20, 20) + "\n" + kNone},
    {"PathGoesOn", "DEEP:LAST?;TAKE 99," + Block(20) + ";LAST?", kInteger + ";" + Taken(20, 20) + "\n" + kNone},
    {"SecondParameter", "PAIR 99,#15abcde," + Block(20) + ";LAST?", Taken(20, 20) + "\n" + kNone},
    {"Collected", "*OPC?;DEEP:LAST?;REP 99," + Block(20) + " , " + Block(18) + ";LAST?", "1;" + kInteger + ";" + Taken(18, 18) + "\n" + kNone},
    {"CollectedTooMuch", "*OPC?;REP 99," + Block(61) + ";LAST?\nLAST?", "1\n" + kInteger + "\n-223,\"Too much data;Block too long\"\n"},
    {"IndefiniteToItsEnd", "TAKE 999,#0" + kText + "\nLAST?", "\"100/100:12000\"\n" + kNone},
    {"IndefiniteNotRead", "*OPC?;TAKE 0,#0" + kText + "\n*OPC?", "1\n1\n" + kNone},
    {"WrongSeparator", "*OPC?;TAKE 99," + Block(20) + " x," + Block(20) + ";LAST?\nLAST?", "1\n" + kInteger + "\n-103,\"Invalid separator;behind a block\"\n"},
    {"BlockBehind", "TAKE 99," + Block(20) + " \r " + Block(20) + ";LAST?\nLAST?", kInteger + "\n-103,\"Invalid separator;behind a block\"\n"},
    {"SeparatorNotReached", "TAKE 5," + Block(20) + "x;LAST?\nLAST?", Taken(5, 20) + "\n-103,\"Invalid separator;behind a block\"\n"},
    {"TooManyParameters", "TAKE 20," + Block(20) + ", " + Block(20) + ";LAST?\nLAST?", kInteger + "\n-108,\"Parameter not allowed;behind a block\"\n"},
    {"ErrorBehind", "TAKE 99," + Block(20) + ";BOGUS " + Block(20) + ";*OPC?\nLAST?", Taken(20, 20) + "\n-113,\"Undefined header;BOGUS\"\n"},
    {"UndefinedHeader", "*OPC?;BOGUS " + Block(20) + "," + Block(20) + ";LAST?\nLAST?", "1\n" + kInteger + "\n-113,\"Undefined header;BOGUS\"\n"},
    {"UndefinedIndefinite", "*OPC?;BOGUS #0" + kText + "\nLAST?", "1\n" + kInteger + "\n-113,\"Undefined header;BOGUS\"\n"},
    {"NotAllowed", "*OPC?;INT " + Block(20) + ";LAST?\nLAST?", "1\n" + kInteger + "\n-168,\"Block data not allowed;parameter 1: #220\"\n"},
    {"MissingBefore", "TAKE ," + Block(20) + "\nLAST?", kInteger + "\n-109,\"Missing parameter;parameter 1\"\n"},
    {"OutOfRangeBefore", "POS -5," + Block(20) + ";LAST?", kInteger + "\n-222,\"Data out of range;parameter 1: -5\"\n"},
    {"OnlyDefinite", "POS 5,#0" + kText + "\nLAST?", kInteger + "\n-168,\"Block data not allowed;parameter 2: #0\"\n"},
    {"TextTooLongBehind", "TAKE 99," + Block(20) + ";TEXT '" + kText + "'\nLAST?", Taken(20, 20) + "\n-363,\"Input buffer overrun;Program message too long\"\n"},
    {"Pause", "*OPC?;TAKE 99,#220abc~" + Filler(17) + ";LAST?\nLAST?", "1\n" + kInteger + "\n-365,\"Time out error;Block data stopped\"\n"},
    {"PauseNotRead", "TAKE 0,#220abc~" + Filler(17) + " ~;LAST?;*OPC?", "\"0/20:0\";1\n" + kNone},
    {"PauseBehind", "TAKE 20,#220" + Filler(20) + " ~" + Block(20) + ";LAST?\nLAST?", kInteger + "\n-365,\"Time out error;Block data stopped\"\n"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Blocks, Streamed, testing::ValuesIn(kCases), [](const auto& row) {
    return std::string(row.param.szName);
});

TEST(BlockStream, IsNotCarriedOutWithoutItsEnd)
{
    for (const std::string& block : {Block(20) + ";", "#0" + kText + "\n"})
    {
        TestInstrument instrument;
        const std::string message = "TAKE 999," + block;
        for (std::size_t length = 0; length <= message.size(); ++length)
        {
            // A client that has finished sending ends nothing.
            Converse(instrument, message.substr(0, length), message.size());
            const bool whole = length == message.size();
            ASSERT_EQ(Converse(instrument, "LAST?\n", 99) == "\"\"\n", !whole) << length;
        }
    }
}

TEST(BlockStream, IsCollectedWithoutSource)
{
    TestInstrument instrument;
    CSession session(instrument.kernel.Parts(), {.message = {.maxHeld = 16}});
    std::string message = "TAKE 99," + Block(20);
    EXPECT_EQ(session.Process(message), "");
    std::string rest = ";LAST?\n";
    EXPECT_EQ(session.Process(rest), Taken(20, 20) + "\n");
}

class CNoExecutor final : public ICommandExecutor
{
public:
    bool ExecuteCommand(const ParsedCommand&) override { return true; }
    void ReportError(short code, std::string_view) override { m_errors.push_back(code); }
    std::vector<short> m_errors;
};

TEST(BlockStream, ReaderWaitsForWhatHasNotArrived)
{
    CByteBuffer input;
    CScriptedSource source(std::string("\1\2~\3\4\5\6~~", 9) + "\7\n", 2);
    CNoExecutor errors;
    CBlockStream stream(input, &source, -1, errors, 0);
    stream.Begin((std::int64_t{1} << 29) + 1);
    const CComPtr<CBlockReaderObject> reader = CBlockReaderObject::Create();
    reader->Begin(stream);
    unsigned char* pData = nullptr;
    unsigned long count = 0;
    EXPECT_EQ(reader->Access(&pData, &count), E_PENDING) << "too large for the memory";
    stream.Begin(7);
    unsigned long consumed = 0;
    short complete = 1;
    long value = 0;
    EXPECT_EQ(reader->ContinueRead(0), S_OK);
    EXPECT_EQ(reader->GetStatusEx(&complete, &value, &count, &consumed), S_OK);
    EXPECT_TRUE(complete == VARIANT_FALSE && value == 7 && count == 2 && consumed == 0);
    ASSERT_EQ(reader->InitReaderFormat(ZO_FORMAT_INTEGER, 16, ZO_BYTE_ORDER_NORMAL), S_OK);
    EXPECT_EQ(reader->GetNextInteger(&value), S_OK);
    EXPECT_EQ(value, 0x0102);
    EXPECT_EQ(reader->ContinueRead(0), E_PENDING);
    double values[2] = {};
    EXPECT_EQ(reader->GetNextArray(2, values, &count), S_OK);
    EXPECT_TRUE(count == 2 && values[1] == 0x0506);
    EXPECT_EQ(reader->ContinueRead(5), E_PENDING);
    CComPtr<IStream> target;
    ASSERT_EQ(CreateMemoryStream(&target), S_OK);
    EXPECT_EQ(reader->ReadFromStream(target, 9, &count), E_ABORT) << "the client has paused";
    EXPECT_EQ(reader->GetNextInteger(&value), E_ABORT);
    EXPECT_EQ(errors.m_errors, std::vector<short>{-365});
}

TEST(BlockStream, ReaderFindsTheEnd)
{
    for (const std::int64_t length : {std::int64_t{5}, std::int64_t{-1}})
    {
        CByteBuffer input;
        CScriptedSource source("abcde\nabc", 2);
        CNoExecutor errors;
        CBlockStream stream(input, &source, -1, errors, 0);
        stream.Begin(length);
        const CComPtr<CBlockReaderObject> reader = CBlockReaderObject::Create();
        reader->Begin(stream);
        short complete = 1;
        long known = 0;
        EXPECT_EQ(reader->Status(&complete, &known), S_OK);
        EXPECT_TRUE(complete == VARIANT_FALSE && known == length);
        CComPtr<IStream> target;
        ASSERT_EQ(CreateMemoryStream(&target), S_OK);
        unsigned long got = 0;
        EXPECT_EQ(reader->ReadFromStream(target, 3, &got), S_OK);
        EXPECT_EQ(got, 3U);
        unsigned char* rest = nullptr;
        EXPECT_EQ(reader->Access(&rest, &got), S_OK);
        EXPECT_TRUE(got == 2 && std::memcmp(rest, "de", 2) == 0) << "collected, and still unread";
        EXPECT_EQ(reader->ReadFromStream(target, 9, &got), S_OK);
        EXPECT_EQ(got, 2U);
        EXPECT_EQ(reader->Status(&complete, &known), S_OK);
        EXPECT_TRUE(complete == VARIANT_TRUE && known == 5);
        unsigned char byte = 0;
        EXPECT_EQ(reader->Read(1, &byte, &got), S_FALSE);
        EXPECT_EQ(reader->ReadFromStream(target, 1, &got), S_FALSE);
        EXPECT_EQ(reader->ContinueRead(-1), S_FALSE);
    }
}

class BlockSocket : public testing::Test
{
protected:
    BlockSocket() { m_server.Start(); }
    CTestSink& Sink() { return *m_instrument.sink; }

    TestInstrument m_instrument;
    CTcpServer m_server{{.port = 0}};
};

TEST_F(BlockSocket, CommandRunsWhileTheClientSends)
{
    const std::string data = std::string(2'000'000, 'x');
    CScpiClient client(m_server.Port());
    client.Send("*OPC?;TAKE 9999999,#72000000");
    ASSERT_EQ(WaitForSingleObject(Sink().m_takeEntered.Get(), 30'000), WAIT_OBJECT_0);
    for (std::size_t place = 0; place < data.size(); place += 9973)
    {
        client.Send(std::string_view(data).substr(place, 9973));
    }
    client.Send(";LA");
    client.Send("ST?\n");
    EXPECT_EQ(client.ReadLine(), "1;\"2000000/2000000:240000000\"");
    EXPECT_EQ(client.Query("SYST:ERR?"), "0,\"No error\"");
}

struct Ending
{
    const char* szName;
    void (*end)(CScpiClient&, CTcpServer&, CRemoteKernel&);
};

class BlockEnding : public BlockSocket, public testing::WithParamInterface<Ending>
{};

TEST_P(BlockEnding, AbortsTheCommand)
{
    CScpiClient client(m_server.Port());
    client.Send("TAKE 9999999,#72000000abc");
    ASSERT_EQ(WaitForSingleObject(Sink().m_takeEntered.Get(), 30'000), WAIT_OBJECT_0);
    GetParam().end(client, m_server, m_instrument.kernel);
    m_server.Stop();
    EXPECT_EQ(Sink().m_takeResult, E_ABORT);
}

INSTANTIATE_TEST_SUITE_P(
    By,
    BlockEnding,
    testing::Values(
        Ending{"Disconnect", [](CScpiClient& client, CTcpServer&, CRemoteKernel&) { client.Reset(); }},
        Ending{"HalfClose",
               [](CScpiClient& client, CTcpServer&, CRemoteKernel&) {
                   client.FinishSending();
                   EXPECT_TRUE(client.IsClosedByServer());
               }},
        Ending{"ServerStop", [](CScpiClient&, CTcpServer& server, CRemoteKernel&) { server.Stop(); }},
        Ending{"KernelStop", [](CScpiClient&, CTcpServer&, CRemoteKernel& kernel) { kernel.Stop(); }}),
    [](const auto& row) { return row.param.szName; });

/// Peak of the process's memory in KiB since the last call.
long TakePeakMemory()
{
    std::ifstream status("/proc/self/status");
    long peak = -1;
    for (std::string line; std::getline(status, line);)
    {
        if (line.starts_with("VmHWM:"))
        {
            peak = std::stol(line.substr(6));
        }
    }
    std::ofstream("/proc/self/clear_refs") << '5';
    return peak;
}

TEST_F(BlockSocket, MemoryStaysSmallHoweverLargeTheBlockIs)
{
    constexpr std::size_t kPieces = 200;
    const std::string piece(1'000'000, 'x');
    struct Case
    {
        std::string begin;
        std::string answer;
    };
    const Case kMessages[] = {
        {"TAKE 999999999,#9200000000", "\"200000000/200000000:2525163520\""},
        {"TAKE 1,#9200000000", "\"1/200000000:120\""},
        {"BOGUS #9200000000", "\"1/200000000:120\""},
        {"TAKE 999999999,#0", "\"200000000/200000000:2525163520\""},
    };
    CScpiClient client(m_server.Port());
    for (const Case& row : kMessages)
    {
        SCOPED_TRACE(row.begin);
        TakePeakMemory();
        const long before = TakePeakMemory();
        client.Send(row.begin);
        for (std::size_t i = 0; i < kPieces; ++i)
        {
            client.Send(piece);
        }
        client.Write("");
        EXPECT_EQ(client.Query("LAST?"), row.answer);
        EXPECT_LT(TakePeakMemory() - before, 32 * 1024);
    }
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
