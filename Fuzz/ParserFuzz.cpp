// Feeds bytes through the framer, in pieces and at once, and every message through the parser.
#include "IZOScpiBlockData.h"
#include "ParserTestTable.h"
#include "Parsing/CMessageFramer.h"
#include "Parsing/CProgramMessageParser.h"

#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace
{
using namespace ZoVelkor;
using namespace ZoVelkor::RemoteKernel;
using namespace ZoVelkor::RemoteKernel::Testing;

constexpr MessageLimits kLimits{4096, 4096};

/// Cuts a stream into messages; errors become their numbers.
std::vector<std::string> Frames(const std::string& stream, std::size_t piece)
{
    CMessageFramer framer(kLimits);
    std::vector<std::string> messages;
    std::string buffer;
    for (std::size_t place = 0; place < stream.size(); place += piece)
    {
        buffer += stream.substr(place, piece);
        Frame frame;
        do
        {
            frame = framer.Scan(buffer);
            if (frame.status == FrameStatus::Message)
            {
                messages.push_back(buffer.substr(0, frame.length));
            }
            if (frame.status == FrameStatus::Error)
            {
                messages.push_back("!" + std::to_string(frame.error));
            }
            buffer.erase(0, frame.consumed);
        } while (frame.status != FrameStatus::Incomplete);
    }
    return messages;
}

void Require(bool condition)
{
    if (!condition)
    {
        std::abort();
    }
}

/// Checks what every handler relies on.
class CInvariantChecker final : public ICommandExecutor
{
public:
    bool ExecuteCommand(const ParsedCommand& command) override
    {
        Require(command.headerText != nullptr && command.numericSuffixes != nullptr);
        for (unsigned long i = 0; i < command.argumentCount; ++i)
        {
            const tagZO_SCPI_PARAMETER& parameter = command.arguments[i];
            Require(parameter.iTextLength < kParameterTextSize);
            Require(parameter.szText[parameter.iTextLength] == '\0');
            Require((parameter.iType == ZO_SCPI_PARAMTYPE_BLOCK) == (parameter.pBlockData != nullptr));
        }
        return true;
    }

    void ReportError(short code, std::string_view detail) override
    {
        Require(code < 0 && !detail.empty());
        m_reported = true;
    }

    bool m_reported = false;
};

const CCommandIndex& Index()
{
    static const std::vector<_CMD_SET_RECORD> table = MakeParserTestTable();
    static const CCommandIndex index(std::vector<CommandSource>{{table.data(), table.size(), MakeOwner()}});
    return index;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    const std::string stream(data + 1, data + size);
    const std::vector<std::string> messages = Frames(stream, stream.size() + 1);
    Require(messages == Frames(stream, data[0] % 64U + 1U));
    CProgramMessageParser parser;
    for (const std::string& message : messages)
    {
        CInvariantChecker checker;
        // A buffer of exactly this size lets the sanitizer see a step too far.
        std::vector<char> bytes(message.begin(), message.end());
        const bool complete = parser.Parse(Index(), bytes, checker);
        Require(complete || checker.m_reported);
    }
    return 0;
}
