#include "CTerminal.h"
#include "Common/CToolError.h"
#include "Lxi/LxiEventMaker.h"
#include "Lxi/LxiSockets.h"
#include "Lxi/PcapFile.h"
#include "LxiClock.h"
#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sys/socket.h>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using namespace std::string_literals;
using testing::EndsWith;
using testing::HasSubstr;

/// LAN3 in domain 0, number 1, 5 s 6 ns, with one data field.
const std::string kMessage =
    "LXI\0LAN3\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\5\0\0\0\6\0\0\0\0\0\0\0\5\1hello\0\0"s;
constexpr const char* kSendMessage = "lxi send --dry-run --event LAN3 --time 5.000000006 --data 1:hello";
constexpr const char* kMessageText =
    "LAN3 domain 0 sequence 1 time 5.000000006 (1970-01-01 00:00:05 UTC) data 1:\"hello\"\n";

std::string Altered(std::size_t offset, const std::string& bytes)
{
    return std::string(kMessage).replace(offset, bytes.size(), bytes);
}

struct SendRow
{
    const char* options;
    const char* text;
};

// clang-format off
constexpr SendRow kSent[] = {
    {"--time 0", "LAN0 domain 0 sequence 1 time 0.000000000 (now)"},
    {"-e LXIERROR --time 1.5 --domain 255 --sequence 4294967295",
     "LXIERROR domain 255 sequence 4294967295 time 1.500000000 (1970-01-01 00:00:01 UTC) flags error"},
    {"-e 'sixteen letters.' --time 4294967296 --flags hardware,error --flags acknowledgement,retransmission",
     "sixteen letters. domain 0 sequence 1 time 4294967296.000000000 (2106-02-07 06:28:16 UTC) "
     "flags error,retransmission,hardware,acknowledgement"},
    {"--time 0 -d 0:a:b -d 255:0x00fF -d '7:0x 30 78' -d 8:0x0A",
     "LAN0 domain 0 sequence 1 time 0.000000000 (now) data 0:\"a:b\" data 255:0x00ff data 7:0x3078 data 8:0x0a"},
};

constexpr SendRow kNotSent[] = {
    {"--event ''",               "--event : not 1 to 16 printable ASCII characters"},
    {"--event seventeen.letters", "not 1 to 16"},
    {"--time yesterday",         "--time yesterday: not now, SECONDS or +SECONDS"},
    {"--time 1.",                "--time 1.: not"},
    {"--time -1",                "--time -1: not"},
    {"--time 1.0000000001",      "9 digits"},
    {"--time 281474976710656",   "--time"},
    {"--domain 256",             "domain"},
    {"--flags error,stateless",  "--flags stateless: none of"},
    {"--data hello",             "--data hello: not TYPE:TEXT"},
    {"--data 256:a",             "not TYPE:TEXT"},
    {"--data 1:",                "not TYPE:TEXT"},
    {"--data 1:0x",              "--data: a field is empty"},
    {"--data 1:0x0",             "--data 1:0x0: the last byte has one digit only"},
    {"--data 1:0xZZ",            "is no hexadecimal digit"},
    {"--tcp",                    "--tcp goes with --to"},
    {"--to h:65536",             "h:65536: neither"},
    {"--multicast --to h",       "excludes"},
    {"--bind here",              "here is no IPv4 address"},
    {"--port 65536",             "port"},
};
// clang-format on

TEST_F(ToolTest, LxiSendShowsWhatTheOptionsMean)
{
    for (const auto& [options, text] : kSent)
    {
        const ToolRun run = Run("lxi send --dry-run "s + options);
        EXPECT_EQ(run.out, "not sent: "s + text + "\n") << run.err;
    }
    for (const auto& [options, text] : kNotSent)
    {
        const ToolRun run = Run("lxi send "s + options);
        EXPECT_EQ(run.exitCode, 2) << options;
        EXPECT_EQ(run.out, "") << options;
        EXPECT_THAT(run.err, HasSubstr(text)) << options;
    }
    EXPECT_EQ(Run("lxi send --to 127.0.0.1:1 --tcp").exitCode, 3);
    EXPECT_THAT(Run("lxi send --to no..host").err, HasSubstr("cannot find host no..host"));
    for (const std::string level : {"", " send", " listen", " decode"})
    {
        EXPECT_THAT(Run("lxi" + level + " --help").out, HasSubstr("Example: zo lxi" + level));
    }
}

