#pragma once

#include "CLxiTcpSender.h"
#include "LxiSockets.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace ZoVelkor::Tools
{

/// Whom event messages are sent to, and how.
struct LxiReceiver
{
    std::string address;    ///< HOST or HOST:PORT; empty: the multicast group
    std::uint16_t port = 0; ///< unless the address has one
    std::string interface;  ///< IPv4 address of the interface for multicast
    bool isTcp = false;
};

/// Sends written event messages.
class CLxiTransmitter
{
public:
    /// Finds the receiver; with TCP it connects.
    ///
    /// @throws CToolError (Usage, NoAccess)
    explicit CLxiTransmitter(const LxiReceiver& receiver);

    /// @throws CToolError (NoAccess)
    void Send(std::span<const std::uint8_t> message);

    RemoteKernel::LxiPeer Receiver() const noexcept { return PeerOf(m_name, m_tcp.has_value()); }

private:
    void OpenUdp(const LxiReceiver& receiver);
    [[noreturn]] void Fail(int error) const;

    sockaddr_in m_name;
    CSocket m_udp;
    std::optional<RemoteKernel::CLxiTcpSender> m_tcp;
};

} // namespace ZoVelkor::Tools
