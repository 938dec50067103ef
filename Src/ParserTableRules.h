#pragma once

#include "ScpiCommandTable.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace ZoVelkor
{

/// Text of a record field; it ends with the field when its terminator is missing.
template <std::size_t size>
std::string_view TableText(const char (&field)[size])
{
    const std::string_view whole(field, size);
    return whole.substr(0, whole.find('\0'));
}

/// An index or length of a table record with its sign: the high half of the range stands for negative values.
constexpr long TableIndex(std::uint32_t word)
{
    return static_cast<std::int32_t>(word);
}

constexpr bool IsCommonCommand(const _CS_HDR& header)
{
    return (header.iFollow & CCMD) != 0;
}

/// Index of the group of ordinary root commands, behind the common commands if there are any.
///
/// @param count  records of the table, at least one; the index may lie at or beyond it
inline long RootGroupIndex(const _CMD_SET_RECORD* table, long count = std::numeric_limits<long>::max())
{
    if (!IsCommonCommand(table->hdr))
    {
        return 0;
    }
    const long length = TableIndex(table->hdr.iLength);
    if (length < 1)
    {
        return 0;
    }
    if (length >= count)
    {
        return length;
    }
    // Deliberate: tables of instruments without own commands keep the place by a group of the same length.
    return TableText(table[length].hdr.szKeyword) == "undef" ? 2 * length : length;
}

} // namespace ZoVelkor
