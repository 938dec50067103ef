#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ZoVelkor::Demo
{

/// Reads a channel list such as (@1,3:5): channels and ranges in any order (SCPI-99 vol. 1, 8.3.2).
///
/// The list (@) has no channel.
/// @param text  with its parentheses; white space is allowed between the elements
/// @param maxCount  of a longer list one channel more than this is given, so that a range never fills the
/// memory
/// @return the channels in the order of the list, not checked against an instrument; nothing for another text
std::optional<std::vector<long>> ParseChannelList(std::string_view text, std::size_t maxCount);

} // namespace ZoVelkor::Demo
