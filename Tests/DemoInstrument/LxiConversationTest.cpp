#include "CLxiEventRecorder.h"
#include "CScpiClient.h"
#include "CTemporaryRegistry.h"
#include "Instrument/CDemoInstrument.h"
#include "Lxi/CLxiTrigger.h"
#include "LxiClock.h"

#include <optional>
#include <string>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

using RemoteKernel::LxiNow;

/// An LXI time that many milliseconds from now.
CLxiTime FromNow(long long milliSeconds)
{
    CLxiTimeInterval interval;
    interval.SetNanoSeconds(milliSeconds * 1'000'000);
    CLxiTime time = LxiNow();
    time.Add(interval);
    return time;
}

/// An instrument with LXI on free ports, and an endpoint that shares its multicast port.
class LxiConversation : public testing::Test
{
protected:
    LxiConversation()
    {
        Start(0);
        m_peer.emplace(RemoteKernel::LxiEndpointSettings{
            .port = 0, .multicastPort = m_instrument->LxiMulticastPort(), .retransmissions = 1});
        m_peer->Start();
    }

    void Start(std::uint16_t lxiPort)
    {
        DemoOptions options;
        options.port = 0;
        options.registryFile = m_registry.File();
        options.lxiPort = lxiPort;
        options.lxiMulticastPort = 0;
        m_client.reset();
        m_instrument.reset();
        m_instrument.emplace(options);
        m_client.emplace(m_instrument->Port());
    }
    std::string Query(const std::string& message) { return m_client->Query(message); }
    /// Starts a sweep that waits for events.
    void Arm(const std::string& settings)
    {
        const std::string message = "*RST;*CLS;:LXI:EVEN:LOG:CLE;:SWE:TIME MIN;:TRIG:SOUR LXI;:" + settings;
        EXPECT_EQ(Query(message + ";:INIT;:SYST:ERR?"), "0,\"No error\"") << settings;
    }
    void Send(long event, const CLxiTime& time) { EXPECT_EQ(m_peer->SendEvent(event, time), S_OK); }
    /// Tells whether the sweep waits still, or again, after all events that were sent before.
    bool IsWaiting()
    {
        // Events are dealt with one by one: once this one is logged, the ones before are done with.
        Send(ZO_LXI_ERROR, {});
        while (Query("LXI:EVEN:LOG:ALL?").find("LXIERROR") == std::string::npos)
        {}
        return Query("LXI:EVEN:LOG:CLE;:STAT:OPER:COND?") == "32";
    }

    const CTemporaryRegistry m_registry;
    std::optional<CDemoInstrument> m_instrument;
    std::optional<Testing::CScpiClient> m_client;
    std::optional<RemoteKernel::CLxiEventEndpoint> m_peer;
};

TEST_F(LxiConversation, Settings)
{
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"*RST;TRIG:LXI:LAN0:ENAB?;DEL?", "0;0"},
        {"TRIG:SEQ:LXI:LAN7:SET:ENAB ON;DEL 10;:TRIG:LXI:LAN7:ENAB?;DEL?", "1;10"},
        {"TRIG:LXI:LAN6:ENAB?;DEL?;:TRIG:LXI:LAN7:DEL? MAX", "0;0;10"},
        {"TRIG:LXI:LAN:DEL 20 MS;:TRIG:LXI:LAN1:DEL?", "0.02"},
        {"*RST;TRIG:LXI:LAN7:ENAB?;DEL?;:TRIG:LXI:LAN1:DEL?", "0;0;0"},
        {"LXI:IDEN?;:LXI:IDEN:STAT ON;*RST;:LXI:IDEN?;:LXI:IDEN OFF;IDEN?", "0;1;0"},
        {"TRIG:SOUR LXI;SOUR?", "LXI"},
        {"*CLS\nTRIG:LXI:LAN8:ENAB ON\nSYST:ERR?", "-114,\"Header suffix out of range;TRIG:LXI:LAN8:ENAB\""},
        {"*CLS;:TRIG:LXI:LAN0:DEL 10.1\nSYST:ERR?", "-222,\"Data out of range\""},
        {"*CLS;:LXI:EVEN:LAN0:SEND -0.1\nSYST:ERR?", "-222,\"Data out of range\""},
        {"LXI:EVEN:LOG:COUN?;ALL?;:LXI:ERR?", "0;\"\";0,\"No error\""},
    };
    for (const auto& [message, answer] : kCases)
    {
        EXPECT_EQ(Query(message), answer) << message;
    }
}

TEST_F(LxiConversation, EachEnabledEventStartsASweepAndNoOther)
{
    for (long lan = 0; lan != static_cast<long>(kLanEventCount); ++lan)
    {
        Arm("TRIG:LXI:LAN" + std::to_string(lan) + ":ENAB ON");
        const long count = std::stol(Query("DIAG:SERV:COUN?"));
        Send((lan + 1) % 8, {});
        EXPECT_TRUE(IsWaiting()) << lan;
        Send(lan, {});
        EXPECT_EQ(Query("*OPC?;:DIAG:SERV:COUN?"), "1;" + std::to_string(count + 1)) << "and not its copy";
    }
}

