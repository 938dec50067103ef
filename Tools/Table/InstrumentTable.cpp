#include "InstrumentTable.h"

#include "Common/CToolError.h"
#include "Common/ToolFiles.h"
#include "Instrument/CInstrumentLink.h"
#include "TableFile.h"

#include <fmt/format.h>

#include <algorithm>

namespace ZoVelkor::Tools
{

namespace
{

/// An instrument that refuses the first query answers the second one alone.
constexpr const char* kQuestion = "SYSTem:HELP:TABLe?\nSYSTem:ERRor?\n";

[[noreturn]] void FailWithAnswer(const CInstrumentLink& link, std::string answer)
{
    answer.erase(std::min(answer.find_last_not_of("\r\n") + 1, answer.size()));
    throw CToolError(ExitCode::Failed,
                     fmt::format("{} gives no command table: {}", link.Address(), Printable(answer)));
}

/// The beginning of the answer, which tells that a table follows.
void ReadPrefix(CInstrumentLink& link)
{
    ResponsePart answer = link.Read(TableFilePrefix().size());
    if (answer.bytes != TableFilePrefix())
    {
        // What is behind the beginning of a block is not for people.
        const bool isText = !answer.isEnd && answer.bytes.find('#') == std::string::npos;
        FailWithAnswer(link, isText ? answer.bytes + link.ReadLine() : answer.bytes);
    }
}

} // namespace

std::string FetchInstrumentTable(const InstrumentAddress& address, std::chrono::milliseconds timeout)
{
    CInstrumentLink link(address, timeout);
    link.Connect();
    link.Send(kQuestion, false);
    ReadPrefix(link);
    const std::string digits = link.Read(kTableLengthDigits).bytes;
    if (digits.size() != kTableLengthDigits || digits.find_first_not_of("0123456789") != std::string::npos)
    {
        FailWithAnswer(link, TableFilePrefix() + digits);
    }
    return TableFilePrefix() + digits + link.Read(std::stoul(digits)).bytes;
}

} // namespace ZoVelkor::Tools
