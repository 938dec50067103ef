#pragma once

#include "CCommandError.h"
#include "ZoExport.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZoVelkor::Commands
{

/// Reads a channel list such as (@1,3:5): channels and ranges in any order (SCPI-99 vol. 1, 8.3.2).
///
/// The list (@) has no channel.
/// @param text  with its parentheses; white space is allowed between the elements
/// @param maxCount  of a longer list one channel more than this is given, so that a range never fills the
///                  memory
/// @return the channels in the order of the list, not checked against an instrument; nothing for another text
ZO_EXPORT std::optional<std::vector<long>> ParseChannelList(std::string_view text, std::size_t maxCount);

/// A channel list as a handler's argument.
class CChannelList
{
public:
    CChannelList() = default;
    explicit CChannelList(std::string text) : m_text(std::move(text)) {}

    /// The channels in the order of the list, not checked against the instrument.
    ///
    /// @throws CCommandError -171 for a text that is no channel list, -223 for more than maxCount channels
    ZO_EXPORT std::vector<long> Channels(std::size_t maxCount) const;

    /// As the client wrote it, parentheses included.
    const std::string& Text() const noexcept { return m_text; }

private:
    std::string m_text;
};

} // namespace ZoVelkor::Commands
