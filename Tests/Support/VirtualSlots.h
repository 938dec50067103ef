#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <vector>

/// Places of operations in their table of virtual functions, counted from 0. IUnknown takes the first three,
/// and a destructor two.
template <class... TOperations>
std::vector<std::size_t> VirtualSlots(TOperations... operations)
{
    // Pointers to virtual members carry the offset of the slot plus 1.
    return {std::bit_cast<std::array<std::size_t, 2>>(operations)[0] / sizeof(void*)...};
}
