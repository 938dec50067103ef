#pragma once

#include "ScpiCommandTable.h"

#include <cstddef>
#include <cstdint>

namespace ZoVelkor
{

/// Where an application's command table lies; without a size or an address there is no table.
///
/// Ownership: the table belongs to the application.
struct tagZO_SCPI_PARSER_TREE
{
    std::uint32_t iSize;           ///< of the table, in bytes
    const _CMD_SET_RECORD* pTable; ///< first record of the table; as wide as an address
};

static_assert(offsetof(tagZO_SCPI_PARSER_TREE, iSize) == 0);
static_assert(offsetof(tagZO_SCPI_PARSER_TREE, pTable) == sizeof(void*));
static_assert(sizeof(tagZO_SCPI_PARSER_TREE) == 2 * sizeof(void*));

} // namespace ZoVelkor