TEST(LxiTimeOption, CountsFromNow)
{
    CLxiTime earliest = RemoteKernel::LxiNow();
    const CLxiTime time = TakeLxiTime("+3600.25");
    CLxiTime latest = TakeLxiTime("now");
    earliest.Add(CLxiTime(0, 3600, 250'000'000));
    latest.Add(CLxiTime(0, 3600, 250'000'000));
    EXPECT_TRUE(earliest <= time);
    EXPECT_TRUE(time <= latest);
}

// clang-format off
const std::string kDumps[] = {
    kMessage,
    "4c584900 4c414e33 000000000000000000000000 00000001 00000005 00000006 0000 0000 0000 0005 01 68656c6c6f 0000",
    "0x4C, 0x58,0x49,0X00;4c:41-4e:33\r\n\n" + [] { std::string s; for (int i = 0; i < 15; ++i) { s += "00:"; } return s; }() +
    "01\n00 00 00 05 00 00 00 06 00 00 00 00 00 00 00 05 01 68 65 6c 6c 6f 00 00",
    "00000000: 4c58 4900 4c41 4e33 0000 0000 0000 0000  LXI.LAN3........\n"
    "00000010: 0000 0000 0000 0001 0000 0005 0000 0006  ................\n"
    "00000020: 0000 0000 0000 0005 0168 656c 6c6f 0000  .........hello..\n",
    "0000000 584c 0049 414c 334e 0000 0000 0000 0000\n"
    "0000010 0000 0000 0000 0100 0000 0500 0000 0600\n"
    "0000020 0000 0000 0000 0500 6801 6c65 6f6c 0000\n0000030\n",
    "00000000  4c 58 49 00 4c 41 4e 33  00 00 00 00 00 00 00 00  |LXI.LAN3........|\n"
    "00000010  00 00 00 00 00 00 00 01  00 00 00 05 00 00 00 06  |................|\n"
    "00000020  00 00 00 00 00 00 00 05  01 68 65 6c 6c 6f 00 00  |.........hello..|\n00000030\n",
};

constexpr const char* kSqueezed[] = {
    "0000000 584c 0049 414c 334e 0000 0000 0000 0000\n0000010 0000 0000 0000 0100 0000 0500 0000 0600\n"
    "0000020 0000 0000 0000 3a00 0001 0000 0000 0000\n0000030 0000 0000 0000 0000 0000 0000 0000 0000\n"
    "*\n0000060 0000 0000 0000                         \n0000065\n",
    "000000 4c 58 49 00 4c 41 4e 33 00 00 00 00 00 00 00 00\n"
    "000010 00 00 00 00 00 00 00 01 00 00 00 05 00 00 00 06\n000020 00 00 00 00 00 00 00 3a 01 00 00 00 00 00 00 00\n"
    "000030 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\r\n*\r\n\r\n000060 00 00 00 00 00\n000065\n",
};

struct BadDump
{
    const char* text;
    const char* err;
};

constexpr BadDump kBadDumps[] = {
    {"",                               "standard input: there is no event message in it"},
    {"4c58\n49 x",                     "line 2: x are no hexadecimal digits"},
    {"4c5",                            "line 1: 4c5 is no whole number of bytes"},
    {"0000: 4c58\n0003: 4900",         "line 2: the offset is 0x3, but 0x2 bytes stand above"},
    {"0000: 4c58\n*\nffffffff: 4900",  "line 3: ffffffff is no offset"},
    {"0000:\n*\n0010: 4c",              "line 2: * stands for no line"},
};
// clang-format on

TEST_F(ToolTest, LxiDecodeTakesWhatToolsPrint)
{
    EXPECT_EQ(
        Run(kSendMessage + " --hex"s).out,
        "4c 58 49 00 4c 41 4e 33 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 05 00 00 00 06 "
        "00 00 00 00 00 00 00 05 01 68 65 6c 6c 6f 00 00\n");
    for (const std::string& dump : kDumps)
    {
        const ToolRun run = Run("lxi decode -", dump);
        EXPECT_EQ(run.out, "packet 1, offset 0: "s + kMessageText) << dump << run.err;
        EXPECT_EQ(run.exitCode, 0);
    }
    for (const char* dump : kSqueezed)
    {
        EXPECT_THAT(Run("lxi decode -", dump).out, EndsWith(" data 1:0x" + std::string(116, '0') + "\n"));
    }
    EXPECT_EQ(Run("lxi decode " + kDumps[1]).out, "packet 1, offset 0: "s + kMessageText);
    EXPECT_EQ(Run("lxi decode missing").exitCode, 3);
    EXPECT_EQ(Run("lxi decode missing 4c").exitCode, 2);
    for (const auto& [text, err] : kBadDumps)
    {
        const ToolRun run = Run("lxi decode -", text);
        EXPECT_EQ(run.exitCode, 1) << text;
        EXPECT_THAT(run.err, HasSubstr(err));
    }
}

