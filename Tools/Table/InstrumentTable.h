#pragma once

#include "Instrument/InstrumentAddress.h"

#include <chrono>
#include <string>

namespace ZoVelkor::Tools
{

/// Fetches the joined command table of a running instrument.
///
/// @return the bytes of a table file, not examined
/// @throws CToolError, Failed when the instrument has no such table, NoAccess when it cannot be reached
std::string FetchInstrumentTable(const InstrumentAddress& address, std::chrono::milliseconds timeout);

} // namespace ZoVelkor::Tools
