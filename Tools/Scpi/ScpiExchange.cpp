#include "ScpiExchange.h"

#include "Common/CToolError.h"
#include "Common/ToolFiles.h"
#include "ResponseData.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kAskErrors = "SYSTem:ERRor?\n";
constexpr std::string_view kAskStatus = "*STB?\n";

/// An instrument whose queue never becomes empty does no harm.
constexpr std::size_t kMaxErrors = 1000;

/// What is held back until it is clear whether it is an answer; an error entry is never longer.
constexpr std::size_t kHeldBytes = 4096;

constexpr std::size_t kPieceBytes = 65536;

/// IEEE 488.2 section 7.7.6.2 has one digit for the number of digits.
constexpr std::size_t kMaxBlock = 999999999;

/// Number, comma and quote begin an entry of the error queue (SCPI-99 vol. 2, 21.8).
bool IsErrorEntry(std::string_view line)
{
    const std::size_t comma = line.find(',');
    const std::string_view number =
        line.substr(line.starts_with('+') ? 1 : 0, comma - (line.starts_with('+') ? 1 : 0));
    int code = 0;
    const auto [end, fault] = std::from_chars(number.begin(), number.end(), code);
    return comma != std::string_view::npos && fault == std::errc() && end == number.end() &&
           line.substr(comma + 1).starts_with('"');
}

bool IsNoError(std::string_view entry)
{
    return entry.starts_with("0,") || entry.starts_with("+0,") || entry.starts_with("-0,");
}

std::string WithoutEnd(std::string line)
{
    line.erase(line.find_last_not_of("\r\n") + 1);
    return line;
}

std::size_t FileSize(const std::string& name)
{
    std::error_code fault;
    const std::uintmax_t size = std::filesystem::file_size(name, fault);
    if (fault)
    {
        throw CToolError(ExitCode::NoAccess, fmt::format("cannot read {}: {}", name, fault.message()));
    }
    if (size > kMaxBlock)
    {
        throw CToolError(ExitCode::Failed,
                         fmt::format("{}: {} bytes; a block has {} at most", name, size, kMaxBlock));
    }
    return size;
}

/// Sends a command and the questions behind it, in one piece where there is no file.
void Ask(CInstrumentLink& link, const ScpiCommand& command, std::string_view questions)
{
    if (command.inputFile.empty())
    {
        link.Send(fmt::format("{}\n{}", command.text, questions), false);
        return;
    }
    const std::size_t size = FileSize(command.inputFile);
    char header[kMaxBlockHeaderSize];
    const std::string_view head(header,
                                static_cast<std::size_t>(WriteDefiniteBlockHeader(header, size) - header));
    link.Send(fmt::format("{}{}", command.text, head), size == 0);
    if (size > 0)
    {
        link.SendFile(command.inputFile, size);
    }
    link.Send(questions, false);
}

/// The length of the block that begins an answer; what was read is left in the part where there is none.
std::optional<std::size_t> ReadBlockHeader(CInstrumentLink& link, ResponsePart& part)
{
    part = link.Read(2);
    if (part.isEnd || part.bytes[0] != '#' || part.bytes[1] < '1' || part.bytes[1] > '9')
    {
        return std::nullopt;
    }
    const ResponsePart digits = link.Read(static_cast<std::size_t>(part.bytes[1] - '0'));
    part = {part.bytes + digits.bytes, digits.isEnd};
    std::size_t size = 0;
    const char* const end = digits.bytes.data() + digits.bytes.size();
    const auto [rest, fault] = std::from_chars(digits.bytes.data(), end, size);
    return fault == std::errc() && rest == end ? std::optional(size) : std::nullopt;
}

void PassOn(CInstrumentLink& link, CAnswerTaker& taker, ResponsePart part)
{
    taker.Take(part.bytes);
    while (!part.isEnd)
    {
        part = link.Read(kPieceBytes);
        taker.Take(part.bytes);
    }
}

/// Passes an answer on when it is certain to be one.
///
/// @return what may as well be an entry of the error queue
std::optional<std::string> TakeOrHold(CInstrumentLink& link, CAnswerTaker& taker)
{
    ResponsePart part;
    if (taker.WantsBlocks())
    {
        if (const auto size = ReadBlockHeader(link, part))
        {
            taker.TakeBlock(link, *size);
            const std::string rest = link.ReadLine();
            if (!WithoutEnd(rest).empty())
            {
                throw CToolError(ExitCode::Failed,
                                 fmt::format("{}: the answer goes on behind its block", link.Address()));
            }
            return std::nullopt;
        }
    }
    if (!part.isEnd)
    {
        ResponsePart more = link.Read(kHeldBytes);
        part = {part.bytes + more.bytes, more.isEnd};
    }
    if (part.isEnd && IsErrorEntry(part.bytes))
    {
        return std::move(part.bytes);
    }
    PassOn(link, taker, std::move(part));
    return std::nullopt;
}

/// The answer to a query, then the first entry of the error queue, then the status byte.
std::string TakeQueryAnswers(CInstrumentLink& link, CAnswerTaker& taker)
{
    const std::optional<std::string> held = TakeOrHold(link, taker);
    std::string next = link.ReadLine();
    if (held && !IsErrorEntry(next))
    {
        return *held;
    }
    if (held)
    {
        taker.Take(*held);
    }
    link.ReadLine();
    return next;
}

} // namespace

std::vector<std::string> CarryOut(CInstrumentLink& link, const ScpiCommand& command, CAnswerTaker& taker)
{
    const bool isQuery = command.text.find('?') != std::string_view::npos;
    if (!command.isChecked)
    {
        Ask(link, command, "");
        if (isQuery)
        {
            TakeResponse(link, taker);
        }
        return {};
    }
    Ask(link, command, fmt::format("{}{}", kAskErrors, isQuery ? kAskStatus : ""));
    std::vector<std::string> errors;
    std::string entry = isQuery ? TakeQueryAnswers(link, taker) : link.ReadLine();
    while (IsErrorEntry(entry) && !IsNoError(entry) && errors.size() < kMaxErrors)
    {
        errors.push_back(Printable(WithoutEnd(entry)));
        link.Send(kAskErrors, false);
        entry = link.ReadLine();
    }
    if (!IsErrorEntry(entry))
    {
        throw CToolError(
            ExitCode::Failed,
            fmt::format("{}: answers SYSTem:ERRor? with '{}'", link.Address(), Printable(WithoutEnd(entry))));
    }
    return errors;
}

void TakeResponse(CInstrumentLink& link, CAnswerTaker& taker)
{
    if (const auto held = TakeOrHold(link, taker))
    {
        taker.Take(*held);
    }
}

} // namespace ZoVelkor::Tools