struct StampCase
{
    const char* name;
    const char* settings;
    std::optional<long long> firstMs; ///< stamp of an event before; null: none
    long long ms;                     ///< stamp of the event, from now; below 0: in the past
    long long startMs;                ///< no sweep starts before
};

TEST_F(LxiConversation, SweepStartsAtTheTimeStamp)
{
    constexpr StampCase kStamps[] = {
        {"Past", "TRIG:LXI:LAN2:ENAB ON", std::nullopt, -3'600'000, 0},
        {"Future", "TRIG:LXI:LAN2:ENAB ON", std::nullopt, 120, 120},
        {"TheEarlierFirst", "TRIG:LXI:LAN2:ENAB ON", 120, 1'000'000, 120},
        {"TheEarlierLast", "TRIG:LXI:LAN2:ENAB ON", 1'000'000, 120, 120},
        {"Delay", "TRIG:LXI:LAN2:ENAB ON;DEL 120MS", std::nullopt, 0, 120},
        {"DelayOfThePast", "TRIG:LXI:LAN2:ENAB ON;DEL 120MS", std::nullopt, -3'600'000, 0},
    };
    for (const StampCase& row : kStamps)
    {
        SCOPED_TRACE(row.name);
        Arm(row.settings);
        const CLxiTime earliest = FromNow(row.startMs);
        if (row.firstMs)
        {
            Send(2, FromNow(*row.firstMs));
        }
        Send(2, FromNow(row.ms));
        EXPECT_EQ(IsWaiting(), row.startMs != 0 && earliest > LxiNow());
        EXPECT_EQ(Query("*OPC?"), "1");
        EXPECT_TRUE(LxiNow() > earliest);
    }
}

TEST_F(LxiConversation, EndedSweepsForgetTheirTrigger)
{
    for (const char* const end :
         {"ABOR", "TRIG;*WAI", "*RST;:TRIG:SOUR LXI;:TRIG:LXI:LAN2:ENAB ON;:SWE:TIME MIN"})
    {
        Arm("TRIG:LXI:LAN2:ENAB ON");
        const CLxiTime stamp = FromNow(30);
        Send(2, stamp);
        IsWaiting();
        EXPECT_EQ(Query(std::string(end) + ";:INIT;:SYST:ERR?"), "0,\"No error\"") << end;
        while (stamp > LxiNow())
        {
            Query("*STB?");
        }
        EXPECT_TRUE(IsWaiting()) << end;
    }
}

TEST_F(LxiConversation, WhatDoesNotReleaseTheSweep)
{
    Arm("TRIG:LXI:LAN2:ENAB ON");
    EXPECT_EQ(Query("*TRG;:SYST:ERR?"), "-211,\"Trigger ignored\"") << "that is for the source BUS";
    EXPECT_TRUE(IsWaiting());
    for (const CLxiTime& never : {CLxiTime(1, 0, 1), CLxiTime(2, 0, 0), CLxiTime(0xFFFF, 0, 0)})
    {
        Send(2, never);
        EXPECT_TRUE(IsWaiting());
        EXPECT_EQ(Query("LXI:ERR?"), "5160,\"Trigger source could not be activated\"");
    }
    Arm("TRIG:SOUR BUS;:TRIG:LXI:LAN2:ENAB ON");
    Send(2, {});
    EXPECT_TRUE(IsWaiting());
    EXPECT_EQ(Query("TRIG;*OPC?"), "1");
}

TEST_F(LxiConversation, InstrumentSendsEventsAndHearsItsOwnNot)
{
    RemoteKernel::Testing::CLxiEventRecorder heard(*m_peer);
    Arm("TRIG:LXI:LAN5:ENAB ON");
    const CLxiTime before = FromNow(2000);
    EXPECT_EQ(Query("LXI:EVEN:LAN5:SEND 2;:LXI:EVEN:LOG:COUN?"), "1");
    const auto event = heard.Take();
    EXPECT_EQ(event.event, 5);
    EXPECT_TRUE(event.time > before && FromNow(2001) > event.time);
    EXPECT_NE(Query("LXI:EVEN:LOG:ALL?").find(" sent udp 224.0.23.159:"), std::string::npos);
    EXPECT_TRUE(IsWaiting());
}

TEST_F(LxiConversation, TakenPortLeavesTheRestOfTheInstrument)
{
    Start(m_peer->Port());
    EXPECT_NE(m_instrument->LxiFault().find("port " + std::to_string(m_peer->Port())), std::string::npos);
    EXPECT_EQ(m_instrument->LxiPort(), 0);
    EXPECT_EQ(Query("LXI:EVEN:LAN1:SEND;:SYST:ERR?"), "-241,\"Hardware missing;no LXI\"");
    EXPECT_EQ(Query("TRIG:SOUR LXI;:SWE:TIME MIN;:INIT;:TRIG;*OPC?"), "1");
    EXPECT_EQ(Query("LXI:ERR?"), "5000,\"Error during connection a capability\"");
}

} // namespace
} // namespace ZoVelkor::Demo
