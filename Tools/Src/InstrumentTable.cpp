#include "InstrumentTable.h"

#include "CSocketClient.h"
#include "CToolError.h"
#include "TableFile.h"
#include "ToolFiles.h"

#include <fmt/format.h>

#include <algorithm>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kMaxLine = 65536;

/// An instrument that refuses the first query answers the second one alone.
constexpr const char* kQuestion = "SYSTem:HELP:TABLe?\nSYSTem:ERRor?\n";

[[noreturn]] void FailWithAnswer(const tagInstrumentAddress& address, std::string answer)
{
    answer.erase(std::min(answer.find_last_not_of("\r\n") + 1, answer.size()));
    throw CToolError(tagExitCode::Failed,
                     fmt::format("{} gives no command table: {}", address.Text(), Printable(answer)));
}

} // namespace

std::string FetchInstrumentTable(const tagInstrumentAddress& address, std::chrono::milliseconds timeout)
{
    CSocketClient client(address, timeout);
    client.Send(kQuestion);
    std::string answer = client.ReadUntil("#\n", kMaxLine);
    if (answer.back() == '\n')
    {
        FailWithAnswer(address, answer);
    }
    answer += client.Read(1);
    if (answer != TableFilePrefix())
    {
        FailWithAnswer(address, answer.ends_with('\n') ? answer : answer + client.ReadUntil("\n", kMaxLine));
    }
    const std::string digits = client.Read(kTableLengthDigits);
    if (digits.find_first_not_of("0123456789") != std::string::npos)
    {
        FailWithAnswer(address, answer + digits);
    }
    answer += digits;
    return answer + client.Read(std::stoul(digits));
}

} // namespace ZoVelkor::Tools