struct DamagedRow
{
    std::string bytes;
    const char* out;
};

TEST_F(ToolTest, LxiDecodeSaysWhatIsWrongAndWhere)
{
    // clang-format off
    const DamagedRow kDamaged[] = {
        {"\xFF" + kMessage, "packet 1, offset 0: damaged at offset 0 of 1: it does not begin with LX\npacket 2, offset 1: LAN3 "},
        {kMessage.substr(0, 37) + kMessage, "offset 0: damaged at offset 37 of 37: the header is cut off\npacket 2, offset 37: LAN3 "},
        {kMessage.substr(0, 37), "offset 0: damaged at offset 37 of 37: the header is cut off\n"},
        {kMessage.substr(0, 45), "offset 0: damaged at offset 38 of 45: the data field is cut off\n"},
        {kMessage.substr(0, 47), "offset 0: damaged at offset 47 of 47: the end mark is missing\n"},
        {Altered(28, "\x3B\x9A\xCA\0"s) + kMessage, "damaged at offset 28 of 48: the nanoseconds are a second or more\npacket 2, offset 48: LAN3 "},
        {Altered(38, "\x1F\xD6"), "damaged at offset 38 of 48: the data field makes the message longer than 8192 bytes\n"},
        {kMessage + "\x80", "hello\"\npacket 2, offset 48: damaged at offset 0 of 1: it does not begin with LX\n"},
        {Altered(2, "\x80"), "packet 1, offset 0: LAN3 domain 0 sequence 1 time 5.000000006 (1970-01-01 00:00:05 UTC) third byte 0x80 data"},
    };
    // clang-format on
    for (const auto& [bytes, out] : kDamaged)
    {
        const ToolRun run = Run("lxi decode -", bytes);
        EXPECT_THAT(run.out, HasSubstr(out));
        EXPECT_EQ(run.exitCode, run.out.find("damaged") != std::string::npos ? 1 : 0) << out;
    }
    EXPECT_EQ(Run("lxi decode --json -", Altered(4, "\"\x1B\xE4") + "\x80").out,
              R"({"packet":1,"offset":0,"event":"\"\u001bä3","domain":0,"sequence":1,"seconds":5,)"
              R"("nanoseconds":6,"fraction":0,"hardwareDetect":73,"flags":[],)"
              R"("data":[{"type":1,"hex":"68 65 6c 6c 6f"}]})"
              "\n"
              R"({"packet":2,"offset":48,"fault":"it does not begin with LX","at":0,"size":1})"
              "\n");
}

std::string Number(std::size_t number, std::size_t size, bool isBig = true)
{
    std::string bytes;
    for (std::size_t i = 0; i != size; ++i)
    {
        bytes += static_cast<char>(number >> 8 * (isBig ? size - 1 - i : i));
    }
    return bytes;
}

std::string IpPacket(const std::string& payload)
{
    return "\x46\0"s + Number(payload.size() + 32, 2) + "\0\0\0\0\1\x11\0\0\x0A\0\0\1\xE0\0\x17\x9F"s +
           "opts" + "\x13\xB4\x13\xB4"s + Number(payload.size() + 8, 2) + "\0\0"s + payload;
}

std::string Pcap(std::size_t linkType,
                 const std::vector<std::string>& frames,
                 bool isBig = false,
                 std::uint32_t magic = 0xA1B2C3D4)
{
    std::string file = Number(magic, 4, isBig) + std::string(16, '\1') + Number(linkType, 4, isBig);
    for (const std::string& frame : frames)
    {
        file += std::string(8, '\2') + Number(frame.size(), 4, isBig) + Number(9999, 4, isBig) + frame;
    }
    return file;
}

const std::string kMacs(12, '\x11');
constexpr const char* kDatagram = "frame 1, udp 10.0.0.1:5044 > udp 224.0.23.159:5044: ";

