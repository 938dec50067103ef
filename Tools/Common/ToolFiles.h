#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZoVelkor::Tools
{

/// File name that stands for standard input or output.
inline constexpr std::string_view kStandardStream = "-";

/// Raised when whoever read the standard output has gone; nothing is left to do or to say.
struct ReaderGone
{};

/// Reads a file, or standard input.
///
/// @param limit  the most bytes to read; the rest stays unread
/// @throws CToolError (NoAccess)
std::string ReadInput(const std::string& name, std::size_t limit);

/// Writes a file, or standard output, and sees to it that everything has arrived.
///
/// @param isMore  goes behind what is in the file already
/// @throws CToolError (NoAccess); ReaderGone
void WriteOutput(const std::string& name, std::string_view bytes, bool isMore = false);

/// Says something on the standard error; one that nobody reads is no failure.
void Tell(std::string_view message) noexcept;

/// Text of unknown origin for people, on one line: what is not printable ASCII becomes '?'.
std::string Printable(std::string_view text);

} // namespace ZoVelkor::Tools
