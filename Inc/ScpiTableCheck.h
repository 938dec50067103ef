#pragma once

#include "ScpiCommandTable.h"
#include "ZoExport.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace ZoVelkor
{

/// The suffixes that one header accepts.
struct tagSuffixExpression
{
    std::size_t iHeader;         ///< index of the header record
    std::string_view expression; ///< grammar of CNumericSuffixExpression; lies in the table
};

/// Index of the first numeric-suffix expression, which are the last records of a table; count when there are
/// none. Takes as many steps as there are expressions.
ZO_EXPORT std::size_t FindSuffixExpressionStart(const _CMD_SET_RECORD* table, std::size_t count);

/// The numeric-suffix expressions of a table in table order, without those that name no header before them
/// or whose text has no end.
ZO_EXPORT std::vector<tagSuffixExpression> FindSuffixExpressions(const _CMD_SET_RECORD* table,
                                                                 std::size_t count);

} // namespace ZoVelkor