TEST_F(ToolTest, LxiDecodeReadsPcapFiles)
{
    const std::string packet = IpPacket(kMessage);
    const std::string captures[] = {
        Pcap(1, {kMacs + "\x08\0"s + packet + "Ethernet's padding"}),
        Pcap(1, {kMacs + "\x81\0\0\1\x88\xA8\0\1\x08\0"s + packet}, true),
        Pcap(113, {std::string(14, '\0') + "\x08\0"s + packet}, true, 0xA1B23C4D),
        Pcap(276, {"\x08\0"s + std::string(18, '\0') + packet}, false, 0xA1B23C4D),
        Pcap(101, {packet}),
        Pcap(0x10000065, {packet}, true),
        Pcap(0, {"\2\0\0\0"s + packet}),
    };
    for (const std::string& capture : captures)
    {
        const ToolRun run = Run("lxi decode -", capture);
        EXPECT_EQ(run.out, kDatagram + ""s + kMessageText);
        EXPECT_EQ(run.err, "zo: 1 events, 0 damaged in 1 frames\n");
        EXPECT_EQ(run.exitCode, 0);
    }
    EXPECT_THAT(Run("lxi decode -", Pcap(105, {packet})).err, HasSubstr("frames of link type 105; known"));
    EXPECT_THAT(Run("lxi decode -", "\n\r\r\n").err, HasSubstr("pcapng"));
}

TEST_F(ToolTest, LxiDecodeSaysWhatIsWrongInPcapFiles)
{
    const std::string packet = IpPacket(kMessage);
    const auto altered = [&](std::size_t offset, const std::string& bytes) {
        return std::string(packet).replace(offset, bytes.size(), bytes);
    };
    Write("odd.pcap",
          Pcap(101,
               {packet.substr(0, packet.size() - 3),
                IpPacket(kMessage + "more"),
                IpPacket("x"),
                altered(0, "\x66"),
                altered(6, "\0\1"s),
                altered(9, "\6"),
                altered(28, "\0\7"s),
                altered(0, "\x4F"),
                packet.substr(0, 31),
                altered(24, "\1\1\1\1")}) +
              "cut");
    const ToolRun run = Run("lxi decode odd.pcap --json");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "zo: 1 events, 4 damaged in 10 frames\n");
    const std::string peers = R"("from":"udp 10.0.0.1:5044","to":"udp 224.0.23.159:5044",)";
    // clang-format off
    const std::string kLines[] = {
        R"({"frame":1,)" + peers + R"-("fault":"the data field is cut off (3 bytes were not captured)","at":38,"size":45})-",
        R"({"frame":2,)" + peers + R"("fault":"4 bytes follow the message","at":48,"size":52})",
        R"({"frame":3,)" + peers + R"("fault":"it does not begin with LX","at":0,"size":1})",
        R"({"frame":10,"from":"udp 10.0.0.1:257","to":"udp 224.0.23.159:257","event":"LAN3",)",
        R"({"fault":"frame 11 at offset )",
    };
    // clang-format on
    for (const std::string& line : kLines)
    {
        EXPECT_THAT(run.out, HasSubstr(line));
    }
    EXPECT_EQ(std::ranges::count(run.out, '\n'), 5) << run.out;
}

TEST(PcapFile, EveryTruncationIsNoticed)
{
    const std::string file = Pcap(1, {kMacs + "\x08\0"s + IpPacket(kMessage)});
    for (std::size_t size = 4; size != file.size(); ++size)
    {
        // A copy of its own, so that reading beyond is seen.
        const std::vector<std::uint8_t> part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        if (size < 24)
        {
            EXPECT_THROW(ReadPcapFile(part), CToolError) << size;
        }
        else
        {
            EXPECT_EQ(ReadPcapFile(part).fault.empty(), size == 24) << size;
        }
        // The frame itself, cut off by whoever captured it.
        const auto cut = Pcap(1, {(kMacs + "\x08\0"s + IpPacket(kMessage)).substr(0, size)});
        const auto capture = ReadPcapFile(std::vector<std::uint8_t>(cut.begin(), cut.end()));
        EXPECT_EQ(capture.datagrams.size(), size >= 14 + 32 ? 1U : 0U) << size;
    }
}

/// `zo lxi listen` on a free port of its own.
class CListening
{
public:
    CListening(const std::filesystem::path& folder, const std::vector<std::string>& options)
        : m_terminal(folder, Arguments(options))
    {
        constexpr std::string_view kGroup = "multicast 224.0.23.159:";
        const std::string text = m_terminal.WaitFor("\r\n");
        const std::size_t place = text.find(kGroup);
        EXPECT_NE(place, std::string::npos) << text;
        m_port = text.substr(place + kGroup.size(), PortEnd(text, place + kGroup.size()));
    }

    const std::string& Port() const { return m_port; }
    CTerminal& Terminal() { return m_terminal; }
    /// A line of output, with all ports of senders as 1.
    std::string Line()
    {
        constexpr std::string_view kHost = "127.0.0.1:";
        std::string line = m_terminal.WaitFor("\r\n");
        for (std::size_t at = line.find(kHost); at != std::string::npos; at = line.find(kHost, at + 1))
        {
            line.replace(at + kHost.size(), PortEnd(line, at + kHost.size()), "1");
        }
        return line;
    }

private:
    /// @return digits from a place on
    static std::size_t PortEnd(const std::string& text, std::size_t place)
    {
        return std::min(text.find_first_not_of("0123456789", place), text.size()) - place;
    }

