#pragma once

#include "PlatformTypes.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ZoVelkor::Demo
{

/// Items by which the room grows while a block of unknown length is read.
inline constexpr std::size_t kReadPiece = std::size_t{1} << 16;

/// Reads a block to its end, whether its length is known or not; what is announced is read in one piece.
///
/// @param items  empty; takes what was read
/// @param announced  items that the block announces, negative when not known in advance
/// @param maxCount  reading stops at one item more; the caller refuses such a block
/// @param read  called with count, data and a pointer that takes the number of items read, as the operations
///              of IZOScpiBlockData are; fewer than count mean the end
/// @return S_OK, or the failing result of read
template <class TItem, class TRead>
HRESULT ReadBlock(std::vector<TItem>& items, long announced, std::size_t maxCount, TRead&& read)
{
    // One item more than announced: the read that meets the end is then the first one.
    items.reserve(announced < 0 ? kReadPiece : std::min(static_cast<std::size_t>(announced), maxCount) + 1);
    while (items.size() <= maxCount)
    {
        const std::size_t have = items.size();
        const std::size_t room = items.capacity() - have;
        const std::size_t wanted = std::min(room != 0 ? room : kReadPiece, maxCount + 1 - have);
        items.resize(have + wanted);
        unsigned long got = 0;
        const HRESULT hr = read(wanted, items.data() + have, &got);
        items.resize(have + got);
        if (FAILED(hr) || got < wanted)
        {
            return FAILED(hr) ? hr : S_OK;
        }
    }
    return S_OK;
}

} // namespace ZoVelkor::Demo
