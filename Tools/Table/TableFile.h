// Table: `zo table`, command tables in files and instruments.
//
// TableCommands reads the command line; a table comes from a file (TableFile) or an instrument
// (InstrumentTable), is examined (TableFaults), listed by groups (TableGroupList), merged or written as
// source by the classes of the product. One thread. Locks: none.

#pragma once

#include "CBScpiCommands.h"
#include "ScpiCommandTable.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// A command table with the name of the file or instrument that it came from.
struct NamedTable
{
    std::string name;
    std::vector<_CMD_SET_RECORD> records;
};

/// What a table file starts with, its length digits excluded: version, comma, "#6".
std::string TableFilePrefix();

inline constexpr std::size_t kTableLengthDigits = 6;

/// The most bytes that a table file has.
std::size_t TableFileLimit();

/// Takes a table file apart: the form that CBScpiCommands::SendCommandTree writes, a line feed behind it or
/// not.
///
/// The records themselves are not examined.
/// @param[out] records  the records
/// @return what is wrong with the file; empty when nothing is
std::string ParseTableFile(std::string_view bytes, std::vector<_CMD_SET_RECORD>& records);

/// The bytes of a table file.
///
/// @throws CToolError (Failed) for a table that is too large for one
std::string FormatTableFile(std::span<const _CMD_SET_RECORD> records);

/// All that is wrong with the records of a table by the rules of the remote kernel, one text each.
///
/// What lies behind a fault is looked at as if the faulty reference were not there.
std::vector<std::string> FindTableFaults(std::vector<_CMD_SET_RECORD> records);

} // namespace ZoVelkor::Tools