    static std::vector<std::string> Arguments(const std::vector<std::string>& options)
    {
        std::vector<std::string> arguments{"lxi", "listen", "--port"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }

    CTerminal m_terminal;
    std::string m_port;
};

TEST_F(ToolTest, LxiListenHearsWhatIsSent)
{
    CListening all(Folder(), {"0"});
    CListening json(Folder(), {all.Port(), "--json", "--count", "1", "--timeout", "60"});
    const std::string send = "lxi send --time 5 --port " + all.Port();
    const std::string time = " time 5.000000000 (1970-01-01 00:00:05 UTC)";
    EXPECT_EQ(Run(send).out,
              "sent to udp 224.0.23.159:" + all.Port() + ": LAN0 domain 0 sequence 1" + time + "\n");
    EXPECT_EQ(all.Line(), "udp 127.0.0.1:1: LAN0 domain 0 sequence 1" + time + "\r\n");
    EXPECT_EQ(
        json.Line(),
        R"({"from":"udp 127.0.0.1:1","event":"LAN0","domain":0,"sequence":1,"seconds":5,"nanoseconds":0,)"
        R"("fraction":0,"hardwareDetect":73,"flags":[],"data":[]})"
        "\r\n");
    EXPECT_EQ(json.Terminal().WaitForExit(), 0)
        << "one is all that it wanted; the other program has the port";
    Run(send + " --to localhost --event free --domain 9 --flags acknowledgement");
    EXPECT_EQ(all.Line(), "udp 127.0.0.1:1: free domain 9 sequence 1" + time + " flags acknowledgement\r\n");
    Run(send + " --to 127.0.0.1:" + all.Port() + " --tcp -e LXIERROR -n 2 --sequence 4294967295 -d 1:x");
    EXPECT_EQ(all.Line(),
              "tcp 127.0.0.1:1: LXIERROR domain 0 sequence 4294967295" + time +
                  " flags error data 1:\"x\"\r\n");
    EXPECT_EQ(all.Line(),
              "tcp 127.0.0.1:1: LXIERROR domain 0 sequence 0" + time + " flags error data 1:\"x\"\r\n");
    all.Terminal().Type("\x03");
    EXPECT_THAT(all.Terminal().WaitFor("damaged"), HasSubstr("zo: 4 events, 0 damaged"));
    EXPECT_EQ(all.Terminal().WaitForExit(), 130);
}

void SendBytes(int type, const std::string& port, const std::string& bytes)
{
    const CSocket sender(socket(AF_INET, type, 0));
    const sockaddr_in name =
        SocketName(TakeIpAddress("127.0.0.1"), static_cast<std::uint16_t>(std::stoi(port)));
    ASSERT_EQ(connect(sender.Get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(send(sender.Get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
}

TEST_F(ToolTest, LxiListenTellsWhatIsDamaged)
{
    CListening listening(Folder(), {"0"});
    SendBytes(SOCK_DGRAM, listening.Port(), kMessage.substr(0, 45));
    EXPECT_EQ(listening.Line(), "udp 127.0.0.1:1: damaged at offset 38 of 45: the data field is cut off\r\n");
    SendBytes(SOCK_STREAM, listening.Port(), kMessage + kMessage.substr(0, 45));
    EXPECT_THAT(listening.Line(), testing::StartsWith("tcp 127.0.0.1:1: LAN3 domain 0 sequence 1 "));
    EXPECT_EQ(listening.Line(), "tcp 127.0.0.1:1: damaged: the connection ends within a message\r\n");
    SendBytes(SOCK_STREAM, listening.Port(), "GET / HTTP/1.1");
    EXPECT_EQ(listening.Line(),
              "tcp 127.0.0.1:1: damaged: what follows is no event message; the connection is closed\r\n");
}

TEST_F(ToolTest, LxiListenEndsWhenNothingComes)
{
    EXPECT_EQ(Run("lxi listen --port 0 --timeout 0.001").exitCode, 0);
    EXPECT_EQ(Run("lxi listen --port 0 --timeout 0.001 --count 1").exitCode, 3);
    EXPECT_EQ(Run("lxi listen --bind 192.0.2.1").exitCode, 3) << "no interface of this machine";
    EXPECT_EQ(Run("lxi listen --bind localhost").exitCode, 2);
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
