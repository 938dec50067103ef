#pragma once

#include "ScpiCommandTable.h"

// The declarations of a generated table, for the table itself and for those who use it. The header with the
// ending .hpp is the generated one: its folder must be on the include path.

// Generated text names the record type without its namespace.
using ZoVelkor::CMD_SET_RECORD;

#include "PrsTab.hpp"
