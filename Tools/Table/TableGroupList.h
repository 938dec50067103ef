#pragma once

#include "CScpiParserTableGroups.h"
#include "TableFile.h"

#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

/// The groups of a sound table, kind by kind, and the records outside every group, as text for people.
std::string DescribeGroups(NamedTable& table);

/// Records of a sound table that lie outside every group.
std::vector<std::size_t> RecordsOutsideGroups(NamedTable& table);

} // namespace ZoVelkor::Tools
