#include "InstrumentAddress.h"

#include "CToolError.h"

#include <fmt/format.h>

#include <charconv>
#include <regex>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kMaxAddress = 1000;

bool IsPort(const std::string& text)
{
    unsigned port = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), port);
    return fault == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

} // namespace

std::string tagInstrumentAddress::Text() const
{
    const bool isV6 = sHost.find(':') != std::string::npos;
    return isV6 ? fmt::format("[{}]:{}", sHost, sPort) : fmt::format("{}:{}", sHost, sPort);
}

std::optional<tagInstrumentAddress> ParseInstrumentAddress(const std::string& text)
{
    // Matching takes stack for every character.
    if (text.size() > kMaxAddress)
    {
        return std::nullopt;
    }
    static const std::regex kResource(R"(TCPIP\d*::.*)", std::regex::icase);
    static const std::regex kSocket(R"(TCPIP\d*::(?:\[([^\]/]+)\]|([^:/\[\]]+))::(\d+)::SOCKET)",
                                    std::regex::icase);
    static const std::regex kHostAndPort(R"((?:\[([^\]/]+)\]|([^:/\[\]]+)):(\d+))");
    const bool isResource = std::regex_match(text, kResource);
    std::smatch parts;
    if (std::regex_match(text, parts, isResource ? kSocket : kHostAndPort) && IsPort(parts[3]))
    {
        return tagInstrumentAddress{parts[1].matched ? parts[1] : parts[2], parts[3]};
    }
    if (isResource)
    {
        throw CToolError(
            tagExitCode::Usage,
            fmt::format("{}: not of the form TCPIP::host::port::SOCKET with a port from 1 to 65535", text));
    }
    return std::nullopt;
}

} // namespace ZoVelkor::Tools
