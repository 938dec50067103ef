#include "CScpiClient.h"
#include "CTcpServer.h"
#include "CTestApplication.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace ZoVelkor::Transports::Testing
{

using namespace RemoteKernel;
using namespace RemoteKernel::Testing;

namespace
{
using ZoVelkor::Testing::Converse;
using ZoVelkor::Testing::CScpiClient;

constexpr std::size_t kLargeBlock = 100'000'000;

std::string AllByteValues(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
    {
        bytes[i] = static_cast<char>((i * 131) >> 3);
    }
    return bytes;
}

std::string Block(const std::string& contents)
{
    const std::string length = std::to_string(contents.size());
    return '#' + std::to_string(length.size()) + length + contents;
}

class TcpServer : public testing::Test
{
protected:
    TcpServer() { m_server.Start(); }

    CScpiClient Connect() { return CScpiClient(m_server.Port()); }
    CTestSink& Sink() { return *m_instrument.sink; }

    /// Waits until only so many sessions are left; the server notices a client's end by itself.
    void ExpectSessions(std::size_t count)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (m_instrument.kernel.SessionCount() != count && std::chrono::steady_clock::now() < deadline)
        {
            std::this_thread::yield();
        }
        EXPECT_EQ(m_instrument.kernel.SessionCount(), count);
    }

    TestInstrument m_instrument;
    CTcpServer m_server{{.port = 0, .maxSessions = 40}};
};

TEST_F(TcpServer, ServesManyClientsAtOnceAndOneCommandAtATime)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 32; ++i)
    {
        threads.emplace_back([this, i] {
            CScpiClient client = Connect();
            for (int round = 0; round < 50; ++round)
            {
                ASSERT_EQ(client.Query("*IDN?;:LIST? 3"), "Maker,Model,123,1.0;0,0.5,1");
                client.Write("BOGUS" + std::to_string(i));
                ASSERT_EQ(client.Query("SYST:ERR:ALL?"),
                          "-113,\"Undefined header;BOGUS" + std::to_string(i) + "\"");
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_FALSE(Sink().m_overlapped);
    ExpectSessions(0);
}

TEST_F(TcpServer, CarriesLargeBlocksBothWays)
{
    const std::string contents = AllByteValues(kLargeBlock);
    CScpiClient client = Connect();
    client.Send("BLOCk ");
    client.Send(Block(contents));
    client.Write(";BLOCk?");
    EXPECT_TRUE(client.ReadBlock() == contents);
    EXPECT_EQ(client.Query("SYST:ERR?"), "0,\"No error\"");
}

TEST_F(TcpServer, AnswersAClientThatHasFinishedSending)
{
    CScpiClient client = Connect();
    client.Send("OVER;*OPC?\n*IDN?\n*RST");
    client.FinishSending();
    ASSERT_EQ(WaitForSingleObject(Sink().m_operationBegun.Get(), 30'000), WAIT_OBJECT_0);
    Sink().EndOperations();
    EXPECT_EQ(client.ReadLine(), "1");
    EXPECT_EQ(client.ReadLine(), "Maker,Model,123,1.0");
    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(m_instrument.device->m_resets, 0) << "a message without line feed was run";
}

struct DisconnectCase
{
    const char* name;
    const char* sent;
};

class Disconnect : public TcpServer, public testing::WithParamInterface<DisconnectCase>
{};

TEST_P(Disconnect, EndsThatSessionOnly)
{
    CScpiClient other = Connect();
    {
        CScpiClient client = Connect();
        ASSERT_EQ(client.Query("*OPC?"), "1");
        client.Write("BLOCk " + Block(AllByteValues(20'000'000)));
        client.Send(GetParam().sent);
        client.Reset();
    }
    ExpectSessions(1);
    Sink().EndOperations();
    Converse(other, "-> *OPC?;*IDN?\n<- 1;Maker,Model,123,1.0\n");
}

INSTANTIATE_TEST_SUITE_P(InTheMiddleOf,
                         Disconnect,
                         testing::Values(DisconnectCase{"Message", "*ID"},
                                         DisconnectCase{"Block", "BLOCk #9100000000abc"},
                                         DisconnectCase{"Response", "BLOCk?\n"},
                                         DisconnectCase{"Operation", "OVER;*OPC?\n"},
                                         DisconnectCase{"Wait", "OVER;OVER;*WAI;*IDN?\n"}),
                         [](const auto& row) { return row.param.name; });

class StopServer : public Disconnect
{};

TEST_P(StopServer, EndsASessionWhateverItDoes)
{
    CScpiClient client = Connect();
    client.Write("BLOCk " + Block(AllByteValues(20'000'000)));
    ASSERT_EQ(client.Query("*OPC?"), "1");
    client.Send(GetParam().sent);
    m_server.Stop();
    EXPECT_EQ(m_instrument.kernel.SessionCount(), 0U);
    EXPECT_EQ(m_server.SessionCount(), 0U);
    m_server.Start();
    EXPECT_EQ(Connect().Query("*OPC?"), "1");
}

INSTANTIATE_TEST_SUITE_P(InTheMiddleOf,
                         StopServer,
                         testing::Values(DisconnectCase{"Reading", ""},
                                         DisconnectCase{"Block", "BLOCk #9100000000abc"},
                                         DisconnectCase{"Writing", "BLOCk?;BLOCk?;BLOCk?\n"},
                                         DisconnectCase{"Operation", "OVER;*OPC?\n"}),
                         [](const auto& row) { return row.param.name; });

/// Interrupts all threads of servers by a signal that restarts no system call.
void SignalServerThreads()
{
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
    {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        if (name.starts_with("scpi-"))
        {
            tgkill(getpid(), std::stoi(task.path().filename()), SIGUSR1);
        }
    }
}

TEST_F(TcpServer, SignalHandlersOfTheProgramBreakNoConnection)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr); // stays: a late signal must not end the program
    CScpiClient client = Connect();
    client.Write("BLOCk " + Block(AllByteValues(8'000'000)));
    for (int round = 0; round < 50; ++round)
    {
        ASSERT_EQ(client.Query("*OPC?"), "1");
        SignalServerThreads(); // waits for a message
        client.Write("BLOCk?");
        client.Read(1);
        SignalServerThreads(); // the response fills the socket
        client.Read(8'000'000 + 9);
    }
}

TEST_F(TcpServer, TellsAClientBeyondTheLimit)
{
    std::vector<CScpiClient> clients;
    for (int i = 0; i < 40; ++i)
    {
        clients.push_back(Connect());
        ASSERT_EQ(clients.back().Query("*OPC?"), "1");
    }
    CScpiClient refused = Connect();
    EXPECT_EQ(refused.ReadLine(), "-300,\"Device specific error;Too many connections, limit 40\"");
    EXPECT_TRUE(refused.IsClosedByServer());
    clients.pop_back();
    ExpectSessions(39);
    EXPECT_EQ(Connect().Query("*OPC?"), "1");
}

TEST_F(TcpServer, ChangeOfApplicationsIsSeenWholeBySessionsThatTalk)
{
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([this, &done] {
            CScpiClient client = Connect();
            while (!done)
            {
                // The table is seen whole or not at all; the application can leave between two commands.
                const std::string answers = client.Query("*OPC?;:EXTR:LIST? 1;:EXTR:PAGE? 2");
                const std::string error = client.Query("SYST:ERR:ALL?");
                const bool whole = answers == "1;0;0,0.5" && error == "0,\"No error\"";
                const bool unknown = answers == "1" && error == "-113,\"Undefined header;:EXTR:LIST?\"";
                const bool left = (answers == "1" || answers == "1;0") &&
                                  error == "-113,\"Undefined header;Application has left\"";
                ASSERT_TRUE(whole || unknown || left) << answers << ' ' << error;
            }
        });
    }
    const auto extra = CTableBuilder()
                           .Add("EXTRa:LIST", CTestSink::kAnswerList, DEF, QMARK, {{ARG_SINT}})
                           .Add("EXTRa:PAGE", CTestSink::kAnswerList, DEF, QMARK, {{ARG_SINT}})
                           .Build();
    for (int i = 0; i < 200; ++i)
    {
        GUID id{};
        ASSERT_EQ(m_instrument.Register(extra, id), S_OK);
        ASSERT_EQ(m_instrument.kernel.ObjectRegistration().UnregisterObject(id), S_OK);
    }
    done = true;
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

TEST(TcpServerStart, RefusesWhatItCannotListenOn)
{
    TestInstrument instrument;
    CTcpServer first({.port = 0});
    first.Start();
    CTcpServer sameport({.port = first.Port()});
    EXPECT_THROW(sameport.Start(), std::system_error);
    CTcpServer name({.address = "not-an-address", .port = 0});
    EXPECT_THROW(name.Start(), std::system_error);
}

TEST(TcpServerStart, ListensOnIpv6)
{
    TestInstrument instrument;
    CTcpServer server({.address = "[::1]", .port = 0});
    server.Start();
    EXPECT_EQ(server.Endpoint(), "[::1]:" + std::to_string(server.Port()));
    EXPECT_EQ(CScpiClient(server.Port(), "::1").Query("*OPC?"), "1");
}
} // namespace

} // namespace ZoVelkor::Transports::Testing
