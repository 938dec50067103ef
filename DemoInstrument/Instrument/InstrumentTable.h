#pragma once

#include <cstdint>

namespace ZoVelkor::Demo
{

/// Handler indexes of the instrument's commands, as they stand in their command table.
enum InstrumentHandler : std::int32_t
{
    SAVE_STATE,
    RECALL_STATE,
    SYSTEM_DATE,
    SYSTEM_TIME,
    LAN_HOST_NAME,
    INSTRUMENT_HANDLER_COUNT
};

} // namespace ZoVelkor::Demo
