#include "CLxiLanPacket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

using namespace ZoVelkor;
using namespace std::string_literals;

/// The whole message, and how much of it the packet announces.
std::pair<std::string, unsigned long> Serialise(CLxiLanPacket& packet)
{
    unsigned long length = 0;
    unsigned char* data = nullptr;
    packet.getSerializedDataStream(length, data);
    const std::unique_ptr<unsigned char[]> owner(data);
    const std::size_t size = length + 2 * packet.getNumberOfUserDataFields() + 2;
    return {std::string(data, data + size), length};
}

unsigned long NextNumber(CLxiLanPacket& packet)
{
    Serialise(packet);
    return packet.getSequenceNumber();
}
CLxiLanPacket g_first;
const unsigned long g_firstNumber = NextNumber(g_first); // before any test runs

/// Hands in bytes in a block of their own, so that reading beyond them is seen; 2 stands for its address.
unsigned long Receive(CLxiLanPacket& packet, const std::string& bytes)
{
    const auto block = std::make_unique<unsigned char[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
    const unsigned long result = packet.addSerializedData(bytes.size(), block.get());
    return result == reinterpret_cast<std::uintptr_t>(block.get()) ? 2 : result;
}

void Append(CLxiLanPacket& packet, std::uint8_t identifier, std::string data)
{
    packet.appendUserData(
        {identifier, static_cast<std::uint32_t>(data.size()), reinterpret_cast<std::uint8_t*>(data.data())});
}

/// "<identifier>:<data>"; what getUserData leaves alone is "0:none".
std::string FieldAt(const CLxiLanPacket& packet, unsigned short index)
{
    std::uint8_t none[] = "none";
    tagLxiLanUserDataType field{0, 4, none};
    const bool isThere = packet.getUserData(index, field) == 1;
    const std::unique_ptr<std::uint8_t[]> owner(isThere ? field.pData : nullptr);
    return std::to_string(field.iIdentifier) + ":" + std::string(field.pData, field.pData + field.iSize);
}

// clang-format off
/// A header as it stands in the standard's layout: every field has bytes of its own.
const std::string kHeader = "LXH\x05" "ERROR\0\0\0\0\0\0\0\0\0\0\0" "\x81\x02\x03\x04" "\x11\x12\x13\x14"
                            "\x21\x22\x23\x24" "\x31\x32" "\x41\x42" "\0\x0A"s;

TEST(LxiPacket, BytesOnTheWire)
{
    std::uint8_t data[] = {'a', 'b', 'c'};
    const tagLxiLanUserDataType fields[] = {{0xF0, 3, data}, {1, 9, nullptr}};
    CLxiLanPacket packet(ZO_LXI_LAN3, nullptr, 0x1FE, nullptr, 0x11223344'55667788, 1, -1, -1, 0, 2, fields);
    packet.setTimestamp(0x1'11223344, 0x1'55667788, 0xF99AA);
    packet.setEpoch(0xFBBCC);
    auto [message, announced] = Serialise(packet);
    const unsigned long number = packet.getSequenceNumber();
    EXPECT_EQ(message.substr(20, 4), (std::string{static_cast<char>(number >> 24), static_cast<char>(number >> 16),
                                                      static_cast<char>(number >> 8), static_cast<char>(number)}));
    EXPECT_EQ(message.erase(20, 4),
              "LXI\xFE" "LAN3"s + std::string(12, '\0') + "\x11\x22\x33\x44\x55\x66\x77\x88\x99\xAA\xBB\xCC\0\x0A"
                  "\0\x03\0\0\xF0" "abc" "\0\0\0\0\x01" "\0\0\0\0"s);
    EXPECT_EQ(announced, 40U + (3 + 3) + (0 + 3)) << "two bytes of each field are left out";
    CLxiLanPacket other;
    EXPECT_EQ(Serialise(other).second, 40U);
    EXPECT_EQ(Serialise(other).first.substr(36), "\0\0\0\0\0\0"s);
    Append(other, 8, std::string(65538, 'd'));
    EXPECT_EQ(Serialise(other).second, 40U + 65541);
    EXPECT_EQ(Serialise(other).first.substr(38, 6), "\0\x02\0\0\x08"s + "d") << "the low 16 bits of the size";
}

const std::tuple<int, const char*, int> kEvents[] = {
    {0, "LAN0", 0}, {1, "LAN1", 1}, {2, "LAN2", 2}, {3, "LAN3", 3}, {4, "LAN4", 4}, {5, "LAN5", 5}, {6, "LAN6", 6},
    {7, "LAN7", 7}, {8, "ERROR", 8}, {9, "", 9}, {-1, "", 9},
    // no channels, names alone
    {-2, "LAN8", 9}, {-2, "LAN/", 9}, {-2, "LAN71", 7}, {-2, "LAN", 9}, {-2, "lan1", 9}, {-2, "ERRORS", 8}, {-2, "ERRO", 9},
    {-2, "0123456789abcdef", 9}};
// clang-format on
TEST(LxiPacket, EventsHaveNamesAndNumbers)
{
    for (const auto& [channel, name, number] : kEvents)
    {
        CLxiLanPacket packet(
            static_cast<tagEnumLxiLanChannelId>(channel), nullptr, 0, nullptr, 0, 1, 1, 1, -1, 1, nullptr);
        unsigned char id[CLxiLanPacket::kEventIdSize] = {}, back[CLxiLanPacket::kEventIdSize];
        std::copy_n(name, std::strlen(name), id);
        channel < -1 ? packet.setEventId(id) : packet.setEventId(nullptr);
        packet.getEventId(back);
        CComBSTR text;
        text.Attach(packet.getEventName());
        EXPECT_TRUE(text == name && !text.IsNull()) << name;
        EXPECT_TRUE(std::equal(id, std::end(id), back)) << name;
        EXPECT_EQ(packet.getEventId(), number) << name;
        EXPECT_EQ(Serialise(packet).first.substr(36, 2), "\0\x04"s) << "1 is not VARIANT_TRUE";
    }
}

TEST(LxiPacket, OneSetsFlagsAndEverythingElseClearsThem)
{
    CLxiLanPacket packet;
    for (const int value : {1, 2, 1, 0, 1, -1})
    {
        packet.setIsErrorMessage(value), packet.setIsRetransmission(value);
        packet.setIsHwFlagSet(value), packet.setIsAcknowledgement(value);
        const std::vector<int> flags{packet.getIsErrorMessage(),
                                     packet.getIsRetransmission(),
                                     packet.getIsHwFlagSet(),
                                     packet.getIsAcknowledgement()};
        EXPECT_EQ(flags, std::vector<int>(4, value == 1)) << value;
        EXPECT_EQ(Serialise(packet).first.substr(36, 2), value == 1 ? "\0\x0F"s : "\0\0"s) << value;
    }
}

TEST(LxiPacket, ReceivesEveryCutOfAHeader)
{
    for (std::size_t cut = 2; cut <= kHeader.size(); ++cut)
    {
        CLxiLanPacket packet;
        Append(packet, 1, "kept");
        EXPECT_EQ(Receive(packet, "noise L" + kHeader.substr(0, cut)), 0U) << cut;
        EXPECT_EQ(packet.getDomain(), 0);
        // The mark that every chunk must contain is the begin of the rest here.
        EXPECT_EQ(Receive(packet, "LX" + std::string(40 - cut - 2 + 9, 'z')), 1U) << cut;
        EXPECT_EQ(packet.getDomain(), cut > 3 ? 5 : cut == 3 ? 'L' : 'X');
        EXPECT_EQ(packet.getNumberOfUserDataFields(), 1U) << "no received field, own ones stay";
    }
}

TEST(LxiPacket, ReceivesHeadersAloneAndSendsThemOn)
{
    CLxiLanPacket packet, sent;
    for (const std::string& end : {"\0\x04LXLXLXLX"s, "\xFF\xFF"s, "\0\0"s})
    {
        packet.setDomain(0);
        EXPECT_EQ(Receive(packet, kHeader + end), 1U);
        sent.duplicatePacket(packet);
        EXPECT_EQ(sent.getSequenceNumber(), 0x81020304U);
        EXPECT_EQ(sent.getTimestamp(), 0x11121314'21222324U);
        EXPECT_EQ(Serialise(sent).first.replace(20, 4, kHeader, 20, 4), kHeader + "\0\0\0\0"s);
    }
}

TEST(LxiPacket, AChunkWithoutTheMarkStoresNothing)
{
    CLxiLanPacket packet;
    EXPECT_EQ(Receive(packet, kHeader.substr(0, 20)), 0U);
    for (const std::string& garbage : {""s, "L"s, "XL"s, "lx"s, "L X"s, std::string(10'000, 'L')})
    {
        EXPECT_EQ(Receive(packet, garbage), 2U) << garbage;
    }
    EXPECT_EQ(packet.addSerializedData(5, nullptr), 0U);
    EXPECT_EQ(Receive(packet, "LX" + std::string(17, 'y')), 0U) << "39 bytes so far";
    EXPECT_EQ(Receive(packet, "LX"), 1U);
    EXPECT_EQ(packet.getSequenceNumber(), 0x4C587979U);
}

/// A receiver that wants the user data, too.
struct CFieldReceiver : CLxiLanPacket
{
    using CLxiLanPacket::setReceivePhase;
};

TEST(LxiPacket, DerivedReceiversGetFieldsThatFit)
{
    for (const unsigned size : {0U, 1U, 2U, 8189U, 8190U, 65532U, 65533U, 65535U})
    {
        CFieldReceiver packet;
        packet.setReceivePhase(1); // no field is announced yet: a header comes
        const std::string length{static_cast<char>(size >> 8), static_cast<char>(size)};
        EXPECT_EQ(Receive(packet, kHeader + length), 1U);
        packet.setReceivePhase(1);
        const bool isAccepted = size != 0 && size <= 8189;
        if (isAccepted)
        {
            const std::string data = "X" + std::string(size - 1, 'u');
            EXPECT_EQ(Receive(packet, "L" + data), 0U) << size;
            EXPECT_EQ(Receive(packet, "LX"), 1U) << size << ": the length of a next field, which is too long";
            EXPECT_EQ(FieldAt(packet, 0), "76:" + data);
        }
        EXPECT_EQ(Receive(packet, kHeader + length), 1U) << size << ": a header again";
        EXPECT_EQ(packet.getNumberOfUserDataFields(), isAccepted ? 1U : 0U);
    }
}

TEST(LxiPacket, UserDataIsCopied)
{
    CLxiLanPacket packet, copy;
    Append(packet, 1, "one");
    Append(packet, 255, "\0z"s);
    Append(copy, 9, "goes");
    packet.duplicatePacket(packet);
    copy.duplicatePacket(packet);
    Append(packet, 4, "");
    EXPECT_EQ(FieldAt(copy, 0) + FieldAt(copy, 1) + FieldAt(copy, 2), "1:one255:\0z0:none"s);
    EXPECT_EQ(FieldAt(packet, 2) + FieldAt(packet, 3), "4:0:none");
}

TEST(LxiPacket, ReadableLine)
{
    setenv("TZ", "UTC0", 1);
    tzset();
    CLxiLanPacket packet(ZO_LXI_LAN7, nullptr, 255, nullptr, 0x684EE180'00000007, -1, 0, -1, 0, 0, nullptr);
    packet.setSequenceNumber(0xFFFFFFFE);
    packet.setEpoch(65535);
    const std::wstring line = L"255, LAN7, -2, Sunday June 15 15:06:40 2025, 0, 65535, "
                              L"ErrMsg=true, ReTrans=false, HWFlag=false, AckMsg=true";
    CComBSTR text(L">");
    packet.setHWDetect(0x80);
    packet.getReadableLANData(text);
    EXPECT_EQ(text.View(), L">LX\u20AC, " + line) << "bytes are in code page 0";
    Append(packet, 3, "\0\xFF"s);
    Append(packet, 4, "a");
    packet.setHWDetect(0);
    text.Empty();
    packet.getReadableLANData(text);
    EXPECT_EQ(text.View(), L"LX" + line + L", User data = 0x00 0xff 0x61 ") << "a zero ends the piece";
}

TEST(LxiPacket, SequenceNumbersAreUniqueAndWithoutGaps)
{
    EXPECT_EQ(g_firstNumber, 1U);
    CLxiLanPacket packets[4];
    const unsigned long before = NextNumber(packets[0]);
    std::vector<unsigned long> numbers(std::size(packets) * 10'000);
    std::latch start(std::size(packets));
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i != std::size(packets); ++i)
    {
        threads.emplace_back([&start, &packet = packets[i], own = &numbers[i * 10'000]] {
            start.arrive_and_wait();
            std::generate_n(own, 10'000, [&] { return NextNumber(packet); });
        });
    }
    threads.clear();
    std::sort(numbers.begin(), numbers.end());
    EXPECT_TRUE(std::adjacent_find(numbers.begin(), numbers.end()) == numbers.end());
    EXPECT_EQ(numbers.front(), before + 1);
    EXPECT_EQ(numbers.back(), before + numbers.size());
}

} // namespace
