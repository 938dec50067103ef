#include "CComObject.h"
#include "CScriptedServer.h"
#include "CShellError.h"
#include "Instrument/CTcpController.h"
#include "TaskMemory.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <thread>
#include <vector>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using testing::HasSubstr;

/// Tells when a request has begun: from then on no abort is lost.
class CTellingController : public CTcpController
{
public:
    using CTcpController::CTcpController;

    HRESULT DoClear() override { return Tell(CTcpController::DoClear()); }
    HRESULT DoRead(bool first, bool counted, long count) override
    {
        return Tell(CTcpController::DoRead(first, counted, count));
    }
    HRESULT DoWrite(unsigned char* data, long length, bool end) override
    {
        return Tell(CTcpController::DoWrite(data, length, end));
    }

    CUniqueEvent m_begun{CreateEvent(FALSE, FALSE)}; ///< auto-reset

private:
    HRESULT Tell(HRESULT result)
    {
        SetEvent(m_begun.Get());
        return result;
    }
};

using CController = CComObject<CTellingController, IZOScpiController>;

/// For waits that are to end with the time-out.
constexpr long kShortMs = 30;
constexpr long kLongMs = 30000;

HRESULT Write(CController& controller, std::string text, short end = VARIANT_TRUE)
{
    return controller.Write(
        reinterpret_cast<unsigned char*>(text.data()), static_cast<long>(text.size()), end);
}

/// The result as text where it is not S_OK.
std::string Response(CController& controller)
{
    unsigned char* text = nullptr;
    const HRESULT result = controller.ReadResponse(&text);
    const std::string response = result == S_OK        ? reinterpret_cast<char*>(text)
                                 : result == E_PENDING ? "pending"
                                                       : "failed";
    CoTaskMemFree(text);
    return response;
}

std::string Part(CController& controller, long count)
{
    std::string part(static_cast<std::size_t>(count), '\0');
    long got = -1;
    short end = 1;
    const HRESULT result = controller.Read(count, reinterpret_cast<unsigned char*>(part.data()), &got, &end);
    part.resize(static_cast<std::size_t>(got));
    return result != S_OK ? "failed" : part + (end == VARIANT_TRUE ? "|end" : "");
}

class TcpController : public testing::Test
{
protected:
    CPeer Connect()
    {
        SetTimeout(kLongMs);
        EXPECT_EQ(m_controller.Clear(), S_OK);
        return m_server.Accept();
    }

    void SetTimeout(long ms) { EXPECT_EQ(m_controller.put_Timeout(ms), S_OK); }

    CScriptedServer m_server;
    CComPtr<CController> m_owner = CController::Create(m_server.Address());
    CController& m_controller = *m_owner;
    CPeer m_peer = Connect();
};

constexpr const char* kResponses[] = {
    "1\n",
    "\n",
    "a;b\r\n",
    "#15a\nb\nc\n",
    "#15a\nb\nc,#11\n\n",
    "1.00,#2100123456789\n",
    "#10\n",
    "\"x,#15\"\n",
    "\"a\"\",#19\";2\n",
    "'\"',#11\n;\"#19\"\n",
    "#H1F,#Q17;#0a\n",
    "#2x5\n",
    "\"not closed\n",
};

TEST_F(TcpController, ResponsesEndAtTheirLineFeedInWhateverPiecesTheyCome)
{
    for (const std::string response : kResponses)
    {
        m_peer.Drip(response);
        m_peer.Send(response + "next\n");
        EXPECT_EQ(Response(m_controller), response);
        EXPECT_EQ(Part(m_controller, 1000), response + "|end");
        EXPECT_EQ(Response(m_controller), "next\n");
    }
}

TEST_F(TcpController, CountedReadsStopAtTheirCount)
{
    m_peer.Send("#14a\nbc\nxyz\n");
    for (const char* part : {"#14a", "\nbc\n|end", "xyz\n|end"})
    {
        EXPECT_EQ(Part(m_controller, 4), part);
    }
    EXPECT_EQ(Part(m_controller, 0), "");
}

TEST_F(TcpController, AnEndedWriteHasALineFeedBehindIt)
{
    EXPECT_EQ(Write(m_controller, "DATA #11", VARIANT_FALSE), S_OK);
    EXPECT_EQ(Write(m_controller, "\n"), S_OK);
    EXPECT_EQ(Write(m_controller, ""), S_OK);
    EXPECT_EQ(Write(m_controller, "x"), S_OK);
    EXPECT_EQ(m_peer.ReadTo("x\n"), "DATA #11\n\n\nx\n");
}

