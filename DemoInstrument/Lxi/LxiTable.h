#pragma once

#include <cstdint>

namespace ZoVelkor::Demo
{

/// Handler indexes of the LXI commands, as they stand in their command table.
enum LxiHandler : std::int32_t
{
    LXI_LAN_ENABLED,
    LXI_LAN_DELAY,
    LXI_IDENTIFY,
    LXI_SEND,
    LXI_LOG_ALL,
    LXI_LOG_COUNT,
    LXI_LOG_CLEAR,
    LXI_ERROR_NEXT,
    LXI_HANDLER_COUNT
};

} // namespace ZoVelkor::Demo
