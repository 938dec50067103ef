#include "InstrumentAddress.h"

#include "Common/CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kInterface = "TCPIP";
constexpr std::string_view kSeparator = "::";
constexpr std::string_view kClass = "::SOCKET";

bool IsEqualNoCase(std::string_view left, std::string_view right)
{
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(), [](unsigned char a, unsigned char b) {
            return std::toupper(a) == std::toupper(b);
        });
}

bool IsPort(std::string_view text)
{
    unsigned port = 0;
    const auto [end, fault] = std::from_chars(text.begin(), text.end(), port);
    return fault == std::errc() && end == text.end() && port >= 1 && port <= 65535;
}

/// A host with colons must stand in brackets.
std::optional<std::string> HostOf(std::string_view text)
{
    const bool isBracketed = text.starts_with('[') && text.ends_with(']');
    if (isBracketed)
    {
        text = text.substr(1, text.size() - 2);
    }
    const bool isHost =
        !text.empty() && text.find_first_of(isBracketed ? "[]/" : "[]/:") == std::string_view::npos;
    return isHost ? std::optional<std::string>(text) : std::nullopt;
}

/// Splits host and port at the last separator.
std::optional<InstrumentAddress> Split(std::string_view text, std::string_view separator)
{
    const std::size_t place = text.rfind(separator);
    if (place == std::string_view::npos || !IsPort(text.substr(place + separator.size())))
    {
        return std::nullopt;
    }
    const std::optional<std::string> host = HostOf(text.substr(0, place));
    return host ? std::optional(InstrumentAddress{*host, std::string(text.substr(place + separator.size()))})
                : std::nullopt;
}

/// What follows TCPIP, its board number and the separator; nothing when the text does not begin so.
std::optional<std::string_view> AfterInterface(std::string_view text)
{
    if (!IsEqualNoCase(text.substr(0, kInterface.size()), kInterface))
    {
        return std::nullopt;
    }
    text.remove_prefix(kInterface.size());
    text.remove_prefix(std::min(text.find_first_not_of("0123456789"), text.size()));
    return text.starts_with(kSeparator) ? std::optional(text.substr(kSeparator.size())) : std::nullopt;
}

} // namespace

std::string InstrumentAddress::Text() const
{
    const bool isV6 = host.find(':') != std::string::npos;
    return isV6 ? fmt::format("[{}]:{}", host, port) : fmt::format("{}:{}", host, port);
}

std::optional<InstrumentAddress> ParseInstrumentAddress(const std::string& text)
{
    const std::optional<std::string_view> resource = AfterInterface(text);
    if (!resource)
    {
        return Split(text, ":");
    }
    const std::size_t end = resource->size() - std::min(resource->size(), kClass.size());
    auto address = IsEqualNoCase(resource->substr(end), kClass) ? Split(resource->substr(0, end), kSeparator)
                                                                : std::nullopt;
    if (!address)
    {
        throw CToolError(
            ExitCode::Usage,
            fmt::format("{}: not of the form TCPIP::host::port::SOCKET with a port from 1 to 65535", text));
    }
    return address;
}

InstrumentAddress TakeInstrumentAddress(const std::string& text, const std::string& defaultPort)
{
    if (auto address = ParseInstrumentAddress(text))
    {
        return *std::move(address);
    }
    if (const auto host = HostOf(text))
    {
        return {*host, defaultPort};
    }
    throw CToolError(ExitCode::Usage,
                     fmt::format("{}: neither TCPIP::host::port::SOCKET nor host:port", text));
}

} // namespace ZoVelkor::Tools
