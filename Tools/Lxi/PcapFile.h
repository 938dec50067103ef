#pragma once

#include "LxiPeer.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

/// A UDP datagram of a capture.
struct CapturedDatagram
{
    std::size_t frame; ///< number of its frame, from 1
    RemoteKernel::LxiPeer sender;
    RemoteKernel::LxiPeer receiver;
    std::span<const std::uint8_t> payload; ///< part of the file
    std::size_t missing;                   ///< bytes of the payload that were not captured
};

struct Capture
{
    std::vector<CapturedDatagram> datagrams; ///< those over IPv4, without later fragments
    std::size_t frameCount = 0;
    std::string fault; ///< why the file ends early; empty when it does not
};

/// Whether a file is a capture, also of a format that ReadPcapFile does not know.
bool IsCapture(std::span<const std::uint8_t> file) noexcept;

/// Reads a file of libpcap in its classic format, of either byte order, with frames of Ethernet, Linux cooked
/// captures, raw IP or loopback.
///
/// @throws CToolError (Failed) for another format or another kind of frames
Capture ReadPcapFile(std::span<const std::uint8_t> file);

} // namespace ZoVelkor::Tools
