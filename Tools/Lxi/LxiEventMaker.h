#pragma once

#include "CLxiLanPacket.h"
#include "CLxiTime.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// What an event message consists of, in the words of the command line.
struct LxiEventWords
{
    std::string event = "LAN0";
    std::string time = "now";
    unsigned domain = 0;
    std::vector<std::string> flags; ///< names of kLxiFlags
    std::vector<std::string> data;  ///< TYPE:TEXT, or TYPE:0xDIGITS
};

/// The time that a text stands for: now, SECONDS.FRACTION since 1970 or +SECONDS.FRACTION from now.
///
/// @throws CToolError (Usage)
CLxiTime TakeLxiTime(const std::string& text);

/// Writes the message, as it travels.
///
/// @throws CToolError (Usage)
std::vector<std::uint8_t> MakeLxiMessage(const LxiEventWords& words, std::uint32_t sequenceNumber);

} // namespace ZoVelkor::Tools
