#pragma once

#include "ScpiCommandTable.h"

#include <span>

namespace ZoVelkor
{

/// The table that a program of zo_add_table_round_trip writes out, compiles and compares.
std::span<const _CMD_SET_RECORD> RoundTripTable();

} // namespace ZoVelkor