struct LostPeer
{
    const char* response;
    std::function<void(CPeer&)> leave;
    const char* fault;
};

TEST_F(TcpController, AVanishedPeerIsAnErrorUntilTheNextClear)
{
    const LostPeer rows[] = {
        {"",
         [](CPeer& peer) { peer.FinishSending(); },
         "closed the connection in the middle of an answer (0 "},
        {"#19abc", [](CPeer& peer) { peer.FinishSending(); }, "(6 bytes of it came)"},
        {"", [](CPeer& peer) { peer.Reset(); }, ": cannot receive: Connection reset"},
    };
    for (const LostPeer& row : rows)
    {
        CPeer peer = Connect();
        auto response = std::async(std::launch::async, [this] { return Response(m_controller); });
        peer.Send(row.response);
        row.leave(peer);
        EXPECT_EQ(response.get(), "failed");
        EXPECT_THAT(m_controller.FaultText(), HasSubstr(row.fault));
        EXPECT_THAT(m_controller.FaultText(), testing::StartsWith(m_server.Address().Text() + ": c"));
        EXPECT_EQ(Write(m_controller, "*CLS"), E_FAIL);
        EXPECT_EQ(m_controller.Trigger(), E_FAIL);
    }
    CPeer peer = Connect();
    peer.Send("back\n");
    EXPECT_EQ(Response(m_controller), "back\n");
}

TEST_F(TcpController, WhatATimedOutReadGatheredBelongsToTheNextOne)
{
    m_peer.Send("#16ab\n");
    SetTimeout(kShortMs);
    EXPECT_EQ(Response(m_controller), "pending");
    EXPECT_EQ(Response(m_controller), "pending");
    EXPECT_EQ(m_controller.ReceivedBytes(), 6U);
    SetTimeout(kLongMs);
    m_peer.Send("cde\nnext\n");
    EXPECT_EQ(Part(m_controller, 4), "#16a");
    EXPECT_EQ(Response(m_controller), "b\ncde\n");
    EXPECT_EQ(Response(m_controller), "next\n");
}

TEST_F(TcpController, AWriteCutOffNeedsAClear)
{
    SetTimeout(kShortMs);
    EXPECT_EQ(Write(m_controller, std::string(std::size_t{64} << 20, 'x')), E_PENDING);
    EXPECT_EQ(Write(m_controller, "*CLS"), E_FAIL);
    EXPECT_THAT(m_controller.FaultText(), HasSubstr("a message was cut off in the middle"));
    CPeer peer = Connect();
    EXPECT_EQ(Write(m_controller, "*CLS"), S_OK);
    EXPECT_EQ(peer.ReadTo("\n"), "*CLS\n");
}

TEST_F(TcpController, AResponseBeyondTheLimitIsNotKept)
{
    auto sender = std::async(std::launch::async, [this] {
        m_peer.Send("#9999999999");
        const std::string piece(std::size_t{1} << 20, 'x');
        // The connection ends in the middle.
        EXPECT_THROW(
            for (;;) { m_peer.Send(piece); }, std::system_error);
    });
    EXPECT_EQ(Response(m_controller), "failed");
    EXPECT_THAT(m_controller.FaultText(), HasSubstr("an answer of more than 67108864 bytes"));
    sender.get();
}

TEST(TcpControllerConnect, NobodyThere)
{
    const auto controller = CController::Create(InstrumentAddress{"127.0.0.1", "1"});
    EXPECT_EQ(Write(*controller, "x"), E_FAIL);
    EXPECT_EQ(controller->FaultText(), "127.0.0.1:1: not connected");
    EXPECT_EQ(controller->Clear(), E_FAIL);
    EXPECT_EQ(controller->FaultText(), "cannot connect to 127.0.0.1:1: Connection refused");
}

/// A server that takes no more connections: further ones stay under way.
struct FullServer
{
    FullServer()
    {
        first->put_Timeout(kLongMs);
        EXPECT_EQ(first->Clear(), S_OK);
    }

    CScriptedServer server{0};
    CComPtr<CController> first = CController::Create(server.Address());
};

