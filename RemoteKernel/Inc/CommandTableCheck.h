#pragma once

#include "ScpiCommandTable.h"

#include <cstddef>
#include <string>

namespace ZoVelkor::RemoteKernel
{

/// Levels of a command tree, and so keywords of one header.
inline constexpr std::size_t kMaxHeaderLevels = 32;

/// Nodes of one command tree, a shared group counted once for each way that leads to it.
inline constexpr std::size_t kMaxTreeNodes = 250'000;

/// Parameters of one header.
inline constexpr std::size_t kMaxChainLength = 256;

/// Words of one parameter, and units.
inline constexpr std::size_t kMaxListLength = 4096;

/// Examines everything that can be reached from the roots of a command table, without ever reading beyond it.
///
/// Faults are an index or a group outside the table, a text without terminating NUL, a bracket without its
/// partner, a group inside itself, a tree, chain or list beyond the bounds above, a parameter chain that
/// leaves the table. One group may be used by several headers.
/// @param table  the records; may be null when count is 0
/// @return an empty text for a sound table, else the first fault with the record and its field, for example
///         "record 12, SubStart: index 900 is outside the table (40 records)"
std::string ValidateCommandTable(const _CMD_SET_RECORD* table, std::size_t count);

/// Places of the two root groups of a sound table.
struct tagTableRoots
{
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    std::size_t iCommon = kNone;   ///< first common command
    std::size_t iOrdinary = kNone; ///< first record of the ordinary root group
};

/// Finds the root groups: common commands first when record 0 is one, then the ordinary root group, which
/// makes room for a placeholder group named "undef".
tagTableRoots FindTableRoots(const _CMD_SET_RECORD* table, std::size_t count);

} // namespace ZoVelkor::RemoteKernel
