#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// Whether a text consists of hexadecimal digits and what may stand between them, without a dump's columns.
bool IsHexText(std::string_view text) noexcept;

/// Reads bytes that were written as text: pairs of digits with blanks, commas, colons, hyphens or 0x in
/// between or not, or a dump with offsets as xxd, od -A x -t x1 and hexdump, with or without -C, print it.
///
/// @throws CToolError (Failed) that names the line
std::vector<std::uint8_t> ParseHexDump(std::string_view text);

} // namespace ZoVelkor::Tools
