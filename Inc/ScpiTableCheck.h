#pragma once

#include "ScpiCommandTable.h"
#include "ZoExport.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor
{

/// Levels of a command tree, and so keywords of one header.
inline constexpr std::size_t kMaxHeaderLevels = 32;

/// Nodes of one command tree, a shared group counted once for each way that leads to it.
inline constexpr std::size_t kMaxTreeNodes = 250'000;

/// Parameters of one header.
inline constexpr std::size_t kMaxChainLength = 256;

/// Words of one parameter, and units.
inline constexpr std::size_t kMaxListLength = 4096;

/// The first fault of a command table.
struct tagScpiTableFault
{
    /// Index that stands for the whole table.
    static constexpr std::size_t kNoRecord = static_cast<std::size_t>(-1);

    std::size_t iRecord; ///< kNoRecord when the whole table is at fault
    std::string field;   ///< name of the field; empty when the whole table is at fault
    std::string text;    ///< what is wrong with it

    /// For example "record 12, SubStart: index 900 is outside the table (40 records)".
    ZO_EXPORT std::string Message() const;
};

/// How much is asked of a table.
enum class tagScpiTableRules
{
    Structure, ///< every reference stays inside the table, every text and every walk comes to an end
    Keywords   ///< the same, and a keyword with one bracket has the other
};

/// Examines everything that can be reached from the roots of a command table, without ever reading beyond it,
/// and the numeric-suffix expressions at its end. Each group is visited once, however many headers share it.
///
/// Faults are an index or a group outside the table, a text without terminating NUL, a group inside itself, a
/// tree, chain or list beyond the bounds above, a parameter chain that leaves the table, and an expression
/// that names no header, stands inside another group or is none by the grammar. One group may be used by
/// several headers.
/// @param table  the records; may be null when count is 0
/// @return nothing for a sound table
ZO_EXPORT std::optional<tagScpiTableFault> CheckScpiTable(
    const _CMD_SET_RECORD* table, std::size_t count, tagScpiTableRules rules = tagScpiTableRules::Structure);

/// Places of the two root groups of a table.
struct tagTableRoots
{
    /// Index that stands for no group.
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    std::size_t iCommon = kNone;   ///< first common command
    std::size_t iOrdinary = kNone; ///< first record of the ordinary root group
};

/// Finds the root groups: common commands first when record 0 is one, then the ordinary root group, which
/// makes room for a placeholder group named "undef".
ZO_EXPORT tagTableRoots FindTableRoots(const _CMD_SET_RECORD* table, std::size_t count);

/// The suffixes that one header accepts.
///
/// CNumericSuffixExpression reads the text, with the domain 0 to 2147483647.
struct tagSuffixExpression
{
    std::size_t iHeader;         ///< index of the header record
    std::string_view expression; ///< grammar of CNumericSuffixExpression; lies in the table
};

/// Index of the first numeric-suffix expression, which are the last records of a table; count when there are
/// none. Takes as many steps as there are expressions.
ZO_EXPORT std::size_t FindSuffixExpressionStart(const _CMD_SET_RECORD* table, std::size_t count);

/// The numeric-suffix expressions of a table in table order, without those that name no record before them
/// or whose text has no end.
ZO_EXPORT std::vector<tagSuffixExpression> FindSuffixExpressions(const _CMD_SET_RECORD* table,
                                                                 std::size_t count);

} // namespace ZoVelkor
