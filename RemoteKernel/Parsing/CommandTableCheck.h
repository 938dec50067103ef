#pragma once

#include "ScpiTableCheck.h"

#include <cstddef>
#include <string>

namespace ZoVelkor::RemoteKernel
{

/// Examines a command table before its commands are offered: what CheckScpiTable asks, keywords included.
///
/// @param table  the records; may be null when count is 0
/// @return an empty text for a sound table, else the first fault with the record and its field, for example
///         "record 12, SubStart: index 900 is outside the table (40 records)"
std::string ValidateCommandTable(const _CMD_SET_RECORD* table, std::size_t count);

} // namespace ZoVelkor::RemoteKernel
