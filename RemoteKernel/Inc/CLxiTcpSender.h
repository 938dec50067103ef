#pragma once

#include "CLxiLanPacket.h"
#include "CUniqueHandle.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <unistd.h>

namespace ZoVelkor::RemoteKernel
{

/// A TCP connection that LXI event messages are sent by.
///
/// Threads: one at a time.
class CLxiTcpSender
{
public:
    /// Time limit for connecting and for each message.
    static constexpr std::chrono::seconds kTimeOut{2};

    /// Connects.
    ///
    /// @param address  IPv4
    /// @throws std::system_error with a message that names address and port
    CLxiTcpSender(const std::string& address, std::uint16_t port);

    /// Sends a packet, which gets its sequence number.
    ///
    /// @return S_OK; E_INVALIDARG for a packet that no message can be made of; E_FAIL when the connection is
    /// over, which it then stays
    HRESULT Send(CLxiLanPacket& packet);

    /// Sends a written message.
    ///
    /// @return S_OK; E_FAIL when the connection is over, which it then stays
    HRESULT Send(std::span<const std::uint8_t> message);

private:
    CUniqueHandle<&::close, int, -1> m_socket;
};

} // namespace ZoVelkor::RemoteKernel
