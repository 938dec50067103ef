#pragma once

#include "CBScpiBlockData.h"
#include "CharacterClasses.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// The header of a block in a message.
struct BlockHeader
{
    int result = CBScpiBlockData::HeaderInvalid;
    std::size_t iSize = 0;   ///< bytes of the header
    std::int64_t length = 0; ///< bytes of the data, -1: indefinite
};

/// Reads the header of a block from its number sign on.
///
/// The form with parentheses is not taken: on a raw socket its data could not hold a line feed.
/// @param text  the number sign and a character behind it at least
inline BlockHeader ReadBlockHeader(std::string_view text) noexcept
{
    BlockHeader header;
    if (!IsDigit(text[1]))
    {
        return header;
    }
    header.iSize = 2 + static_cast<std::size_t>(text[1] - '0');
    const std::string_view known = text.substr(0, header.iSize);
    // A header that has already gone wrong must not wait for the rest: that may never come.
    if (std::all_of(known.begin() + 1, known.end(), &IsDigit))
    {
        header.result = CBScpiBlockData::ParseBlockDataHeader(known, header.length);
    }
    return header;
}

} // namespace ZoVelkor::RemoteKernel
