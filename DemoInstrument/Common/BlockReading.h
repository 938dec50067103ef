#pragma once

#include "PlatformTypes.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ZoVelkor::Demo
{

/// Bytes that are read at a time: memory is filled as a block arrives, and not because it was announced.
inline constexpr std::size_t kReadPiece = std::size_t{1} << 20;

/// Reads a block to its end, whether its length is known or not and whether it has arrived or not.
///
/// @param items  empty; takes what was read, nothing in case of a failure
/// @param announced  items that the block announces, negative when not known in advance
/// @param maxCount  a block of more items is refused, before anything is read if it announces them
/// @param read  called with count, data and a pointer that takes the number of items read, as the operations
///              of IZOScpiBlockData are; fewer than count mean the end
/// @return S_OK; S_FALSE for too many items; the failing result of read
template <class TItem, class TRead>
HRESULT ReadBlock(std::vector<TItem>& items, long announced, std::size_t maxCount, TRead&& read)
{
    const std::size_t expected = announced < 0 ? maxCount : static_cast<std::size_t>(announced);
    HRESULT result = expected > maxCount ? S_FALSE : S_OK;
    items.reserve(announced < 0 || result != S_OK ? 0 : expected + 1);
    for (bool more = result == S_OK; more;)
    {
        // One item more than expected: the read that meets the end is then the last one.
        const std::size_t have = items.size();
        const std::size_t wanted = std::min(kReadPiece / sizeof(TItem), expected + 1 - have);
        items.resize(have + wanted);
        unsigned long got = 0;
        result = read(wanted, items.data() + have, &got);
        items.resize(have + got);
        more = SUCCEEDED(result) && got == wanted && items.size() <= maxCount;
        result = FAILED(result) ? result : (items.size() > maxCount ? S_FALSE : S_OK);
    }
    if (result != S_OK)
    {
        items = {};
    }
    return result;
}

} // namespace ZoVelkor::Demo