TEST(TcpControllerConnect, ConnectingEndsWithTheTimeOut)
{
    const FullServer full;
    const auto controller = CController::Create(full.server.Address());
    controller->put_Timeout(kShortMs);
    EXPECT_EQ(controller->Clear(), E_PENDING);
    EXPECT_EQ(Write(*controller, "x"), E_FAIL);
}

TEST_F(TcpController, AbortEndsACallFromAnotherThread)
{
    const FullServer full;
    const auto stuck = CController::Create(full.server.Address());
    const std::pair<CController&, std::function<HRESULT()>> calls[] = {
        {m_controller,
         [this] {
             unsigned char* text = nullptr;
             return m_controller.ReadResponse(&text);
         }},
        {m_controller, [this] { return Write(m_controller, std::string(std::size_t{64} << 20, 'x')); }},
        {*stuck, [&] { return stuck->Clear(); }},
    };
    ResetEvent(m_controller.m_begun.Get());
    for (const auto& [controller, call] : calls)
    {
        auto result = std::async(std::launch::async, call);
        EXPECT_EQ(WaitForSingleObject(controller.m_begun.Get(), kLongMs), WAIT_OBJECT_0);
        controller.Abort();
        EXPECT_EQ(result.get(), E_ABORT);
    }
}

TEST_F(TcpController, TheStatusByteIsAskedForBetweenMessagesOnly)
{
    struct Row
    {
        const char* answer;
        HRESULT result;
        int status;
    };
    for (const Row& row :
         {Row{"80\n", S_OK, 80}, {"+255\r\n", S_OK, 255}, {"256\n", E_FAIL, 0}, {"x\n", E_FAIL, 0}})
    {
        m_peer.Send(row.answer);
        unsigned char status = 1;
        EXPECT_EQ(m_controller.ReadStatusByte(&status), row.result) << row.answer;
        EXPECT_EQ(status, row.status) << row.answer;
        EXPECT_EQ(m_peer.ReadTo("\n"), "*STB?\n");
    }
    unsigned char status = 1;
    EXPECT_EQ(Write(m_controller, "TEXT \"?\";#11?;*IDN", VARIANT_FALSE), S_OK);
    EXPECT_EQ(m_controller.ReadStatusByte(&status), E_FAIL);
    EXPECT_EQ(m_controller.Trigger(), E_FAIL);
    EXPECT_EQ(Write(m_controller, ""), S_OK);
    m_peer.Send("1\n");
    EXPECT_EQ(m_controller.ReadStatusByte(&status), S_OK);
    EXPECT_EQ(Write(m_controller, "*IDN?"), S_OK);
    EXPECT_EQ(m_controller.ReadStatusByte(&status), E_FAIL);
    m_peer.Send("me\n2\n");
    EXPECT_EQ(Response(m_controller), "me\n");
    EXPECT_EQ(m_controller.ReadStatusByte(&status), S_OK);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(m_controller.Trigger(), S_OK);
    EXPECT_THAT(m_peer.ReadTo("*TRG\n"), testing::EndsWith("*STB?\n*TRG\n"));
}

TEST_F(TcpController, BusLinesThatASocketLacksAreRefused)
{
    EXPECT_THROW(m_controller.Remote(), CShellError);
    EXPECT_THROW(m_controller.Local(), CShellError);
    EXPECT_THROW(m_controller.LocalLockout(1), CShellError);
    EXPECT_EQ(m_controller.EnableInterruptCallback(), E_NOTIMPL);
    EXPECT_EQ(m_controller.DisableInterruptCallback(), E_NOTIMPL);
    m_peer.Send("still there\n");
    EXPECT_EQ(Response(m_controller), "still there\n");
}

long CountEntries(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST_F(TcpController, ManyConnectionsLeaveNothingBehind)
{
    const long descriptors = CountEntries("/proc/self/fd");
    const long threads = CountEntries("/proc/self/task");
    for (int i = 0; i < 64; ++i)
    {
        const auto controller = CController::Create(m_server.Address());
        ASSERT_EQ(controller->Clear(), S_OK);
        ASSERT_EQ(controller->Clear(), S_OK);
        m_server.Accept().Send("1\n");
        m_server.Accept().Send("2\n");
        EXPECT_EQ(Response(*controller), "2\n");
    }
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
    // A thread that was joined may still be leaving the list.
    while (CountEntries("/proc/self/task") > threads)
    {
        std::this_thread::yield();
    }
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
