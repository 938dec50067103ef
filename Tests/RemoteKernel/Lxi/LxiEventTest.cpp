#include "CBusController.h"
#include "CLxiEventRecorder.h"
#include "CLxiStreamDecoder.h"
#include "CLxiTcpSender.h"
#include "Lxi/CLxiDuplicateFilter.h"
#include "LxiClock.h"
#include "ManyThreads.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <tuple>
#include <unistd.h>

namespace ZoVelkor::RemoteKernel
{
namespace
{

using namespace std::string_view_literals;
using Testing::CLxiEventRecorder;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using Testing::HeardEvent;
using Bytes = std::vector<std::uint8_t>;
using State = LxiMessageState;

Bytes BytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

// Domain 0, LAN3, number 7, 5 s 6 ns, fraction 8, epoch 9, hardware flag, then fields and end mark.
constexpr auto kHeader =
    "LXI\0LAN3\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x07\0\0\0\x05\0\0\0\x06\0\x08\0\x09\0\x04"sv;
constexpr auto kFields = "\0\x03\xFF"
                         "abc\0\x01\x01x\0\0"sv;

Bytes Message()
{
    return BytesOf(std::string(kHeader) + std::string(kFields));
}

/// A message with other bytes in one place.
Bytes Altered(std::size_t offset, std::string_view bytes)
{
    Bytes message = Message();
    std::copy(bytes.begin(), bytes.end(), message.begin() + static_cast<std::ptrdiff_t>(offset));
    return message;
}

Bytes FieldOf(const CLxiLanPacket& packet, unsigned short index)
{
    tagLxiLanUserDataType field;
    EXPECT_EQ(packet.getUserData(index, field), 1);
    const std::unique_ptr<std::uint8_t[]> owner(field.pData);
    Bytes bytes(field.pData, field.pData + field.iSize);
    bytes.insert(bytes.begin(), field.iIdentifier);
    return bytes;
}

TEST(LxiEventFormat, FieldsAreReadAndWrittenByTheStandardsLayout)
{
    CLxiLanPacket packet;
    ASSERT_TRUE(DecodeLxiMessage(Message(), packet));
    EXPECT_EQ(packet.getNumberOfUserDataFields(), 2U);
    EXPECT_EQ(FieldOf(packet, 0),
              BytesOf("\xFF"
                      "abc"));
    EXPECT_EQ(FieldOf(packet, 1), BytesOf("\x01x"));
    Bytes again = EncodeLxiMessage(packet);
    ASSERT_EQ(again.size(), Message().size());
    EXPECT_EQ(packet.getSequenceNumber(), again[23] + again[22] * 256U);
    std::fill_n(again.begin() + 20, 3, std::uint8_t{0});
    again[23] = 7;
    EXPECT_EQ(again, Message());
}

TEST(LxiEventFormat, EveryOtherLengthIsRefused)
{
    const Bytes message = Message();
    for (std::size_t size = 0; size != message.size(); ++size)
    {
        // A copy of its own, so that reading beyond is seen.
        const Bytes part(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(MeasureLxiMessage(part).state, State::Incomplete) << size;
        CLxiLanPacket packet;
        EXPECT_FALSE(DecodeLxiMessage(part, packet)) << size;
    }
    Bytes longer = message;
    longer.push_back(0);
    CLxiLanPacket packet;
    EXPECT_FALSE(DecodeLxiMessage(longer, packet));
    EXPECT_EQ(MeasureLxiMessage(longer).size, message.size());
}

TEST(LxiEventFormat, MalformedMessages)
{
    EXPECT_EQ(MeasureLxiMessage(Altered(2, "H")).state, State::Complete) << "hardware writes that byte";
    EXPECT_EQ(MeasureLxiMessage(Altered(28, "\x3B\x9A\xC9\xFF"sv)).state, State::Complete);
    EXPECT_EQ(MeasureLxiMessage(Altered(28, "\x3B\x9A\xCA\x00"sv)).state, State::Malformed) << "a second";
    EXPECT_EQ(MeasureLxiMessage(Altered(0, "XL")).state, State::Malformed);
    EXPECT_EQ(MeasureLxiMessage(Altered(38, "\xFF\xFF")).state, State::Malformed) << "too long";
    EXPECT_EQ(MeasureLxiMessage(Altered(38, "\x1F\xD5")).state, State::Incomplete) << "just short enough";
    EXPECT_EQ(MeasureLxiMessage(Altered(38, "\x1F\xD6")).state, State::Malformed);
}

TEST(LxiEventFormat, FieldsThatNoMessageCanHold)
{
    for (const auto& [size, written] : std::map<std::size_t, std::size_t>{
             {0, 0}, {1, 44}, {8149, kMaxLxiMessageSize}, {8150, 0}, {65536, 0}})
    {
        Bytes data(size);
        CLxiLanPacket packet;
        packet.appendUserData({1, static_cast<std::uint32_t>(size), data.data()});
        EXPECT_EQ(EncodeLxiMessage(packet).size(), written) << size;
        EXPECT_EQ(packet.getSequenceNumber() != 0, written != 0) << size;
    }
}

TEST(LxiEventFormat, EventsHaveTheirWholeName)
{
    constexpr std::tuple<std::string_view, int, long> kNames[] = {
        {"LAN0", 0, 0},
        {"LAN7", 0, 7},
        {"LAN8", 0, kUnknownLxiEvent},
        {"LAN30", 0, kUnknownLxiEvent},
        {"lan3", 0, kUnknownLxiEvent},
        {"LXIERROR", 0, ZO_LXI_ERROR},
        {"ERROR", 0, ZO_LXI_ERROR},
        {"LAN3", 1, ZO_LXI_ERROR},
    };
    for (const auto& [name, isError, event] : kNames)
    {
        unsigned char id[CLxiLanPacket::kEventIdSize] = {};
        std::copy(name.begin(), name.end(), id);
        CLxiLanPacket packet;
        packet.setEventId(id);
        packet.setIsErrorMessage(isError);
        EXPECT_EQ(LxiEventNumber(packet), event) << name;
    }
}

struct SequenceCase
{
    const char* name;
    std::uint16_t port;
    std::uint32_t number;
    bool isRetransmission;
    int second;
    bool isAccepted;
};

TEST(LxiDuplicates, AreKnownBySenderAndNumber)
{
    constexpr SequenceCase kSequence[] = {
        {"First", 1, 100, false, 0, true},
        {"Again", 1, 100, false, 0, false},
        {"SentAgain", 1, 100, true, 0, false},
        {"OtherSender", 2, 100, false, 0, true},
        {"Overtaken", 1, 102, false, 1, true},
        {"Late", 1, 101, false, 1, true},
        {"LateAgain", 1, 101, true, 1, false},
        {"OnlyTheCopyCame", 1, 103, true, 1, true},
        {"LowestOfTheWindow", 1, 103 - 63, false, 1, true},
        {"LowestAgain", 1, 103 - 63, false, 1, false},
        {"CopyBelowTheWindow", 1, 103 - 64, true, 1, false},
        {"SenderStartedAnew", 1, 1, false, 1, true},
        {"KnownSinceThen", 1, 1, true, 1, false},
        {"FarAbove", 1, 0x7FFFFFFF, false, 1, true},
        {"TopOfTheRange", 1, 0xFFFFFFFE, false, 1, true},
        {"WrapsAround", 1, 1, false, 1, true},
        {"BeforeTheWrap", 1, 0xFFFFFFFE, false, 1, false},
        {"StillKnownAtTheTimeOut", 1, 1, false, 11, false},
        {"ForgottenAfterTheTimeOut", 1, 1, true, 22, true},
    };
    CLxiDuplicateFilter filter;
    for (const SequenceCase& row : kSequence)
    {
        const CLxiDuplicateFilter::Clock::time_point now(std::chrono::seconds(row.second));
        EXPECT_EQ(filter.Accept({0, row.port, false}, row.number, row.isRetransmission, now), row.isAccepted)
            << row.name;
    }
    // Sender 1 has been silent shortest: the others make room for so many new ones.
    const CLxiDuplicateFilter::Clock::time_point later(std::chrono::seconds(23));
    for (std::uint16_t port = 3; port != 2 + CLxiDuplicateFilter::kMaxSenders; ++port)
    {
        EXPECT_TRUE(filter.Accept({0, port, false}, 1, false, later));
    }
    EXPECT_FALSE(filter.Accept({0, 1, false}, 1, false, later));
}

TEST(LxiStream, MessagesCutAnywhere)
{
    Bytes stream = Message();
    const Bytes empty = BytesOf(std::string(kHeader) + std::string(2, '\0'));
    stream.insert(stream.end(), empty.begin(), empty.end());
    for (std::size_t cut = 0; cut <= stream.size(); ++cut)
    {
        CLxiStreamDecoder decoder;
        std::vector<Bytes> messages;
        const auto keep = [&](auto message) { messages.emplace_back(message.begin(), message.end()); };
        EXPECT_TRUE(decoder.Feed(std::span(stream).first(cut), keep));
        EXPECT_TRUE(decoder.Feed(std::span(stream).subspan(cut), keep));
        EXPECT_EQ(messages, (std::vector{Message(), empty})) << cut;
        EXPECT_FALSE(decoder.Feed(BytesOf("LA"), keep)) << "no message begins like that";
    }
}

LxiEndpointSettings Free(std::uint16_t multicastPort = 0)
{
    return {.port = 0, .multicastPort = multicastPort, .retransmissions = 2};
}

/// Two endpoints that share a multicast port.
class LxiEndpoint : public testing::Test
{
protected:
    using CSocket = CUniqueHandle<&::close, int, -1>;

    LxiEndpoint() { m_sender.Start(); }

    /// Connects a socket of the given type to the receiver.
    CSocket Connect(int type) const
    {
        CSocket socket(::socket(AF_INET, type, 0));
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(m_port);
        name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(socket.Get(), reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
        return socket;
    }
    /// Sends a datagram; a message gets a number of its own.
    void SendRaw(Bytes bytes)
    {
        if (bytes.size() > 23)
        {
            bytes[23] = ++m_number;
        }
        ASSERT_EQ(send(m_socket.Get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }

    CLxiEventEndpoint m_receiver{Free()};
    CLxiEventRecorder m_heard{m_receiver};
    const std::uint16_t m_port = (m_receiver.Start(), m_receiver.Port());
    CLxiEventEndpoint m_sender{Free(m_port)};
    CSocket m_socket = Connect(SOCK_DGRAM);
    std::uint8_t m_number = 0;
};

TEST_F(LxiEndpoint, EveryFieldOfEveryEventArrivesOnEveryWay)
{
    CLxiTcpSender tcp("127.0.0.1", m_port);
    const std::function<HRESULT(CLxiLanPacket&)> ways[] = {
        [this](CLxiLanPacket& packet) { return m_sender.Send(packet); },
        [this](CLxiLanPacket& packet) { return m_sender.SendTo(packet, "127.0.0.1", m_port); },
        [&](CLxiLanPacket& packet) { return tcp.Send(packet); },
    };
    for (const auto& send : ways)
    {
        for (long event = 0; event != kLxiEventCount; ++event)
        {
            CLxiLanPacket sent;
            ASSERT_TRUE(DecodeLxiMessage(Message(), sent));
            SetLxiEvent(sent, event);
            sent.setHWDetect('H');
            ASSERT_EQ(send(sent), S_OK);
            const HeardEvent heard = m_heard.Take();
            EXPECT_EQ(heard.event, event);
            EXPECT_EQ(heard.time, CLxiTime(9, 5, 6));
            EXPECT_EQ(heard.sender.isTcp, &send == &ways[2]);
            CComBSTR text;
            CComBSTR expected;
            heard.packet->getReadableLANData(text);
            sent.getReadableLANData(expected);
            EXPECT_EQ(text, expected) << "all of the header, and the data";
            EXPECT_EQ(FieldOf(*heard.packet, 0)[0], 0xFF);
        }
    }
    EXPECT_EQ(m_sender.Log().Count(), 2U * kLxiEventCount);
}

TEST_F(LxiEndpoint, HearsRepeatedMessagesOnceAndItsOwnNever)
{
    EXPECT_EQ(m_receiver.SendEvent(7, LxiNow()), S_OK);
    EXPECT_EQ(m_sender.SendEvent(1, {}), S_OK);
    EXPECT_EQ(m_sender.SendEvent(ZO_LXI_ERROR, {}), S_OK);
    const HeardEvent first = m_heard.Take();
    EXPECT_EQ(first.event, 1) << "not the own one";
    EXPECT_GT(first.time.GetSeconds(), 0U) << "without a stamp the event is now";
    EXPECT_EQ(m_heard.Take().event, ZO_LXI_ERROR) << "not the copies of the first";
    const std::vector<std::string> lines = m_receiver.Log().Lines();
    ASSERT_GE(lines.size(), 5U);
    EXPECT_THAT(lines[0], HasSubstr(" sent udp 224.0.23.159:"));
    EXPECT_THAT(lines[1], ContainsRegex(" received udp 127.0.0.1:[0-9]+: LXI, 0, LAN1, "));
    EXPECT_THAT(lines[2], HasSubstr(" duplicate "));
    EXPECT_THAT(lines[3], HasSubstr("ReTrans=true"));
}

TEST_F(LxiEndpoint, WhatIsNoEventChangesNothing)
{
    SendRaw({});
    SendRaw(BytesOf("*IDN?\n"));
    SendRaw(Bytes(60000, 'L'));
    SendRaw(Altered(38, "\0\x04"sv));
    Bytes tooLong = BytesOf(std::string(kHeader) + "\x1F\xD6\x01");
    tooLong.resize(kMaxLxiMessageSize + 1);
    SendRaw(tooLong);
    SendRaw(Altered(3, "\x01")); // another domain
    EXPECT_EQ(m_receiver.Log().Count(), 0U);
    SendRaw(Altered(37, "\x08")); // an acknowledgement
    SendRaw(Altered(4, "A\nB"));
    SendRaw(Message());
    EXPECT_EQ(m_heard.Take().event, 3);
    const std::vector<std::string> lines = m_receiver.Log().Lines();
    EXPECT_THAT(lines, ElementsAre(HasSubstr(" acknowledgement "), HasSubstr("A.B"), HasSubstr("LAN3")));
}

TEST_F(LxiEndpoint, TcpConnectionEndsWithTheFirstWrongByte)
{
    const CSocket socket = Connect(SOCK_STREAM);
    Bytes stream = Message();
    stream.push_back('?');
    ASSERT_GT(send(socket.Get(), stream.data(), stream.size(), 0), 0);
    EXPECT_EQ(m_heard.Take().event, 3) << "what came before is right";
    EXPECT_EQ(recv(socket.Get(), stream.data(), 1, 0), 0);
    CLxiTcpSender sender("127.0.0.1", m_port);
    EXPECT_EQ(sender.Send(std::span(stream)), S_OK);
    EXPECT_TRUE(Testing::Eventually([&] { return sender.Send(std::span(stream)) == E_FAIL; }));
    EXPECT_EQ(sender.Send(std::span(stream)), E_FAIL) << "nothing follows what was cut off";
}

TEST_F(LxiEndpoint, StartsAndStopsOnManyThreads)
{
    RunOnManyThreads([this] {
        for (int i = 0; i < 20; ++i)
        {
            m_receiver.Start();
            m_receiver.Stop();
        }
    });
    EXPECT_EQ(m_receiver.Port(), 0);
}

TEST_F(LxiEndpoint, LogKeepsTheNewest)
{
    for (std::size_t i = 0; i != CLxiEventLog::kCapacity + 1; ++i)
    {
        m_sender.Log().Add(LxiLogKind::Sent, {}, Altered(23, i == 0 ? "\x01" : "\x02"));
    }
    EXPECT_EQ(m_sender.Log().Count(), CLxiEventLog::kCapacity);
    EXPECT_NE(m_sender.Log().Lines()[0].find("LAN3, 2,"), std::string::npos);
}

TEST_F(LxiEndpoint, LastErrorsTellWhatFailed)
{
    const auto expect = [this](HRESULT result, HRESULT expected, int expectedCode) {
        EnumLxiErrors code{};
        CComBSTR text;
        m_receiver.Errors().GetLastError(code, text);
        EXPECT_EQ(result, expected);
        EXPECT_EQ(static_cast<int>(code), expectedCode);
    };
    CLxiLanPacket packet;
    expect(m_receiver.AddObserver(0, nullptr), E_POINTER, 0);
    expect(m_receiver.AddObserver(0, &m_heard), E_INVALIDARG, 5130);
    expect(m_receiver.AddObserver(kLxiEventCount, &m_heard), E_INVALIDARG, 5131);
    expect(m_receiver.SendEvent(-1, {}), E_INVALIDARG, 5131);
    expect(m_receiver.RemoveObserver(0, &m_heard), S_OK, 0);
    expect(m_receiver.RemoveObserver(0, &m_heard), E_INVALIDARG, 5131);
    expect(m_receiver.SendTo(packet, "here", 1), E_INVALIDARG, 0);
    expect(m_receiver.SendTo(packet, "255.255.255.255", 1), E_FAIL, 5000); // broadcast is not asked for
    m_receiver.Stop();
    expect(m_receiver.Send(packet), E_UNEXPECTED, 0);
    m_receiver.Start();
    expect(m_receiver.Send(packet), S_OK, 0);
}

TEST_F(LxiEndpoint, TakenPortAndWrongAddressAreNamed)
{
    for (const auto& [address, words] :
         std::map<std::string, std::string>{{"127.0.0.1", "127.0.0.1 port " + std::to_string(m_port)},
                                            {"::1", "\"::1\" is no IPv4 address"}})
    {
        CLxiEventEndpoint second({.address = address, .port = m_port});
        EXPECT_THAT([&] { second.Start(); }, testing::ThrowsMessage<std::system_error>(HasSubstr(words)));
        EXPECT_EQ(second.Errors().GetErrorString(), CComBSTR("Error during connection a capability"));
    }
}

} // namespace
} // namespace ZoVelkor::RemoteKernel
