#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZoVelkor::Tools
{

/// File name that stands for standard input or output.
inline constexpr std::string_view kStandardStream = "-";

/// Raised when whoever read the standard output has gone; nothing is left to do or to say.
struct tagReaderGone
{};

/// Reads a file, or standard input.
///
/// @param limit  the most bytes to read; the rest stays unread
/// @throws CToolError (NoAccess)
std::string ReadInput(const std::string& name, std::size_t limit);

/// Writes a file, or standard output, and sees to it that everything has arrived.
///
/// @throws CToolError (NoAccess); tagReaderGone
void WriteOutput(const std::string& name, std::string_view bytes);

/// Text of unknown origin for people: what is not printable ASCII becomes '?', line feeds stay.
std::string Printable(std::string_view text);

} // namespace ZoVelkor::Tools
