#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace ZoVelkor::RemoteKernel
{

/// The other end of LXI event messages.
struct LxiPeer
{
    std::uint32_t address = 0; ///< IPv4, the first number in the upper byte
    std::uint16_t port = 0;
    bool isTcp = false;

    auto operator<=>(const LxiPeer&) const = default;

    /// As in "udp 127.0.0.1:5044".
    std::string Text() const
    {
        std::string text = isTcp ? "tcp " : "udp ";
        for (unsigned shift = 32; shift != 0; shift -= 8)
        {
            text += std::to_string((address >> (shift - 8)) & 0xFFU) + (shift != 8 ? '.' : ':');
        }
        return text + std::to_string(port);
    }
};

} // namespace ZoVelkor::RemoteKernel
