#pragma once

#include "CUniqueHandle.h"
#include "LxiPeer.h"

#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <unistd.h>

namespace ZoVelkor::Tools
{

using CSocket = CUniqueHandle<&::close, int, -1>;

/// An IPv4 address out of its text.
///
/// @throws CToolError (Usage)
in_addr TakeIpAddress(const std::string& text);

std::string AddressText(in_addr address);

sockaddr_in SocketName(in_addr address, std::uint16_t port) noexcept;

RemoteKernel::LxiPeer PeerOf(const sockaddr_in& name, bool isTcp) noexcept;

} // namespace ZoVelkor::Tools
