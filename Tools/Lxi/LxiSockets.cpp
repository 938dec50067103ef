#include "LxiSockets.h"

#include "Common/CToolError.h"

#include <fmt/format.h>

#include <arpa/inet.h>

namespace ZoVelkor::Tools
{

in_addr TakeIpAddress(const std::string& text)
{
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
    {
        throw CToolError(ExitCode::Usage, fmt::format("{} is no IPv4 address", text));
    }
    return address;
}

std::string AddressText(in_addr address)
{
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

sockaddr_in SocketName(in_addr address, std::uint16_t port) noexcept
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    name.sin_addr = address;
    return name;
}

RemoteKernel::LxiPeer PeerOf(const sockaddr_in& name, bool isTcp) noexcept
{
    return {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port), isTcp};
}

} // namespace ZoVelkor::Tools
