#pragma once

#include "LxiEventText.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

/// Shows all event messages of a capture: raw bytes, their hexadecimal digits, or a file of libpcap.
///
/// Messages that stand one behind the other are taken apart; behind a damaged one it goes on at the next
/// sound one. Of a file of libpcap these are the UDP datagrams from and to a port, and all others that begin
/// like a message.
/// @throws CToolError (Failed) for what is no capture
void PrintLxiCapture(std::string_view capture, std::uint16_t port, CLxiEventPrinter& printer);

} // namespace ZoVelkor::Tools
