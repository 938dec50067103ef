#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace ZoVelkor
{

/// Bytes that a text takes as string response data: its quotes are doubled, and it stands between two.
inline std::size_t QuotedSize(std::string_view text) noexcept
{
    return text.size() + 2 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '"'));
}

/// Writes a text as string response data (IEEE 488.2 section 8.7.8).
///
/// @param place  has room for QuotedSize(text) bytes
/// @return the end of what was written
inline char* WriteQuoted(char* place, std::string_view text) noexcept
{
    *place++ = '"';
    for (const char c : text)
    {
        if (c == '"')
        {
            *place++ = '"';
        }
        *place++ = c;
    }
    *place++ = '"';
    return place;
}

/// Room for any header of a definite-length block.
inline constexpr std::size_t kMaxBlockHeaderSize = 1 + 2 + std::numeric_limits<std::uint64_t>::digits10 + 1;

/// Writes the header of a definite-length block (IEEE 488.2 section 8.7.9); the count of digits has itself two
/// digits from ten digits of length on.
///
/// @param place  has room for kMaxBlockHeaderSize bytes
/// @return the end of what was written
inline char* WriteDefiniteBlockHeader(char* place, std::uint64_t length) noexcept
{
    char digits[kMaxBlockHeaderSize];
    const char* const digitsEnd = std::to_chars(digits, digits + kMaxBlockHeaderSize, length).ptr;
    *place++ = '#';
    place = std::to_chars(place, place + 2, digitsEnd - digits).ptr;
    return std::copy(static_cast<const char*>(digits), digitsEnd, place);
}

} // namespace ZoVelkor
