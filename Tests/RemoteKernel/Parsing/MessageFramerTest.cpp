#include "Parsing/CMessageFramer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
constexpr MessageLimits kSmall{16, 20};

/// Feeds a stream in pieces of one size; messages come out, "!-363" for an error.
std::vector<std::string>
Frames(const std::string& stream, std::size_t piece, const MessageLimits& limits = {})
{
    CMessageFramer framer(limits);
    std::vector<std::string> out;
    std::string buffer;
    for (std::size_t place = 0; place < stream.size(); place += piece)
    {
        buffer += stream.substr(place, piece);
        for (bool more = true; more;)
        {
            const Frame frame = framer.Scan(buffer);
            if (frame.status == FrameStatus::Message)
            {
                out.push_back(buffer.substr(0, frame.length));
            }
            else if (frame.status == FrameStatus::Error)
            {
                out.push_back("!" + std::to_string(frame.error));
            }
            buffer.erase(0, frame.consumed);
            more = frame.status != FrameStatus::Incomplete;
        }
    }
    if (!buffer.empty())
    {
        out.push_back("rest " + buffer);
    }
    return out;
}

struct FramerCase
{
    const char* szName;
    std::string stream;
    std::vector<std::string> messages;
};

class Framing : public testing::TestWithParam<FramerCase>
{};

TEST_P(Framing, IsTheSameHoweverTheStreamIsCut)
{
    for (std::size_t piece = 1; piece <= GetParam().stream.size(); ++piece)
    {
        EXPECT_EQ(Frames(GetParam().stream, piece, kSmall), GetParam().messages) << "pieces of " << piece;
    }
}

// One row a line.
const FramerCase kCases[] = {
    {"Lines", "A\n\nB\r\nC", {"A", "", "B\r", "rest C"}},
    {"BlockWithLineFeed", "D #13\n#1,#12\n\nX\nE\n", {"D #13\n#1,#12\n\nX", "E"}},
    {"IndefiniteBlock", "D #0a#15\nE\n", {"D #0a#15", "E"}},
    {"HashInString", "D \"a #19\"\nE\n", {"D \"a #19\"", "E"}},
    {"HashInOpenString", "D 'a #19\nE\n", {"D 'a #19", "E"}},
    {"BlockAfterOtherQuote", "D \"'\", #12\n\nX\n", {"D \"'\", #12\n\nX"}},
    {"HashInHeader", "D#19\nE\n", {"D#19", "E"}},
    {"NotABlock", "D #H1, #2a\nE\n", {"D #H1, #2a", "E"}},
    {"LongestText", "0123456789abcdef\nE\n", {"0123456789abcdef", "E"}},
    {"TextTooLong", "0123456789abcdefg\nE\n", {"!-363", "E"}},
    {"TextTooLongInString", "D 'abcdefghijklmnopq #19\nE\n", {"!-363", "E"}},
    {"TextTooLongAround", "01234 #13\n\n\n56789,ab\nE\n", {"!-363", "E"}},
    {"LargestBlock", "D #220" + std::string(20, '\n') + "\nE\n", {"D #220" + std::string(20, '\n'), "E"}},
    {"BlockTooLarge", "D #221" + std::string(21, '\n') + " X\nE\n", {"!-223", "E"}},
    {"BlocksTooLarge", "D #15abcde,#216" + std::string(16, '\n') + "\nE\n", {"!-223", "E"}},
    {"LargestIndefinite", "D #0" + std::string(20, 'x') + "\nE\n", {"D #0" + std::string(20, 'x'), "E"}},
    {"IndefiniteTooLarge", "D #0" + std::string(21, 'x') + "\nE\n", {"!-223", "E"}},
};

INSTANTIATE_TEST_SUITE_P(Streams, Framing, testing::ValuesIn(kCases), [](const auto& row) {
    return std::string(row.param.szName);
});

TEST(MessageFramer, TellsHowMuchOfABlockIsMissing)
{
    CMessageFramer framer;
    const std::string begin = "D #6100000abc";
    const Frame frame = framer.Scan(begin);
    EXPECT_EQ(frame.status, FrameStatus::Incomplete);
    EXPECT_EQ(frame.consumed, 0U);
    EXPECT_EQ(frame.bytesNeeded, 100000U - 3 + 1);
}

TEST(MessageFramer, AnyTruncationIsIncomplete)
{
    const std::string message = "MMEM:DATA 'a #15\"', #213\n#15abcdefgh\n, #0x\n";
    for (std::size_t length = 0; length < message.size(); ++length)
    {
        CMessageFramer framer;
        EXPECT_EQ(framer.Scan({message.data(), length}).status, FrameStatus::Incomplete) << length;
    }
    CMessageFramer framer;
    const Frame frame = framer.Scan(message);
    EXPECT_EQ(frame.status, FrameStatus::Message);
    EXPECT_EQ(frame.length, message.size() - 1);
}

TEST(MessageFramer, ResetForgetsTheMessage)
{
    CMessageFramer framer;
    EXPECT_EQ(framer.Scan(std::string_view("D #99")).status, FrameStatus::Incomplete);
    framer.Reset();
    EXPECT_EQ(framer.Scan(std::string_view("E\n")).length, 1U);
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
