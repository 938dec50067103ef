#pragma once

#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// A line feed ends a program message, inside a string too. The string's rest then comes as a message of its
/// own, which would only repeat the error that the first half has raised.

/// The quote of the string in which a message ends; 0 when it ends outside strings, or has a block, whose bytes
/// may be quotes.
char FindOpenQuote(std::string_view message) noexcept;

/// Tells whether a message looks like the rest of a string: it closes the string where a data element may
/// end, and by itself would end in a string.
///
/// @param quote  of the string; 0 for none
bool IsRestOfString(std::string_view message, char quote) noexcept;

/// The header that a message begins with, if it is one and not the rest of a string: all up to a blank, a quote or
/// a semicolon.
std::string_view FirstHeader(std::string_view message) noexcept;

} // namespace ZoVelkor::RemoteKernel
